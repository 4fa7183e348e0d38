#pragma once

#include <Viewer3dModule/host/IScene3dExtension.h>
#include <framework/app/IModelExtension.h>

#include <QtCore/QObject>

/// Adds survey marks to projects and shows them in scenes.
class ExamplePlugin : public QObject, public IModelExtension, public IScene3dExtension
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.example.SurveyMarks")
    Q_INTERFACES(IModelExtension IScene3dExtension)
public:
    /// Lets projects load and store marks, and puts one into every project.
    void extendModel(CProjectModel* model) override;
    /// Shows marks in the scene.
    void extendScene(Scene3d* scene) override;
};
