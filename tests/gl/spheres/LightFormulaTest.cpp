#include <tests/support/LightReference.h>
#include <tests/support/ShaderDrawing.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <cstdio>
#include <random>

// The light alone, at full precision: each point of a draw call is a surface of its own, and its colour comes
// back as floats, so that colours above 1 are seen.
namespace {

const char* const vertexSource = R"(#version 430 core
//#include "shader:Viewer3dLight/LightFrame.glsl"
layout(location = 0) in vec2 place;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec3 position;
layout(location = 3) in vec3 ambient;
layout(location = 4) in vec3 diffuse;
layout(location = 5) in vec3 specular;
out vec3 light_normal;
out vec3 light_position;
out vec3 colors[3];
void main()
{
    gl_Position = vec4(place, 0.0, 1.0);
    gl_PointSize = 1.0;
    light_normal = lightFrame() * normal;
    light_position = lightFrame() * position;
    colors = vec3[3](ambient, diffuse, specular);
}
)";

const char* const fragmentSource = R"(#version 430 core
//#include "shader:Viewer3dModule/light.fragment.glsl"
in vec3 colors[3];
uniform bool is_one_color = false;
out vec4 result;
void main()
{
    result = vec4(is_one_color ? lightColor(colors[0]) : lightColor(colors[0], colors[1], colors[2]), 1.0);
}
)";

struct Surface
{
    glm::vec3 normal{0.0f, 0.0f, 1.0f};
    glm::vec3 position{0.0f, 0.0f, -1.0f};
    glm::vec3 colors[3] = {glm::vec3(1.0f), glm::vec3(1.0f), glm::vec3(1.0f)};
};

class LightFormulaTest : public ShaderDrawing
{
protected:
    static constexpr int Side = 32;

    void prepare() override
    {
        write("light.vertex.glsl", vertexSource);
        write("light.fragment.glsl", fragmentSource);
        const QString vertex = m_folder.filePath("light.vertex.glsl");
        const QString fragment = m_folder.filePath("light.fragment.glsl");
        use(ProgramRecipe{"light", {vertex, fragment}, {}});
        unsigned texture = 0; // goes with the context, as does the frame buffer
        unsigned framebuffer = 0;
        gl->glGenTextures(1, &texture);
        gl->glBindTexture(GL_TEXTURE_2D, texture);
        gl->glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA32F, Side, Side);
        gl->glGenFramebuffers(1, &framebuffer);
        gl->glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        gl->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
        gl->glViewport(0, 0, Side, Side);
        gl->glDisable(GL_DEPTH_TEST);
    }
    /// The colours that the surfaces have in this light.
    std::vector<glm::vec3> lit(const std::vector<Surface>& surfaces, const glm::vec3& direction)
    {
        feed(surfaces);
        set("uLightDirection", direction);
        gl->glDrawArrays(GL_POINTS, 0, static_cast<GLsizei>(surfaces.size()));
        std::vector<glm::vec4> pixels(Side * Side);
        gl->glReadPixels(0, 0, Side, Side, GL_RGBA, GL_FLOAT, pixels.data());
        return {pixels.begin(), pixels.begin() + static_cast<std::ptrdiff_t>(surfaces.size())};
    }
    glm::vec3 lit(const Surface& face, const glm::vec3& direction)
    {
        return lit(std::vector<Surface>{face}, direction)[0];
    }

    static glm::dvec3 expected(const Surface& s, const glm::vec3& direction)
    {
        const Light light = lightAt(glm::dvec3(s.position), glm::dvec3(s.normal), glm::dvec3(direction));
        return light.ambient * glm::dvec3(s.colors[0]) + light.diffuse * glm::dvec3(s.colors[1]) +
               light.specular * glm::dvec3(s.colors[2]);
    }

    glm::vec3 randomVector(float size)
    {
        std::uniform_real_distribution<float> share(-1.0f, 1.0f);
        glm::vec3 v(share(m_random), share(m_random), share(m_random));
        return size * v;
    }
    /// Surfaces of any kind, half of them so that the light's mirror image is near the eye, where the
    /// highlight is.
    std::vector<Surface> randomSurfaces(const glm::vec3& direction)
    {
        std::uniform_real_distribution<float> color(0.0f, 3.0f);
        std::uniform_real_distribution<float> exponent(-3.0f, 3.0f);
        std::vector<Surface> surfaces(Side * Side);
        for (std::size_t i = 0; i < surfaces.size(); ++i) {
            Surface& s = surfaces[i];
            s.position = randomVector(std::pow(10.0f, exponent(m_random)));
            s.normal = randomVector(std::pow(10.0f, exponent(m_random)));
            if (i % 2 == 0) {
                const glm::vec3 half = glm::normalize(direction) - glm::normalize(s.position);
                s.normal = std::pow(10.0f, exponent(m_random)) * (glm::normalize(half) + randomVector(0.3f)) *
                           (i % 4 == 0 ? 1.0f : -1.0f);
            }
            for (glm::vec3& c : s.colors)
                c = {color(m_random), color(m_random), color(m_random)};
        }
        return surfaces;
    }
    static double difference(const glm::vec3& actual, const glm::dvec3& wanted)
    {
        const glm::dvec3 d = glm::abs(glm::dvec3(actual) - wanted);
        return std::isnan(d.x + d.y + d.z) ? INFINITY : std::max(d.x, std::max(d.y, d.z));
    }

    std::mt19937 m_random{11};

private:
    void write(const char* name, const char* source)
    {
        QFile file(m_folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(source);
    }
    void feed(const std::vector<Surface>& surfaces)
    {
        std::vector<float> values[6];
        const auto add = [&values](std::size_t i, const glm::vec3& v) {
            values[i].insert(values[i].end(), {v.x, v.y, v.z});
        };
        for (std::size_t i = 0; i < surfaces.size(); ++i) {
            const float column = float(i % Side) + 0.5f;
            const float row = float(i / Side) + 0.5f;
            values[0].insert(values[0].end(), {2.0f * column / Side - 1.0f, 2.0f * row / Side - 1.0f});
            add(1, surfaces[i].normal);
            add(2, surfaces[i].position);
            for (std::size_t k = 0; k < 3; ++k)
                add(3 + k, surfaces[i].colors[k]);
        }
        for (unsigned i = 0; i < 6; ++i)
            attribute(i, i == 0 ? 2 : 3, values[i]);
    }

    QTemporaryDir m_folder;
};

TEST_F(LightFormulaTest, RandomSurfacesInRandomLight)
{
    double largest = 0.0;
    int cases = 0;
    int aboveOne = 0;
    int highlights = 0;
    for (int run = 0; run < 20; ++run) {
        const glm::vec3 direction = randomVector(run % 2 ? 100.0f : 0.1f);
        const std::vector<Surface> surfaces = randomSurfaces(direction);
        const std::vector<glm::vec3> colors = lit(surfaces, direction);
        for (std::size_t i = 0; i < surfaces.size(); ++i) {
            const glm::dvec3 wanted = expected(surfaces[i], direction);
            largest = std::max(largest, difference(colors[i], wanted));
            aboveOne += wanted.r > 1.0;
            highlights += lightAt(glm::dvec3(surfaces[i].position), glm::dvec3(surfaces[i].normal),
                                  glm::dvec3(direction))
                              .specular > 0.01;
            ++cases;
        }
    }
    std::printf("light: %d cases, %d above 1, %d with a highlight, largest difference %.2g, tolerance 2e-5\n",
                cases, aboveOne, highlights, largest);
    EXPECT_GT(aboveOne, cases / 4);
    EXPECT_GT(highlights, cases / 10);
    EXPECT_LT(largest, 2e-5);
}

TEST_F(LightFormulaTest, OneColourServesAllTerms)
{
    const glm::vec3 direction(0.3f, -0.5f, 2.0f);
    std::vector<Surface> surfaces = randomSurfaces(direction);
    set("is_one_color", true);
    const std::vector<glm::vec3> colors = lit(surfaces, direction);
    for (std::size_t i = 0; i < surfaces.size(); ++i) {
        surfaces[i].colors[1] = surfaces[i].colors[2] = surfaces[i].colors[0];
        ASSERT_LT(difference(colors[i], expected(surfaces[i], direction)), 2e-5) << i;
    }
}

TEST_F(LightFormulaTest, BothSidesAreLitAlike)
{
    const glm::vec3 direction(0.3f, -0.5f, 2.0f);
    std::vector<Surface> surfaces = randomSurfaces(direction);
    const std::vector<glm::vec3> front = lit(surfaces, direction);
    for (Surface& face : surfaces)
        face.normal = -face.normal;
    const std::vector<glm::vec3> back = lit(surfaces, direction);
    for (std::size_t i = 0; i < surfaces.size(); ++i)
        ASSERT_LT(difference(back[i], glm::dvec3(front[i])), 1e-6) << i;
}

TEST_F(LightFormulaTest, LengthsOfNormalAndDirectionDoNotMatter)
{
    const glm::vec3 direction(0.3f, -0.5f, 2.0f);
    std::vector<Surface> surfaces = randomSurfaces(direction);
    const std::vector<glm::vec3> before = lit(surfaces, direction);
    for (Surface& face : surfaces)
        face.normal *= 16.0f;
    const std::vector<glm::vec3> after = lit(surfaces, 0.125f * direction);
    for (std::size_t i = 0; i < surfaces.size(); ++i)
        ASSERT_LT(difference(after[i], glm::dvec3(before[i])), 1e-5) << i;
}

TEST_F(LightFormulaTest, WithoutANormalOrADirectionThereIsTheAmbientTermOnly)
{
    Surface face;
    face.colors[0] = {0.5f, 1.0f, 4.0f};
    const glm::dvec3 ambient = 0.3 * glm::dvec3(face.colors[0]);
    EXPECT_LT(difference(lit(face, glm::vec3(0.0f)), ambient), 1e-6);
    face.normal = glm::vec3(0.0f);
    EXPECT_LT(difference(lit(face, glm::vec3(1.0f)), ambient), 1e-6);
    EXPECT_LT(difference(lit(face, glm::vec3(0.0f)), ambient), 1e-6);
}

TEST_F(LightFormulaTest, AtTheEyeThereIsNoHighlight)
{
    Surface face;
    face.position = glm::vec3(0.0f);
    face.colors[2] = glm::vec3(100.0f);
    EXPECT_LT(difference(lit(face, glm::vec3(0.0f, 0.0f, 2.0f)), glm::dvec3(1.3)), 1e-6);
}

TEST_F(LightFormulaTest, TermsHaveTheirShares)
{
    Surface face; // the eye, the light and the normal in one line
    face.colors[0] = {1.0f, 0.0f, 0.0f};
    face.colors[1] = {0.0f, 1.0f, 0.0f};
    face.colors[2] = {0.0f, 0.0f, 1.0f};
    EXPECT_LT(difference(lit(face, glm::vec3(0.0f, 0.0f, 5.0f)), glm::dvec3(0.3, 1.0, 0.25)), 1e-6);
    face.normal.z = -1.0f;
    EXPECT_LT(difference(lit(face, glm::vec3(0.0f, 0.0f, 5.0f)), glm::dvec3(0.3, 1.0, 0.25)), 1e-6);
    // light from behind has its mirror image behind
    EXPECT_LT(difference(lit(face, glm::vec3(0.0f, 0.0f, -5.0f)), glm::dvec3(0.3, 1.0, 0.0)), 1e-6);
    // across the light nothing is left but the ambient term
    EXPECT_LT(difference(lit(face, glm::vec3(5.0f, 0.0f, 0.0f)), glm::dvec3(0.3, 0.0, 0.0)), 1e-6);
}

TEST_F(LightFormulaTest, LightComesFromTheUpperRightFrontUnlessTold)
{
    GLfloat direction[3] = {0, 0, 0};
    gl->glGetUniformfv(program->programId(), program->uniformLocation("uLightDirection"), direction);
    EXPECT_EQ(glm::vec3(direction[0], direction[1], direction[2]), glm::vec3(1.0f));
}

} // namespace
