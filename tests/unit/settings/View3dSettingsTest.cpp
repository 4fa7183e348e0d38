#include <Viewer3dModule/host/View3dSettings.h>

#include <framework/app/Application.h>
#include <framework/app/XmlSerializer.h>
#include <framework/app/XmlSettingsStorage.h>

#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace {

constexpr int settingsType = 0x36FF0700;

const QStringList keys{"backgroundColor3d",  "line3DTempColor",   "node3DColor", "marker3DColor",
                       "frozenItemsColor3d", "photoOverlayColor", "line3Dwidth", "node3DSize",
                       "nearPlaneDist",      "useView3d"};

/// A store in memory that writes down which keys it is asked for.
class RecordingStorage : public ISettingsStorage
{
public:
    QDomElement getElement(const QString& key) const override
    {
        asked.append(key);
        return m_store.getElement(key);
    }
    QDomElement getCreateElement(const QString& key) override { return m_store.getCreateElement(key); }
    void remove(const QString& key) override { m_store.remove(key); }
    bool save() override { return true; }

    mutable QStringList asked;

private:
    XmlSettingsStorage m_store{QString()};
};

void expectInitialValues(const View3dSettings& settings)
{
    EXPECT_TRUE(settings.id3dEnabled());
    EXPECT_EQ(settings.getBackgroundColor(), QColor(192, 192, 192));
    EXPECT_EQ(settings.getInteractionColor(), QColor(255, 0, 255));
    EXPECT_EQ(settings.getNodeColor(), QColor(255, 0, 255));
    EXPECT_EQ(settings.getSelectedColor(), QColor(255, 255, 0));
    EXPECT_EQ(settings.getFrozenItemColor(), QColor(0, 0, 255));
    EXPECT_EQ(settings.getPhotoOverlayColor(), QColor(160, 160, 164));
    EXPECT_EQ(settings.getLineWidth(), 1);
    EXPECT_EQ(settings.getNodeSize(), 15);
    EXPECT_EQ(settings.getNearPlaneDist(), 1.0);
}

void expectEmptyValues(const View3dSettings& settings)
{
    EXPECT_FALSE(settings.id3dEnabled());
    EXPECT_FALSE(settings.getBackgroundColor().isValid());
    EXPECT_FALSE(settings.getInteractionColor().isValid());
    EXPECT_FALSE(settings.getNodeColor().isValid());
    EXPECT_FALSE(settings.getSelectedColor().isValid());
    EXPECT_FALSE(settings.getFrozenItemColor().isValid());
    EXPECT_FALSE(settings.getPhotoOverlayColor().isValid());
    EXPECT_EQ(settings.getLineWidth(), 0);
    EXPECT_EQ(settings.getNodeSize(), 0);
    EXPECT_EQ(settings.getNearPlaneDist(), 1.0);
}

bool isEnabledWith(int value)
{
    XmlSettingsStorage storage{QString()};
    XmlSerializer::writeInt(storage.getCreateElement("useView3d"), value);
    View3dSettings settings(&storage, nullptr);
    settings.load();
    return settings.id3dEnabled();
}

TEST(View3dSettings, ShowsTheInitialValuesUntilItIsLoaded)
{
    XmlSettingsStorage storage{QString()};
    expectInitialValues(View3dSettings(&storage, nullptr));
}

TEST(View3dSettings, BelongsToItsParentAndItsStorage)
{
    QObject parent;
    XmlSettingsStorage storage{QString()};
    auto* settings = new View3dSettings(&storage, &parent);
    EXPECT_EQ(settings->parent(), &parent);
    EXPECT_EQ(settings->getStorage(), &storage);
}

TEST(View3dSettings, LoadingAnEmptyStorageReplacesEveryField)
{
    XmlSettingsStorage storage{QString()};
    View3dSettings settings(&storage, nullptr);
    settings.load();
    expectEmptyValues(settings);
}

TEST(View3dSettings, LoadingWithoutAStorageChangesNothing)
{
    View3dSettings settings(nullptr, nullptr);
    settings.load();
    expectInitialValues(settings);
}

TEST(View3dSettings, AsksForTheKeysInOrder)
{
    RecordingStorage storage;
    View3dSettings settings(&storage, nullptr);
    settings.load();
    EXPECT_EQ(storage.asked, keys);
}

TEST(View3dSettings, EveryColorHasItsKey)
{
    using Getter = QColor (View3dSettings::*)() const;
    const std::vector<std::pair<QString, Getter>> colors{
        {"backgroundColor3d", &View3dSettings::getBackgroundColor},
        {"line3DTempColor", &View3dSettings::getInteractionColor},
        {"node3DColor", &View3dSettings::getNodeColor},
        {"marker3DColor", &View3dSettings::getSelectedColor},
        {"frozenItemsColor3d", &View3dSettings::getFrozenItemColor},
        {"photoOverlayColor", &View3dSettings::getPhotoOverlayColor}};
    XmlSettingsStorage storage{QString()};
    for (std::size_t i = 0; i < colors.size(); ++i)
        XmlSerializer::writeColor(storage.getCreateElement(colors[i].first), QColor(int(i) + 1, 20, 30, 40));
    View3dSettings settings(&storage, nullptr);
    settings.load();
    for (std::size_t i = 0; i < colors.size(); ++i)
        EXPECT_EQ((settings.*colors[i].second)(), QColor(int(i) + 1, 20, 30, 40))
            << qPrintable(colors[i].first);
}

TEST(View3dSettings, EveryNumberHasItsKey)
{
    XmlSettingsStorage storage{QString()};
    XmlSerializer::writeInt(storage.getCreateElement("line3Dwidth"), 3);
    XmlSerializer::writeInt(storage.getCreateElement("node3DSize"), 21);
    XmlSerializer::writeDouble(storage.getCreateElement("nearPlaneDist"), 0.125);
    View3dSettings settings(&storage, nullptr);
    settings.load();
    EXPECT_EQ(settings.getLineWidth(), 3);
    EXPECT_EQ(settings.getNodeSize(), 21);
    EXPECT_EQ(settings.getNearPlaneDist(), 0.125);
}

TEST(View3dSettings, AnyNumberButZeroEnablesTheView)
{
    EXPECT_TRUE(isEnabledWith(1));
    EXPECT_TRUE(isEnabledWith(2));
    EXPECT_TRUE(isEnabledWith(-1));
    EXPECT_FALSE(isEnabledWith(0));
}

TEST(View3dSettings, UnreadableValuesCountAsMissing)
{
    XmlSettingsStorage storage{QString()};
    for (const QString& key : keys)
        XmlSerializer::writeString(storage.getCreateElement(key), "what is this?");
    View3dSettings settings(&storage, nullptr);
    settings.load();
    expectEmptyValues(settings);
}

TEST(View3dSettings, DefaultsLoadAsTheInitialValues)
{
    XmlSettingsStorage storage{QString()};
    View3dSettings::writeDefaults(storage);
    for (const QString& key : keys)
        EXPECT_FALSE(storage.getElement(key).isNull()) << qPrintable(key);
    View3dSettings settings(&storage, nullptr);
    settings.load();
    expectInitialValues(settings);
}

TEST(View3dSettings, DefaultsLeaveKeysAloneThatAreThere)
{
    XmlSettingsStorage storage{QString()};
    XmlSerializer::writeColor(storage.getCreateElement("node3DColor"), QColor(1, 2, 3));
    XmlSerializer::writeInt(storage.getCreateElement("useView3d"), 0);
    XmlSerializer::writeDouble(storage.getCreateElement("nearPlaneDist"), 7.5);
    View3dSettings::writeDefaults(storage);
    View3dSettings settings(&storage, nullptr);
    settings.load();
    EXPECT_EQ(settings.getNodeColor(), QColor(1, 2, 3));
    EXPECT_FALSE(settings.id3dEnabled());
    EXPECT_EQ(settings.getNearPlaneDist(), 7.5);
    EXPECT_EQ(settings.getNodeSize(), 15);
}

TEST(View3dSettings, DefaultForTheViewIsWrittenAsOne)
{
    XmlSettingsStorage storage{QString()};
    View3dSettings::writeDefaults(storage);
    EXPECT_EQ(XmlSerializer::readInt(storage.getElement("useView3d"), -1), 1);
}

TEST(View3dSettings, ComesBackFromAFile)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString path = folder.filePath("settings.xml");
    {
        XmlSettingsStorage storage(path);
        XmlSerializer::writeColor(storage.getCreateElement("marker3DColor"), QColor(10, 20, 30, 40));
        View3dSettings::writeDefaults(storage);
        View3dSettings settings(&storage, nullptr);
        settings.save();
    }
    XmlSettingsStorage storage(path);
    View3dSettings settings(&storage, nullptr);
    settings.load();
    EXPECT_EQ(settings.getSelectedColor(), QColor(10, 20, 30, 40));
    EXPECT_EQ(settings.getBackgroundColor(), QColor(192, 192, 192));
    EXPECT_TRUE(settings.id3dEnabled());
}

TEST(View3dSettings, NoInstanceWithoutAnApplicationOrBeforeTheRegistration)
{
    ASSERT_EQ(Application::instance(), nullptr);
    EXPECT_EQ(View3dSettings::getInstance(), nullptr);
    Application application;
    EXPECT_EQ(View3dSettings::getInstance(), nullptr);
    application.addSettingsManager(Application::SettingsManagerId,
                                   std::make_unique<XmlSettingsStorage>(QString()));
    EXPECT_EQ(View3dSettings::getInstance(), nullptr);
}

TEST(View3dSettings, InstanceIsTheRegisteredObject)
{
    Application application;
    application.addSettingsManager(Application::SettingsManagerId,
                                   std::make_unique<XmlSettingsStorage>(QString()));
    auto* settings = new View3dSettings(nullptr, nullptr);
    application.registerSettings(Application::SettingsManagerId, settingsType, settings);
    EXPECT_EQ(View3dSettings::getInstance(), settings);
}

TEST(View3dSettings, ObjectOfAnotherClassIsNoInstance)
{
    Application application;
    application.addSettingsManager(Application::SettingsManagerId,
                                   std::make_unique<XmlSettingsStorage>(QString()));
    application.registerSettings(Application::SettingsManagerId, settingsType,
                                 new CSettings(nullptr, nullptr));
    EXPECT_EQ(View3dSettings::getInstance(), nullptr);
}

} // namespace
