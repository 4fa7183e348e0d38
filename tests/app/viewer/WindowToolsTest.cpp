#include "ViewerProcess.h"

#include "../../support/GlDebug.h"
#include "../../support/ImageCheck.h"

#include <viewer/Host.h>
#include <viewer/window/MainWindow.h>
#include <viewer/window/View3dWidget.h>
#include <viewer/window/ViewTools.h>

#include <Viewer3dModule/fences/Frustum3D.h>
#include <Viewer3dModule/fences/SphereFence.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <QtGui/QMouseEvent>
#include <QtWidgets/QAction>
#include <QtWidgets/QStatusBar>

// Selecting and fencing in the window, by the events that a user causes.

namespace {

const glm::dvec3 townBase(2'700'000.0, 1'200'000.0, 400.0);

QByteArray square(const char* name, double x, double y, const char* color)
{
    QByteArray text = QByteArray("o ") + name + '\n';
    for (const auto& corner : {std::pair(-1, -1), {1, -1}, {1, 1}, {-1, 1}})
        text += QStringLiteral("v %1 %2 %3 %4\n")
                    .arg(townBase.x + x + corner.first, 0, 'f', 1)
                    .arg(townBase.y + y, 0, 'f', 1)
                    .arg(townBase.z + corner.second, 0, 'f', 1)
                    .arg(color)
                    .toLatin1();
    return text + "f -4 -3 -2 -1\n";
}

bool isBlue(QRgb pixel)
{
    return qBlue(pixel) > 100 && qRed(pixel) < 60 && qGreen(pixel) < 60;
}

} // namespace

/// A window with squares across the view from the south: "left" at x = -4, "middle" at 0 with "hidden" behind
/// it, "right" at 4, all of side 2.
class WindowTools : public ViewerTest
{
protected:
    static void SetUpTestSuite() { s_host = std::make_unique<Host>(Host::Settings::InMemory); }
    static void TearDownTestSuite() { s_host.reset(); }

    void SetUp() override
    {
        ViewerTest::SetUp();
        m_window = std::make_unique<MainWindow>(*s_host);
        m_window->resize(800, 600);
        m_window->show();
        settle();
        m_view = &m_window->view();
        ASSERT_TRUE(m_view->isValid());
        m_view->makeCurrent();
        m_debug = std::make_unique<GlDebug>(*m_view->context());
        m_view->doneCurrent();
        m_window->openFiles(
            {write("squares.obj", square("left", -4, 0, "1 0 0") + square("middle", 0, 0, "0 1 0") +
                                      square("hidden", 0, 9, "1 1 0") + square("right", 4, 0, "0 0 1"))});
        settle();
        m_view->showFrom(StandardView::Front);
        settle();
    }
    void TearDown() override
    {
        m_view->makeCurrent();
        m_debug.reset();
        m_view->doneCurrent();
        m_window.reset();
    }
    static void settle()
    {
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    }
    void trigger(const char* name)
    {
        auto* action = m_window->findChild<QAction*>(name);
        ASSERT_TRUE(action) << name;
        action->trigger();
    }
    /// Where a point at this place relative to the middle square is seen.
    QPointF place(double x, double y, double z) const
    {
        const auto found = m_view->placeOf(m_window->scene().mapFromModel(townBase + glm::dvec3(x, y, z)));
        EXPECT_TRUE(found);
        return found.value_or(QPointF());
    }
    void mouse(QEvent::Type type, const QPointF& where, Qt::MouseButton button,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        const bool isUp = type == QEvent::MouseButtonRelease;
        QMouseEvent event(type, where, type == QEvent::MouseMove ? Qt::NoButton : button,
                          isUp ? Qt::NoButton : Qt::MouseButtons(button), modifiers);
        QCoreApplication::sendEvent(m_view, &event);
    }
    void press(const QPointF& where) { mouse(QEvent::MouseButtonPress, where, Qt::LeftButton); }
    void moveTo(const QPointF& where) { mouse(QEvent::MouseMove, where, Qt::LeftButton); }
    void release(const QPointF& where, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        mouse(QEvent::MouseButtonRelease, where, Qt::LeftButton, modifiers);
    }
    void drag(const QPointF& from, const QPointF& to, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        press(from);
        moveTo((from + to) / 2.0);
        moveTo(to);
        release(to, modifiers);
    }
    void click(const QPointF& where)
    {
        press(where);
        release(where);
    }
    void key(Qt::Key key)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(m_view, &event);
    }
    QStringList selected() const
    {
        QStringList names;
        for (const CModelElementManager* manager : m_window->project().getModel()->getItemManagers())
            for (const CModelElement* element : manager->getItems())
                if (element->isHighlighted()) names.append(element->getName());
        names.sort();
        return names;
    }
    Fence3dItem& fence() const { return *Fence3dItem::find(m_window->project().getModel()); }
    bool contains(double x, double y, double z) const
    {
        return fence().getFence() && fence().getFence()->contains(townBase + glm::dvec3(x, y, z));
    }
    QImage grab()
    {
        settle();
        return m_view->grabFramebuffer();
    }
    QString status() const { return m_window->statusBar()->currentMessage(); }

    static std::unique_ptr<Host> s_host;
    std::unique_ptr<MainWindow> m_window;
    View3dWidget* m_view = nullptr;
    std::unique_ptr<GlDebug> m_debug;
};

std::unique_ptr<Host> WindowTools::s_host;

// --- selection

TEST_F(WindowTools, RectangleSelectsAddsAndTakesOut)
{
    trigger("selectByRectangle");
    EXPECT_TRUE(status().startsWith("Drag a rectangle")) << qPrintable(status());
    const CCamera camera = m_view->viewpoint().camera();
    drag(place(-6, 0, 2), place(-2, 0, -2));
    EXPECT_EQ(selected(), QStringList("left"));
    EXPECT_EQ(status(), "1 element is selected");
    drag(place(2, 0, 2), place(6, 0, -2), Qt::ShiftModifier);
    EXPECT_EQ(selected(), QStringList({"left", "right"}));
    EXPECT_EQ(status(), "2 elements are selected");
    drag(place(-6, 0, 2), place(-2, 0, -2), Qt::ControlModifier);
    EXPECT_EQ(selected(), QStringList("right"));
    drag(place(-2, 0, 2), place(2, 0, -2));
    EXPECT_EQ(selected(), QStringList({"hidden", "middle"}));
    trigger("selectNothing");
    EXPECT_EQ(selected(), QStringList());
    EXPECT_EQ(m_view->viewpoint().camera().getPosition(), camera.getPosition()); // nothing has moved
}

TEST_F(WindowTools, SketchShowsOverTheViewWhileItIsDrawn)
{
    const auto shown = [this] {
        settle();
        return m_view->grab().toImage();
    };
    trigger("selectByRectangle");
    const QImage before = shown();
    press(QPointF(100, 80));
    moveTo(QPointF(300, 120));
    const QImage sketch = shown();
    saveTestImage("window_sketch", sketch);
    for (const QPoint pixel :
         {QPoint(200, 80), QPoint(200, 119), QPoint(100, 100), QPoint(299, 100), QPoint(200, 100)})
        EXPECT_NE(sketch.pixel(pixel), before.pixel(pixel)) << pixel.x() << "," << pixel.y();
    for (const QPoint pixel : {QPoint(200, 70), QPoint(200, 130), QPoint(90, 100), QPoint(310, 100)})
        EXPECT_EQ(sketch.pixel(pixel), before.pixel(pixel)) << pixel.x() << "," << pixel.y();
    key(Qt::Key_Escape);
    EXPECT_EQ(shown(), before);
}

TEST_F(WindowTools, SwitchesSayWhatCounts)
{
    trigger("selectByRectangle");
    trigger("selectVisible");
    drag(place(-2, 0, 2), place(2, 0, -2));
    EXPECT_EQ(selected(), QStringList("middle"));
    drag(place(-2, 0, 2), place(4, 0, -2));
    EXPECT_EQ(selected(), QStringList({"middle", "right"}));
    trigger("selectInside");
    drag(place(-2, 0, 2), place(4, 0, -2));
    EXPECT_EQ(selected(), QStringList("middle"));
    click(place(4, 0, 0)); // lies nowhere wholly in so small an area
    EXPECT_EQ(selected(), QStringList());
    trigger("selectInside");
    click(place(4, 0, 0));
    EXPECT_EQ(selected(), QStringList("right"));
}

TEST_F(WindowTools, PolygonSelectsByClicksAndAsALasso)
{
    trigger("selectByPolygon");
    // round the outer squares, above the middle one
    for (const auto& corner :
         {std::pair(-6.0, 3.0), {6.0, 3.0}, {6.0, -2.0}, {2.0, -2.0}, {2.0, 2.0}, {-2.0, 2.0}, {-2.0, -2.0}})
        click(place(corner.first, 0, corner.second));
    const QPointF last = place(-6, 0, -2);
    click(last);
    mouse(QEvent::MouseButtonDblClick, last, Qt::LeftButton);
    release(last);
    EXPECT_EQ(selected(), QStringList({"left", "right"}));

    press(place(2, 0, 2));
    for (const auto& corner : {std::pair(6.0, 2.0), {6.0, -2.0}, {2.0, -2.0}})
        moveTo(place(corner.first, 0, corner.second));
    release(place(2, 0, 0));
    EXPECT_EQ(selected(), QStringList("right"));
}

TEST_F(WindowTools, EscapeGivesUpTheAreaAndThenTheTool)
{
    trigger("selectByRectangle");
    auto* action = m_window->findChild<QAction*>("selectByRectangle");
    press(place(-6, 0, 2));
    moveTo(place(6, 0, -2));
    key(Qt::Key_Escape);
    release(place(6, 0, -2));
    EXPECT_EQ(selected(), QStringList());
    EXPECT_TRUE(action->isChecked());
    EXPECT_TRUE(m_view->tools().tool());
    key(Qt::Key_Escape);
    EXPECT_FALSE(action->isChecked());
    EXPECT_FALSE(m_view->tools().tool());
    const glm::dvec3 before = m_view->viewpoint().camera().getDirection();
    drag(place(0, 0, 0), place(2, 0, 0)); // orbits again
    EXPECT_GT(glm::distance(m_view->viewpoint().camera().getDirection(), before), 0.05);
}

TEST_F(WindowTools, OneToolTakesThePlaceOfTheOther)
{
    trigger("selectByRectangle");
    trigger("fenceBySphere");
    EXPECT_FALSE(m_window->findChild<QAction*>("selectByRectangle")->isChecked());
    EXPECT_TRUE(m_window->findChild<QAction*>("fenceBySphere")->isChecked());
    trigger("fenceBySphere");
    EXPECT_FALSE(m_view->tools().tool());
}

// --- fences

TEST_F(WindowTools, PolygonFencesInBothProjections)
{
    for (const auto type : {IProjection::Central, IProjection::Parallel}) {
        m_view->setProjectionType(type);
        m_window->setWindowModified(false);
        EXPECT_GT(countPixels(grab(), isBlue), 500);
        trigger("fenceByPolygon");
        for (const auto& corner : {std::pair(-6.0, 3.0), {2.0, 3.0}, {2.0, -3.0}}) {
            mouse(QEvent::MouseMove, place(corner.first, 0, corner.second), Qt::NoButton);
            click(place(corner.first, 0, corner.second));
        }
        mouse(QEvent::MouseMove, place(-6, 0, -3), Qt::NoButton);
        EXPECT_TRUE(fence().isInteractionMode()); // grey, while it is drawn
        EXPECT_TRUE(contains(0, 0, 0));
        EXPECT_EQ(countPixels(grab(), isBlue), 0);
        EXPECT_FALSE(m_window->isWindowModified());
        click(place(-6, 0, -3));
        key(Qt::Key_Return);
        EXPECT_FALSE(fence().isInteractionMode());
        EXPECT_FALSE(m_view->tools().tool());
        EXPECT_TRUE(m_window->isWindowModified());
        EXPECT_EQ(fence().getFenceType(), type == IProjection::Central ? 1 : 3);
        for (const double x : {-4.9, -3.1, 0.0, 0.9})
            EXPECT_TRUE(contains(x, 0, 0.5)) << x;
        EXPECT_TRUE(contains(0, 9, 0.5)); // as far as anything is
        EXPECT_FALSE(contains(3.1, 0, 0.5));
        const QImage image = grab();
        saveTestImage("window_fence", image);
        EXPECT_EQ(countPixels(image, isBlue), 0);

        trigger("selectByRectangle");
        drag(place(-8, 0, 6), place(8, 0, -6));
        EXPECT_EQ(selected(), QStringList({"hidden", "left", "middle"}));
        trigger("selectNothing");
        key(Qt::Key_Escape);
        trigger("fenceRemove");
        EXPECT_TRUE(fence().empty());
        EXPECT_EQ(status(), "There is no fence now");
    }
}

TEST_F(WindowTools, SphereFencesAboutThePointThatIsPressed)
{
    trigger("fenceBySphere");
    press(place(4, 0, 0));
    moveTo(place(5, 0, 0));
    EXPECT_TRUE(fence().isInteractionMode());
    moveTo(place(6, 0, 0));
    release(place(6, 0, 0));
    EXPECT_FALSE(fence().isInteractionMode());
    const auto* sphere = dynamic_cast<const SphereFence*>(fence().getFence().get());
    ASSERT_TRUE(sphere);
    const double pixel = 2.0 / (place(6, 0, 0).x() - place(4, 0, 0).x()); // model units
    EXPECT_LT(glm::distance(sphere->getCenter(), townBase + glm::dvec3(4, 0, 0)), 3.0 * pixel);
    EXPECT_NEAR(sphere->getRadius(), 2.0, 3.0 * pixel);
    EXPECT_GT(countPixels(grab(), isBlue), 500);
}

TEST_F(WindowTools, EscapeBringsTheFormerFenceBack)
{
    trigger("fenceBySphere");
    drag(place(4, 0, 0), place(6, 0, 0));
    const auto radius = [this] { return static_cast<const SphereFence&>(*fence().getFence()).getRadius(); };
    const double before = radius();
    trigger("fenceByPolygon");
    click(place(-6, 0, 3));
    click(place(-2, 0, 3));
    mouse(QEvent::MouseMove, place(-2, 0, -3), Qt::NoButton);
    EXPECT_EQ(fence().getFenceType(), 1);
    key(Qt::Key_Escape);
    EXPECT_FALSE(fence().isInteractionMode());
    ASSERT_EQ(fence().getFenceType(), 2);
    EXPECT_EQ(radius(), before);
}

TEST_F(WindowTools, NodePointsOfAFenceCanBeDragged)
{
    trigger("fenceBySphere");
    drag(place(4, 0, 0), place(6, 0, 0));
    const auto sphere = [this] { return static_cast<const SphereFence&>(*fence().getFence()); };
    const double radius = sphere().getRadius();
    const glm::dvec3 center = sphere().getCenter();
    const auto nodeAt = [&](double distance) {
        const glm::dvec3 from = center - townBase;
        return place(from.x + distance, from.y, from.z);
    };
    const double pixel = radius / (nodeAt(radius).x() - nodeAt(0).x()); // model units
    const glm::dvec3 eye = m_view->viewpoint().camera().getPosition();

    drag(nodeAt(radius), nodeAt(radius / 2.0));
    EXPECT_NEAR(sphere().getRadius(), radius / 2.0, 3.0 * pixel);
    EXPECT_EQ(m_view->viewpoint().camera().getPosition(), eye);
    EXPECT_FALSE(fence().isInteractionMode());

    drag(nodeAt(0.0), nodeAt(-1.0));
    EXPECT_LT(glm::distance(sphere().getCenter(), center - glm::dvec3(1.0, 0.0, 0.0)), 3.0 * pixel);

    const glm::dvec3 moved = sphere().getCenter();
    press(nodeAt(-1.0));
    moveTo(nodeAt(1.0));
    EXPECT_TRUE(fence().isInteractionMode());
    EXPECT_GT(glm::distance(sphere().getCenter(), moved), 1.0);
    key(Qt::Key_Escape);
    release(nodeAt(1.0));
    EXPECT_EQ(sphere().getCenter(), moved);
    EXPECT_FALSE(fence().isInteractionMode());
}

// What lies before everything else to be seen is nowhere in the scene: the mouse takes what is behind it.
TEST_F(WindowTools, PointsAreTakenFromBehindTheFencesOwnPoints)
{
    trigger("fenceBySphere");
    drag(place(4, 0, 0), place(4.6, 0, 0));
    const auto& sphere = static_cast<const SphereFence&>(*fence().getFence());
    const glm::dvec3 onSurface = sphere.getCenter() + glm::dvec3(sphere.getRadius(), 0.0, 0.0);
    const double pixel = 2.0 / (place(5, 0, 0).x() - place(3, 0, 0).x()); // model units
    for (const glm::dvec3& node : {sphere.getCenter(), onSurface}) {
        const glm::dvec3 at = node - townBase;
        const glm::dvec3 taken = m_window->scene().mapToModel(m_view->pointAt(place(at.x, at.y, at.z)));
        EXPECT_LT(glm::distance(taken, node), 3.0 * pixel);
    }
}

// Seen from the side, the near plane's point goes along the line of sight of the drawing.
TEST_F(WindowTools, EndPlanesOfAFrustumCanBeDragged)
{
    trigger("fenceByPolygon");
    for (const auto& corner : {std::pair(-6.0, 3.0), {6.0, 3.0}, {6.0, -3.0}, {-6.0, -3.0}})
        click(place(corner.first, 0, corner.second));
    key(Qt::Key_Return);
    EXPECT_TRUE(contains(0, 9, 0));
    m_view->showFrom(StandardView::Right);
    const auto& frustum = static_cast<const Frustum3D&>(*fence().getFence());
    const double zFar = frustum.zFar();
    const auto node = [&](std::size_t i) {
        const glm::dvec3 at = frustum.getNodes()[i] - townBase;
        return place(at.x, at.y, at.z);
    };
    const QPointF end = node(1);
    drag(end, place(0, 5, 0));
    EXPECT_FALSE(contains(0, 9, 0));
    EXPECT_TRUE(contains(0, 4, 0));
    EXPECT_LT(frustum.zFar(), zFar);
    EXPECT_NEAR(node(1).x(), place(0, 5, 0).x(), 4.0);
}

TEST_F(WindowTools, FenceIsKeptWithTheProject)
{
    trigger("fenceBySphere");
    drag(place(4, 0, 0), place(6, 0, 0));
    ASSERT_TRUE(m_window->saveProject(path("saved.v3d")));
    m_window->newProject();
    EXPECT_TRUE(fence().empty());
    m_window->openFiles({path("saved.v3d")});
    EXPECT_EQ(fence().getFenceType(), 2);
    EXPECT_GT(countPixels(grab(), isBlue), 500);
    EXPECT_EQ(countPixels(grab(), [](QRgb p) { return qRed(p) > 100 && qGreen(p) < 60; }) > 400, false);
}
