#pragma once

#include <QString>

namespace kelvane {

// Brings the preferences and tray files of the application's former identifier over, once per
// installation; runs before anything else reads them. An identifier outside the current prefix
// (or none) migrates nothing.
void migrateLegacyBundleIdentifier(const QString& bundleIdentifier);

// Moves every item of the former application-support folder into the current one (one failed move
// is printed and the others go on), then points the saved tray list at the moved files.
void migrateLegacyTrayFolder(const QString& from, const QString& to);

} // namespace kelvane
