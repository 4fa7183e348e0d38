#include <viewer/window/ElementSelection.h>

#include <viewer/SceneGroup.h>

#include <framework/model/CModelElement.h>
#include <framework/model/CProjectModel.h>

ElementSelection::ElementSelection(CProjectModel& model, Scene3d* scene, QObject* parent)
    : QObject(parent)
    , m_model(model)
    , m_scene(scene)
{
    // another element may get the identifier
    connect(&model, &CProjectModel::elementsRemoved, this, [this](const std::vector<CModelElement*>& gone) {
        for (const CModelElement* element : gone)
            m_ids.erase(element->getId());
    });
}

void ElementSelection::change(const std::vector<LONGID>& ids, Change change)
{
    const SceneGroup group(m_scene);
    if (change == Replace) {
        const std::set<LONGID> wanted(ids.begin(), ids.end());
        const std::set<LONGID> before = m_ids;
        for (const LONGID id : before)
            if (wanted.count(id) == 0) choose(id, false);
    }
    for (const LONGID id : ids)
        choose(id, change != Remove);
    Q_EMIT changed();
}

void ElementSelection::choose(LONGID id, bool chosen)
{
    CModelElement* element = m_model.getElement(id);
    if (!element) return;
    element->setHighlighted(chosen);
    if (chosen)
        m_ids.insert(id);
    else
        m_ids.erase(id);
}
