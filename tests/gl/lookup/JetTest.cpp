#include "CaseDrawing.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>

namespace {

constexpr std::size_t Dimension = 3;

// A case as the shader reads it: two jets and a number; what it writes is one jet.
struct FloatJet
{
    float a;
    float v[Dimension];
};
struct Case
{
    FloatJet x, y;
    float s;
};

const QByteArray jet = "//#include \"shader:Viewer3dModule/Jet.glsl\"\n";

// One stage for all expressions: the uniform "chosen" tells which.
QByteArray sourceOf(const std::vector<const char*>& expressions)
{
    QByteArray source = jet +
                        "struct Case { Jet x; Jet y; float s; };\n"
                        "layout(std430, binding = 4) readonly buffer case_inputs { Case cases[]; };\n"
                        "layout(std430, binding = 0) writeonly buffer case_results { Jet results[]; };\n"
                        "uniform int chosen = 0;\n"
                        "Jet value_of(Jet x, Jet y, float s)\n"
                        "{\n";
    for (std::size_t i = 1; i < expressions.size(); ++i)
        source += "    if (chosen == " + QByteArray::number(int(i)) + ") return " + expressions[i] + ";\n";
    return source + "    return " + expressions[0] +
           ";\n}\n"
           "void evaluate(int i) { results[i] = value_of(cases[i].x, cases[i].y, cases[i].s); }\n";
}

// The same on the CPU: the function, and its derivatives by x and by y in closed form.
struct Operation
{
    const char* name;
    const char* expression;
    std::function<double(double, double, double)> value;
    std::function<double(double, double, double)> byX;
    std::function<double(double, double, double)> byY;
    bool isForPositive = false; ///< of x, y and s
};

const std::vector<Operation>& operations()
{
    using std::cos;
    using std::sin;
    using std::sqrt;
    const auto zero = [](double, double, double) { return 0.0; };
    const auto one = [](double, double, double) { return 1.0; };
    static const std::vector<Operation> all = {
        {"jet + number", "jetAdd(x, s)", [](double x, double, double s) { return x + s; }, one, zero},
        {"jet + jet", "jetAdd(x, y)", [](double x, double y, double) { return x + y; }, one, one},
        {"jet - number", "jetSubtract(x, s)", [](double x, double, double s) { return x - s; }, one, zero},
        {"jet - jet", "jetSubtract(x, y)", [](double x, double y, double) { return x - y; }, one,
         [](double, double, double) { return -1.0; }},
        {"jet * number", "jetMultiply(x, s)", [](double x, double, double s) { return x * s; },
         [](double, double, double s) { return s; }, zero},
        {"jet * jet", "jetMultiply(x, y)", [](double x, double y, double) { return x * y; },
         [](double, double y, double) { return y; }, [](double x, double, double) { return x; }},
        {"1 / jet", "jetInverse(x)", [](double x, double, double) { return 1.0 / x; },
         [](double x, double, double) { return -1.0 / (x * x); }, zero},
        {"jet / jet", "jetDivide(x, y)", [](double x, double y, double) { return x / y; },
         [](double, double y, double) { return 1.0 / y; },
         [](double x, double y, double) { return -x / (y * y); }},
        {"sqrt", "jetSqrt(x)", [](double x, double, double) { return sqrt(x); },
         [](double x, double, double) { return 0.5 / sqrt(x); }, zero, true},
        {"sin", "jetSin(x)", [](double x, double, double) { return sin(x); },
         [](double x, double, double) { return cos(x); }, zero},
        {"cos", "jetCos(x)", [](double x, double, double) { return cos(x); },
         [](double x, double, double) { return -sin(x); }, zero},
        {"constant", "jetConstant(s)", [](double, double, double s) { return s; }, zero, zero},
        // sqrt(x^2 + y^2) sin(x) / (y + s) - cos(1 / y), term by term
        {"all together",
         "jetSubtract(jetDivide(jetMultiply(jetSqrt(jetAdd(jetMultiply(x, x), jetMultiply(y, y))), "
         "jetSin(x)), jetAdd(y, s)), jetCos(jetInverse(y)))",
         [](double x, double y, double s) { return sqrt(x * x + y * y) * sin(x) / (y + s) - cos(1.0 / y); },
         [](double x, double y, double s) {
             const double r = sqrt(x * x + y * y);
             return (x / r * sin(x) + r * cos(x)) / (y + s);
         },
         [](double x, double y, double s) {
             const double r = sqrt(x * x + y * y);
             return sin(x) * (y / r / (y + s) - r / ((y + s) * (y + s))) - sin(1.0 / y) / (y * y);
         },
         true}};
    return all;
}

std::vector<Case> randomCases(std::size_t count, bool isPositive)
{
    std::mt19937 random(31);
    std::uniform_real_distribution<float> slope(-2.0f, 2.0f), size(0.3f, 6.0f);
    const auto number = [&] { return isPositive || random() % 2 == 0 ? size(random) : -size(random); };
    std::vector<Case> cases(count);
    for (Case& c : cases) {
        c = {{number(), {}}, {number(), {}}, number()};
        for (std::size_t k = 0; k < Dimension; ++k) {
            c.x.v[k] = slope(random);
            c.y.v[k] = random() % 8 == 0 ? 0.0f : slope(random);
        }
    }
    return cases;
}

// The largest differences, relative to the expected value where that is above 1.
struct Differences
{
    double value = 0.0;
    double closedForm = 0.0;
    double quotient = 0.0;

    static void take(double& largest, double actual, double expected)
    {
        const double d = std::abs(actual - expected) / std::max(1.0, std::abs(expected));
        if (!(d <= largest)) largest = d;
    }
    void take(const Operation& operation, const Case& c, const FloatJet& found)
    {
        const double x = double(c.x.a), y = double(c.y.a), s = double(c.s);
        take(value, double(found.a), operation.value(x, y, s));
        for (std::size_t k = 0; k < Dimension; ++k) {
            const double dx = double(c.x.v[k]), dy = double(c.y.v[k]), h = 1e-5;
            take(closedForm, double(found.v[k]), operation.byX(x, y, s) * dx + operation.byY(x, y, s) * dy);
            take(quotient, double(found.v[k]),
                 (operation.value(x + h * dx, y + h * dy, s) - operation.value(x - h * dx, y - h * dy, s)) /
                     (2.0 * h));
        }
    }
};

class JetTest : public CaseDrawing
{
protected:
    void useExpressions(const std::vector<const char*>& expressions)
    {
        use(sourceOf(expressions), {"JET_DIMENSION 3"});
    }
    std::vector<FloatJet> evaluateCases(const std::vector<Case>& cases, int expression = 0)
    {
        set("chosen", expression);
        storage(4, cases);
        return evaluateAll<FloatJet>(cases.size());
    }
};

TEST_F(JetTest, OperationsFollowClosedFormsAndDifferences)
{
    constexpr double tolerance = 1e-5;
    std::vector<const char*> expressions;
    for (const Operation& operation : operations())
        expressions.push_back(operation.expression);
    useExpressions(expressions);
    for (std::size_t chosen = 0; chosen < expressions.size(); ++chosen) {
        const Operation& operation = operations()[chosen];
        const auto cases = randomCases(2000, operation.isForPositive);
        const auto found = evaluateCases(cases, static_cast<int>(chosen));
        Differences largest;
        for (std::size_t i = 0; i < cases.size(); ++i)
            largest.take(operation, cases[i], found[i]);
        std::printf(
            "jets, %s: %zu cases, largest difference %.1e (value), %.1e (closed form), %.1e (difference "
            "quotient), tolerance %.0e\n",
            operation.name, cases.size(), largest.value, largest.closedForm, largest.quotient, tolerance);
        EXPECT_LE(largest.value, tolerance) << operation.name;
        EXPECT_LE(largest.closedForm, tolerance) << operation.name;
        EXPECT_LE(largest.quotient, tolerance) << operation.name;
    }
}

TEST_F(JetTest, VariablesDependOnThemselvesOnly)
{
    std::vector<Case> cases(Dimension);
    for (std::size_t i = 0; i < Dimension; ++i)
        cases[i].s = 5.0f + static_cast<float>(i);
    useExpressions({"jetVariable(s, int(s) - 5)", "x"});
    const auto found = evaluateCases(cases);
    for (std::size_t i = 0; i < Dimension; ++i) {
        EXPECT_EQ(found[i].a, cases[i].s);
        for (std::size_t k = 0; k < Dimension; ++k)
            EXPECT_EQ(found[i].v[k], i == k ? 1.0f : 0.0f);
    }
}

TEST_F(JetTest, TheRootOfZeroIsZero)
{
    useExpressions({"jetSqrt(x)", "x"});
    const auto found = evaluateCases({Case{}});
    EXPECT_EQ(found[0].a, 0.0f);
}

TEST_F(JetTest, SmallAndLargeNumbersKeepTheirDerivatives)
{
    std::vector<Case> cases(2);
    cases[0].x = {1e-18f, {1e-6f, 0.0f, 0.0f}};
    cases[1].x = {1e18f, {1e3f, 0.0f, 0.0f}};
    useExpressions({"jetInverse(x)", "jetSqrt(x)"});
    const auto inverse = evaluateCases(cases, 0);
    EXPECT_NEAR(double(inverse[0].v[0]) / -1e30, 1.0, 1e-5);
    EXPECT_NEAR(double(inverse[1].v[0]) / -1e-33, 1.0, 1e-5);
    const auto root = evaluateCases(cases, 1);
    EXPECT_NEAR(double(root[0].v[0]) / 0.5e3, 1.0, 1e-5);
    EXPECT_NEAR(double(root[1].v[0]) / 0.5e-6, 1.0, 1e-5);
}

TEST_F(JetTest, TheStageChoosesTheDimension)
{
    const QByteArray rest = "layout(std430, binding = 0) writeonly buffer case_results { vec2 results[]; };\n"
                            "void evaluate(int i)\n"
                            "{\n"
                            "    Jet x = jetVariable(3.0, JET_DIMENSION - 1);\n"
                            "    Jet square = jetMultiply(x, x);\n"
                            "    float sum = 0.0;\n"
                            "    for (int k = 0; k < JET_DIMENSION; ++k)\n"
                            "        sum += float(k + 1) * square.v[k];\n"
                            "    results[i] = vec2(square.a, sum);\n"
                            "}\n";
    for (const int dimension : {1, 2, 12}) {
        use("#define JET_DIMENSION " + QByteArray::number(dimension) + "\n" + jet + rest);
        EXPECT_EQ(evaluateAll<glm::vec2>(1),
                  std::vector<glm::vec2>(1, glm::vec2(9.0f, 6.0f * float(dimension))));
    }
}

} // namespace
