#include <Viewer3dModule/host/ModelInitializerImpl.h>

#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>

#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

ModelInitializerImpl::ModelInitializerImpl(CProjectModel* model)
    : ModelInitializer(model)
{
}

ModelInitializerImpl::~ModelInitializerImpl() = default;

void ModelInitializerImpl::initialize()
{
    CProject* project = getModel()->getProject();
    if (!project) return; // a model on its own keeps no settings
    project->addProjectSettings(new COrdinaryItemCreator<Scene3dViewLightingSettings>,
                                CProject::StoredSettings);
    project->addProjectSettings(new COrdinaryItemCreator<Fence3dItem>, CProject::StoredSettings);
}
