#include "SettingsStore.h"

namespace kelvane {

namespace {
SettingsStore* s_shared = nullptr;

template <class T>
void writeDefault(SettingsStore& store, const Key<T>& key)
{
    store.setValue(key, key.defaultValue());
}
} // namespace

SettingsStore::SettingsStore(SettingsDomain& domain)
    : m_domain(domain)
{
    m_domain.registerDefaults(Keys::registrationDefaults());
}

void SettingsStore::resetDefaults()
{
    setValue(Keys::intro(), true);
    writeDefault(*this, Keys::mediaLiveActivitySettings());
    writeDefault(*this, Keys::liveActivitiesSettings());
    writeDefault(*this, Keys::generalSettings());
    writeDefault(*this, Keys::mediaWidgetSettings());
    writeDefault(*this, Keys::shortcutsWidgetSettings());
    writeDefault(*this, Keys::mirrorWidgetSettings());
    writeDefault(*this, Keys::gestureControlSettings());
    writeDefault(*this, Keys::tuckleSettings());
    writeDefault(*this, Keys::traySettings());
    writeDefault(*this, Keys::dropAreaSettings());
}

SettingsStore& SettingsStore::shared()
{
    Q_ASSERT_X(s_shared, "SettingsStore::shared", "no store registered");
    return *s_shared;
}

void SettingsStore::setShared(SettingsStore* store) { s_shared = store; }

} // namespace kelvane
