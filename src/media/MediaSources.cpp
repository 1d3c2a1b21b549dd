#include "MediaSources.h"

namespace kelvane {

std::optional<QString> appleScriptName(MediaSource source)
{
    switch (source) {
    case MediaSource::appleMusic:
        return QStringLiteral("Music");
    case MediaSource::spotify:
        return QStringLiteral("Spotify");
    case MediaSource::systemWide:
        break;
    }
    return std::nullopt;
}

std::optional<QString> bundleIdentifier(MediaSource source)
{
    if (source == MediaSource::systemWide)
        return std::nullopt;
    return json::rawValue(source);
}

const QStringList& knownMusicPlayers()
{
    static const QStringList players{
        QStringLiteral("com.apple.Music"),       QStringLiteral("com.spotify.client"),
        QStringLiteral("com.spotube.SpotubeMacOS"), QStringLiteral("com.tidal.desktop"),
        QStringLiteral("com.coppertino.Vox"),    QStringLiteral("com.tencent.QQMusicMac"),
        QStringLiteral("com.netease.163music"),  QStringLiteral("com.kugou.player"),
        QStringLiteral("com.deezer.DeezerDesktop"), QStringLiteral("com.apple.iTunes"),
        QStringLiteral("org.videolan.vlc"),      QStringLiteral("com.feishin.feishin")};
    return players;
}

QString canonicalPlayerIdentifier(const QString& name)
{
    if (const auto browser = BrowserType::getBrowserBundleId(name))
        return *browser;
    // The Linux names of the known players, by their canonical identifier.
    static const QList<QStringList> players{
        {QStringLiteral("com.apple.Music"), QStringLiteral("cider"), QStringLiteral("apple-music")},
        {QStringLiteral("com.spotify.client"), QStringLiteral("spotify")},
        {QStringLiteral("com.spotube.SpotubeMacOS"), QStringLiteral("spotube")},
        {QStringLiteral("com.tidal.desktop"), QStringLiteral("tidal-hifi")},
        {QStringLiteral("com.deezer.DeezerDesktop"), QStringLiteral("deezer-desktop"), QStringLiteral("deezer")},
        {QStringLiteral("org.videolan.vlc"), QStringLiteral("vlc")},
        {QStringLiteral("com.feishin.feishin"), QStringLiteral("feishin")}};
    const QString lowered = name.toLower();
    for (const QStringList& names : players)
        for (const QString& alias : names)
            if (alias.toLower() == lowered)
                return names.first();
    return name;
}

namespace BrowserType {

std::optional<QString> getBrowserBundleId(const QString& identifier)
{
    // Each canonical identifier, then the names the same browser has on Linux desktops (its
    // desktop entry or its player name on the session bus).
    static const QList<QStringList> browsers{
        {QStringLiteral("com.apple.Safari")},
        {QStringLiteral("com.google.Chrome"), QStringLiteral("google-chrome"), QStringLiteral("chromium"),
         QStringLiteral("chromium-browser"), QStringLiteral("chrome")},
        {QStringLiteral("org.mozilla.firefox"), QStringLiteral("firefox"), QStringLiteral("firefox-esr")},
        {QStringLiteral("com.microsoft.edgemac"), QStringLiteral("microsoft-edge")},
        {QStringLiteral("com.operasoftware.Opera"), QStringLiteral("opera")},
        {QStringLiteral("com.brave.Browser"), QStringLiteral("brave-browser"), QStringLiteral("brave")},
        {QStringLiteral("com.vivaldi.Vivaldi"), QStringLiteral("vivaldi-stable"), QStringLiteral("vivaldi")},
        {QStringLiteral("com.duckduckgo.macos")},
        {QStringLiteral("org.torproject.torbrowser"), QStringLiteral("torbrowser")},
        {QStringLiteral("ru.yandex.desktop.yandex-browser"), QStringLiteral("yandex-browser")}};
    const QString lowered = identifier.toLower();
    for (const QStringList& names : browsers)
        for (const QString& name : names)
            if (name.toLower() == lowered)
                return names.first();
    return std::nullopt;
}

bool isLikelyBrowserApp(const QString& identifier) { return getBrowserBundleId(identifier).has_value(); }

} // namespace BrowserType

} // namespace kelvane
