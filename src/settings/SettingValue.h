#pragma once

#include "SettingsStore.h"

namespace kelvane {

// A cached copy of one setting, refreshed from its subscription, so that a component's own work
// never reads the store. `onChange` runs after the copy is refreshed.
template <class T>
class SettingValue {
public:
    SettingValue(const SettingsStore& store, const Key<T>& key, const QObject* context,
                 std::function<void(const T&)> onChange = {})
        : m_value(store.value(key))
    {
        m_connection = store.subscribe<T>(key, context, [this, onChange = std::move(onChange)](const T& v) {
            m_value = v;
            if (onChange)
                onChange(m_value);
        });
    }
    ~SettingValue() { QObject::disconnect(m_connection); }
    SettingValue(const SettingValue&) = delete;
    SettingValue& operator=(const SettingValue&) = delete;

    const T& get() const { return m_value; }
    const T* operator->() const { return &m_value; }

private:
    T m_value;
    QMetaObject::Connection m_connection;
};

} // namespace kelvane
