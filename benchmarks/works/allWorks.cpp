#include <benchmarks/harness/Work.h>

#include <benchmarks/works/boxWorks.h>
#include <benchmarks/works/lineWorks.h>
#include <benchmarks/works/markWorks.h>

std::vector<Work> allWorks()
{
    std::vector<Work> all;
    for (std::vector<Work> some : {lineWorks(), boxWorks(), markWorks(), zoomWorks()})
        all.insert(all.end(), std::make_move_iterator(some.begin()), std::make_move_iterator(some.end()));
    return all;
}
