#pragma once

#include <QObject>
#include <QStringList>

#include <optional>

namespace kelvane {

// The iCalendar files and folders the user added as calendars, kept in the data folder as
// "CalendarFiles.json" (a JSON array of absolute paths). A folder is read as one calendar per
// subfolder (as synchronisation tools lay them out) and one for its own files.
class CalendarFileList : public QObject {
    Q_OBJECT
    Q_PROPERTY(QStringList paths READ paths NOTIFY pathsChanged)
public:
    static constexpr const char* fileName = "CalendarFiles.json";

    // A list that cannot be read is kept aside as ".broken" with one line, and the list starts empty.
    explicit CalendarFileList(const QString& dataFolder, QObject* parent = nullptr);

    QStringList paths() const { return m_paths; }
    // A line for the user when the path is no iCalendar file or folder, or is listed already.
    Q_INVOKABLE QString add(const QString& path);
    // A line for the user when the path is not listed.
    Q_INVOKABLE QString remove(const QString& path);

Q_SIGNALS:
    void pathsChanged();

private:
    void save();

    QString m_file;
    QStringList m_paths;
};

} // namespace kelvane
