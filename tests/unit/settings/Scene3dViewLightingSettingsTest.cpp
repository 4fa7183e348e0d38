#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>

#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace {

using ViewData = Scene3dViewLightingSettings::ViewData;

constexpr float quarterOfPi = 0.785398163397448309616f;

void expectNew(const ViewData& view, const std::string& name, const std::wstring& caption)
{
    EXPECT_EQ(view.name, name);
    EXPECT_EQ(view.caption, caption);
    EXPECT_EQ(view.azimuth, quarterOfPi);
    EXPECT_EQ(view.elevation, quarterOfPi);
    EXPECT_TRUE(view.flag);
}

void expectDirection(float azimuth, float elevation, double x, double y, double z)
{
    ViewData view;
    view.azimuth = azimuth;
    view.elevation = elevation;
    const glm::vec3 direction = view.getLightDirection();
    EXPECT_NEAR(double(direction.x), x, 3e-7);
    EXPECT_NEAR(double(direction.y), y, 3e-7);
    EXPECT_NEAR(double(direction.z), z, 3e-7);
}

/// Every field differs from that of a new element.
void fill(Scene3dViewLightingSettings& settings)
{
    settings.setName("lights");
    settings.data("").azimuth = 0.5f;
    settings.data("").flag = false;
    settings.addView("top", L"Top view");
    settings.data("top").elevation = 1.25f;
    settings.addView("side", L"Side view");
    settings.setIsAllView(true);
}

void expectFilled(const Scene3dViewLightingSettings& settings)
{
    EXPECT_EQ(settings.getName(), "lights");
    EXPECT_EQ(settings.getView("").azimuth, 0.5f);
    EXPECT_FALSE(settings.getView("").flag);
    ASSERT_EQ(settings.getViews().size(), 2u);
    EXPECT_EQ(settings.getViews()[0].name, "top");
    EXPECT_EQ(settings.getViews()[0].caption, L"Top view");
    EXPECT_EQ(settings.getViews()[0].elevation, 1.25f);
    EXPECT_EQ(settings.getViews()[1].name, "side");
    EXPECT_TRUE(settings.isAllView());
}

TEST(Scene3dViewLightingSettings, StartsWithOneNewLight)
{
    const Scene3dViewLightingSettings settings;
    EXPECT_EQ(settings.getType(), 0x36FFCE00);
    EXPECT_EQ(settings.getOwner(), nullptr);
    EXPECT_TRUE(settings.getViews().empty());
    EXPECT_FALSE(settings.isAllView());
    expectNew(settings.getView(""), "", L"");
}

TEST(Scene3dViewLightingSettings, KnowsItsOwner)
{
    Scene3dViewLightingSettings owner;
    const Scene3dViewLightingSettings settings(&owner);
    EXPECT_EQ(settings.getOwner(), &owner);
    expectNew(settings.getView(""), "", L"");
}

TEST(Scene3dViewLightingSettings, AddsViewsInOrder)
{
    Scene3dViewLightingSettings settings;
    settings.addView("b", L"Вид Б");
    settings.addView("a", L"View A");
    ASSERT_EQ(settings.getViews().size(), 2u);
    expectNew(settings.getViews()[0], "b", L"Вид Б");
    expectNew(settings.getViews()[1], "a", L"View A");
}

TEST(Scene3dViewLightingSettings, SecondViewOfANameIsIgnored)
{
    Scene3dViewLightingSettings settings;
    settings.addView("top", L"first");
    settings.data("top").azimuth = 1.0f;
    settings.addView("top", L"second");
    ASSERT_EQ(settings.getViews().size(), 1u);
    EXPECT_EQ(settings.getViews()[0].caption, L"first");
    EXPECT_EQ(settings.getViews()[0].azimuth, 1.0f);
}

TEST(Scene3dViewLightingSettings, NamesAreComparedByteForByte)
{
    Scene3dViewLightingSettings settings;
    settings.addView("Top", L"");
    settings.addView("top", L"");
    settings.addView("top ", L"");
    EXPECT_EQ(settings.getViews().size(), 3u);
    EXPECT_EQ(&settings.getView("TOP"), &settings.getView(""));
}

TEST(Scene3dViewLightingSettings, FindsTheViewOrTheDefault)
{
    Scene3dViewLightingSettings settings;
    settings.addView("top", L"");
    const ViewData& top = settings.getViews()[0];
    EXPECT_EQ(&settings.data("top"), &top);
    EXPECT_EQ(&settings.getView("top"), &top);
    const ViewData& standard = settings.getView("");
    EXPECT_NE(&standard, &top);
    EXPECT_EQ(&settings.getView("unknown"), &standard);
    EXPECT_EQ(&settings.data("unknown"), &standard);
    EXPECT_EQ(&settings.data(""), &standard);
}

TEST(Scene3dViewLightingSettings, AllViewsMayShareTheDefault)
{
    Scene3dViewLightingSettings settings;
    settings.addView("top", L"");
    settings.setIsAllView(true);
    EXPECT_TRUE(settings.isAllView());
    EXPECT_EQ(&settings.getView("top"), &settings.getView(""));
    EXPECT_EQ(&settings.data("top"), &settings.getViews()[0]); // still there to be changed
    settings.setIsAllView(false);
    EXPECT_EQ(&settings.getView("top"), &settings.getViews()[0]);
}

TEST(Scene3dViewLightingSettings, NewLightComesFromTheSideAndAbove)
{
    const glm::vec3 direction = ViewData("name", L"caption").getLightDirection();
    EXPECT_NEAR(double(direction.x), 0.5, 1e-6);
    EXPECT_NEAR(double(direction.y), 0.5, 1e-6);
    EXPECT_NEAR(double(direction.z), 0.70710678, 1e-6);
}

TEST(Scene3dViewLightingSettings, DirectionIsMeasuredFromYTowardsX)
{
    expectDirection(0.0f, 0.0f, 0.0, 1.0, 0.0);
    expectDirection(2.0f * quarterOfPi, 0.0f, 1.0, 0.0, 0.0);
    expectDirection(4.0f * quarterOfPi, 0.0f, 0.0, -1.0, 0.0);
    expectDirection(1.0f, 2.0f * quarterOfPi, 0.0, 0.0, 1.0);
    expectDirection(0.0f, -quarterOfPi, 0.0, 0.70710678118654752, -0.70710678118654752);
}

TEST(Scene3dViewLightingSettings, DirectionFollowsItsFormula)
{
    for (int i = -20; i <= 20; ++i) {
        const float azimuth = 0.31f * float(i);
        const float elevation = 0.07f * float(i + 3);
        expectDirection(azimuth, elevation, std::sin(double(azimuth)) * std::cos(double(elevation)),
                        std::cos(double(azimuth)) * std::cos(double(elevation)), std::sin(double(elevation)));
    }
}

TEST(Scene3dViewLightingSettings, CopiesTakeAllFields)
{
    Scene3dViewLightingSettings settings;
    fill(settings);
    expectFilled(Scene3dViewLightingSettings(settings));
    Scene3dViewLightingSettings assigned;
    assigned.addView("other", L"");
    assigned = settings;
    expectFilled(assigned);
    expectFilled(settings);
}

TEST(Scene3dViewLightingSettings, MovesTakeAllFields)
{
    Scene3dViewLightingSettings settings;
    fill(settings);
    Scene3dViewLightingSettings moved(std::move(settings));
    expectFilled(moved);
    Scene3dViewLightingSettings assigned;
    assigned = std::move(moved);
    expectFilled(assigned);
}

TEST(Scene3dViewLightingSettings, IsFoundThroughTheModel)
{
    CProject project;
    EXPECT_EQ(Scene3dViewLightingSettings::find(project.getModel()), nullptr);
    project.addProjectSettings(new COrdinaryItemCreator<Scene3dViewLightingSettings>,
                               CProject::StoredSettings);
    const Scene3dViewLightingSettings* found = Scene3dViewLightingSettings::find(project.getModel());
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found, project.getProjectSettings(0x36FFCE00));
}

TEST(Scene3dViewLightingSettings, IsNotFoundWithoutAModelOrAProject)
{
    EXPECT_EQ(Scene3dViewLightingSettings::find(nullptr), nullptr);
    CProjectModel model(nullptr);
    EXPECT_EQ(Scene3dViewLightingSettings::find(&model), nullptr);
}

} // namespace
