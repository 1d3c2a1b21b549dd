#include "activities/ActiveLiveActivitiesManager.h"
#include "core/Log.h"
#include "core/ManualScheduler.h"
#include "core/TimersManager.h"
#include "media/MediaManager.h"
#include "support/FakeMediaEnvironment.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace kelvane;
using kelvane::test::FakeEnvironment;
using kelvane::test::Media;
using namespace std::chrono_literals;

namespace {
TrackInfo record(const QString& title, const QString& bundle = "vlc", bool playing = true)
{
    TrackInfo info;
    info.payload = TrackInfo::Payload{};
    info.payload->title = title;
    info.payload->artist = "Artist";
    info.payload->applicationName = "VLC";
    if (!bundle.isEmpty())
        info.payload->bundleIdentifier = bundle;
    info.payload->isPlaying = playing;
    info.payload->durationMicros = 200e6;
    info.payload->elapsedTimeMicros = 10e6;
    return info;
}

} // namespace

TEST(Track, IsReplacedByAnotherTrackAnotherPlayerOrItsFirstArtwork)
{
    Track held = Track::empty();
    held.title = "Song";
    QImage art(4, 4, QImage::Format_RGB32);
    art.fill(Qt::red);
    QImage otherArt(4, 4, QImage::Format_RGB32);
    otherArt.fill(Qt::blue);
    const auto with = [&](auto change) {
        Track t = held;
        change(t);
        return t;
    };
    EXPECT_EQ(held.albumId(), "SongUnknown ArtistUnknown Albumfalse");
    const struct {
        Track held;
        Track fresh;
        bool replaces;
    } cases[] = {
        {held, held, false},
        {held, with([](Track& t) { t.title = "Other"; }), true},
        {held, with([](Track& t) { t.loved = true; }), true},
        {held, with([](Track& t) { t.loved = false; }), false},
        {held, with([](Track& t) { t.mediaApp = "vlc"; }), true},
        {held, with([&](Track& t) { t.albumArt = art; }), true},
        {with([&](Track& t) { t.albumArt = art; }), with([&](Track& t) { t.albumArt = otherArt; }), false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.held.isValidReplacement(c.fresh), c.replaces) << c.fresh.albumId().toStdString();

    const struct {
        const char* identifier;
        std::optional<QString> browser;
    } browsers[] = {{"com.google.chrome", "com.google.Chrome"}, {"firefox-esr", "org.mozilla.firefox"},
                    {"Chromium", "com.google.Chrome"},         {"org.videolan.vlc", std::nullopt},
                    {"", std::nullopt}};
    for (const auto& b : browsers)
        EXPECT_EQ(BrowserType::getBrowserBundleId(b.identifier), b.browser) << b.identifier;

    // Players known by their Linux names are told by their canonical identifiers.
    const struct {
        const char* name;
        const char* canonical;
    } players[] = {{"spotify", "com.spotify.client"}, {"VLC", "org.videolan.vlc"}, {"firefox", "org.mozilla.firefox"},
                   {"mpv", "mpv"},                    {"org.gnome.Rhythmbox3", "org.gnome.Rhythmbox3"}};
    for (const auto& p : players)
        EXPECT_EQ(canonicalPlayerIdentifier(p.name), p.canonical) << p.name;
}

TEST(MediaManager, FollowsTheTrackMovesTheElapsedTimeAndRaisesTheActivity)
{
    Media m;
    m.deliver(record("Song"));
    EXPECT_EQ(m.manager->title(), "Song");
    EXPECT_TRUE(m.manager->isPlaying());
    EXPECT_EQ(m.manager->duration(), 200.0);
    EXPECT_TRUE(m.mediaRaised());

    // Between updates the elapsed time moves on while playing, and never past the duration.
    const struct {
        std::chrono::milliseconds step;
        double elapsed;
    } steps[] = {{0ms, 10}, {2'500ms, 12.5}, {100s, 112.5}, {100s, 200}};
    for (const auto& s : steps) {
        m.scheduler.advance(s.step);
        EXPECT_DOUBLE_EQ(m.manager->currentElapsedTime(), s.elapsed);
    }

    // A pause shorter than the inactivity timeout keeps the activity; a longer one drops it.
    m.scheduler.advance(1s);
    m.deliver(record("Song", "vlc", false));
    m.scheduler.advance(9s);
    EXPECT_TRUE(m.mediaRaised());
    m.deliver(record("Song", "vlc", true));
    m.scheduler.advance(20s);
    EXPECT_TRUE(m.mediaRaised());
    m.deliver(record("Song", "vlc", false));
    m.scheduler.advance(10s);
    EXPECT_FALSE(m.mediaRaised());
    EXPECT_EQ(m.manager->title(), "Song");

    // Played again after that, by the player itself or from the notch: the activity comes back.
    m.deliver(record("Song", "vlc", true));
    EXPECT_TRUE(m.mediaRaised());
    m.scheduler.advance(1s);
    m.deliver(record("Song", "vlc", false));
    m.scheduler.advance(10s);
    ASSERT_FALSE(m.mediaRaised());
    m.manager->togglePlayPause();
    m.deliver(record("Song", "vlc", true));
    EXPECT_TRUE(m.mediaRaised());

    // Nothing playing any more.
    m.deliver(TrackInfo{});
    EXPECT_FALSE(m.manager->hasTrack());
    EXPECT_EQ(m.manager->duration(), std::nullopt);
}

TEST(MediaManager, HandlesAtMostOneTrackUpdateASecondAndAlwaysTheLast)
{
    Media m;
    QSignalSpy changed(m.manager.get(), &MediaManager::trackChanged);
    for (int i = 1; i <= 500; ++i) {
        m.deliver(record(QString::number(i)));
        m.scheduler.advance(20ms);
    }
    m.scheduler.advance(1s);
    EXPECT_LE(changed.count(), 11);
    EXPECT_EQ(m.manager->title(), "500");

    // A player that vanishes with an update still held back is not brought back by it.
    m.deliver(record("Last words"));
    m.scheduler.advance(100ms);
    m.deliver(record("Held back"));
    m.deliver(TrackInfo{});
    m.scheduler.advance(2s);
    EXPECT_FALSE(m.manager->hasTrack());
    EXPECT_FALSE(m.mediaRaised());
}

TEST(MediaManager, APinnedPlayerOnlyHearsItselfAndAQuietPinIsLetGo)
{
    Media m(MediaSource::spotify);
    m.deliver(record("From VLC", "vlc"));
    EXPECT_FALSE(m.manager->hasTrack());
    m.deliver(record("No identifier", ""));
    EXPECT_EQ(m.manager->title(), "No identifier");
    m.scheduler.advance(2s);
    m.deliver(record("From Spotify", "com.spotify.client"));
    EXPECT_EQ(m.manager->title(), "From Spotify");

    Media s;
    s.clients = {QStringList{"vlc", "VLC"}, QStringList{"", "nameless"}, QStringList{"firefox", "Firefox"}};
    s.deliver(record("Song", "firefox"));
    ASSERT_EQ(s.manager->nowPlayingSources().size(), 2u);
    EXPECT_EQ(s.manager->activeSource()->bundleIdentifier, "firefox");
    s.manager->setUserPinnedClientID("vlc");
    EXPECT_EQ(s.manager->activeSource()->displayName, "VLC");
    s.clients = {QStringList{"firefox", "Firefox"}};
    s.deliver(record("Song", "firefox"));
    EXPECT_EQ(s.manager->userPinnedClientID(), std::nullopt);
}

TEST(MediaManager, RecoversAnEndedListenerWithABackOffThatAHealthyRecordResets)
{
    Media m;
    const double expected[] = {0.25, 1, 2, 5, 10, 10, 10};
    for (double wait : expected) {
        const int made = m.environment.controllersMade;
        m.environment.controller->onListenerTerminated();
        m.scheduler.advance(std::chrono::milliseconds(static_cast<int>(wait * 1000) - 1));
        EXPECT_EQ(m.environment.controllersMade, made) << wait;
        m.scheduler.advance(1ms);
        EXPECT_EQ(m.environment.controllersMade, made + 1) << wait;
    }
    // A record from the fresh listener shows it is healthy again; a stale listener is not heard.
    auto staleCallback = m.environment.controller->onTrackInfoReceived;
    m.deliver(record("Song"));
    EXPECT_EQ(m.manager->listenerRecoveryAttempt(), 0);
    m.scheduler.advance(2s);
    m.environment.onWake();
    m.scheduler.advance(500ms);
    // The wake started a fresh listener and forgot the track; the old listener is not heard.
    staleCallback(record("Stale"));
    EXPECT_FALSE(m.manager->hasTrack());
    m.deliver(record("Fresh"));
    EXPECT_EQ(m.manager->title(), "Fresh");
}

TEST(MediaManager, SendsCommandsDownItsChainAndRunsAScriptOnceInTwoSeconds)
{
    std::vector<QString> route;
    const struct {
        bool toAppWorks;
        bool toSystemWorks;
        std::vector<QString> route;
        std::vector<MediaCommand> toController;
    } chains[] = {
        {true, true, {"app vlc 4"}, {}},
        {false, true, {"app vlc 4", "system 4"}, {}},
        {false, false, {"app vlc 4", "system 4"}, {MediaCommand::nextTrack}},
    };
    for (const auto& c : chains) {
        route.clear();
        Media m(MediaSource::systemWide, [&](FakeEnvironment& e) {
            e.functions->sendCommandToApp = [&](MediaCommand command, const QString& app) {
                route.push_back(QString("app %1 %2").arg(app).arg(int(command)));
                return c.toAppWorks;
            };
            e.functions->sendCommand = [&](MediaCommand command) {
                route.push_back(QString("system %1").arg(int(command)));
                return c.toSystemWorks;
            };
        });
        m.deliver(record("Song", "vlc"));
        m.manager->goToNextTrack();
        EXPECT_EQ(route, c.route);
        EXPECT_EQ(m.environment.controller->sent, c.toController);
    }

    // Play/pause shows its new state at once, before the player answers.
    Media m;
    m.deliver(record("Song", "vlc"));
    m.manager->togglePlayPause();
    EXPECT_FALSE(m.manager->isPlaying());
    EXPECT_EQ(m.environment.controller->sent, std::vector{MediaCommand::togglePlayPause});

    LogCapture log;
    Media pinned(MediaSource::appleMusic);
    pinned.environment.scriptError = "No such file or directory";
    pinned.manager->goToNextTrack();
    pinned.manager->goToNextTrack();
    pinned.scheduler.advance(2s);
    pinned.manager->goToNextTrack();
    pinned.manager->pauseAndDismiss();
    EXPECT_EQ(pinned.environment.scripts,
              (QStringList{"tell application \"Music\" to next track", "tell application \"Music\" to next track",
                           "tell application \"Music\" to pause"}));
    EXPECT_EQ(log.lines().count("[MediaManager] Error running AppleScript: No such file or directory"), 3);
}

TEST(MediaManager, SaysWhatTheSystemLacks)
{
    const struct {
        std::function<void(FakeEnvironment&)> setUp;
        QStringList lines;
        bool multiSource;
    } cases[] = {
        {[](FakeEnvironment& e) { e.functions.reset(); },
         {"[MediaManager] MediaRemote.framework unavailable — multi-source and seek disabled."},
         false},
        {[](FakeEnvironment& e) { e.functions->getClients = nullptr; },
         {"[MediaManager] MRMediaRemoteGetNowPlayingClients not found — multi-source disabled."},
         false},
        {[](FakeEnvironment& e) { e.functions->setElapsedTime = nullptr; },
         {"[MediaManager] MRMediaRemoteSetElapsedTime not found — seek disabled."},
         true},
    };
    for (const auto& c : cases) {
        LogCapture log;
        Media m(MediaSource::systemWide, c.setUp);
        EXPECT_EQ(log.lines(), c.lines);
        EXPECT_EQ(m.manager->mrFunctionsAvailable(), c.multiSource);
    }
}

// Two instances of one player: what is shown, what is active, where commands and the raise go
// and which instance the listener is told to follow are all that one instance, by its client.
TEST(MediaManager, SpeaksToTheInstanceWhoseTrackIsShown)
{
    std::vector<QString> route;
    Media m(MediaSource::systemWide, [&](FakeEnvironment& e) {
        e.functions->sendCommandToApp = [&](MediaCommand command, const QString& client) {
            route.push_back(QString("%1 %2").arg(client).arg(int(command)));
            return true;
        };
    });
    m.clients = {QStringList{"mpv", "mpv", ":first"}, QStringList{"mpv", "mpv", ":second"}};
    m.environment.onClientsChanged();
    ASSERT_EQ(m.manager->nowPlayingSources().size(), 2u);
    EXPECT_EQ(m.manager->activeSource()->clientID, ":first");

    TrackInfo second = record("Second", "mpv");
    second.payload->clientID = ":second";
    m.deliver(second);
    EXPECT_EQ(m.manager->activeSource()->clientID, ":second");
    m.manager->togglePlayPause();
    m.manager->pauseAndDismiss();
    m.manager->openApp();
    EXPECT_EQ(route, (std::vector<QString>{":second 2", ":second 1"}));
    EXPECT_EQ(m.environment.activated, QStringList{":second"});

    // The user's pin goes to the listener, which follows it; letting go gives the choice back,
    // and the preferred player stands in for a pin.
    EXPECT_EQ(m.environment.controller->pinned, std::nullopt);
    m.manager->pinSource(":first");
    EXPECT_EQ(m.manager->activeSource()->clientID, ":first");
    EXPECT_EQ(m.environment.controller->pinned, ":first");
    m.manager->pinSource("");
    EXPECT_EQ(m.environment.controller->pinned, std::nullopt);
    Media spotify(MediaSource::spotify);
    EXPECT_EQ(spotify.environment.controller->pinned, "com.spotify.client");
}

// A pause or a play is shown at once unless the player flips faster than people press, when it
// reaches the manager through the throttle after the position: the shown time follows the
// position as the player told it either way, and stays where the player is.
TEST(MediaManager, ElapsedTimeStaysWithThePlayerAcrossPauseAndPlay)
{
    Media m;
    const auto at = [](double seconds, bool playing) {
        TrackInfo info = record("Song", "vlc", playing);
        info.payload->elapsedTimeMicros = seconds * 1e6;
        return info;
    };
    m.deliver(at(10, true));
    const struct {
        std::chrono::milliseconds step;
        std::optional<TrackInfo> told;
        double shown;
        bool playing;
    } steps[] = {
        {300ms, at(10.3, false), 10.3, false}, // a pause is shown at once
        {5s, std::nullopt, 10.3, false},
        {0ms, at(10.3, true), 10.3, true},
        {200ms, at(10.5, false), 10.5, false},
        {100ms, at(10.5, true), 10.5, false}, // flipping faster than people press: throttled
        {400ms, std::nullopt, 10.9, false},
        {500ms, std::nullopt, 11.4, true},
        {2s, std::nullopt, 13.4, true},
    };
    for (const auto& s : steps) {
        m.scheduler.advance(s.step);
        if (s.told)
            m.deliver(*s.told);
        EXPECT_NEAR(m.manager->currentElapsedTime(), s.shown, 1e-9) << m.scheduler.clock().monotonic().count();
        EXPECT_EQ(m.manager->isPlaying(), s.playing) << m.scheduler.clock().monotonic().count();
    }
}
