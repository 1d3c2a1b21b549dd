#include "SettingsDomain.h"

namespace kelvane {

QVariant SettingsDomain::value(const QString& key) const
{
    const QVariant stored = storedValue(key);
    return stored.isValid() ? stored : m_registered.value(key);
}

bool SettingsDomain::contains(const QString& key) const { return storedValue(key).isValid(); }

void SettingsDomain::setValue(const QString& key, const QVariant& value)
{
    store(key, value);
    Q_EMIT valueChanged(key);
}

void SettingsDomain::remove(const QString& key)
{
    erase(key);
    Q_EMIT valueChanged(key);
}

void SettingsDomain::registerDefaults(const QVariantMap& defaults)
{
    for (auto it = defaults.begin(); it != defaults.end(); ++it)
        m_registered.insert(it.key(), it.value());
}

} // namespace kelvane
