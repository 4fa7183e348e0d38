#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <framework/app/IAppExtension.h>
#include <framework/app/IModelExtension.h>
#include <framework/app/ProjectGUI.h>

#include <QtCore/QObject>

/// The plug-in object: what the host's loader instantiates, once a process. Through it the module registers
/// its shader sources, its settings and its type identifiers with the host; everything else that the module
/// offers is reached through its exported classes.
class VIEWER3DMODULE_EXPORT Viewer3dModule : public QObject,
                                             public IModelExtension,
                                             public ProjectGUI::IExtender,
                                             public IAppExtension
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.photomodel.Viewer3dModule")
    Q_INTERFACES(IModelExtension ProjectGUI::IExtender IAppExtension)
public:
    Viewer3dModule();
    ~Viewer3dModule() override;

    /// Registers the type identifiers, makes "shader:" the search prefix of the compiled-in shader sources
    /// and, when the application has its settings manager, hands it a View3dSettings with the constructor's
    /// values (whoever made the store loads it). The identifiers are not looked at. Returns true.
    bool extendApplication(Application* app, const std::vector<int>& ids) override;
    /// Adds the module's initializer, by which a project gets its lighting settings; a model that has it is
    /// left alone.
    void extendModel(CProjectModel* model) override;
    /// Does nothing: the module adds nothing to the window.
    void extendGUI(ProjectGUI* gui) override;
};
