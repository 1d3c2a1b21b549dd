#include "CalendarFileList.h"

#include "core/Log.h"
#include "core/SavedFile.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

namespace kelvane {

CalendarFileList::CalendarFileList(const QString& dataFolder, QObject* parent)
    : QObject(parent)
    , m_file(QDir(dataFolder).filePath(QString::fromLatin1(fileName)))
{
    QFile file(m_file);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    bool valid = document.isArray();
    for (const QJsonValue& value : document.array()) {
        valid = valid && value.isString() && QFileInfo(value.toString()).isAbsolute();
        if (valid && !m_paths.contains(value.toString()))
            m_paths.append(value.toString());
    }
    if (!valid) {
        m_paths.clear();
        logLine(u"Calendar", QStringLiteral("The list of calendar files %1 could not be read (kept as %2).")
                                 .arg(m_file, keepAside(m_file)));
    }
}

QString CalendarFileList::add(const QString& path)
{
    const QFileInfo info(path);
    const QString absolute = info.absoluteFilePath();
    if (!info.exists())
        return QStringLiteral("%1 does not exist.").arg(path);
    if (info.isFile() && info.suffix().compare(QLatin1StringView("ics"), Qt::CaseInsensitive) != 0)
        return QStringLiteral("%1 is not an iCalendar (.ics) file.").arg(path);
    if (!info.isFile() && !info.isDir())
        return QStringLiteral("%1 is neither a file nor a folder.").arg(path);
    if (m_paths.contains(absolute))
        return QStringLiteral("%1 is already a calendar source.").arg(absolute);
    m_paths.append(absolute);
    save();
    return {};
}

QString CalendarFileList::remove(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (!m_paths.removeOne(absolute) && !m_paths.removeOne(path))
        return QStringLiteral("%1 is not a calendar source.").arg(path);
    save();
    return {};
}

void CalendarFileList::save()
{
    QDir().mkpath(QFileInfo(m_file).absolutePath());
    QSaveFile file(m_file);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(QJsonDocument(QJsonArray::fromStringList(m_paths)).toJson()) < 0 || !file.commit())
        logLine(u"Calendar", QStringLiteral("The list of calendar files could not be saved to %1: %2")
                                 .arg(m_file, file.errorString()));
    Q_EMIT pathsChanged();
}

} // namespace kelvane
