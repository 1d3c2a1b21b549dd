#pragma once

#include "activities/ActiveLiveActivitiesManager.h"
#include "core/ManualScheduler.h"
#include "core/TimersManager.h"
#include "media/MediaManager.h"
#include "media/NowPlayingController.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace kelvane::test {

// A listener that records what it is told and delivers what the test hands it.
struct FakeController : NowPlayingController {
    std::vector<MediaCommand> sent;
    std::optional<QString> pinned;
    void startListening() override {}
    void setPinnedClient(const std::optional<QString>& client) override { pinned = client; }
    void stop() override {}
    void send(MediaCommand command) override { sent.push_back(command); }
};

// A desktop of the test's making: its registry functions, what runs, what was raised and run.
struct FakeEnvironment : MediaEnvironment {
    std::optional<MediaRemoteFunctions> functions = MediaRemoteFunctions{};
    FakeController* controller = nullptr; // the newest; the manager owns it
    int controllersMade = 0;
    QStringList running;
    QStringList scripts;
    std::optional<QString> scriptError;

    std::optional<MediaRemoteFunctions> loadMediaRemote() override { return functions; }
    std::unique_ptr<NowPlayingController> makeController() override
    {
        auto made = std::make_unique<FakeController>();
        controller = made.get();
        ++controllersMade;
        return made;
    }
    QStringList activated;
    bool isApplicationRunning(const QString& name) override { return running.contains(name); }
    void activateApplication(const QString& client) override { activated << client; }
    std::optional<QString> runScript(const QString& script) override
    {
        scripts << script;
        return scriptError;
    }
    void runInBackground(std::function<void()> work) override { work(); }
};

// A media manager on that desktop, with everything it needs beside it. Clients are string lists:
// application identifier, display name, client identifier.
struct Media {
    ManualScheduler scheduler;
    TimersManager timers{scheduler};
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    ActiveLiveActivitiesManager activities{settings};
    FakeEnvironment environment;
    std::unique_ptr<MediaManager> manager;

    // Without a set-up the system lists its clients and can seek, but sends no commands.
    explicit Media(MediaSource preferred = MediaSource::systemWide,
                   const std::function<void(FakeEnvironment&)>& setUp = {})
    {
        settings.update(Keys::generalSettings(), [&](GeneralSettings& s) { s.preferredMediaSource = preferred; });
        environment.running = {"VLC"};
        environment.functions->getClients = [this] { return clients; };
        environment.functions->clientBundleID = [](const QVariant& c) { return c.toStringList().value(0); };
        environment.functions->clientName = [](const QVariant& c) { return c.toStringList().value(1); };
        environment.functions->clientID = [](const QVariant& c) { return c.toStringList().value(2); };
        environment.functions->clientPID = [](const QVariant&) { return std::optional<qint32>(42); };
        environment.functions->setElapsedTime = [](double) { return true; };
        if (setUp)
            setUp(environment);
        manager = std::make_unique<MediaManager>(
            MediaManager::Dependencies{scheduler, timers, settings, activities, environment});
    }
    void deliver(const TrackInfo& info) { environment.controller->onTrackInfoReceived(info); }
    bool mediaRaised() const { return activities.rawActiveLiveActivities().count(LiveActivity::media) > 0; }

    std::vector<QVariant> clients;
};

} // namespace kelvane::test
