#include <viewer/elements/SweptLineItem.h>

#include <viewer/elements/LinePaths.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DrawMode.h>

namespace {

constexpr unsigned int positionsBinding = 11; // of the program's segments_buffer
constexpr float texturePeriod = 1.0f;         // model units of the path that a texture covers

void setPoints(OpenGLFunctions& gl, const QOpenGLShaderProgram& program, const char* name,
               const std::vector<glm::vec2>& values)
{
    const int location = program.uniformLocation(name);
    if (location >= 0) gl.glUniform2fv(location, static_cast<GLsizei>(values.size()), &values.front().x);
}

/// The lengths of the lines up to each of their points.
std::vector<float> positionsAlong(const FeatureElement& element, double scale)
{
    std::vector<float> positions;
    for (const FeatureElement::Part& part : element.getParts()) {
        double length = 0.0;
        for (std::size_t i = 0; i < part.points.size(); ++i) {
            if (i > 0) length += scale * glm::distance(part.points[i - 1], part.points[i]);
            positions.push_back(static_cast<float>(length));
        }
    }
    return positions;
}

} // namespace

SweptLineItem::SweptLineItem(FeatureElement* element, std::optional<float> pointSize)
    : FeatureItem(element, pointSize)
{
}

SweptLineItem::~SweptLineItem() = default;

CrossSection SweptLineItem::sectionOf(const FeatureElement& element)
{
    return LinePaths::areAll(element) ? CrossSection::of(element.getProperty(QStringLiteral("section")))
                                      : CrossSection();
}

void SweptLineItem::updateDataImpl()
{
    FeatureItem::updateDataImpl();
    const auto* element = static_cast<FeatureElement*>(getModelElement());
    if (!element || !scene()) return;
    const double scale = LinePaths::scaleOf(scene()->modelToSceneTransform());
    m_section = sectionOf(*element);
    for (glm::vec2& point : m_section.points)
        point *= static_cast<float>(scale);
    m_reach = m_section.reach() * LinePaths::longestMitre(*element);
    m_positions = positionsAlong(*element, scale);
    m_positionBuffer = GlBuffer();
}

// One whose section has been taken away is its lines.
int SweptLineItem::getDefaultDrawerType() const
{
    const auto* element = static_cast<const FeatureElement*>(getModelElement());
    return element && !sectionOf(*element).isEmpty() ? DrawerType::SolidRegularLines
                                                     : FeatureItem::getDefaultDrawerType();
}

gmx::BoundingBox SweptLineItem::sceneBoundingBox() const
{
    return LinePaths::grown(FeatureItem::sceneBoundingBox(), m_reach);
}

void SweptLineItem::draw(const PaintContext& context)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (gl && context.program && context.drawMode != DrawMode::GeometryCapture && !m_section.isEmpty()) {
        const QOpenGLShaderProgram& program = *context.program;
        setPoints(*gl, program, "section", m_section.points);
        setPoints(*gl, program, "section_normals", m_section.normals);
        uniforms::set(*gl, program.uniformLocation("section_points_count"),
                      static_cast<int>(m_section.points.size()));
        uniforms::set(*gl, program.uniformLocation("up_vector"), glm::vec3(0.0f, 0.0f, 1.0f));
        uniforms::set(*gl, program.uniformLocation("reserved_up_vector"), glm::vec3(0.0f, 1.0f, 0.0f));
        uniforms::set(*gl, Item3dDrawer::itemUniforms(context).colorMode, ColorMode::Item);
        uniforms::set(*gl, Item3dDrawer::itemUniforms(context).materialMode, 0);
        setPositions(*gl, context);
    }
    FeatureItem::draw(context);
}

// Only programs with textures ask for them.
void SweptLineItem::setPositions(OpenGLFunctions& gl, const PaintContext& context)
{
    const int period = context.program->uniformLocation("section_period");
    if (period < 0 || !scene()) return;
    const auto scale = static_cast<float>(LinePaths::scaleOf(scene()->modelToSceneTransform()));
    uniforms::set(gl, period, texturePeriod * scale);
    if (m_positionBuffer.name() == 0) m_positionBuffer.upload(gl, m_positions, GL_STATIC_DRAW);
    gl.glBindBufferBase(GL_SHADER_STORAGE_BUFFER, positionsBinding, m_positionBuffer.name());
}
