// Colours by height, for vertex and fragment stages: elevColor(z).

// The levels, packed: 256 colours and heights as vectors of their own would take more uniform components than every
// driver has. Four levels a vector, level 4 * k + c in component c of vector k.
const int max_color_levels = 256;
uniform uvec4 colorLevels[max_color_levels / 4]; // 8 bits a channel, red in the lowest byte, then green, blue, alpha
uniform vec4 elevLevels[max_color_levels / 4];   // heights, ascending
uniform int levelCount = 0;
// Above 0: level k stands for the height elevLevels[0] + k * levelStep, else for elevLevels[k].
uniform float levelStep = 0.0;
// With a step: one colour a step, again from the first one after the last, instead of colours in between.
uniform bool levelStepDiscreteMode = false;

// In both: 0 <= level < levelCount.
vec4 colorOfLevel(int level)
{
    return unpackUnorm4x8(colorLevels[level / 4][level % 4]);
}

float heightOfLevel(int level)
{
    return elevLevels[level / 4][level % 4];
}

// t counts steps from the first level and is cut towards zero: the first colour reaches one step down as well. Beyond
// what an int holds t stays at its end.
vec4 repeatedLevelColor(float t, int count)
{
    int i = int(clamp(t, -2147483648.0, 2147483520.0));
    // % is told for operands that are not negative only; ~i is -1 - i, which is not when i is
    return colorOfLevel(i < 0 ? count - 1 - ~i % count : i % count);
}

vec4 steppedLevelColor(float t, int count)
{
    if (!(t >= 0.0)) return colorOfLevel(0);
    int last = count - 1;
    if (t >= float(last)) return colorOfLevel(last);
    int i = int(t);
    return mix(colorOfLevel(i), colorOfLevel(i + 1), t - float(i));
}

// Between the first level that is not below z and the one before.
vec4 freeLevelColor(float z, int count)
{
    for (int i = 0; i < count; ++i) {
        float upper = heightOfLevel(i);
        if (z <= upper) {
            if (i == 0) return colorOfLevel(0);
            float lower = heightOfLevel(i - 1);
            return mix(colorOfLevel(i - 1), colorOfLevel(i), (z - lower) / (upper - lower));
        }
    }
    return colorOfLevel(count - 1);
}

// The colour of the height z, in the unit of the levels. Transparent black without levels, and for what is no number.
vec4 elevColor(float z)
{
    int count = min(levelCount, max_color_levels);
    if (count <= 0 || isnan(z)) return vec4(0.0);
    if (!(levelStep > 0.0)) return freeLevelColor(z, count);
    float first = heightOfLevel(0);
    if (levelStepDiscreteMode) return repeatedLevelColor((z - first) / levelStep, count);
    return steppedLevelColor((min(z, heightOfLevel(count - 1)) - first) / levelStep, count);
}
