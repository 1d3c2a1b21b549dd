#pragma once

#include "SettingsDomain.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QSettings>

#include <memory>

namespace kelvane {

// The user's defaults domain in the platform's native format: an INI file under the XDG config
// folder on Linux. Writes are flushed at once; edits made to the file by another process are
// noticed and announced key by key.
class NativeSettingsDomain final : public SettingsDomain {
    Q_OBJECT
public:
    explicit NativeSettingsDomain(QObject* parent = nullptr);
    // A domain over an explicit INI file (another domain of the same user, or a test's own file).
    explicit NativeSettingsDomain(const QString& iniPath, QObject* parent = nullptr);

    QString fileName() const { return m_settings->fileName(); }

protected:
    QVariant storedValue(const QString& key) const override;
    void store(const QString& key, const QVariant& value) override;
    void erase(const QString& key) override;

private:
    void open();
    void watch();
    void reloadFromDisk();
    QHash<QString, QString> snapshot() const;

    std::unique_ptr<QSettings> m_settings;
    // What the file held when last read or written, as text: the file keeps no types, so a
    // value compares equal to itself after a round trip through it.
    QHash<QString, QString> m_known;
    QFileSystemWatcher m_watcher;
};

} // namespace kelvane
