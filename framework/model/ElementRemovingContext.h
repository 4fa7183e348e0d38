#pragma once

#include <framework/ksp/StagedProgress.h>

/// Goes with a notification that elements are being removed.
struct ElementRemovingContext
{
    ksp::StagedProgress progress = ksp::StagedProgress::dummy();
};
