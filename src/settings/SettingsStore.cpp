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

QStringList SettingsStore::keyNames()
{
    QStringList names;
#define KELVANE_KEY_NAME(Type, keyName, initial) names << Keys::keyName().name();
    KELVANE_SETTINGS_KEYS(KELVANE_KEY_NAME)
#undef KELVANE_KEY_NAME
    return names;
}

std::optional<QJsonValue> SettingsStore::jsonValue(const QString& name) const
{
#define KELVANE_KEY_JSON(Type, keyName, initial)                                                 \
    if (name == Keys::keyName().name())                                                            \
        return json::encode(value(Keys::keyName()));
    KELVANE_SETTINGS_KEYS(KELVANE_KEY_JSON)
#undef KELVANE_KEY_JSON
    return std::nullopt;
}

namespace {
template <class T>
QStringList membersOf()
{
    QStringList names;
    if constexpr (json::Record<T>)
        std::apply([&](const auto&... field) { ((names << QString::fromUtf8(field.name.data(), qsizetype(field.name.size()))), ...); },
                   T::fields());
    return names;
}
} // namespace

QStringList SettingsStore::memberNames(const QString& name)
{
#define KELVANE_KEY_MEMBERS(Type, keyName, initial)                                              \
    if (name == Keys::keyName().name())                                                            \
        return membersOf<Type>();
    KELVANE_SETTINGS_KEYS(KELVANE_KEY_MEMBERS)
#undef KELVANE_KEY_MEMBERS
    return {};
}

SettingsStore::WriteResult SettingsStore::setJsonValue(const QString& name, const QJsonValue& json)
{
#define KELVANE_KEY_WRITE(Type, keyName, initial)                                                \
    if (name == Keys::keyName().name()) {                                                          \
        const auto decoded = json::decode<Type>(json);                                             \
        if (!decoded)                                                                              \
            return WriteResult::invalidValue;                                                      \
        setValue(Keys::keyName(), *decoded);                                                       \
        return WriteResult::written;                                                               \
    }
    KELVANE_SETTINGS_KEYS(KELVANE_KEY_WRITE)
#undef KELVANE_KEY_WRITE
    return WriteResult::unknownKey;
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
