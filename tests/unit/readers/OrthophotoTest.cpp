#include "ReaderTest.h"

#include <framework/ksp/CommonError.h>
#include <readers/orthophoto/readOrthophoto.h>

#include <QtCore/QFile>
#include <QtGui/QImage>

namespace {

class OrthophotoTest : public ReaderTest
{
protected:
    QString writePicture(const QString& name, const QSize& size) const
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        EXPECT_TRUE(image.save(folder.filePath(name)));
        return folder.filePath(name);
    }
    std::string refusalOf(const QString& path) const
    {
        try {
            readers::readOrthophoto(path, 0.0);
        } catch (const ksp::CommonError& error) {
            return error.text().mid(path.size() + 2).toStdString();
        }
        return "was read";
    }
};

void expectNear(const glm::dvec3& point, const glm::dvec3& expected)
{
    EXPECT_LT(glm::distance(point, expected), 1e-9) << point.x << ' ' << point.y << ' ' << point.z;
}

} // namespace

TEST_F(OrthophotoTest, LiesWhereItsWorldFileSays)
{
    const QString path = writePicture("north.png", {40, 20});
    write("north.pgw", "0.5\n0\n0\n-0.5\n2600000.25\n1200099.75\n");
    const auto element = readers::readOrthophoto(path, 312.5);
    EXPECT_EQ(element->getName(), "north");
    EXPECT_EQ(element->getPath(), path);
    // the middle of the first pixel is half a pixel from the upper left corner (2600000, 1200100)
    expectNear(element->getFrame().corner, {2600000, 1200090, 312.5});
    expectNear(element->getFrame().right, {20, 0, 0});
    expectNear(element->getFrame().up, {0, 10, 0});
    expectNear(element->getBounds().getMax(), {2600020, 1200100, 312.5});
}

TEST_F(OrthophotoTest, MayBeTurned)
{
    const QString path = writePicture("turned.jpg", {10, 4});
    write("turned.jgw", "0 1\r\n1 0\r\n5 7"); // columns to the north, rows to the east
    const OrthophotoElement::Frame frame = readers::readOrthophoto(path, 0.0)->getFrame();
    expectNear(frame.right, {0, 10, 0});
    expectNear(frame.up, {-4, 0, 0});
    expectNear(frame.corner, {4.5 + 4, 6.5, 0}); // the first pixel's corner, and four rows down
}

TEST_F(OrthophotoTest, IsRefusedInOneLine)
{
    const QString path = writePicture("a.png", {4, 4});
    EXPECT_EQ(refusalOf(path), "there is no world file (.pgw) beside it that tells where the picture lies");
    write("a.pgw", "1 0 0 -1 5");
    EXPECT_EQ(refusalOf(path), "its world file a.pgw has not six numbers");
    write("a.pgw", "1 0 0 -1 5 inf");
    EXPECT_EQ(refusalOf(path), "its world file a.pgw has not six numbers");
    write("a.pgw", "1 2 2 4 5 5");
    EXPECT_EQ(refusalOf(path), "the pixels of its world file a.pgw have no area");
    write("b.png", "no picture");
    EXPECT_EQ(refusalOf(folder.filePath("b.png")).substr(0, 28), "cannot be read as a picture:");
    QFile whole(writePicture("c.png", {40, 40}));
    write("c.pgw", "1 0 0 -1 5 5");
    EXPECT_EQ(refusalOf(folder.filePath("c.png")), "was read");
    ASSERT_TRUE(whole.resize(whole.size() - 20));
    EXPECT_EQ(refusalOf(folder.filePath("c.png")), "cannot be read as a picture: it is damaged");
}

TEST_F(OrthophotoTest, IsStoredWithItsPlace)
{
    const QString path = writePicture("p.png", {4, 4});
    write("p.PGW", "1 0 0 -1 5 5");
    const auto element = readers::readOrthophoto(path, 3.0);
    element->setRelativePath("../p.png");
    CQtArchive storing;
    element->serialize(storing);
    CQtArchive loading(storing.data());
    OrthophotoElement loaded;
    loaded.serialize(loading);
    EXPECT_EQ(loaded.getPath(), path);
    EXPECT_EQ(loaded.getRelativePath(), "../p.png");
    expectNear(loaded.getFrame().corner, {4.5, 1.5, 3});
    expectNear(loaded.getFrame().up, {0, 4, 0});
}
