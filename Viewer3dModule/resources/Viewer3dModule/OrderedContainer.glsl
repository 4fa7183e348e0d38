// Ordered keys in storage buffers that the program side fills, each with values or without, found by halving. For
// fragment stages, where every driver has storage.
//
// INIT_ORDERED_CONTAINER(name, key type) declares a container of keys;
// INIT_ORDERED_CONTAINER_VALS(name, key type, value type, components, empty value) one with so many values a key.
// Keys are int, uint or float. For example:
//
//     INIT_ORDERED_CONTAINER_VALS(marks, int, vec4, 1, vec4(0.0))
//     ...
//     uint index = find_in_marks(number);         // marks_keys_buffer_size when there is no such key
//     vec4 colour = value_in_marks(index, 0u);    // vec4(0.0) when there is no such key
//     if (!contains_in_marks(other_number)) ...
//
// Buffers (std430) and how many entries count, by uniforms that are 0 at first:
//     binding 1  <name>_keys    <name>_keys_buffer_size  the keys, ascending, each once
//     binding 2  <name>_values  <name>_vals_buffer_size  the values of key 0, of key 1, ...
// The bindings leave room for one container in a program, and for no hash table beside it.

#define INIT_ORDERED_CONTAINER(CONTAINER_NAME, KEY_TYPE) \
    layout(std430, binding = 1) readonly buffer CONTAINER_NAME##_keys_buffer \
    { \
        KEY_TYPE CONTAINER_NAME##_keys[]; \
    }; \
    uniform uint CONTAINER_NAME##_keys_buffer_size = 0u; \
    \
    uint find_in_##CONTAINER_NAME(KEY_TYPE key) \
    { \
        uint not_found = CONTAINER_NAME##_keys_buffer_size; \
        uint left = 0u; \
        uint end = not_found; \
        while (left < end && key >= CONTAINER_NAME##_keys[left] && key <= CONTAINER_NAME##_keys[end - 1u]) { \
            uint middle = left + (end - left) / 2u; \
            if (CONTAINER_NAME##_keys[middle] == key) return middle; \
            if (CONTAINER_NAME##_keys[middle] < key) \
                left = middle + 1u; \
            else \
                end = middle; \
        } \
        return not_found; \
    } \
    \
    bool contains_in_##CONTAINER_NAME(KEY_TYPE key) \
    { \
        return find_in_##CONTAINER_NAME(key) < CONTAINER_NAME##_keys_buffer_size; \
    }

#define INIT_ORDERED_CONTAINER_VALS(CONTAINER_NAME, KEY_TYPE, VALUE_TYPE, COMPONENTS, EMPTY_VALUE) \
    INIT_ORDERED_CONTAINER(CONTAINER_NAME, KEY_TYPE) \
    layout(std430, binding = 2) readonly buffer CONTAINER_NAME##_vals_buffer \
    { \
        VALUE_TYPE CONTAINER_NAME##_values[]; \
    }; \
    uniform uint CONTAINER_NAME##_vals_buffer_size = 0u; \
    \
    VALUE_TYPE value_in_##CONTAINER_NAME(uint index, uint component) \
    { \
        uint place = index * uint(COMPONENTS) + component; \
        bool exists = index < CONTAINER_NAME##_keys_buffer_size && component < uint(COMPONENTS); \
        if (!exists || place >= CONTAINER_NAME##_vals_buffer_size) return EMPTY_VALUE; \
        return CONTAINER_NAME##_values[place]; \
    }
