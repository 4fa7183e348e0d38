#pragma once
#include <framework/HostFramework_export.h>

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

namespace Property {

/// Something with named properties that a property window can show and change.
class HOSTFRAMEWORK_EXPORT IPropertyHolder
{
public:
    virtual ~IPropertyHolder() = default;
    /// The names, in the order in which they are to be shown.
    virtual QStringList getPropertyNames() const = 0;
    /// The value; invalid when there is no such property.
    virtual QVariant getProperty(const QString& name) const = 0;
    /// Sets or adds a property; an invalid value removes it. Returns false when the name may not be changed.
    virtual bool setProperty(const QString& name, const QVariant& value) = 0;
};

} // namespace Property
