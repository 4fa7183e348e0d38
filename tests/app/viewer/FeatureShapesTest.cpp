#include "../../support/GlCalls.h"
#include "../../support/ImageCheck.h"
#include "../../support/LogTrap.h"
#include "../../support/ProgramList.h"
#include "../../support/SceneTest.h"
#include "../../support/TestItems.h"

#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/MarkDrawer.h>
#include <viewer/window/ElementSelection.h>
#include <viewer/window/SelectionBoxes.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/SelectionOptions.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/FeatureElement.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

#include <cmath>

// Marks, control points, pipes, kerbs, and the boxes of what is chosen.

namespace {

using ShapePart = FeatureElement::Part;
using ShapeProperties = std::vector<std::pair<QString, QVariant>>;
const QColor markColor(40, 60, 160);

bool isCovered(QRgb pixel)
{
    return (pixel & 0xffffff) != 0;
}

QRect coveredRect(const QImage& image)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (isCovered(image.pixel(x, y))) box |= QRect(x, y, 1, 1);
    return box;
}

} // namespace

/// Features in a view of 100 x 100 pixels, a unit a pixel, x to the right and y down from (0, 0), seen along
/// z.
class FeatureShapesTest : public SceneTest
{
protected:
    static constexpr int Side = 100;

    void SetUp() override
    {
        SceneTest::SetUp();
        element_types::registerItems(*scene);
    }
    FeatureElement& add(ShapePart::Kind kind, std::vector<glm::dvec3> points, ShapeProperties properties = {})
    {
        auto element = std::make_unique<FeatureElement>();
        element->setProperties(std::move(properties));
        element->setParts({{kind, false, std::move(points)}});
        return static_cast<FeatureElement&>(*manager().addItem(std::move(element)));
    }
    CModelElementManager& manager()
    {
        return *project->getModel()->getCreateItemManager(element_types::Feature);
    }
    Graphics3dItem& item(const CModelElement& element) { return *scene->getItems().at(element.getId()); }
    PaintContext view()
    {
        PaintContext context = paintContext(Side, Side);
        // depths from -1000 to 1000 in scene units, the nearer ones with the larger z
        const glm::dmat4 fromPixels(glm::dvec4(2.0 / Side, 0, 0, 0), glm::dvec4(0, -2.0 / Side, 0, 0),
                                    glm::dvec4(0, 0, -0.001, 0), glm::dvec4(-1, 1, 0, 1));
        context.projection = glm::mat4(fromPixels * scene->sceneToModelTransform());
        return context;
    }
    QImage picture()
    {
        scene->flushBounds();
        return drawFrame(view()).convertToFormat(QImage::Format_RGB32);
    }
    std::vector<LONGID> selected(const QRectF& rect)
    {
        scene->flushBounds();
        return scene->selectItems(view(), rect, SelectionOptions());
    }
};

TEST_F(FeatureShapesTest, PointsAreRoundMarksOfSixPixels)
{
    add(ShapePart::Point, {{30, 40, 0}});
    const QImage image = picture();
    EXPECT_EQ(coveredRect(image), QRect(27, 37, 6, 6));
    // of the 6 x 6 pixels the one at each corner has its centre outside of the disc: 2.5 squared twice
    // is 12.5 and the radius squared 9; its neighbours have 2.5 and 1.5, 8.5 together
    EXPECT_EQ(countPixels(image, markColor), 32);
}

TEST_F(FeatureShapesTest, AllMarksAreOneDrawCall)
{
    for (int i = 0; i < 50; ++i)
        add(ShapePart::Point, {{2.0 * i, 50, 0}});
    picture();
    GlCalls calls(*gl);
    EXPECT_GT(countPixels(picture(), markColor), 200);
    ASSERT_EQ(calls.draws.size(), 1u);
    EXPECT_EQ(calls.draws[0].instances, 50);
    EXPECT_EQ(calls.draws[0].mode, GLenum(GL_POINTS));
}

TEST_F(FeatureShapesTest, PointsWithALookOfTheirOwnKeepIt)
{
    const FeatureElement& plain = add(ShapePart::Point, {{20, 20, 0}});
    const FeatureElement& red = add(ShapePart::Point, {{50, 20, 0}}, {{"marker-color", "#ff0000"}});
    const FeatureElement& large = add(ShapePart::Point, {{80, 20, 0}}, {{"marker-size", 12}});
    EXPECT_EQ(item(plain).getDefaultDrawerType(), MarkDrawer::Type);
    EXPECT_EQ(item(red).getDefaultDrawerType(), DrawerType::Mono);
    EXPECT_EQ(item(large).getDefaultDrawerType(), DrawerType::Mono);
    const QImage image = picture();
    EXPECT_EQ(image.pixelColor(50, 20), QColor(255, 0, 0));
    EXPECT_EQ(coveredRect(image.copy(65, 0, 35, 40)).size(), QSize(12, 12));
}

TEST_F(FeatureShapesTest, MarkThatGetsALookLeavesTheOthers)
{
    FeatureElement& one = add(ShapePart::Point, {{20, 20, 0}});
    add(ShapePart::Point, {{60, 20, 0}});
    picture();
    one.setProperty("marker-color", "#00ff00");
    const QImage image = picture();
    EXPECT_EQ(image.pixelColor(20, 20), QColor(0, 255, 0));
    EXPECT_EQ(image.pixelColor(60, 20), markColor);
}

TEST_F(FeatureShapesTest, MarksAreChosenHiddenAndMoved)
{
    FeatureElement& one = add(ShapePart::Point, {{20, 20, 0}});
    FeatureElement& other = add(ShapePart::Point, {{60, 20, 0}});
    EXPECT_EQ(selected({18, 18, 4, 4}), std::vector<LONGID>{one.getId()});
    EXPECT_EQ(selected({58, 18, 4, 4}), std::vector<LONGID>{other.getId()});
    one.setHighlighted(true);
    EXPECT_NE(picture().pixelColor(20, 20), markColor);
    one.setVisible(false);
    EXPECT_FALSE(isCovered(picture().pixel(20, 20)));
    other.setParts({{ShapePart::Point, false, {{70, 80, 0}}}});
    EXPECT_EQ(coveredRect(picture()), QRect(67, 77, 6, 6));
}

TEST_F(FeatureShapesTest, MarksAreCapturedWhereTheyAre)
{
    add(ShapePart::Point, {{20, 20, 5}});
    const FeatureElement& other = add(ShapePart::Point, {{60, 20, 7}});
    scene->flushBounds();
    const auto [points, lines, triangles] = scene->generateItemGeometry(&item(other));
    ASSERT_NE(points, 0u);
    EXPECT_EQ(lines + triangles, 0u);
    glm::vec4 captured(0.0f);
    gl->glBindBuffer(GL_ARRAY_BUFFER, points);
    gl->glGetBufferSubData(GL_ARRAY_BUFFER, 0, sizeof captured, &captured);
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
    gl->glDeleteBuffers(1, &points);
    EXPECT_LT(glm::distance(scene->mapToModel(glm::dvec3(captured)), glm::dvec3(60, 20, 7)), 1e-4);
}

// Its points are squares then, and as good as marks in everything else.
TEST_F(FeatureShapesTest, AHostWithoutTheShaderOfMarksReadsOfItOnce)
{
    QDir::setSearchPaths("shader", {V3D_SOURCE_DIR "/Viewer3dModule/resources"});
    add(ShapePart::Point, {{30, 40, 0}});
    const QStringList messages = LogTrap::take();
    debug->take(); // the driver's own of the empty source
    EXPECT_TRUE(messages.join(' ').contains("ExtraPoint.fragment.glsl")) << qPrintable(messages.join('\n'));
    const FeatureElement& second = add(ShapePart::Point, {{60, 40, 0}});
    GlCalls calls(*gl);
    EXPECT_EQ(countPixels(picture(), markColor), 2 * 36);
    picture();
    EXPECT_EQ(selected({58, 38, 4, 4}), std::vector<LONGID>{second.getId()});
    EXPECT_EQ(LogTrap::take(), QStringList());
    for (const GlCalls::Draw& draw : calls.draws)
        EXPECT_EQ(draw.instances, 1) << "no marks";
    mapShaderPrefix();
}

TEST_F(FeatureShapesTest, ControlPointsHaveABallOfPixels)
{
    FeatureElement& point = add(ShapePart::Point, {{30, 40, 0}}, {{"control", true}});
    const QRect ball = coveredRect(picture());
    EXPECT_NEAR(ball.width(), 18, 1);
    EXPECT_NEAR(ball.height(), 18, 1);
    EXPECT_NEAR(ball.left(), 21, 1);
    EXPECT_GT(picture().pixelColor(30, 40).green(), 5) << "its mark shows through";
    EXPECT_EQ(picture().pixelColor(36, 40).green(), 0);
    point.setVisible(false);
    EXPECT_TRUE(coveredRect(picture()).isNull());
}

TEST_F(FeatureShapesTest, CheckedPointsHaveABallOfTheirAccuracy)
{
    add(ShapePart::Point, {{50, 50, 0}}, {{"check", true}, {"accuracy", 30}});
    const QImage image = picture();
    EXPECT_NEAR(coveredRect(image).width(), 60, 2);
    // the lines of the ball leave most of it free
    EXPECT_LT(countPixels(image, &isCovered), 3.14159 * 30 * 30 * 0.8);
}

TEST_F(FeatureShapesTest, DepthMapsSeeNoBalls)
{
    add(ShapePart::Point, {{30, 40, 0}}, {{"control", true}});
    add(ShapePart::Point, {{60, 40, 0}}, {{"check", true}, {"accuracy", 20}});
    scene->flushBounds();
    PaintContext context = view();
    context.depthOnly = true;
    const QImage image = drawFrame(context);
    EXPECT_FALSE(isCovered(image.pixel(24, 40)));
    EXPECT_EQ(coveredRect(image.copy(45, 0, 55, 100)).size(), QSize(6, 6)) << "the mark alone";
}

TEST_F(FeatureShapesTest, LinesWithARadiusArePipes)
{
    const FeatureElement& pipe =
        add(ShapePart::Line, {{20, 30, 0}, {60, 30, 0}}, {{"radius", 8}, {"stroke", "#ff0000"}});
    const QImage image = picture();
    EXPECT_EQ(coveredRect(image), QRect(20, 22, 40, 16));
    EXPECT_EQ(image.pixelColor(40, 30).green(), 0);
    EXPECT_EQ(countPixels(image, &isCovered), 40 * 16);
    EXPECT_EQ(selected({30, 23, 3, 2}), std::vector<LONGID>{pipe.getId()}) << "off its line";
    EXPECT_TRUE(selected({30, 40, 3, 2}).empty());
}

TEST_F(FeatureShapesTest, PipesHaveNoGapsAtBends)
{
    add(ShapePart::Line, {{20, 30, 0}, {60, 30, 0}, {60, 80, 0}}, {{"radius", 8}});
    const QImage image = picture();
    for (int i = 0; i < 32; ++i) { // around the outer side of the bend, half a pixel inside
        const double angle = i * 1.5707963 / 31;
        const QPoint pixel(int(std::floor(60 + 7 * std::sin(angle))),
                           int(std::floor(30 - 7 * std::cos(angle))));
        EXPECT_TRUE(isCovered(image.pixel(pixel))) << pixel.x() << ", " << pixel.y();
    }
    EXPECT_FALSE(isCovered(image.pixel(66, 24))) << "the corner is round";
}

TEST_F(FeatureShapesTest, LinesWithASectionAreSwept)
{
    // Along x in a picture whose y runs down, the section's right side is towards smaller y.
    const FeatureElement& kerb = add(ShapePart::Line, {{20, 50, 0}, {60, 50, 0}},
                                     {{"section", QVariantList{QVariantList{-4, 0}, QVariantList{-4, 6},
                                                               QVariantList{10, 6}, QVariantList{10, 0}}}});
    EXPECT_EQ(item(kerb).getDefaultDrawerType(), DrawerType::SolidRegularLines);
    EXPECT_EQ(coveredRect(picture()), QRect(20, 40, 40, 14));
    EXPECT_EQ(selected({30, 42, 3, 2}), std::vector<LONGID>{kerb.getId()});
    const gmx::BoundingBox box = item(kerb).sceneBoundingBox();
    EXPECT_TRUE(box.contains(scene->mapFromModel({40, 40, 6})));
}

/// For programs of swept lines that show textures, which the scene's own does not.
TEST_F(FeatureShapesTest, SweptLinesTellHowFarAlongTheirPointsLie)
{
    auto element = std::make_unique<FeatureElement>();
    element->setProperties({{"section", "[[-2, 0], [0, 3], [2, 0]]"}});
    element->setParts({{ShapePart::Line, false, {{20, 50, 0}, {60, 50, 0}, {60, 80, 0}}},
                       {ShapePart::Line, false, {{10, 10, 0}, {13, 14, 12}}}});
    manager().addItem(std::move(element));
    scene->flushBounds();
    PaintContext context = view();
    context.program = scene->createProgram({"shader:Viewer3dModule/dummy.vertex.glsl",
                                            "shader:Viewer3dModule/SolidRegularLines.geom.glsl",
                                            "shader:Viewer3dModule/mesh.fragment.glsl"},
                                           {"RX_USE_PER_VERTEX_NORMAL", "RX_USE_PER_VERTEX_TEX_COORDS"}, {});
    EXPECT_GT(countPixels(drawFrame(context), &isCovered), 200);
    const double scale = glm::length(glm::dvec3(scene->modelToSceneTransform()[0]));
    float period = 0.0f;
    gl->glGetUniformfv(context.program->programId(), context.program->uniformLocation("section_period"),
                       &period);
    EXPECT_FLOAT_EQ(period, float(scale));
    GLint buffer = 0, bytes = 0;
    gl->glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, 11, &buffer);
    gl->glBindBuffer(GL_ARRAY_BUFFER, GLuint(buffer));
    gl->glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &bytes);
    const std::vector<double> expected = {0, 40, 70, 0, 13}; // 3, 4, 12 and 13
    std::vector<float> positions(expected.size());
    ASSERT_EQ(bytes, GLint(positions.size() * sizeof(float)));
    gl->glGetBufferSubData(GL_ARRAY_BUFFER, 0, bytes, positions.data());
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(double(positions[i]), expected[i] * scale, 1e-5 * scale) << i;
}

TEST_F(FeatureShapesTest, WhatLosesItsRadiusOrSectionIsItsLinesAgain)
{
    FeatureElement& pipe = add(ShapePart::Line, {{20, 30, 0}, {60, 30, 0}}, {{"radius", 8}});
    FeatureElement& kerb =
        add(ShapePart::Line, {{20, 60, 0}, {60, 60, 0}}, {{"section", "[[0, 0], [0, 5], [6, 5]]"}});
    // whose section a line without one must not take over
    add(ShapePart::Line, {{20, 80, 0}, {60, 80, 0}}, {{"section", "[[-9, 0], [9, 0]]"}});
    EXPECT_GT(coveredRect(picture().copy(0, 0, 100, 45)).height(), 10);
    pipe.setProperty("radius", {});
    kerb.setProperty("section", {});
    const QImage image = picture();
    EXPECT_EQ(coveredRect(image.copy(0, 0, 100, 45)).height(), 1);
    EXPECT_EQ(coveredRect(image.copy(0, 45, 100, 24)).height(), 1);
    EXPECT_EQ(item(pipe).getDefaultDrawerType(), DrawerType::Mono);
    EXPECT_EQ(item(kerb).getDefaultDrawerType(), DrawerType::Mono);
    pipe.setParts({{ShapePart::Ring, false, {{20, 20, 0}, {60, 20, 0}, {60, 40, 0}}}});
    EXPECT_GT(countPixels(picture().copy(0, 0, 100, 45), &isCovered), 300) << "an area like any other";
    pipe.setParts({{ShapePart::Line, false, {{20, 30, 0}, {60, 30, 0}}}});
    pipe.setProperty("radius", 8);
    EXPECT_EQ(coveredRect(picture().copy(0, 0, 100, 45)), QRect(20, 22, 40, 16));
}

TEST_F(FeatureShapesTest, WhatIsNoRadiusAndNoSectionIsALine)
{
    const FeatureElement& one = add(ShapePart::Line, {{0, 0, 0}, {60, 50, 0}}, {{"radius", -3}});
    const FeatureElement& other = add(ShapePart::Line, {{0, 0, 0}, {60, 50, 0}}, {{"section", "thick"}});
    EXPECT_EQ(item(one).getDefaultDrawerType(), DrawerType::Mono);
    EXPECT_EQ(item(other).getDefaultDrawerType(), DrawerType::Mono);
}

TEST_F(FeatureShapesTest, BoxesStandAroundWhatIsChosen)
{
    const FeatureElement& line = add(ShapePart::Line, {{20, 30, 0}, {60, 70, 0}, {70, 60, 0}, {30, 20, 0}});
    const FeatureElement& point = add(ShapePart::Point, {{80, 80, 0}});
    ElementSelection selection(*project->getModel(), scene.get());
    const SelectionBoxes boxes(selection, *scene);
    const QColor outlineColor(255, 140, 0);
    EXPECT_EQ(countPixels(picture(), outlineColor), 0);
    selection.change({line.getId(), point.getId()}, ElementSelection::Replace);
    // three sides of a rectangle that stands aslant, the fourth of which is the box's alone
    const QImage image = picture();
    EXPECT_GT(countPixels(image, outlineColor), 200);
    for (const QPoint& edge : {QPoint(25, 25), QPoint(40, 50), QPoint(65, 65), QPoint(50, 40)})
        EXPECT_GT(countPixels(image.copy(QRect(edge - QPoint(2, 2), QSize(5, 5))), outlineColor), 0)
            << edge.x() << ", " << edge.y();
    selection.change({line.getId()}, ElementSelection::Remove);
    EXPECT_EQ(countPixels(picture(), outlineColor), 0);
    selection.change({line.getId()}, ElementSelection::Replace);
    manager().removeItem(line.getId());
    EXPECT_EQ(countPixels(picture(), outlineColor), 0) << "a box goes with its element";
}

TEST_F(FeatureShapesTest, BoxesFollowWhatChanges)
{
    FeatureElement& line = add(ShapePart::Line, {{20, 30, 0}, {40, 50, 0}, {40, 30, 0}});
    FeatureElement& point = add(ShapePart::Point, {{80, 80, 0}});
    ElementSelection selection(*project->getModel(), scene.get());
    const SelectionBoxes boxes(selection, *scene);
    const auto outline = [this] {
        QCoreApplication::processEvents(); // the scene tells of changes then
        QRect box;
        const QImage image = picture();
        for (int y = 0; y < Side; ++y)
            for (int x = 0; x < Side; ++x)
                if (image.pixelColor(x, y) == QColor(255, 140, 0)) box |= QRect(x, y, 1, 1);
        return box;
    };
    selection.change({line.getId(), point.getId()}, ElementSelection::Replace);
    const QRect before = outline();
    EXPECT_FALSE(before.isNull());
    line.setParts({{ShapePart::Line, false, {{60, 40, 0}, {80, 60, 0}, {80, 40, 0}}}});
    EXPECT_EQ(outline(), before.translated(40, 10));
    line.setVisible(false);
    EXPECT_TRUE(outline().isNull()) << "nothing to see there";
    line.setVisible(true);
    EXPECT_EQ(outline(), before.translated(40, 10));
    scene->startGroupOperation();
    line.setParts({{ShapePart::Line, false, {{20, 30, 0}, {40, 50, 0}, {40, 30, 0}}}});
    EXPECT_EQ(outline(), before.translated(40, 10)) << "as its item";
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    EXPECT_EQ(outline(), before);
    line.setParts({{ShapePart::Point, false, {{20, 30, 0}}}});
    EXPECT_TRUE(outline().isNull()) << "without size";
    point.setParts({{ShapePart::Line, false, {{60, 40, 0}, {80, 60, 0}, {80, 40, 0}}}});
    EXPECT_EQ(outline(), before.translated(40, 10));
    selection.change({}, ElementSelection::Replace);
    point.setParts({{ShapePart::Line, false, {{20, 30, 0}, {40, 50, 0}, {40, 30, 0}}}});
    EXPECT_TRUE(outline().isNull());
}

// What an element looks like may be told by another one, which is all that changes then.
TEST_F(FeatureShapesTest, BoxesFollowWhatTheirElementsDependOn)
{
    FeatureElement& base = add(ShapePart::Line, {{20, 30, 0}, {40, 50, 0}});
    auto owned = std::make_unique<TestElement>();
    TestElement& element = *owned;
    project->getModel()->getCreateItemManager(TestElement::Type)->addItem(std::move(owned));
    base.addObserver(&element);
    struct Shadow : TestGraphicsItem
    {
        Shadow(TestElement* own, const FeatureElement& of)
            : TestGraphicsItem(own)
            , source(of)
        {
        }
        void updateDataImpl() override
        {
            vertices.clear();
            for (const glm::dvec3& point : source.getParts()[0].points)
                vertices.emplace_back(scene()->mapFromModel(point));
        }
        const FeatureElement& source;
    };
    auto* shadow = new Shadow(&element, base);
    scene->addElement(shadow);
    ElementSelection selection(*project->getModel(), scene.get());
    const SelectionBoxes boxes(selection, *scene);
    const QColor outlineColor(255, 140, 0);
    selection.change({element.getId()}, ElementSelection::Replace);
    EXPECT_GT(countPixels(picture().copy(18, 28, 24, 24), outlineColor), 20);
    base.setParts({{ShapePart::Line, false, {{60, 30, 0}, {80, 50, 0}}}});
    QCoreApplication::processEvents();
    const QImage image = picture();
    EXPECT_EQ(countPixels(image.copy(18, 28, 24, 24), outlineColor), 0);
    EXPECT_GT(countPixels(image.copy(58, 28, 24, 24), outlineColor), 20);
}
