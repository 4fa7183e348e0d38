#include <benchmarks/works/compareFrames.h>

#include <benchmarks/harness/comparePictures.h>
#include <benchmarks/plain/PlainContext.h>
#include <benchmarks/scene/BenchScene.h>

std::vector<Result> compareFrames(BenchScene& scene, PlainContext& context,
                                  const std::function<void()>& drawPlain, const PairedRuns::Effort& effort,
                                  double allowed)
{
    const PairedRuns runs(PairedRuns::timed([&] { scene.prepare(); }, [&] { scene.drawFrame(); }),
                          PairedRuns::timed([&] { context.makeCurrent(); },
                                            [&] {
                                                context.beginFrame();
                                                drawPlain();
                                                context.endFrame();
                                            }),
                          effort);
    Result result = Result::of(runs);
    result.problem = comparePictures(scene.picture(), context.picture(), allowed);
    return {result};
}
