#include "SweepReference.h"
#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

using namespace sweep_reference;

class SolidLineDrawingTest : public ShaderDrawing
{
protected:
    void prepare() override { useProgram({}); }
    void useProgram(const std::vector<std::string>& varyings, const std::vector<std::string>& defines = {})
    {
        ProgramRecipe recipe = defaultPrograms()[5];
        recipe.defines.insert(recipe.defines.end(), defines.begin(), defines.end());
        use(recipe, varyings);
        setColors({0.4f, 0.8f, 0.2f, 1.0f});
    }
    void setArray(const char* name, const std::vector<glm::dvec2>& values)
    {
        std::vector<glm::vec2> floats(values.begin(), values.end());
        if (floats.empty()) return;
        gl->glUniform2fv(program->uniformLocation(name), static_cast<GLsizei>(floats.size()), &floats[0].x);
    }
    /// Sets the section and feeds the path with both ends given twice; returns the number of vertices.
    int feed(const Sweep& sweep)
    {
        setArray("section", sweep.section);
        setArray("section_normals", sweep.normals);
        set("section_points_count", static_cast<int>(sweep.section.size()));
        set("up_vector", glm::vec3(sweep.up));
        set("reserved_up_vector", glm::vec3(sweep.reservedUp));
        std::vector<Vector> doubled{sweep.path.front()};
        doubled.insert(doubled.end(), sweep.path.begin(), sweep.path.end());
        doubled.push_back(sweep.path.back());
        std::vector<float> values;
        for (const Vector& p : doubled)
            for (int k = 0; k < 3; ++k)
                values.push_back(float(p[k]));
        attribute(0, 3, values);
        return static_cast<int>(sweep.path.size()) + 2;
    }
    void drawUnlit(const Sweep& sweep)
    {
        set("uLightMode", false);
        const int count = feed(sweep);
        draw(GL_LINE_STRIP_ADJACENCY, count);
    }
    /// The values that transform feedback takes from drawing the path, `components` floats a vertex.
    std::vector<float> capture(const Sweep& sweep, int components)
    {
        const int count = feed(sweep);
        set("uLightDirection", glm::vec3(0, 0, 1)); // normals and places stay in eye coordinates then
        const std::size_t room = 3 * 2 * 32 * sweep.path.size() * static_cast<std::size_t>(components);
        unsigned buffer = 0;
        unsigned query = 0;
        gl->glGenBuffers(1, &buffer);
        gl->glGenQueries(1, &query);
        gl->glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, buffer);
        gl->glBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, static_cast<GLsizeiptr>(room * sizeof(float)), nullptr,
                         GL_STATIC_READ);
        gl->glEnable(GL_RASTERIZER_DISCARD);
        gl->glBeginQuery(GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN, query);
        gl->glBeginTransformFeedback(GL_TRIANGLES);
        gl->glDrawArrays(GL_LINE_STRIP_ADJACENCY, 0, count);
        gl->glEndTransformFeedback();
        gl->glEndQuery(GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN);
        gl->glDisable(GL_RASTERIZER_DISCARD);
        unsigned triangles = 0;
        gl->glGetQueryObjectuiv(query, GL_QUERY_RESULT, &triangles);
        std::vector<float> values(triangles * 3 * static_cast<std::size_t>(components));
        gl->glGetBufferSubData(GL_TRANSFORM_FEEDBACK_BUFFER, 0,
                               static_cast<GLsizeiptr>(values.size() * sizeof(float)), values.data());
        gl->glDeleteBuffers(1, &buffer);
        gl->glDeleteQueries(1, &query);
        return values;
    }
    /// Checks that the captured triangles are those of the swept section, vertex by vertex.
    void expectSwept(const Sweep& sweep, double tolerance = 2e-5)
    {
        useProgram({"gl_Position"});
        const std::vector<float> values = capture(sweep, 4);
        const std::size_t edges = sweep.section.size() - 1;
        ASSERT_EQ(values.size(), (sweep.path.size() - 1) * edges * 2 * 3 * 4);
        std::size_t at = 0;
        for (std::size_t s = 0; s + 1 < sweep.path.size(); ++s) {
            const std::vector<Vector> start = ringAt(sweep, s);
            const std::vector<Vector> end = ringAt(sweep, s + 1);
            for (std::size_t e = 0; e < edges; ++e)
                for (int half = 0; half < 2; ++half) {
                    // each edge of the section gives a quad of two triangles; their vertices in any order
                    std::vector<Vector> expected =
                        half == 0 ? std::vector<Vector>{start[e], end[e], start[e + 1]}
                                  : std::vector<Vector>{start[e + 1], end[e], end[e + 1]};
                    for (int corner = 0; corner < 3; ++corner, at += 4) {
                        const Vector seen(values[at], values[at + 1], values[at + 2]);
                        ASSERT_EQ(values[at + 3], 1.0f);
                        const auto found =
                            std::find_if(expected.begin(), expected.end(),
                                         [&](const Vector& v) { return glm::length(v - seen) < tolerance; });
                        ASSERT_NE(found, expected.end()) << "segment " << s << ", edge " << e;
                        expected.erase(found);
                    }
                }
        }
    }

    Sweep square(double half) const
    {
        Sweep sweep;
        sweep.section = {{-half, -half}, {half, -half}, {half, half}, {-half, half}, {-half, -half}};
        sweep.normals = sweep.section;
        return sweep;
    }
};

TEST_F(SolidLineDrawingTest, StraightLineCoversItsWidth)
{
    Sweep sweep = square(0.25);
    sweep.path = {{-0.5, 0, 0}, {0.5, 0, 0}};
    drawUnlit(sweep);
    for (int y = 0; y < Size; ++y)
        for (int x = 0; x < Size; ++x)
            ASSERT_EQ(isUntouched(x, y), !(x >= 16 && x < 48 && y >= 24 && y < 40)) << x << ", " << y;
    EXPECT_EQ(pixel(32, 32), QColor(102, 204, 51));
    // the side towards the viewer, at z = -0.25
    EXPECT_NEAR(double(depths[32 * Size + 32]), 0.375, 1e-6);
}

TEST_F(SolidLineDrawingTest, CornerIsMitred)
{
    Sweep sweep = square(0.25);
    sweep.path = {{-0.5, -0.5, 0}, {0.5, -0.5, 0}, {0.5, 0.5, 0}};
    drawUnlit(sweep);
    for (int y = 0; y < Size; ++y)
        for (int x = 0; x < Size; ++x) {
            const double px = (x + 0.5) / 32.0 - 1.0;
            const double py = 1.0 - (y + 0.5) / 32.0;
            const bool along = px > -0.5 && px < 0.75 && py > -0.75 && py < -0.25;
            const bool upwards = px > 0.25 && px < 0.75 && py > -0.75 && py < 0.5;
            ASSERT_EQ(!isUntouched(x, y), along || upwards) << x << ", " << y;
        }
}

TEST_F(SolidLineDrawingTest, SectionOfOnePointOrNoneDrawsNothing)
{
    Sweep sweep;
    sweep.path = {{-0.5, 0, 0}, {0.5, 0, 0}};
    drawUnlit(sweep);
    EXPECT_EQ(touchedCount(), 0);
    sweep.section = {{0.1, 0.1}};
    drawUnlit(sweep);
    EXPECT_EQ(touchedCount(), 0);
}

TEST_F(SolidLineDrawingTest, SegmentWithoutLengthIsLeftOut)
{
    Sweep sweep = square(0.25);
    sweep.path = {{0.1, 0.2, 0}, {0.1, 0.2, 0}};
    drawUnlit(sweep);
    EXPECT_EQ(touchedCount(), 0);
}

TEST_F(SolidLineDrawingTest, EverySizeOfSectionIsSweptWhole)
{
    for (int points = 2; points <= 32; ++points) {
        Sweep sweep;
        sweep.section = circle(points, 0.3);
        sweep.path = {{-0.5, -0.1, 0.1}, {0.2, 0.2, 0}, {0.6, -0.3, 0.3}};
        expectSwept(sweep);
    }
}

TEST_F(SolidLineDrawingTest, RandomPathsMatchTheReference)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> turn(-1.2, 1.2);
    for (int run = 0; run < 30; ++run) {
        Sweep sweep;
        sweep.section = circle(32, 0.05);
        double heading = 3.0 * turn(random);
        Vector at(0.0);
        for (int i = 0; i < 12; ++i) {
            sweep.path.push_back(at);
            heading += turn(random);
            at += 0.2 * Vector(std::cos(heading), std::sin(heading), 0.4 * turn(random));
        }
        expectSwept(sweep);
    }
}

TEST_F(SolidLineDrawingTest, PathAlongTheUpVectorTakesTheReservedOne)
{
    Sweep sweep;
    sweep.section = {{-0.2, 0.0}, {0.1, 0.3}, {0.3, -0.1}};
    sweep.path = {{0, 0, 0}, {0, 0, 0.5}, {0, 0, 0.9}};
    expectSwept(sweep);
    sweep.path = {{0, 0, 0}, {0, 0, -0.5}};
    expectSwept(sweep);
    sweep.reservedUp = {1, 0, 0};
    expectSwept(sweep);
}

TEST_F(SolidLineDrawingTest, AnyUpVectorServes)
{
    Sweep sweep;
    sweep.section = {{-0.2, 0.0}, {0.1, 0.3}, {0.3, -0.1}};
    for (const Vector& up : {Vector(0, 1, 0), Vector(0.3, 0.2, -4), Vector(-1, 0.1, 0)}) {
        sweep.up = up;
        sweep.path = {{-0.5, -0.4, 0.2}, {0.3, 0.5, 0}, {0.4, 0.6, 0.7}};
        expectSwept(sweep);
    }
    sweep.up = {0, 0, 1};
    sweep.path = {{0, 0.5, 0}, {0, -0.5, 0}}; // against the frame's own direction
    expectSwept(sweep);
}

TEST_F(SolidLineDrawingTest, PathTurningBackStaysFinite)
{
    useProgram({"gl_Position"});
    Sweep sweep = square(0.1);
    sweep.path = {{0, 0, 0}, {0.5, 0, 0}, {0, 0, 0}};
    for (const float value : capture(sweep, 4))
        ASSERT_LE(std::fabs(value), 1.5f);
}

TEST_F(SolidLineDrawingTest, NormalsStandAcrossTheirSegment)
{
    useProgram({"light_normal"});
    Sweep sweep;
    sweep.section = circle(9, 0.2);
    sweep.normals = circle(9, 1.0);
    sweep.path = {{-0.5, 0, 0}, {0.5, 0, 0}};
    const std::vector<float> values = capture(sweep, 3);
    ASSERT_EQ(values.size(), 8u * 2 * 3 * 3);
    for (std::size_t i = 0; i < values.size(); i += 3) {
        EXPECT_NEAR(double(values[i]), 0.0, 1e-6);
        EXPECT_NEAR(std::hypot(double(values[i + 1]), double(values[i + 2])), 1.0, 1e-5);
    }
    // the first point of the section lies to the right of the path: -y
    EXPECT_NEAR(double(values[1]), -1.0, 1e-5);
}

TEST_F(SolidLineDrawingTest, NormalsStandAcrossTheirSegmentAtJointsToo)
{
    useProgram({"light_normal"});
    Sweep sweep;
    sweep.section = circle(9, 0.2);
    sweep.normals = circle(9, 1.0);
    sweep.path = {{-0.5, 0, 0}, {0.3, 0, 0}, {0.3, 0.6, 0.3}};
    const std::vector<float> values = capture(sweep, 3);
    ASSERT_EQ(values.size(), 2u * 8 * 2 * 3 * 3);
    for (std::size_t i = 0; i < values.size(); i += 3) {
        const std::size_t segment = i < values.size() / 2 ? 0 : 1;
        const Vector direction = unit(sweep.path[segment + 1] - sweep.path[segment]);
        const Vector normal(values[i], values[i + 1], values[i + 2]);
        EXPECT_NEAR(glm::dot(normal, direction), 0.0, 1e-5);
        EXPECT_GT(glm::length(normal), 0.5);
    }
}

TEST_F(SolidLineDrawingTest, LongMitresAreCutOff)
{
    useProgram({"gl_Position"});
    Sweep sweep;
    sweep.section = {{-0.1, 0}, {0.1, 0}};
    const Vector joint(0.5, 0, 0);
    sweep.path = {{0, 0, 0}, joint, {0, 0.05, 0}};
    const std::vector<float> values = capture(sweep, 4);
    double farthest = 0.0;
    for (std::size_t i = 0; i < values.size(); i += 4)
        farthest = std::max(farthest, double(values[i]) - joint.x);
    EXPECT_NEAR(farthest, 0.4, 0.01) << "four times the section; without a limit it were 2.0";
}

TEST_F(SolidLineDrawingTest, ViewAndProjectionApplyToPositionsAndTheViewToNormals)
{
    Sweep sweep;
    sweep.section = circle(5, 0.2);
    sweep.normals = circle(5, 1.0);
    sweep.path = {{-0.5, 0.1, 0}, {0.3, 0, 0.2}};
    useProgram({"gl_Position", "light_normal", "light_position"});
    const std::vector<float> plain = capture(sweep, 10);
    const glm::mat4 view = glm::lookAt(glm::vec3(3, -4, 2), glm::vec3(0), glm::vec3(0, 0, 1));
    const glm::mat4 projection = glm::perspective(1.0f, 1.0f, 1.0f, 20.0f);
    set("view", view);
    set("projection", projection);
    const std::vector<float> seen = capture(sweep, 10);
    ASSERT_EQ(seen.size(), plain.size());
    ASSERT_FALSE(seen.empty());
    for (std::size_t i = 0; i < seen.size(); i += 10) {
        const glm::dvec4 eye = glm::dmat4(view) * glm::dvec4(plain[i], plain[i + 1], plain[i + 2], 1.0);
        const glm::dvec4 clip = glm::dmat4(projection) * eye;
        const glm::dvec3 normal = glm::dmat3(view) * glm::dvec3(plain[i + 4], plain[i + 5], plain[i + 6]);
        for (int k = 0; k < 4; ++k)
            EXPECT_NEAR(double(seen[i + std::size_t(k)]), clip[k], 1e-5);
        for (int k = 0; k < 3; ++k) {
            EXPECT_NEAR(double(seen[i + 4 + std::size_t(k)]), normal[k], 1e-5);
            EXPECT_NEAR(double(seen[i + 7 + std::size_t(k)]), eye[k], 1e-5);
        }
    }
}

TEST_F(SolidLineDrawingTest, TextureRunsAlongThePathByItsPeriod)
{
    useProgram({"texture_coords"}, {"RX_USE_PER_VERTEX_TEX_COORDS"});
    Sweep sweep;
    sweep.section = {{-0.1, 0}, {0, 0.1}, {0.1, 0}};
    sweep.path = {{-0.5, 0, 0}, {0.1, 0, 0}, {0.5, 0, 0}};
    std::vector<float> values = capture(sweep, 2);
    for (std::size_t i = 0; i < values.size(); i += 2)
        EXPECT_TRUE(values[i] == 0.0f || values[i] == 1.0f) << "without a period each segment is one";
    const std::vector<float> onceEach = values;

    // path lengths of the buffer's points, the ends given twice
    const float positions[] = {0.0f, 0.0f, 0.6f, 1.0f, 1.0f};
    unsigned buffer = 0;
    gl->glGenBuffers(1, &buffer);
    gl->glBindBufferBase(GL_SHADER_STORAGE_BUFFER, 11, buffer);
    gl->glBufferData(GL_SHADER_STORAGE_BUFFER, sizeof positions, positions, GL_STATIC_DRAW);
    set("section_period", 0.5f);
    values = capture(sweep, 2);
    ASSERT_EQ(values.size(), 2u * 4 * 3 * 2);
    for (std::size_t i = 0; i < values.size(); i += 2) {
        const bool firstSegment = i < values.size() / 2;
        const double u = double(values[i]);
        EXPECT_TRUE(std::fabs(u - (firstSegment ? 0.0 : 2.0)) < 1e-6 || std::fabs(u - 1.2) < 1e-6) << u;
        const float v = values[i + 1];
        EXPECT_TRUE(v == 0.0f || v == 0.5f || v == 1.0f) << v;
    }
    set("section_period", -0.5f);
    EXPECT_EQ(capture(sweep, 2), onceEach) << "a negative period is none";
    gl->glDeleteBuffers(1, &buffer);
}

TEST_F(SolidLineDrawingTest, AdjacencyIsEmulatedByInstances)
{
    Sweep sweep;
    sweep.section = circle(6, 0.1);
    sweep.path = {{-0.5, 0, 0}, {0.1, 0.2, 0}, {0.5, 0, 0.1}, {0.4, -0.4, 0.2}};
    useProgram({});
    drawUnlit(sweep);
    const QImage plain = images[0];
    EXPECT_GT(touchedCount(), 50);

    useProgram({}, {"RX_USE_ADJACENCY_EMULATION"});
    set("uLightMode", false);
    const int segments = feed(sweep) - 3;
    for (unsigned i = 0; i < 4; ++i) {
        gl->glEnableVertexAttribArray(i);
        gl->glVertexAttribPointer(i, 3, GL_FLOAT, GL_FALSE, 12,
                                  reinterpret_cast<const void*>(std::uintptr_t(12 * i)));
        gl->glVertexAttribDivisor(i, 1);
    }
    draw(GL_LINES_ADJACENCY, 4); // clears; the first segment
    gl->glDrawArraysInstanced(GL_LINES_ADJACENCY, 0, 4, segments);
    EXPECT_EQ(target->image(), plain);
}

} // namespace
