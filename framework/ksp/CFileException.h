#pragma once

#include <framework/ksp/CommonError.h>

namespace ksp {

/// A file that cannot be read or written, with the reason as a code and as text.
class HOSTFRAMEWORK_EXPORT CFileException : public CommonError
{
public:
    enum Code {
        Generic = 0,
        Limit = 1,     ///< a stored count or size is beyond what is allowed
        Truncated = 2, ///< the data ends before the object does
        Damaged = 3,   ///< the data contradicts itself
        Version = 4,   ///< written by an incompatible program
        Access = 5     ///< the file cannot be opened, read or written
    };

    CFileException(int code, const QString& text);
    ~CFileException() override;
    int code() const { return m_code; }

private:
    int m_code;
};

} // namespace ksp
