#include "CaseDrawing.h"
#include "KeyedCases.h"

#include <algorithm>
#include <cstdio>

namespace {

using namespace keyed_cases;

std::uint32_t hashOf(std::uint32_t key)
{
    const std::uint32_t mixed = (key ^ (key >> 15)) * 0x2C1B3C6Du;
    return mixed ^ (mixed >> 12);
}
std::uint32_t hashOf(std::int32_t key)
{
    return hashOf(static_cast<std::uint32_t>(key));
}
std::uint32_t hashOf(const glm::uvec2& key)
{
    return hashOf(key.x ^ hashOf(key.y));
}

const QByteArray hashFunctions =
    "uint hash_of(uint key) { uint m = (key ^ (key >> 15)) * 0x2C1B3C6Du; return m ^ (m >> 12); }\n"
    "uint hash_of(int key) { return hash_of(uint(key)); }\n"
    "uint hash_of(uvec2 key) { return hash_of(key.x ^ hash_of(key.y)); }\n";
const QByteArray hashTable = "//#include \"shader:Viewer3dModule/HashTable.glsl\"\n";

template <typename Key>
struct KeyTable : Stored<Key>
{
    std::vector<std::uint32_t> offsets;

    /// Puts the keys into so many buckets.
    KeyTable(const std::vector<Key>& all, std::size_t buckets, RandomKeys& random)
    {
        std::vector<std::vector<Key>> parts(buckets);
        for (const Key& key : all)
            parts[hashOf(key) % buckets].push_back(key);
        for (const std::vector<Key>& part : parts) {
            offsets.push_back(static_cast<std::uint32_t>(this->keys.size()));
            for (const Key& key : part)
                this->add(key, {random.value(), random.value(), random.value()});
        }
    }
};

class HashTableTest : public CaseDrawing
{
protected:
    void useKeys(const std::string& type)
    {
        use(hashTable + hashFunctions +
                "INIT_HASH_TABLE_VALS(cells, KEY, float, 3, -7.5)\n"
                "uint cells_get_hash(KEY key) { return hash_of(key); }\n" +
                StageEnd,
            {"KEY " + type});
    }
    /// Uploads the table. Beyond what the uniforms count lies `beyond` with values of its own, never to be
    /// found.
    template <typename Key>
    void feed(const KeyTable<Key>& table, const Key& beyond)
    {
        std::vector<std::uint32_t> offsets = table.offsets;
        offsets.push_back(0u);
        std::vector<Key> keys = table.keys;
        keys.push_back(beyond);
        std::vector<float> values = table.values;
        values.resize(values.size() + Components, 999.0f);
        storage(1, offsets);
        storage(2, keys);
        storage(3, values);
        set("cells_buckets_buffer_size", static_cast<unsigned>(table.offsets.size()));
        set("cells_keys_buffer_size", static_cast<unsigned>(table.keys.size()));
        set("cells_vals_buffer_size", static_cast<unsigned>(table.values.size()));
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
        std::size_t cases = 0, wrong = 0, tables = 0;
        for (const std::size_t count : {1u, 2u, 3u, 10u, 1000u, 100000u})
            for (const std::size_t buckets : {std::size_t(1), count / 3 + 1, 2 * count}) {
                if (count > 1000 && buckets != count / 3 + 1) continue; // takes too long
                const std::vector<Key> asked =
                    differentKeys<Key>(random, count + std::min<std::size_t>(count, 20000));
                const std::vector<Key> stored(asked.begin(), asked.begin() + std::ptrdiff_t(count));
                const KeyTable<Key> table(stored, buckets, random);
                feed(table, asked.back());
                wrong += table.wrongCount(asked, find(asked));
                cases += asked.size();
                ++tables;
            }
        std::printf("hash table of %s keys: %zu tables of 1 to 100000 keys, %zu cases, %zu differ\n", type,
                    tables, cases, wrong);
        EXPECT_EQ(wrong, 0u);
    }
};

TEST_F(HashTableTest, UnsignedKeysAreFoundAsInAMap)
{
    checkAgainstMap<std::uint32_t>("uint");
}

TEST_F(HashTableTest, SignedKeysAreFoundAsInAMap)
{
    checkAgainstMap<std::int32_t>("int");
}

TEST_F(HashTableTest, WideKeysAreFoundAsInAMap)
{
    checkAgainstMap<glm::uvec2>("uvec2");
}

TEST_F(HashTableTest, AnEmptyTableHasNoKey)
{
    useKeys("uint");
    RandomKeys random;
    const std::vector<std::uint32_t> asked = {0u, 1u, 0xFFFFFFFFu};
    const Stored<std::uint32_t> nothing;
    EXPECT_EQ(nothing.wrongCount(asked, find(asked)), 0u) << "no sizes set, no buffers bound";
    for (const char* size : {"cells_buckets_buffer_size", "cells_keys_buffer_size", "cells_vals_buffer_size"})
        EXPECT_EQ(integerOf(size), 0) << size;
    for (const std::size_t buckets : {1u, 5u}) {
        feed(KeyTable<std::uint32_t>({}, buckets, random), 1u);
        EXPECT_EQ(nothing.wrongCount(asked, find(asked)), 0u) << buckets;
    }
}

TEST_F(HashTableTest, WithoutBucketsNothingIsFoundThoughThereAreKeys)
{
    useKeys("uint");
    RandomKeys random;
    feed(KeyTable<std::uint32_t>({5u, 6u}, 1, random), 1u);
    set("cells_buckets_buffer_size", 0u);
    for (const Found& found : find(std::vector<std::uint32_t>{5u, 6u})) {
        EXPECT_EQ(found.index, 2u);
        EXPECT_EQ(found.isContained, 0u);
        EXPECT_EQ(found.values, (Values{EmptyValue, EmptyValue, EmptyValue}));
    }
}

TEST_F(HashTableTest, ValuesBeyondTheBufferAreEmpty)
{
    useKeys("uint");
    RandomKeys random;
    const KeyTable<std::uint32_t> table({5u, 6u}, 1, random);
    feed(table, 1u);
    set("cells_vals_buffer_size", 4u); // three of key 5, one of key 6
    const auto found = find(std::vector<std::uint32_t>{5u, 6u});
    EXPECT_EQ(found[0].values, (Values{table.values[0], table.values[1], table.values[2]}));
    EXPECT_EQ(found[1].values, (Values{table.values[3], EmptyValue, EmptyValue}));
}

TEST_F(HashTableTest, ValuesOfNoKeyAreEmpty)
{
    useKeys("uint");
    RandomKeys random;
    const KeyTable<std::uint32_t> table({5u, 6u}, 1, random);
    feed(table, 1u);
    set("cells_vals_buffer_size", 9u); // three more than there are keys for
    EXPECT_EQ(table.wrongCount({1u, 5u, 6u}, find(std::vector<std::uint32_t>{1u, 5u, 6u})), 0u);
}

TEST_F(HashTableTest, OffsetsBeyondTheKeysReachToTheirEnd)
{
    useKeys("uint");
    RandomKeys random;
    KeyTable<std::uint32_t> table({2u, 4u, 6u}, 1, random);
    feed(table, 1u);
    storage(1, std::vector<std::uint32_t>{0u, 1000u}); // one bucket holds them all and more
    set("cells_buckets_buffer_size", 2u);
    std::vector<std::uint32_t> firstBucket;
    for (std::uint32_t key = 0; key < 10; ++key)
        if (hashOf(key) % 2 == 0) firstBucket.push_back(key);
    table.map.clear();
    for (std::uint32_t i = 0; i < 3; ++i)
        if (hashOf(table.keys[i]) % 2 == 0)
            table.map[table.keys[i]] = {
                i, {table.values[3 * i], table.values[3 * i + 1], table.values[3 * i + 2]}};
    EXPECT_EQ(table.wrongCount(firstBucket, find(firstBucket)), 0u);
}

TEST_F(HashTableTest, KeysAloneAndVectorsAsValues)
{
    const QByteArray rest =
        "layout(std430, binding = 0) writeonly buffer case_results { vec4 results[]; };\n";
    const std::vector<std::uint32_t> offsets = {0u, 2u};
    storage(1, offsets);
    storage(2, std::vector<std::int32_t>{-8, 4, 3}); // even ones first
    storage(3, std::vector<glm::vec4>{{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}});

    use(hashTable + "uint odd_get_hash(int key) { return uint(key & 1); }\nINIT_HASH_TABLE(odd, int)\n" +
        rest +
        "void evaluate(int i)\n"
        "{ results[i] = vec4(contains_in_odd(i + 2), contains_in_odd(-8), find_in_odd(3), find_in_odd(-4)); "
        "}\n");
    set("odd_buckets_buffer_size", 2u);
    set("odd_keys_buffer_size", 3u);
    EXPECT_EQ(evaluateAll<glm::vec4>(3), (std::vector<glm::vec4>{{0, 1, 2, 3}, {1, 1, 2, 3}, {1, 1, 2, 3}}));

    use(hashTable + "INIT_HASH_TABLE_VALS(odd, int, vec4, 1, vec4(0.5, 0.0, 0.0, 1.0))\n" + rest +
        "uint odd_get_hash(int key) { return uint(key & 1); }\n"
        "void evaluate(int i) { results[i] = value_in_odd(find_in_odd(i + 2), 0u); }\n");
    set("odd_buckets_buffer_size", 2u);
    set("odd_keys_buffer_size", 3u);
    set("odd_vals_buffer_size", 3u);
    EXPECT_EQ(evaluateAll<glm::vec4>(3),
              (std::vector<glm::vec4>{{0.5f, 0, 0, 1}, {9, 10, 11, 12}, {5, 6, 7, 8}}));
}

TEST_F(HashTableTest, BlocksAreBoundAndNamedAfterTheTable)
{
    useKeys("uint");
    EXPECT_EQ(blockBinding("cells_buckets_buffer"), 1);
    EXPECT_EQ(blockBinding("cells_keys_buffer"), 2);
    EXPECT_EQ(blockBinding("cells_vals_buffer"), 3);
}

} // namespace
