#include <viewer/elements/MarkDrawer.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <utility>

void MarkDrawer::addTo(Scene3d& scene, const QColor& color, float size)
{
    if (scene.isHasDefaultDrawer(Type)) return;
    scene.makeCurrent();
    std::unique_ptr<MarkDrawer> marks(new MarkDrawer(&scene, color, size));
    const QOpenGLShaderProgram* program = marks->getProgram();
    if (program && program->isLinked())
        scene.addDefaultDrawer(Type, std::move(marks));
    else
        scene.addDefaultDrawer(Type, scene.getDefaultDrawer(DrawerType::Mono)->clone());
}

MarkDrawer::MarkDrawer(Scene3d* scene, const QColor& color, float size)
    : InstancedViewerOrientedTextureDrawer(scene)
    , m_size(size)
{
    setDefaultColor(color);
    addPlain();
}

MarkDrawer::MarkDrawer(const MarkDrawer& other)
    : InstancedViewerOrientedTextureDrawer(other.scene(), other.getProgram())
    , m_size(other.m_size)
{
    setDefaultColor(other.getDefaultColor());
    addPlain();
}

MarkDrawer::~MarkDrawer() = default;

void MarkDrawer::addPlain()
{
    const auto& mono = dynamic_cast<SequentialItem3dDrawer&>(*scene()->getDefaultDrawer(DrawerType::Mono));
    m_plain = std::make_unique<SequentialItem3dDrawer>(scene(), mono.getProgramToShare());
    addChildDrawer(m_plain.get());
}

std::unique_ptr<Item3dDrawer> MarkDrawer::clone() const
{
    return std::unique_ptr<Item3dDrawer>(new MarkDrawer(*this));
}

void MarkDrawer::draw(const PaintContext& context, Filter filter)
{
    if (context.drawMode == DrawMode::GeometryCapture) {
        capture(context, filter);
        return;
    }
    if ((context.primitives & PrimitiveBit::Points) == 0 || getItems().empty()) return;
    OpenGLFunctions* gl = currentGLFunctions();
    QOpenGLShaderProgram* program = getProgram();
    if (gl && program && program->bind()) {
        uniforms::set(*gl, program->uniformLocation("item_color"), getDefaultColor());
        uniforms::set(*gl, program->uniformLocation("pen_width"), m_size);
    }
    InstancedItem3dDrawer<glm::vec3>::draw(context, std::move(filter));
}

// A capture is of one item, which its filter picks, and who captures many goes from one to the next: looking
// for each from where the last one was found takes no time.
void MarkDrawer::capture(const PaintContext& context, const Filter& filter)
{
    const std::vector<Drawable3dItem*>& items = getItems();
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::size_t slot = (m_lastCaptured + i) % items.size();
        if (filter && !filter(items[slot])) continue;
        m_lastCaptured = slot;
        m_plain->drawOnly(items[slot], context);
        return;
    }
}

glm::vec3 MarkDrawer::getItemParams(int index)
{
    Drawable3dItem& item = *getItems()[static_cast<std::size_t>(index)];
    return glm::vec3(item.getTransform() * glm::vec4(item.getVertex(0), 1.0f));
}
