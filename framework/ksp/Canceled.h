#pragma once

#include <framework/ksp/CommonError.h>

namespace ksp {

/// Thrown by StagedProgress::throwIfCanceled(): the user stopped the work; nothing went wrong.
class HOSTFRAMEWORK_EXPORT Canceled : public CommonError
{
public:
    Canceled();
    ~Canceled() override;
};

} // namespace ksp
