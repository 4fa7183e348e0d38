// Hash tables in storage buffers that the program side fills: unique keys, each with values or without. For fragment
// stages, where every driver has storage.
//
// INIT_HASH_TABLE(name, key type) declares a table of keys;
// INIT_HASH_TABLE_VALS(name, key type, value type, components, empty value) one with so many values a key.
// Keys are of any type that == compares: int, uint, uvec2 for 64-bit ids. The stage supplies the hash function, before
// or after. For example:
//
//     INIT_HASH_TABLE_VALS(limits, uvec2, float, 2, -1.0)
//     uint limits_get_hash(uvec2 key) { return key.x ^ (key.y * 2654435761u); }
//     ...
//     uint index = find_in_limits(id);            // limits_keys_buffer_size when there is no such key
//     float lower = value_in_limits(index, 0u);   // -1.0 when there is no such key
//     float upper = value_in_limits(index, 1u);
//     if (!contains_in_limits(other_id)) ...
//
// Buffers (std430) and how many entries count, by uniforms that are 0 at first:
//     binding 1  <name>_bucket_offsets  <name>_buckets_buffer_size  uint: where the keys of a bucket start, ascending
//     binding 2  <name>_keys            <name>_keys_buffer_size     the keys, those of bucket 0 first
//     binding 3  <name>_values          <name>_vals_buffer_size     the values of key 0, of key 1, ...
// A key belongs to bucket hash mod number of buckets. The bindings leave room for one table in a program, and for no
// ordered container beside it.

#define INIT_HASH_TABLE(TABLE_NAME, KEY_TYPE) \
    layout(std430, binding = 1) readonly buffer TABLE_NAME##_buckets_buffer \
    { \
        uint TABLE_NAME##_bucket_offsets[]; \
    }; \
    layout(std430, binding = 2) readonly buffer TABLE_NAME##_keys_buffer \
    { \
        KEY_TYPE TABLE_NAME##_keys[]; \
    }; \
    uniform uint TABLE_NAME##_buckets_buffer_size = 0u; \
    uniform uint TABLE_NAME##_keys_buffer_size = 0u; \
    \
    uint TABLE_NAME##_get_hash(KEY_TYPE key); \
    \
    uint find_in_##TABLE_NAME(KEY_TYPE key) \
    { \
        uint buckets = TABLE_NAME##_buckets_buffer_size; \
        uint not_found = TABLE_NAME##_keys_buffer_size; \
        if (buckets == 0u) return not_found; \
        uint bucket = TABLE_NAME##_get_hash(key) % buckets; \
        uint end = not_found; \
        if (bucket + 1u < buckets) end = min(TABLE_NAME##_bucket_offsets[bucket + 1u], end); \
        for (uint i = TABLE_NAME##_bucket_offsets[bucket]; i < end; ++i) \
            if (TABLE_NAME##_keys[i] == key) return i; \
        return not_found; \
    } \
    \
    bool contains_in_##TABLE_NAME(KEY_TYPE key) \
    { \
        return find_in_##TABLE_NAME(key) < TABLE_NAME##_keys_buffer_size; \
    }

#define INIT_HASH_TABLE_VALS(TABLE_NAME, KEY_TYPE, VALUE_TYPE, COMPONENTS, EMPTY_VALUE) \
    INIT_HASH_TABLE(TABLE_NAME, KEY_TYPE) \
    layout(std430, binding = 3) readonly buffer TABLE_NAME##_vals_buffer \
    { \
        VALUE_TYPE TABLE_NAME##_values[]; \
    }; \
    uniform uint TABLE_NAME##_vals_buffer_size = 0u; \
    \
    VALUE_TYPE value_in_##TABLE_NAME(uint index, uint component) \
    { \
        uint place = index * uint(COMPONENTS) + component; \
        bool exists = index < TABLE_NAME##_keys_buffer_size && component < uint(COMPONENTS); \
        if (!exists || place >= TABLE_NAME##_vals_buffer_size) return EMPTY_VALUE; \
        return TABLE_NAME##_values[place]; \
    }
