#pragma once

#include "Keys.h"
#include "SettingsDomain.h"

#include <functional>

namespace kelvane {

// The typed preference store. Reading never fails: a value that is missing or does not decode
// reads as the key's default (and the stored text stays as it is until the next write).
class SettingsStore {
public:
    // Registers every key's default in the domain's registration layer.
    explicit SettingsStore(SettingsDomain& domain);

    template <class T>
    T value(const Key<T>& key) const
    {
        auto decoded = fromStored<T>(m_domain.value(key.name()));
        return decoded ? std::move(*decoded) : key.defaultValue();
    }

    template <class T>
    void setValue(const Key<T>& key, const T& value)
    {
        m_domain.setValue(key.name(), toStored(value));
    }

    // Reads the record, lets `change` edit it and writes it back: fields change only this way.
    template <class T, class F>
    void update(const Key<T>& key, F&& change)
    {
        T record = value(key);
        std::forward<F>(change)(record);
        setValue(key, record);
    }

    // Calls `handler` with the key's new value after every write to it, from any writer, for as long
    // as `context` lives.
    template <class T>
    QMetaObject::Connection subscribe(const Key<T>& key, const QObject* context,
                                      std::function<void(const T&)> handler) const
    {
        return QObject::connect(&m_domain, &SettingsDomain::valueChanged, context,
                                [this, &key, handler = std::move(handler)](const QString& name) {
                                    if (name == key.name())
                                        handler(value(key));
                                });
    }

    // The reset of the general settings page: onboarding again, and the defaults of the general,
    // gesture, live-activity and panel records. Widget options, glass, calendar and battery
    // records and the other single keys keep their values.
    void resetDefaults();

    // Settings by name, for scripts and the settings window; values are JSON (records as objects).
    static QStringList keyNames();
    std::optional<QJsonValue> jsonValue(const QString& name) const;
    // The names of a record's members, those left out while empty included; none for a plain
    // setting or an unknown key.
    static QStringList memberNames(const QString& name);
    enum class WriteResult { written, unknownKey, invalidValue };
    // Writes only a value that decodes, as a whole, for that key.
    WriteResult setJsonValue(const QString& name, const QJsonValue& value);

    SettingsDomain& domain() const { return m_domain; }

    static SettingsStore& shared();
    static void setShared(SettingsStore* store);

private:
    SettingsDomain& m_domain;
};

} // namespace kelvane
