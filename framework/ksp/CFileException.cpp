#include <framework/ksp/CFileException.h>

namespace ksp {

CFileException::CFileException(int code, const QString& text)
    : CommonError(text)
    , m_code(code)
{
}

CFileException::~CFileException() = default;

} // namespace ksp
