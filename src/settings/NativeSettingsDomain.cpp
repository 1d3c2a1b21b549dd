#include "NativeSettingsDomain.h"

#include "core/Log.h"
#include "core/SavedFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace kelvane {

NativeSettingsDomain::NativeSettingsDomain(QObject* parent)
    : SettingsDomain(parent)
    , m_settings(std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                             QStringLiteral("kelvane"), QStringLiteral("kelvane")))
{
    open();
}

NativeSettingsDomain::NativeSettingsDomain(const QString& iniPath, QObject* parent)
    : SettingsDomain(parent)
    , m_settings(std::make_unique<QSettings>(iniPath, QSettings::IniFormat))
{
    open();
}

void NativeSettingsDomain::open()
{
    if (m_settings->status() == QSettings::FormatError) {
        // Keep the unreadable file beside the new one rather than overwrite what the user had.
        const QString path = m_settings->fileName();
        const QString kept = keepAside(path);
        logLine(u"Settings", QStringLiteral("%1 could not be read (kept as %2); defaults are used.")
                                 .arg(path, kept));
        m_settings->clear();
    }
    m_known = snapshot();
    QDir().mkpath(QFileInfo(m_settings->fileName()).absolutePath());
    watch();
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, [this] { reloadFromDisk(); });
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] { reloadFromDisk(); });
}

void NativeSettingsDomain::watch()
{
    const QFileInfo info(m_settings->fileName());
    // The file is replaced on every save, so the folder is watched too.
    if (!m_watcher.directories().contains(info.absolutePath()))
        m_watcher.addPath(info.absolutePath());
    if (info.exists() && !m_watcher.files().contains(info.absoluteFilePath()))
        m_watcher.addPath(info.absoluteFilePath());
}

QHash<QString, QString> NativeSettingsDomain::snapshot() const
{
    QHash<QString, QString> values;
    for (const QString& key : m_settings->allKeys())
        values.insert(key, m_settings->value(key).toString());
    return values;
}

void NativeSettingsDomain::reloadFromDisk()
{
    watch();
    m_settings->sync();
    const QHash<QString, QString> now = snapshot();
    QStringList changed;
    for (auto it = now.begin(); it != now.end(); ++it)
        if (m_known.value(it.key()) != it.value())
            changed.append(it.key());
    for (auto it = m_known.begin(); it != m_known.end(); ++it)
        if (!now.contains(it.key()))
            changed.append(it.key());
    m_known = now;
    for (const QString& key : std::as_const(changed))
        Q_EMIT valueChanged(key);
}

QVariant NativeSettingsDomain::storedValue(const QString& key) const { return m_settings->value(key); }

void NativeSettingsDomain::store(const QString& key, const QVariant& value)
{
    m_settings->setValue(key, value);
    m_settings->sync();
    m_known.insert(key, value.toString());
    if (m_settings->status() != QSettings::NoError)
        logLine(u"Settings", QStringLiteral("Could not save %1 to %2.").arg(key, m_settings->fileName()));
    watch();
}

void NativeSettingsDomain::erase(const QString& key)
{
    m_settings->remove(key);
    m_settings->sync();
    m_known.remove(key);
}

} // namespace kelvane
