#include "ArchiveSamples.h"

#include <framework/ksp/CFileException.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QtEndian>
#include <gtest/gtest.h>

#include <limits>
#include <malloc.h>

using ksp::CFileException;

namespace {

bool opens(const QByteArray& bytes)
{
    try {
        CQtArchive archive(bytes);
        return true;
    } catch (const CFileException&) {
        return false;
    }
}

/// Whether all of the sample could be read; anything but CFileException goes through.
bool readsAll(const QByteArray& bytes)
{
    try {
        CQtArchive archive(bytes);
        readSampleArchive(archive);
        return true;
    } catch (const CFileException&) {
        return false;
    }
}

QByteArray number(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

int codeOfReadingVariant(const QByteArray& payload)
{
    CQtArchive archive(sealArchive(payload));
    QVariant value;
    try {
        archive.value(value);
    } catch (const CFileException& error) {
        return error.code();
    }
    return -1;
}

} // namespace

TEST(CQtArchiveDamage, wholeSampleIsRead)
{
    EXPECT_TRUE(readsAll(makeSampleArchive()));
    EXPECT_EQ(sealArchive(archivePayload(makeSampleArchive())), makeSampleArchive());
}

TEST(CQtArchiveDamage, everyTruncationIsRefused)
{
    const QByteArray bytes = makeSampleArchive();
    for (int size = 0; size < bytes.size(); ++size) {
        try {
            CQtArchive archive(bytes.left(size));
            ADD_FAILURE() << "opened with " << size << " bytes";
        } catch (const CFileException& error) {
            EXPECT_EQ(error.code(), CFileException::Truncated) << size;
        }
    }
}

TEST(CQtArchiveDamage, everyFlippedBitIsRefused)
{
    const QByteArray bytes = makeSampleArchive();
    for (int i = 0; i < bytes.size(); ++i)
        for (int bit = 0; bit < 8; ++bit) {
            QByteArray damaged = bytes;
            damaged[i] = char(damaged[i] ^ (1 << bit));
            EXPECT_FALSE(opens(damaged)) << "byte " << i << " bit " << bit;
        }
}

TEST(CQtArchiveDamage, everyByteReplacedIsRefused)
{
    const QByteArray bytes = makeSampleArchive();
    for (int i = 0; i < bytes.size(); ++i)
        for (const char replacement : {'\0', '\x7f', '\x80', '\xff'}) {
            QByteArray damaged = bytes;
            damaged[i] = replacement;
            EXPECT_EQ(opens(damaged), damaged == bytes) << "byte " << i;
        }
}

TEST(CQtArchiveDamage, bytesAfterTheEndAreRefused)
{
    EXPECT_FALSE(opens(makeSampleArchive() + '\0'));
}

TEST(CQtArchiveDamage, truncationsWithARightHeadAreRefusedWhileReading)
{
    const QByteArray payload = archivePayload(makeSampleArchive());
    for (int size = 0; size < payload.size(); ++size)
        EXPECT_FALSE(readsAll(sealArchive(payload.left(size)))) << size;
}

TEST(CQtArchiveDamage, flippedBytesWithARightHeadNeverDoMoreThanThrow)
{
    const QByteArray payload = archivePayload(makeSampleArchive());
    int refused = 0;
    for (int i = 0; i < payload.size(); ++i)
        for (int mask = 1; mask < 256; ++mask) {
            QByteArray damaged = payload;
            damaged[i] = char(damaged[i] ^ mask);
            refused += readsAll(sealArchive(damaged)) ? 0 : 1;
        }
    EXPECT_GT(refused, payload.size()); // sizes, tags, counts, truth values and UTF-8 are checked
}

TEST(CQtArchiveDamage, hostileCountsWithARightHeadNeverDoMoreThanThrow)
{
    const QByteArray payload = archivePayload(makeSampleArchive());
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i + 4 <= payload.size(); ++i)
        for (const quint32 count : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 0x00FFFFFFu}) {
            QByteArray damaged = payload;
            damaged.replace(i, 4, number(count));
            readsAll(sealArchive(damaged)); // throws CFileException or gives other values
        }
    EXPECT_LT(timer.elapsed(), 10000);
}

TEST(CQtArchiveDamage, frameLargerThanItsParentIsRefused)
{
    CQtArchive archive(sealArchive(number(8) + number(1) + number(1) + number(1) + "tail"));
    archive.beginObject();
    EXPECT_THROW(archive.beginObject(), CFileException);
}

TEST(CQtArchiveDamage, unknownFormatVersionIsRefusedAsSuch)
{
    QByteArray bytes = makeSampleArchive();
    bytes[4] = 2;
    try {
        CQtArchive archive(bytes);
        FAIL();
    } catch (const CFileException& error) {
        EXPECT_EQ(error.code(), CFileException::Version);
    }
}

TEST(CQtArchiveDamage, otherFilesAreRefused)
{
    for (const QByteArray& bytes :
         {QByteArray("<?xml version=\"1.0\"?>                 "), QByteArray("PK"), QByteArray(1000, '\0')})
        EXPECT_FALSE(opens(bytes));
}

TEST(CQtArchiveDamage, countsThatTheDataCannotHoldAreRefused)
{
    const QByteArray bytes = sealArchive(number(3) + QByteArray(24, '\0'));
    EXPECT_EQ(CQtArchive(bytes).readCount(8), 3u);
    EXPECT_THROW(CQtArchive(bytes).readCount(9), CFileException);
    EXPECT_THROW(CQtArchive(bytes).readCount(std::numeric_limits<std::size_t>::max()), CFileException);
    EXPECT_THROW(CQtArchive(sealArchive(number(0x80000000u))).readCount(0), CFileException);
}

TEST(CQtArchiveDamage, textThatIsNotUtf8IsRefused)
{
    for (const QByteArray& text : {QByteArray("a\xff"), QByteArray("cut \xc3"), QByteArray("\xed\xa0\x80")}) {
        CQtArchive archive(sealArchive(number(quint32(text.size())) + text));
        QString read;
        EXPECT_THROW(archive.value(read), CFileException) << text.toHex().constData();
    }
}

TEST(CQtArchiveDamage, truthValuesAreZeroOrOne)
{
    EXPECT_THROW(CQtArchive(sealArchive("\x02")).readBool(), CFileException);
}

TEST(CQtArchiveDamage, unknownKindOfVariantIsRefused)
{
    EXPECT_EQ(codeOfReadingVariant(number(8)), CFileException::Damaged);
    EXPECT_EQ(codeOfReadingVariant(number(0x01000001)), CFileException::Damaged);
}

TEST(CQtArchiveDamage, variantsNestedByTheMillionAreRefusedWithoutRecursion)
{
    QByteArray payload;
    for (int i = 0; i < 1000000; ++i)
        payload += number(6) + number(1); // a list of one
    EXPECT_EQ(codeOfReadingVariant(payload + number(0)), CFileException::Limit);
}

TEST(CQtArchiveDamage, variantsTakeASmallMultipleOfTheirBytes)
{
    const quint32 count = 200000;
    const QByteArray payload =
        number(6) + number(count) + QByteArray(int(count * 4), '\0'); // a list of nulls
    CQtArchive archive(sealArchive(payload));
    const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    QVariant value;
    archive.value(value);
    const std::size_t after = mallinfo2().uordblks + mallinfo2().hblkhd;
    EXPECT_EQ(value.toList().size(), int(count));
    EXPECT_LT(after - before, std::size_t(payload.size()) * 20);
}
