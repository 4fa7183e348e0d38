#include <framework/app/CSettingsManager.h>

CSettingsManager::CSettingsManager(std::unique_ptr<ISettingsStorage> storage)
    : m_storage(std::move(storage))
{
}

CSettingsManager::~CSettingsManager()
{
    for (const auto& entry : m_settings)
        delete entry.second.data();
}

void CSettingsManager::addSettings(int type, CSettings* settings)
{
    QPointer<CSettings>& place = m_settings[type];
    if (place == settings) return;
    delete place.data();
    place = settings;
}

CSettings* CSettingsManager::getSettings(int type) const
{
    const auto found = m_settings.find(type);
    return found == m_settings.end() ? nullptr : found->second.data();
}

void CSettingsManager::load()
{
    for (const auto& entry : m_settings)
        if (entry.second) entry.second->load();
}

void CSettingsManager::save()
{
    for (const auto& entry : m_settings)
        if (entry.second) entry.second->save();
}
