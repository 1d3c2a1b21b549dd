#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace kelvane {

// Copies a saved file that could not be read to "<path>.broken" (replacing an older copy there),
// so that what the user had is kept beside the file that will replace it. Returns the copy's path.
QString keepAside(const QString& path);

// A saved list of strings (a JSON array). Nothing when the file is missing; `broken` is set, and
// nothing read, when it is there but is not such a list or `accept` refuses one of its entries.
std::optional<QStringList> readStringList(const QString& path, bool& broken,
                                          const std::function<bool(const QString&)>& accept = {});
// Replaces the file with `list` at once (never half written); the error, if it could not.
std::optional<QString> writeStringList(const QString& path, const QStringList& list);

} // namespace kelvane
