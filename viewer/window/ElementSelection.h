#pragma once

#include <framework/ksp/LONGID.h>

#include <QtCore/QObject>

#include <set>
#include <vector>

class CProjectModel;
class Scene3d;

/// The elements that the user has chosen; they are highlighted.
class ElementSelection : public QObject
{
    Q_OBJECT
public:
    /// What becomes of those that were chosen before.
    enum Change { Replace, Add, Remove };

    /// The scene is updated once a change and may be null. None is owned.
    ElementSelection(CProjectModel& model, Scene3d* scene, QObject* parent = nullptr);

    const std::set<LONGID>& ids() const { return m_ids; }
    /// Identifiers of no element are passed over.
    void change(const std::vector<LONGID>& ids, Change change);

Q_SIGNALS:
    /// After every change, also one that changes nothing.
    void changed();

private:
    void choose(LONGID id, bool chosen);

    CProjectModel& m_model;
    Scene3d* m_scene;
    std::set<LONGID> m_ids;
};
