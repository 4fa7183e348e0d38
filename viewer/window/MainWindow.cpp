#include <viewer/window/MainWindow.h>

#include <viewer/ElementSummary.h>
#include <viewer/FileOpener.h>
#include <viewer/Host.h>
#include <viewer/InputFiles.h>
#include <viewer/ModelFolder.h>
#include <viewer/OutputFile.h>
#include <viewer/PictureFile.h>
#include <viewer/elements/BatchedDrawers.h>
#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/LabelDrawer.h>
#include <viewer/elements/ViewpointElement.h>
#include <viewer/printable.h>
#include <viewer/window/ElementSelection.h>
#include <viewer/window/FenceEditor.h>
#include <viewer/window/FenceMenu.h>
#include <viewer/window/LoadingBar.h>
#include <viewer/window/MessageDock.h>
#include <viewer/window/SelectionBoxes.h>
#include <viewer/window/SelectionMenu.h>
#include <viewer/window/View3dWidget.h>

#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/Canceled.h>
#include <framework/ksp/Log.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <QtCore/QFileInfo>
#include <QtGui/QCloseEvent>
#include <QtWidgets/QActionGroup>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QInputDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QStatusBar>

#include <algorithm>
#include <utility>

namespace {

/// The viewpoint that a project is saved with and opened at.
const QString currentView = QStringLiteral("Current view");

/// Runs work; an error becomes a line of the log. Returns whether all went well.
template <typename Work>
bool logged(const Work& work)
{
    try {
        work();
        return true;
    } catch (const ksp::Canceled&) {
        ksp::Log::info(QStringLiteral("Cancelled"));
    } catch (const std::exception& error) {
        ksp::Log::error(QString::fromUtf8(error.what()));
    }
    return false;
}

QString withSuffix(const QString& path, const QString& suffix)
{
    return QFileInfo(path).suffix().isEmpty() ? path + QLatin1Char('.') + suffix : path;
}

} // namespace

MainWindow::MainWindow(Host& host)
    : m_host(host)
    , m_messages(new MessageDock(this))
    , m_project(host.createProject())
    , m_scene(host.createScene(*m_project))
    , m_view(new View3dWidget(*m_scene, this))
    , m_loadingBar(new LoadingBar(this))
{
    LabelDrawer::addTo(*m_scene, QStringLiteral("name"));
    batched_drawers::addTo(*m_scene);
    m_scene->doneCurrent();
    for (const Host::Message& message : host.getStartMessages())
        m_messages->add(message.type, message.text);
    resize(1280, 800);
    setCentralWidget(m_view);
    addDockWidget(Qt::BottomDockWidgetArea, m_messages);
    statusBar()->addPermanentWidget(m_loadingBar);
    makeFileMenu();
    makeViewMenu();
    makeToolMenus();
    connect(m_view, &View3dWidget::filesDropped, this, &MainWindow::openFiles);
    m_view->showFrom(StandardView::Iso);
    m_host.application().extendGUI(this);
    connect(m_project->getModel(), &CProjectModel::elementsAdded, this, [this] { setWindowModified(true); });
    connect(m_project->getModel(), &CProjectModel::elementsRemoved, this,
            [this] { setWindowModified(true); });
    setProjectPath({});
}

// The view goes before the scene that it shows, and the scene before the project that it mirrors.
MainWindow::~MainWindow()
{
    m_project->getModel()->disconnect(this);
    delete m_view;
    m_scene.reset();
    m_project.reset();
}

QObject* MainWindow::getMainWindow() const
{
    return const_cast<MainWindow*>(this);
}

void MainWindow::makeFileMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&File"));
    menu->addAction(
        tr("&New"), this,
        [this] {
            if (mayDiscard()) newProject();
        },
        QKeySequence::New);
    menu->addAction(tr("&Open..."), this, &MainWindow::askForFiles, QKeySequence::Open);
    menu->addAction(tr("&Save project..."), this, &MainWindow::askWhereToSave, QKeySequence::Save);
    menu->addAction(tr("Save &picture..."), this, &MainWindow::askForPicture);
    menu->addSeparator();
    menu->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence::Quit);
}

void MainWindow::makeViewMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&View"));
    menu->addAction(tr("&Fit all"), m_view, &View3dWidget::fitAll, QKeySequence(Qt::Key_F));
    menu->addSeparator();
    const QStringList names = standardViewNames();
    for (int i = 0; i < names.size(); ++i)
        menu->addAction(
            tr("From %1").arg(names[i]), this, [this, i] { m_view->showFrom(static_cast<StandardView>(i)); },
            QKeySequence(Qt::Key_1 + i));
    menu->addSeparator();
    QAction* parallel = menu->addAction(tr("&Parallel projection"));
    parallel->setObjectName(QStringLiteral("parallelProjection"));
    parallel->setShortcut(QKeySequence(Qt::Key_P));
    parallel->setCheckable(true);
    connect(parallel, &QAction::triggered, this, [this](bool checked) {
        m_view->setProjectionType(checked ? IProjection::Parallel : IProjection::Central);
    });
    connect(m_view, &View3dWidget::projectionTypeChanged, parallel, &QAction::setChecked);
    addEyeDomeMenu(*menu);
    addLabelsAction(*menu);
    menu->addSeparator();
    menu->addAction(tr("&Keep this view..."), this, &MainWindow::addViewpoint);
    QMenu* kept = menu->addMenu(tr("Kept &views"));
    connect(kept, &QMenu::aboutToShow, this, [this, kept] { showViewpointMenu(*kept); });
    menu->addSeparator();
    menu->addAction(m_messages->toggleViewAction());
}

void MainWindow::addEyeDomeMenu(QMenu& menu)
{
    QMenu* choices = menu.addMenu(tr("&Eye-dome lighting"));
    auto* group = new QActionGroup(this);
    const QStringList names = eyeDomeShadingNames();
    for (int i = 0; i < names.size(); ++i) {
        const auto shading = static_cast<EyeDomeShading>(i);
        QAction* choice =
            choices->addAction(names[i], m_view, [this, shading] { m_view->setEyeDomeShading(shading); });
        choice->setObjectName(QStringLiteral("eyeDome_") + names[i]);
        choice->setCheckable(true);
        choice->setChecked(shading == m_view->eyeDomeShading());
        group->addAction(choice);
        connect(m_view, &View3dWidget::eyeDomeShadingChanged, choice,
                [choice, shading](EyeDomeShading now) { choice->setChecked(now == shading); });
    }
}

void MainWindow::addLabelsAction(QMenu& menu)
{
    m_labels = menu.addAction(tr("&Labels"));
    m_labels->setObjectName(QStringLiteral("labels"));
    m_labels->setShortcut(QKeySequence(Qt::Key_L));
    m_labels->setCheckable(true);
    LabelDrawer::find(*m_scene)->setShown(false);
    connect(m_labels, &QAction::toggled, this, [this](bool checked) {
        LabelDrawer::find(*m_scene)->setShown(checked);
        m_view->update();
    });
}

void MainWindow::showLabels(const QString& property)
{
    LabelDrawer::find(*m_scene)->setProperty(property);
    m_labels->setChecked(true);
}

void MainWindow::makeToolMenus()
{
    const auto tell = [this](const QString& text) { statusBar()->showMessage(text); };
    auto* selection = new ElementSelection(*m_project->getModel(), m_scene.get(), this);
    new SelectionBoxes(*selection, *m_scene, this);
    auto* select = new SelectionMenu(*menuBar()->addMenu(tr("&Select")), *m_view, *selection);
    connect(select, &SelectionMenu::told, this, tell);
    auto* editor = new FenceEditor(*m_view, *m_scene, *m_project, this);
    auto* fence = new FenceMenu(*menuBar()->addMenu(tr("Fe&nce")), *m_view, *editor);
    connect(fence, &FenceMenu::told, this, tell);
    connect(editor, &FenceEditor::fenceChanged, this, [this] { setWindowModified(true); });
    m_scene->doneCurrent();
}

// --- files
// ------------------------------------------------------------------------------------------------------------

void MainWindow::openFiles(const QStringList& paths)
{
    QStringList wanted = ModelFolder::inputs(paths);
    std::stable_partition(wanted.begin(), wanted.end(), &FileOpener::isProject);
    if (!wanted.isEmpty() && FileOpener::isProject(wanted.first()) && !mayDiscard()) return;
    m_waiting += wanted;
    if (m_loadingBar->isRunning()) return;
    const bool wasEmpty = m_project->getModel()->getElementsCount() == 0;
    m_hasProjectView = false;
    menuBar()->setEnabled(false);
    logged([&] { m_loadingBar->run([&](ksp::StagedProgress progress) { openWaiting(progress); }); });
    m_waiting.clear();
    menuBar()->setEnabled(true);
    if (m_hasProjectView)
        restoreViewpoint(*findViewpoint(currentView));
    else if (wasEmpty)
        m_view->showFrom(StandardView::Iso);
    showCounts();
    if (std::exchange(m_closesAfterLoading, false))
        QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
}

void MainWindow::openWaiting(ksp::StagedProgress progress)
{
    while (!m_waiting.isEmpty()) {
        progress.throwIfCanceled();
        const double share = (99.0 - progress.getPercentage()) / m_waiting.size();
        const QString path = m_waiting.takeFirst();
        try {
            openFile(path, progress.startStage(share, printable(QFileInfo(path).fileName())));
        } catch (const ksp::Canceled&) {
            throw;
        } catch (const std::exception& error) {
            ksp::Log::error(QString::fromUtf8(error.what()));
        }
    }
}

void MainWindow::openFile(const QString& path, ksp::StagedProgress progress)
{
    FileOpener opener(m_host, *m_project, m_scene.get());
    if (!FileOpener::isProject(path)) {
        opener.add(opener.read(path, progress.startStage(95.0)), progress);
        return;
    }
    for (const QString& problem : opener.openProject(path, progress))
        ksp::Log::error(problem);
    setProjectPath(path);
    m_hasProjectView = findViewpoint(currentView) != nullptr;
}

void MainWindow::setProjectPath(const QString& path)
{
    QString name = path.isEmpty() ? tr("New project") : printable(QFileInfo(path).fileName());
    name.replace(QLatin1String("[*]"), QLatin1String("[*][*]")); // which is how Qt writes one [*]
    setWindowFilePath(path);
    setWindowTitle(name + QStringLiteral("[*] - viewer3d"));
    setWindowModified(false);
}

bool MainWindow::mayDiscard() const
{
    return !isWindowModified() || !m_mayDiscard || m_mayDiscard();
}

bool MainWindow::saveProject(const QString& path)
{
    keepViewpoint(currentView);
    const bool isSaved = logged(
        [&] { FileOpener(m_host, *m_project, m_scene.get()).save(path, ksp::StagedProgress::dummy()); });
    if (isSaved) setProjectPath(path);
    return isSaved;
}

bool MainWindow::savePicture(const QString& path)
{
    return logged([&] {
        OutputFile::requireNoInput(path,
                                   InputFiles(FileOpener(m_host, *m_project, m_scene.get()).getMeshFiles()));
        PictureFile::write(path, m_view->picture());
    });
}

void MainWindow::newProject()
{
    m_scene->makeCurrent();
    m_project->clear();
    LabelDrawer::find(*m_scene)->freeUnused();
    Host::setOwnLight(*m_project);
    setProjectPath({});
    m_view->showFrom(StandardView::Iso);
    showCounts();
}

void MainWindow::askForFiles()
{
    const QString pattern = QStringLiteral("*.") + m_host.getExtensions().join(QStringLiteral(" *."));
    const QStringList paths =
        QFileDialog::getOpenFileNames(this, tr("Open"), m_folder, tr("Readable files (%1)").arg(pattern));
    if (paths.isEmpty()) return;
    m_folder = QFileInfo(paths.first()).path();
    openFiles(paths);
}

void MainWindow::askWhereToSave()
{
    const QString path =
        QFileDialog::getSaveFileName(this, tr("Save project"), m_folder, tr("Projects (*.v3d)"));
    if (!path.isEmpty()) saveProject(withSuffix(path, QStringLiteral("v3d")));
}

void MainWindow::askForPicture()
{
    const QString path =
        QFileDialog::getSaveFileName(this, tr("Save picture"), m_folder, tr("Pictures (*.png)"));
    if (!path.isEmpty()) savePicture(withSuffix(path, QStringLiteral("png")));
}

// --- viewpoints
// --------------------------------------------------------------------------------------------------------

ViewpointElement* MainWindow::findViewpoint(const QString& name) const
{
    if (const CModelElementManager* manager = m_project->getModel()->getItemManager(element_types::Viewpoint))
        for (CModelElement* element : manager->getItems())
            if (element->getName() == name) return static_cast<ViewpointElement*>(element);
    return nullptr;
}

ViewpointElement* MainWindow::keepViewpoint(const QString& name)
{
    ViewpointElement* element = findViewpoint(name);
    if (!element) {
        auto fresh = std::make_unique<ViewpointElement>();
        fresh->setName(name);
        CModelElementManager* manager = m_project->getModel()->getCreateItemManager(element_types::Viewpoint);
        element = static_cast<ViewpointElement*>(manager->addItem(std::move(fresh)));
    }
    setWindowModified(true);
    element->setViewpoint(m_view->viewpoint().transformed(m_scene->sceneToModelTransform()));
    element->setEyeDomeShading(m_view->eyeDomeShading());
    return element;
}

void MainWindow::restoreViewpoint(const ViewpointElement& element)
{
    m_scene->flushBounds();
    m_view->setViewpoint(element.getViewpoint().transformed(m_scene->modelToSceneTransform()));
    m_view->setEyeDomeShading(element.getEyeDomeShading());
}

void MainWindow::addViewpoint()
{
    const QString name = QInputDialog::getText(this, tr("Keep this view"), tr("Name:"));
    if (!name.trimmed().isEmpty()) keepViewpoint(name.trimmed());
}

void MainWindow::showViewpointMenu(QMenu& menu)
{
    menu.clear();
    const CModelElementManager* manager = m_project->getModel()->getItemManager(element_types::Viewpoint);
    if (!manager || manager->getItemsCount() == 0) {
        menu.addAction(tr("none yet"))->setEnabled(false);
        return;
    }
    for (CModelElement* element : manager->getItems()) {
        const LONGID id = element->getId();
        menu.addAction(element->getName(), this, [this, id] {
            if (const auto* kept = dynamic_cast<ViewpointElement*>(m_project->getModel()->getElement(id)))
                restoreViewpoint(*kept);
        });
    }
}

// --- the rest
// -----------------------------------------------------------------------------------------------------------

void MainWindow::showCounts()
{
    std::uint64_t points = 0, lines = 0, triangles = 0;
    for (const auto& entry : m_scene->getItems()) {
        const Drawable3dPrimitive::GeometryInfo info = entry.second->getGeometryInfo();
        points += info.pointCount;
        lines += info.lineCount;
        triangles += info.triangleCount;
    }
    statusBar()->showMessage(tr("%1 elements: %2 points, %3 lines, %4 triangles")
                                 .arg(m_scene->getItems().size())
                                 .arg(points)
                                 .arg(lines)
                                 .arg(triangles));
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (m_loadingBar->isRunning()) { // the work unwinds first
        m_closesAfterLoading = true;
        m_loadingBar->cancel();
        event->ignore();
        return;
    }
    if (!mayDiscard()) {
        event->ignore();
        return;
    }
    QMainWindow::closeEvent(event);
}
