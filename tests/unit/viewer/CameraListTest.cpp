#include <viewer/cli/CameraList.h>

#include <framework/gmx/math_utils.h>
#include <framework/ksp/CommonError.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const char* const namePattern = "/tmp/out/{name}.png";

} // namespace

class CameraListTest : public ::testing::Test
{
protected:
    std::vector<CameraList::Entry> read(const QByteArray& json, const QString& names = namePattern)
    {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(json);
        file.close();
        return CameraList::read(path(), names);
    }
    /// What the list is refused with, after its file's name; empty when it is not.
    QString refusal(const QByteArray& json, const QString& names = namePattern)
    {
        try {
            read(json, names);
        } catch (const ksp::CommonError& error) {
            EXPECT_TRUE(error.text().startsWith(path() + ": ")) << qPrintable(error.text());
            return error.text().mid(path().size() + 2);
        }
        return {};
    }
    QString path() const { return QDir(m_folder.path()).filePath("cameras.json"); }
    QString beside(const QString& name) const { return QDir(m_folder.path()).filePath(name); }

private:
    QTemporaryDir m_folder;
};

TEST_F(CameraListTest, ReadsAllKeys)
{
    const auto list = read(R"([
        {"name": "north", "eye": [2700000.001, -1.5e3, 400], "target": [0, 0, 0], "up": [0, 1, 0], "fov": 60,
         "size": [640, 480], "projection": "central"},
        {"output": "plan.png", "view": "top", "projection": "parallel", "gsd": 0.25},
        {"name": "usual"}])");
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0].output, "/tmp/out/north.png");
    ASSERT_TRUE(list[0].camera.position);
    EXPECT_EQ(list[0].camera.position->eye, glm::dvec3(2700000.001, -1500.0, 400.0));
    EXPECT_EQ(list[0].camera.position->up, glm::dvec3(0.0, 1.0, 0.0));
    EXPECT_EQ(list[0].camera.size, QSize(640, 480));
    EXPECT_DOUBLE_EQ(*list[0].camera.fov, math_utils::toRadian(60.0));
    EXPECT_EQ(list[1].output, beside("plan.png"));
    EXPECT_EQ(list[1].camera.view, StandardView::Top);
    EXPECT_EQ(list[1].camera.projection, IProjection::Parallel);
    EXPECT_EQ(list[1].camera.gsd, 0.25);
    EXPECT_EQ(list[2].camera.view, StandardView::Iso);
    EXPECT_FALSE(list[2].camera.size || list[2].camera.fov || list[2].camera.position);
}

TEST_F(CameraListTest, OutputGoesBeforeThePattern)
{
    EXPECT_EQ(read(R"([{"name": "a", "output": "b/c.png"}])")[0].output, beside("b/c.png"));
    EXPECT_EQ(read(R"([{"output": "/somewhere/c.png"}])", "")[0].output, "/somewhere/c.png");
}

TEST_F(CameraListTest, NamesTheCameraAndTheKeyThatIsWrong)
{
    const QString second = "camera 2 of 2: ";
    const auto wrong = [&](const QByteArray& members) {
        return refusal(R"([{"name": "a"}, {"name": "b", )" + members + "}]");
    };
    EXPECT_EQ(wrong(R"("eyes": [0, 0, 0])"),
              second +
                  "\"eyes\" is no key; there are name, output, view, eye, target, up, projection, fov, gsd, "
                  "size");
    EXPECT_EQ(wrong(R"("view": "north")"),
              second + "\"view\": one of iso, top, bottom, front, back, left, right is wanted");
    EXPECT_EQ(wrong(R"("view": 3)"),
              second + "\"view\": one of iso, top, bottom, front, back, left, right is wanted");
    for (const char* point : {"[1, 2]", "[1, 2, 3, 4]", "[1, 2, \"3\"]", "\"1,2,3\"", "null", "[1, 2, null]"})
        EXPECT_EQ(wrong(QByteArray(R"("target": [0, 0, 1], "eye": )") + point),
                  second + "\"eye\": [x, y, z] is wanted")
            << point;
    for (const char* size : {"[1]", "[1.5, 2]", "\"640x480\"", "[1e300, 2]", "[true, 2]"})
        EXPECT_EQ(wrong(QByteArray(R"("size": )") + size),
                  second + "\"size\": [width, height] in pixels is wanted")
            << size;
    EXPECT_EQ(wrong(R"("size": [0, 5])"), second + "\"size\": width and height must be at least 1 pixel");
    EXPECT_TRUE(wrong(R"("size": [100000, 100000])").contains("37.3 GiB"));
    EXPECT_EQ(wrong(R"("eye": [1e13, 0, 0], "target": [0, 0, 0])"),
              second + "\"eye\": coordinates go to 1e12 at most");
    EXPECT_EQ(wrong(R"("eye": [1, 0, 0])"),
              second + "\"eye\" and \"target\" belong together, and \"up\" to both");
    EXPECT_EQ(wrong(R"("eye": [1, 0, 0], "target": [1, 0, 0])"),
              second + "\"eye\" and \"target\" are the same point; they must differ");
    EXPECT_EQ(wrong(R"("eye": [0, 0, 5], "target": [0, 0, 0], "up": [0, 0, 1])"),
              second + "\"up\" lies along the line from \"eye\" to \"target\"; it must point elsewhere");
    EXPECT_EQ(wrong(R"("fov": "60")"), second + "\"fov\": a number is wanted");
    for (const char* fov : {"0", "-10", "170.5", "180"})
        EXPECT_EQ(wrong(QByteArray(R"("fov": )") + fov),
                  second + "\"fov\" " + fov + ": degrees are wanted, at least 0.01 and at most 170");
    EXPECT_EQ(wrong(R"("fov": 50, "projection": "parallel")"),
              second + "\"fov\" belongs to the central projection");
    EXPECT_EQ(wrong(R"("gsd": 1)"),
              second + "\"gsd\" belongs to a picture from above: \"view\" top and \"projection\" parallel");
    EXPECT_EQ(wrong(R"("gsd": 0, "view": "top", "projection": "parallel")"),
              second + "\"gsd\" 0: the length of a pixel is wanted, more than 0 and at most 1e12");
    EXPECT_EQ(wrong(R"("output": "b.jpg")"), second + "\"output\": the name must end in .png");
    EXPECT_EQ(wrong(R"("output": 7)"), second + "\"output\": a text that is not empty is wanted");
}

TEST_F(CameraListTest, NamesArePartsOfFileNames)
{
    EXPECT_EQ(refusal(R"([{"name": "../b"}])"),
              "camera 1 of 1: \"name\": it becomes part of a file's name and can have no /");
    EXPECT_EQ(refusal(R"([{"name": ""}])"), "camera 1 of 1: \"name\": a text that is not empty is wanted");
    EXPECT_EQ(refusal(R"([{"name": 1}])"), "camera 1 of 1: \"name\": a text that is not empty is wanted");
    EXPECT_EQ(refusal(R"([{"view": "top"}])"), "camera 1 of 1: neither \"name\" nor \"output\"");
    EXPECT_EQ(refusal(R"([{"name": "b"}])", ""),
              "camera 1 of 1: no \"output\"; add one, or -o with a pattern such as {name}.png");
}

TEST_F(CameraListTest, TwoCamerasWithOneOutputAreRefused)
{
    EXPECT_EQ(refusal(R"([{"name": "a"}, {"name": "b"}, {"name": "a"}])"),
              "camera 3 of 3: its output /tmp/out/a.png is that of camera 1, too");
    EXPECT_TRUE(
        refusal(R"([{"output": "a.png"}, {"output": "./a.png"}])").contains("is that of camera 1, too"));
    QDir(beside(".")).mkdir("folder");
    ASSERT_TRUE(QFile::link(beside("folder"), beside("link")));
    EXPECT_TRUE(refusal(R"([{"output": "folder/a.png"}, {"output": "link/a.png"}])")
                    .contains("is that of camera 1, too"));
}

TEST_F(CameraListTest, WhatIsNoListIsRefused)
{
    EXPECT_TRUE(refusal("[{]").startsWith("no JSON: "));
    EXPECT_TRUE(refusal("").startsWith("no JSON: "));
    EXPECT_EQ(refusal("{}"), "a list of cameras is wanted, [{...}, ...]");
    EXPECT_EQ(refusal("[]"), "a list of cameras is wanted, [{...}, ...]");
    EXPECT_EQ(refusal("[[1]]"), "camera 1 of 1: an object is wanted, {...}");
    QFile::remove(path());
    EXPECT_THROW(CameraList::read(path(), namePattern), ksp::CommonError);
}
