#pragma once

#include "media/NowPlayingController.h"

#include <QStringList>

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

} // namespace kelvane::test
