#pragma once

#include <framework/app/ProjectGUI.h>
#include <framework/ksp/StagedProgress.h>

#include <QtWidgets/QMainWindow>

#include <functional>
#include <memory>

class CProject;
class Host;
class LoadingBar;
class MessageDock;
class Scene3d;
class View3dWidget;
class ViewpointElement;

/// The window of the reference host: one project, its scene and one view of it.
class MainWindow : public QMainWindow, public ProjectGUI
{
    Q_OBJECT
public:
    /// The host is not owned. Throws ksp::CommonError where there is no OpenGL 4.3.
    explicit MainWindow(Host& host);
    ~MainWindow() override;

    QObject* getMainWindow() const override;
    CProject& project() const { return *m_project; }
    Scene3d& scene() const { return *m_scene; }
    View3dWidget& view() const { return *m_view; }
    LoadingBar& loadingBar() const { return *m_loadingBar; }
    MessageDock& messages() const { return *m_messages; }

    /// Adds files to what is open; a project replaces it, and so comes first. What cannot be opened goes to
    /// the messages and does not keep the others out; a cancellation does. Files that are asked for while
    /// others are loaded come after them.
    void openFiles(const QStringList& paths);
    /// Returns false, with a line among the messages, when the project cannot be saved.
    bool saveProject(const QString& path);
    /// Likewise for a picture of the view.
    bool savePicture(const QString& path);
    /// Removes everything.
    void newProject();
    /// Shows the labels of features; those that come from now on show this property.
    void showLabels(const QString& property);
    /// Asked before what was not saved is lost by opening a project, by File > New or by closing; returns
    /// whether it may be. Without a question, as at first, it always may.
    void setDiscardQuestion(std::function<bool()> question) { m_mayDiscard = std::move(question); }

private:
    void openWaiting(ksp::StagedProgress progress);
    void openFile(const QString& path, ksp::StagedProgress progress);
    bool mayDiscard() const;
    /// The project is this file now, and nothing is to be saved.
    void setProjectPath(const QString& path);
    void makeFileMenu();
    void makeViewMenu();
    void addEyeDomeMenu(QMenu& menu);
    void makeToolMenus();
    void addLabelsAction(QMenu& menu);
    void askForFiles();
    void askWhereToSave();
    void askForPicture();
    void addViewpoint();
    void showViewpointMenu(QMenu& menu);
    ViewpointElement* keepViewpoint(const QString& name);
    void restoreViewpoint(const ViewpointElement& element);
    ViewpointElement* findViewpoint(const QString& name) const;
    void showCounts();
    void closeEvent(QCloseEvent* event) override;

    Host& m_host;
    MessageDock* m_messages; // first, so that it hears of whatever the others have to say
    std::unique_ptr<CProject> m_project;
    std::unique_ptr<Scene3d> m_scene;
    View3dWidget* m_view;
    QAction* m_labels = nullptr; // whether they are shown
    LoadingBar* m_loadingBar;
    std::function<bool()> m_mayDiscard;
    QStringList m_waiting;         // files to open
    bool m_hasProjectView = false; // of the project that was opened last
    bool m_closesAfterLoading = false;
    QString m_folder; // of the last file dialog
};
