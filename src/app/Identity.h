#pragma once

#include <QString>

namespace kelvane::identity {

// The application's reverse-domain identifier and the one it had before, written down here only.
inline constexpr char currentPrefix[] = "io.kelvane.";
inline constexpr char legacyPrefix[] = "com.kelvanelabs.";
inline constexpr char bundleIdentifier[] = "io.kelvane.Kelvane";
// The version being run, as the project declares it.
inline constexpr char version[] = KELVANE_VERSION;

// The scripting surface on the session bus.
inline constexpr char busName[] = "io.kelvane.Kelvane";
inline constexpr char objectPath[] = "/io/kelvane/Kelvane";
inline constexpr char interfaceName[] = "io.kelvane.Kelvane";

// Where an identifier keeps its preferences: "tld.maker.App" lives where QSettings puts the
// maker's application on Linux, $XDG_CONFIG_HOME/maker/app.conf (~/.config/kelvane/kelvane.conf).
QString preferencesPath(const QString& identifier);
// Its application-support folder, $XDG_DATA_HOME/<identifier>; "Kelvane" without an identifier.
QString applicationSupportPath(const QString& identifier);

} // namespace kelvane::identity
