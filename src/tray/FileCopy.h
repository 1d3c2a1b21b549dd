#pragma once

#include <QString>

#include <atomic>
#include <optional>

namespace kelvane {

// What a copy reports as it goes and what can stop it; shared with the thread that watches it.
struct CopyControl {
    // Grows as bytes are copied, for progress shown elsewhere.
    std::atomic<qint64> copiedBytes{0};
    // Set to stop the copy at its next step; what it had written is then removed.
    std::atomic<bool> cancelled{false};
};

// Copies a regular file, or a folder with what it holds, to a path that does not exist yet.
// Bytes are moved by the kernel where it can. Nothing that could block is opened: a pipe, a
// socket or a device is refused (inside a folder it is left out, and one line names how many
// were). A folder is never copied into a folder inside it. On failure or cancellation nothing is
// left at the destination and the error is returned.
std::optional<QString> copyItem(const QString& source, const QString& destination, CopyControl* control = nullptr);

// Copies `source` by a hard link where the file system allows it, else as copyItem does.
std::optional<QString> linkOrCopyItem(const QString& source, const QString& destination, CopyControl* control = nullptr);

// The bytes a copy of the item would move (a folder's files, all of them).
qint64 itemSize(const QString& path);

// Removes a file, a link (never what it points to) or a folder with everything in it.
std::optional<QString> removeItem(const QString& path);

} // namespace kelvane
