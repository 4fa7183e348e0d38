#include "ArchiveSamples.h"

namespace {

constexpr int headSize = 20;

QByteArray littleEndian(quint64 number, int bytes)
{
    QByteArray result;
    for (int i = 0; i < bytes; ++i)
        result.append(char((number >> (8 * i)) & 0xFF));
    return result;
}

/// Bit by bit, as the standard words it.
quint32 crc32(const QByteArray& bytes)
{
    quint32 crc = 0xFFFFFFFFu;
    for (const char byte : bytes)
        for (int bit = 0; bit < 8; ++bit) {
            const quint32 low = (crc ^ quint32(quint8(byte) >> bit)) & 1u;
            crc >>= 1;
            if (low) crc ^= 0xEDB88320u;
        }
    return crc ^ 0xFFFFFFFFu;
}

} // namespace

QByteArray sealArchive(const QByteArray& payload)
{
    return "V3DA" + littleEndian(1, 4) + littleEndian(quint64(payload.size()), 8) +
           littleEndian(crc32(payload), 4) + payload;
}

QByteArray archivePayload(const QByteArray& archive)
{
    return archive.mid(headSize);
}

QByteArray makeSampleArchive()
{
    CQtArchive archive;
    QString text = QString::fromUtf8("Größe дом");
    std::string narrow("a\0b", 3);
    std::wstring wide = L"wide \u00e4";
    QVariant variant = QVariantList{1,
                                    true,
                                    2.5,
                                    "text",
                                    qlonglong(-5),
                                    QVariant(),
                                    QVariantMap{{"key", QVariantList{"x", "y"}}, {"z", 0}}};
    archive.beginObject();
    archive.value(text);
    archive.value(variant);
    for (int i = 0; i < 2; ++i) {
        archive.beginObject();
        archive.value(narrow);
        archive.writeBool(true);
        archive.endObject(1);
        archive.checkVersion(4);
        archive.value(wide);
        archive.finish();
    }
    archive.writeUInt(3);
    for (double x : {1.0, 2.0, 3.0})
        archive.writeDouble(x);
    archive.endObject(2);
    archive.finish();
    archive.writeInt64(42);
    return archive.data();
}

void readSampleArchive(CQtArchive& archive)
{
    QString text;
    QVariant variant;
    std::string narrow;
    std::wstring wide;
    archive.beginObject();
    archive.value(text);
    archive.value(variant);
    for (int i = 0; i < 2; ++i) {
        archive.beginObject();
        archive.value(narrow);
        archive.readBool();
        archive.endObject(1);
        if (archive.checkVersion(4)) archive.value(wide);
        archive.finish();
    }
    for (std::uint32_t count = archive.readCount(sizeof(double)); count > 0; --count)
        archive.readDouble();
    archive.endObject(2);
    archive.finish();
    archive.readInt64();
}
