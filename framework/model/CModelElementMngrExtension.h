#pragma once

#include <framework/HostFramework_export.h>
#include <framework/model/ElementAddingContext.h>
#include <framework/model/ElementRemovingContext.h>

#include <QtCore/QObject>

#include <vector>

class CModelElement;

/// Follows what an element manager holds. Managers do not own extensions and forget those that are destroyed.
///
/// Both notifications may add and remove elements of the manager: that happens at once, but the extensions
/// are told of it after the running notification has reached all of them, so that each of them sees every
/// element come before it goes, and no element of a running notification is destroyed. Neither may throw.
class HOSTFRAMEWORK_EXPORT CModelElementMngrExtension : public QObject
{
    Q_OBJECT
public:
    explicit CModelElementMngrExtension(QObject* parent = nullptr);
    ~CModelElementMngrExtension() override;

    /// What kind of extension this is.
    virtual int getType() const = 0;
    /// Called after elements came into the manager, in the order in which they came.
    virtual void afterAddItems(const std::vector<CModelElement*>& elements,
                               ElementAddingContext& context) = 0;
    /// Called when the manager no longer holds the elements, just before they are destroyed.
    virtual void afterRemoveItems(const std::vector<CModelElement*>& elements,
                                  ElementRemovingContext& context) = 0;
};
