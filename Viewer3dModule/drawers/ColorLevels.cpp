#include <Viewer3dModule/drawers/Item3dDrawer.h>

#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t maxLevels = 256;

} // namespace

void Item3dDrawer::setColorLevels(QOpenGLShaderProgram* program,
                                  const std::vector<std::pair<double, QColor>>& levels, float levelStep,
                                  bool discrete)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !program || !program->isLinked() || !program->bind()) return;
    const std::size_t count = std::min(levels.size(), maxLevels);
    std::array<glm::vec4, maxLevels> colors;
    std::array<float, maxLevels> heights;
    for (std::size_t i = 0; i < count; ++i) {
        const QColor& color = levels[i].second;
        colors[i] = glm::vec4(color.redF(), color.greenF(), color.blueF(), color.alphaF());
        heights[i] = static_cast<float>(levels[i].first);
    }
    const int colorsLocation = program->uniformLocation("colorLevels");
    const int heightsLocation = program->uniformLocation("elevLevels");
    if (count > 0 && colorsLocation >= 0)
        gl->glUniform4fv(colorsLocation, static_cast<GLsizei>(count), &colors[0].x);
    if (count > 0 && heightsLocation >= 0)
        gl->glUniform1fv(heightsLocation, static_cast<GLsizei>(count), heights.data());
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
