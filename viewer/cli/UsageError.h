#pragma once

#include <framework/ksp/CommonError.h>

/// The program was called wrongly; the text says what would have been right. Exit status 2.
class UsageError : public ksp::CommonError
{
public:
    using ksp::CommonError::CommonError;
};
