#include <readers/gltf/GltfDocument.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/reading.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QUrl>
#include <QtCore/QtEndian>

#include <algorithm>
#include <cmath>
#include <limits>

namespace readers {

namespace {

enum ComponentType { Int8 = 5120, UInt8 = 5121, Int16 = 5122, UInt16 = 5123, UInt32 = 5125, Float32 = 5126 };

constexpr quint32 containerMark = 0x46546c67; // "glTF"
constexpr quint32 jsonChunk = 0x4e4f534a;
constexpr quint32 binaryChunk = 0x004e4942;

[[noreturn]] void fail(const QString& reason)
{
    throw ksp::CommonError(reason);
}

QString quotedText(const QString& text)
{
    return inQuotes(text.toUtf8().constData());
}

std::uint64_t sizeOf(int componentType)
{
    switch (componentType) {
    case Int8:
    case UInt8:
        return 1;
    case Int16:
    case UInt16:
        return 2;
    case UInt32:
    case Float32:
        return 4;
    default:
        fail(QStringLiteral("an accessor has the unknown component type %1").arg(componentType));
    }
}

int getComponents(const QJsonObject& accessor)
{
    const QString type = accessor.value(QLatin1String("type")).toString();
    if (type == QLatin1String("SCALAR")) return 1;
    if (type == QLatin1String("VEC2")) return 2;
    if (type == QLatin1String("VEC3")) return 3;
    if (type == QLatin1String("VEC4")) return 4;
    fail(QStringLiteral("an accessor has the type %1 where numbers or vectors are needed")
             .arg(quotedText(type)));
}

double readNumber(const char* bytes, int componentType)
{
    switch (componentType) {
    case Int8:
        return qFromLittleEndian<qint8>(bytes);
    case UInt8:
        return qFromLittleEndian<quint8>(bytes);
    case Int16:
        return qFromLittleEndian<qint16>(bytes);
    case UInt16:
        return qFromLittleEndian<quint16>(bytes);
    case UInt32:
        return qFromLittleEndian<quint32>(bytes);
    default:
        return static_cast<double>(qFromLittleEndian<float>(bytes));
    }
}

// What a normalised whole number of the type is divided by.
double getLargest(int componentType)
{
    switch (componentType) {
    case Int8:
        return 127.0;
    case UInt8:
        return 255.0;
    case Int16:
        return 32767.0;
    case UInt16:
        return 65535.0;
    default:
        return 1.0;
    }
}

} // namespace

std::uint64_t toWhole(const QJsonValue& value, std::uint64_t defaultValue, const char* what)
{
    constexpr double most = 9007199254740992.0; // up to it doubles hold every whole number
    if (value.isUndefined()) return defaultValue;
    const double number = value.toDouble(-1.0);
    if (!(number >= 0.0 && number <= most) || number != std::floor(number))
        fail(QStringLiteral("%1 is not a whole number").arg(QLatin1String(what)));
    return static_cast<std::uint64_t>(number);
}

GltfDocument::GltfDocument(QIODevice& device, const QString& path, ksp::StagedProgress progress)
    : m_folder(QFileInfo(path).path())
{
    if (device.size() > std::numeric_limits<int>::max() / 2) fail(QStringLiteral("is larger than 1 GiB"));
    m_bytes = device.readAll();
    const bool contained =
        m_bytes.size() >= 4 && qFromLittleEndian<quint32>(m_bytes.constData()) == containerMark;
    m_index.read(contained ? readContainer() : m_bytes, static_cast<std::size_t>(m_bytes.size()),
                 std::move(progress));
    const QString version = m_index.getValue("asset").toObject().value(QLatin1String("version")).toString();
    if (version != QLatin1String("2.0") && !version.startsWith(QLatin1String("2.")))
        fail(version.isEmpty()
                 ? QStringLiteral("is not a glTF file")
                 : QStringLiteral("is of version %1, only 2.0 can be read").arg(quotedText(version)));
    checkExtensions();
}

// A head of three numbers, then chunks of a length, a type and bytes. Gives the text.
QByteArray GltfDocument::readContainer()
{
    constexpr int headSize = 12;
    constexpr int chunkHeadSize = 8;
    const char* bytes = m_bytes.constData();
    if (m_bytes.size() < headSize) fail(QStringLiteral("ends within its head"));
    const auto version = qFromLittleEndian<quint32>(bytes + 4);
    if (version != 2) fail(QStringLiteral("is of version %1, only 2.0 can be read").arg(version));
    const auto length = qFromLittleEndian<quint32>(bytes + 8);
    if (length > static_cast<quint32>(m_bytes.size()))
        fail(QStringLiteral("is too short: %1 bytes announced, %2 there").arg(length).arg(m_bytes.size()));
    QByteArray json;
    bool hasJson = false;
    const auto end = static_cast<int>(length);
    for (int at = headSize; at + chunkHeadSize <= end;) {
        const auto size = qFromLittleEndian<quint32>(bytes + at);
        const auto type = qFromLittleEndian<quint32>(bytes + at + 4);
        at += chunkHeadSize;
        if (size > static_cast<quint32>(end - at))
            fail(QStringLiteral("has a chunk that ends beyond the file"));
        const QByteArray chunk = QByteArray::fromRawData(bytes + at, static_cast<int>(size));
        if (type == jsonChunk && !hasJson) {
            hasJson = true;
            json = chunk;
        } else if (type == binaryChunk && m_chunk.isEmpty()) {
            m_chunk = chunk;
        }
        at += static_cast<int>(size);
    }
    if (!hasJson) fail(QStringLiteral("has no chunk of text"));
    return json;
}

// Those about looks can be done without: plain colours are what is drawn anyway.
void GltfDocument::checkExtensions() const
{
    const QJsonArray required = m_index.getValue("extensionsRequired").toArray();
    for (const QJsonValue& value : required) {
        const QString name = value.toString();
        const QLatin1String harmless[] = {QLatin1String("KHR_materials_"), QLatin1String("KHR_texture_"),
                                          QLatin1String("EXT_texture_"), QLatin1String("KHR_lights_"),
                                          QLatin1String("KHR_mesh_quantization")};
        if (std::none_of(std::begin(harmless), std::end(harmless),
                         [&](QLatin1String prefix) { return name.startsWith(prefix); }))
            fail(QStringLiteral("needs the extension %1, which cannot be read").arg(quotedText(name)));
    }
}

int GltfDocument::toIndex(const char* list, const QJsonValue& index) const
{
    const int count = getCountOf(list);
    const std::uint64_t number = toWhole(index, std::numeric_limits<std::uint64_t>::max(), list);
    if (number >= static_cast<std::uint64_t>(count))
        fail(QStringLiteral("member %1 of \"%2\" is named, there are %3")
                 .arg(index.toDouble(-1.0))
                 .arg(QLatin1String(list))
                 .arg(count));
    return static_cast<int>(number);
}

QJsonObject GltfDocument::getMember(const char* list, const QJsonValue& index)
{
    return m_index.getMember(list, toIndex(list, index));
}

QByteArray GltfDocument::readAddress(const QString& address, std::uint64_t most) const
{
    if (address.startsWith(QLatin1String("data:"))) {
        const int comma = address.indexOf(QLatin1Char(','));
        if (comma < 0 || !address.leftRef(comma).endsWith(QLatin1String(";base64")))
            fail(QStringLiteral("holds data that are not in base64"));
        return QByteArray::fromBase64(address.midRef(comma + 1).toLatin1());
    }
    const QString name = QUrl::fromPercentEncoding(address.toUtf8());
    const QFileInfo info(QDir(m_folder), name);
    if (!info.isFile()) fail(QStringLiteral("the file %1 beside it is missing").arg(quotedText(name)));
    QFile file(info.filePath());
    if (!file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("the file %1 cannot be opened").arg(quotedText(name)));
    return file.read(static_cast<qint64>(std::min<std::uint64_t>(most, std::numeric_limits<int>::max() / 2)));
}

const QByteArray& GltfDocument::getBuffer(const QJsonValue& index)
{
    const int number = toIndex("buffers", index);
    const auto known = m_buffers.find(number);
    if (known != m_buffers.end()) return known->second;
    const QJsonObject buffer = getMember("buffers", index);
    const std::uint64_t length =
        toWhole(buffer.value(QLatin1String("byteLength")), 0, "the length of a buffer");
    const QJsonValue address = buffer.value(QLatin1String("uri"));
    QByteArray bytes;
    if (address.isString())
        bytes = readAddress(address.toString(), length);
    else if (number == 0)
        bytes = m_chunk;
    if (static_cast<std::uint64_t>(bytes.size()) < length)
        fail(QStringLiteral("a buffer is too short: %1 bytes announced, %2 there")
                 .arg(length)
                 .arg(bytes.size()));
    return m_buffers.emplace(number, bytes).first->second;
}

QByteArray GltfDocument::readView(const QJsonValue& view)
{
    const QJsonObject object = getMember("bufferViews", view);
    const QByteArray& buffer = getBuffer(object.value(QLatin1String("buffer")));
    const std::uint64_t offset =
        toWhole(object.value(QLatin1String("byteOffset")), 0, "the offset of a view");
    const std::uint64_t length =
        toWhole(object.value(QLatin1String("byteLength")), 0, "the length of a view");
    const auto size = static_cast<std::uint64_t>(buffer.size());
    if (offset > size || length > size - offset)
        fail(QStringLiteral("a view of a buffer ends beyond it: offset %1, length %2, size %3")
                 .arg(offset)
                 .arg(length)
                 .arg(size));
    return QByteArray::fromRawData(buffer.constData() + offset, static_cast<int>(length));
}

std::uint64_t GltfDocument::getCount(const QJsonValue& accessor)
{
    return toWhole(getMember("accessors", accessor).value(QLatin1String("count")), 0,
                   "the count of an accessor");
}

std::vector<double> GltfDocument::readAccessor(const QJsonValue& accessor, int components)
{
    const QJsonObject object = getMember("accessors", accessor);
    const int type = object.value(QLatin1String("componentType")).toInt();
    if (getComponents(object) != components)
        fail(QStringLiteral("accessor %1 has not the %2 components that its use needs")
                 .arg(accessor.toInt())
                 .arg(components));
    sizeOf(type); // refuses an unknown one
    const std::uint64_t count = getCount(accessor);
    std::vector<double> numbers;
    if (!object.value(QLatin1String("bufferView")).isUndefined())
        readEntries(object, type, components, count, numbers);
    else if (count > getSize()) // zeros, for a sparse accessor to change: a small file can ask for very many
        fail(QStringLiteral("accessor %1 has %2 entries but no data").arg(accessor.toInt()).arg(count));
    else
        numbers.resize(static_cast<std::size_t>(count) * static_cast<std::size_t>(components), 0.0);
    const QJsonValue sparse = object.value(QLatin1String("sparse"));
    if (sparse.isObject()) readSparse(sparse.toObject(), type, components, count, numbers);
    if (object.value(QLatin1String("normalized")).toBool()) {
        const double largest = getLargest(type);
        for (double& number : numbers)
            number = std::max(number / largest, -1.0);
    }
    return numbers;
}

// source: an accessor, or the indices or values of a sparse one.
void GltfDocument::readEntries(const QJsonObject& source, int componentType, int components,
                               std::uint64_t count, std::vector<double>& numbers)
{
    const QJsonValue viewIndex = source.value(QLatin1String("bufferView"));
    const QByteArray view = readView(viewIndex);
    const auto size = static_cast<std::uint64_t>(view.size());
    const std::uint64_t component = sizeOf(componentType);
    const std::uint64_t entry = component * static_cast<std::uint64_t>(components);
    const std::uint64_t offset =
        toWhole(source.value(QLatin1String("byteOffset")), 0, "the offset of an accessor");
    const std::uint64_t stride =
        toWhole(getMember("bufferViews", viewIndex).value(QLatin1String("byteStride")), entry,
                "the stride of a view");
    if (count == 0) return;
    if (stride < entry)
        fail(QStringLiteral("a view has a stride of %1 for entries of %2 bytes").arg(stride).arg(entry));
    if (offset > size || entry > size - offset || count - 1 > (size - offset - entry) / stride)
        fail(QStringLiteral("an accessor of %1 entries ends beyond its view of %2 bytes")
                 .arg(count)
                 .arg(size));
    numbers.reserve(static_cast<std::size_t>(count) * static_cast<std::size_t>(components));
    for (std::uint64_t i = 0; i < count; ++i) {
        const char* bytes = view.constData() + offset + i * stride;
        for (int k = 0; k < components; ++k, bytes += component)
            numbers.push_back(readNumber(bytes, componentType));
    }
}

// Replaces single entries of an accessor.
void GltfDocument::readSparse(const QJsonObject& sparse, int componentType, int components,
                              std::uint64_t count, std::vector<double>& numbers)
{
    const std::uint64_t changes =
        toWhole(sparse.value(QLatin1String("count")), 0, "the count of a sparse accessor");
    const QJsonObject places = sparse.value(QLatin1String("indices")).toObject();
    std::vector<double> indices;
    std::vector<double> values;
    readEntries(places, places.value(QLatin1String("componentType")).toInt(), 1, changes, indices);
    readEntries(sparse.value(QLatin1String("values")).toObject(), componentType, components, changes, values);
    const auto width = static_cast<std::size_t>(components);
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (!(indices[i] >= 0.0 && indices[i] < static_cast<double>(count)))
            fail(QStringLiteral("a sparse accessor changes entry %1 of %2").arg(indices[i]).arg(count));
        std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(i * width), width,
                    numbers.begin() +
                        static_cast<std::ptrdiff_t>(static_cast<std::size_t>(indices[i]) * width));
    }
}

} // namespace readers
