#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t maxLevels = maxColorLevels;
constexpr std::size_t levelsPerVector = 4; // of the arrays "colorLevels" and "elevLevels"

// 8 bits a channel, rounded as in a picture; red in the lowest byte.
std::uint32_t packedColor(const QColor& color)
{
    return glm::packUnorm4x8(glm::vec4(color.redF(), color.greenF(), color.blueF(), color.alphaF()));
}

} // namespace

void Item3dDrawer::setColorLevels(QOpenGLShaderProgram* program,
                                  const std::vector<std::pair<double, QColor>>& levels, float levelStep,
                                  bool discrete)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !program || !program->isLinked() || !program->bind()) return;
    const std::size_t count = std::min(levels.size(), maxLevels);
    std::array<std::uint32_t, maxLevels> colors{};
    std::array<float, maxLevels> heights{};
    for (std::size_t i = 0; i < count; ++i) {
        colors[i] = packedColor(levels[i].second);
        heights[i] = static_cast<float>(levels[i].first);
    }
    if (count > 0) {
        const auto vectors = static_cast<GLsizei>((count + levelsPerVector - 1) / levelsPerVector);
        gl->glUniform4uiv(program->uniformLocation("colorLevels"), vectors, colors.data());
        gl->glUniform4fv(program->uniformLocation("elevLevels"), vectors, heights.data());
    }
    uniforms::set(*gl, program->uniformLocation("levelCount"), static_cast<int>(count));
    uniforms::set(*gl, program->uniformLocation("levelStep"), levelStep);
    uniforms::set(*gl, program->uniformLocation("levelStepDiscreteMode"), discrete);
}

void Item3dDrawer::setColorLevels(QOpenGLShaderProgram* program, float lower, float upper)
{
    const std::array<QColor, 5> ramp = {QColor(0, 0, 255), QColor(0, 255, 255), QColor(0, 255, 0),
                                        QColor(255, 255, 0), QColor(255, 0, 0)};
    const float step = (upper - lower) / static_cast<float>(ramp.size() - 1);
    std::vector<std::pair<double, QColor>> levels;
    for (std::size_t i = 0; i < ramp.size(); ++i)
        levels.emplace_back(lower + step * static_cast<float>(i), ramp[i]);
    setColorLevels(program, levels, step, false);
}
