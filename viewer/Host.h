#pragma once

#include <framework/app/Application.h>
#include <framework/ksp/Log.h>

#include <QtCore/QStringList>
#include <QtCore/QVariant>

#include <memory>
#include <optional>
#include <vector>

class CProject;
class IModelReader;
class Scene3d;

/// The reference host without a window: the application object with its settings and plug-ins, projects,
/// scenes and the readers that were found.
class Host
{
public:
    /// Where settings live: in the user's configuration folder, or in memory for as long as the program runs.
    enum class Settings { Kept, InMemory };

    /// Makes the application and loads the plug-ins; which of them failed is in the application's list.
    explicit Host(Settings settings);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    Application& application() { return m_application; }
    const Application& application() const { return m_application; }

    /// A new project whose model can load the viewer's elements. Throws ksp::CommonError when the 3D module
    /// is not among the plug-ins.
    std::unique_ptr<CProject> createProject();
    /// Gives a new project the light of this program: from the south-south-west, 50 degrees high.
    static void setOwnLight(CProject& project);
    /// A scene of the project that shows the viewer's elements and those of plug-ins; its context is current
    /// afterwards. The scene goes before the project. Throws ksp::CommonError where there is no OpenGL 4.3.
    std::unique_ptr<Scene3d> createScene(CProject& project);
    /// The size, in pixels, of points that say none of their own, in scenes made from now on; nothing, as at
    /// first: as element_types::registerItems has it.
    void setPointSize(std::optional<float> pixels) { m_pointSize = pixels; }

    /// The reader that makes elements of files with the extension (lower case), or null. Of several the first
    /// that recognizes the file, of those that look into it before those that take any.
    IModelReader* findModelReader(const QString& extension, const QString& path) const;
    /// Sets an option of the readers, see IModelReader::setOption.
    void setReaderOption(const QString& name, const QVariant& value);
    /// All extensions that can be opened, project files included, lower case, ascending.
    QStringList getExtensions() const;
    /// Writes the settings to where they are kept.
    void saveSettings();

    struct Message
    {
        ksp::Log::MessageType type;
        QString text;
    };
    /// What the log had to say while this was made, before any window could show it.
    const std::vector<Message>& getStartMessages() const { return m_startMessages; }

private:
    void requireModule() const;

    Application m_application;
    bool m_keepsSettings;
    std::optional<float> m_pointSize;
    std::vector<Message> m_startMessages;
};
