#include "ExamplePlugin.h"

#include "SurveyMark.h"

#include <Viewer3dModule/host/CGraphics3dExtension.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProjectModel.h>

namespace {

/// Makes the items of marks that have a name; a mark without one is a draft and not shown.
class SurveyMarkItemCreator : public Graphics3dItemCreator
{
public:
    Graphics3dItem* create(CModelElement* element) override
    {
        auto* mark = dynamic_cast<SurveyMark*>(element);
        return mark && !mark->getName().isEmpty() ? new SurveyMarkItem(mark) : nullptr;
    }
};

} // namespace

void ExamplePlugin::extendModel(CProjectModel* model)
{
    model->registerCreator(std::make_unique<COrdinaryItemCreator<SurveyMark>>());
    auto mark = std::make_unique<SurveyMark>();
    mark->setName(QStringLiteral("Mark 1"));
    model->getCreateItemManager(SurveyMark::Type)->addItem(std::move(mark));
}

void ExamplePlugin::extendScene(Scene3d* scene)
{
    CGraphics3dExtension::registerElementType(SurveyMark::Type, scene,
                                              std::make_unique<SurveyMarkItemCreator>());
}
