#include <Viewer3dModule/Viewer3dModule.h>

#include <Viewer3dModule/enums/TypeIds.h>
#include <Viewer3dModule/enums/enums.h>
#include <Viewer3dModule/host/ModelInitializerImpl.h>
#include <Viewer3dModule/host/View3dSettings.h>

#include <framework/app/Application.h>
#include <framework/app/CSettingsManager.h>
#include <framework/model/CProjectModel.h>

#include <QtCore/QDir>

Viewer3dModule::Viewer3dModule() = default;

Viewer3dModule::~Viewer3dModule() = default;

bool Viewer3dModule::extendApplication(Application* app, const std::vector<int>&)
{
    enums::initEnumData();
    QDir::setSearchPaths(QStringLiteral("shader"), {QStringLiteral(":/")});
    if (CSettingsManager* manager = app->getSettingsManager(Application::SettingsManagerId)) {
        auto* settings = new View3dSettings(manager->getStorage(), this);
        app->registerSettings(Application::SettingsManagerId, TypeIds::ViewSettings, settings);
    }
    return true;
}

void Viewer3dModule::extendModel(CProjectModel* model)
{
    if (model->getInitializer(TypeIds::Module)) return;
    model->addInitializer(TypeIds::Module, std::make_unique<ModelInitializerImpl>(model));
}

void Viewer3dModule::extendGUI(ProjectGUI*) {}
