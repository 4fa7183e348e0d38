#include "../../support/GlObjects.h"
#include "../../support/ImageCheck.h"
#include "../../support/RenderTarget.h"
#include "../../support/SceneTest.h"

#include <viewer/elements/ElementTypes.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/FeatureElement.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cstring>

namespace {

constexpr int ViewSide = 64;
const QColor black(0, 0, 0);
const QColor lineColor(255, 0, 0);
const QColor pointColor(0, 0, 255);
const QColor chosenColor(255, 255, 0); // of scenes without settings

// Of the feature below, pixels from the top left.
const QPoint firstPoint(16, 16);
const QPoint secondPoint(48, 16);
const QPoint onTheLine(12, 48);
const std::vector<QPoint> everywhere = {firstPoint, secondPoint, onTheLine};

/// The scene coordinates of a pixel's middle where the matrices are identities.
glm::dvec3 at(const QPoint& pixel)
{
    return {(pixel.x() + 0.5) * 2.0 / ViewSide - 1.0, 1.0 - (pixel.y() + 0.5) * 2.0 / ViewSide, 0.0};
}

FeatureElement::Part featurePart(FeatureElement::Part::Kind kind, std::vector<glm::dvec3> points)
{
    FeatureElement::Part result;
    result.kind = kind;
    result.points = std::move(points);
    return result;
}

using Properties = std::vector<std::pair<QString, QVariant>>;

} // namespace

/// Features in a scene that shows the viewer's elements.
class FeatureItemTest : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        element_types::registerItems(*scene);
    }

    FeatureElement& add(std::vector<FeatureElement::Part> parts, Properties properties)
    {
        auto element = std::make_unique<FeatureElement>();
        properties.emplace_back("stroke", lineColor.name());
        properties.emplace_back("marker-color", pointColor.name());
        element->setProperties(std::move(properties));
        element->setParts(std::move(parts));
        return static_cast<FeatureElement&>(*manager().addItem(std::move(element)));
    }
    CModelElementManager& manager()
    {
        return *project->getModel()->getCreateItemManager(element_types::Feature);
    }
    Graphics3dItem& item(const CModelElement& element) { return *scene->getItems().at(element.getId()); }

    /// Attachments of a pass over fresh targets.
    std::vector<QImage> pass(int drawMode, Scene3d::ItemFilter filter = {})
    {
        scene->flushBounds();
        PaintContext context = paintContext(ViewSide, ViewSide);
        context.drawMode = drawMode;
        RenderTarget target(*gl, QSize(ViewSide, ViewSide), 4);
        target.bind();
        target.clear(black);
        gl->glDisable(GL_BLEND);
        scene->drawFrame(context, nullptr, std::move(filter));
        gl->glEnable(GL_BLEND);
        std::vector<QImage> images;
        for (int i = 0; i < 4; ++i)
            images.push_back(target.image(i));
        return images;
    }
    QImage picture(Scene3d::ItemFilter filter = {}) { return pass(DrawMode::OrdinalDraw, filter).front(); }
    /// The identifiers of a mask, pixel by pixel.
    std::vector<LONGID> idsAt(const std::vector<QImage>& mask, const std::vector<QPoint>& pixels)
    {
        const auto word = [&mask](int attachment, const QPoint& pixel) {
            const auto* bytes = mask[static_cast<std::size_t>(attachment)].constScanLine(pixel.y());
            std::uint32_t value = 0;
            std::memcpy(&value, bytes + 4 * pixel.x(), sizeof value);
            return static_cast<std::uint64_t>(value);
        };
        std::vector<LONGID> ids;
        for (const QPoint& pixel : pixels)
            ids.push_back(static_cast<LONGID>(word(1, pixel) | word(2, pixel) << 32));
        return ids;
    }
    std::size_t bufferSize(unsigned buffer)
    {
        GLint size = 0;
        gl->glBindBuffer(GL_ARRAY_BUFFER, buffer);
        gl->glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
        return static_cast<std::size_t>(size);
    }
    std::vector<glm::vec4> readAndDelete(unsigned buffer)
    {
        std::vector<glm::vec4> vertices(bufferSize(buffer) / sizeof(glm::vec4));
        gl->glGetBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(bufferSize(buffer)),
                               vertices.data());
        gl->glDeleteBuffers(1, &buffer);
        return vertices;
    }
};

/// Two points over a line, with each of the pens.
class MixedFeature : public FeatureItemTest, public ::testing::WithParamInterface<const char*>
{
protected:
    FeatureElement& addMixed()
    {
        Properties properties = {{"marker-size", 7}};
        if (GetParam() == std::string("wide")) properties.emplace_back("stroke-width", 5);
        if (GetParam() == std::string("dashed")) properties.emplace_back("dash", true);
        return add({featurePart(FeatureElement::Part::Point, {at(firstPoint)}),
                    featurePart(FeatureElement::Part::Line, {at({8, 48}), at({56, 48})}),
                    featurePart(FeatureElement::Part::Point, {at(secondPoint)})},
                   std::move(properties));
    }
    void expectColors(const QImage& image, const QColor& points, const QColor& line)
    {
        EXPECT_EQ(image.pixelColor(firstPoint), points);
        EXPECT_EQ(image.pixelColor(secondPoint), points);
        EXPECT_EQ(image.pixelColor(onTheLine), line);
    }
};

TEST_P(MixedFeature, ShowsPointsAndLinesInTheirColours)
{
    addMixed();
    const QImage image = picture();
    saveTestImage((std::string("mixed_feature_") + GetParam()).c_str(), image);
    expectColors(image, pointColor, lineColor);
    EXPECT_EQ(countPixels(image, pointColor), 2 * 7 * 7);
}

TEST_P(MixedFeature, MasksHoldTheElementsIdAtItsPointsAndItsLines)
{
    addMixed();
    const FeatureElement& element = addMixed(); // drawn last, over the same pixels
    const std::vector<LONGID> ids(everywhere.size(), element.getId());
    EXPECT_EQ(idsAt(pass(DrawMode::SelectionMaskDraw), everywhere), ids);
}

TEST_P(MixedFeature, HasOneHighlight)
{
    FeatureElement& element = addMixed();
    element.setHighlighted(true);
    expectColors(picture(), chosenColor, chosenColor);
    element.setHighlighted(false);
    expectColors(picture(), pointColor, lineColor);
}

TEST_P(MixedFeature, IsHiddenWhole)
{
    FeatureElement& element = addMixed();
    element.setVisible(false);
    EXPECT_EQ(countPixels(picture(), black), ViewSide * ViewSide);
    const std::vector<LONGID> none(everywhere.size(), 0);
    EXPECT_EQ(idsAt(pass(DrawMode::SelectionMaskDraw), everywhere), none);
    EXPECT_EQ(idsAt(pass(DrawMode::GlueMaskDraw), everywhere), none);
    element.setVisible(true);
    expectColors(picture(), pointColor, lineColor);
}

TEST_P(MixedFeature, PassesAFilterByItemWholeOrNotAtAll)
{
    const Drawable3dItem* wanted = &item(addMixed());
    expectColors(picture([wanted](Drawable3dItem* drawn) { return drawn == wanted; }), pointColor, lineColor);
    expectColors(picture([wanted](Drawable3dItem* drawn) { return drawn != wanted; }), black, black);
}

TEST_P(MixedFeature, FollowsChangesOfItsGeometryAndItsProperties)
{
    FeatureElement& element = addMixed();
    element.setParts({featurePart(FeatureElement::Part::Line, {at({8, 48}), at({56, 48})})});
    expectColors(picture(), black, lineColor);
    element.setParts({featurePart(FeatureElement::Part::Point, {at(firstPoint), at(secondPoint)})});
    expectColors(picture(), pointColor, black);
    element.setParts({featurePart(FeatureElement::Part::Point, {at(firstPoint), at(secondPoint)}),
                      featurePart(FeatureElement::Part::Line, {at({8, 48}), at({56, 48})})});
    expectColors(picture(), pointColor, lineColor);
    element.setProperty("stroke", "#00ff00");
    expectColors(picture(), pointColor, QColor(0, 255, 0));
}

TEST_P(MixedFeature, StaysWholeWhenTheSceneIsMoved)
{
    addMixed();
    // to the right by four pixels
    scene->setModelToSceneTransform(glm::translate(glm::dmat4(1.0), glm::dvec3(8.0 / ViewSide, 0.0, 0.0)));
    const QImage image = picture();
    EXPECT_EQ(image.pixelColor(firstPoint + QPoint(4, 0)), pointColor);
    EXPECT_EQ(image.pixelColor(secondPoint + QPoint(4, 0)), pointColor);
    EXPECT_EQ(image.pixelColor(firstPoint - QPoint(1, 0)), black);
    EXPECT_EQ(image.pixelColor(onTheLine + QPoint(4, 0)), lineColor);
}

TEST_P(MixedFeature, CountsAndCapturesEverythingOnce)
{
    Graphics3dItem& drawn = item(addMixed());
    const Drawable3dPrimitive::GeometryInfo info = drawn.getGeometryInfo();
    EXPECT_EQ(info.pointCount, 2u);
    EXPECT_EQ(info.lineCount, 1u);
    EXPECT_EQ(info.triangleCount, 0u);
    EXPECT_TRUE(drawn.getDrawableChildren().empty());

    const auto [points, lines, triangles] = scene->generateItemGeometry(&drawn);
    EXPECT_EQ(triangles, 0u);
    const std::vector<glm::vec4> capturedPoints = readAndDelete(points);
    const std::vector<glm::vec4> capturedLines = readAndDelete(lines);
    ASSERT_EQ(capturedPoints.size(), 2u);
    ASSERT_EQ(capturedLines.size(), 2u);
    const auto expectAt = [](const glm::vec4& vertex, const QPoint& pixel) {
        EXPECT_NEAR(double(vertex.x), at(pixel).x, 1e-6);
        EXPECT_NEAR(double(vertex.y), at(pixel).y, 1e-6);
        EXPECT_EQ(vertex.w, 1.0f);
    };
    expectAt(capturedPoints[0], firstPoint);
    expectAt(capturedPoints[1], secondPoint);
    expectAt(capturedLines[0], {8, 48});
    expectAt(capturedLines[1], {56, 48});
}

TEST_P(MixedFeature, LeavesNothingBehind)
{
    const LONGID first = addMixed().getId();
    picture(); // drawers and programs are made at the first need
    manager().removeItem(first);
    picture();
    const GlObjects before = GlObjects::count(*gl);
    FeatureElement& element = addMixed();
    picture();
    Item3dDrawer* const drawer = item(element).getDrawer();
    ASSERT_EQ(drawer->getItems().size(), 1u);
    manager().removeItem(element.getId());
    EXPECT_TRUE(drawer->getItems().empty());
    EXPECT_EQ(countPixels(picture(), black), ViewSide * ViewSide);
    EXPECT_EQ(GlObjects::count(*gl), before);
}

TEST_P(MixedFeature, OfManyKeepsTheOthersWhenOneGoes)
{
    FeatureElement& gone = addMixed();
    FeatureElement& stays = addMixed();
    manager().removeItem(gone.getId());
    const std::vector<LONGID> ids(everywhere.size(), stays.getId());
    EXPECT_EQ(idsAt(pass(DrawMode::SelectionMaskDraw), everywhere), ids);
}

INSTANTIATE_TEST_SUITE_P(Pens, MixedFeature, ::testing::Values("thin", "wide", "dashed"),
                         [](const auto& pen) { return std::string(pen.param); });
