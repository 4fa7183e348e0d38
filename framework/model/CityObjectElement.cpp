#include <framework/model/CityObjectElement.h>

#include <framework/ksp/CFileException.h>

namespace {

template <typename Point>
void serializePoints(CQtArchive& archive, std::vector<Point>& points)
{
    if (archive.isLoading())
        points.resize(archive.readCount(sizeof(Point)));
    else
        archive.writeUInt(static_cast<std::uint32_t>(points.size()));
    if (!points.empty()) archive.block(points.data(), points.size() * sizeof(Point));
}

void serializeNumbers(CQtArchive& archive, std::vector<std::uint32_t>& numbers)
{
    if (archive.isLoading()) {
        numbers.resize(archive.readCount(sizeof(std::uint32_t)));
        for (std::uint32_t& number : numbers)
            number = archive.readUInt();
        return;
    }
    archive.writeUInt(static_cast<std::uint32_t>(numbers.size()));
    for (const std::uint32_t number : numbers)
        archive.writeUInt(number);
}

void serializePieces(CQtArchive& archive, std::vector<CityGeometry::Piece>& pieces)
{
    if (archive.isLoading()) {
        pieces.resize(archive.readCount(sizeof(CityGeometry::Piece)));
        for (CityGeometry::Piece& piece : pieces) {
            piece.kind = static_cast<CityGeometry::Piece::Kind>(archive.readUInt());
            piece.look = archive.readUInt();
            piece.ringEnd = archive.readUInt();
        }
        return;
    }
    archive.writeUInt(static_cast<std::uint32_t>(pieces.size()));
    for (const CityGeometry::Piece& piece : pieces) {
        archive.writeUInt(piece.kind);
        archive.writeUInt(piece.look);
        archive.writeUInt(piece.ringEnd);
    }
}

void serializeColor(CQtArchive& archive, QColor& color)
{
    QString name = color.isValid() ? color.name(QColor::HexArgb) : QString();
    archive.value(name);
    if (archive.isLoading()) color = name.isEmpty() ? QColor() : QColor(name);
}

void serializeLook(CQtArchive& archive, CityGeometry::Look& look)
{
    archive.value(look.kind);
    serializeColor(archive, look.color);
    archive.value(look.image);
}

void serializeWrappings(CQtArchive& archive, std::vector<CityGeometry::Look>& looks)
{
    for (CityGeometry::Look& look : looks) {
        if (archive.isLoading())
            look.wrapping = static_cast<CityGeometry::Look::Wrapping>(archive.readUInt());
        else
            archive.writeUInt(look.wrapping);
        serializeColor(archive, look.border);
    }
}

void serializeGeometry(CQtArchive& archive, CityGeometry& geometry)
{
    constexpr std::size_t smallestLook = 12; // three lengths of texts
    serializePoints(archive, geometry.vertices);
    serializeNumbers(archive, geometry.corners);
    serializePoints(archive, geometry.texCoords);
    serializeNumbers(archive, geometry.ringEnds);
    serializePieces(archive, geometry.pieces);
    if (archive.isLoading())
        geometry.looks.resize(archive.readCount(smallestLook));
    else
        archive.writeUInt(static_cast<std::uint32_t>(geometry.looks.size()));
    for (CityGeometry::Look& look : geometry.looks)
        serializeLook(archive, look);
}

void serializeTexts(CQtArchive& archive, QStringList& texts)
{
    constexpr std::size_t smallestText = 4;
    const std::uint32_t count =
        archive.isLoading() ? archive.readCount(smallestText) : static_cast<std::uint32_t>(texts.size());
    if (!archive.isLoading()) archive.writeUInt(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        QString text = archive.isLoading() ? QString() : texts[static_cast<int>(i)];
        archive.value(text);
        if (archive.isLoading()) texts.append(text);
    }
}

} // namespace

CityObjectElement::CityObjectElement(CModelElement* owner)
    : CModelElement(owner)
{
}

CityObjectElement::~CityObjectElement() = default;

int CityObjectElement::getType() const
{
    return Type;
}

void CityObjectElement::setSource(const QString& objectType, const QString& id, const QStringList& parentIds)
{
    m_objectType = objectType;
    m_sourceId = id;
    m_parentIds = parentIds;
    notifyObservers();
}

void CityObjectElement::setGeometry(CityGeometry geometry)
{
    m_geometry = std::move(geometry);
    notifyObservers();
}

void CityObjectElement::serialize(CQtArchive& archive)
{
    if (!archive.isLoading()) {
        serializeFields(archive);
        return;
    }
    CityObjectElement loaded;
    loaded.serializeFields(archive);
    if (!loaded.m_geometry.isSound())
        throw ksp::CFileException(ksp::CFileException::Damaged,
                                  QStringLiteral("the geometry of a city object is damaged"));
    takeStored(loaded);
    m_objectType = loaded.m_objectType;
    m_sourceId = loaded.m_sourceId;
    m_parentIds = loaded.m_parentIds;
    m_geometry = std::move(loaded.m_geometry);
}

void CityObjectElement::serializeFields(CQtArchive& archive)
{
    CModelElement::serialize(archive);
    archive.beginObject();
    archive.value(m_objectType);
    archive.value(m_sourceId);
    serializeTexts(archive, m_parentIds);
    serializeGeometry(archive, m_geometry);
    archive.endObject(1);
    constexpr unsigned wrappingsVersion = 2;
    if (archive.checkVersion(wrappingsVersion)) serializeWrappings(archive, m_geometry.looks);
    archive.finish();
}
