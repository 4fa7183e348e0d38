#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>

#include <framework/ksp/CFileException.h>

#include <gtest/gtest.h>

namespace {

using Settings = Scene3dViewLightingSettings;

std::string viewName(std::size_t i)
{
    return "view " + std::to_string(i);
}

Settings withViews(std::size_t count)
{
    Settings settings;
    settings.data("").azimuth = 0.1f;
    settings.data("").elevation = 0.2f;
    settings.data("").flag = false;
    for (std::size_t i = 0; i < count; ++i) {
        settings.addView(viewName(i), L"Вид " + std::to_wstring(i));
        settings.data(viewName(i)).azimuth = float(i);
        settings.data(viewName(i)).elevation = -float(i);
        settings.data(viewName(i)).flag = i % 2 == 0;
    }
    return settings;
}

QByteArray stored(Settings settings)
{
    CQtArchive archive;
    settings.serialize(archive);
    return archive.data();
}

void load(Settings& settings, const QByteArray& bytes)
{
    CQtArchive archive(bytes);
    settings.serialize(archive);
}

/// The element's own part written by hand: the default light, then the views as the archive declares them.
class HandMade
{
public:
    HandMade()
    {
        class Base : public CModelElement
        {
            int getType() const override { return 0; }
        } base;
        base.serialize(m_archive);
        m_archive.beginObject();
        m_archive.writeFloat(0.5f);
        m_archive.writeFloat(0.25f);
        m_archive.writeBool(false);
        m_archive.endObject(1);
    }
    CQtArchive* operator->() { return &m_archive; }
    void view(std::string name, float azimuth)
    {
        std::wstring caption = L"caption";
        m_archive.value(name);
        m_archive.value(caption);
        m_archive.writeFloat(azimuth);
        m_archive.writeFloat(0.75f);
        m_archive.writeBool(true);
    }
    QByteArray bytes()
    {
        m_archive.finish();
        return m_archive.data();
    }

private:
    CQtArchive m_archive;
};

void expectHandMadeDefault(const Settings& settings)
{
    EXPECT_EQ(settings.getView("").azimuth, 0.5f);
    EXPECT_EQ(settings.getView("").elevation, 0.25f);
    EXPECT_FALSE(settings.getView("").flag);
}

int loadingErrorCode(Settings& settings, const QByteArray& bytes)
{
    try {
        load(settings, bytes);
    } catch (const ksp::CFileException& error) {
        return error.code();
    }
    return -1;
}

TEST(LightingArchive, ReadsTheFieldsInOrder)
{
    HandMade archive;
    archive->checkVersion(4);
    archive->writeUInt(2);
    archive.view("a", 1.0f);
    archive.view("b", 2.0f);
    Settings settings;
    load(settings, archive.bytes());
    expectHandMadeDefault(settings);
    ASSERT_EQ(settings.getViews().size(), 2u);
    EXPECT_EQ(settings.getViews()[0].name, "a");
    EXPECT_EQ(settings.getViews()[0].caption, L"caption");
    EXPECT_EQ(settings.getViews()[0].azimuth, 1.0f);
    EXPECT_EQ(settings.getViews()[0].elevation, 0.75f);
    EXPECT_TRUE(settings.getViews()[0].flag);
    EXPECT_EQ(settings.getViews()[1].name, "b");
    EXPECT_EQ(settings.getViews()[1].azimuth, 2.0f);
}

TEST(LightingArchive, WritesTheFieldsInOrder)
{
    HandMade archive;
    archive->checkVersion(4);
    archive->writeUInt(1);
    archive.view("a", 1.0f);
    Settings settings;
    settings.data("").azimuth = 0.5f;
    settings.data("").elevation = 0.25f;
    settings.data("").flag = false;
    settings.addView("a", L"caption");
    settings.data("a").azimuth = 1.0f;
    settings.data("a").elevation = 0.75f;
    EXPECT_EQ(stored(settings), archive.bytes());
}

TEST(LightingArchive, ComesBack)
{
    Settings source = withViews(3);
    source.setName("lights");
    source.setVisible(false);
    Settings settings;
    load(settings, stored(source));
    EXPECT_EQ(settings.getName(), "lights");
    EXPECT_FALSE(settings.isVisible());
    EXPECT_EQ(settings.getView("").azimuth, 0.1f);
    EXPECT_EQ(settings.getView("").elevation, 0.2f);
    EXPECT_FALSE(settings.getView("").flag);
    ASSERT_EQ(settings.getViews().size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        const Settings::ViewData& view = settings.getViews()[i];
        EXPECT_EQ(view.name, viewName(i));
        EXPECT_EQ(view.caption, L"Вид " + std::to_wstring(i));
        EXPECT_EQ(view.azimuth, float(i));
        EXPECT_EQ(view.elevation, -float(i));
        EXPECT_EQ(view.flag, i % 2 == 0);
    }
}

TEST(LightingArchive, NamesOfTheDefaultAndTheSharingAreNotStored)
{
    Settings source;
    source.data("").name = "name";
    source.data("").caption = L"caption";
    source.setIsAllView(true);
    EXPECT_EQ(stored(source), stored(Settings()));

    Settings settings;
    settings.data("").name = "kept";
    settings.setIsAllView(true);
    load(settings, stored(Settings()));
    EXPECT_EQ(settings.getView("").name, "kept");
    EXPECT_TRUE(settings.isAllView());
}

TEST(LightingArchive, WithoutTheViewListTheViewsStay)
{
    HandMade archive; // as written before the list existed
    Settings settings;
    settings.addView("mine", L"");
    load(settings, archive.bytes());
    expectHandMadeDefault(settings);
    ASSERT_EQ(settings.getViews().size(), 1u);
    EXPECT_EQ(settings.getViews()[0].name, "mine");
}

TEST(LightingArchive, OfAnEarlierVersionHasNoViewList)
{
    HandMade archive;
    archive->checkVersion(3);
    archive->writeUInt(1000); // something else that version 3 had
    Settings settings;
    load(settings, archive.bytes());
    expectHandMadeDefault(settings);
    EXPECT_TRUE(settings.getViews().empty());
}

TEST(LightingArchive, WithAnEmptyListAddsNothing)
{
    Settings settings;
    settings.addView("mine", L"");
    load(settings, stored(withViews(0)));
    EXPECT_EQ(settings.getViews().size(), 1u);
}

TEST(LightingArchive, ReadViewsAreAppended)
{
    Settings settings;
    settings.addView("mine", L"");
    load(settings, stored(withViews(2)));
    ASSERT_EQ(settings.getViews().size(), 3u);
    EXPECT_EQ(settings.getViews()[0].name, "mine");
    EXPECT_EQ(settings.getViews()[1].name, viewName(0));
    EXPECT_EQ(settings.getViews()[2].name, viewName(1));
}

TEST(LightingArchive, HoldsSixteenViews)
{
    Settings settings;
    load(settings, stored(withViews(16)));
    ASSERT_EQ(settings.getViews().size(), 16u);
    EXPECT_EQ(settings.getViews()[15].name, viewName(15));
}

TEST(LightingArchive, SeventeenDeclaredViewsAreRefused)
{
    HandMade archive;
    archive->checkVersion(4);
    archive->writeUInt(17);
    for (std::size_t i = 0; i < 17; ++i)
        archive.view(viewName(i), 1.0f);
    Settings settings;
    settings.addView("mine", L"");
    EXPECT_EQ(loadingErrorCode(settings, archive.bytes()), 1);
    expectHandMadeDefault(settings); // what was read before the count stays
    ASSERT_EQ(settings.getViews().size(), 1u);
    EXPECT_EQ(settings.getViews()[0].name, "mine");
}

TEST(LightingArchive, HugeCountIsRefusedAsACount)
{
    HandMade archive;
    archive->checkVersion(4);
    archive->writeUInt(0xFFFFFFFFu);
    Settings settings;
    EXPECT_EQ(loadingErrorCode(settings, archive.bytes()), 1);
}

TEST(LightingArchive, ViewsReadBeforeADamageStay)
{
    HandMade archive;
    archive->checkVersion(4);
    archive->writeUInt(3);
    archive.view("a", 1.0f);
    archive.view("b", 2.0f);
    Settings settings; // the third view is missing
    EXPECT_THROW(load(settings, archive.bytes()), ksp::CFileException);
    expectHandMadeDefault(settings);
    ASSERT_EQ(settings.getViews().size(), 2u);
    EXPECT_EQ(settings.getViews()[1].name, "b");
}

TEST(LightingArchive, StoringSeventeenViewsIsRefusedBeforeAnythingIsWritten)
{
    Settings settings = withViews(17);
    CQtArchive archive;
    try {
        settings.serialize(archive);
        FAIL() << "stored";
    } catch (const ksp::CFileException& error) {
        EXPECT_EQ(error.code(), 1);
        EXPECT_TRUE(error.text().contains("17") && error.text().contains("16")) << qPrintable(error.text());
    }
    EXPECT_EQ(archive.data(), CQtArchive().data());
    EXPECT_EQ(settings.getViews().size(), 17u);
}

TEST(LightingArchive, EveryTruncationIsRefused)
{
    const QByteArray bytes = stored(withViews(3));
    for (int size = 0; size < bytes.size(); ++size) {
        SCOPED_TRACE(size);
        Settings settings;
        EXPECT_THROW(load(settings, bytes.left(size)), ksp::CFileException);
        EXPECT_LE(settings.getViews().size(), 3u);
    }
}

TEST(LightingArchive, SkipsWhatANewerProgramAdded)
{
    HandMade archive;
    archive->checkVersion(4);
    archive->writeUInt(1);
    archive.view("a", 1.0f);
    archive->checkVersion(9);
    archive->writeDouble(5.0);
    Settings settings;
    load(settings, archive.bytes());
    ASSERT_EQ(settings.getViews().size(), 1u);
    EXPECT_EQ(settings.getViews()[0].name, "a");
}

} // namespace
