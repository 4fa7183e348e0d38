#pragma once

#include <glm/glm.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <vector>

/// Keys with three values each, to be found by shaders and by std::map.
namespace keyed_cases {

constexpr std::size_t Components = 3;
constexpr float EmptyValue = -7.5f;
using Values = std::array<float, Components>;

/// What the stage of a case writes.
struct Found
{
    std::uint32_t index;
    std::uint32_t isContained;
    Values values;
    float beyond; ///< the value after the last one of the key
};

/// The declarations and the evaluation of a case, for a container named "cells" and the define KEY.
constexpr const char* StageEnd =
    "layout(std430, binding = 4) readonly buffer case_keys { KEY keys[]; };\n"
    "struct Found { uint index; uint is_contained; float values[3]; float beyond; };\n"
    "layout(std430, binding = 0) writeonly buffer case_results { Found results[]; };\n"
    "void evaluate(int i)\n"
    "{\n"
    "    uint index = find_in_cells(keys[i]);\n"
    "    results[i].index = index;\n"
    "    results[i].is_contained = contains_in_cells(keys[i]) ? 1u : 0u;\n"
    "    for (uint k = 0u; k < 3u; ++k)\n"
    "        results[i].values[k] = value_in_cells(index, k);\n"
    "    results[i].beyond = value_in_cells(index, 3u);\n"
    "}\n";

struct Less
{
    template <typename Key>
    bool operator()(const Key& a, const Key& b) const
    {
        return a < b;
    }
    bool operator()(const glm::uvec2& a, const glm::uvec2& b) const
    {
        return a.x != b.x ? a.x < b.x : a.y < b.y;
    }
};

/// What is stored, in the order of the buffers, and the same in a map.
template <typename Key>
struct Stored
{
    struct Entry
    {
        std::uint32_t index;
        Values values;
    };
    std::vector<Key> keys;
    std::vector<float> values;
    std::map<Key, Entry, Less> map;

    void add(const Key& key, const Values& own)
    {
        map.insert({key, {static_cast<std::uint32_t>(keys.size()), own}});
        keys.push_back(key);
        values.insert(values.end(), own.begin(), own.end());
    }
    /// How many of the results differ from what the map says.
    std::size_t wrongCount(const std::vector<Key>& asked, const std::vector<Found>& found) const
    {
        std::size_t wrong = asked.size() - std::min(asked.size(), found.size());
        for (std::size_t i = 0; i < found.size(); ++i) {
            const auto place = map.find(asked[i]);
            const bool isThere = place != map.end();
            const Values expected =
                isThere ? place->second.values : Values{EmptyValue, EmptyValue, EmptyValue};
            const std::size_t index = isThere ? place->second.index : keys.size();
            wrong += found[i].index != index || found[i].isContained != (isThere ? 1u : 0u) ||
                     found[i].values != expected || found[i].beyond != EmptyValue;
        }
        return wrong;
    }
};

/// Keys of all sizes of their type: small ones, neighbours, and bits up to the highest.
class RandomKeys
{
public:
    template <typename Key>
    Key next();
    std::uint32_t bits() { return static_cast<std::uint32_t>(m_random()); }
    float value() { return std::uniform_real_distribution<float>(0.0f, 1000.0f)(m_random); }
    std::mt19937& generator() { return m_random; }

private:
    std::mt19937 m_random{77};
};

template <>
inline std::uint32_t RandomKeys::next()
{
    return bits() >> (bits() % 16u);
}
template <>
inline std::int32_t RandomKeys::next()
{
    return static_cast<std::int32_t>(bits()) >> (bits() % 16u);
}
template <>
inline float RandomKeys::next()
{
    return std::uniform_real_distribution<float>(-1.0f, 1.0f)(m_random) *
           std::ldexp(1.0f, static_cast<int>(bits() % 60u) - 30);
}
/// Many that differ in one half only.
template <>
inline glm::uvec2 RandomKeys::next()
{
    const std::uint32_t kind = bits() % 3u;
    return {kind == 0 ? bits() % 4u : bits(), kind == 1 ? bits() % 4u : bits()};
}

/// So many different keys, in no order.
template <typename Key>
std::vector<Key> differentKeys(RandomKeys& random, std::size_t count)
{
    std::vector<Key> keys;
    while (keys.size() < count) {
        for (std::size_t i = keys.size(); i < count + count / 8 + 1; ++i)
            keys.push_back(random.next<Key>());
        std::sort(keys.begin(), keys.end(), Less());
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    }
    std::shuffle(keys.begin(), keys.end(), random.generator());
    keys.resize(count);
    return keys;
}

} // namespace keyed_cases
