#include <tests/support/ShaderDrawing.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

// The functions of Quaternion.glsl, run in a vertex stage, against rotations worked out in doubles by other
// means: rotation matrices about an axis and the table of products of the units i, j, k.
namespace {

using Vector = glm::dvec3;
using Quaternion = glm::dvec4; // x, y, z, w

const double pi = std::acos(-1.0);

/// Rotation about an axis of length 1, as a matrix.
glm::dmat3 rotationAbout(const Vector& n, double angle)
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    glm::dmat3 m;
    for (int column = 0; column < 3; ++column)
        for (int row = 0; row < 3; ++row)
            m[column][row] = n[row] * n[column] * (1.0 - c) + (row == column ? c : 0.0);
    m[1][0] -= n.z * s;
    m[0][1] += n.z * s;
    m[2][0] += n.y * s;
    m[0][2] -= n.y * s;
    m[2][1] -= n.x * s;
    m[1][2] += n.x * s;
    return m;
}

/// The rotation that a unit quaternion stands for, by its angle and axis.
glm::dmat3 matrixOf(const Quaternion& q)
{
    const Vector v(q);
    const double sine = std::sqrt(glm::dot(v, v));
    if (sine == 0.0) return glm::dmat3(1.0);
    return rotationAbout(v / sine, 2.0 * std::atan2(sine, q.w));
}

double largest(const glm::dvec4& v)
{
    return std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z), std::fabs(v.w)});
}

class QuaternionTest : public ShaderDrawing
{
protected:
    static constexpr std::size_t Cases = 10000;

    /// What the expression of the attributes a and b, vec4 both, gives for each pair.
    std::vector<glm::vec4> evaluate(const QByteArray& expression)
    {
        QFile file(m_folder.filePath("quaternion.vertex.glsl"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#version 430 core\n//#include \"shader:Viewer3dModule/Quaternion.glsl\"\n"
                   "layout(location = 0) in vec4 a;\nlayout(location = 1) in vec4 b;\nout vec4 result;\n"
                   "void main() { result = vec4(" +
                   expression + "); gl_Position = vec4(0.0); }\n");
        file.close();
        use(ProgramRecipe{"quaternion", {file.fileName()}, {}}, {"result"});
        attribute(0, 4, m_a);
        attribute(1, 4, m_b);
        const std::size_t count = m_a.size() / 4;
        const std::vector<float> values = capture(GL_POINTS, static_cast<int>(count), GL_POINTS, 4, count);
        std::vector<glm::vec4> results;
        for (std::size_t i = 0; i + 3 < values.size(); i += 4)
            results.emplace_back(values[i], values[i + 1], values[i + 2], values[i + 3]);
        EXPECT_EQ(results.size(), count);
        results.resize(count);
        return results;
    }
    void add(const glm::dvec4& a, const glm::dvec4& b)
    {
        for (int k = 0; k < 4; ++k) {
            m_a.push_back(static_cast<float>(a[k]));
            m_b.push_back(static_cast<float>(b[k]));
        }
    }
    /// The attributes of a case as the shader has them.
    glm::dvec4 a(std::size_t i) const { return at(m_a, i); }
    glm::dvec4 b(std::size_t i) const { return at(m_b, i); }

    double number(double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); }
    Vector direction()
    {
        std::normal_distribution<double> normal;
        const Vector v(normal(random), normal(random), normal(random));
        return v / std::sqrt(glm::dot(v, v));
    }
    Quaternion quaternion()
    {
        std::normal_distribution<double> normal;
        const Quaternion q(normal(random), normal(random), normal(random), normal(random));
        return q / std::sqrt(glm::dot(q, q));
    }
    void expectWithin(const char* what, std::size_t count, double difference, double tolerance)
    {
        std::printf("%s: %zu cases, largest difference %.2g, tolerance %.2g\n", what, count, difference,
                    tolerance);
        EXPECT_LE(difference, tolerance) << what;
    }
    /// Checks the rotations between the directions of all cases: they take one to the other.
    double worstBetween()
    {
        const std::vector<glm::vec4> results = evaluate("quaternionBetween(a.xyz, b.xyz)");
        double worst = 0.0;
        for (std::size_t i = 0; i < results.size(); ++i) {
            const Quaternion q(results[i]);
            worst = std::max(worst, std::fabs(std::sqrt(glm::dot(q, q)) - 1.0));
            worst = std::max(worst, glm::length(matrixOf(q) * Vector(a(i)) - Vector(b(i))));
        }
        return worst;
    }

    std::mt19937 random{2024};

private:
    static glm::dvec4 at(const std::vector<float>& values, std::size_t i)
    {
        return {values[4 * i], values[4 * i + 1], values[4 * i + 2], values[4 * i + 3]};
    }

    QTemporaryDir m_folder;
    std::vector<float> m_a;
    std::vector<float> m_b;
};

TEST_F(QuaternionTest, AxisAndAngleMakeAQuaternion)
{
    for (std::size_t i = 0; i < Cases; ++i)
        add({direction(), number(-7.0, 7.0)}, {});
    const std::vector<glm::vec4> results = evaluate("quaternionFromAxisAngle(a.xyz, a.w)");
    double worst = 0.0;
    for (std::size_t i = 0; i < Cases; ++i) {
        const double half = a(i).w / 2.0;
        const Quaternion expected(Vector(a(i)) * std::sin(half), std::cos(half));
        worst = std::max(worst, largest(Quaternion(results[i]) - expected));
    }
    expectWithin("quaternionFromAxisAngle", Cases, worst, 1e-6);
}

TEST_F(QuaternionTest, RotationIsCounterClockwiseSeenAgainstTheAxis)
{
    for (std::size_t i = 0; i < Cases; ++i)
        add({direction(), number(-7.0, 7.0)}, {direction() * number(0.0, 2.0), 0.0});
    const std::vector<glm::vec4> results =
        evaluate("quaternionRotate(quaternionFromAxisAngle(a.xyz, a.w), b.xyz), 0.0");
    double worst = 0.0;
    for (std::size_t i = 0; i < Cases; ++i) {
        const Vector expected = rotationAbout(Vector(a(i)), a(i).w) * Vector(b(i));
        worst = std::max(worst, glm::length(Vector(results[i]) - expected));
    }
    expectWithin("quaternionRotate about an axis", Cases, worst, 3e-6);

    add({0, 0, 1, pi / 2.0}, {1, 0, 0, 0});
    const glm::vec4 turned =
        evaluate("quaternionRotate(quaternionFromAxisAngle(a.xyz, a.w), b.xyz), 0.0").back();
    EXPECT_LT(largest(glm::dvec4(turned) - glm::dvec4(0, 1, 0, 0)), 1e-6) << "x turns to y about z";
}

TEST_F(QuaternionTest, QuaternionRotatesAsItsMatrix)
{
    for (std::size_t i = 0; i < Cases; ++i)
        add(quaternion(), {direction() * number(0.0, 2.0), 0.0});
    const std::vector<glm::vec4> results = evaluate("quaternionRotate(a, b.xyz), 0.0");
    double worst = 0.0;
    for (std::size_t i = 0; i < Cases; ++i)
        worst = std::max(worst, glm::length(Vector(results[i]) - matrixOf(a(i)) * Vector(b(i))));
    expectWithin("quaternionRotate", Cases, worst, 3e-6);
}

TEST_F(QuaternionTest, ProductFollowsTheTableOfUnits)
{
    for (std::size_t i = 0; i < Cases; ++i)
        add(quaternion(), quaternion());
    const std::vector<glm::vec4> results = evaluate("quaternionMultiply(a, b)");
    // products of the units x, y, z and 1: which one they are, and its sign
    const int unit[4][4] = {{3, 2, 1, 0}, {2, 3, 0, 1}, {1, 0, 3, 2}, {0, 1, 2, 3}};
    const int sign[4][4] = {{-1, 1, -1, 1}, {-1, -1, 1, 1}, {1, -1, -1, 1}, {1, 1, 1, 1}};
    double worst = 0.0;
    for (std::size_t i = 0; i < Cases; ++i) {
        Quaternion expected(0.0);
        for (int m = 0; m < 4; ++m)
            for (int n = 0; n < 4; ++n)
                expected[unit[m][n]] += sign[m][n] * a(i)[m] * b(i)[n];
        worst = std::max(worst, largest(Quaternion(results[i]) - expected));
    }
    expectWithin("quaternionMultiply", Cases, worst, 1e-6);
}

TEST_F(QuaternionTest, ProductTurnsByTheSecondFirst)
{
    for (std::size_t i = 0; i < Cases; ++i)
        add(quaternion(), quaternion());
    const std::vector<glm::vec4> results = evaluate("quaternionMultiply(a, b)");
    double worst = 0.0;
    for (std::size_t i = 0; i < Cases; ++i) {
        const Vector v = direction();
        const Vector expected = matrixOf(a(i)) * (matrixOf(b(i)) * v);
        worst = std::max(worst, glm::length(matrixOf(Quaternion(results[i])) * v - expected));
    }
    expectWithin("quaternionMultiply as rotations", Cases, worst, 3e-6);
}

TEST_F(QuaternionTest, ShortestRotationBetweenDirections)
{
    for (std::size_t i = 0; i < Cases; ++i) {
        const Vector from = direction();
        Vector to = direction();
        if (glm::dot(from, to) < -0.9)
            to = -to; // directions that are nearly opposite have a test of their own
        add({from, 0}, {to, 0});
    }
    expectWithin("quaternionBetween", Cases, worstBetween(), 3e-6);
    const std::vector<glm::vec4> results = evaluate("quaternionBetween(a.xyz, b.xyz)");
    double worst = 0.0;
    for (std::size_t i = 0; i < Cases; ++i) {
        const Vector from(a(i));
        const Vector to(b(i));
        // no more than the angle between them: its half has this cosine
        const double half = std::atan2(glm::length(glm::cross(from, to)), glm::dot(from, to)) / 2.0;
        worst = std::max(worst, std::fabs(double(results[i].w) - std::cos(half)));
    }
    expectWithin("quaternionBetween, its angle", Cases, worst, 3e-6);
}

// The nearer to opposite, the less the plane of the rotation is known; that it takes one direction to the
// other must hold all the same.
TEST_F(QuaternionTest, RotationBetweenNearlyOppositeDirections)
{
    for (std::size_t i = 0; i < Cases; ++i) {
        const Vector from = i % 4 == 0 ? Vector(0, 1, 0) : i % 4 == 1 ? Vector(1, 0, 0) : direction();
        const Vector aside = glm::cross(from, direction());
        const double angle = std::pow(10.0, number(-9.0, -0.1));
        const Vector to = -std::cos(angle) * from + std::sin(angle) * aside / glm::length(aside);
        add({from, 0}, {to, 0});
    }
    for (const Vector& from : {Vector(1, 0, 0), Vector(0, 1, 0), Vector(0, 0, 1), Vector(0.6, -0.8, 0)})
        add({from, 0}, {-from, 0});
    expectWithin("quaternionBetween, nearly opposite", Cases + 4, worstBetween(), 3e-6);
}

TEST_F(QuaternionTest, RotationBetweenTheSameDirectionsIsNone)
{
    for (int i = 0; i < 100; ++i) {
        const Vector v = direction();
        add({v, 0}, {v, 0});
    }
    for (const glm::vec4& q : evaluate("quaternionBetween(a.xyz, b.xyz)"))
        EXPECT_LT(largest(Quaternion(q) - Quaternion(0, 0, 0, 1)), 1e-6);
}

} // namespace
