#include "CaseDrawing.h"
#include "KeyedCases.h"

#include <algorithm>
#include <cstdio>
#include <limits>

namespace {

using namespace keyed_cases;

const QByteArray orderedContainer = "//#include \"shader:Viewer3dModule/OrderedContainer.glsl\"\n";

template <typename Key>
Stored<Key> sorted(std::vector<Key> keys, RandomKeys& random)
{
    std::sort(keys.begin(), keys.end());
    Stored<Key> stored;
    for (const Key& key : keys)
        stored.add(key, {random.value(), random.value(), random.value()});
    return stored;
}

class OrderedContainerTest : public CaseDrawing
{
protected:
    void useKeys(const std::string& type)
    {
        use(orderedContainer + "INIT_ORDERED_CONTAINER_VALS(cells, KEY, float, 3, -7.5)\n" + StageEnd,
            {"KEY " + type});
    }
    /// Uploads keys and values. Beyond what the uniforms count lies `beyond` with values of its own, never to
    /// be found.
    template <typename Key>
    void feed(const Stored<Key>& stored, const Key& beyond)
    {
        std::vector<Key> keys = stored.keys;
        keys.push_back(beyond);
        std::vector<float> values = stored.values;
        values.resize(values.size() + Components, 999.0f);
        storage(1, keys);
        storage(2, values);
        set("cells_keys_buffer_size", static_cast<unsigned>(stored.keys.size()));
        set("cells_vals_buffer_size", static_cast<unsigned>(stored.values.size()));
    }
    template <typename Key>
    std::vector<Found> find(const std::vector<Key>& keys)
    {
        storage(4, keys);
        return evaluateAll<Found>(keys.size());
    }
    template <typename Key>
    void checkAgainstMap(const char* type)
    {
        useKeys(type);
        RandomKeys random;
        std::size_t cases = 0, wrong = 0, containers = 0;
        for (const std::size_t count : {1u, 2u, 3u, 4u, 5u, 7u, 8u, 100u, 1001u, 100000u}) {
            std::vector<Key> asked = differentKeys<Key>(random, count + std::min<std::size_t>(count, 20000));
            const Stored<Key> stored =
                sorted(std::vector<Key>(asked.begin(), asked.begin() + std::ptrdiff_t(count)), random);
            feed(stored, std::max(asked.back(), stored.keys.back()));
            asked.push_back(std::numeric_limits<Key>::lowest());
            asked.push_back(std::numeric_limits<Key>::max());
            wrong += stored.wrongCount(asked, find(asked));
            cases += asked.size();
            ++containers;
        }
        std::printf(
            "ordered container of %s keys: %zu containers of 1 to 100000 keys, %zu cases, %zu differ\n", type,
            containers, cases, wrong);
        EXPECT_EQ(wrong, 0u);
    }
};

TEST_F(OrderedContainerTest, UnsignedKeysAreFoundAsInAMap)
{
    checkAgainstMap<std::uint32_t>("uint");
}

TEST_F(OrderedContainerTest, SignedKeysAreFoundAsInAMap)
{
    checkAgainstMap<std::int32_t>("int");
}

TEST_F(OrderedContainerTest, FloatKeysAreFoundAsInAMap)
{
    checkAgainstMap<float>("float");
}

TEST_F(OrderedContainerTest, AnEmptyContainerHasNoKey)
{
    useKeys("int");
    const std::vector<std::int32_t> asked = {0, -1, 2147483647};
    const Stored<std::int32_t> nothing;
    EXPECT_EQ(nothing.wrongCount(asked, find(asked)), 0u) << "no sizes set, no buffers bound";
    for (const char* size : {"cells_keys_buffer_size", "cells_vals_buffer_size"})
        EXPECT_EQ(integerOf(size), 0) << size;
    feed(nothing, 0);
    EXPECT_EQ(nothing.wrongCount(asked, find(asked)), 0u);
}

TEST_F(OrderedContainerTest, WhatIsNoNumberIsNoKey)
{
    useKeys("float");
    RandomKeys random;
    const auto stored = sorted<float>({-1.0f, 0.0f, 2.0f}, random);
    feed(stored, 3.0f);
    const float infinity = std::numeric_limits<float>::infinity();
    const auto found =
        find(std::vector<float>{std::numeric_limits<float>::quiet_NaN(), infinity, -infinity, 2.0f});
    EXPECT_EQ(found[0].index, 3u);
    EXPECT_EQ(found[1].index, 3u);
    EXPECT_EQ(found[2].index, 3u);
    EXPECT_EQ(found[3].index, 2u);
}

TEST_F(OrderedContainerTest, ValuesBeyondTheBufferAreEmpty)
{
    useKeys("int");
    RandomKeys random;
    const auto stored = sorted<std::int32_t>({5, 6}, random);
    feed(stored, 7);
    set("cells_vals_buffer_size", 5u); // three of key 5, two of key 6
    const auto found = find(std::vector<std::int32_t>{5, 6});
    EXPECT_EQ(found[0].values, (Values{stored.values[0], stored.values[1], stored.values[2]}));
    EXPECT_EQ(found[1].values, (Values{stored.values[3], stored.values[4], EmptyValue}));
}

TEST_F(OrderedContainerTest, ValuesOfNoKeyAreEmpty)
{
    useKeys("int");
    RandomKeys random;
    const auto stored = sorted<std::int32_t>({5, 6}, random);
    feed(stored, 7);
    set("cells_vals_buffer_size", 9u); // three more than there are keys for
    EXPECT_EQ(stored.wrongCount({4, 5, 6, 7}, find(std::vector<std::int32_t>{4, 5, 6, 7})), 0u);
}

TEST_F(OrderedContainerTest, KeysAloneAndVectorsAsValues)
{
    const QByteArray rest =
        "layout(std430, binding = 0) writeonly buffer case_results { vec4 results[]; };\n";
    storage(1, std::vector<std::uint32_t>{2u, 3u, 0x80000000u});
    storage(2, std::vector<glm::vec4>{{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}});

    use(orderedContainer + "INIT_ORDERED_CONTAINER(marks, uint)\n" + rest +
        "void evaluate(int i)\n"
        "{ results[i] = vec4(contains_in_marks(i + 1), contains_in_marks(0x80000000u), find_in_marks(3u), "
        "0); }\n");
    set("marks_keys_buffer_size", 3u);
    EXPECT_EQ(evaluateAll<glm::vec4>(3), (std::vector<glm::vec4>{{0, 1, 1, 0}, {1, 1, 1, 0}, {1, 1, 1, 0}}));

    use(orderedContainer + "INIT_ORDERED_CONTAINER_VALS(marks, uint, vec4, 1, vec4(0.5, 0.0, 0.0, 1.0))\n" +
        rest + "void evaluate(int i) { results[i] = value_in_marks(find_in_marks(i + 1), 0u); }\n");
    set("marks_keys_buffer_size", 3u);
    set("marks_vals_buffer_size", 3u);
    EXPECT_EQ(evaluateAll<glm::vec4>(3),
              (std::vector<glm::vec4>{{0.5f, 0, 0, 1}, {1, 2, 3, 4}, {5, 6, 7, 8}}));
}

TEST_F(OrderedContainerTest, BlocksAreBoundAndNamedAfterTheContainer)
{
    useKeys("uint");
    EXPECT_EQ(blockBinding("cells_keys_buffer"), 1);
    EXPECT_EQ(blockBinding("cells_vals_buffer"), 2);
}

} // namespace
