#include "platform/linux/MprisDecoding.h"

#include <QDBusVariant>

#include <gtest/gtest.h>

#include <limits>

using namespace kelvane;

TEST(MprisDecoding, TimesReadAsWholeMicrosecondsOrAsNothingWhenTheyDoNotFit)
{
    const double huge = 1e300;
    const struct {
        QVariant value;
        std::optional<qint64> micros;
    } cases[] = {
        {qint64(90'000'000), 90'000'000},
        {quint64(5), 5},
        {QVariant::fromValue(QDBusVariant(qint64(7))), 7},
        {2.5e6, 2'500'000},
        {QStringLiteral("120"), 120},
        {QStringLiteral("soon"), std::nullopt},
        {huge, std::nullopt},
        {-huge, std::nullopt},
        {std::numeric_limits<double>::quiet_NaN(), std::nullopt},
        {std::numeric_limits<double>::infinity(), std::nullopt},
        {std::numeric_limits<qint64>::max(), std::nullopt},
        {std::numeric_limits<quint64>::max(), std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(mpris::micros(mpris::plain(c.value)), c.micros) << c.value.toString().toStdString();
}

TEST(MprisDecoding, APlayerAtTheEndOfTimeShowsNoElapsedTimeRatherThanAWrappedOne)
{
    MprisPlayer player;
    player.busName = QStringLiteral("org.mpris.MediaPlayer2.odd");
    mpris::describe(player, {{QStringLiteral("Identity"), QStringLiteral("Odd Player")}});
    mpris::apply(player, {{QStringLiteral("PlaybackStatus"), QStringLiteral("Playing")},
                          {QStringLiteral("Metadata"),
                           QVariantMap{{QStringLiteral("xesam:title"), QStringLiteral("Forever")},
                                       {QStringLiteral("mpris:length"), std::numeric_limits<qint64>::max()}}},
                          {QStringLiteral("Position"), std::numeric_limits<qint64>::max()}});
    const TrackInfo track = player.trackInfo();
    ASSERT_TRUE(track.payload);
    EXPECT_EQ(track.payload->title, QStringLiteral("Forever"));
    EXPECT_EQ(track.payload->applicationName, QStringLiteral("Odd Player"));
    EXPECT_EQ(track.payload->elapsedTimeMicros, std::nullopt);
    EXPECT_EQ(track.payload->durationMicros, std::nullopt);
}
