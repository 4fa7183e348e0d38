#include <Viewer3dModule/drawables/ObjFile3DGraphicsItem.h>

#include <Viewer3dModule/drawables/DrawableNode3dFactory.h>
#include <Viewer3dModule/drawers/PaintContext.h>

ObjFile3DGraphicsItem::ObjFile3DGraphicsItem(const QString& path)
{
    try {
        m_node = DrawableNode3dFactory::instance().createDrawableNode3d(path, ksp::StagedProgress::dummy());
    } catch (...) {
        m_error = std::current_exception();
    }
}

ObjFile3DGraphicsItem::~ObjFile3DGraphicsItem() = default;

int ObjFile3DGraphicsItem::getDefaultDrawerType() const
{
    return m_node ? m_node->getDrawerType() : Drawable3dItem::getDefaultDrawerType();
}

void ObjFile3DGraphicsItem::draw(const PaintContext& context)
{
    if (m_node && context.drawer) m_node->draw(context, 1);
}
