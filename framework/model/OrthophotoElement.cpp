#include <framework/model/OrthophotoElement.h>

OrthophotoElement::OrthophotoElement(CModelElement* owner)
    : CModelElement(owner)
{
}

OrthophotoElement::~OrthophotoElement() = default;

int OrthophotoElement::getType() const
{
    return Type;
}

void OrthophotoElement::setPath(const QString& path)
{
    m_path = path;
    notifyObservers();
}

void OrthophotoElement::setFrame(const Frame& frame)
{
    m_frame = frame;
    notifyObservers();
}

gmx::BoundingBox OrthophotoElement::getBounds() const
{
    gmx::BoundingBox box;
    box.unite(m_frame.corner);
    box.unite(m_frame.corner + m_frame.right);
    box.unite(m_frame.corner + m_frame.up);
    box.unite(m_frame.corner + m_frame.right + m_frame.up);
    return box;
}

void OrthophotoElement::serialize(CQtArchive& archive)
{
    OrthophotoElement loaded;
    OrthophotoElement& fields = archive.isLoading() ? loaded : *this;
    fields.CModelElement::serialize(archive);
    archive.beginObject();
    archive.value(fields.m_path);
    archive.value(fields.m_relativePath);
    archive.block(&fields.m_frame, sizeof fields.m_frame);
    archive.endObject(1);
    archive.finish();
    if (!archive.isLoading()) return;
    takeStored(loaded);
    m_path = loaded.m_path;
    m_relativePath = loaded.m_relativePath;
    m_frame = loaded.m_frame;
}
