#include "LegacyMigration.h"

#include "Identity.h"

#include "core/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSettings>
#include <QUrl>

#include <filesystem>

namespace kelvane {

namespace {
const QString migratedFlag = QStringLiteral("migratedFromLegacyBundleIdentifier");
const QString trayStateFile = QStringLiteral("tray_state.json");

void printMigration(const QString& message) { logLine(u"Migration", message); }

// Moves without ever replacing what is already at the destination.
std::error_code moveItem(const QString& source, const QString& destination)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path target = destination.toStdString();
    if (fs::exists(fs::symlink_status(target, error)))
        return std::make_error_code(std::errc::file_exists);
    fs::rename(source.toStdString(), target, error);
    return error;
}

// Rewrites the saved tray list so that files kept under `from` are found under `to`.
void rewriteTrayState(const QString& from, const QString& to)
{
    const QString statePath = to + QLatin1Char('/') + trayStateFile;
    QFile file(statePath);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    file.close();
    if (!document.isArray()) {
        printMigration(QStringLiteral("Could not read %1: %2").arg(statePath, parseError.errorString()));
        return;
    }
    const QString legacyRoot = QDir::cleanPath(from) + QLatin1Char('/');
    QJsonArray records = document.array();
    bool changed = false;
    for (qsizetype i = 0; i < records.size(); ++i) {
        QJsonObject record = records.at(i).toObject();
        const QUrl url(record.value(QStringLiteral("url")).toString());
        const QString path = QDir::cleanPath(url.toLocalFile());
        if (!url.isLocalFile() || !path.startsWith(legacyRoot))
            continue;
        const QString moved = QDir::cleanPath(to) + QLatin1Char('/') + path.sliced(legacyRoot.size());
        record.insert(QStringLiteral("url"), QUrl::fromLocalFile(moved).toString(QUrl::FullyEncoded));
        records.replace(i, record);
        changed = true;
    }
    if (!changed)
        return;
    QSaveFile out(statePath);
    if (!out.open(QIODevice::WriteOnly) || out.write(QJsonDocument(records).toJson()) < 0 || !out.commit())
        printMigration(QStringLiteral("Could not write %1: %2").arg(statePath, out.errorString()));
}
} // namespace

void migrateLegacyTrayFolder(const QString& from, const QString& to)
{
    const QDir legacy(from);
    if (legacy.exists()) {
        QDir().mkpath(to);
        const auto entries =
            legacy.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        for (const QString& name : entries) {
            const QString source = legacy.filePath(name);
            const QString destination = to + QLatin1Char('/') + name;
            if (const auto error = moveItem(source, destination))
                printMigration(QStringLiteral("Could not move ") + source + QStringLiteral(" to ") +
                               destination + QStringLiteral(": ") + QString::fromStdString(error.message()));
        }
    }
    rewriteTrayState(from, to);
}

void migrateLegacyBundleIdentifier(const QString& bundleIdentifier)
{
    const QString currentPrefix = QLatin1StringView(identity::currentPrefix);
    if (bundleIdentifier.isEmpty() || !bundleIdentifier.startsWith(currentPrefix))
        return;
    const QString legacyIdentifier =
        QLatin1StringView(identity::legacyPrefix) + bundleIdentifier.sliced(currentPrefix.size());

    QSettings current(identity::preferencesPath(bundleIdentifier), QSettings::IniFormat);
    if (!current.value(migratedFlag).toBool()) {
        const QString legacyPath = identity::preferencesPath(legacyIdentifier);
        if (QFileInfo::exists(legacyPath)) {
            const QSettings legacy(legacyPath, QSettings::IniFormat);
            for (const QString& key : legacy.allKeys()) {
                // What the user set since keeps its value.
                if (!current.contains(key))
                    current.setValue(key, legacy.value(key));
            }
        }
        current.setValue(migratedFlag, true);
        current.sync();
    }
    migrateLegacyTrayFolder(identity::applicationSupportPath(legacyIdentifier),
                            identity::applicationSupportPath(bundleIdentifier));
}

} // namespace kelvane
