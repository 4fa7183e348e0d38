#pragma once
#include <framework/HostFramework_export.h>

#include <QtCore/QObject>
#include <QtCore/QtPlugin>

/// The host's window, as far as plug-ins may know it: a place to find menus and docks by object name.
class HOSTFRAMEWORK_EXPORT ProjectGUI
{
public:
    /// A plug-in that extends the window.
    class HOSTFRAMEWORK_EXPORT IExtender
    {
    public:
        virtual ~IExtender() = default;
        virtual void extendGUI(ProjectGUI* gui) = 0;
    };

    virtual ~ProjectGUI() = default;
    /// The main window object.
    virtual QObject* getMainWindow() const = 0;
};

Q_DECLARE_INTERFACE(ProjectGUI::IExtender, "org.photomodel.host.ProjectGUI.IExtender/1.0")
