#include "StagingArea.h"

#include "FileCopy.h"

#include "core/Log.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvane {

namespace {
const QString stagingName = QStringLiteral("KelvaneTemp");

QString errnoText() { return QString::fromLocal8Bit(std::strerror(errno)); }

// Why the folder at `path` is not a private folder of this user's, or nothing when it is.
std::optional<QString> whyNotPrivate(const QString& path)
{
    struct stat info {};
    if (::lstat(QFile::encodeName(path).constData(), &info) != 0)
        return errnoText();
    if (S_ISLNK(info.st_mode))
        return QStringLiteral("it is a symbolic link");
    if (!S_ISDIR(info.st_mode))
        return QStringLiteral("it is not a folder");
    if (info.st_uid != ::getuid())
        return QStringLiteral("it belongs to another user");
    if ((info.st_mode & 077) != 0)
        return QStringLiteral("other users may open it");
    return std::nullopt;
}

// Makes a private folder from a template ending in "XXXXXX"; empty when it cannot.
QString makePrivateFolder(const QString& pattern)
{
    QByteArray name = QFile::encodeName(pattern);
    return ::mkdtemp(name.data()) ? QFile::decodeName(name) : QString();
}
} // namespace

StagedDrop::~StagedDrop()
{
    if (m_removeWhenReleased)
        removeItem(m_folder);
}

StagingArea::StagingArea(QString parent)
    : m_parent(std::move(parent))
{
}

QString StagingArea::parentFolder() const { return m_parent.isEmpty() ? QDir::tempPath() : m_parent; }

QString StagingArea::root()
{
    if (!m_root.isEmpty() && !whyNotPrivate(m_root))
        return m_root;
    const QString preferred = QDir(parentFolder()).filePath(stagingName);
    // mkdir never follows a link planted at the name; what is there is checked, not trusted.
    if (::mkdir(QFile::encodeName(preferred).constData(), 0700) != 0 && errno != EEXIST) {
        logLine(u"Tray", QStringLiteral("Error creating app temp directory: %1: %2").arg(preferred, errnoText()));
        m_root.clear();
        return m_root;
    }
    const auto refused = whyNotPrivate(preferred);
    if (!refused) {
        m_root = preferred;
        return m_root;
    }
    // A folder of our own under another name, made fresh, never an earlier one that someone
    // else could have prepared.
    const QString fresh = makePrivateFolder(preferred + QStringLiteral(".XXXXXX"));
    logLine(u"Tray", QStringLiteral("Refusing the staging folder %1: %2; using %3 instead.")
                         .arg(preferred, *refused, fresh.isEmpty() ? QStringLiteral("none") : fresh));
    m_root = fresh;
    return m_root;
}

std::shared_ptr<StagedDrop> StagingArea::newDrop()
{
    const QString folder = root();
    if (folder.isEmpty())
        return nullptr;
    const QString made = makePrivateFolder(QDir(folder).filePath(QStringLiteral("drop.XXXXXX")));
    if (made.isEmpty()) {
        logLine(u"Tray", QStringLiteral("Error creating app temp directory: %1: %2").arg(folder, errnoText()));
        return nullptr;
    }
    for (auto it = m_drops.begin(); it != m_drops.end();)
        it = it.value().expired() ? m_drops.erase(it) : std::next(it);
    auto drop = std::make_shared<StagedDrop>(made);
    m_drops.insert(made, drop);
    return drop;
}

void StagingArea::cleanup()
{
    const QString folder = m_root.isEmpty() ? QDir(parentFolder()).filePath(stagingName) : m_root;
    // Only a folder that passes the check is emptied: never one of another user's, never through a link.
    if (!whyNotPrivate(folder)) {
        bool held = false;
        std::optional<QString> error;
        const QStringList entries = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        for (const QString& entry : entries) {
            const QString path = QDir(folder).filePath(entry);
            if (const auto drop = m_drops.value(path); !drop.expired()) {
                held = true;
                continue;
            }
            if (auto failed = removeItem(path); failed && !error)
                error = failed;
        }
        if (!held && !error && ::rmdir(QFile::encodeName(folder).constData()) != 0)
            error = QStringLiteral("%1: %2").arg(folder, errnoText());
        if (error)
            emitLine(QStringLiteral("Error removing specific temporary directory: ") + *error);
        else
            emitLine(QStringLiteral("Specific temporary directory removed successfully"));
    }

    static const QRegularExpression leftOver(QStringLiteral("^TemporaryDirectory\\.[a-zA-Z0-9]{5,6}$"));
    // Staging folders of earlier runs that had to stand in for a refused one.
    static const QRegularExpression formerStaging(QStringLiteral("^KelvaneTemp\\.[a-zA-Z0-9]{6}$"));
    const QDir temporary(parentFolder());
    if (!temporary.exists()) {
        emitLine(QStringLiteral("Error accessing or processing temporary directories: ") + temporary.path() +
                 QStringLiteral(" does not exist"));
        return;
    }
    for (const QString& name : temporary.entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System)) {
        const QString path = temporary.filePath(name);
        if (formerStaging.match(name).hasMatch() && path != m_root && !whyNotPrivate(path)) {
            removeItem(path);
            continue;
        }
        if (!leftOver.match(name).hasMatch())
            continue;
        struct stat info {};
        // In a folder every user shares, only this user's own real folders are taken.
        if (::lstat(QFile::encodeName(path).constData(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != ::getuid())
            continue;
        if (const auto error = removeItem(path))
            emitLine(QStringLiteral("Error removing temporary directory ") + name + QStringLiteral(": ") + *error);
        else
            emitLine(QStringLiteral("Removed temporary directory: ") + name);
    }
}

} // namespace kelvane
