#include "ElevationTexts.h"

#include "../../support/ImageCheck.h"
#include "../../support/SceneTest.h"

#include <viewer/ElevationDrawers.h>
#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/MeshElement.h>

#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/FeatureElement.h>

#include <glm/gtc/matrix_transform.hpp>

#include <numeric>

// Elements in colours by height, at large coordinates, seen from the south: each row of the picture shows one
// height.

namespace {

constexpr int Side = 200;
const glm::dvec3 ground(2.7e6, 1.2e6, 400.0); // the lowest points lie here, the highest 200 m above

FeatureElement::Part partOf(FeatureElement::Part::Kind kind, std::vector<glm::dvec3> points)
{
    FeatureElement::Part part;
    part.kind = kind;
    part.points = std::move(points);
    return part;
}

bool isNear(const QColor& a, const QColor& b, int limit)
{
    return std::abs(a.red() - b.red()) <= limit && std::abs(a.green() - b.green()) <= limit &&
           std::abs(a.blue() - b.blue()) <= limit;
}

} // namespace

class ElevationDrawersTest : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        element_types::registerItems(*scene);
        m_drawers = std::make_unique<ElevationDrawers>(*scene);
        // corners of what is in view: 240 m wide and high, from 20 m below the lowest point on
        addMesh(MeshData::Part::Points, {{-20, 0, -20}, {220, 0, 220}});
    }

    Graphics3dItem& addMesh(MeshData::Part::Kind kind, const std::vector<glm::vec3>& positions)
    {
        MeshData data;
        data.origin = ground;
        data.positions = positions;
        data.indices.resize(positions.size());
        std::iota(data.indices.begin(), data.indices.end(), 0u);
        MeshData::Part part;
        part.kind = kind;
        part.indexCount = static_cast<std::uint32_t>(positions.size());
        part.pointSize = 9.0f;
        data.parts.push_back(part);
        auto element = std::make_unique<MeshElement>();
        element->setNode(std::make_unique<MeshNode3d>(std::move(data)));
        return add(std::move(element));
    }
    Graphics3dItem& addFeature(std::vector<FeatureElement::Part> parts,
                               std::vector<std::pair<QString, QVariant>> properties)
    {
        auto element = std::make_unique<FeatureElement>();
        element->setProperties(std::move(properties));
        element->setParts(std::move(parts));
        return add(std::move(element));
    }
    Graphics3dItem& add(std::unique_ptr<CModelElement> element)
    {
        CModelElementManager* manager = project->getModel()->getCreateItemManager(element->getType());
        return *scene->getItems().at(manager->addItem(std::move(element))->getId());
    }
    static FeatureElement::Part upright(double x)
    {
        return partOf(FeatureElement::Part::Line,
                      {ground + glm::dvec3(x, 0, 0), ground + glm::dvec3(x, 0, 200)});
    }
    static FeatureElement::Part pointAt(double x, double height)
    {
        return partOf(FeatureElement::Part::Point, {ground + glm::dvec3(x, 0, height)});
    }

    /// 240 m in 200 pixels.
    QImage picture(const ElevationColors& colors)
    {
        scene->flushBounds();
        m_drawers->setColors(colors);
        PaintContext context = paintContext(Side, Side);
        glm::dmat4 view(1.0); // y is away from the eye, z is up
        view[1] = {0, 0, -1, 0};
        view[2] = {0, 1, 0, 0};
        const glm::dvec3 lowest = scene->mapFromModel(ground + glm::dvec3(-20, 0, -20));
        const glm::dvec3 highest = scene->mapFromModel(ground + glm::dvec3(220, 0, 220));
        context.view = glm::mat4(view);
        context.projection = glm::mat4(glm::ortho(lowest.x, highest.x, lowest.z, highest.z, -1000.0, 1000.0));
        return drawFrame(context);
    }
    /// Model height of the middle of a row, and the column of an x.
    static double heightOf(int row) { return ground.z + 220.0 - (row + 0.5) * 1.2; }
    static int columnOf(double x) { return static_cast<int>((x + 20.0) / 1.2); }
    static int rowOf(double height) { return static_cast<int>((220.0 - height) / 1.2); }

    /// The column of x shows the colours in all rows where something is drawn, at least so many, the ends
    /// left out.
    void expectColors(const QImage& image, double x, const ElevationColors& colors, int least)
    {
        int drawn = 0;
        for (int row = rowOf(198.0); row < rowOf(2.0); ++row) {
            const QColor color = image.pixelColor(columnOf(x), row);
            if (color == QColor(0, 0, 0)) continue;
            ++drawn;
            ASSERT_TRUE(isNear(color, colors.at(heightOf(row)), 1))
                << "row " << row << ": " << color.name().toStdString() << ", expected "
                << colors.at(heightOf(row)).name().toStdString();
        }
        EXPECT_GE(drawn, least);
    }

    /// The column of x shows the colours, in some light, in all rows between these heights.
    void expectLit(const QImage& image, double x, double lowest, double highest)
    {
        for (int row = rowOf(highest); row < rowOf(lowest); row += 3) {
            const QColor shown = image.pixelColor(columnOf(x), row), expected = m_ramp.at(heightOf(row));
            const double light = double(shown.red() + shown.green() + shown.blue()) /
                                 (expected.red() + expected.green() + expected.blue());
            EXPECT_GT(light, 0.25) << x << ", " << row;
            EXPECT_LT(light, 1.3) << x << ", " << row;
            if (shown.red() < 255 && shown.green() < 255 && shown.blue() < 255) {
                EXPECT_NEAR(shown.red(), light * expected.red(), 1.5) << x << ", " << row;
                EXPECT_NEAR(shown.green(), light * expected.green(), 1.5) << x << ", " << row;
                EXPECT_NEAR(shown.blue(), light * expected.blue(), 1.5) << x << ", " << row;
            }
        }
    }

    std::unique_ptr<ElevationDrawers> m_drawers;
    const ElevationColors m_ramp = readText("420 #2040c0\n450 #40c080\n520 #f0e060\n590 #c02020\n", false);
};

// The project of the test has no light, and a surface without normals of a model that has none is shown as it
// is: the mesh faces the light that the shader starts with at an angle, so it is compared by the hue of its
// colours.
TEST_F(ElevationDrawersTest, MeshesInTheirLight)
{
    addMesh(MeshData::Part::Triangles,
            {{0, 0, 0}, {100, 0, 0}, {100, 0, 200}, {0, 0, 0}, {100, 0, 200}, {0, 0, 200}});
    expectLit(picture(m_ramp), 50.0, 2.0, 198.0);
}

TEST_F(ElevationDrawersTest, PipesAndWallsInTheirLight)
{
    addFeature({upright(20)}, {{"radius", 9}});
    addFeature({upright(60)}, {{"section", "[[-9, -9], [9, -9], [9, 9], [-9, 9], [-9, -9]]"}});
    addFeature({partOf(FeatureElement::Part::Line,
                       {ground + glm::dvec3(100, 0, 20), ground + glm::dvec3(101, 0, 100),
                        ground + glm::dvec3(100, 0, 180)})},
               {{"radius", 40}}); // of which the ball in the middle shows
    const QImage image = picture(m_ramp);
    for (const double x : {16.0, 20.0, 24.0, 55.0, 65.0})
        expectLit(image, x, 2.0, 198.0);
    expectLit(image, 100.0, 65.0, 135.0);
}

TEST_F(ElevationDrawersTest, LinesOfEveryPen)
{
    addFeature({upright(20)}, {{"stroke", "#ffffff"}});
    addFeature({upright(40)}, {{"stroke", "#ffffff"}, {"stroke-width", 7}});
    addFeature({upright(60)}, {{"stroke", "#ffffff"}, {"stroke-dasharray", "4 4"}});
    addMesh(MeshData::Part::Lines, {{80, 0, 0}, {80, 0, 200}});
    const QImage image = picture(m_ramp);
    expectColors(image, 20, m_ramp, 160);
    for (const double x : {38.0, 40.0, 42.0})
        expectColors(image, x, m_ramp, 160);
    expectColors(image, 60, m_ramp, 70);
    expectColors(image, 80, m_ramp, 160);
}

TEST_F(ElevationDrawersTest, PointsAloneAndBesideLines)
{
    addFeature({pointAt(20, 130)}, {{"marker-size", 9}});
    addFeature({pointAt(40, 130), upright(50)}, {{"marker-size", 9}});
    addFeature({pointAt(60, 130), upright(70)}, {{"marker-size", 9}, {"stroke-width", 7}});
    addFeature({pointAt(80, 130), upright(90)}, {{"marker-size", 9}, {"stroke-dasharray", "4 4"}});
    addMesh(MeshData::Part::Points, {{100, 0, 130}});
    const QImage image = picture(m_ramp);
    for (const double x : {20.0, 40.0, 60.0, 80.0, 100.0})
        for (const int row : {rowOf(130) - 3, rowOf(130), rowOf(130) + 3})
            EXPECT_TRUE(isNear(image.pixelColor(columnOf(x), row), m_ramp.at(530.0), 1)) << x;
    expectColors(image, 70, m_ramp, 160);
    expectColors(image, 90, m_ramp, 70);
}

TEST_F(ElevationDrawersTest, DiscreteLevelsEndWhereTheySay)
{
    addFeature({upright(40)}, {{"stroke-width", 7}});
    const ElevationColors steps = readText("400 #ff0000\n460.6 #00ff00\n540 #0000ff\n", true);
    const QImage image = picture(steps);
    int counts[3] = {0, 0, 0};
    for (int row = rowOf(198.0); row < rowOf(2.0); ++row) {
        const QColor color = image.pixelColor(columnOf(40), row);
        EXPECT_EQ(color, steps.at(heightOf(row))) << row;
        counts[0] += color == QColor(255, 0, 0);
        counts[1] += color == QColor(0, 255, 0);
        counts[2] += color == QColor(0, 0, 255);
    }
    for (const int count : counts)
        EXPECT_GT(count, 30);
}

// At 2.7e6 m, with heights that a float of the model would not hold.
TEST_F(ElevationDrawersTest, WhatLiesAtALevelHasItsColour)
{
    const QByteArray table = "400 #ff0000\n533.3 #00ff00\n566.7 #0000ff\n";
    for (const auto& [height, color] : {std::pair(133.3, QColor(0, 255, 0)),
                                        {166.7, QColor(0, 0, 255)},
                                        {133.29, QColor(255, 0, 0)},
                                        {166.69, QColor(0, 255, 0)}}) {
        Graphics3dItem& item = addFeature({pointAt(20, height)}, {{"marker-size", 9}});
        const QImage image = picture(readText(table, true));
        EXPECT_EQ(image.pixelColor(columnOf(20), rowOf(height)), color) << height;
        item.setVisible(false);
    }
}

TEST_F(ElevationDrawersTest, AsManyLevelsAsThereMayBe)
{
    addFeature({upright(40)}, {{"stroke-width", 7}});
    for (const bool isDiscrete : {false, true}) {
        QByteArray table;
        const int count = isDiscrete ? 128 : 256;
        for (int i = 0; i < count; ++i)
            table += QByteArray::number(400.0 + 200.0 * i / count, 'f', 4) +
                     QColor::fromHsv(i * 300 / count, 255, 255).name().prepend(' ').toLatin1() + '\n';
        const ElevationColors colors = readText(table, isDiscrete);
        const QImage image = picture(colors);
        int right = 0, rows = 0;
        for (int row = rowOf(198.0); row < rowOf(2.0); ++row, ++rows)
            right += isNear(image.pixelColor(columnOf(40), row), colors.at(heightOf(row)), 2);
        EXPECT_EQ(right, rows);
    }
}

TEST_F(ElevationDrawersTest, OneLevelIsOneColour)
{
    addFeature({upright(40)}, {{"stroke-width", 7}});
    for (const bool isDiscrete : {false, true}) {
        const QImage image = picture(readText("500 #40c080\n", isDiscrete));
        EXPECT_EQ(image.pixelColor(columnOf(40), rowOf(20)), QColor("#40c080"));
        EXPECT_EQ(image.pixelColor(columnOf(40), rowOf(180)), QColor("#40c080"));
    }
}

TEST_F(ElevationDrawersTest, SelectionColourWins)
{
    Graphics3dItem& wide = addFeature({upright(40)}, {{"stroke-width", 7}});
    addFeature({upright(60)}, {{"stroke-width", 7}});
    wide.getModelElement()->setHighlighted(true);
    const QImage image = picture(m_ramp);
    EXPECT_EQ(image.pixelColor(columnOf(40), rowOf(100)), QColor(255, 255, 0)); // of scenes without settings
    expectColors(image, 60, m_ramp, 160);
}

TEST_F(ElevationDrawersTest, OtherScenesKeepTheirColours)
{
    Scene3d plain(project->getModel(), nullptr);
    EXPECT_TRUE(scene->isHasDrawer(element_types::Feature, 0x36FF1C00));
    EXPECT_FALSE(plain.isHasDrawer(element_types::Feature, 0x36FF1C00));
}
