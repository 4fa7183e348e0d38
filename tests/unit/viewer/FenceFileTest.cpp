#include <viewer/cli/FenceFile.h>
#include <viewer/cli/FenceOption.h>

#include <Viewer3dModule/host/Fence3dItem.h>
#include <framework/ksp/CommonError.h>
#include <framework/model/CProject.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

// Fences in JSON files, and as values that go into a project.

namespace {

const char* const prismText =
    R"({"type": "prism", "points": [[2700000, 1200000, 400], [2700010, 1200000, 400],
    [2700010, 1200020, 400], [2700000, 1200020, 400]], "direction": [0, 0, 2], "height": 5})";
const char* const frustumText = R"({"type": "frustum", "eye": [2700000, 1200000, 400],
    "target": [2700000, 1200050, 400], "up": [0, 0, 1], "fov": 90,
    "polygon": [[-1, -0.5], [1, -0.5], [1, 0.5]], "near": 2, "far": 30})";

class FenceFiles : public ::testing::Test
{
protected:
    QString path() const { return QDir(m_folder.path()).filePath("fence.json"); }
    FenceShape read(const QByteArray& text) const
    {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();
        return FenceFile::read(path());
    }
    /// What is wrong, without the file's name, which the message must begin with.
    QString refusal(const QByteArray& text) const
    {
        try {
            read(text);
        } catch (const ksp::CommonError& error) {
            EXPECT_FALSE(error.text().contains('\n'));
            const QString prefix = path() + ": ";
            EXPECT_TRUE(error.text().startsWith(prefix)) << qPrintable(error.text());
            return error.text().mid(prefix.size());
        }
        return {};
    }

private:
    QTemporaryDir m_folder;
};

QByteArray with(const char* text, const char* from, const char* to)
{
    QByteArray changed(text);
    EXPECT_TRUE(changed.contains(from)) << from;
    return changed.replace(from, to);
}

} // namespace

TEST_F(FenceFiles, Sphere)
{
    const FenceShape shape = read(R"({"type": "sphere", "center": [2700000.5, 2, -3], "radius": 4.25})");
    const auto& sphere = std::get<SphereFence>(shape);
    EXPECT_EQ(sphere.getCenter(), glm::dvec3(2700000.5, 2.0, -3.0));
    EXPECT_EQ(sphere.getRadius(), 4.25);
}

TEST_F(FenceFiles, PrismStandsOnItsPoints)
{
    const auto fence = std::get<PrismFence>(read(prismText));
    for (const double x : {1.0, 9.0})
        for (const double y : {1.0, 19.0})
            for (const double z : {0.001, 4.999})
                EXPECT_TRUE(fence.contains({2700000.0 + x, 1200000.0 + y, 400.0 + z}));
    EXPECT_FALSE(fence.contains({2700001.0, 1200001.0, 399.999}));
    EXPECT_FALSE(fence.contains({2700001.0, 1200001.0, 405.001}));
    EXPECT_FALSE(fence.contains({2700010.1, 1200001.0, 402.0}));
    EXPECT_FALSE(fence.contains({2700005.0, 1200020.1, 402.0}));
}

TEST_F(FenceFiles, PrismWithoutHeightHasNoEnd)
{
    const auto fence = std::get<PrismFence>(read(with(prismText, ", \"height\": 5", "")));
    EXPECT_TRUE(fence.contains({2700001.0, 1200001.0, 4e6}));
    EXPECT_FALSE(fence.contains({2700001.0, 1200001.0, 399.0}));
}

// Half of the field of view is as high as the depth: 90 degrees.
TEST_F(FenceFiles, FrustumIsSeenFromItsEye)
{
    const auto fence = std::get<Frustum3D>(read(frustumText));
    const auto contains = [&](double right, double depth, double up) {
        return fence.contains({2700000.0 + right, 1200000.0 + depth, 400.0 + up});
    };
    EXPECT_TRUE(contains(9.0, 10.0, 0.0)); // the triangle's lower right half of the middle
    EXPECT_TRUE(contains(9.9, 10.0, 4.9));
    EXPECT_TRUE(contains(-9.5, 10.0, -4.95));
    EXPECT_FALSE(contains(-9.0, 10.0, 0.0)); // above its long side
    EXPECT_FALSE(contains(10.1, 10.0, 0.0));
    EXPECT_FALSE(contains(9.0, 10.0, -5.1));
    EXPECT_TRUE(contains(1.0, 2.001, 0.0));
    EXPECT_FALSE(contains(1.0, 1.999, 0.0));
    EXPECT_TRUE(contains(20.0, 29.999, 0.0));
    EXPECT_FALSE(contains(20.0, 30.001, 0.0));
}

TEST_F(FenceFiles, FrustumWithoutFarHasNoEnd)
{
    const auto fence = std::get<Frustum3D>(read(with(frustumText, ", \"far\": 30", "")));
    EXPECT_TRUE(fence.contains({2700000.0 + 9e5, 1200000.0 + 1e6, 400.0}));
    EXPECT_FALSE(fence.contains({2700000.0, 1200001.0, 400.0}));
}

TEST_F(FenceFiles, RingsMayBeClosed)
{
    const auto open = std::get<PrismFence>(read(prismText));
    const auto closed = std::get<PrismFence>(
        read(with(prismText, "1200020, 400]]", "1200020, 400], [2700000, 1200000, 400]]")));
    EXPECT_EQ(closed.prism().fence(), open.prism().fence());
    EXPECT_EQ(open.prism().fence().size(), 5u);
    const auto frustum = std::get<Frustum3D>(read(with(frustumText, "[1, 0.5]]", "[1, 0.5], [-1, -0.5]]")));
    EXPECT_EQ(frustum.fence(), std::get<Frustum3D>(read(frustumText)).fence());
}

TEST_F(FenceFiles, UpIsTheVerticalWhereItIsNotSaid)
{
    const auto fence = std::get<Frustum3D>(read(with(frustumText, "\"up\": [0, 0, 1], ", "")));
    EXPECT_EQ(fence.fromWorldMatrix(), std::get<Frustum3D>(read(frustumText)).fromWorldMatrix());
}

TEST_F(FenceFiles, WrongSpheresAreRefused)
{
    const auto sphere = [this](const char* members) {
        return refusal(QByteArray("{\"type\": \"sphere\", ") + members + "}");
    };
    EXPECT_EQ(sphere(R"("radius": 1)"), "no \"center\"");
    EXPECT_EQ(sphere(R"("center": [0, 0, 0])"), "no \"radius\"");
    EXPECT_EQ(sphere(R"("center": [0, 0], "radius": 1)"), "\"center\": [x, y, z] is wanted");
    EXPECT_EQ(sphere(R"("center": [0, 0, "1"], "radius": 1)"), "\"center\": [x, y, z] is wanted");
    EXPECT_EQ(sphere(R"("center": [0, 0, 1e13], "radius": 1)"), "\"center\": coordinates go to 1e12 at most");
    for (const char* radius : {"0", "-1", "1e13"})
        EXPECT_EQ(sphere(QByteArray("\"center\": [0, 0, 0], \"radius\": ") + radius),
                  "\"radius\": a number above 0, at most 1e12, is wanted")
            << radius;
    EXPECT_EQ(sphere(R"("center": [0, 0, 0], "radius": "NaN")"), "\"radius\": a number is wanted");
    EXPECT_TRUE(sphere(R"("center": [0, 0, NaN], "radius": 1)").startsWith("no JSON: "));
    EXPECT_TRUE(sphere(R"("center": [0, 0, 0], "radius": 1, "size": 2)").startsWith("\"size\" is no key; "));
}

TEST_F(FenceFiles, WrongPrismsAreRefused)
{
    EXPECT_EQ(refusal(with(prismText, "\"direction\": [0, 0, 2], ", "")), "no \"direction\"");
    EXPECT_EQ(refusal(with(prismText, "[0, 0, 2]", "[0, 0, 0]")),
              "\"direction\" has no direction; 0,0,1 is upright");
    EXPECT_EQ(refusal(with(prismText, ": 5", ": 0")),
              "\"height\": a number above 0, at most 1e12, is wanted");
    const auto points = [this](const char* list) {
        return refusal(QByteArray(R"({"type": "prism", "direction": [0, 0, 1], "points": )") + list + "}");
    };
    const QString tooFew = "\"points\": a polygon of three or more points is wanted";
    EXPECT_EQ(points("[]"), tooFew);
    EXPECT_EQ(points("[[0, 0, 0], [1, 0, 0]]"), tooFew);
    EXPECT_EQ(points("[[0, 0, 0], [1, 0, 0], [0, 0, 0]]"), tooFew);
    EXPECT_EQ(points("[[0, 0, 0], [1, 0, 0], [0, 1]]"), "\"points\": a list of points [x, y, z] is wanted");
    EXPECT_EQ(points("7"), "\"points\": a list of points [x, y, z] is wanted");
    EXPECT_EQ(points("[[0, 0, 0], [1, 0, 0], [2, 0, 0]]"), "\"points\": the points lie on one line");
    EXPECT_EQ(points("[[1, 1, 1], [1, 1, 1], [1, 1, 1], [1, 1, 1]]"),
              "\"points\": the points lie on one line");
    // a wall: a line when seen along the direction
    EXPECT_EQ(points("[[0, 0, 0], [1, 0, 0], [1, 0, 5]]"), "\"points\": the points lie on one line");
}

TEST_F(FenceFiles, WrongFrustumsAreRefused)
{
    for (const char* name : {"eye", "target", "fov", "polygon", "near"}) {
        const QByteArray other = QByteArray("\"") + name + "\"";
        EXPECT_EQ(refusal(with(frustumText, other, "\"far\"")), QString("no \"%1\"").arg(name)) << name;
    }
    EXPECT_EQ(refusal(with(frustumText, "1200050", "1200000")),
              "\"eye\" and \"target\" are the same point; they must differ");
    EXPECT_EQ(refusal(with(frustumText, "[0, 0, 1]", "[0, -3, 0]")),
              "\"up\" lies along the line from \"eye\" to \"target\"; it must point elsewhere");
    for (const char* fov : {"0", "-20", "180"})
        EXPECT_EQ(refusal(with(frustumText, "\"fov\": 90", QByteArray("\"fov\": ") + fov)),
                  "\"fov\": degrees are wanted, from 0.01 to 179")
            << fov;
    EXPECT_EQ(refusal(with(frustumText, "\"near\": 2", "\"near\": -2")), "\"near\": 0 or more is wanted");
    EXPECT_EQ(refusal(with(frustumText, "\"far\": 30", "\"far\": 2")),
              "\"far\" must be more than \"near\"; without it the fence has no end");
    EXPECT_EQ(refusal(with(frustumText, "[1, 0.5]]", "[3, -0.5]]")),
              "\"polygon\": the points lie on one line");
    EXPECT_EQ(refusal(with(frustumText, "[1, 0.5]]", "[1, 0.5, 0]]")),
              "\"polygon\": a list of points [x, y] is wanted");
}

TEST_F(FenceFiles, WrongFilesAreRefused)
{
    EXPECT_EQ(refusal("[]"), "a fence is wanted, {\"type\": ...}");
    EXPECT_EQ(refusal("{}"), "no \"type\"; it is sphere, prism or frustum");
    EXPECT_EQ(refusal(R"({"type": "box"})"), "\"type\": one of sphere, prism, frustum is wanted");
    EXPECT_EQ(refusal(R"({"type": 1})"), "\"type\": one of sphere, prism, frustum is wanted");
    EXPECT_TRUE(refusal("").startsWith("no JSON: "));
    EXPECT_EQ(refusal(QByteArray((1 << 20) + 1, ' ')), "a fence has at most 1 MiB");
    EXPECT_THROW(FenceFile::read(path() + ".none"), ksp::CommonError);
}

// --- fences as values

TEST(FenceShapes, GoIntoAnElementAndOutAgain)
{
    struct Counter : IObserver
    {
        void updateData(ISubject*) override { ++count; }
        int count = 0;
    } counter;
    Fence3dItem element;
    element.addObserver(&counter);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(shapeOf(element)));

    SphereFence sphere;
    sphere.setFence({1.0, 2.0, 3.0}, 4.0);
    setShape(element, sphere);
    EXPECT_EQ(counter.count, 1);
    EXPECT_EQ(std::get<SphereFence>(shapeOf(element)).getRadius(), 4.0);

    PrismFence prism;
    prism.prism().setFence({}, {0.0, 0.0, 1.0}, 0.0, 0.0, 7.0,
                           {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 0.0}});
    setShape(element, prism);
    EXPECT_EQ(std::get<PrismFence>(shapeOf(element)).prism().zFar(), 7.0);
    EXPECT_FALSE(element.empty());

    setShape(element, Frustum3D());
    EXPECT_TRUE(std::holds_alternative<Frustum3D>(shapeOf(element)));
    EXPECT_TRUE(element.empty());

    setShape(element, FenceShape());
    EXPECT_EQ(counter.count, 4);
    EXPECT_EQ(element.getFence(), nullptr);
}

TEST(FenceShapes, WantAProjectThatCanHaveAFence)
{
    EXPECT_THROW(fenceElement(CProject()), ksp::CommonError);
}
