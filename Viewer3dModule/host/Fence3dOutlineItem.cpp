#include <Viewer3dModule/host/Fence3dOutlineItem.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/fences/fence_outline.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <glm/gtc/matrix_transform.hpp>

#include <numeric>

namespace {

const QColor lineColor(255, 130, 0);
const QColor nodeColor(220, 30, 0);
constexpr double lineWidth = 2.0; // pixels
constexpr float nodeSize = 11.0f; // pixels

/// What lies before the near plane or behind the far one is drawn as if it lay in them, for as long as this
/// lives.
class DepthClamp
{
public:
    explicit DepthClamp(OpenGLFunctions& gl)
        : m_gl(gl)
        , m_before(gl.glIsEnabled(GL_DEPTH_CLAMP))
    {
        gl.glEnable(GL_DEPTH_CLAMP);
    }
    ~DepthClamp()
    {
        if (!m_before) m_gl.glDisable(GL_DEPTH_CLAMP);
    }
    DepthClamp(const DepthClamp&) = delete;
    DepthClamp& operator=(const DepthClamp&) = delete;

private:
    OpenGLFunctions& m_gl;
    GLboolean m_before;
};

std::unique_ptr<MeshNode3d> makePoints(const std::vector<glm::dvec3>& points, const glm::dvec3& origin)
{
    if (points.empty()) return nullptr;
    MeshData data;
    for (const glm::dvec3& point : points)
        data.positions.emplace_back(point - origin);
    data.indices.resize(points.size());
    std::iota(data.indices.begin(), data.indices.end(), 0u);
    MeshData::Part part;
    part.kind = MeshData::Part::Points;
    part.indexCount = static_cast<std::uint32_t>(points.size());
    part.color = nodeColor;
    part.pointSize = nodeSize;
    data.parts.push_back(part);
    return std::make_unique<MeshNode3d>(std::move(data));
}

} // namespace

/// The marks of the node points, which a program of their own draws.
class Fence3dOutlineItem::Nodes : public Drawable3dItem
{
public:
    void bindTo(Scene3d* scene) { setDrawer(scene->getLocalForegroundDrawer(getDefaultDrawerType())); }
    void setPoints(std::unique_ptr<MeshNode3d> points) { m_points = std::move(points); }

protected:
    using Drawable3dItem::draw;
    void draw(const PaintContext& context) override
    {
        OpenGLFunctions* gl = getGLFunctions();
        if (!gl || !m_points || context.drawMode != DrawMode::OrdinalDraw) return;
        const DepthClamp clamp(*gl);
        GLdouble range[2];
        gl->glGetDoublev(GL_DEPTH_RANGE, range);
        gl->glDepthRange(0.0, 0.0); // before the lines that meet in them
        m_points->draw(context, 1);
        gl->glDepthRange(range[0], range[1]);
    }

private:
    std::unique_ptr<MeshNode3d> m_points; // null without any
};

Fence3dOutlineItem* Fence3dOutlineItem::addTo(Scene3d* scene, Fence3dItem* element)
{
    std::unique_ptr<Fence3dOutlineItem> item(new Fence3dOutlineItem(element));
    Fence3dOutlineItem* const added = item.get();
    element->addObserver(added);
    added->bindTo(scene);
    scene->addLocalItem(std::move(item));
    added->updateData(element);
    return added;
}

Fence3dOutlineItem::Fence3dOutlineItem(Fence3dItem* element)
    : Graphics3dItem(element)
    , m_lines(0, DrawerType::WideLines)
    , m_nodeMarks(std::make_unique<Nodes>())
{
    QPen pen(lineColor);
    pen.setWidthF(lineWidth);
    m_lines.setPen(pen);
}

Fence3dOutlineItem::~Fence3dOutlineItem() = default;

// A host that chooses the transform itself is told of by no signal but that of views to be drawn again. A
// scene that recentres itself moves its local items along, in single precision; this one is placed anew after
// it.
void Fence3dOutlineItem::bindTo(Scene3d* scene)
{
    setDrawer(scene->getLocalForegroundDrawer(getDefaultDrawerType()));
    m_nodeMarks->bindTo(scene);
    QObject::connect(scene, &Scene3d::modelToSceneTransformChanged, &m_listener, [this] {
        m_placedBy = glm::dmat4(0.0);
        place();
    });
    QObject::connect(scene, &Scene3d::updateView, &m_listener, [this] { place(); });
}

int Fence3dOutlineItem::getDefaultDrawerType() const
{
    return DrawerType::WideLines;
}

Fence3dItem* Fence3dOutlineItem::element() const
{
    return static_cast<Fence3dItem*>(getModelElement());
}

/// Far beyond all that the scene shows.
double Fence3dOutlineItem::endlessLength() const
{
    const double scale = glm::length(glm::dvec3(scene()->modelToSceneTransform()[0]));
    return 4.0 * Scene3d::maxCoordsLimit() / scale;
}

void Fence3dOutlineItem::updateDataImpl()
{
    const Fence3dItem* own = element();
    if (!own || !scene()) return;
    std::vector<fence_outline::Strip> strips;
    m_nodes.clear();
    if (own->getFence()) {
        strips = fence_outline::strips(*own->getFence(), endlessLength());
        m_nodes = fence_outline::nodes(*own->getFence());
    }
    m_bounds = gmx::BoundingBox();
    for (const fence_outline::Strip& strip : strips)
        for (const glm::dvec3& point : strip)
            m_bounds.unite(point);
    m_origin = strips.empty() ? glm::dvec3(0.0) : strips.front().front();

    std::vector<glm::vec3> vertices;
    std::vector<int> counts;
    for (const fence_outline::Strip& strip : strips) {
        counts.push_back(static_cast<int>(strip.size()));
        for (const glm::dvec3& point : strip)
            vertices.emplace_back(point - m_origin);
    }
    m_lines.setPoints(std::move(vertices), std::move(counts));
    m_nodeMarks->setPoints(makePoints(m_nodes, m_origin));
    m_nodeMarks->setVisible(Drawable3dItem::isVisible());
    m_placedBy = glm::dmat4(0.0);
    place();
}

void Fence3dOutlineItem::place()
{
    if (!scene() || m_placedBy == scene()->modelToSceneTransform()) return;
    m_placedBy = scene()->modelToSceneTransform();
    const glm::mat4 matrix(glm::translate(m_placedBy, m_origin));
    setTransform(matrix, false);
    m_nodeMarks->setTransform(matrix, false);
}

gmx::BoundingBox Fence3dOutlineItem::sceneBoundingBox() const
{
    return scene() ? m_bounds.transformed(scene()->modelToSceneTransform()) : gmx::BoundingBox();
}

glm::dvec3 Fence3dOutlineItem::getNodePoint(int index) const
{
    if (index < 0 || index >= getNodePointsCount() || !scene()) return Graphics3dItem::getNodePoint(-1);
    return scene()->mapFromModel(m_nodes[static_cast<std::size_t>(index)]);
}

std::vector<glm::dvec3> Fence3dOutlineItem::getNodePoints() const
{
    std::vector<glm::dvec3> points;
    for (int i = 0; i < getNodePointsCount(); ++i)
        points.push_back(getNodePoint(i));
    return points;
}

bool Fence3dOutlineItem::setNodePoint(int index, const glm::dvec3& point)
{
    Fence3dItem* own = element();
    if (index < 0 || index >= getNodePointsCount() || !own || !own->getFence() || !scene()) return false;
    fence_outline::moveNode(*own->getFence(), static_cast<std::size_t>(index), scene()->mapToModel(point));
    own->notifyObservers();
    return true;
}

void Fence3dOutlineItem::draw(const PaintContext& context)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || !element() || context.drawMode != DrawMode::OrdinalDraw) return;
    const DepthClamp clamp(*gl);
    m_lines.draw(context);
}
