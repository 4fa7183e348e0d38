#pragma once

#include <framework/HostFramework_export.h>
#include <framework/ksp/LONGID.h>
#include <framework/ksp/StagedProgress.h>
#include <framework/model/ModelElementCreator.h>
#include <framework/model/ModelInitializer.h>

#include <QtCore/QObject>

#include <map>
#include <memory>
#include <vector>

class CModelElement;
class CModelElementManager;
class CProject;

/// The elements of a project, kept by one manager a type. Single-threaded.
///
/// Identifiers are unique over all managers, begin at 1 and are never given out twice, not even after the
/// element is gone; only an element that brings its own (from a file) may have one that was in use before.
class HOSTFRAMEWORK_EXPORT CProjectModel : public QObject
{
    Q_OBJECT
public:
    /// project owns the model. Destroying the model removes its elements as clear() does.
    explicit CProjectModel(CProject* project);
    ~CProjectModel() override;

    CProject* getProject() const { return m_project; }

    /// The manager of a type, or null.
    CModelElementManager* getItemManager(int type) const;
    /// The manager of a type, made when there is none.
    CModelElementManager* getCreateItemManager(int type);
    /// The largest identifier that an element may bring; beyond it is room for fresh ones.
    static constexpr LONGID largestId() { return LONGID(1) << 62; }

    /// All managers, by type ascending.
    std::vector<CModelElementManager*> getItemManagers() const;

    /// The element with the identifier, in whichever manager, or null. O(1).
    CModelElement* getElement(LONGID id) const;
    int getElementsCount() const;
    /// Removes all elements of all managers; managers and extensions stay.
    void clear();

    /// The elements that depend on the given one, directly or through others: those that observe it, each
    /// once, itself never, in breadth-first order over the observers.
    std::vector<CModelElement*> getAllChildDependencies(CModelElement* element) const;

    /// Keeps an initializer under an identifier; a second one under the same identifier is destroyed. When
    /// the model is initialised already, it runs at once.
    void addInitializer(int id, std::unique_ptr<ModelInitializer> initializer);
    ModelInitializer* getInitializer(int id) const;
    /// Runs every initializer once, in the order in which they were added. What one throws goes to the log,
    /// and the others go on.
    void initialize();

    /// The creator by which elements of its type are loaded; replaces an earlier one of that type.
    void registerCreator(std::unique_ptr<ModelElementCreator> creator);
    const ModelElementCreator* getCreator(int type) const;

Q_SIGNALS:
    void elementsAdded(const std::vector<CModelElement*>& elements);
    /// The elements are alive for the last time.
    void elementsRemoved(const std::vector<CModelElement*>& elements);

private:
    friend class CModelElementManager;
    friend class CProject;
    struct Private;
    LONGID claimId(CModelElement* element, LONGID wanted);
    void releaseId(LONGID id);
    LONGID getNextId() const;
    void skipIdsBelow(LONGID next);

    CProject* m_project;
    std::unique_ptr<Private> m_private;
};
