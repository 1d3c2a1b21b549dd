#pragma once

#include "activities/ActiveLiveActivitiesManager.h"
#include "core/ManualScheduler.h"
#include "settings/SettingsStore.h"
#include "tray/StagingArea.h"
#include "tray/Tray.h"

#include "support/Polling.h"
#include "support/ScopedEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QThreadPool>

#include <future>

#include <gtest/gtest.h>

namespace kelvane::test {
struct FakePasteboard : Pasteboard {
    QList<QUrl> files;
    QImage picture;
    std::optional<QString> text;
    QList<QUrl> written;
    QStringList offered;
    QList<std::shared_ptr<FilePromiseReceiver>> promises;
    QStringList types() const override { return offered; }
    QList<QUrl> fileURLs() const override { return files; }
    QImage image() const override { return picture; }
    std::optional<QString> string(const QString&) const override { return text; }
    void writeFileURLs(const QList<QUrl>& urls) override { written = urls; }
    QList<std::shared_ptr<FilePromiseReceiver>> filePromiseReceivers() const override { return promises; }
};
struct FakeSharing : SharingService, FilePreviewer {
    QList<QUrl> shared, previewed;
    std::function<void()> finished;
    // Reads the files until `release` (at once unless `holds`).
    bool holds = false;
    void perform(const QList<QUrl>& files, std::function<void()> done) override
    {
        shared = files;
        finished = std::move(done);
        if (!holds)
            release();
    }
    void release() { if (const auto done = std::exchange(finished, nullptr)) done(); }
    void toggle(const QList<QUrl>& files) override { previewed = files; }
    QString service;
    QString serviceName() const override { return service; }
};

// Holds every worker of the process's thread pool until released: what the tray and the drop
// zone hand to it waits in the queue, so a test can act while a copy is due but not yet done.
class PausedWorkers {
public:
    PausedWorkers()
    {
        QThreadPool* pool = QThreadPool::globalInstance();
        m_threads = pool->maxThreadCount();
        pool->setMaxThreadCount(1);
        pool->start([gate = m_gate.get_future().share()] { gate.wait(); });
    }
    ~PausedWorkers()
    {
        release();
        QThreadPool::globalInstance()->waitForDone();
        QThreadPool::globalInstance()->setMaxThreadCount(m_threads);
    }
    void release()
    {
        if (!std::exchange(m_released, true))
            m_gate.set_value();
    }

private:
    std::promise<void> m_gate;
    int m_threads = 0;
    bool m_released = false;
};

// A tray in a temporary home, with the system temporary folder inside it too.
struct Shelf {
    test::TemporaryHome home;
    test::ScopedEnvironment env;
    ManualScheduler scheduler;
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    ActiveLiveActivitiesManager activities{settings};
    FakePasteboard pasteboard;
    FakeSharing sharing;
    std::unique_ptr<StagingArea> staging;
    std::unique_ptr<Tray> tray;

    // Without a data folder the tray holds every file by reference.
    bool withoutDataFolder = false;

    explicit Shelf(bool noDataFolder = false)
        : withoutDataFolder(noDataFolder)
    {
        QDir().mkpath(home.path() + "/tmp");
        QDir().mkpath(home.path() + "/src");
        env.set("TMPDIR", (home.path() + "/tmp").toUtf8());
        restart();
    }
    // `wait`: until the saved list is read.
    void restart(bool wait = true)
    {
        tray.reset();
        staging = std::make_unique<StagingArea>();
        tray = std::make_unique<Tray>(Tray::Dependencies{scheduler, activities, pasteboard, sharing, sharing, *staging,
                                                         withoutDataFolder ? QString() : base()});
        tray->setupTempDirectory();
        tray->loadPersistedFiles();
        if (wait) {
            EXPECT_TRUE(waitUntil([&] { return tray->isIdle(); }));
        }
    }
    QString temporary() const { return home.path() + "/tmp"; }
    QString stagingRoot() const { return temporary() + "/KelvaneTemp"; }
    QString base() const { return home.path() + "/.local/share/io.kelvane.Kelvane"; }
    QString folder() const { return tray->trayFolder(); }
    QString read(const QString& path) const
    {
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        return QString::fromUtf8(file.readAll());
    }
    // Adds without waiting for the copies.
    void addLater(const QStringList& paths)
    {
        QList<QUrl> urls;
        for (const QString& path : paths)
            urls.append(QUrl::fromLocalFile(path));
        tray->addFilesFromURLs(urls);
    }
    QString make(const QString& relative, const QByteArray& contents = "data") const
    {
        const QString path = home.path() + "/" + relative;
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(contents);
        return path;
    }
    void add(const QStringList& paths)
    {
        QList<QUrl> urls;
        for (const QString& path : paths)
            urls.append(QUrl::fromLocalFile(path));
        tray->addFilesFromURLs(urls);
        EXPECT_TRUE(waitUntil([&] { return tray->isIdle(); }));
    }
    QStringList names() const
    {
        QStringList names;
        for (const TrayFile* file : tray->files())
            names << file->name();
        return names;
    }
    // The saved list, once it is on disk (`wait`), or as it is now.
    QJsonArray saved(bool wait = true) const
    {
        if (wait) {
            EXPECT_TRUE(waitUntil([&] { return tray->isIdle(); }));
        }
        QFile file(tray->stateFile());
        file.open(QIODevice::ReadOnly);
        return QJsonDocument::fromJson(file.readAll()).array();
    }
};
} // namespace kelvane::test
