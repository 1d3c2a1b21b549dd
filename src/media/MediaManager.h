#pragma once

#include "NowPlayingController.h"
#include "Track.h"

#include "core/Scheduler.h"
#include "settings/SettingValue.h"

#include <QObject>

#include <array>
#include <map>

namespace kelvane {

class ActiveLiveActivitiesManager;
class TimersManager;

// What is playing: follows the system's now-playing listener, knows every application that
// publishes what it plays and which of them is the active one, moves the elapsed time on between
// updates, raises and drops the media activity, sends playback commands to the right player, and
// repairs its listener when it ends, when a player starts and when the machine wakes.
// Main thread only.
class MediaManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString title READ title NOTIFY trackChanged)
    Q_PROPERTY(QString artist READ artist NOTIFY trackChanged)
    Q_PROPERTY(QString album READ album NOTIFY trackChanged)
    Q_PROPERTY(QString appName READ appName NOTIFY trackChanged)
    Q_PROPERTY(bool hasTrack READ hasTrack NOTIFY trackChanged)
    Q_PROPERTY(bool hasArtwork READ hasArtwork NOTIFY trackChanged)
    // Changes with the track: views that cache pictures key them by it.
    Q_PROPERTY(QString albumId READ albumId NOTIFY trackChanged)
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY isPlayingChanged)
    // Seconds; 0 while unknown.
    Q_PROPERTY(double duration READ durationSeconds NOTIFY durationChanged)
    // The sources for the source switcher: clientID, displayName, pid, and whether each is the
    // active one and the pinned one.
    Q_PROPERTY(QVariantList sources READ sourcesForViews NOTIFY sourcesForViewsChanged)
public:
    static constexpr double trackUpdateInterval = 1.0;
    // A change of the play state passes the throttle when the last update is at least this old.
    static constexpr double playStateInterval = 0.2;
    static constexpr double appCheckInterval = 10.0;
    static constexpr double scriptCooldownInterval = 2.0;
    static constexpr double environmentRecoveryDelay = 0.5;
    // Waits before the listener is started again, by attempt; the fifth and later wait the last.
    static constexpr std::array recoveryBackoff{0.25, 1.0, 2.0, 5.0, 10.0};
    static constexpr auto pauseDismissTimerKey = "pauseLiveActivityDismiss";

    struct Dependencies {
        Scheduler& scheduler;
        TimersManager& timers;
        SettingsStore& settings;
        ActiveLiveActivitiesManager& liveActivities;
        MediaEnvironment& environment;
    };
    explicit MediaManager(Dependencies dependencies, QObject* parent = nullptr);
    ~MediaManager() override;

    const Track& track() const { return m_track; }
    QString title() const { return m_track.title; }
    QString artist() const { return m_track.artist; }
    QString album() const { return m_track.album; }
    QString appName() const { return m_track.appName; }
    bool hasTrack() const { return !(m_track == Track::empty()); }
    bool hasArtwork() const { return !m_track.albumArt.isNull(); }
    QString albumId() const { return m_track.albumId(); }
    // How many track records have been looked at since start (after the throttle).
    int trackUpdatesHandled() const { return m_trackUpdatesHandled; }
    bool isPlaying() const { return m_isPlaying; }
    double elapsedTime() const { return m_elapsedTime; }
    std::optional<double> duration() const { return m_duration; }
    double durationSeconds() const { return m_duration.value_or(0); }
    // The elapsed time now: moved on since the last report while playing, never past the duration.
    Q_INVOKABLE double currentElapsedTime() const;
    const std::vector<NowPlayingSource>& nowPlayingSources() const { return m_nowPlayingSources; }
    QVariantList sourcesForViews() const;
    // The pinned source, else the instance playing the track, else the first.
    std::optional<NowPlayingSource> activeSource() const;
    // The source the user chose to follow, by its client identifier; the listener follows it
    // whenever it publishes.
    const std::optional<QString>& userPinnedClientID() const { return m_userPinnedClientID; }
    void setUserPinnedClientID(std::optional<QString> clientID);
    // The source switcher's choice: a client to follow, or none (empty) to let the notch choose.
    Q_INVOKABLE void pinSource(const QString& clientID);
    bool mrFunctionsAvailable() const { return m_mrFunctionsAvailable; }
    MediaSource preferredMediaSource() const { return m_preferredMediaSource; }
    int listenerGeneration() const { return m_listenerGeneration; }
    int listenerRecoveryAttempt() const { return m_listenerRecoveryAttempt; }
    bool recoveryPending() const { return m_listenerRecoveryWorkItem.isActive(); }

    Q_INVOKABLE void togglePlayPause();
    Q_INVOKABLE void goToNextTrack();
    Q_INVOKABLE void goToPreviousTrack();
    // Pauses and takes the media activity away at once.
    Q_INVOKABLE void pauseAndDismiss();
    // Brings the playing application forward.
    Q_INVOKABLE void openApp();
    // Moves playback to a point of the track, where the system can seek.
    Q_INVOKABLE void seek(double seconds);
    void reconfigureMediaController();
    // Forgets the current track.
    void resetData();

    void startFreshMediaController(bool resetState, bool resetRecoveryAttempts);
    void scheduleEnvironmentRecovery();
    void scheduleListenerRecovery(int afterGeneration);
    void refreshNowPlayingClients();
    // A player script; the same text again within the cooldown is not run.
    void runAppleScript(const QString& script);
    void forceMediaControllerRestart(const std::optional<QString>& appName = std::nullopt);

Q_SIGNALS:
    void trackChanged();
    void isPlayingChanged();
    void elapsedTimeChanged();
    void durationChanged();
    void nowPlayingSourcesChanged();
    void userPinnedClientIDChanged();
    void sourcesForViewsChanged();

private:
    void connectViews();
    void loadMediaRemote();
    void installEnvironmentObservers();
    void onTrackInfoReceived(int generation, const TrackInfo& info);
    void throttledTrackUpdate(const TrackInfo& info);
    void handleTrackInfoUpdate(const TrackInfo& info);
    void setTrack(const Track& track);
    void setIsPlaying(bool playing);
    // Moving: whether the player was playing at that time; the shown state when unknown.
    void setElapsedTime(double seconds, std::optional<bool> moving = std::nullopt);
    void setDuration(std::optional<double> seconds);
    void setNowPlayingSources(std::vector<NowPlayingSource> sources);
    void updateLiveActivities();
    void startAppRunningMonitor();
    void appRunningTick();
    bool resetIfNeeded();
    void sendCommand(MediaCommand command, const QString& scriptAction);
    double nowSeconds() const;
    // The client the listener must follow first: the user's choice, else the preferred player.
    std::optional<QString> pinnedClient() const;
    // The running instance whose track is shown; empty when unknown.
    QString trackClient() const;

    Dependencies m_deps;
    double m_elapsedTime = 0;
    std::chrono::nanoseconds m_elapsedTimeAnchor{};
    // Whether the elapsed time moves on from its anchor: the player's own state when it was told.
    bool m_elapsedTimeMoving = false;
    std::optional<double> m_duration;
    std::vector<NowPlayingSource> m_nowPlayingSources;
    std::optional<QString> m_userPinnedClientID;
    MediaRemoteFunctions m_functions;
    bool m_mrFunctionsAvailable = false;
    bool m_isPlaying = false;
    Track m_track = Track::empty();
    MediaSource m_preferredMediaSource = MediaSource::systemWide;
    std::unique_ptr<NowPlayingController> m_mediaController;
    ScheduledTask m_appRunningCheckTimer;
    int m_listenerGeneration = 0;
    int m_trackUpdatesHandled = 0;
    int m_listenerRecoveryAttempt = 0;
    ScheduledTask m_listenerRecoveryWorkItem;
    double m_lastAppCheck = 0;
    std::map<QString, double> m_scriptCooldowns;
    // The trailing edge of the track-update throttle: the newest record waits for its turn.
    ScheduledTask m_throttledTrackUpdate;
    std::optional<TrackInfo> m_pendingTrackInfo;
    std::optional<std::chrono::nanoseconds> m_lastThrottledUpdate;
    TrackInfo m_lastReceivedTrackInfo;
    std::chrono::nanoseconds m_ignoreTrackUpdatesUntil = std::chrono::nanoseconds::min();
    SettingValue<GeneralSettings> m_generalSettings;
    SettingValue<LiveActivitiesSettings> m_liveActivitiesSettings;
};

} // namespace kelvane
