#include <Viewer3dModule/drawables/Drawable3dItem.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/scene/ItemIndex.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/graphics/InteractiveGraphicsItem.h>

#include <utility>

Drawable3dItem::Drawable3dItem() = default;

Drawable3dItem::Drawable3dItem(Drawable3dItem&& other) noexcept
    : m_drawer(std::move(other.m_drawer))
    , m_scene(std::move(other.m_scene))
    , m_transform(other.m_transform)
    , m_drawerIndex(std::exchange(other.m_drawerIndex, -1))
    , m_pixelReach(other.m_pixelReach)
    , m_promisingType(other.m_promisingType)
    , m_visible(other.m_visible)
    , m_drawsOpaque(other.m_drawsOpaque)
    , m_alphas(other.m_alphas)
    , m_promises(other.m_promises)
{
    if (m_drawer) m_drawer->replaceItem(m_drawerIndex, this);
}

Drawable3dItem::~Drawable3dItem()
{
    if (m_drawer) m_drawer->removeItem(this);
}

void Drawable3dItem::draw(const PaintContext& context, int)
{
    draw(context);
}

void Drawable3dItem::draw(const PaintContext&) {}

int Drawable3dItem::getDefaultDrawerType() const
{
    return DrawerType::Mono;
}

bool Drawable3dItem::isHighlighted() const
{
    return false;
}

unsigned int Drawable3dItem::getGlueMask() const
{
    return 0xFFFFFFFFu;
}

bool Drawable3dItem::describeDrawing(ItemDrawing&)
{
    return false;
}

void Drawable3dItem::draw2d(QPainter&, std::function<QPointF(glm::dvec3)>, double) const {}

Item3dDrawer* Drawable3dItem::getDrawer() const
{
    return m_drawer.get();
}

Scene3d* Drawable3dItem::scene() const
{
    return m_scene.get();
}

void Drawable3dItem::setDrawer(Item3dDrawer* drawer)
{
    if (m_drawer) m_drawer->removeItem(this);
    m_drawer = drawer;
    boundsChanged(); // some drawers' items are never left out
    if (!drawer) return;
    m_scene = drawer->scene();
    drawer->addItem(this);
}

void Drawable3dItem::setTransform(const glm::mat4& matrix, bool combine)
{
    m_transform = combine ? matrix * m_transform : matrix;
    ++m_transformRevision;
    boundsChanged();
}

void Drawable3dItem::setVisible(bool visible)
{
    if (visible == m_visible) return;
    m_visible = visible;
    boundsChanged();
}

void Drawable3dItem::setPixelReach(float pixels)
{
    if (pixels == m_pixelReach) return;
    m_pixelReach = pixels;
    boundsChanged();
}

void Drawable3dItem::boundsChanged()
{
    if (m_indexPlace != NoIndexPlace && m_scene) m_scene->itemIndex().change(*this);
}

// The casts work only once the object is complete; drawing comes later.
const InteractiveGraphicsItem* Drawable3dItem::hostItem() const
{
    if (!m_hostItemKnown) {
        m_hostItem = dynamic_cast<const InteractiveGraphicsItem*>(this);
        m_hostItemKnown = true;
    }
    return m_hostItem;
}

void Drawable3dItem::setHostItem(const InteractiveGraphicsItem& item)
{
    m_hostItem = &item;
    m_hostItemKnown = true;
}

std::uint64_t Drawable3dItem::drawId() const
{
    const InteractiveGraphicsItem* item = hostItem();
    return item ? static_cast<std::uint64_t>(item->getId()) : reinterpret_cast<std::uintptr_t>(this);
}
