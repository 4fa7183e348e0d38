#pragma once

#include <framework/HostFramework_export.h>
#include <framework/ksp/LONGID.h>
#include <framework/ksp/StagedProgress.h>

class InteractiveGraphicsItem;

/// A scene that shows model elements, whichever way it draws them.
class HOSTFRAMEWORK_EXPORT InteractiveGraphicsScene
{
public:
    enum SceneType { Scene3dType = 0, PlanType = 1, ImageType = 2 };

    virtual ~InteractiveGraphicsScene() = default;

    /// The item that stands for the element, or null.
    virtual InteractiveGraphicsItem* findGraphicsItem(LONGID id) const = 0;

    /// Between start and the matching finish (they nest), updates of items are collected and run once.
    virtual void startGroupOperation() = 0;
    virtual void finishGroupOperation(ksp::StagedProgress progress) = 0;
    virtual bool isInGroupOperation() = 0;

    virtual SceneType getType() = 0;
};
