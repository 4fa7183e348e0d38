#pragma once

#include <framework/ksp/LONGID.h>
#include <framework/model/IObserver.h>

#include <QtCore/QObject>

#include <map>
#include <set>

class Drawable3dItem;
class ElementSelection;
class Scene3d;

/// Outlines of boxes, before everything else, around the elements that are chosen, turned as they lie. They
/// follow elements that change, as soon as the scene shows the change. There are none when very many are
/// chosen: they would hide what they tell of.
class SelectionBoxes : public QObject, private IObserver
{
    Q_OBJECT
public:
    static constexpr std::size_t Most = 20;

    /// None is owned. The boxes go with the scene.
    SelectionBoxes(const ElementSelection& selection, Scene3d& scene, QObject* parent = nullptr);
    ~SelectionBoxes() override;

private:
    void updateData(ISubject* subject) override;
    void update();
    void updateChanged();
    void observe();
    void leaveElements();
    void add(LONGID id);
    void remove(LONGID id);

    const ElementSelection& m_selection;
    Scene3d& m_scene;
    std::map<LONGID, const Drawable3dItem*> m_boxes; // by their elements; null for one without size
    std::set<LONGID> m_changed;                      // elements whose boxes may be old
};
