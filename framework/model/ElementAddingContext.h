#pragma once

#include <framework/ksp/StagedProgress.h>

/// Goes with a notification that elements were added.
struct ElementAddingContext
{
    ksp::StagedProgress progress = ksp::StagedProgress::dummy();
};
