#pragma once

#include <framework/HostFramework_export.h>
#include <framework/app/CSettings.h>
#include <framework/app/ISettingsStorage.h>

#include <QtCore/QPointer>

#include <map>
#include <memory>

/// A store and the settings objects that are kept in it, by type.
class HOSTFRAMEWORK_EXPORT CSettingsManager
{
public:
    explicit CSettingsManager(std::unique_ptr<ISettingsStorage> storage);
    ~CSettingsManager();

    ISettingsStorage* getStorage() const { return m_storage.get(); }
    /// Takes the object; one that has a Qt parent may be destroyed by it earlier, and is then forgotten. An
    /// earlier object of the type is destroyed.
    void addSettings(int type, CSettings* settings);
    CSettings* getSettings(int type) const;
    /// load() of all settings, in order of type.
    void load();
    /// save() of all settings.
    void save();

private:
    std::unique_ptr<ISettingsStorage> m_storage;
    std::map<int, QPointer<CSettings>> m_settings;
};
