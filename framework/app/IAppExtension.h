#pragma once
#include <framework/HostFramework_export.h>

#include <QtCore/QtPlugin>

#include <vector>

class Application;

/// A plug-in that extends the application.
class HOSTFRAMEWORK_EXPORT IAppExtension
{
public:
    virtual ~IAppExtension() = default;
    /// Called once after loading; ids are the identifiers of the plug-ins that are loaded already. Returns
    /// false when the plug-in cannot serve; it is then listed as failed.
    virtual bool extendApplication(Application* application, const std::vector<int>& ids) = 0;
    /// Called before the application ends; nothing by default.
    virtual void unextendApplication(Application*) {}
};

Q_DECLARE_INTERFACE(IAppExtension, "org.photomodel.host.IAppExtension/1.0")
