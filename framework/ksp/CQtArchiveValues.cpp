// The values of CQtArchive that are made of others: texts, byte arrays and variants.
#include <framework/ksp/CQtArchive.h>

#include <framework/ksp/CFileException.h>

#include <QtCore/QTextCodec>

#include <limits>

namespace ksp {
namespace {

/// What a stored variant is. Written as 32 bits, so that a list of n bytes cannot unfold to many times n.
enum Tag : std::uint32_t { Null = 0, Bool = 1, Int = 2, Long = 3, Double = 4, Text = 5, List = 6, Map = 7 };

constexpr int deepestVariant = 32;
constexpr std::size_t smallestVariant = sizeof(std::uint32_t);
constexpr std::size_t smallestMapEntry = sizeof(std::uint32_t) + smallestVariant;

QVariantMap toMap(const QVariant& v)
{
    if (v.userType() == QMetaType::QVariantMap) return v.toMap();
    QVariantMap map;
    const QVariantHash hash = v.toHash();
    for (auto i = hash.begin(); i != hash.end(); ++i)
        map.insert(i.key(), i.value());
    return map;
}

Tag tagOf(const QVariant& v)
{
    switch (v.userType()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        return Null;
    case QMetaType::Bool:
        return Bool;
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return Int;
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return Long;
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return v.toULongLong() <= quint64(std::numeric_limits<std::int64_t>::max()) ? Long : Text;
    case QMetaType::Float:
    case QMetaType::Double:
        return Double;
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return List;
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return Map;
    default:
        return v.canConvert(QMetaType::QString) ? Text : Null;
    }
}

} // namespace

QByteArray CQtArchive::readBytes()
{
    const std::uint32_t size = readCount(1);
    QByteArray bytes(static_cast<int>(size), Qt::Uninitialized);
    readBlock(bytes.data(), size);
    return bytes;
}

void CQtArchive::writeBytes(const char* bytes, std::size_t size)
{
    if (size > std::numeric_limits<std::uint32_t>::max())
        throw CFileException(CFileException::Limit, QStringLiteral("an archive cannot hold 2 GiB or more"));
    writeUInt(static_cast<std::uint32_t>(size));
    writeBlock(bytes, size);
}

QString CQtArchive::readText()
{
    const QByteArray bytes = readBytes();
    // without the flag a leading U+FEFF would be taken for a byte order mark and be lost
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0)
        fail(CFileException::Damaged, QStringLiteral("a text is not UTF-8"));
    return text;
}

void CQtArchive::value(QString& v)
{
    if (m_loading) {
        v = readText();
        return;
    }
    const QByteArray bytes = v.toUtf8();
    writeBytes(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

void CQtArchive::value(std::string& v)
{
    if (m_loading)
        v = readBytes().toStdString();
    else
        writeBytes(v.data(), v.size());
}

void CQtArchive::value(std::wstring& v)
{
    QString text = m_loading ? QString() : QString::fromStdWString(v);
    value(text);
    if (m_loading) v = text.toStdWString();
}

void CQtArchive::value(QByteArray& v)
{
    if (m_loading)
        v = readBytes();
    else
        writeBytes(v.constData(), static_cast<std::size_t>(v.size()));
}

void CQtArchive::value(QVariant& v)
{
    if (m_loading)
        readVariant(v, 1);
    else
        writeVariant(v, 1);
}

void CQtArchive::readVariant(QVariant& v, int depth)
{
    if (depth > deepestVariant) fail(CFileException::Limit, QStringLiteral("a property is nested too deep"));
    const std::uint32_t tag = readUInt();
    switch (tag) {
    case Null:
        v = QVariant();
        break;
    case Bool:
        v = readBool();
        break;
    case Int:
        v = readInt();
        break;
    case Long:
        v = static_cast<qlonglong>(readInt64());
        break;
    case Double:
        v = readDouble();
        break;
    case Text:
        v = readText();
        break;
    case List: {
        QVariantList list;
        for (std::uint32_t count = readCount(smallestVariant); count > 0; --count) {
            list.append(QVariant());
            readVariant(list.last(), depth + 1);
        }
        v = list;
        break;
    }
    case Map: {
        QVariantMap map;
        for (std::uint32_t count = readCount(smallestMapEntry); count > 0; --count) {
            const QString key = readText();
            readVariant(map[key], depth + 1);
        }
        v = map;
        break;
    }
    default:
        fail(CFileException::Damaged, QStringLiteral("a property is of the unknown kind %1").arg(tag));
    }
}

void CQtArchive::writeVariant(const QVariant& v, int depth)
{
    if (depth > deepestVariant)
        throw CFileException(CFileException::Limit, QStringLiteral("a property is nested too deep"));
    const Tag tag = tagOf(v);
    writeUInt(tag);
    switch (tag) {
    case Null:
        break;
    case Bool:
        writeBool(v.toBool());
        break;
    case Int:
        writeInt(v.toInt());
        break;
    case Long:
        writeInt64(v.toLongLong());
        break;
    case Double:
        writeDouble(v.toDouble());
        break;
    case Text: {
        QString text = v.toString();
        value(text);
        break;
    }
    case List: {
        const QVariantList list = v.toList();
        writeUInt(static_cast<std::uint32_t>(list.size()));
        for (const QVariant& item : list)
            writeVariant(item, depth + 1);
        break;
    }
    case Map: {
        const QVariantMap map = toMap(v);
        writeUInt(static_cast<std::uint32_t>(map.size()));
        for (auto i = map.begin(); i != map.end(); ++i) {
            QString key = i.key();
            value(key);
            writeVariant(i.value(), depth + 1);
        }
        break;
    }
    }
}

} // namespace ksp
