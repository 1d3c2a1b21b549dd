#pragma once

#include "settings/SettingsTypes.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace kelvane {

// One application that publishes what it plays.
struct NowPlayingSource {
    QString bundleIdentifier;
    QString displayName;
    std::optional<qint32> pid;
    // This one running instance of the application, told apart from its other instances (two
    // windows of one player publish under one application identifier).
    QString clientID;
    bool operator==(const NowPlayingSource&) const = default;
};

// The player a pinned source is scripted by ("Music", "Spotify"); nothing for the system-wide source.
std::optional<QString> appleScriptName(MediaSource source);
// "com.apple.Music", "com.spotify.client"; nothing for the system-wide source.
std::optional<QString> bundleIdentifier(MediaSource source);

// Identifiers of well-known music players.
const QStringList& knownMusicPlayers();

// The canonical identifier of a player that a desktop names by its desktop entry or its name on
// the session bus ("spotify" is "com.spotify.client", "firefox-esr" is "org.mozilla.firefox");
// any other name stands for itself.
QString canonicalPlayerIdentifier(const QString& name);

namespace BrowserType {
// The canonical identifier of the web browser an application identifier names, if it names one.
std::optional<QString> getBrowserBundleId(const QString& identifier);
bool isLikelyBrowserApp(const QString& identifier);
} // namespace BrowserType

} // namespace kelvane
