#pragma once

#include <QDateTime>
#include <QImage>
#include <QJsonObject>
#include <QObject>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace kelvane {

// One file held in the tray: where it lives, how it is shown, and how it follows renames.
// Main thread only, except `read`, which may run anywhere.
class TrayFile : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString id READ idText CONSTANT)
    Q_PROPERTY(QString stackId READ stackIdText CONSTANT)
    Q_PROPERTY(QString name READ name NOTIFY changed)
    Q_PROPERTY(QString nameTruncated READ nameTruncated NOTIFY changed)
    Q_PROPERTY(QString path READ path NOTIFY changed)
    Q_PROPERTY(bool isImage READ isImage NOTIFY changed)
    // The freedesktop icon name of the file's type, for files that are not pictures.
    Q_PROPERTY(QString iconName READ iconName NOTIFY changed)
public:
    // What is read from the disk for a file; the slow part of making one, done off the main thread.
    struct Contents {
        std::optional<quint64> inode;
        QImage image;
        QString iconName;
    };
    static Contents read(const QUrl& url);

    TrayFile(const QUrl& url, std::optional<QUuid> stackID, QDateTime addedAt, Contents contents,
             QObject* parent = nullptr);

    const QUuid& id() const { return m_id; }
    QString idText() const { return m_id.toString(QUuid::WithoutBraces); }
    const std::optional<QUuid>& stackID() const { return m_stackID; }
    QString stackIdText() const { return m_stackID ? m_stackID->toString(QUuid::WithoutBraces) : QString(); }
    const QUrl& url() const { return m_url; }
    QString path() const { return m_url.toLocalFile(); }
    const QString& name() const { return m_name; }
    const QString& nameTruncated() const { return m_nameTruncated; }
    const QDateTime& addedAt() const { return m_addedAt; }
    bool isImage() const { return m_isImage; }
    const QImage& image() const { return m_image; }
    const QString& iconName() const { return m_iconName; }
    const std::optional<quint64>& inode() const { return m_inode; }

    // The file as the saved list records it: {url, addedAt, originalName, stackID}. Kept once made,
    // until the file moves.
    const QJsonObject& record() const;

    // Gives the file a new name in its own folder, keeping its extension. False (with one printed
    // line) when the file system refuses; the file is then as it was.
    bool rename(const QString& newName);
    // After a change in its folder: finds the entry with the same inode and follows it.
    bool updateFileName();
    void updateData(const QUrl& url);

    // At most 16 characters, as a reader counts them: longer names keep their first 6 and last 7
    // around "...".
    static QString truncatedName(const QString& name);
    // The last part of a file's path, a folder's own name even when written with a final slash.
    static QString fileName(const QUrl& url);
    // What follows the last dot of a name; a dot-file (".profile") and a name ending in a dot
    // have none.
    static QString extension(const QString& name);
    static QString baseName(const QString& name);
    static bool isImageName(const QString& name);

Q_SIGNALS:
    void changed();

private:
    QUuid m_id = QUuid::createUuid();
    std::optional<QUuid> m_stackID;
    QUrl m_url;
    std::optional<quint64> m_inode;
    QString m_name;
    QString m_nameTruncated;
    QDateTime m_addedAt;
    bool m_isImage = false;
    QImage m_image;
    QString m_iconName;
    mutable std::optional<QJsonObject> m_record;
};

} // namespace kelvane
