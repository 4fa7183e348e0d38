#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/host/Graphics3dItemCreator.h>
#include <framework/model/CModelElementMngrExtension.h>

#include <QtCore/QPointer>

#include <memory>

class CProjectModel;
class Scene3d;

/// Mirrors the elements of one manager into a scene.
class VIEWER3DMODULE_EXPORT CGraphics3dExtension : public CModelElementMngrExtension
{
    Q_OBJECT
public:
    /// scene is guarded, not owned.
    CGraphics3dExtension(Scene3d* scene, QObject* parent);
    ~CGraphics3dExtension() override;

    Graphics3dItemCreator* getCreator() const { return m_creator.get(); }
    void setCreator(std::unique_ptr<Graphics3dItemCreator> creator);
    /// The scene's model; null when the scene is gone.
    CProjectModel* getModel() const;
    /// The scene; null when it is gone.
    Scene3d* getScene() const;
    /// 0x36FF0500.
    int getType() const override;

    /// Makes the scene's context current and adds an item for each element that the creator makes one for;
    /// the item observes its element and belongs to the scene. One group operation, whatever their number.
    void afterAddItems(const std::vector<CModelElement*>& elements, ElementAddingContext& context) override;
    /// Makes the scene's context current and removes the elements' items.
    void afterRemoveItems(const std::vector<CModelElement*>& elements,
                          ElementRemovingContext& context) override;

    /// Whether elements of the type are shown in some 3D scene of the model.
    static bool isItemTypeDrawable(int type, CProjectModel* model);

    /// Shows elements of the type in the scene from now on, by items that the creator makes; elements that
    /// are there already appear at once. The scene's model must not be null.
    static void registerElementType(int type, Scene3d* scene, std::unique_ptr<Graphics3dItemCreator> creator);
    /// The same with a creator for a pair of classes: Item has a constructor from Element*.
    template <typename Element, typename Item>
    static void registerElementType(int type, Scene3d* scene);

private:
    static void registerGraphicsItemHelper(int type, Scene3d* scene,
                                           std::unique_ptr<Graphics3dItemCreator> creator);

    std::unique_ptr<Graphics3dItemCreator> m_creator;
    QPointer<Scene3d> m_scene;
};

template <typename Element, typename Item>
void CGraphics3dExtension::registerElementType(int type, Scene3d* scene)
{
    class Creator : public Graphics3dItemCreator
    {
        Graphics3dItem* create(CModelElement* element) override
        {
            auto* own = dynamic_cast<Element*>(element);
            return own ? new Item(own) : nullptr;
        }
    };
    registerElementType(type, scene, std::make_unique<Creator>());
}
