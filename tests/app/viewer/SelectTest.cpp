#include "ViewerProcess.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

// viewer3d select: the elements in an area of a picture.

namespace {

/// A square across the view: its middle and half its side.
QByteArray square(const char* name, double x, double y, double half)
{
    QByteArray text = QByteArray("o ") + name + '\n';
    for (const auto& corner : {std::pair(-1, -1), {1, -1}, {1, 1}, {-1, 1}})
        text += QStringLiteral("v %1 %2 %3\n")
                    .arg(2'700'000.0 + x + corner.first * half, 0, 'f', 3)
                    .arg(1'200'000.0 + y, 0, 'f', 3)
                    .arg(400.0 + corner.second * half, 0, 'f', 3)
                    .toLatin1();
    return text + "f -4 -3 -2 -1\n";
}

} // namespace

/// Squares before a camera for which a unit is 20 pixels at y = 0 and 10 pixels at y = 10, in a picture of
/// 200 x 200 pixels: "front" covers columns 60 to 80, "behind" 65 to 75 and is hidden by it, "beside" 120 to
/// 140, and "wide" 160 to 240, beyond the right border. Rows are 90 to 110 of the squares of side 1.
class Select : public ViewerTest
{
protected:
    void SetUp() override
    {
        ViewerTest::SetUp();
        m_file = write("squares.obj", square("front", -1.5, 0.0, 0.5) + square("behind", -3.0, 10.0, 0.5) +
                                          square("beside", 1.5, 0.0, 0.5) + square("wide", 5.0, 0.0, 2.0));
    }
    ViewerRun run(const QStringList& arguments) const
    {
        return runViewer(QStringList{"select", m_file, "--eye", "2700000,1199990,400", "--target",
                                     "2700000,1200000,400", "--fov", "53.130102354155978", "--size",
                                     "200x200"} +
                         arguments);
    }
    /// The names, in the order of the identifiers.
    QStringList names(const QStringList& arguments) const
    {
        const ViewerRun done = run(arguments + QStringList("--json"));
        EXPECT_EQ(done.status, 0) << done.error.constData();
        EXPECT_EQ(done.error, "");
        QStringList names;
        const QJsonObject root = QJsonDocument::fromJson(done.out).object();
        EXPECT_EQ(root.keys(), QStringList("elements")) << done.out.constData();
        for (const QJsonValue& value : root["elements"].toArray()) {
            EXPECT_EQ(value.toObject()["type"].toString(), "mesh");
            EXPECT_GT(value.toObject()["id"].toInt(), 0);
            names.append(value.toObject()["name"].toString());
        }
        return names;
    }

private:
    QString m_file;
};

TEST_F(Select, ListsIdentifiersALineInAscendingOrder)
{
    const ViewerRun done = run({"--rect", "0,0,200,200"});
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.out, "1\n2\n3\n4\n");
    EXPECT_EQ(done.error, "");
}

TEST_F(Select, TakesHiddenElementsOnlyWhenItLooksThroughThings)
{
    EXPECT_EQ(names({"--rect", "50,80,50,40"}), QStringList({"front", "behind"}));
    EXPECT_EQ(names({"--rect", "50,80,50,40", "--mode", "visible"}), QStringList("front"));
}

TEST_F(Select, TellsTouchedElementsFromThoseInside)
{
    // half of the front square, all of the one behind it
    const QStringList area = {"--rect", "63,80,50,40"};
    EXPECT_EQ(names(area), QStringList({"front", "behind"}));
    EXPECT_EQ(names(area + QStringList{"--rule", "inside"}), QStringList("behind"));
    // all that the picture shows of the wide square, which goes on beyond it
    EXPECT_EQ(names({"--rect", "110,0,90,200", "--rule", "inside"}), QStringList("beside"));
}

TEST_F(Select, TakesAPolygon)
{
    // round the front square and, by a narrow bridge above the one beside it, back
    const QString polygon = "50,80,150,80,150,85,90,85,90,120,50,120";
    EXPECT_EQ(names({"--polygon", polygon}), QStringList({"front", "behind"}));
}

TEST_F(Select, PrintsNothingWhereNothingIs)
{
    const ViewerRun lines = run({"--rect", "85,0,30,200"});
    EXPECT_EQ(lines.status, 0);
    EXPECT_EQ(lines.out, "");
    EXPECT_EQ(names({"--rect", "1000,1000,30,200"}), QStringList());
}

TEST_F(Select, SaysWhatIsWrongInOneLine)
{
    const ViewerRun usage = run({});
    EXPECT_EQ(usage.status, 2);
    EXPECT_EQ(usage.errorLines(),
              QStringList("viewer3d: select: no area; add --rect x,y,w,h or --polygon x,y,x,y,..."));
    const ViewerRun missing = runViewer({"select", path("none.obj"), "--rect", "0,0,9,9"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.errorLines(), QStringList("viewer3d: " + path("none.obj") + ": there is no such file"));
    const ViewerRun huge =
        runViewer({"select", path("squares.obj"), "--size", "900000x2", "--rect", "0,0,9,9"});
    EXPECT_EQ(huge.status, 1);
    ASSERT_EQ(huge.errorLines().size(), 1);
    EXPECT_TRUE(huge.errorLines()[0].startsWith(
        "viewer3d: nothing is selected in a picture of 900000 x 2 pixels: this driver takes at most "))
        << huge.error.constData();
}
