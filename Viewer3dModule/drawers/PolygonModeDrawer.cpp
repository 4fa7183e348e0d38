#include <Viewer3dModule/drawers/PolygonModeDrawer.h>

#include <utility>

namespace {

// A core profile has one mode for front and back, and some drivers still answer with one for each.
unsigned int polygonMode(OpenGLFunctions& gl)
{
    GLint modes[2] = {GL_FILL, GL_FILL};
    gl.glGetIntegerv(GL_POLYGON_MODE, modes);
    return static_cast<unsigned int>(modes[0]);
}

} // namespace

void PolygonModeDrawer::draw(const PaintContext& context, Filter filter)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || getItems().empty()) return;
    m_modeBefore = polygonMode(*gl);
    SequentialItem3dDrawer::draw(context, std::move(filter));
    m_modeBefore = 0;
}

std::unique_ptr<Item3dDrawer> PolygonModeDrawer::clone() const
{
    return std::make_unique<PolygonModeDrawer>(scene(), getProgramToShare());
}

PolygonModeScope::PolygonModeScope(OpenGLFunctions& gl, const PaintContext& context, unsigned int mode)
    : m_gl(gl)
{
    const auto* drawer = dynamic_cast<const PolygonModeDrawer*>(context.drawer);
    m_before = drawer && drawer->m_modeBefore != 0 ? drawer->m_modeBefore : polygonMode(gl);
    m_gl.glPolygonMode(GL_FRONT_AND_BACK, mode);
}

PolygonModeScope::~PolygonModeScope()
{
    m_gl.glPolygonMode(GL_FRONT_AND_BACK, m_before);
}
