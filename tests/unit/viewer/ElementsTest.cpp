#include <viewer/ElementSummary.h>
#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/FeatureStyle.h>
#include <viewer/elements/MeshElement.h>
#include <viewer/elements/ViewpointElement.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <framework/model/FeatureElement.h>

#include <gtest/gtest.h>

namespace {

void roundTrip(CModelElement& from, CModelElement& to)
{
    CQtArchive storing;
    from.serialize(storing);
    CQtArchive loading(storing.data());
    to.serialize(loading);
}

FeatureElement::Part part(FeatureElement::Part::Kind kind, std::vector<glm::dvec3> points)
{
    FeatureElement::Part result;
    result.kind = kind;
    result.points = std::move(points);
    return result;
}

} // namespace

TEST(MeshElement, KeepsItsSourceInArchives)
{
    MeshElement element;
    element.setName("Roof");
    element.setSource("/data/house.obj", 3);
    element.setRelativePath("../house.obj");
    MeshElement loaded;
    roundTrip(element, loaded);
    EXPECT_EQ(loaded.getName(), "Roof");
    EXPECT_EQ(loaded.getPath(), "/data/house.obj");
    EXPECT_EQ(loaded.getRelativePath(), "../house.obj");
    EXPECT_EQ(loaded.getPart(), 3);
}

class StoredViewpoint : public ::testing::TestWithParam<IProjection::Projection>
{
};

TEST_P(StoredViewpoint, ComesBackWhole)
{
    ViewpointElement element;
    element.setName("From the church");
    Viewpoint viewpoint = Viewpoint::looking({612000.125, 5071000.5, 350}, {612010, 5071001, 320}, {0, 0, 1},
                                             GetParam(), {800, 600});
    viewpoint.projection().setZoom(1.75);
    element.setViewpoint(viewpoint);
    element.setEyeDomeShading(EyeDomeShading::Negative);
    ViewpointElement loaded;
    roundTrip(element, loaded);
    EXPECT_EQ(loaded.getName(), "From the church");
    EXPECT_EQ(loaded.getEyeDomeShading(), EyeDomeShading::Negative);
    EXPECT_EQ(loaded.getViewpoint().projection().getType(), GetParam());
    EXPECT_NEAR(loaded.getViewpoint().projection().getZoom(), 1.75, 1e-12);
    EXPECT_EQ(loaded.getViewpoint().camera().getPosition(), viewpoint.camera().getPosition());
    EXPECT_EQ(loaded.getViewpoint().camera().getView(), viewpoint.camera().getView());
    EXPECT_EQ(loaded.getViewpoint().camera().getUp(), viewpoint.camera().getUp());
}

namespace {

/// Stores as a version of the program did that knew of no shading.
class FormerViewpoint : public CModelElement
{
public:
    explicit FormerViewpoint(const Viewpoint& viewpoint)
        : m_viewpoint(viewpoint)
    {
    }
    int getType() const override { return element_types::Viewpoint; }
    void serialize(CQtArchive& archive) override
    {
        CModelElement::serialize(archive);
        archive.beginObject();
        CCamera camera = m_viewpoint.camera();
        camera.serialize(archive);
        bool isParallel = m_viewpoint.isParallel();
        archive.value(isParallel);
        m_viewpoint.projection().serialize(archive);
        archive.endObject(1);
        archive.finish();
    }

private:
    Viewpoint m_viewpoint;
};

} // namespace

TEST(ViewpointElement, OfAFormerVersionIsShadedAsItWas)
{
    FormerViewpoint former(
        Viewpoint::looking({1, 2, 3}, {4, 5, 6}, {0, 0, 1}, IProjection::Parallel, {800, 600}));
    ViewpointElement loaded;
    loaded.setEyeDomeShading(EyeDomeShading::Positive);
    roundTrip(former, loaded);
    EXPECT_EQ(loaded.getEyeDomeShading(), EyeDomeShading::Off);
    EXPECT_EQ(loaded.getViewpoint().camera().getPosition(), glm::dvec3(1, 2, 3));
}

INSTANTIATE_TEST_SUITE_P(ViewpointElement, StoredViewpoint,
                         ::testing::Values(IProjection::Central, IProjection::Parallel));

TEST(ElementTypes, HaveWordsForListings)
{
    EXPECT_EQ(element_types::name(MeshElement().getType()), "mesh");
    EXPECT_EQ(element_types::name(FeatureElement().getType()), "feature");
    EXPECT_EQ(element_types::name(ViewpointElement().getType()), "viewpoint");
    EXPECT_EQ(element_types::name(0x36FFCE00), "0x36ffce00");
}

TEST(ElementSummary, CountsWhatAFeatureDraws)
{
    FeatureElement feature;
    feature.setParts({part(FeatureElement::Part::Point, {{1, 2, 3}, {4, 5, 6}}),
                      part(FeatureElement::Part::Line, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}),
                      part(FeatureElement::Part::Ring, {{0, 0, 0}, {9, 0, 0}, {0, 9, 0}})});
    const ElementSummary summary = ElementSummary::of(feature);
    EXPECT_EQ(summary.points, 2u);
    EXPECT_EQ(summary.lines, 5u); // two of the line, three of the ring
    EXPECT_EQ(summary.triangles, 1u); // the ring is filled
    EXPECT_EQ(summary.bounds, gmx::BoundingBox({0, 0, 0}, {9, 9, 6}));
}

TEST(ElementSummary, IsEmptyForOtherElements)
{
    const ElementSummary summary = ElementSummary::of(ViewpointElement());
    EXPECT_EQ(summary.points + summary.lines + summary.triangles, 0u);
    EXPECT_TRUE(summary.bounds.isNull());
}

TEST(FeatureStyle, IsReadFromTheProperties)
{
    FeatureElement feature;
    feature.setProperties({{"stroke", "#ff8000"}, {"stroke-width", 2.5}, {"marker-size", "9"}});
    const FeatureStyle style = FeatureStyle::of(feature);
    EXPECT_EQ(style.pen.color(), QColor(255, 128, 0));
    EXPECT_EQ(style.pen.widthF(), 2.5);
    EXPECT_EQ(style.pen.style(), Qt::SolidLine);
    EXPECT_EQ(style.pointSize, 9.0f);
    EXPECT_EQ(style.pointColor, QColor(255, 128, 0));
    EXPECT_EQ(style.lineDrawerType(), DrawerType::WideLines);
}

TEST(FeatureStyle, ThinSolidLinesArePlain)
{
    EXPECT_EQ(FeatureStyle::of(FeatureElement()).lineDrawerType(), DrawerType::Mono);
}

TEST(FeatureStyle, DashesComeFromEitherProperty)
{
    for (const auto& [name, value, isDashed] :
         {std::tuple<const char*, QVariant, bool>("stroke-dasharray", "4 2", true),
          {"stroke-dasharray", "none", false},
          {"stroke-dasharray", "", false},
          {"dash", true, true},
          {"dash", false, false}}) {
        FeatureElement feature;
        feature.setProperty(name, value);
        EXPECT_EQ(FeatureStyle::of(feature).lineDrawerType(),
                  isDashed ? DrawerType::DashedLines : DrawerType::Mono)
            << name << " " << qPrintable(value.toString());
    }
}

TEST(FeatureStyle, NonsenseGivesDefaults)
{
    FeatureElement feature;
    feature.setProperties({{"stroke", "no colour"}, {"stroke-width", "wide"}, {"marker-size", -4}});
    const FeatureStyle style = FeatureStyle::of(feature);
    const FeatureStyle plain = FeatureStyle::of(FeatureElement());
    EXPECT_EQ(style.pen, plain.pen);
    EXPECT_EQ(style.pointSize, plain.pointSize);
}

TEST(FeatureStyle, MarkerSizeWinsOverTheSizeOfOtherPoints)
{
    FeatureElement feature;
    EXPECT_EQ(FeatureStyle::of(feature).pointSize, 6.0f);
    EXPECT_EQ(FeatureStyle::of(feature, 200.0f).pointSize, 200.0f);
    feature.setProperty("marker-size", 9);
    EXPECT_EQ(FeatureStyle::of(feature, 200.0f).pointSize, 9.0f);
    feature.setProperty("marker-size", "huge");
    EXPECT_EQ(FeatureStyle::of(feature, 200.0f).pointSize, 200.0f);
}

TEST(FeatureStyle, WidthIsLimited)
{
    FeatureElement feature;
    feature.setProperty("stroke-width", 1e9);
    EXPECT_EQ(FeatureStyle::of(feature).pen.widthF(), 100.0);
}
