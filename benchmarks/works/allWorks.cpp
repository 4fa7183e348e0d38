#include <benchmarks/harness/Work.h>

#include <benchmarks/works/boxWorks.h>
#include <benchmarks/works/changeWorks.h>
#include <benchmarks/works/growthWorks.h>
#include <benchmarks/works/lifeWorks.h>
#include <benchmarks/works/lineWorks.h>
#include <benchmarks/works/markWorks.h>
#include <benchmarks/works/meshWorks.h>
#include <benchmarks/works/selectWorks.h>

std::vector<Work> allWorks()
{
    std::vector<Work> all;
    for (std::vector<Work> some : {lineWorks(), boxWorks(), meshWorks(), markWorks(), selectWorks(),
                                   depthWorks(), lifeWorks(), zoomWorks(), changeWorks(), growthWorks()})
        all.insert(all.end(), std::make_move_iterator(some.begin()), std::make_move_iterator(some.end()));
    return all;
}
