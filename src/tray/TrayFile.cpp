#include "TrayFile.h"

#include "core/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QMimeDatabase>
#include <QTextBoundaryFinder>

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

namespace {
// The dot that starts an extension: not the first character (a dot-file) nor the last (a name
// that merely ends in a dot).
qsizetype extensionDot(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot <= 0 || dot == name.size() - 1 ? -1 : dot;
}

// Where each character a reader sees begins: an emoji with its modifiers, a flag, or a letter
// with its accents is one.
QList<qsizetype> characterStarts(const QString& text)
{
    QList<qsizetype> starts;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype at = 0; at >= 0 && at < text.size(); at = finder.toNextBoundary())
        starts.append(at);
    return starts;
}
} // namespace

QString TrayFile::extension(const QString& name)
{
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? QString() : name.mid(dot + 1);
}

QString TrayFile::baseName(const QString& name)
{
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? name : name.left(dot);
}

QString TrayFile::fileName(const QUrl& url)
{
    return QFileInfo(QDir::cleanPath(url.toLocalFile())).fileName();
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
    const QList<qsizetype> starts = characterStarts(name);
    if (starts.size() <= 16)
        return name;
    return name.left(starts[6]) + QStringLiteral("...") + name.mid(starts[starts.size() - 7]);
}

TrayFile::Contents TrayFile::read(const QUrl& url)
{
    const QString path = url.toLocalFile();
    Contents contents;
    contents.inode = inodeOf(path);
    static const QMimeDatabase types;
    // Only a regular file is opened: reading a pipe or a device could wait for ever.
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0 || !S_ISREG(info.st_mode)) {
        contents.iconName = types.mimeTypeForFile(path, QMimeDatabase::MatchExtension).iconName();
        return contents;
    }
    if (isImageName(fileName(url))) {
        QImageReader reader(path);
        reader.setAutoTransform(true);
        const QSize size = reader.size();
        if (size.isValid() && (size.width() > thumbnailSide || size.height() > thumbnailSide))
            reader.setScaledSize(size.scaled(thumbnailSide, thumbnailSide, Qt::KeepAspectRatio));
        contents.image = reader.read();
    }
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
    m_url = QUrl::fromLocalFile(QDir::cleanPath(url.toLocalFile()));
    m_name = fileName(m_url);
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

const QJsonObject& TrayFile::record() const
{
    if (!m_record) {
        m_record = QJsonObject{{QStringLiteral("url"), m_url.toString(QUrl::FullyEncoded)},
                               {QStringLiteral("addedAt"), m_addedAt.toUTC().toString(Qt::ISODate)},
                               {QStringLiteral("originalName"), m_name}};
        if (m_stackID)
            m_record->insert(QStringLiteral("stackID"), m_stackID->toString(QUuid::WithoutBraces).toUpper());
    }
    return *m_record;
}

void TrayFile::updateData(const QUrl& url)
{
    m_record.reset();
    m_url = QUrl::fromLocalFile(QDir::cleanPath(url.toLocalFile()));
    m_inode = inodeOf(path());
    m_name = fileName(m_url);
    m_nameTruncated = truncatedName(m_name);
    m_isImage = isImageName(m_name);
    Q_EMIT changed();
}

} // namespace kelvane
