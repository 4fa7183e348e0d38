#include "WholeFiles.h"

#include "tests/support/LogTrap.h"

#include <framework/app/CSettings.h>
#include <framework/app/CSettingsManager.h>
#include <framework/app/XmlSerializer.h>
#include <framework/app/XmlSettingsStorage.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

/// Settings that note what happens to them.
struct NotedSettings : CSettings
{
    NotedSettings(const QString& title, QStringList& into, QObject* owner = nullptr)
        : CSettings(nullptr, owner)
        , name(title)
        , notes(into)
    {
    }
    ~NotedSettings() override { notes << "delete " + name; }
    void load() override { notes << "load " + name; }
    void save() override { notes << "save " + name; }
    QString name;
    QStringList& notes;
};

} // namespace

// --- XmlSerializer ---

TEST(XmlSerializer, valuesComeBackThroughAFile)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("settings.xml");
    const QString text = QString::fromUtf8("<Größe & \"дом\">\n\ttab 😀");
    {
        XmlSettingsStorage storage(path);
        XmlSerializer::writeColor(storage.getCreateElement("colour"), QColor(1, 2, 3, 4));
        XmlSerializer::writeInt(storage.getCreateElement("int"), std::numeric_limits<int>::min());
        XmlSerializer::writeDouble(storage.getCreateElement("double"), 0.1 + 0.2);
        XmlSerializer::writeString(storage.getCreateElement("text"), text);
        ASSERT_TRUE(storage.save());
    }
    const XmlSettingsStorage storage(path);
    EXPECT_EQ(XmlSerializer::readColor(storage.getElement("colour"), {}), QColor(1, 2, 3, 4));
    EXPECT_EQ(XmlSerializer::readInt(storage.getElement("int"), 0), std::numeric_limits<int>::min());
    EXPECT_EQ(XmlSerializer::readDouble(storage.getElement("double"), 0), 0.1 + 0.2);
    EXPECT_EQ(XmlSerializer::readString(storage.getElement("text"), {}), text);
}

TEST(XmlSerializer, coloursAreStoredWithTheirAlphaFirst)
{
    XmlSettingsStorage storage({});
    XmlSerializer::writeColor(storage.getCreateElement("c"), QColor(255, 128, 0, 64));
    EXPECT_EQ(storage.getElement("c").attribute("value"), "#40ff8000");
}

TEST(XmlSerializer, nullElementGivesTheDefault)
{
    EXPECT_EQ(XmlSerializer::readColor({}, Qt::red), QColor(Qt::red));
    EXPECT_FALSE(XmlSerializer::readColor({}, QColor()).isValid());
    EXPECT_EQ(XmlSerializer::readInt({}, 5), 5);
    EXPECT_EQ(XmlSerializer::readDouble({}, 1.5), 1.5);
    EXPECT_EQ(XmlSerializer::readString({}, "d"), "d");
}

TEST(XmlSerializer, unreadableValueGivesTheDefault)
{
    XmlSettingsStorage storage({});
    QDomElement element = storage.getCreateElement("key");
    EXPECT_EQ(XmlSerializer::readInt(element, 5), 5); // no value at all
    for (const char* value : {"", "x", "1.5", "99999999999"}) {
        element.setAttribute("value", value);
        EXPECT_EQ(XmlSerializer::readInt(element, 5), 5) << value;
    }
    for (const char* value : {"", "x", "1,5", "nan", "inf", "1e999"}) {
        element.setAttribute("value", value);
        EXPECT_EQ(XmlSerializer::readDouble(element, 5), 5) << value;
    }
    for (const char* value : {"", "#12", "no colour", "#gggggg"}) {
        element.setAttribute("value", value);
        EXPECT_EQ(XmlSerializer::readColor(element, Qt::red), QColor(Qt::red)) << value;
    }
}

TEST(XmlSerializer, valueThatCannotBeStoredLeavesTheDefault)
{
    XmlSettingsStorage storage({});
    XmlSerializer::writeColor(storage.getCreateElement("c"), Qt::red);
    XmlSerializer::writeColor(storage.getElement("c"), QColor());
    EXPECT_EQ(XmlSerializer::readColor(storage.getElement("c"), Qt::blue), QColor(Qt::blue));
    XmlSerializer::writeDouble(storage.getCreateElement("d"), 1);
    XmlSerializer::writeDouble(storage.getElement("d"), std::nan(""));
    EXPECT_EQ(XmlSerializer::readDouble(storage.getElement("d"), 7), 7);
    XmlSerializer::writeInt({}, 5); // a null element takes nothing and does no harm
}

TEST(XmlSerializer, textThatXmlCannotHoldDoesNotSpoilTheFile)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("settings.xml");
    {
        XmlSettingsStorage storage(path);
        const QString text = QString("a") + QChar(1) + QChar(0xFFFF) + QChar(0xD800) + "b";
        XmlSerializer::writeString(storage.getCreateElement("text"), text);
        ASSERT_TRUE(storage.save());
    }
    EXPECT_EQ(XmlSerializer::readString(XmlSettingsStorage(path).getElement("text"), {}), "ab");
}

// --- XmlSettingsStorage ---

TEST(XmlSettingsStorage, keysAreFoundMadeAndRemoved)
{
    XmlSettingsStorage storage({});
    EXPECT_TRUE(storage.getElement("key").isNull());
    QDomElement made = storage.getCreateElement("key");
    made.setAttribute("value", "1");
    EXPECT_EQ(storage.getElement("key"), made);
    EXPECT_EQ(storage.getCreateElement("key"), made);
    storage.remove("key");
    storage.remove("key");
    EXPECT_TRUE(storage.getElement("key").isNull());
}

TEST(XmlSettingsStorage, keyThatIsNoElementNameIsRefused)
{
    XmlSettingsStorage storage({});
    for (const QString& key : {QString(), QString("two words"), QString("<x"), QString("1st")}) {
        EXPECT_TRUE(storage.getCreateElement(key).isNull());
        EXPECT_EQ(LogTrap::take().size(), 1);
    }
}

TEST(XmlSettingsStorage, storeWithoutAPathStaysInMemory)
{
    XmlSettingsStorage storage({});
    storage.getCreateElement("key");
    EXPECT_TRUE(storage.save());
}

TEST(XmlSettingsStorage, missingFileIsAnEmptyStoreAndItsFolderIsMade)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("a/b/settings.xml");
    XmlSettingsStorage storage(path);
    storage.getCreateElement("key");
    EXPECT_TRUE(storage.save());
    EXPECT_EQ(QDir(folder.filePath("a/b")).entryList(QDir::Files), QStringList{"settings.xml"});
    EXPECT_FALSE(XmlSettingsStorage(path).getElement("key").isNull());
}

TEST(XmlSettingsStorage, fileIsUtf8WhateverItWasBefore)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("settings.xml");
    writeFile(path,
              "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><settings><k value=\"\xe4\"/></settings>");
    XmlSettingsStorage storage(path);
    EXPECT_EQ(XmlSerializer::readString(storage.getElement("k"), {}), QString(QChar(0xe4)));
    ASSERT_TRUE(storage.save());
    EXPECT_EQ(XmlSerializer::readString(XmlSettingsStorage(path).getElement("k"), {}), QString(QChar(0xe4)));
    EXPECT_TRUE(readFile(path).contains("\"\xc3\xa4\""));
}

TEST(XmlSettingsStorage, everyDamageGivesAnEmptyStoreALineAndAKeptFile)
{
    QByteArray deep = "<settings>";
    for (int i = 0; i < 1000000; ++i)
        deep += "<a>";
    const QByteArray entities = "<!DOCTYPE settings [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>"
                                "<settings><k value=\"&b;\"/></settings>";
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("<settings><k"), QByteArray("<other/>"), QByteArray("\0\xff\xfe\x01", 4),
          deep, entities, QByteArray("<settings/><settings/>"),
          QByteArray("<settings><k v=\"1\" v=\"2\"/></settings>")}) {
        const QTemporaryDir folder;
        const QString path = folder.filePath("settings.xml");
        writeFile(path, bytes);
        XmlSettingsStorage storage(path);
        const QStringList log = LogTrap::take();
        ASSERT_EQ(log.size(), 1) << bytes.left(50).constData();
        EXPECT_TRUE(log[0].startsWith(path + ": ")) << qPrintable(log[0]);
        EXPECT_FALSE(log[0].contains('\n'));
        EXPECT_TRUE(storage.getElement("k").isNull());
        EXPECT_EQ(readFile(path), bytes);
        storage.getCreateElement("fresh");
        EXPECT_TRUE(storage.save());
        EXPECT_EQ(readFile(path + ".damaged"), bytes);
        EXPECT_FALSE(XmlSettingsStorage(path).getElement("fresh").isNull());
    }
}

TEST(XmlSettingsStorage, everyTruncationIsSurvived)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("settings.xml");
    const QByteArray bytes =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><settings><k value=\"1\"/></settings>";
    for (int size = 0; size < bytes.size(); ++size) {
        writeFile(path, bytes.left(size));
        EXPECT_TRUE(XmlSettingsStorage(path).getElement("k").isNull());
        EXPECT_EQ(LogTrap::take().size(), 1) << size;
    }
}

TEST(XmlSettingsStorage, damagedFileIsKeptOnceAndNotAgainByTheNextSave)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("settings.xml");
    writeFile(path, "damaged");
    XmlSettingsStorage storage(path);
    LogTrap::take();
    EXPECT_TRUE(storage.save());
    EXPECT_TRUE(storage.save());
    EXPECT_EQ(readFile(path + ".damaged"), "damaged");
}

TEST(XmlSettingsStorage, pathThatCannotBeWrittenIsReported)
{
    const QTemporaryDir folder;
    XmlSettingsStorage storage(folder.path()); // a folder is no file
    LogTrap::take();
    EXPECT_FALSE(storage.save());
    const QStringList log = LogTrap::take();
    ASSERT_EQ(log.size(), 1);
    EXPECT_TRUE(log[0].startsWith(folder.path() + ": settings cannot be written: ")) << qPrintable(log[0]);
    EXPECT_TRUE(QFileInfo(folder.path()).isDir());
}

TEST(XmlSettingsStorage, whatIsNoRegularFileIsNeitherReadNorWritten)
{
    const QTemporaryDir folder;
    const QString pipe = folder.filePath("pipe");
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString& path : {pipe, folder.path()}) {
        XmlSettingsStorage storage(path);
        EXPECT_EQ(LogTrap::take(),
                  QStringList{path + ": settings cannot be read, the defaults are used: not a regular file"});
        EXPECT_FALSE(storage.save());
        EXPECT_EQ(LogTrap::take(), QStringList{path + ": settings cannot be written: not a regular file"});
    }
}

TEST(XmlSettingsStorage, fileAboveSixteenMebibytesIsRefused)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("settings.xml");
    const int limit = 16 * 1024 * 1024;
    const QByteArray begin = "<settings><k value=\"1\"/><!--";
    const QByteArray end = "--></settings>";
    for (const int size : {limit, limit + 1}) {
        writeFile(path, begin + QByteArray(size - begin.size() - end.size(), 'x') + end);
        const XmlSettingsStorage storage(path);
        EXPECT_EQ(storage.getElement("k").isNull(), size > limit);
        QStringList expected;
        if (size > limit)
            expected << path + ": settings cannot be read, the defaults are used: the file is too large";
        EXPECT_EQ(LogTrap::take(), expected);
    }
}

TEST(XmlSettingsStorage, damagedFileReplacesTheOneKeptEarlier)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("settings.xml");
    writeFile(path + ".damaged", "older");
    writeFile(path, "damaged");
    XmlSettingsStorage storage(path);
    LogTrap::take();
    EXPECT_TRUE(storage.save());
    EXPECT_EQ(readFile(path + ".damaged"), "damaged");
}

TEST(XmlSettingsStorage, damagedFileThatCannotBeKeptStays)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("settings.xml");
    ASSERT_TRUE(QDir().mkdir(path + ".damaged"));
    writeFile(path, "damaged");
    XmlSettingsStorage storage(path);
    LogTrap::take();
    EXPECT_FALSE(storage.save());
    EXPECT_EQ(LogTrap::take(),
              QStringList{path + ": settings cannot be written: the damaged file cannot be kept as " + path +
                          ".damaged"});
    EXPECT_EQ(readFile(path), "damaged");
}

namespace {

/// No file can be written beyond so many bytes while one of these lives, as if the disk were full.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

} // namespace

TEST(XmlSettingsStorage, damagedFileIsBackWhenTheNewOneCannotBeWritten)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("settings.xml");
    writeFile(path, "damaged");
    XmlSettingsStorage storage(path);
    LogTrap::take();
    storage.getCreateElement("key").setAttribute("value", QString(10000, 'x'));
    {
        const FullDisk full(100);
        EXPECT_FALSE(storage.save());
    }
    EXPECT_EQ(LogTrap::take().size(), 1);
    EXPECT_EQ(readFile(path), "damaged");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"settings.xml"});
    EXPECT_TRUE(storage.save());
    EXPECT_EQ(readFile(path + ".damaged"), "damaged");
}

// --- CSettings and CSettingsManager ---

TEST(CSettings, updateTellsListeners)
{
    CSettings settings(nullptr, nullptr);
    int changes = 0;
    QObject::connect(&settings, &CSettings::changed, [&] { ++changes; });
    settings.update();
    EXPECT_EQ(changes, 1);
    settings.load();
    settings.save(); // without a store: nothing
    EXPECT_EQ(changes, 1);
}

TEST(CSettings, saveWritesTheStore)
{
    const QTemporaryDir folder;
    XmlSettingsStorage storage(folder.filePath("s.xml"));
    CSettings settings(&storage, nullptr);
    EXPECT_EQ(settings.getStorage(), &storage);
    settings.save();
    EXPECT_TRUE(QFile::exists(folder.filePath("s.xml")));
}

TEST(CSettingsManager, loadsAndSavesInOrderOfType)
{
    QStringList notes;
    {
        CSettingsManager manager(nullptr);
        manager.addSettings(2, new NotedSettings("b", notes));
        manager.addSettings(1, new NotedSettings("a", notes));
        manager.load();
        manager.save();
    }
    EXPECT_EQ(notes, (QStringList{"load a", "load b", "save a", "save b", "delete a", "delete b"}));
}

TEST(CSettingsManager, laterSettingsOfATypeReplaceTheEarlier)
{
    QStringList notes;
    CSettingsManager manager(nullptr);
    manager.addSettings(1, new NotedSettings("a", notes));
    auto* second = new NotedSettings("b", notes);
    manager.addSettings(1, second);
    manager.addSettings(1, second);
    EXPECT_EQ(notes, QStringList{"delete a"});
    EXPECT_EQ(manager.getSettings(1), second);
    EXPECT_EQ(manager.getSettings(2), nullptr);
}

TEST(CSettingsManager, settingsDestroyedByTheirParentAreForgotten)
{
    QStringList notes;
    CSettingsManager manager(nullptr);
    {
        QObject parent;
        manager.addSettings(1, new NotedSettings("a", notes, &parent));
    }
    EXPECT_EQ(manager.getSettings(1), nullptr);
    manager.load();
    manager.save();
    EXPECT_EQ(notes, QStringList{"delete a"});
}
