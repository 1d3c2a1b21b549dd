#include "MprisDecoding.h"

#include "media/MediaSources.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QUrl>

#include <cmath>

namespace kelvane::mpris {

QVariant plain(const QVariant& value)
{
    if (value.userType() == qMetaTypeId<QDBusVariant>())
        return plain(value.value<QDBusVariant>().variant());
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return value;
    const QDBusArgument argument = value.value<QDBusArgument>();
    switch (argument.currentType()) {
    case QDBusArgument::MapType: {
        QVariantMap map;
        argument.beginMap();
        while (!argument.atEnd()) {
            argument.beginMapEntry();
            const QString key = plain(argument.asVariant()).toString();
            map.insert(key, plain(argument.asVariant()));
            argument.endMapEntry();
        }
        argument.endMap();
        return map;
    }
    case QDBusArgument::ArrayType: {
        QVariantList list;
        argument.beginArray();
        while (!argument.atEnd())
            list.append(plain(argument.asVariant()));
        argument.endArray();
        return list;
    }
    default:
        return argument.asVariant();
    }
}

QVariantMap plainMap(const QVariant& value) { return plain(value).toMap(); }

namespace {
QString joined(const QVariant& value)
{
    if (value.userType() == QMetaType::QString)
        return value.toString();
    QStringList parts;
    for (const QVariant& part : value.toList())
        parts.append(part.toString());
    if (parts.isEmpty())
        parts = value.toStringList();
    return parts.join(QStringLiteral(", "));
}
} // namespace

std::optional<qint64> micros(const QVariant& value)
{
    // Far beyond any track (some 285 years), and still exact as a real number: a position moved on
    // from here, or shown as a real number, never overflows.
    constexpr qint64 longest = qint64(1) << 53;
    if (value.typeId() == QMetaType::ULongLong) {
        const quint64 number = value.toULongLong();
        return number <= quint64(longest) ? std::optional(qint64(number)) : std::nullopt;
    }
    bool ok = false;
    const qint64 number = value.toLongLong(&ok);
    if (ok)
        return number >= -longest && number <= longest ? std::optional(number) : std::nullopt;
    const double real = value.toDouble(&ok);
    if (!ok || !std::isfinite(real) || std::abs(real) > double(longest))
        return std::nullopt;
    return static_cast<qint64>(real);
}

QString trackId(const QVariantMap& metadata)
{
    const QVariant id = metadata.value(QStringLiteral("mpris:trackid"));
    if (id.userType() == qMetaTypeId<QDBusObjectPath>())
        return id.value<QDBusObjectPath>().path();
    return id.toString();
}

void describe(MprisPlayer& player, const QVariantMap& rootProperties)
{
    player.identity = rootProperties.value(QStringLiteral("Identity")).toString();
    player.desktopEntry = rootProperties.value(QStringLiteral("DesktopEntry")).toString();
    QString name = player.desktopEntry;
    if (name.isEmpty()) {
        name = player.busName.mid(MprisPlayers::prefix().size());
        // Players that may run more than once add ".instance<pid>".
        if (const qsizetype instance = name.indexOf(QStringLiteral(".instance")); instance > 0)
            name.truncate(instance);
    }
    player.bundleIdentifier = canonicalPlayerIdentifier(name);
    player.displayName = player.identity.isEmpty() ? name : player.identity;
}

Changes apply(MprisPlayer& player, const QVariantMap& properties)
{
    Changes changes;
    if (const auto status = properties.constFind(QStringLiteral("PlaybackStatus")); status != properties.cend()) {
        const QString value = status->toString();
        if (value != player.playbackStatus) {
            // The position stops or starts moving from here.
            player.positionMicros = player.currentPositionMicros();
            player.positionReadAt.start();
            player.playbackStatus = value;
            changes.status = true;
            changes.positionStale = true;
        }
    }
    if (const auto metadata = properties.constFind(QStringLiteral("Metadata")); metadata != properties.cend()) {
        QVariantMap fresh = plainMap(*metadata);
        changes.positionStale =
            changes.positionStale || trackId(fresh) != trackId(player.metadata) ||
            fresh.value(QStringLiteral("xesam:url")) != player.metadata.value(QStringLiteral("xesam:url"));
        player.metadata = std::move(fresh);
        changes.metadata = true;
    }
    if (const auto position = properties.constFind(QStringLiteral("Position")); position != properties.cend()) {
        player.positionMicros = micros(*position);
        player.positionReadAt.start();
        changes.positionStale = false;
    }
    return changes;
}

} // namespace kelvane::mpris

namespace kelvane {

TrackInfo MprisPlayer::trackInfo() const
{
    QString title = metadata.value(QStringLiteral("xesam:title")).toString();
    if (title.isEmpty())
        title = QUrl(metadata.value(QStringLiteral("xesam:url")).toString()).fileName();
    if (playbackStatus == QLatin1String("Stopped") || title.isEmpty())
        return {};
    TrackInfo::Payload payload;
    payload.title = title;
    if (const QVariant artist = metadata.value(QStringLiteral("xesam:artist")); artist.isValid())
        payload.artist = mpris::joined(artist);
    if (const QVariant album = metadata.value(QStringLiteral("xesam:album")); album.isValid())
        payload.album = album.toString();
    payload.applicationName = displayName;
    payload.bundleIdentifier = bundleIdentifier;
    payload.clientID = busName;
    if (playbackStatus == QLatin1String("Playing") || playbackStatus == QLatin1String("Paused"))
        payload.isPlaying = playbackStatus == QLatin1String("Playing");
    if (const auto length = mpris::micros(metadata.value(QStringLiteral("mpris:length"))); length && *length > 0)
        payload.durationMicros = static_cast<double>(*length);
    if (const auto position = currentPositionMicros())
        payload.elapsedTimeMicros = static_cast<double>(std::max<qint64>(0, *position));
    payload.artwork = artwork;
    return TrackInfo{payload};
}

} // namespace kelvane
