#pragma once

#include <QtCore/QtGlobal>

#include <numeric>
#include <vector>

/// The numbers that a test makes random scenes of, one each: 1 to count, or the one that the environment
/// names in V3D_TEST_SCENE, so that a scene that fails can be looked at by itself.
inline std::vector<unsigned> sceneSeeds(unsigned count)
{
    bool isOne = false;
    const unsigned one = qEnvironmentVariable("V3D_TEST_SCENE").toUInt(&isOne);
    if (isOne) return {one};
    std::vector<unsigned> seeds(count);
    std::iota(seeds.begin(), seeds.end(), 1u);
    return seeds;
}
