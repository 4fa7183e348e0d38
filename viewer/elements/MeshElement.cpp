#include <viewer/elements/MeshElement.h>

#include <viewer/elements/ElementTypes.h>

MeshElement::MeshElement(CModelElement* owner)
    : CModelElement(owner)
{
}

MeshElement::~MeshElement() = default;

int MeshElement::getType() const
{
    return element_types::Mesh;
}

void MeshElement::setSource(const QString& path, int part)
{
    m_path = path;
    m_part = part;
}

void MeshElement::setNode(std::unique_ptr<IDrawableNode3d> node)
{
    m_node = std::move(node);
    notifyObservers();
}

void MeshElement::serialize(CQtArchive& archive)
{
    CModelElement::serialize(archive);
    archive.beginObject();
    archive.value(m_path);
    archive.value(m_relativePath);
    archive.value(m_part);
    archive.endObject(1);
    archive.finish();
}
