#include <Viewer3dModule/host/CGraphics3dExtension.h>

#include <Viewer3dModule/enums/TypeIds.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProjectModel.h>

namespace {

// Ends the group also when a creator throws: a scene that stayed in a group would never be updated again.
class GroupOperation
{
public:
    GroupOperation(Scene3d& scene, const ksp::StagedProgress& progress)
        : m_scene(scene)
        , m_progress(progress)
    {
        m_scene.startGroupOperation();
    }
    ~GroupOperation() { m_scene.finishGroupOperation(m_progress); }
    GroupOperation(const GroupOperation&) = delete;
    GroupOperation& operator=(const GroupOperation&) = delete;

private:
    Scene3d& m_scene;
    ksp::StagedProgress m_progress;
};

} // namespace

CGraphics3dExtension::CGraphics3dExtension(Scene3d* scene, QObject* parent)
    : CModelElementMngrExtension(parent)
    , m_scene(scene)
{
}

CGraphics3dExtension::~CGraphics3dExtension() = default;

void CGraphics3dExtension::setCreator(std::unique_ptr<Graphics3dItemCreator> creator)
{
    m_creator = std::move(creator);
}

Scene3d* CGraphics3dExtension::getScene() const
{
    return m_scene;
}

CProjectModel* CGraphics3dExtension::getModel() const
{
    return m_scene ? m_scene->getModel() : nullptr;
}

int CGraphics3dExtension::getType() const
{
    return TypeIds::GraphicsExtension;
}

// One group, so that n elements cost n updates and one change of the scene.
void CGraphics3dExtension::afterAddItems(const std::vector<CModelElement*>& elements,
                                         ElementAddingContext& context)
{
    if (!m_scene || !m_creator) return;
    m_scene->makeCurrent();
    const GroupOperation group(*m_scene, context.progress);
    for (CModelElement* element : elements) {
        std::unique_ptr<Graphics3dItem> item(m_creator->create(element));
        if (!item) continue;
        element->addObserver(item.get());
        m_scene->addElement(item.release());
    }
}

void CGraphics3dExtension::afterRemoveItems(const std::vector<CModelElement*>& elements,
                                            ElementRemovingContext&)
{
    if (!m_scene) return;
    for (const CModelElement* element : elements)
        m_scene->removeElement(element->getId());
}

bool CGraphics3dExtension::isItemTypeDrawable(int type, CProjectModel* model)
{
    const CModelElementManager* manager = model ? model->getItemManager(type) : nullptr;
    return manager && manager->getExtension(TypeIds::GraphicsExtension);
}

void CGraphics3dExtension::registerElementType(int type, Scene3d* scene,
                                               std::unique_ptr<Graphics3dItemCreator> creator)
{
    registerGraphicsItemHelper(type, scene, std::move(creator));
}

void CGraphics3dExtension::registerGraphicsItemHelper(int type, Scene3d* scene,
                                                      std::unique_ptr<Graphics3dItemCreator> creator)
{
    auto* extension = new CGraphics3dExtension(scene, scene);
    extension->setCreator(std::move(creator));
    scene->getModel()->getCreateItemManager(type)->registerExtension(extension);
}
