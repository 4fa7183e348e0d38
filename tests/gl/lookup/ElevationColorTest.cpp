#include "CaseDrawing.h"

#include <Viewer3dModule/drawers/Item3dDrawer.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

namespace {

using Color = std::array<double, 4>;

const char* const gradientSource =
    "//#include \"shader:Viewer3dModule/gradient.fragment.glsl\"\n"
    "layout(std430, binding = 4) readonly buffer case_heights { float heights[]; };\n"
    "layout(std430, binding = 0) writeonly buffer case_results { vec4 results[]; };\n"
    "void evaluate(int index) { results[index] = elevColor(heights[index]); }\n";

struct ColorTable
{
    std::vector<std::pair<double, QColor>> levels;
    float step = 0.0f;
    bool isDiscrete = false;

    int count() const { return static_cast<int>(levels.size()); }
    double height(int level) const { return levels[static_cast<std::size_t>(level)].first; }
    Color color(int level) const
    {
        const QColor& c = levels[static_cast<std::size_t>(level)].second;
        return {c.red() / 255.0, c.green() / 255.0, c.blue() / 255.0, c.alpha() / 255.0};
    }
    Color between(int level, double part) const
    {
        Color result{};
        for (std::size_t k = 0; k < 4; ++k)
            result[k] = (1.0 - part) * color(level)[k] + part * color(level + 1)[k];
        return result;
    }
};

// The reference: the rules in words, one by one, in double precision.
Color expectedColor(const ColorTable& table, double z)
{
    const int n = table.count();
    if (n == 0) return {0.0, 0.0, 0.0, 0.0};
    if (table.step > 0.0f) {
        if (!table.isDiscrete) z = std::min(z, table.height(n - 1));
        const double t = (z - table.height(0)) / static_cast<double>(table.step);
        int i = static_cast<int>(t);
        if (table.isDiscrete) {
            while (i < 0)
                i += n;
            return table.color(i % n);
        }
        if (t < 0.0) return table.color(0);
        if (i >= n) return table.color(n - 1);
        return i == n - 1 ? table.color(i) : table.between(i, t - i);
    }
    for (int i = 0; i < n; ++i)
        if (z <= table.height(i)) {
            if (i == 0) return table.color(0);
            return table.between(i - 1, (z - table.height(i - 1)) / (table.height(i) - table.height(i - 1)));
        }
    return table.color(n - 1);
}

class ElevationColorTest : public CaseDrawing
{
protected:
    void SetUp() override
    {
        CaseDrawing::SetUp();
        use(gradientSource);
    }
    void setTable(const ColorTable& table)
    {
        Item3dDrawer::setColorLevels(program.get(), table.levels, table.step, table.isDiscrete);
    }
    /// The colours at these heights under the uniforms as they are.
    std::vector<glm::vec4> colors(const std::vector<float>& heights)
    {
        storage(4, heights);
        return evaluateAll<glm::vec4>(heights.size());
    }
    /// Which level's colour each height has, where every level has a colour of its own and nothing lies
    /// between.
    std::vector<int> levels(const ColorTable& table, const std::vector<float>& heights)
    {
        setTable(table);
        std::vector<int> found;
        for (const glm::vec4& color : colors(heights)) {
            found.push_back(-1);
            for (int i = 0; i < table.count(); ++i)
                if (difference(color, table.color(i)) < 1e-6) found.back() = i;
        }
        return found;
    }
    static double difference(const glm::vec4& actual, const Color& expected)
    {
        double largest = 0.0;
        for (int k = 0; k < 4; ++k) {
            const double part = std::abs(double(actual[k]) - expected[static_cast<std::size_t>(k)]);
            if (!(part <= largest)) largest = part;
        }
        return largest;
    }
};

// Tables and heights of all kinds. Heights are floats, so that both sides see the same numbers.
class RandomTables
{
public:
    enum Kind { Continuous, Discrete, DiscreteExact, Free, Kinds };

    ColorTable table(Kind kind)
    {
        ColorTable table;
        const int n = count();
        const bool isExact = kind == DiscreteExact;
        const float first = isExact ? 0.25f * float(integer(-4000, 4000)) : real(-1000.0f, 1000.0f);
        const float step = isExact ? std::ldexp(1.0f, integer(-3, 5)) : real(0.05f, 40.0f);
        table.step = kind == Free ? (chance(0.5) ? 0.0f : -step) : step;
        table.isDiscrete = kind == Discrete || kind == DiscreteExact || (kind == Free && chance(0.5));
        const bool isEquidistant = kind != Free && chance(0.7);
        const bool isAscending = chance(0.8);
        float height = first;
        for (int i = 0; i < n; ++i) {
            table.levels.emplace_back(double(height), color());
            if (isEquidistant)
                height = first + float(i + 1) * step;
            else if (isAscending)
                height += chance(0.1) ? 0.0f : real(0.01f, 30.0f);
            else
                height = real(-1000.0f, 1000.0f);
        }
        return table;
    }
    float height(const ColorTable& table, Kind kind)
    {
        const int n = table.count();
        if (n == 0 || kind == Free || (kind == Continuous && chance(0.2))) return freeHeight(table);
        const double first = table.height(0);
        // away from whole steps, where rounding would choose between two colours
        if (kind == Discrete)
            return float(first +
                         (integer(-3 * n - 2, 3 * n + 2) + double(real(0.05f, 0.95f))) * double(table.step));
        if (kind == DiscreteExact) return float(first + 0.25 * integer(-12 * n, 12 * n) * table.step);
        return float(first + double(real(-1.0f, float(n) + 1.0f)) * table.step);
    }
    int integer(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }
    float real(float from, float to) { return std::uniform_real_distribution<float>(from, to)(m_random); }
    bool chance(double probability) { return std::bernoulli_distribution(probability)(m_random); }

private:
    int count()
    {
        if (chance(0.04)) return 0;
        if (chance(0.08)) return 1;
        if (chance(0.05)) return 256;
        return chance(0.3) ? integer(2, 255) : integer(2, 12);
    }
    QColor color() { return QColor(integer(0, 255), integer(0, 255), integer(0, 255), integer(0, 255)); }
    float freeHeight(const ColorTable& table)
    {
        if (table.levels.empty() || chance(0.1)) return real(-1500.0f, 1500.0f);
        const int level = integer(0, table.count() - 1);
        const float height = float(table.height(level));
        return chance(0.2) ? height : height + real(-30.0f, 30.0f);
    }

    std::mt19937 m_random{20240607};
};

TEST_F(ElevationColorTest, RandomTablesAndHeightsFollowTheRules)
{
    constexpr int tableCount = 10000, heightsPerTable = 8;
    constexpr double tolerance = 1e-4;
    RandomTables random;
    std::vector<ColorTable> tables;
    std::vector<float> heights;
    for (int i = 0; i < tableCount; ++i) {
        const auto kind = static_cast<RandomTables::Kind>(i % RandomTables::Kinds);
        tables.push_back(random.table(kind));
        for (int k = 0; k < heightsPerTable; ++k)
            heights.push_back(random.height(tables.back(), kind));
    }
    storage(4, heights);
    storage(ResultBinding, std::vector<glm::vec4>(heights.size(), glm::vec4(-1.0f)));
    for (int i = 0; i < tableCount; ++i) {
        setTable(tables[static_cast<std::size_t>(i)]);
        evaluate(i * heightsPerTable, heightsPerTable);
    }
    const auto found = results<glm::vec4>(heights.size());
    double largest = 0.0;
    std::size_t worst = 0;
    for (std::size_t i = 0; i < found.size(); ++i) {
        const double d = difference(found[i], expectedColor(tables[i / heightsPerTable], double(heights[i])));
        if (d <= largest) continue;
        largest = d;
        worst = i;
    }
    std::printf("elevColor: %d tables, %zu cases, largest difference %.1e, tolerance %.0e\n", tableCount,
                heights.size(), largest, tolerance);
    EXPECT_LE(largest, tolerance) << "table " << worst / heightsPerTable << ", height " << heights[worst];
}

ColorTable fourLevels(float step, bool isDiscrete)
{
    return {{{100.0, QColor(10, 20, 30, 40)},
             {102.0, QColor(50, 60, 70, 80)},
             {104.0, QColor(90, 100, 110, 120)},
             {106.0, QColor(130, 140, 150, 160)}},
            step,
            isDiscrete};
}

TEST_F(ElevationColorTest, DiscreteColoursRepeatAndTheFirstReachesOneStepDown)
{
    // t = -0.5 -> 0; -1 and -1.5 -> -1, that is 3; and so on
    const std::vector<float> steps = {0.0f,  0.5f,  1.0f,  3.0f,  3.5f,  4.0f,  7.5f,  8.0f, -0.5f,
                                      -1.0f, -1.5f, -2.0f, -3.0f, -4.0f, -4.5f, -5.0f, -8.0f};
    const std::vector<int> expected = {0, 0, 1, 3, 3, 0, 3, 0, 0, 3, 3, 2, 1, 0, 0, 3, 0};
    std::vector<float> heights;
    for (const float t : steps)
        heights.push_back(100.0f + 2.0f * t);
    EXPECT_EQ(levels(fourLevels(2.0f, true), heights), expected);
}

TEST_F(ElevationColorTest, DiscreteColoursAreToldUpToTheEndOfIntegers)
{
    ColorTable table = fourLevels(1.0f, true);
    table.levels.front().first = 0.0;
    table.levels.pop_back(); // 3 levels: powers of two fall on different ones
    // 2^30 = 1 mod 3, 2^31 - 128 = 0 mod 3, -2^30 = 2 mod 3, -2^31 + 128 = 0, -2^31 = 1; from there on the
    // same
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> heights = {1073741824.0f,  2147483520.0f,  2147483648.0f,  1e30f,  infinity,
                                        -1073741824.0f, -2147483520.0f, -2147483648.0f, -1e30f, -infinity};
    EXPECT_EQ(levels(table, heights), (std::vector<int>{1, 0, 0, 0, 0, 2, 0, 1, 1, 1}));
}

TEST_F(ElevationColorTest, ContinuousColoursStayBeyondBothEnds)
{
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> heights = {100.0f, 99.5f,  98.0f, 0.0f,    -infinity,
                                        106.0f, 107.0f, 1e30f, infinity};
    const std::vector<int> expected = {0, 0, 0, 0, 0, 3, 3, 3, 3};
    EXPECT_EQ(levels(fourLevels(2.0f, false), heights), expected);
    EXPECT_EQ(levels(fourLevels(0.0f, false), heights), expected);
    EXPECT_EQ(levels(fourLevels(-1.0f, true), heights), expected) << "a step below 0 is none";
}

TEST_F(ElevationColorTest, TheLastLevelEndsTheStepsOfContinuousColours)
{
    // three steps would reach 130; the last level cuts them off at 106, that is at 0.6 of the first
    ColorTable table = fourLevels(10.0f, false);
    setTable(table);
    for (const glm::vec4& color : colors({106.0f, 120.0f, 1000.0f}))
        EXPECT_LT(difference(color, table.between(0, 0.6)), 1e-6);
    // a step shorter than the heights tell: beyond four of them it is the last colour
    EXPECT_EQ(levels(fourLevels(0.5f, false), {101.5f, 102.0f, 106.0f}), (std::vector<int>{3, 3, 3}));
}

TEST_F(ElevationColorTest, WithoutLevelsThereIsNoColour)
{
    const std::vector<float> heights = {-5.0f, 0.0f, 5.0f};
    const std::vector<glm::vec4> nothing(3, glm::vec4(0.0f));
    EXPECT_EQ(colors(heights), nothing) << "nothing set at all";
    EXPECT_EQ(integerOf("levelCount"), 0);
    EXPECT_EQ(integerOf("levelStepDiscreteMode"), 0);
    float step = -1.0f;
    gl->glGetUniformfv(program->programId(), program->uniformLocation("levelStep"), &step);
    EXPECT_EQ(step, 0.0f);
    setTable(fourLevels(1.0f, true));
    EXPECT_NE(colors(heights), nothing);
    setTable({{}, 1.0f, true});
    EXPECT_EQ(colors(heights), nothing);
    setTable({{}, 0.0f, false});
    EXPECT_EQ(colors(heights), nothing);
    set("levelCount", -1);
    EXPECT_EQ(colors(heights), nothing);
}

TEST_F(ElevationColorTest, CountBeyondTheTableIsTheWholeTable)
{
    ColorTable table;
    for (int i = 0; i < 256; ++i)
        table.levels.emplace_back(double(i), QColor(i, 0, 255 - i));
    table.step = 1.0f;
    table.isDiscrete = true;
    setTable(table);
    set("levelCount", 1000);
    const auto found = colors({255.5f, 256.5f, -1.5f});
    EXPECT_LT(difference(found[0], table.color(255)), 1e-6);
    EXPECT_LT(difference(found[1], table.color(0)), 1e-6);
    EXPECT_LT(difference(found[2], table.color(255)), 1e-6);
}

TEST_F(ElevationColorTest, TheTableFitsIntoTheUniformsOfEveryDriver)
{
    int active = 0, components = 0;
    gl->glGetProgramiv(program->programId(), GL_ACTIVE_UNIFORMS, &active);
    for (int i = 0; i < active; ++i) {
        const GLuint index = static_cast<GLuint>(i);
        int entries = 0;
        gl->glGetActiveUniformsiv(program->programId(), 1, &index, GL_UNIFORM_SIZE, &entries);
        components += 4 * entries; // drivers may give every entry a vector of four
    }
    std::printf("elevColor: %d uniform components of 1024\n", components);
    EXPECT_GE(components, 2 * 256);
    EXPECT_LE(components, 1024 / 2 + 64) << "leave room for the uniforms of whoever includes it";
}

TEST_F(ElevationColorTest, WhatIsNoNumberHasNoColour)
{
    const std::vector<float> heights(3, std::numeric_limits<float>::quiet_NaN());
    const std::vector<glm::vec4> nothing(3, glm::vec4(0.0f));
    for (const ColorTable& table :
         {fourLevels(2.0f, true), fourLevels(2.0f, false), fourLevels(0.0f, false)}) {
        setTable(table);
        EXPECT_EQ(colors(heights), nothing);
    }
}

} // namespace
