#include "Keys.h"

namespace kelvane::Keys {

#define KELVANE_DEFINE_KEY(Type, keyName, initial)                                               \
    const Key<Type>& keyName()                                                                      \
    {                                                                                              \
        static const Key<Type> key(QStringLiteral(#keyName), Type(initial));                     \
        return key;                                                                                \
    }
KELVANE_SETTINGS_KEYS(KELVANE_DEFINE_KEY)
#undef KELVANE_DEFINE_KEY

QVariantMap registrationDefaults()
{
    QVariantMap defaults;
#define KELVANE_REGISTER_KEY(Type, keyName, initial)                                             \
    defaults.insert(keyName().name(), toStored(keyName().defaultValue()));
    KELVANE_SETTINGS_KEYS(KELVANE_REGISTER_KEY)
#undef KELVANE_REGISTER_KEY
    return defaults;
}

} // namespace kelvane::Keys
