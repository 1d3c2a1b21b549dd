#pragma once

#include "MediaSources.h"

#include <QImage>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kelvane {

// Playback commands, numbered as the system's media commands are.
enum class MediaCommand { play = 0, pause = 1, togglePlayPause = 2, nextTrack = 4, previousTrack = 5 };

// One now-playing record as a listener delivers it; no payload means nothing is playing.
struct TrackInfo {
    struct Payload {
        std::optional<QString> title;
        std::optional<QString> artist;
        std::optional<QString> album;
        std::optional<QString> applicationName;
        std::optional<QString> bundleIdentifier;
        // The running instance that published it: commands for what is shown go there.
        std::optional<QString> clientID;
        // Unknown when absent.
        std::optional<bool> isPlaying;
        std::optional<double> durationMicros;
        std::optional<double> elapsedTimeMicros;
        std::optional<bool> loved;
        QImage artwork;
    };
    std::optional<Payload> payload;
};

// Follows what the system is playing and delivers it, record by record, on the main thread.
class NowPlayingController {
public:
    virtual ~NowPlayingController() = default;
    std::function<void(const TrackInfo&)> onTrackInfoReceived;
    // The listener stopped on its own (its source went away).
    std::function<void()> onListenerTerminated;
    virtual void startListening() = 0;
    // Follows this client (a client identifier or an application identifier) whenever it
    // publishes, before any other; nothing lets the listener choose.
    virtual void setPinnedClient(const std::optional<QString>& client) = 0;
    virtual void stop() = 0;
    virtual void send(MediaCommand command) = 0;
};

// The system's registry of now-playing clients; any entry may be missing on a given system.
struct MediaRemoteFunctions {
    using Client = QVariant;
    std::function<std::vector<Client>()> getClients;
    std::function<QString(const Client&)> clientBundleID;
    // The instance's own identifier; the application identifier stands in when absent.
    std::function<QString(const Client&)> clientID;
    std::function<QString(const Client&)> clientName;
    std::function<std::optional<qint32>(const Client&)> clientPID;
    // Seeks and commands "to the system" go to the player the listener follows.
    std::function<bool(double seconds)> setElapsedTime;
    std::function<bool(MediaCommand)> sendCommand;
    // To one client: its client identifier, else the first instance of an application identifier.
    std::function<bool(MediaCommand, const QString& client)> sendCommandToApp;
};

// What the media manager needs from the desktop it runs on.
class MediaEnvironment {
public:
    virtual ~MediaEnvironment() = default;
    // Nothing when the registry is not available at all.
    virtual std::optional<MediaRemoteFunctions> loadMediaRemote() = 0;
    virtual std::unique_ptr<NowPlayingController> makeController() = 0;
    // Whether a client (by its identifier) or an application (by its display name) runs. Answers
    // at once, from what the environment already knows.
    virtual bool isApplicationRunning(const QString& name) = 0;
    // Brings a client (by its identifier) or an application forward.
    virtual void activateApplication(const QString& client) = 0;
    // Runs a player script ("tell application "Spotify" to playpause"); an error when it could not run.
    virtual std::optional<QString> runScript(const QString& script) = 0;
    // Runs work off the main thread.
    virtual void runInBackground(std::function<void()> work) = 0;

    // Set by the media manager: an application was launched; the machine woke.
    std::function<void(const QString& bundleIdentifier)> onApplicationLaunched;
    std::function<void()> onWake;
    // Set by the media manager: a client came or went, or changed how it describes itself.
    std::function<void()> onClientsChanged;
};

} // namespace kelvane
