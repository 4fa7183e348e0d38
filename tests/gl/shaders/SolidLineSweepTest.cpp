#include "SweepReference.h"
#include <tests/support/ShaderDrawing.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>

// What SolidRegularLines makes of paths of every kind, vertex by vertex: positions, normals and texture
// coordinates against a mesh that is swept on the processor.
namespace {

using namespace sweep_reference;

struct Vertex
{
    Vector position;
    Vector normal;
    glm::dvec2 texture;
};

/// The largest differences so far.
struct Differences
{
    std::size_t vertices = 0;
    double position = 0.0;
    double normal = 0.0;
    double texture = 0.0;
};

class SolidLineSweepTest : public ShaderDrawing
{
protected:
    static constexpr int Components = 4 + 3 + 2;

    ~SolidLineSweepTest() override
    {
        if (makeCurrent()) gl->glDeleteBuffers(static_cast<GLsizei>(m_buffers.size()), m_buffers.data());
    }
    void prepare() override { useStages({}); }
    void useStages(const std::vector<std::string>& more)
    {
        ProgramRecipe recipe = defaultPrograms()[5];
        recipe.defines.emplace_back("RX_USE_PER_VERTEX_TEX_COORDS");
        recipe.defines.insert(recipe.defines.end(), more.begin(), more.end());
        use(recipe, {"gl_Position", "light_normal", "texture_coords"});
        set("uLightDirection", glm::vec3(0, 0, 1)); // normals stay in eye coordinates then
    }
    void setArray(const char* name, const std::vector<glm::dvec2>& values)
    {
        const std::vector<glm::vec2> floats(values.begin(), values.end());
        gl->glUniform2fv(program->uniformLocation(name), static_cast<GLsizei>(floats.size()), &floats[0].x);
    }
    void setSection(const Sweep& sweep)
    {
        setArray("section", sweep.section);
        setArray("section_normals", sweep.normals);
        set("section_points_count", static_cast<int>(sweep.section.size()));
        set("up_vector", glm::vec3(sweep.up));
        set("reserved_up_vector", glm::vec3(sweep.reservedUp));
    }
    /// The points with the first and the last of them twice.
    static std::vector<float> doubled(const std::vector<Vector>& path)
    {
        std::vector<Vector> points{path.front()};
        points.insert(points.end(), path.begin(), path.end());
        points.push_back(path.back());
        std::vector<float> values;
        for (const Vector& p : points)
            for (int k = 0; k < 3; ++k)
                values.push_back(static_cast<float>(p[k]));
        return values;
    }
    static std::size_t room(const Sweep& sweep) { return sweep.path.size() * 31 * 2 * 3; }
    std::vector<float> captureStrip(const Sweep& sweep)
    {
        setSection(sweep);
        const std::vector<float> points = doubled(sweep.path);
        attribute(0, 3, points);
        return capture(GL_LINE_STRIP_ADJACENCY, static_cast<int>(points.size() / 3), GL_TRIANGLES, Components,
                       room(sweep));
    }

    /// The triangles that the path gives, three vertices each. positions: along the path, one a point; none
    /// where every segment shows the texture once.
    static std::vector<Vertex> meshOf(const Sweep& sweep, const std::vector<double>& positions = {})
    {
        std::vector<Vertex> mesh;
        const std::size_t edges = sweep.section.size() - 1;
        for (std::size_t s = 0; s + 1 < sweep.path.size(); ++s) {
            const Vector along = direction(sweep.path[s], sweep.path[s + 1]);
            if (along == Vector(0.0)) continue;
            const auto vertex = [&](std::size_t end, std::size_t i) {
                const double u = positions.empty() ? double(end) : positions[s + end];
                return Vertex{ringAt(sweep, s + end)[i],
                              normalsAt(sweep, s + end, along)[i],
                              {u, double(i) / double(edges)}};
            };
            for (std::size_t e = 0; e < edges; ++e)
                for (const auto& [end, point] :
                     {std::pair{0u, e}, {1u, e}, {0u, e + 1}, {0u, e + 1}, {1u, e}, {1u, e + 1}})
                    mesh.push_back(vertex(end, point));
        }
        return mesh;
    }
    /// Compares triangle by triangle; each may begin with any of its vertices.
    static void compare(const std::vector<float>& values, const std::vector<Vertex>& mesh, Differences& worst)
    {
        ASSERT_EQ(values.size(), mesh.size() * Components);
        const auto seen = [&](std::size_t i) {
            const float* v = &values[i * Components];
            EXPECT_EQ(v[3], 1.0f);
            return Vertex{{v[0], v[1], v[2]}, {v[4], v[5], v[6]}, {v[7], v[8]}};
        };
        for (std::size_t t = 0; t < mesh.size(); t += 3) {
            std::size_t shift = 0;
            double least = 1e30;
            for (std::size_t candidate = 0; candidate < 3; ++candidate) {
                double sum = 0.0;
                for (std::size_t k = 0; k < 3; ++k)
                    sum += glm::length(seen(t + k).position - mesh[t + (k + candidate) % 3].position);
                if (sum < least) shift = candidate;
                least = std::min(least, sum);
            }
            for (std::size_t k = 0; k < 3; ++k) {
                const Vertex a = seen(t + k);
                const Vertex& b = mesh[t + (k + shift) % 3];
                worst.position = std::max(worst.position, glm::length(a.position - b.position));
                worst.normal = std::max(worst.normal, glm::length(a.normal - b.normal));
                worst.texture = std::max(worst.texture, glm::length(a.texture - b.texture));
            }
        }
        worst.vertices += mesh.size();
    }
    void expectSwept(const Sweep& sweep, Differences& worst)
    {
        compare(captureStrip(sweep), meshOf(sweep), worst);
    }
    static void expectSmall(const char* what, const Differences& worst)
    {
        std::printf("%s: %zu vertices, largest differences %.2g (position), %.2g (normal), %.2g (texture), "
                    "tolerance %.2g\n",
                    what, worst.vertices, worst.position, worst.normal, worst.texture, Tolerance);
        EXPECT_GT(worst.vertices, 0u);
        EXPECT_LE(worst.position, Tolerance);
        EXPECT_LE(worst.normal, Tolerance);
        EXPECT_LE(worst.texture, Tolerance);
    }
    static constexpr double Tolerance = 1e-5;

    double number(double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); }
    int whole(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); }
    Vector anyDirection()
    {
        std::normal_distribution<double> normal;
        return unit({normal(random), normal(random), normal(random)});
    }
    /// A section of any shape.
    Sweep anySweep()
    {
        Sweep sweep;
        const int points = whole(2, 32);
        for (int i = 0; i < points; ++i) {
            sweep.section.emplace_back(number(-0.3, 0.3), number(-0.3, 0.3));
            const double angle = number(0.0, 7.0);
            sweep.normals.emplace_back(std::cos(angle), std::sin(angle));
        }
        return sweep;
    }
    /// What floats make of the point, so that both sides start from the same.
    static Vector rounded(const Vector& v) { return Vector(glm::vec3(v)); }

    /// Fills the storage buffer of positions along the path.
    void setPositions(const std::vector<float>& positions)
    {
        unsigned buffer = 0;
        gl->glGenBuffers(1, &buffer);
        m_buffers.push_back(buffer);
        gl->glBindBufferBase(GL_SHADER_STORAGE_BUFFER, 11, buffer);
        gl->glBufferData(GL_SHADER_STORAGE_BUFFER, static_cast<GLsizeiptr>(positions.size() * sizeof(float)),
                         positions.data(), GL_STATIC_DRAW);
    }

    std::mt19937 random{11};

private:
    std::vector<unsigned> m_buffers;
};

TEST_F(SolidLineSweepTest, RandomPathsInSpace)
{
    Differences worst;
    for (int run = 0; run < 150; ++run) {
        Sweep sweep = anySweep();
        sweep.up = rounded(anyDirection() * number(0.1, 5.0));
        sweep.reservedUp = rounded(anyDirection());
        Vector heading = anyDirection();
        Vector at(number(-1.0, 1.0), number(-1.0, 1.0), number(-1.0, 1.0));
        const int points = whole(2, 8);
        for (int i = 0; i < points; ++i) {
            sweep.path.push_back(rounded(at));
            at += heading * number(0.1, 1.0);
            do
                heading = unit(heading + number(0.0, 1.2) * anyDirection());
            while (std::fabs(glm::dot(heading, unit(sweep.up))) > 0.95);
        }
        expectSwept(sweep, worst);
    }
    expectSmall("solid lines, random paths", worst);
}

// Along the axes the section's frame meets its own axes, the opposite directions, and the up vector.
TEST_F(SolidLineSweepTest, RandomPathsAlongTheAxes)
{
    Differences worst;
    const Vector axes[] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    int vertical = 0;
    for (int run = 0; run < 150; ++run) {
        Sweep sweep = anySweep();
        Vector at(0.0);
        Vector before(0.0);
        for (int i = 0; i < 8; ++i) {
            sweep.path.push_back(rounded(at));
            Vector next = axes[whole(0, 5)];
            while (next == -before)
                next = axes[whole(0, 5)];
            vertical += next.z != 0.0 && (next == before || before == Vector(0.0));
            before = next;
            at += next * 0.5;
        }
        expectSwept(sweep, worst);
    }
    EXPECT_GT(vertical, 50);
    expectSmall("solid lines along the axes, the reserved up vector among them", worst);
}

TEST_F(SolidLineSweepTest, DirectionsNearTheFramesOwnAndOppositeOne)
{
    Differences worst;
    for (int run = 0; run < 100; ++run) {
        Sweep sweep = anySweep();
        const double angle = std::pow(10.0, number(-7.0, -1.0));
        const double turn = number(0.0, 7.0);
        const Vector aside(std::cos(turn), 0.0, std::sin(turn));
        const double sign = run % 4 == 0 ? 1.0 : -1.0;
        sweep.path = {{0, 0, 0}, rounded(Vector(0, sign, 0) * std::cos(angle) + aside * std::sin(angle))};
        expectSwept(sweep, worst);
    }
    expectSmall("solid lines along and against the frame", worst);
}

TEST_F(SolidLineSweepTest, ReservedUpVectorServesWhereThePathRunsAlongTheFirst)
{
    Differences worst;
    for (int run = 0; run < 100; ++run) {
        Sweep sweep = anySweep();
        const Vector up = anyDirection();
        sweep.up = rounded(up * number(0.1, 20.0));
        sweep.reservedUp = rounded(glm::cross(up, anyDirection()));
        const double sign = run % 2 == 0 ? 1.0 : -1.0;
        const Vector aside = unit(glm::cross(up, anyDirection()));
        // a little less and a little more off the up vector than a thousandth
        const double angle = run % 3 == 0 ? 0.0 : run % 3 == 1 ? 0.9e-3 : 1.1e-3;
        sweep.path = {{0, 0, 0}, rounded(sign * (std::cos(angle) * up + std::sin(angle) * aside))};
        Differences here;
        expectSwept(sweep, here);
        // a thousandth of the up vector is known to a thousandth of the precision
        EXPECT_LE(here.position, angle > 1e-3 ? 2e-3 : Tolerance) << angle;
        worst.vertices += here.vertices;
        if (angle > 1e-3) continue;
        worst.position = std::max(worst.position, here.position);
        worst.normal = std::max(worst.normal, here.normal);
    }
    expectSmall("solid lines along the up vector", worst);
}

TEST_F(SolidLineSweepTest, SharpTurnsAndTurnsBack)
{
    Differences worst;
    for (int run = 0; run < 100; ++run) {
        Sweep sweep = anySweep();
        const double turn = run % 5 == 0 ? std::acos(-1.0) : number(2.0, 3.0);
        const double heading = number(0.0, 7.0);
        const Vector out(std::cos(heading + turn), std::sin(heading + turn), 0.0);
        const Vector in(std::cos(heading), std::sin(heading), 0.0);
        sweep.path = {rounded(-in), {0, 0, 0}, run % 5 == 0 ? rounded(-in) : rounded(out)};
        expectSwept(sweep, worst);
    }
    expectSmall("solid lines in sharp turns", worst);
}

TEST_F(SolidLineSweepTest, PointsThatComeTwiceEndTheTurn)
{
    Differences worst;
    Sweep sweep = anySweep();
    sweep.path = {{0, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 0}, {1, 1, 0}, {0, 2, 0.5}};
    expectSwept(sweep, worst);
    expectSmall("solid lines with repeated points", worst);
}

TEST_F(SolidLineSweepTest, UpVectorsThatAreOfNoUseLeaveTheLineFinite)
{
    Sweep sweep = anySweep();
    sweep.path = {{0, 0, 0}, {0, 0, 1}};
    for (const Vector& reserved : {Vector(0, 0, 2), Vector(0.0)}) {
        sweep.reservedUp = reserved;
        const std::vector<float> values = captureStrip(sweep);
        EXPECT_EQ(values.size(), (sweep.section.size() - 1) * 6 * Components);
        for (const float value : values)
            ASSERT_TRUE(std::fabs(value) < 2.0f);
    }
}

// What the normals are for: on flat sides they are those of the triangles.
TEST_F(SolidLineSweepTest, NormalsAreThoseOfTheSides)
{
    double worst = 0.0;
    std::size_t triangles = 0;
    for (int run = 0; run < 100; ++run) {
        // one side, in the plane of the path or standing on it or leaning
        const double lean = number(0.0, 7.0);
        const glm::dvec2 side(std::cos(lean), std::sin(lean));
        Sweep sweep;
        sweep.section = {-0.05 * side, 0.08 * side};
        sweep.normals.assign(2, {-side.y, side.x});
        double heading = number(0.0, 7.0);
        Vector at(0.0);
        for (int i = 0; i < 6; ++i) {
            sweep.path.push_back(rounded(at));
            at += number(0.3, 1.0) * Vector(std::cos(heading), std::sin(heading), 0.0);
            heading += number(-2.0, 2.0);
        }
        const std::vector<float> values = captureStrip(sweep);
        for (std::size_t i = 0; i + 2 < values.size() / Components; i += 3) {
            const auto part = [&](std::size_t k, std::size_t offset) {
                const float* v = &values[(i + k) * Components + offset];
                return Vector(v[0], v[1], v[2]);
            };
            const Vector face = glm::cross(part(1, 0) - part(0, 0), part(2, 0) - part(0, 0));
            if (glm::length(face) < 1e-3) continue;
            ++triangles;
            for (std::size_t k = 0; k < 3; ++k)
                worst = std::max(worst, 1.0 - std::fabs(glm::dot(unit(face), part(k, 4))));
        }
    }
    std::printf(
        "solid lines, normals of flat sides: %zu triangles, largest difference %.2g, tolerance 1e-4\n",
        triangles, worst);
    EXPECT_GT(triangles, 500u);
    EXPECT_LE(worst, 1e-4);
}

TEST_F(SolidLineSweepTest, PointsBeyondTheLargestSectionAreLeftOut)
{
    Sweep sweep;
    sweep.section = circle(32, 0.2);
    sweep.normals = circle(32, 1.0);
    sweep.path = {{-0.5, 0, 0}, {0.5, 0.1, 0}};
    setSection(sweep);
    set("section_points_count", 40);
    attribute(0, 3, doubled(sweep.path));
    Differences worst;
    compare(capture(GL_LINES_ADJACENCY, 4, GL_TRIANGLES, Components, room(sweep)), meshOf(sweep), worst);
    expectSmall("solid lines, a section too large", worst);
}

/// Several polylines one after the other in one buffer, with their positions along the path.
class SolidLinePolylinesTest : public SolidLineSweepTest
{
protected:
    struct Part
    {
        int first; ///< of the points in the buffer
        int count;
        std::vector<Vertex> mesh;
    };

    void prepare() override
    {
        SolidLineSweepTest::prepare();
        sweep = anySweep();
        for (const int points : {2, 5, 3, 7, 2}) {
            sweep.path.clear();
            std::vector<double> positions;
            double position = number(-3.0, 3.0);
            Vector at(number(-1.0, 1.0), number(-1.0, 1.0), 0.0);
            Vector heading = unit({number(-1.0, 1.0), number(-1.0, 1.0), 0.1});
            for (int i = 0; i < points; ++i) {
                sweep.path.push_back(rounded(at));
                positions.push_back(double(float(position)));
                at += 0.4 * heading;
                position += 0.4;
                heading = unit(heading + Vector(number(-0.7, 0.7), number(-0.7, 0.7), number(-0.2, 0.2)));
            }
            const std::vector<float> more = doubled(sweep.path);
            parts.push_back({static_cast<int>(values.size() / 3), points + 2, {}});
            values.insert(values.end(), more.begin(), more.end());
            along.push_back(static_cast<float>(positions.front()));
            along.insert(along.end(), positions.begin(), positions.end());
            along.push_back(static_cast<float>(positions.back()));
            for (double& p : positions)
                p /= Period;
            parts.back().mesh = meshOf(sweep, positions);
        }
    }
    void setUniforms()
    {
        setSection(sweep);
        set("section_period", static_cast<float>(Period));
    }
    static std::vector<Vertex> joined(const std::vector<Part>& parts)
    {
        std::vector<Vertex> all;
        for (const Part& part : parts)
            all.insert(all.end(), part.mesh.begin(), part.mesh.end());
        return all;
    }
    /// The four points of a segment as attributes 0 to 3, one an instance.
    void feedEmulated()
    {
        attribute(0, 3, values);
        for (unsigned i = 0; i < 4; ++i) {
            gl->glEnableVertexAttribArray(i);
            gl->glVertexAttribPointer(i, 3, GL_FLOAT, GL_FALSE, 12,
                                      reinterpret_cast<const void*>(std::uintptr_t(12 * i)));
            gl->glVertexAttribDivisor(i, 1);
        }
    }
    void drawEmulated(const Part& part)
    {
        gl->glDrawArraysInstancedBaseInstance(GL_LINES_ADJACENCY, 0, 4, part.count - 3,
                                              static_cast<GLuint>(part.first));
    }

    static constexpr double Period = 0.37;
    Sweep sweep;
    std::vector<Part> parts;
    std::vector<float> values; ///< points, the ends of each polyline twice
    std::vector<float> along;  ///< for each of the points
};

TEST_F(SolidLinePolylinesTest, TextureRunsByThePeriodAlongEach)
{
    setUniforms();
    setPositions(along);
    attribute(0, 3, values);
    const std::vector<float> captured = capture(GL_TRIANGLES, Components, 20000, [this] {
        for (const Part& part : parts)
            gl->glDrawArrays(GL_LINE_STRIP_ADJACENCY, part.first, part.count);
    });
    Differences worst;
    compare(captured, joined(parts), worst);
    expectSmall("solid lines, several in one buffer with a period", worst);
}

TEST_F(SolidLinePolylinesTest, EmulatedAdjacencyGivesTheSame)
{
    useStages({"RX_USE_ADJACENCY_EMULATION"});
    setUniforms();
    feedEmulated();
    Differences worst;
    for (const Part& part : parts) {
        // the shader counts from the polyline's first point
        setPositions({along.begin() + part.first, along.begin() + part.first + part.count});
        compare(capture(GL_TRIANGLES, Components, 20000, [&] { drawEmulated(part); }), part.mesh, worst);
    }
    expectSmall("solid lines, several with emulated adjacency", worst);
}

TEST_F(SolidLinePolylinesTest, EmulationHandsOnPointsAndTheirPlaces)
{
    use({"emulation", {shaderPath("dummy.vertex")}, {"RX_USE_ADJACENCY_EMULATION"}},
        {"gl_Position", "path_index"});
    glm::mat4 model(1.0f);
    model[0] = {0, 2, 0, 0};
    model[1] = {-3, 0, 0, 0};
    model[2] = {0, 0, 0.5f, 0};
    model[3] = {100, -20, 3, 1};
    set("model", model);
    feedEmulated();
    std::size_t cases = 0;
    double worst = 0.0;
    for (const Part& part : parts) {
        const std::vector<float> captured = capture(GL_POINTS, 5, 100, [&] {
            gl->glDrawArraysInstancedBaseInstance(GL_POINTS, 0, 4, part.count - 3,
                                                  static_cast<GLuint>(part.first));
        });
        ASSERT_EQ(captured.size(), static_cast<std::size_t>(part.count - 3) * 4 * 5);
        for (std::size_t v = 0; v < captured.size() / 5; ++v) {
            const std::size_t place = v / 4 + v % 4;
            const float* p = &values[3 * (static_cast<std::size_t>(part.first) + place)];
            const glm::dvec4 expected(100.0 - 3.0 * double(p[1]), -20.0 + 2.0 * double(p[0]),
                                      3.0 + 0.5 * double(p[2]), 1.0);
            std::int32_t index = 0;
            std::memcpy(&index, &captured[5 * v + 4], 4);
            ASSERT_EQ(index, static_cast<std::int32_t>(place));
            for (int k = 0; k < 4; ++k)
                worst = std::max(worst, std::fabs(double(captured[5 * v + std::size_t(k)]) - expected[k]));
            ++cases;
        }
    }
    std::printf("emulated adjacency: %zu vertices, largest difference %.2g, tolerance 2e-5\n", cases, worst);
    EXPECT_LE(worst, 2e-5); // coordinates of about 100
}

} // namespace
