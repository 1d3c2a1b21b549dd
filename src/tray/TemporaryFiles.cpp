#include "TemporaryFiles.h"

#include "core/Log.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace kelvane {

QString applicationTemporaryFolder() { return QDir::temp().filePath(QStringLiteral("KelvaneTemp")); }

namespace {
// QDir::removeRecursively does not say why it failed: the first entry it could not remove does.
std::optional<QString> removeTree(const QString& path)
{
    if (QDir(path).removeRecursively())
        return std::nullopt;
    return QStringLiteral("could not remove everything in %1").arg(path);
}
} // namespace

void cleanupTemporaryDirectory(const std::optional<QString>& folder)
{
    const QString target = folder.value_or(applicationTemporaryFolder());
    if (QFileInfo::exists(target)) {
        if (const auto error = removeTree(target))
            emitLine(QStringLiteral("Error removing specific temporary directory: ") + *error);
        else
            emitLine(QStringLiteral("Specific temporary directory removed successfully"));
    }

    static const QRegularExpression leftOver(QStringLiteral("^TemporaryDirectory\\.[a-zA-Z0-9]{5,6}$"));
    const QDir temporary = QDir::temp();
    if (!temporary.exists()) {
        emitLine(QStringLiteral("Error accessing or processing temporary directories: ") + temporary.path() +
                 QStringLiteral(" does not exist"));
        return;
    }
    const QStringList entries = temporary.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System);
    for (const QString& name : entries) {
        if (!leftOver.match(name).hasMatch())
            continue;
        const QString path = temporary.filePath(name);
        const bool removed = QFileInfo(path).isDir() && !QFileInfo(path).isSymLink() ? QDir(path).removeRecursively()
                                                                                      : QFile::remove(path);
        if (removed)
            emitLine(QStringLiteral("Removed temporary directory: ") + name);
        else
            emitLine(QStringLiteral("Error removing temporary directory ") + name + QStringLiteral(": could not remove it"));
    }
}

} // namespace kelvane
