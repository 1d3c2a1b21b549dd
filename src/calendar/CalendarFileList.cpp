#include "CalendarFileList.h"

#include "core/Log.h"
#include "core/SavedFile.h"

#include <QDir>
#include <QFileInfo>

namespace kelvane {

CalendarFileList::CalendarFileList(const QString& dataFolder, QObject* parent)
    : QObject(parent)
    , m_file(QDir(dataFolder).filePath(QString::fromLatin1(fileName)))
{
    bool broken = false;
    m_paths = readStringList(m_file, broken, [](const QString& path) { return QFileInfo(path).isAbsolute(); })
                  .value_or(QStringList());
    if (broken)
        logLine(u"Calendar", QStringLiteral("The list of calendar files %1 could not be read (kept as %2).")
                                 .arg(m_file, keepAside(m_file)));
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
    if (const auto error = writeStringList(m_file, m_paths))
        logLine(u"Calendar",
                QStringLiteral("The list of calendar files could not be saved to %1: %2").arg(m_file, *error));
    Q_EMIT pathsChanged();
}

} // namespace kelvane
