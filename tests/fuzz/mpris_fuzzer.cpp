// What MPRIS players put on the bus, as another program may: property maps with any values, of any
// type and nesting, read into a player as the platform code reads them, several changes in a row.
// The track it makes is empty or has a title, and no time is negative.

#include "FuzzCheck.h"

#include "platform/linux/MprisDecoding.h"

#include <QDBusObjectPath>
#include <QDBusVariant>

#include <fuzzer/FuzzedDataProvider.h>

using namespace kelvane;

namespace {
const char* const keys[] = {"PlaybackStatus", "Metadata",     "Position",     "Identity",     "DesktopEntry",
                            "xesam:title",    "xesam:url",    "xesam:artist", "xesam:album",  "mpris:length",
                            "mpris:trackid",  "mpris:artUrl", "Rate",         "CanGoNext",    ""};
const char* const strings[] = {"Playing", "Paused", "Stopped", "file:///music/a.flac", "/org/mpris/track/1",
                               "org.mpris.MediaPlayer2.mpv.instance42", "firefox", "spotify", ".instance1", ""};

QVariant value(FuzzedDataProvider& input, int depth);

QVariantMap map(FuzzedDataProvider& input, int depth)
{
    QVariantMap result;
    const int count = input.ConsumeIntegralInRange(0, 6);
    for (int i = 0; i < count; ++i) {
        const QString key = input.ConsumeBool() ? QString::fromLatin1(input.PickValueInArray(keys))
                                                : QString::fromStdString(input.ConsumeRandomLengthString(16));
        result.insert(key, value(input, depth + 1));
    }
    return result;
}

QVariant value(FuzzedDataProvider& input, int depth)
{
    const int kind = input.ConsumeIntegralInRange(0, depth > 4 ? 6 : 10);
    switch (kind) {
    case 0:
        return QString::fromLatin1(input.PickValueInArray(strings));
    case 1:
        return QString::fromStdString(input.ConsumeRandomLengthString(40));
    case 2:
        return input.ConsumeIntegral<qint64>();
    case 3:
        return input.ConsumeFloatingPoint<double>();
    case 4:
        return input.ConsumeIntegral<quint64>();
    case 5:
        return input.ConsumeBool();
    case 6:
        return QVariant::fromValue(QDBusObjectPath(QString::fromStdString(input.ConsumeRandomLengthString(24))));
    case 7:
        return QVariant::fromValue(QDBusVariant(value(input, depth + 1)));
    case 8:
        return map(input, depth);
    case 9: {
        QStringList list;
        for (int i = input.ConsumeIntegralInRange(0, 4); i > 0; --i)
            list << QString::fromStdString(input.ConsumeRandomLengthString(12));
        return list;
    }
    default: {
        QVariantList list;
        for (int i = input.ConsumeIntegralInRange(0, 4); i > 0; --i)
            list << value(input, depth + 1);
        return list;
    }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    MprisPlayer player;
    player.busName = MprisPlayers::prefix() + QString::fromStdString(input.ConsumeRandomLengthString(24));
    mpris::describe(player, map(input, 0));
    FUZZ_CHECK(!player.displayName.isNull());
    player.ready = true;
    for (int step = input.ConsumeIntegralInRange(1, 4); step > 0 && input.remaining_bytes() > 0; --step) {
        QVariantMap properties = map(input, 0);
        if (input.ConsumeBool())
            properties.insert(QStringLiteral("Metadata"), QVariant::fromValue(QDBusVariant(map(input, 1))));
        mpris::apply(player, properties);
        if (input.ConsumeBool())
            player.positionMicros = mpris::micros(mpris::plain(value(input, 0)));

        const TrackInfo track = player.trackInfo();
        if (!track.payload)
            continue;
        FUZZ_CHECK(track.payload->title && !track.payload->title->isEmpty());
        FUZZ_CHECK(!track.payload->durationMicros || *track.payload->durationMicros > 0);
        FUZZ_CHECK(!track.payload->elapsedTimeMicros || *track.payload->elapsedTimeMicros >= 0);
        FUZZ_CHECK(track.payload->clientID == player.busName);
        FUZZ_CHECK(player.rank() >= 0 && player.rank() <= 2);
    }
    return 0;
}
