#pragma once

#include <QString>

namespace kelvane {

// Copies a saved file that could not be read to "<path>.broken" (replacing an older copy there),
// so that what the user had is kept beside the file that will replace it. Returns the copy's path.
QString keepAside(const QString& path);

} // namespace kelvane
