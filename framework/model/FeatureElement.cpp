#include <framework/model/FeatureElement.h>

#include <framework/ksp/CFileException.h>

FeatureElement::FeatureElement(CModelElement* owner)
    : CModelElement(owner)
{
}

FeatureElement::~FeatureElement() = default;

int FeatureElement::getType() const
{
    return Type;
}

void FeatureElement::setParts(std::vector<Part> parts)
{
    m_parts = std::move(parts);
    notifyObservers();
}

void FeatureElement::setSourceId(const QString& id)
{
    if (m_sourceId == id) return;
    m_sourceId = id;
    notifyObservers();
}

gmx::BoundingBox FeatureElement::getBounds() const
{
    gmx::BoundingBox box;
    for (const Part& part : m_parts) {
        for (const glm::dvec3& point : part.points)
            box.unite(point);
    }
    return box;
}

void FeatureElement::serialize(CQtArchive& archive)
{
    if (!archive.isLoading()) {
        serializeFields(archive);
        return;
    }
    FeatureElement loaded;
    loaded.serializeFields(archive);
    takeStored(loaded);
    m_sourceId = loaded.m_sourceId;
    m_parts.swap(loaded.m_parts);
}

void FeatureElement::serializeFields(CQtArchive& archive)
{
    CModelElement::serialize(archive);
    archive.beginObject();
    archive.value(m_sourceId);
    if (archive.isLoading())
        loadParts(archive);
    else
        storeParts(archive);
    archive.endObject(1);
    archive.finish();
}

void FeatureElement::storeParts(CQtArchive& archive)
{
    archive.writeUInt(static_cast<std::uint32_t>(m_parts.size()));
    for (Part& part : m_parts) {
        archive.writeUInt(static_cast<std::uint32_t>(part.kind));
        archive.writeBool(part.hole);
        archive.writeUInt(static_cast<std::uint32_t>(part.points.size()));
        for (glm::dvec3& point : part.points)
            archive.block(&point, sizeof point);
    }
}

void FeatureElement::loadParts(CQtArchive& archive)
{
    constexpr std::size_t smallestPart = 9; // kind, hole, number of points
    m_parts.resize(archive.readCount(smallestPart));
    for (Part& part : m_parts) {
        const std::uint32_t kind = archive.readUInt();
        if (kind > Part::Ring)
            throw ksp::CFileException(
                ksp::CFileException::Damaged,
                QStringLiteral("a feature has a part of the unknown kind %1").arg(kind));
        part.kind = static_cast<Part::Kind>(kind);
        part.hole = archive.readBool();
        part.points.resize(archive.readCount(sizeof(glm::dvec3)));
        for (glm::dvec3& point : part.points)
            archive.block(&point, sizeof point);
    }
}
