#pragma once

#include <QJsonObject>
#include <QStringList>

#include <optional>

namespace kelvane {

class Tray;

// What scripts ask of the tray.
namespace TrayCommands {
// {"count", "items": [{"id", "isStack", "title", "files": [{"id", "name", "nameTruncated", "path"}]}]}
QJsonObject list(const Tray& tray);
// Files named by absolute paths; an error naming the first that does not exist, else nothing.
std::optional<QString> checkFiles(const QStringList& paths);
// Takes the file of that name (or id) out of the tray; its copy stays on disk.
std::optional<QString> remove(Tray& tray, const QString& nameOrId);
} // namespace TrayCommands

} // namespace kelvane
