#pragma once

#include <Viewer3dModule/host/Graphics3dItemCreator.h>

#include <QtCore/QPointer>

#include <optional>

class Scene3d;

/// Makes the items of features, each of the class for what it is: a point, a pipe, a kerb, or anything else.
class FeatureItemCreator : public Graphics3dItemCreator
{
public:
    /// pointSize (pixels): see FeatureStyle::of.
    FeatureItemCreator(Scene3d& scene, std::optional<float> pointSize);
    ~FeatureItemCreator() override;

    /// The scene has the drawers for the item then; its context is current.
    Graphics3dItem* create(CModelElement* element) override;

private:
    QPointer<Scene3d> m_scene;
    std::optional<float> m_pointSize;
};
