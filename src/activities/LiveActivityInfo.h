#pragma once

#include "settings/SettingsTypes.h"

#include <QString>

namespace kelvane {

// What the settings list shows of an activity: its name and its icon (a freedesktop icon name).
QString displayName(LiveActivity activity);
QString iconName(LiveActivity activity);

} // namespace kelvane
