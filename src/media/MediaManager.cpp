#include "MediaManager.h"

#include "activities/ActiveLiveActivitiesManager.h"
#include "core/HandOff.h"
#include "core/Log.h"
#include "core/MainThread.h"
#include "core/TimersManager.h"

#include <QPointer>

#include <algorithm>

namespace kelvane {

namespace {
double seconds(std::chrono::nanoseconds duration) { return std::chrono::duration<double>(duration).count(); }

QString quoted(const QString& name) { return QLatin1Char('"') + name + QLatin1Char('"'); }
} // namespace

MediaManager::MediaManager(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(dependencies)
    , m_generalSettings(dependencies.settings, Keys::generalSettings(), this,
                        [this](const GeneralSettings& settings) {
                            if (settings.preferredMediaSource == m_preferredMediaSource)
                                return;
                            m_preferredMediaSource = settings.preferredMediaSource;
                            reconfigureMediaController();
                        })
    , m_liveActivitiesSettings(dependencies.settings, Keys::liveActivitiesSettings(), this)
{
    m_elapsedTimeAnchor = m_deps.scheduler.clock().monotonic();
    m_preferredMediaSource = m_generalSettings->preferredMediaSource;
    connectViews();
    loadMediaRemote();
    installEnvironmentObservers();
    reconfigureMediaController();
}

MediaManager::~MediaManager()
{
    m_deps.environment.onApplicationLaunched = nullptr;
    m_deps.environment.onWake = nullptr;
    m_deps.environment.onClientsChanged = nullptr;
    if (m_mediaController) {
        m_mediaController->onTrackInfoReceived = nullptr;
        m_mediaController->onListenerTerminated = nullptr;
        m_mediaController->stop();
    }
    m_deps.timers.removeTimer(QString::fromLatin1(pauseDismissTimerKey));
}

void MediaManager::connectViews()
{
    // What the switcher shows follows the sources, the pin and the shown track.
    for (const auto signal : {&MediaManager::nowPlayingSourcesChanged, &MediaManager::userPinnedClientIDChanged,
                              &MediaManager::trackChanged})
        connect(this, signal, this, &MediaManager::sourcesForViewsChanged);
}

double MediaManager::nowSeconds() const { return seconds(m_deps.scheduler.clock().monotonic()); }

void MediaManager::loadMediaRemote()
{
    const auto functions = m_deps.environment.loadMediaRemote();
    if (!functions) {
        logLine(u"MediaManager", QStringLiteral("MediaRemote.framework unavailable — multi-source and seek disabled."));
        return;
    }
    m_functions = *functions;
    m_mrFunctionsAvailable = static_cast<bool>(m_functions.getClients);
    if (!m_mrFunctionsAvailable)
        logLine(u"MediaManager", QStringLiteral("MRMediaRemoteGetNowPlayingClients not found — multi-source disabled."));
    if (!m_functions.setElapsedTime)
        logLine(u"MediaManager", QStringLiteral("MRMediaRemoteSetElapsedTime not found — seek disabled."));
}

void MediaManager::installEnvironmentObservers()
{
    m_deps.environment.onWake = [this] { scheduleEnvironmentRecovery(); };
    // A player that starts may be the one to follow; the listener looks again either way.
    m_deps.environment.onApplicationLaunched = [this](const QString&) { scheduleEnvironmentRecovery(); };
    m_deps.environment.onClientsChanged = [this] { refreshNowPlayingClients(); };
}

double MediaManager::currentElapsedTime() const
{
    // The time moves as the player was moving when it told it, which a play state still held
    // back by the throttle may not show yet.
    if (!m_elapsedTimeMoving)
        return m_elapsedTime;
    const double current = m_elapsedTime + seconds(m_deps.scheduler.clock().monotonic() - m_elapsedTimeAnchor);
    return m_duration ? std::min(current, *m_duration) : current;
}

std::optional<NowPlayingSource> MediaManager::activeSource() const
{
    const auto withClient = [&](const QString& id) -> std::optional<NowPlayingSource> {
        const auto it = std::find_if(m_nowPlayingSources.begin(), m_nowPlayingSources.end(),
                                     [&](const NowPlayingSource& s) { return s.clientID == id; });
        return it == m_nowPlayingSources.end() ? std::nullopt : std::optional(*it);
    };
    if (m_userPinnedClientID)
        return withClient(*m_userPinnedClientID);
    if (auto playing = withClient(trackClient()))
        return playing;
    if (!m_nowPlayingSources.empty())
        return m_nowPlayingSources.front();
    return std::nullopt;
}

void MediaManager::setUserPinnedClientID(std::optional<QString> clientID)
{
    if (clientID == m_userPinnedClientID)
        return;
    m_userPinnedClientID = std::move(clientID);
    if (m_mediaController)
        m_mediaController->setPinnedClient(pinnedClient());
    Q_EMIT userPinnedClientIDChanged();
}

std::optional<QString> MediaManager::pinnedClient() const
{
    return m_userPinnedClientID ? m_userPinnedClientID : bundleIdentifier(m_preferredMediaSource);
}

void MediaManager::pinSource(const QString& clientID)
{
    setUserPinnedClientID(clientID.isEmpty() ? std::nullopt : std::optional(clientID));
}

QVariantList MediaManager::sourcesForViews() const
{
    const auto active = activeSource();
    QVariantList sources;
    for (const NowPlayingSource& source : m_nowPlayingSources)
        sources.append(QVariantMap{{QStringLiteral("clientID"), source.clientID},
                                   {QStringLiteral("displayName"), source.displayName},
                                   {QStringLiteral("pid"), source.pid ? QVariant(*source.pid) : QVariant()},
                                   {QStringLiteral("active"), active && active->clientID == source.clientID},
                                   {QStringLiteral("pinned"), m_userPinnedClientID == source.clientID}});
    return sources;
}

QString MediaManager::trackClient() const { return m_track.mediaApp.value_or(m_track.appBundleId); }

void MediaManager::reconfigureMediaController()
{
    startFreshMediaController(true, true);
    if (const auto player = appleScriptName(m_preferredMediaSource);
        player && m_deps.environment.isApplicationRunning(*player))
        forceMediaControllerRestart();
}

void MediaManager::startFreshMediaController(bool resetState, bool resetRecoveryAttempts)
{
    assertMainThread();
    m_listenerRecoveryWorkItem.cancel();
    if (resetRecoveryAttempts)
        m_listenerRecoveryAttempt = 0;
    if (m_mediaController) {
        m_mediaController->onTrackInfoReceived = nullptr;
        m_mediaController->onListenerTerminated = nullptr;
        m_mediaController->stop();
    }
    const int generation = ++m_listenerGeneration;
    m_mediaController = m_deps.environment.makeController();
    if (resetState)
        resetData();
    m_mediaController->onTrackInfoReceived = [this, generation](const TrackInfo& info) {
        onTrackInfoReceived(generation, info);
    };
    m_mediaController->onListenerTerminated = [this, generation] {
        if (generation != m_listenerGeneration)
            return;
        resetData();
        scheduleListenerRecovery(generation);
    };
    m_mediaController->setPinnedClient(pinnedClient());
    m_mediaController->startListening();
}

void MediaManager::scheduleEnvironmentRecovery()
{
    const int generation = m_listenerGeneration;
    m_listenerRecoveryWorkItem =
        m_deps.scheduler.schedule(secondsToDelay(environmentRecoveryDelay), [this, generation] {
            if (generation == m_listenerGeneration)
                startFreshMediaController(!(m_track == Track::empty()), true);
        });
}

void MediaManager::scheduleListenerRecovery(int afterGeneration)
{
    if (afterGeneration != m_listenerGeneration)
        return;
    const double delay = recoveryBackoff[std::min<std::size_t>(m_listenerRecoveryAttempt, recoveryBackoff.size() - 1)];
    ++m_listenerRecoveryAttempt;
    m_listenerRecoveryWorkItem = m_deps.scheduler.schedule(secondsToDelay(delay), [this, afterGeneration] {
        if (afterGeneration == m_listenerGeneration)
            startFreshMediaController(false, false);
    });
}

void MediaManager::onTrackInfoReceived(int generation, const TrackInfo& info)
{
    if (generation != m_listenerGeneration)
        return;
    if (!info.payload) {
        resetData();
        return;
    }
    const TrackInfo::Payload& payload = *info.payload;
    // A pinned player speaks for itself; records from other players are not its.
    if (const auto pinned = bundleIdentifier(m_preferredMediaSource);
        pinned && payload.bundleIdentifier && !payload.bundleIdentifier->isEmpty() && *payload.bundleIdentifier != *pinned)
        return;
    m_listenerRecoveryAttempt = 0;
    m_listenerRecoveryWorkItem.cancel();
    m_lastReceivedTrackInfo = info;
    setDuration(payload.durationMicros && *payload.durationMicros != 0
                    ? std::optional(*payload.durationMicros / 1'000'000.0)
                    : std::nullopt);
    if (payload.elapsedTimeMicros)
        setElapsedTime(*payload.elapsedTimeMicros / 1'000'000.0, payload.isPlaying.value_or(m_isPlaying));
    throttledTrackUpdate(info);
    refreshNowPlayingClients();
}

void MediaManager::throttledTrackUpdate(const TrackInfo& info)
{
    m_pendingTrackInfo = info;
    const auto now = m_deps.scheduler.clock().monotonic();
    const auto run = [this] {
        m_throttledTrackUpdate.cancel();
        m_lastThrottledUpdate = m_deps.scheduler.clock().monotonic();
        const TrackInfo latest = *m_pendingTrackInfo;
        m_pendingTrackInfo.reset();
        handleTrackInfoUpdate(latest);
    };
    // A pause or a play is shown at once; only a player that flips faster than people press is
    // held to the throttle.
    const bool playStateChanges = info.payload && info.payload->isPlaying && *info.payload->isPlaying != m_isPlaying;
    if (playStateChanges && (!m_lastThrottledUpdate || now - *m_lastThrottledUpdate >= secondsToDelay(playStateInterval))) {
        run();
        return;
    }
    if (m_throttledTrackUpdate.isActive())
        return;
    const auto interval = std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::duration<double>(trackUpdateInterval));
    if (!m_lastThrottledUpdate || now - *m_lastThrottledUpdate >= interval) {
        run();
        return;
    }
    m_throttledTrackUpdate = m_deps.scheduler.schedule(
        std::chrono::ceil<std::chrono::milliseconds>(*m_lastThrottledUpdate + interval - now), run);
}

void MediaManager::handleTrackInfoUpdate(const TrackInfo& info)
{
    if (m_deps.scheduler.clock().monotonic() < m_ignoreTrackUpdatesUntil)
        return;
    ++m_trackUpdatesHandled;
    if (!info.payload || !info.payload->isPlaying) {
        resetData();
        return;
    }
    const TrackInfo::Payload& payload = *info.payload;
    Track track;
    track.title = payload.title.value_or(QString());
    track.artist = payload.artist.value_or(QString());
    track.album = payload.album.value_or(QString());
    track.appName = payload.applicationName.value_or(QString());
    track.loved = payload.loved;
    track.albumArt = payload.artwork;
    track.appBundleId = payload.bundleIdentifier.value_or(QString());
    // The player is this running instance of the application, when the record tells it.
    if (payload.clientID && !payload.clientID->isEmpty())
        track.mediaApp = payload.clientID;
    else if (!track.appBundleId.isEmpty())
        track.mediaApp = track.appBundleId;
    track.browserBundleId = BrowserType::getBrowserBundleId(track.appBundleId);

    const bool playStateChanged = *payload.isPlaying != m_isPlaying;
    const bool trackValid = m_track.isValidReplacement(track);
    if (!playStateChanged && !trackValid)
        return;
    if (trackValid) {
        setTrack(track);
        startAppRunningMonitor();
    }
    if (playStateChanged)
        setIsPlaying(*payload.isPlaying);
    updateLiveActivities();
}

void MediaManager::setTrack(const Track& track)
{
    if (track == m_track)
        return;
    m_track = track;
    Q_EMIT trackChanged();
}

void MediaManager::setIsPlaying(bool playing)
{
    if (playing == m_isPlaying)
        return;
    // The elapsed time moves on from the moment the state changes, unless the player already said
    // where it is in that state.
    if (m_elapsedTimeMoving != playing) {
        m_elapsedTime = currentElapsedTime();
        m_elapsedTimeAnchor = m_deps.scheduler.clock().monotonic();
        m_elapsedTimeMoving = playing;
    }
    m_isPlaying = playing;
    const QString key = QString::fromLatin1(pauseDismissTimerKey);
    if (playing) {
        m_deps.timers.removeTimer(key);
    } else {
        m_deps.timers.addTimer(key, m_liveActivitiesSettings->inactivityTimeoutInSecs,
                               [this] { m_deps.liveActivities.removeSync(LiveActivity::media); });
    }
    Q_EMIT isPlayingChanged();
}

void MediaManager::setElapsedTime(double seconds, std::optional<bool> moving)
{
    m_elapsedTime = seconds;
    m_elapsedTimeAnchor = m_deps.scheduler.clock().monotonic();
    m_elapsedTimeMoving = moving.value_or(m_isPlaying);
    Q_EMIT elapsedTimeChanged();
}

void MediaManager::setDuration(std::optional<double> seconds)
{
    if (seconds == m_duration)
        return;
    m_duration = seconds;
    Q_EMIT durationChanged();
}

void MediaManager::setNowPlayingSources(std::vector<NowPlayingSource> sources)
{
    if (sources == m_nowPlayingSources)
        return;
    m_nowPlayingSources = std::move(sources);
    Q_EMIT nowPlayingSourcesChanged();
}

void MediaManager::updateLiveActivities()
{
    // The raised set is changed in place, so activities the settings hide stay raised.
    if (m_track == Track::empty())
        m_deps.liveActivities.removeSync(LiveActivity::media);
    else if (m_isPlaying)
        m_deps.liveActivities.insertSync(LiveActivity::media);
}

void MediaManager::startAppRunningMonitor()
{
    m_appRunningCheckTimer = m_deps.scheduler.schedule(secondsToDelay(appCheckInterval), [this] { appRunningTick(); });
}

void MediaManager::appRunningTick()
{
    m_appRunningCheckTimer = m_deps.scheduler.schedule(secondsToDelay(appCheckInterval), [this] { appRunningTick(); });
    const double now = static_cast<double>(m_deps.scheduler.clock().wallTime().toMSecsSinceEpoch()) / 1000.0;
    if (now - m_lastAppCheck < appCheckInterval)
        return;
    m_lastAppCheck = now;
    if (resetIfNeeded()) {
        m_appRunningCheckTimer.cancel();
        scheduleListenerRecovery(m_listenerGeneration);
    }
}

bool MediaManager::resetIfNeeded()
{
    if (m_track.appName.isEmpty())
        return true;
    if (m_deps.environment.isApplicationRunning(m_track.appName))
        return false;
    resetData();
    return true;
}

void MediaManager::refreshNowPlayingClients()
{
    if (!m_mrFunctionsAvailable || !m_functions.clientBundleID || !m_functions.clientName || !m_functions.clientPID)
        return;
    std::vector<NowPlayingSource> sources;
    for (const MediaRemoteFunctions::Client& client : m_functions.getClients()) {
        const QString id = m_functions.clientBundleID(client);
        if (id.isEmpty())
            continue;
        const QString clientID = m_functions.clientID ? m_functions.clientID(client) : QString();
        sources.push_back({id, m_functions.clientName(client), m_functions.clientPID(client),
                           clientID.isEmpty() ? id : clientID});
    }
    setNowPlayingSources(std::move(sources));
    // A pinned source that stopped publishing is let go.
    if (m_userPinnedClientID &&
        std::none_of(m_nowPlayingSources.begin(), m_nowPlayingSources.end(),
                     [&](const NowPlayingSource& s) { return s.clientID == *m_userPinnedClientID; }))
        setUserPinnedClientID(std::nullopt);
}

void MediaManager::resetData()
{
    // An update still held back by the throttle speaks of what is gone.
    m_throttledTrackUpdate.cancel();
    m_pendingTrackInfo.reset();
    setTrack(Track::empty());
    setIsPlaying(false);
    setElapsedTime(0);
    setDuration(std::nullopt);
    setNowPlayingSources({});
    setUserPinnedClientID(std::nullopt);
    m_deps.liveActivities.removeSync(LiveActivity::media);
}

void MediaManager::sendCommand(MediaCommand command, const QString& scriptAction)
{
    if (const auto player = appleScriptName(m_preferredMediaSource)) {
        runAppleScript(QStringLiteral("tell application %1 to %2").arg(quoted(*player), scriptAction));
        return;
    }
    // To the instance whose track is shown.
    if (const QString client = trackClient();
        !client.isEmpty() && m_functions.sendCommandToApp && m_functions.sendCommandToApp(command, client))
        return;
    if (m_functions.sendCommand && m_functions.sendCommand(command))
        return;
    if (m_mediaController)
        m_mediaController->send(command);
}

void MediaManager::togglePlayPause()
{
    if (m_preferredMediaSource == MediaSource::systemWide) {
        setIsPlaying(!m_isPlaying);
        // The player's answer will say nothing new: a track played again after its activity
        // was put away shows now.
        updateLiveActivities();
    }
    sendCommand(MediaCommand::togglePlayPause, QStringLiteral("playpause"));
}

void MediaManager::goToNextTrack() { sendCommand(MediaCommand::nextTrack, QStringLiteral("next track")); }

void MediaManager::goToPreviousTrack() { sendCommand(MediaCommand::previousTrack, QStringLiteral("previous track")); }

void MediaManager::pauseAndDismiss()
{
    sendCommand(MediaCommand::pause, QStringLiteral("pause"));
    m_deps.liveActivities.removeSync(LiveActivity::media);
}

void MediaManager::openApp()
{
    if (const auto source = activeSource())
        m_deps.environment.activateApplication(source->clientID);
    else if (!trackClient().isEmpty())
        m_deps.environment.activateApplication(trackClient());
}

void MediaManager::seek(double seconds)
{
    const double target = std::clamp(seconds, 0.0, m_duration.value_or(std::max(seconds, 0.0)));
    if (m_functions.setElapsedTime && m_functions.setElapsedTime(target))
        setElapsedTime(target);
}

void MediaManager::runAppleScript(const QString& script)
{
    const double now = nowSeconds();
    if (const auto it = m_scriptCooldowns.find(script);
        it != m_scriptCooldowns.end() && now - it->second < scriptCooldownInterval)
        return;
    m_scriptCooldowns[script] = now;
    if (const auto error = m_deps.environment.runScript(script))
        logLine(u"MediaManager", QStringLiteral("Error running AppleScript: ") + *error);
}

void MediaManager::forceMediaControllerRestart(const std::optional<QString>& appName)
{
    const QString name = appName ? *appName : appleScriptName(m_preferredMediaSource).value_or(QString());
    const QString script = QStringLiteral("tell application %1 to playpause").arg(quoted(name));
    QPointer<MediaManager> self(this);
    m_deps.environment.runInBackground([self, script, &environment = m_deps.environment] {
        environment.runScript(script);
        QMetaObject::invokeMethod(self.data(), Handed([self] {
                                      if (self)
                                          self->startFreshMediaController(false, true);
                                  }),
                                  Qt::QueuedConnection);
    });
}

} // namespace kelvane
