#include "ViewerProcess.h"

#include "../../support/GlDebug.h"
#include "../../support/ImageCheck.h"
#include "../../support/LogTrap.h"

#include <viewer/Host.h>
#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/ViewpointElement.h>
#include <viewer/window/LoadingBar.h>
#include <viewer/window/MainWindow.h>
#include <viewer/window/MessageDock.h>
#include <viewer/window/View3dWidget.h>

#include <Viewer3dModule/enums/TypeIds.h>
#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/CommonError.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QMimeData>
#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtCore/QUrl>
#include <QtGui/QMouseEvent>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QPushButton>

namespace {

const QByteArray pyramid =
    "o base\nv 2700000 1200000 400 0.9 0.2 0.1\nv 2700010 1200000 400 0.9 0.2 0.1\n"
    "v 2700010 1200010 400 0.2 0.4 0.9\nv 2700000 1200010 400 0.2 0.4 0.9\n"
    "v 2700005 1200005 408 0.9 0.9 0.1\nf 1 2 5\nf 2 3 5\nf 3 4 5\nf 4 1 5\nf 4 3 2 1\n";

} // namespace

/// The window driven through the events that a user causes.
class Window : public ViewerTest
{
protected:
    static void SetUpTestSuite() { s_host = std::make_unique<Host>(Host::Settings::InMemory); }
    static void TearDownTestSuite() { s_host.reset(); }

    void SetUp() override
    {
        ViewerTest::SetUp();
        makeWindow();
    }
    void makeWindow()
    {
        m_window = std::make_unique<MainWindow>(*s_host);
        m_window->resize(QSize(800, 600) / m_window->devicePixelRatioF()); // as many pixels at any scale
        m_window->show();
        settle();
        m_view = &m_window->view();
        ASSERT_TRUE(m_view->isValid());
        m_view->makeCurrent();
        m_debug = std::make_unique<GlDebug>(*m_view->context());
        m_view->doneCurrent();
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
    QImage grab()
    {
        settle();
        return m_view->grabFramebuffer();
    }
    void openPyramid()
    {
        m_window->openFiles({write("pyramid.obj", pyramid)});
        settle();
    }
    QPointF middle() const { return QPointF(m_view->width() / 2.0, m_view->height() / 2.0); }
    void mouse(QEvent::Type type, const QPointF& place, Qt::MouseButton button,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : button;
        QMouseEvent event(type, place, type == QEvent::MouseMove ? Qt::NoButton : button, held, modifiers);
        QCoreApplication::sendEvent(m_view, &event);
    }
    void drag(const QPointF& from, const QPointF& to, Qt::MouseButton button,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        mouse(QEvent::MouseButtonPress, from, button, modifiers);
        mouse(QEvent::MouseMove, (from + to) / 2.0, button, modifiers);
        mouse(QEvent::MouseMove, to, button, modifiers);
        mouse(QEvent::MouseButtonRelease, to, button, modifiers);
    }
    void wheel(const QPointF& place, int delta)
    {
        QWheelEvent event(place, m_view->mapToGlobal(place.toPoint()), QPoint(), QPoint(0, delta),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(m_view, &event);
    }
    /// What a pixel covers at the point, scene units; larger on surfaces that are seen at a slant.
    double pixelAt(const glm::dvec3& point) const
    {
        return 2.0 * m_view->viewpoint().unitsPerPixel(m_view->viewpoint().depthOf(point), m_view->size());
    }
    static int drawn(const QImage& image)
    {
        return countPixels(image, [](QRgb p) { return p != qRgb(192, 192, 192); });
    }
    int elements() const { return m_window->project().getModel()->getElementsCount(); }

    /// A file that takes long enough to be cancelled.
    QString writeBig() const
    {
        QByteArray big = pyramid;
        for (int i = 0; i < 400'000; ++i)
            big += "f 1 2 5\n";
        return write("big.obj", big);
    }

    static std::unique_ptr<Host> s_host;
    std::unique_ptr<MainWindow> m_window;
    View3dWidget* m_view = nullptr;
    std::unique_ptr<GlDebug> m_debug;
};

std::unique_ptr<Host> Window::s_host;

TEST_F(Window, IsEmptyAtFirst)
{
    EXPECT_EQ(drawn(grab()), 0);
}

TEST_F(Window, ShowsAnOpenedFileWhole)
{
    openPyramid();
    const QImage image = grab();
    saveTestImage("window_pyramid", image);
    EXPECT_GT(drawn(image), image.width() * image.height() / 10);
    for (int x = 0; x < image.width(); ++x) {
        EXPECT_EQ(image.pixel(x, 0), qRgb(192, 192, 192));
        EXPECT_EQ(image.pixel(x, image.height() - 1), qRgb(192, 192, 192));
    }
}

TEST_F(Window, ShowsPointsInTheSizeThatIsAskedFor)
{
    TearDown();
    s_host->setPointSize(40.0f);
    makeWindow();
    s_host->setPointSize({});
    m_window->openFiles({write("point.ply", "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\n"
                                            "property float y\nproperty float z\nend_header\n1 2 3\n")});
    EXPECT_NEAR(std::sqrt(drawn(grab())), 40.0, 1.0); // the edges need not lie between pixels
}

TEST_F(Window, ShowsTheSamples)
{
    m_window->openFiles(sampleFiles());
    const QImage image = grab();
    saveTestImage("window_town", image);
    EXPECT_GT(drawn(image), image.width() * image.height() / 4);
    EXPECT_EQ(m_window->messages().text(), "");
    saveTestImage("window_whole", m_window->grab().toImage());
}

TEST_F(Window, WheelZoomsToTheCursorInBothProjections)
{
    openPyramid();
    for (const auto type : {IProjection::Central, IProjection::Parallel}) {
        m_view->setProjectionType(type);
        m_view->showFrom(StandardView::Iso);
        const int before = drawn(grab());
        const QPointF cursor = middle() + QPointF(20, 30);
        const glm::dvec3 point = m_view->pointAt(cursor);
        wheel(cursor, 240);
        EXPECT_GT(drawn(grab()), before * 5 / 4);
        // the same point of the model is still under the cursor
        EXPECT_LT(glm::distance(m_view->pointAt(cursor), point), pixelAt(point));
        wheel(cursor, -480);
        EXPECT_LT(drawn(grab()), before);
    }
}

TEST_F(Window, LeftDragOrbitsAboutThePointUnderTheCursor)
{
    openPyramid();
    const QPointF start = middle() + QPointF(10, 20);
    const glm::dvec3 point = m_view->pointAt(start);
    const QImage before = grab();
    const glm::dvec3 direction = m_view->viewpoint().camera().getDirection();
    drag(start, start + QPointF(40, 10), Qt::LeftButton);
    EXPECT_GT(glm::distance(m_view->viewpoint().camera().getDirection(), direction), 0.1);
    EXPECT_NE(grab(), before);
    EXPECT_LT(glm::distance(m_view->pointAt(start), point), 2.0 * pixelAt(point));
}

TEST_F(Window, OrbitRaisesTheEyeWhenDraggedDown)
{
    openPyramid();
    const double before = m_view->viewpoint().camera().getDirection().z;
    drag(middle(), middle() + QPointF(0, 40), Qt::LeftButton);
    EXPECT_LT(m_view->viewpoint().camera().getDirection().z, before);
}

TEST_F(Window, MiddleRightAndShiftDragPan)
{
    openPyramid();
    const auto pan = [&](Qt::MouseButton button, Qt::KeyboardModifiers modifiers) {
        m_view->showFrom(StandardView::Front);
        const glm::dvec3 point = m_view->pointAt(middle());
        const glm::dvec3 direction = m_view->viewpoint().camera().getDirection();
        drag(middle(), middle() + QPointF(60, 40), button, modifiers);
        EXPECT_EQ(m_view->viewpoint().camera().getDirection(), direction);
        EXPECT_LT(glm::distance(m_view->pointAt(middle() + QPointF(60, 40)), point), 3.0 * pixelAt(point));
    };
    pan(Qt::MiddleButton, Qt::NoModifier);
    pan(Qt::RightButton, Qt::NoModifier);
    pan(Qt::LeftButton, Qt::ShiftModifier);
}

TEST_F(Window, DragBesideEverythingTurnsAboutTheMiddle)
{
    openPyramid();
    drag(QPointF(3, 3), QPointF(40, 3), Qt::LeftButton);
    EXPECT_GT(drawn(grab()), 0);
    EXPECT_TRUE(std::isfinite(m_view->viewpoint().camera().getPosition().x));
}

TEST_F(Window, StandardViewsAndFitAllShowEverything)
{
    openPyramid();
    for (int view = 0; view < 7; ++view) {
        m_view->showFrom(static_cast<StandardView>(view));
        EXPECT_GT(drawn(grab()), 10'000) << view;
    }
    for (int i = 0; i < 12; ++i)
        wheel(QPointF(5, 5), -480);
    EXPECT_LT(drawn(grab()), 10'000);
    m_view->fitAll();
    EXPECT_GT(drawn(grab()), 10'000);
}

TEST_F(Window, ProjectionActionFollowsTheView)
{
    auto* action = m_window->findChild<QAction*>("parallelProjection");
    ASSERT_TRUE(action);
    action->trigger();
    EXPECT_TRUE(m_view->viewpoint().isParallel());
    m_view->setProjectionType(IProjection::Central);
    EXPECT_FALSE(action->isChecked());
}

TEST_F(Window, EyeDomeLightingIsChosenInTheMenu)
{
    m_window->resize(500, 400);
    openPyramid();
    const QImage plain = grab();
    const auto choose = [this](const char* name) {
        auto* action = m_window->findChild<QAction*>(QString("eyeDome_") + name);
        ASSERT_TRUE(action) << name;
        action->trigger();
        EXPECT_TRUE(action->isChecked());
    };
    const auto darkened = [&](const QImage& image) {
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                count += qGray(image.pixel(x, y)) < qGray(plain.pixel(x, y));
        return count;
    };
    choose("negative");
    const QImage negative = grab();
    EXPECT_GT(darkened(negative), 1000);
    EXPECT_EQ(negative.pixel(2, 2), plain.pixel(2, 2));
    choose("positive");
    EXPECT_GT(darkened(grab()), 1000);
    EXPECT_NE(grab(), negative);
    m_view->setEyeDomeShading(EyeDomeShading::Off);
    EXPECT_TRUE(m_window->findChild<QAction*>("eyeDome_off")->isChecked());
    EXPECT_EQ(grab(), plain);
}

TEST_F(Window, DroppedFilesOpen)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(write("pyramid.obj", pyramid))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_view, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_view, &drop);
    EXPECT_EQ(elements(), 1);
}

TEST_F(Window, BadFileIsTheOnlyOneLeftOut)
{
    m_window->openFiles({path("none.obj"), write("pyramid.obj", pyramid)});
    settle();
    EXPECT_EQ(elements(), 1);
    EXPECT_EQ(LogTrap::take(), QStringList(path("none.obj") + ": there is no such file"));
    EXPECT_EQ(m_window->messages().text(), path("none.obj") + ": there is no such file");
    EXPECT_TRUE(m_window->messages().isVisible());
}

TEST_F(Window, LoadingCanBeCancelled)
{
    auto* button = m_window->findChild<QPushButton*>("cancelLoading");
    ASSERT_TRUE(button);
    bool wasShown = false;
    EXPECT_THROW(m_window->loadingBar().run([&](ksp::StagedProgress progress) {
        wasShown = m_window->loadingBar().isVisible();
        QTimer::singleShot(0, button, &QPushButton::click);
        for (int i = 0; i <= 1000; ++i) {
            QThread::msleep(1);
            progress.setPercentage(i / 10.0);
            progress.throwIfCanceled();
        }
    }),
                 ksp::CommonError);
    EXPECT_TRUE(wasShown);
    EXPECT_FALSE(m_window->loadingBar().isVisible());
    EXPECT_FALSE(m_window->loadingBar().isRunning());
}

TEST_F(Window, CancelOfARealFileLeavesWhatIsOpen)
{
    openPyramid();
    const QString big = writeBig();
    auto* button = m_window->findChild<QPushButton*>("cancelLoading");
    QTimer::singleShot(0, button, &QPushButton::click);
    m_window->openFiles({big, path("pyramid.obj")});
    settle();
    EXPECT_EQ(elements(), 1);
    EXPECT_EQ(m_window->messages().text(), "Cancelled"); // once
    EXPECT_FALSE(m_window->loadingBar().isRunning());
    EXPECT_TRUE(m_window->menuBar()->isEnabled());
}

TEST_F(Window, ClosedWhileLoadingClosesAfterwards)
{
    const QString big = writeBig();
    QTimer::singleShot(0, m_window.get(), &QWidget::close);
    m_window->openFiles({big});
    settle();
    EXPECT_FALSE(m_window->isVisible());
    EXPECT_EQ(elements(), 0);
}

TEST_F(Window, FilesDroppedWhileLoadingComeAfterwards)
{
    const QString small = write("pyramid.obj", pyramid), big = writeBig();
    bool wasRunning = false;
    QTimer::singleShot(0, m_window.get(), [&] {
        wasRunning = m_window->loadingBar().isRunning();
        m_window->openFiles({small});
    });
    m_window->openFiles({big});
    EXPECT_TRUE(wasRunning);
    EXPECT_EQ(elements(), 2);
}

TEST_F(Window, LoadingHandlesEventsTwentyTimesASecondAtMost)
{
    int turns = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++turns; });
    timer.start(0);
    QElapsedTimer clock;
    clock.start();
    m_window->loadingBar().run([&](ksp::StagedProgress progress) {
        for (int i = 0; i <= 1000 && clock.elapsed() < 400; ++i) {
            progress.setPercentage(i / 10.0);
            QThread::usleep(300);
        }
    });
    EXPECT_GE(turns, 1);
    EXPECT_LE(turns, clock.elapsed() / 50 + 2);
}

TEST_F(Window, TitleNamesTheProjectAndMarksChanges)
{
    EXPECT_FALSE(m_window->isWindowModified());
    openPyramid();
    EXPECT_TRUE(m_window->isWindowModified());
    EXPECT_EQ(m_window->windowTitle(), "New project[*] - viewer3d");
    ASSERT_TRUE(m_window->saveProject(path("town.v3d")));
    EXPECT_FALSE(m_window->isWindowModified());
    EXPECT_EQ(m_window->windowTitle(), "town.v3d[*] - viewer3d");
    m_window->openFiles({write("other.obj", pyramid)});
    EXPECT_TRUE(m_window->isWindowModified());
    m_window->openFiles({path("town.v3d")});
    EXPECT_FALSE(m_window->isWindowModified());
    m_window->newProject();
    EXPECT_FALSE(m_window->isWindowModified());
    EXPECT_EQ(m_window->windowTitle(), "New project[*] - viewer3d");
}

TEST_F(Window, AsksBeforeWhatWasNotSavedIsLost)
{
    int asked = 0;
    bool mayDiscard = false;
    m_window->setDiscardQuestion([&] {
        ++asked;
        return mayDiscard;
    });
    openPyramid();
    ASSERT_TRUE(m_window->saveProject(path("saved.v3d")));
    m_window->newProject();
    EXPECT_EQ(asked, 0);

    m_window->openFiles({path("pyramid.obj")});
    EXPECT_EQ(asked, 0); // adds to what is open
    m_window->openFiles({path("saved.v3d")});
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(elements(), 1);
    EXPECT_FALSE(m_window->close());
    EXPECT_EQ(asked, 2);
    mayDiscard = true;
    m_window->openFiles({path("saved.v3d")});
    EXPECT_EQ(asked, 3);
    EXPECT_EQ(elements(), 2);
    EXPECT_TRUE(m_window->close()); // nothing is unsaved now
    EXPECT_EQ(asked, 3);
}

TEST_F(Window, MessagesFromBeforeTheWindowShowInIt)
{
    qputenv("VIEWER3D_PLUGIN_PATH", path(".").toLocal8Bit());
    write("libbroken.so", "no library");
    m_window.reset(); // one application object at a time
    s_host.reset();
    s_host = std::make_unique<Host>(Host::Settings::InMemory);
    EXPECT_EQ(LogTrap::take().size(), 1);
    qunsetenv("VIEWER3D_PLUGIN_PATH");
    m_window = std::make_unique<MainWindow>(*s_host);
    m_view = &m_window->view();
    m_window->show();
    settle();
    EXPECT_TRUE(
        m_window->messages().text().contains("libbroken.so: plug-in not loaded: not a shared library"))
        << qPrintable(m_window->messages().text());
    m_window.reset();
    s_host.reset();
    s_host = std::make_unique<Host>(Host::Settings::InMemory);
    makeWindow();
}

// A widget that changes its window may get another context; vertex array objects do not come along.
TEST_F(Window, ViewSurvivesAnotherWindowAndAnotherContext)
{
    openPyramid();
    const int before = drawn(grab());
    for (const bool isShared : {true, false}) {
        m_view->makeCurrent();
        m_debug.reset();
        m_view->doneCurrent();
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, isShared);
        const QPointer<QOpenGLContext> former = m_view->context();
        QMainWindow other;
        other.resize(m_window->size());
        other.setCentralWidget(m_view);
        other.show();
        settle();
        EXPECT_EQ(m_view->context() == former, isShared);
        EXPECT_GT(drawn(grab()), before / 2);
        m_window->setCentralWidget(m_view);
        settle();
        // Qt forgets to ask for smooth edges the second time
        EXPECT_NEAR(drawn(grab()), before, isShared ? 0 : before / 100);
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
        m_view->makeCurrent();
        m_debug = std::make_unique<GlDebug>(*m_view->context());
        m_view->doneCurrent();
    }
}

TEST_F(Window, ViewOutlivesItsScene)
{
    const auto project = s_host->createProject();
    auto scene = s_host->createScene(*project);
    View3dWidget view(*scene);
    view.resize(300, 200);
    view.show();
    settle();
    scene.reset();
    view.update();
    view.fitAll();
    view.showFrom(StandardView::Top);
    view.pointAt(QPointF(20, 20));
    EXPECT_TRUE(view.picture().isNull());
    settle();
    QWheelEvent wheel(QPointF(9, 9), QPointF(9, 9), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&view, &wheel);
    EXPECT_TRUE(std::isfinite(view.viewpoint().camera().getPosition().x));
}

// What pixels of the screen and of the window have to do with: places under the cursor, widths, sizes. In
// another process, because the factor holds for a whole application.
TEST(WindowScaled, WorksOnScreensOfHighResolution)
{
    const ViewerRun run = runProgram(
        QCoreApplication::applicationFilePath(),
        {"--gtest_filter=Window.ShowsPoints*:Window.Wheel*:Window.LeftDrag*:Window.*DragPan:Window.Picture*:"
         "Window.Resized*"},
        {{"QT_SCALE_FACTOR", "2"}, {"GTEST_TOTAL_SHARDS", {}}, {"GTEST_SHARD_INDEX", {}}});
    EXPECT_EQ(run.status, 0) << run.out.constData();
    EXPECT_TRUE(run.out.contains("[  PASSED  ] 6 tests")) << run.out.constData();
}

TEST_F(Window, ProjectComesBackWithElementsViewsAndLight)
{
    m_window->resize(500, 400);
    openPyramid();
    auto* light = static_cast<Scene3dViewLightingSettings*>(
        m_window->project().getProjectSettings(TypeIds::LightingSettings));
    ASSERT_TRUE(light);
    light->data("").azimuth = 2.5f;
    m_view->setProjectionType(IProjection::Parallel);
    m_view->setEyeDomeShading(EyeDomeShading::Positive);
    drag(middle(), middle() + QPointF(70, 30), Qt::LeftButton);
    const QImage before = grab();
    ASSERT_TRUE(m_window->saveProject(path("saved.v3d")));

    m_window->newProject();
    EXPECT_EQ(drawn(grab()), 0);
    m_view->setProjectionType(IProjection::Central);
    m_view->setEyeDomeShading(EyeDomeShading::Off);
    m_window->openFiles({path("saved.v3d")});
    EXPECT_EQ(elements(), 2); // the mesh and the view
    EXPECT_EQ(m_view->eyeDomeShading(), EyeDomeShading::Positive);
    EXPECT_TRUE(m_view->viewpoint().isParallel());
    light = static_cast<Scene3dViewLightingSettings*>(
        m_window->project().getProjectSettings(TypeIds::LightingSettings));
    EXPECT_EQ(light->data("").azimuth, 2.5f);
    checkImage("window_reopened", grab(), before, {2, 40}); // float matrices of another transform
}

TEST_F(Window, ProjectThatMovedWithItsFilesOpens)
{
    openPyramid();
    ASSERT_TRUE(m_window->saveProject(path("saved.v3d")));
    QDir folder(path("."));
    ASSERT_TRUE(folder.mkdir("elsewhere"));
    ASSERT_TRUE(folder.rename("saved.v3d", "elsewhere/saved.v3d"));
    ASSERT_TRUE(folder.rename("pyramid.obj", "elsewhere/pyramid.obj"));
    m_window->newProject();
    m_window->openFiles({path("elsewhere/saved.v3d")});
    EXPECT_GT(drawn(grab()), 1000);
}

TEST_F(Window, ProjectWhoseFileIsGoneSaysSoAndOpensTheRest)
{
    openPyramid();
    m_window->openFiles({write("other.obj", pyramid)});
    ASSERT_TRUE(m_window->saveProject(path("saved.v3d")));
    QFile::remove(path("pyramid.obj"));
    m_window->newProject();
    m_window->openFiles({path("saved.v3d")});
    EXPECT_EQ(LogTrap::take(), QStringList(path("pyramid.obj") + ": there is no such file"));
    EXPECT_EQ(elements(), 3);
    EXPECT_GT(drawn(grab()), 1000);
}

TEST_F(Window, DamagedProjectLeavesWhatIsOpen)
{
    openPyramid();
    m_window->openFiles({write("bad.v3d", "V3DA nothing")});
    EXPECT_EQ(LogTrap::take().size(), 1);
    EXPECT_EQ(elements(), 1);
    EXPECT_GT(drawn(grab()), 1000);
}

TEST_F(Window, PictureOfTheViewIsWhatTheViewShows)
{
    m_window->resize(QSize(500, 400) / m_window->devicePixelRatioF());
    openPyramid();
    for (const EyeDomeShading shading : {EyeDomeShading::Off, EyeDomeShading::Negative}) {
        m_view->setEyeDomeShading(shading);
        ASSERT_TRUE(m_window->savePicture(path("view.png")));
        checkImage("window_picture", QImage(path("view.png")), grab().convertToFormat(QImage::Format_RGB32),
                   {2, 10});
    }
    EXPECT_FALSE(m_window->savePicture(path("nowhere/view.png")));
    EXPECT_EQ(LogTrap::take().size(), 1);
}

TEST_F(Window, NothingIsSavedOverAFileThatIsShown)
{
    openPyramid();
    ASSERT_TRUE(QFile::link(path("pyramid.obj"), path("link.png")));
    for (const bool isPicture : {true, false}) {
        EXPECT_FALSE(isPicture ? m_window->savePicture(path("link.png"))
                               : m_window->saveProject(path("pyramid.obj")));
        const QStringList lines = LogTrap::take();
        ASSERT_EQ(lines.size(), 1);
        EXPECT_TRUE(lines[0].endsWith("it is one of the files that are read")) << qPrintable(lines[0]);
        EXPECT_EQ(read("pyramid.obj"), pyramid);
    }
}

// The scene recentres itself when far more comes in: what was looked at must not jump.
TEST_F(Window, SceneThatMovesItsCoordinatesKeepsTheView)
{
    openPyramid();
    const QImage before = grab();
    const glm::dmat4 transform = m_window->scene().modelToSceneTransform();
    m_window->openFiles({write("far.geojson", R"({"type":"Feature","properties":{},"geometry":{"type":"Point",
        "coordinates":[2790000,1290000,400]}})")});
    const QImage after = grab();
    EXPECT_NE(m_window->scene().modelToSceneTransform(), transform);
    checkImage("window_recentred", after, before,
               {24, 400}); // 90 km in single precision: edges move by part of a pixel
}

TEST_F(Window, ResizedWindowKeepsItsProportions)
{
    openPyramid();
    m_view->showFrom(StandardView::Top);
    m_window->resize(500, 700);
    settle();
    m_view->fitAll();
    const QImage image = grab();
    EXPECT_EQ(image.size(), m_view->size() * m_view->devicePixelRatio());
    int width = 0, height = 0;
    for (int x = 0; x < image.width(); ++x)
        width += image.pixel(x, image.height() / 2) != qRgb(192, 192, 192);
    for (int y = 0; y < image.height(); ++y)
        height += image.pixel(image.width() / 2, y) != qRgb(192, 192, 192);
    EXPECT_NEAR(static_cast<double>(width) / height, 1.0, 0.05);
}
