#pragma once

#include <framework/HostFramework_export.h>
#include <framework/model/CModelElement.h>
#include <framework/model/CModelElementMngrExtension.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

class CProjectModel;

/// Owns the elements of one type of a project model, in the order in which they were added. Destroying it
/// removes the elements as removeAll does.
class HOSTFRAMEWORK_EXPORT CModelElementManager : public QObject
{
    Q_OBJECT
public:
    CModelElementManager(int type, CProjectModel* model);
    ~CModelElementManager() override;

    int getType() const { return m_type; }
    CProjectModel* getModel() const { return m_model; }

    /// Adds elements; each gets a fresh identifier of the model unless it has one that is free (elements
    /// from an archive). Null entries are left out. Tells the extensions once, afterwards, then the listeners
    /// of the model. Returns what was added and was not removed meanwhile by those who were told.
    std::vector<CModelElement*> addItems(std::vector<std::unique_ptr<CModelElement>> elements,
                                         ksp::StagedProgress progress = ksp::StagedProgress::dummy());
    CModelElement* addItem(std::unique_ptr<CModelElement> element);
    /// Removes and destroys elements in the order of their identifiers; unknown identifiers are ignored.
    /// Tells the extensions once, when the elements are out of the manager and the model but still alive,
    /// then the listeners of the model. Costs constant time an element, amortised, and the sorting.
    void removeItems(const std::vector<LONGID>& ids,
                     ksp::StagedProgress progress = ksp::StagedProgress::dummy());
    void removeItem(LONGID id) { removeItems({id}); }
    /// Likewise, of all and in the order in which they were added.
    void removeAll();

    CModelElement* getItem(LONGID id) const;
    std::vector<CModelElement*> getItems() const;
    int getItemsCount() const { return static_cast<int>(m_elements.size() - m_gaps); }

    /// Adds an extension, not owned; one that is there already is ignored. It is told at once of the
    /// elements that the manager holds.
    void registerExtension(CModelElementMngrExtension* extension);
    /// The first live extension of the type, or null.
    CModelElementMngrExtension* getExtension(int type) const;
    std::vector<CModelElementMngrExtension*> getExtensions() const;

private:
    friend class CProjectModel;
    using Extensions = std::vector<QPointer<CModelElementMngrExtension>>;
    /// A change that extensions have to be told of: elements that came, or elements that went (and live here
    /// until then), and those who were extensions when it happened.
    struct Change
    {
        std::vector<CModelElement*> added;
        std::vector<std::unique_ptr<CModelElement>> removed;
        Extensions extensions;
        ksp::StagedProgress progress;
    };
    class Telling;

    CModelElement* keep(std::unique_ptr<CModelElement> element);
    void removeInOrder(const std::vector<LONGID>& ids, ksp::StagedProgress progress);
    std::unique_ptr<CModelElement> release(LONGID id);
    void closeGaps();
    void tellAll(Change change);
    void tellPending();
    void tell(const Change& change);

    int m_type;
    CProjectModel* m_model;
    std::vector<std::unique_ptr<CModelElement>> m_elements; // null: removed, see closeGaps
    std::size_t m_gaps = 0;
    Extensions m_extensions;
    std::deque<Change> m_changes; // to be told
    int m_telling = 0;            // notifications that run
};
