#pragma once

#include <QImage>
#include <QString>

#include <optional>

namespace kelvane {

// What is playing, as the views show it.
struct Track {
    QString title;
    QString artist;
    QString album;
    // Display name of the application that plays it.
    QString appName;
    std::optional<bool> loved;
    // The playing application's identity, when known.
    std::optional<QString> mediaApp;
    // Empty when no artwork came with the track.
    QImage albumArt;
    // The canonical identifier of the web browser that plays it, when the player is a browser.
    std::optional<QString> browserBundleId;
    // Empty when unknown.
    QString appBundleId;

    // "Nothing playing".
    static Track empty();
    // Two updates with the same identity are the same track.
    QString albumId() const;
    // Whether a freshly built track must replace this one: another track, another player, or the
    // same track bringing its first real artwork.
    bool isValidReplacement(const Track& other) const;

    bool operator==(const Track& other) const = default;
};

} // namespace kelvane
