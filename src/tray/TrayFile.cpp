#include "TrayFile.h"

#include "core/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QMimeDatabase>

#include <sys/stat.h>

namespace kelvane {

namespace {
constexpr int thumbnailSide = 256;

std::optional<quint64> inodeOf(const QString& path)
{
    struct stat info {};
    if (::lstat(QFile::encodeName(path).constData(), &info) != 0)
        return std::nullopt;
    return static_cast<quint64>(info.st_ino);
}
} // namespace

QString TrayFile::extension(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot <= 0 ? QString() : name.mid(dot + 1);
}

QString TrayFile::baseName(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot <= 0 ? name : name.left(dot);
}

bool TrayFile::isImageName(const QString& name)
{
    static const QStringList pictures{QStringLiteral("png"),  QStringLiteral("jpg"),  QStringLiteral("jpeg"),
                                      QStringLiteral("gif"),  QStringLiteral("bmp"),  QStringLiteral("tiff"),
                                      QStringLiteral("webp")};
    return pictures.contains(extension(name).toLower());
}

QString TrayFile::truncatedName(const QString& name)
{
    if (name.size() <= 16)
        return name;
    return name.left(6) + QStringLiteral("...") + name.right(7);
}

TrayFile::Contents TrayFile::read(const QUrl& url)
{
    const QString path = url.toLocalFile();
    Contents contents;
    contents.inode = inodeOf(path);
    if (isImageName(url.fileName())) {
        QImageReader reader(path);
        reader.setAutoTransform(true);
        const QSize size = reader.size();
        if (size.isValid() && (size.width() > thumbnailSide || size.height() > thumbnailSide))
            reader.setScaledSize(size.scaled(thumbnailSide, thumbnailSide, Qt::KeepAspectRatio));
        contents.image = reader.read();
    }
    static const QMimeDatabase types;
    contents.iconName = types.mimeTypeForFile(path).iconName();
    return contents;
}

TrayFile::TrayFile(const QUrl& url, std::optional<QUuid> stackID, QDateTime addedAt, Contents contents, QObject* parent)
    : QObject(parent)
    , m_stackID(stackID)
    , m_addedAt(std::move(addedAt))
    , m_image(std::move(contents.image))
    , m_iconName(std::move(contents.iconName))
{
    m_url = url;
    m_name = url.fileName();
    m_nameTruncated = truncatedName(m_name);
    m_isImage = isImageName(m_name);
    m_inode = contents.inode;
}

bool TrayFile::rename(const QString& newName)
{
    const QString ext = extension(m_name);
    const QString target = QFileInfo(path()).dir().filePath(ext.isEmpty() ? newName : newName + QLatin1Char('.') + ext);
    QString error;
    if (newName.isEmpty() || newName.contains(QLatin1Char('/')))
        error = QStringLiteral("\"%1\" is not a file name").arg(newName);
    else if (QFileInfo::exists(target))
        error = QStringLiteral("\"%1\" already exists").arg(QFileInfo(target).fileName());
    else if (!QFile::rename(path(), target))
        error = QStringLiteral("could not move %1 to %2").arg(path(), target);
    if (!error.isEmpty()) {
        emitLine(QStringLiteral("Failed to rename file: ") + error);
        return false;
    }
    updateData(QUrl::fromLocalFile(target));
    return true;
}

bool TrayFile::updateFileName()
{
    if (!m_inode)
        return false;
    const QDir folder = QFileInfo(path()).dir();
    if (!folder.exists()) {
        emitLine(QStringLiteral("Failed to update file name: ") + folder.path() + QStringLiteral(" is gone"));
        return false;
    }
    for (const QString& entry : folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        if (inodeOf(folder.filePath(entry)) == m_inode) {
            if (entry != m_name)
                updateData(QUrl::fromLocalFile(folder.filePath(entry)));
            return true;
        }
    return false;
}

void TrayFile::updateData(const QUrl& url)
{
    m_url = url;
    m_inode = inodeOf(path());
    m_name = url.fileName();
    m_nameTruncated = truncatedName(m_name);
    m_isImage = isImageName(m_name);
    Q_EMIT changed();
}

} // namespace kelvane
