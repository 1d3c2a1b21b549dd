#include "SavedTrayList.h"

#include <QDateTime>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace kelvane {

namespace {
// Why a saved record is not a tray file, or nothing when it is one.
std::optional<QString> whyNotARecord(const QJsonValue& value)
{
    const QJsonObject object = value.toObject();
    const QUrl url(object.value(QStringLiteral("url")).toString(), QUrl::StrictMode);
    const QJsonValue stack = object.value(QStringLiteral("stackID"));
    if (!value.isObject())
        return QStringLiteral("not an object");
    if (!url.isValid() || !url.isLocalFile() || !QFileInfo(url.toLocalFile()).isAbsolute())
        return QStringLiteral("no file URL");
    if (!QDateTime::fromString(object.value(QStringLiteral("addedAt")).toString(), Qt::ISODate).isValid())
        return QStringLiteral("no date it was added");
    if (!object.value(QStringLiteral("originalName")).isString())
        return QStringLiteral("no name");
    if (!stack.isUndefined() && QUuid::fromString(stack.toString()).isNull())
        return QStringLiteral("a stack id that is not one");
    return std::nullopt;
}
} // namespace

SavedTrayList SavedTrayList::read(const QByteArray& contents)
{
    SavedTrayList list;
    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(contents, &parseError);
    if (!document.isArray()) {
        list.error = parseError.error != QJsonParseError::NoError ? parseError.errorString()
                                                                  : QStringLiteral("not a list of files");
        return list;
    }
    const QJsonArray records = document.array();
    for (qsizetype i = 0; i < records.size(); ++i) {
        if (const auto why = whyNotARecord(records[i])) {
            list.rejected << QStringLiteral("record %1 (%2)").arg(i + 1).arg(*why);
            continue;
        }
        const QJsonObject object = records[i].toObject();
        const QJsonValue stack = object.value(QStringLiteral("stackID"));
        list.entries.append({QUrl(object.value(QStringLiteral("url")).toString(), QUrl::StrictMode),
                             stack.isUndefined() ? std::nullopt : std::optional(QUuid::fromString(stack.toString()))});
    }
    return list;
}

} // namespace kelvane
