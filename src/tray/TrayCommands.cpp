#include "TrayCommands.h"

#include "Tray.h"

#include <QFileInfo>
#include <QJsonArray>

namespace kelvane::TrayCommands {

QJsonObject list(const Tray& tray)
{
    QJsonArray items;
    for (const Tray::Item& item : tray.trayItems()) {
        QJsonArray files;
        for (const TrayFile* file : item.files)
            files.append(QJsonObject{{QStringLiteral("id"), file->idText()},
                                     {QStringLiteral("name"), file->name()},
                                     {QStringLiteral("nameTruncated"), file->nameTruncated()},
                                     {QStringLiteral("path"), file->path()}});
        items.append(QJsonObject{{QStringLiteral("id"), item.id.toString(QUuid::WithoutBraces)},
                                 {QStringLiteral("isStack"), item.isStack},
                                 {QStringLiteral("title"), item.isStack ? Tray::stackName(item.files) : item.files[0]->name()},
                                 {QStringLiteral("files"), files}});
    }
    return {{QStringLiteral("count"), tray.count()}, {QStringLiteral("items"), items}};
}

std::optional<QString> checkFiles(const QStringList& paths)
{
    if (paths.isEmpty())
        return QStringLiteral("No file to add.");
    for (const QString& path : paths)
        if (!QFileInfo(path).isAbsolute() || !QFileInfo::exists(path))
            return QStringLiteral("No such file: %1").arg(path);
    return std::nullopt;
}

std::optional<QString> remove(Tray& tray, const QString& nameOrId)
{
    for (TrayFile* file : tray.files())
        if (file->name() == nameOrId || file->idText() == nameOrId) {
            tray.removeFile(file);
            return std::nullopt;
        }
    return QStringLiteral("No file \"%1\" in the tray.").arg(nameOrId);
}

} // namespace kelvane::TrayCommands
