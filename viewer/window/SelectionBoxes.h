#pragma once

#include <framework/ksp/LONGID.h>

#include <QtCore/QObject>

#include <map>

class Drawable3dItem;
class ElementSelection;
class Scene3d;

/// Outlines of boxes, before everything else, around the elements that are chosen, turned as they lie. There
/// are none when very many are chosen: they would hide what they tell of.
class SelectionBoxes : public QObject
{
    Q_OBJECT
public:
    static constexpr std::size_t Most = 20;

    /// None is owned. The boxes go with the scene.
    SelectionBoxes(const ElementSelection& selection, Scene3d& scene, QObject* parent = nullptr);

private:
    void update();
    void add(LONGID id);
    void remove(LONGID id);

    const ElementSelection& m_selection;
    Scene3d& m_scene;
    std::map<LONGID, const Drawable3dItem*> m_boxes; // by their elements
};
