#include "ArchiveSamples.h"

#include <framework/ksp/CFileException.h>

#include <QtCore/QDate>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QPointF>
#include <QtCore/QTemporaryDir>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <sys/stat.h>

using ksp::CFileException;

namespace {

template <typename Value>
Value roundTrip(Value value)
{
    CQtArchive writer;
    writer.value(value);
    CQtArchive reader(writer.data());
    Value read{};
    reader.value(read);
    EXPECT_EQ(reader.remaining(), 0u);
    return read;
}

QVariant nestedList(int depth)
{
    QVariant value = 1;
    for (int i = 1; i < depth; ++i)
        value = QVariantList{value};
    return value;
}

/// The code that the work throws, -1 when it throws nothing.
template <typename Work>
int thrownCode(const Work& work)
{
    try {
        work();
    } catch (const CFileException& error) {
        return error.code();
    }
    return -1;
}

} // namespace

TEST(CQtArchive, layoutIsLittleEndianWithMarkVersionLengthAndChecksum)
{
    CQtArchive archive;
    archive.beginObject();
    archive.writeInt(-2);
    archive.writeBool(true);
    archive.endObject(1);
    archive.checkVersion(4);
    archive.finish();
    archive.writeDouble(1.0);
    archive.writeFloat(-2.0f);
    archive.writeInt64(0x0102030405060708);
    const QByteArray payload = QByteArray::fromHex("05000000"         // bytes in the frame
                                                   "04000000"         // its version
                                                   "feffffff"         // -2
                                                   "01"               // true
                                                   "000000000000f03f" // 1.0
                                                   "000000c0"         // -2.0f
                                                   "0807060504030201");
    EXPECT_EQ(archive.data().toHex(), sealArchive(payload).toHex());
}

TEST(CQtArchive, checksumIsTheUsualOne)
{
    CQtArchive archive;
    archive.writeBlock("123456789", 9);
    EXPECT_EQ(archive.data().mid(16, 4).toHex(), "2639f4cb"); // the check value CBF43926 of CRC-32
}

TEST(CQtArchive, numbersComeBack)
{
    EXPECT_EQ(roundTrip(std::numeric_limits<double>::denorm_min()),
              std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(roundTrip(-std::numeric_limits<float>::max()), -std::numeric_limits<float>::max());
    EXPECT_TRUE(std::isnan(roundTrip(std::nan(""))));
    EXPECT_TRUE(std::signbit(roundTrip(-0.0)));
    EXPECT_EQ(roundTrip(std::numeric_limits<std::int32_t>::min()), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(roundTrip(std::uint32_t(0xFFFFFFFFu)), 0xFFFFFFFFu);
    EXPECT_EQ(roundTrip(std::numeric_limits<std::int64_t>::min()), std::numeric_limits<std::int64_t>::min());
    EXPECT_TRUE(roundTrip(true));
    EXPECT_FALSE(roundTrip(false));
}

TEST(CQtArchive, blocksComeBack)
{
    const double values[3] = {1.5, -2.5, 1e300};
    CQtArchive writer;
    writer.block(const_cast<double*>(values), sizeof values);
    writer.writeBlock(nullptr, 0);
    CQtArchive reader(writer.data());
    double read[3] = {};
    reader.block(read, sizeof read);
    reader.readBlock(nullptr, 0);
    EXPECT_TRUE(std::equal(values, values + 3, read));
}

TEST(CQtArchive, textsComeBack)
{
    for (const QString& text : {QString(), QString::fromUtf8("Größe дом 😀"), QString(QChar(0xFEFF)) + "bom",
                                QString("a") + QChar(0) + "b", QString(100000, 'x')})
        EXPECT_EQ(roundTrip(text), text);
    EXPECT_EQ(roundTrip(std::string("a\0\xff", 3)), std::string("a\0\xff", 3));
    EXPECT_EQ(roundTrip(std::wstring(L"Настройки \U0001F600")), L"Настройки \U0001F600");
    EXPECT_EQ(roundTrip(QByteArray("\0\xfe", 2)), QByteArray("\0\xfe", 2));
}

TEST(CQtArchive, variantsComeBackAsTheyWere)
{
    const QVariantList values{QVariant(),
                              true,
                              -7,
                              qlonglong(1) << 40,
                              0.1,
                              QString::fromUtf8("Höhe"),
                              QVariantList{1, QVariantList{}, "x"},
                              QVariantMap{{"a", 1}, {"", QVariantMap{{"b", 2.5}}}}};
    for (const QVariant& value : values) {
        const QVariant read = roundTrip(value);
        EXPECT_EQ(read, value);
        EXPECT_EQ(read.userType(), value.userType());
    }
}

TEST(CQtArchive, otherNumbersBecomeTheKindThatHoldsThem)
{
    EXPECT_EQ(roundTrip(QVariant(4000000000u)), QVariant(qlonglong(4000000000)));
    EXPECT_EQ(roundTrip(QVariant(quint64(5))), QVariant(qlonglong(5)));
    EXPECT_EQ(roundTrip(QVariant(std::numeric_limits<quint64>::max())), QVariant("18446744073709551615"));
    EXPECT_EQ(roundTrip(QVariant(0.5f)), QVariant(0.5));
    EXPECT_EQ(roundTrip(QVariant::fromValue(short(-3))), QVariant(-3));
}

TEST(CQtArchive, otherValuesBecomeTextOrNull)
{
    EXPECT_EQ(roundTrip(QVariant(QDate(2024, 2, 29))), QVariant("2024-02-29"));
    EXPECT_EQ(roundTrip(QVariant(QStringList{"a", "b"})), QVariant(QVariantList{"a", "b"}));
    EXPECT_EQ(roundTrip(QVariant(QVariantHash{{"a", 1}})), QVariant(QVariantMap{{"a", 1}}));
    EXPECT_FALSE(roundTrip(QVariant(QPointF(1, 2))).isValid());
}

TEST(CQtArchive, variantsNestThirtyTwoDeepAndNoDeeper)
{
    EXPECT_EQ(roundTrip(nestedList(32)), nestedList(32));
    CQtArchive writer;
    QVariant tooDeep = nestedList(33);
    EXPECT_EQ(thrownCode([&] { writer.value(tooDeep); }), CFileException::Limit);
}

TEST(CQtArchive, olderReaderSkipsWhatANewerWriterAdded)
{
    CQtArchive writer;
    writer.beginObject();
    writer.writeInt(1);
    writer.endObject(1);
    writer.checkVersion(4);
    writer.writeInt(4);
    writer.checkVersion(9);
    writer.writeBlock("something new", 13);
    writer.finish();
    writer.writeInt(77);

    CQtArchive reader(writer.data());
    reader.beginObject();
    EXPECT_EQ(reader.readInt(), 1);
    reader.endObject(1);
    EXPECT_TRUE(reader.checkVersion(4));
    EXPECT_EQ(reader.readInt(), 4);
    reader.finish();
    EXPECT_EQ(reader.readInt(), 77);
}

TEST(CQtArchive, newerReaderFindsThatAnOlderWriterHadNotThePart)
{
    CQtArchive writer;
    writer.beginObject();
    writer.writeInt(1);
    writer.endObject(1);
    writer.finish();
    CQtArchive reader(writer.data());
    reader.beginObject();
    reader.readInt();
    reader.endObject(1);
    EXPECT_FALSE(reader.checkVersion(4));
    reader.finish();
    EXPECT_EQ(reader.remaining(), 0u);
}

TEST(CQtArchive, objectOlderThanWhatIsNeededIsRefused)
{
    CQtArchive writer;
    writer.beginObject();
    writer.endObject(1);
    writer.finish();
    CQtArchive reader(writer.data());
    reader.beginObject();
    EXPECT_EQ(thrownCode([&] { reader.endObject(2); }), CFileException::Version);
}

TEST(CQtArchive, readingStopsAtTheEndOfTheFrame)
{
    CQtArchive writer;
    writer.beginObject();
    writer.writeInt(1);
    writer.endObject(1);
    writer.finish();
    writer.writeInt(2);
    CQtArchive reader(writer.data());
    reader.beginObject();
    EXPECT_EQ(reader.remaining(), 4u);
    reader.readInt();
    EXPECT_EQ(thrownCode([&] { reader.readInt(); }), CFileException::Damaged);
}

TEST(CQtArchive, everyOperationFailsAfterTheFirstFailure)
{
    CQtArchive reader(makeSampleArchive());
    char byte = 0;
    QString text;
    QVariant variant;
    EXPECT_THROW(reader.readBlock(&byte, 1000000), CFileException);
    EXPECT_THROW(reader.readInt(), CFileException);
    EXPECT_THROW(reader.readBool(), CFileException);
    EXPECT_THROW(reader.readBlock(&byte, 0), CFileException);
    EXPECT_THROW(reader.value(text), CFileException);
    EXPECT_THROW(reader.value(variant), CFileException);
    EXPECT_THROW(reader.readCount(1), CFileException);
    EXPECT_THROW(reader.beginObject(), CFileException);
    EXPECT_THROW(reader.endObject(1), CFileException);
    EXPECT_THROW(reader.checkVersion(1), CFileException);
    EXPECT_THROW(reader.finish(), CFileException);
}

TEST(CQtArchive, dataWithAnOpenObjectIsRefused)
{
    CQtArchive writer;
    writer.beginObject();
    EXPECT_THROW(writer.data(), ksp::CommonError);
    writer.finish();
    EXPECT_EQ(writer.data(), sealArchive(QByteArray(8, '\0')));
}

TEST(CQtArchive, readingWhileStoringAndTheOtherWayRoundAreRefused)
{
    CQtArchive writer;
    EXPECT_THROW(writer.readInt(), ksp::CommonError);
    EXPECT_THROW(writer.remaining(), ksp::CommonError);
    EXPECT_THROW(writer.finish(), ksp::CommonError);
    CQtArchive reader(makeSampleArchive());
    EXPECT_THROW(reader.writeInt(1), ksp::CommonError);
    EXPECT_THROW(reader.data(), ksp::CommonError);
    EXPECT_FALSE(writer.isLoading());
    EXPECT_TRUE(reader.isLoading());
}

TEST(CQtArchive, emptyArchiveIsAnArchive)
{
    CQtArchive reader(CQtArchive().data());
    EXPECT_EQ(reader.remaining(), 0u);
    EXPECT_EQ(thrownCode([&] { reader.readInt(); }), CFileException::Truncated);
}

TEST(CQtArchiveFile, bytesComeBack)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("project");
    CQtArchive::writeFile(path, "old");
    CQtArchive::writeFile(path, makeSampleArchive());
    EXPECT_EQ(CQtArchive::readFile(path), makeSampleArchive());
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"project"});
}

TEST(CQtArchiveFile, failureNamesTheFile)
{
    const QTemporaryDir folder;
    const QString missing = folder.filePath("no/such/file");
    for (const QString& path : {missing, folder.path()}) {
        try {
            CQtArchive::readFile(path);
            FAIL() << "read " << qPrintable(path);
        } catch (const CFileException& error) {
            EXPECT_EQ(error.code(), CFileException::Access);
            EXPECT_TRUE(error.text().startsWith(path + ": ")) << qPrintable(error.text());
        }
        try {
            CQtArchive::writeFile(path, "x");
            FAIL() << "written " << qPrintable(path);
        } catch (const CFileException& error) {
            EXPECT_EQ(error.code(), CFileException::Access);
            EXPECT_TRUE(error.text().startsWith(path + ": ")) << qPrintable(error.text());
        }
    }
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
}

TEST(CQtArchiveFile, whatIsNoRegularFileIsNeitherReadNorWritten)
{
    const QTemporaryDir folder;
    const QString pipe = folder.filePath("pipe");
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const QString link = folder.filePath("link");
    ASSERT_TRUE(QFile::link(pipe, link));
    for (const QString& path : {pipe, link, folder.path()}) {
        for (const auto& work : {std::function<void()>([&] { CQtArchive::readFile(path); }),
                                 std::function<void()>([&] { CQtArchive::writeFile(path, "x"); })}) {
            try {
                work();
                ADD_FAILURE() << qPrintable(path);
            } catch (const CFileException& error) {
                EXPECT_EQ(error.code(), CFileException::Access);
                EXPECT_EQ(error.text(), path + ": not a regular file");
            }
        }
    }
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot),
              (QStringList{"link", "pipe"}));
}

TEST(CQtArchiveFile, deviceThatNeverEndsIsRefused)
{
    EXPECT_EQ(thrownCode([] { CQtArchive::readFile("/dev/zero"); }), CFileException::Access);
}

TEST(CQtArchiveFile, linkToAFileIsWrittenThrough)
{
    const QTemporaryDir folder;
    CQtArchive::writeFile(folder.filePath("file"), "old");
    ASSERT_TRUE(QFile::link(folder.filePath("file"), folder.filePath("link")));
    CQtArchive::writeFile(folder.filePath("link"), "new");
    EXPECT_EQ(CQtArchive::readFile(folder.filePath("file")), "new");
}

TEST(CQtArchiveFile, fileOfTwoGibibytesIsRefusedUnread)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("huge");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(qint64(1) << 31)); // sparse
    EXPECT_EQ(thrownCode([&] { CQtArchive::readFile(path); }), CFileException::Limit);
}

TEST(CQtArchiveFile, errorWhileReadingIsReported)
{
    // a regular file of the system that opens and that nobody may read from its beginning
    const QString path = "/proc/self/mem";
    ASSERT_TRUE(QFileInfo(path).isFile());
    try {
        CQtArchive::readFile(path);
        FAIL() << "read";
    } catch (const CFileException& error) {
        EXPECT_EQ(error.code(), CFileException::Access);
        EXPECT_TRUE(error.text().startsWith(path + ": ")) << qPrintable(error.text());
    }
}
