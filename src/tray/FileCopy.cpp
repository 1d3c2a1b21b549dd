#include "FileCopy.h"

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
QString systemError(const QString& what) { return what + QStringLiteral(": ") + QString::fromLocal8Bit(std::strerror(errno)); }

std::optional<QString> copyFile(const QString& source, const QString& destination, std::atomic<qint64>* copied)
{
    const int in = ::open(QFile::encodeName(source).constData(), O_RDONLY | O_CLOEXEC);
    if (in < 0)
        return systemError(source);
    struct stat info {};
    ::fstat(in, &info);
    const int out = ::open(QFile::encodeName(destination).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                           info.st_mode & 0777);
    if (out < 0) {
        const QString error = systemError(destination);
        ::close(in);
        return error;
    }
    std::optional<QString> error;
    bool kernelCopy = true;
    std::vector<char> buffer;
    for (;;) {
        ssize_t moved = -1;
        if (kernelCopy) {
            moved = ::copy_file_range(in, nullptr, out, nullptr, 64 << 20, 0);
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
                    moved = -1;
                    break;
                }
                written += n;
            }
        }
        if (moved < 0) {
            if (errno == EINTR)
                continue;
            error = systemError(source);
            break;
        }
        if (moved == 0)
            break;
        if (copied)
            *copied += moved;
    }
    ::close(in);
    if (::close(out) != 0 && !error)
        error = systemError(destination);
    if (error)
        QFile::remove(destination);
    return error;
}
} // namespace

std::optional<QString> copyItem(const QString& source, const QString& destination, std::atomic<qint64>* copiedBytes)
{
    const QFileInfo info(source);
    if (!info.exists())
        return source + QStringLiteral(": no such file or folder");
    if (!info.isDir())
        return copyFile(source, destination, copiedBytes);
    if (!QDir().mkdir(destination))
        return destination + QStringLiteral(": the folder could not be made");
    const QDir from(source);
    QDirIterator it(source, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString target = destination + QLatin1Char('/') + from.relativeFilePath(path);
        const QFileInfo entry = it.fileInfo();
        std::optional<QString> error;
        if (entry.isSymLink())
            error = QFile::link(entry.symLinkTarget(), target) ? std::nullopt : std::optional(target);
        else if (entry.isDir())
            error = QDir().mkpath(target) ? std::nullopt : std::optional(target + QStringLiteral(": the folder could not be made"));
        else
            error = copyFile(path, target, copiedBytes);
        if (error) {
            QDir(destination).removeRecursively();
            return error;
        }
    }
    return std::nullopt;
}

qint64 itemSize(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isDir())
        return info.size();
    qint64 total = 0;
    QDirIterator it(path, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        total += it.fileInfo().size();
    }
    return total;
}

} // namespace kelvane
