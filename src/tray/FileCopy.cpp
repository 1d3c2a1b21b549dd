#include "FileCopy.h"

#include "core/Log.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvane {

namespace {
// Small enough that a cancelled copy stops within a moment even on a slow disk.
constexpr std::size_t chunk = 8 << 20;

const QString notFileOrFolder = QStringLiteral("it is neither a regular file nor a folder");

QString systemError(const QString& what) { return what + QStringLiteral(": ") + QString::fromLocal8Bit(std::strerror(errno)); }
QString cancelledError(const QString& what) { return what + QStringLiteral(": the copy was cancelled"); }

bool isCancelled(const CopyControl* control) { return control && control->cancelled.load(std::memory_order_relaxed); }

std::optional<struct stat> statOf(const QString& path, bool followLinks)
{
    struct stat info {};
    const QByteArray name = QFile::encodeName(path);
    if ((followLinks ? ::stat(name.constData(), &info) : ::lstat(name.constData(), &info)) != 0)
        return std::nullopt;
    return info;
}

std::optional<QString> moveBytes(int in, int out, const QString& source, CopyControl* control)
{
    bool kernelCopy = true;
    std::vector<char> buffer;
    for (;;) {
        if (isCancelled(control))
            return cancelledError(source);
        ssize_t moved = -1;
        if (kernelCopy) {
            moved = ::copy_file_range(in, nullptr, out, nullptr, chunk, 0);
            if (moved < 0 && (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP)) {
                kernelCopy = false;
                continue;
            }
        } else {
            buffer.resize(1 << 20);
            moved = ::read(in, buffer.data(), buffer.size());
            for (ssize_t written = 0; moved > 0 && written < moved;) {
                const ssize_t n = ::write(out, buffer.data() + written, std::size_t(moved - written));
                if (n < 0) {
                    if (errno == EINTR)
                        continue;
                    return systemError(source);
                }
                written += n;
            }
        }
        if (moved < 0) {
            if (errno == EINTR)
                continue;
            return systemError(source);
        }
        if (moved == 0)
            return std::nullopt;
        if (control)
            control->copiedBytes += moved;
    }
}

std::optional<QString> copyFile(const QString& source, const QString& destination, CopyControl* control)
{
    // Opened without waiting (a pipe's writer may never come), and the type checked on what was
    // opened, not on the name, which could have changed meanwhile.
    const int in = ::open(QFile::encodeName(source).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (in < 0)
        return systemError(source);
    struct stat info {};
    if (::fstat(in, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(in);
        return source + QStringLiteral(": ") + notFileOrFolder;
    }
    ::fcntl(in, F_SETFL, ::fcntl(in, F_GETFL) & ~O_NONBLOCK);
    // The copy is written nameless in its folder and given its name once whole, so that a process
    // killed half-way leaves nothing behind; folders that cannot hold a nameless file get the name
    // at once.
    const QByteArray target = QFile::encodeName(destination);
    int out = ::open(QFile::encodeName(QFileInfo(destination).absolutePath()).constData(),
                     O_TMPFILE | O_WRONLY | O_CLOEXEC, info.st_mode & 0777);
    const bool nameless = out >= 0;
    if (!nameless)
        out = ::open(target.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, info.st_mode & 0777);
    if (out < 0) {
        const QString error = systemError(destination);
        ::close(in);
        return error;
    }
    std::optional<QString> error = moveBytes(in, out, source, control);
    ::close(in);
    // Linking never replaces a file that took the name meanwhile.
    if (!error && nameless &&
        ::linkat(AT_FDCWD, QByteArray("/proc/self/fd/" + QByteArray::number(out)).constData(), AT_FDCWD,
                 target.constData(), AT_SYMLINK_FOLLOW) != 0)
        error = systemError(destination);
    if (::close(out) != 0 && !error)
        error = systemError(destination);
    if (error && !nameless)
        QFile::remove(destination);
    return error;
}

// A link inside a folder stays a link, pointing where it pointed, relative or not.
std::optional<QString> copyLink(const QString& link, const QString& target)
{
    std::vector<char> points(4096);
    const ssize_t length = ::readlink(QFile::encodeName(link).constData(), points.data(), points.size());
    if (length < 0 || std::size_t(length) >= points.size())
        return systemError(link);
    if (::symlink(QByteArray(points.data(), length).constData(), QFile::encodeName(target).constData()) != 0)
        return systemError(target);
    return std::nullopt;
}

std::optional<QString> copyFolder(const QString& source, const QString& destination, CopyControl* control)
{
    const QString canonicalSource = QFileInfo(source).canonicalFilePath();
    const QString canonicalParent = QFileInfo(QFileInfo(destination).absolutePath()).canonicalFilePath();
    if (canonicalParent == canonicalSource || canonicalParent.startsWith(canonicalSource + QLatin1Char('/')))
        return source + QStringLiteral(": a folder cannot be copied into a folder inside it");
    if (::mkdir(QFile::encodeName(destination).constData(), 0700) != 0)
        return systemError(destination);
    const QDir from(source);
    int leftOut = 0;
    std::optional<QString> error;
    QDirIterator it(source, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (!error && it.hasNext()) {
        const QString path = it.next();
        const QString target = destination + QLatin1Char('/') + from.relativeFilePath(path);
        const auto info = statOf(path, false);
        if (isCancelled(control))
            error = cancelledError(source);
        else if (!info)
            error = systemError(path);
        else if (S_ISLNK(info->st_mode))
            error = copyLink(path, target);
        else if (S_ISDIR(info->st_mode))
            error = ::mkdir(QFile::encodeName(target).constData(), 0700) == 0 ? std::nullopt
                                                                              : std::optional(systemError(target));
        else if (S_ISREG(info->st_mode))
            error = copyFile(path, target, control);
        else
            ++leftOut;
    }
    if (error) {
        removeItem(destination);
        return error;
    }
    // Folders keep their own permissions once everything is in them.
    QDirIterator folders(source, QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (folders.hasNext()) {
        const QString path = folders.next();
        if (const auto info = statOf(path, false))
            ::chmod(QFile::encodeName(destination + QLatin1Char('/') + from.relativeFilePath(path)).constData(), info->st_mode & 07777);
    }
    if (const auto info = statOf(source, true))
        ::chmod(QFile::encodeName(destination).constData(), info->st_mode & 07777);
    if (leftOut > 0)
        logLine(u"Tray", QStringLiteral("Left %1 item(s) of %2 out of its copy: %3.").arg(leftOut).arg(QFileInfo(source).fileName(), notFileOrFolder));
    return std::nullopt;
}
} // namespace

std::optional<QString> copyItem(const QString& source, const QString& destination, CopyControl* control)
{
    const auto info = statOf(source, true);
    if (!info)
        return systemError(source);
    if (S_ISDIR(info->st_mode))
        return copyFolder(source, destination, control);
    if (!S_ISREG(info->st_mode))
        return source + QStringLiteral(": ") + notFileOrFolder;
    return copyFile(source, destination, control);
}

std::optional<QString> linkOrCopyItem(const QString& source, const QString& destination, CopyControl* control)
{
    const auto info = statOf(source, true);
    if (info && S_ISREG(info->st_mode) &&
        ::link(QFile::encodeName(source).constData(), QFile::encodeName(destination).constData()) == 0)
        return std::nullopt;
    return copyItem(source, destination, control);
}

qint64 itemSize(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isDir())
        return info.isFile() ? info.size() : 0;
    qint64 total = 0;
    QDirIterator it(path, QDir::Files | QDir::Hidden | QDir::System | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        total += it.fileInfo().size();
    }
    return total;
}

std::optional<QString> removeItem(const QString& path)
{
    const auto info = statOf(path, false);
    if (!info)
        return errno == ENOENT ? std::nullopt : std::optional(systemError(path));
    if (!S_ISDIR(info->st_mode))
        return ::unlink(QFile::encodeName(path).constData()) == 0 ? std::nullopt : std::optional(systemError(path));
    // Inside, links are removed as entries and never followed.
    if (!QDir(path).removeRecursively())
        return QStringLiteral("could not remove everything in %1").arg(path);
    return std::nullopt;
}

} // namespace kelvane
