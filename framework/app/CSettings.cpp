#include <framework/app/CSettings.h>

#include <framework/app/ISettingsStorage.h>

CSettings::CSettings(ISettingsStorage* storage, QObject* parent)
    : QObject(parent)
    , m_storage(storage)
{
}

CSettings::~CSettings() = default;

void CSettings::load() {}

void CSettings::save()
{
    if (m_storage) m_storage->save();
}

void CSettings::update()
{
    Q_EMIT changed();
}
