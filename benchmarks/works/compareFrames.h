#pragma once

#include <benchmarks/harness/Result.h>

#include <functional>

class BenchScene;
class PlainContext;

/// Frames of the scene beside frames of a plain program, in turns, and whether both end with the same
/// picture.
/// @param drawPlain  draws the frame to the plain context's target, which is bound and cleared
/// @param allowed    see comparePictures
std::vector<Result> compareFrames(BenchScene& scene, PlainContext& context,
                                  const std::function<void()>& drawPlain, const PairedRuns::Effort& effort,
                                  double allowed);
