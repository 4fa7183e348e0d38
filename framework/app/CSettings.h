#pragma once

#include <framework/HostFramework_export.h>

#include <QtCore/QObject>

class ISettingsStorage;

/// A group of settings of the application or a module, over a store.
class HOSTFRAMEWORK_EXPORT CSettings : public QObject
{
    Q_OBJECT
public:
    /// storage is not owned and outlives the settings; it may be null (nothing is then stored).
    CSettings(ISettingsStorage* storage, QObject* parent);
    ~CSettings() override;

    /// Reads the fields from the store; the base does nothing.
    virtual void load();
    /// Writes the store to where it is kept. An override puts its fields into the store first.
    virtual void save();
    /// Tells everybody who listens that fields changed: emits changed().
    virtual void update();

    ISettingsStorage* getStorage() const { return m_storage; }

Q_SIGNALS:
    void changed();

private:
    ISettingsStorage* m_storage;
};
