#pragma once

#include <QString>

#include <atomic>
#include <optional>

namespace kelvane {

// Copies a file, or a folder with everything in it, to a path that does not exist yet. Bytes are
// moved by the kernel where it can (no trip through this process). `copiedBytes` grows as the
// copy goes, for progress shown elsewhere. On failure nothing is left at the destination and the
// error is returned.
std::optional<QString> copyItem(const QString& source, const QString& destination,
                                std::atomic<qint64>* copiedBytes = nullptr);

// The bytes a copy of the item would move (a folder's files, all of them).
qint64 itemSize(const QString& path);

} // namespace kelvane
