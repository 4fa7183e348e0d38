#include <benchmarks/scene/MeshItem.h>

#include <Viewer3dModule/scene/Scene3d.h>

MeshItem::MeshItem(MeshElement* element)
    : Graphics3dItem(element)
    , m_element(element)
    , m_node(element->takeNode())
{
    m_node->promiseFor(*this);
}

MeshItem::~MeshItem() = default;

void MeshItem::updateDataImpl()
{
    const glm::dmat4 matrix = scene()->modelToSceneTransform() * glm::dmat4(m_element->matrix());
    m_bounds = m_node->getBounds().transformed(matrix);
    setTransform(glm::mat4(matrix), false);
}
