#include <framework/ksp/CommonError.h>

namespace ksp {

CommonError::CommonError(const QString& text)
    : std::runtime_error(text.toUtf8().constData())
{
}

CommonError::~CommonError() = default;

QString CommonError::text() const
{
    return QString::fromUtf8(what());
}

} // namespace ksp
