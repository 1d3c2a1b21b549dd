#pragma once

#include "activities/ActiveLiveActivitiesManager.h"
#include "core/ManualScheduler.h"
#include "settings/SettingsStore.h"
#include "tray/Tray.h"

#include "support/Polling.h"
#include "support/ScopedEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

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
    void perform(const QList<QUrl>& files) override { shared = files; }
    void toggle(const QList<QUrl>& files) override { previewed = files; }
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
    std::unique_ptr<Tray> tray;

    Shelf()
    {
        QDir().mkpath(home.path() + "/tmp");
        QDir().mkpath(home.path() + "/src");
        env.set("TMPDIR", (home.path() + "/tmp").toUtf8());
        restart();
    }
    void restart()
    {
        tray.reset();
        tray = std::make_unique<Tray>(Tray::Dependencies{scheduler, activities, pasteboard, sharing, sharing, base()});
        tray->setupTempDirectory();
        tray->loadPersistedFiles();
    }
    QString base() const { return home.path() + "/.local/share/io.kelvane.Kelvane"; }
    QString folder() const { return tray->trayFolder(); }
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
    QJsonArray saved() const
    {
        QFile file(tray->stateFile());
        file.open(QIODevice::ReadOnly);
        return QJsonDocument::fromJson(file.readAll()).array();
    }
};
} // namespace kelvane::test
