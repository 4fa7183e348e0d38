#pragma once
#include <framework/HostFramework_export.h>

#include <QtXml/QDomElement>

/// A store of settings: one XML element a key.
class HOSTFRAMEWORK_EXPORT ISettingsStorage
{
public:
    virtual ~ISettingsStorage() = default;
    /// The element of the key; a null element when there is none.
    virtual QDomElement getElement(const QString& key) const = 0;
    /// The element of the key, made empty when there is none.
    virtual QDomElement getCreateElement(const QString& key) = 0;
    virtual void remove(const QString& key) = 0;
    /// Writes the store to where it is kept; returns false, with a line in the log, when that fails.
    virtual bool save() = 0;
};
