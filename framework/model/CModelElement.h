#pragma once

#include <framework/HostFramework_export.h>
#include <framework/ksp/CGuardedObject.h>
#include <framework/ksp/CQtArchive.h>
#include <framework/ksp/IIdentifiable.h>
#include <framework/model/IObserver.h>
#include <framework/model/IPropertyHolder.h>
#include <framework/model/ISubject.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

class CModelElementManager;

/// One element of a project model: what the user sees, names and edits.
///
/// An element gets its identifier from the manager that it is added to. It is a subject (its scene items and
/// the elements that depend on it observe it) and an observer of the elements that it depends on. A change is
/// not passed on from element to element: whoever shows elements asks the model for everything that depends
/// on the one that changed (CProjectModel::getAllChildDependencies). So elements may depend on each other in
/// circles, along many paths and in long chains.
class HOSTFRAMEWORK_EXPORT CModelElement : public ISubject,
                                           public IObserver,
                                           public ksp::CGuardedObject,
                                           public ksp::IIdentifiable,
                                           public Property::IPropertyHolder
{
public:
    /// owner is the element that this one is a part of, or null; it is not owned and is not stored in
    /// archives.
    explicit CModelElement(CModelElement* owner = nullptr);
    /// Copies name, visibility, highlight and properties. A copy is a new element: it has no identifier, no
    /// manager, no owner, no observers and observes nothing. Assignment keeps what the target has of those
    /// and tells nobody, because the fields of the derived class are still to come: whoever assigns notifies.
    CModelElement(const CModelElement& other);
    CModelElement& operator=(const CModelElement& other);
    ~CModelElement() override;

    /// The element type: the key of the manager that keeps it.
    virtual int getType() const = 0;

    LONGID getId() const override { return m_id; }
    CModelElement* getOwner() const { return m_owner.get(); }
    /// The manager that keeps the element, or null.
    CModelElementManager* getManager() const { return m_manager; }

    const QString& getName() const { return m_name; }
    /// The setters notify the observers when they change something.
    void setName(const QString& name);
    /// The element's own visibility; true at first.
    bool isVisible() const { return m_visible; }
    void setVisible(bool visible);
    /// Chosen by the user; not stored in archives.
    bool isHighlighted() const { return m_highlighted; }
    void setHighlighted(bool highlighted);

    QStringList getPropertyNames() const override;
    QVariant getProperty(const QString& name) const override;
    /// Notifies the observers when it changes something. Only the empty name is refused.
    bool setProperty(const QString& name, const QVariant& value) override;
    /// Replaces all properties and notifies once. A name given twice has the place of the first and the value
    /// of the last; empty names and invalid values are left out.
    void setProperties(std::vector<std::pair<QString, QVariant>> properties);

    /// Reads or writes the element: name, visibility and properties. An override serialises its base first,
    /// then its own fields in a frame of its own. Tells no observer; whoever loads into an element in use
    /// notifies. When loading throws, the element is as it was; an override keeps that for its own part by
    /// reading into locals, and for the base's part by takeStored.
    virtual void serialize(CQtArchive& archive);

    /// An element that this one depends on has changed. Does nothing; an element that keeps data derived from
    /// it makes them anew here, and notifies.
    void updateData(ISubject* subject) override;

protected:
    /// Takes name, visibility and properties, what this class stores, over from an element that was loaded in
    /// place of this one. Tells nobody.
    void takeStored(CModelElement& loaded);

private:
    friend class CModelElementManager;
    friend class ProjectFile;
    using Properties = std::vector<std::pair<QString, QVariant>>;
    const Properties& properties() const;
    void takeProperties(Properties properties);

    LONGID m_id = 0;
    ksp::GuardedPtr<CModelElement> m_owner;
    CModelElementManager* m_manager = nullptr;
    QString m_name;
    std::unique_ptr<Properties> m_properties; // null while there are none
    std::uint32_t m_position = 0;             // in the manager's list
    bool m_visible = true;
    bool m_highlighted = false;
};
