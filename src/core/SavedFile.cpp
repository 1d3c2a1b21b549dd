#include "SavedFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

namespace kelvane {

QString keepAside(const QString& path)
{
    const QString kept = path + QStringLiteral(".broken");
    QFile::remove(kept);
    QFile::copy(path, kept);
    return kept;
}

std::optional<QStringList> readStringList(const QString& path, bool& broken,
                                          const std::function<bool(const QString&)>& accept)
{
    broken = false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    QStringList list;
    broken = !document.isArray();
    for (const QJsonValue& value : document.array()) {
        if (!value.isString() || (accept && !accept(value.toString()))) {
            broken = true;
            break;
        }
        if (!list.contains(value.toString()))
            list.append(value.toString());
    }
    if (broken)
        return std::nullopt;
    return list;
}

std::optional<QString> writeStringList(const QString& path, const QStringList& list)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(QJsonArray::fromStringList(list)).toJson()) < 0 ||
        !file.commit())
        return file.errorString();
    return std::nullopt;
}

} // namespace kelvane
