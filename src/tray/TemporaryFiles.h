#pragma once

#include <QString>

#include <optional>

namespace kelvane {

// The folder where drops are staged before they reach the tray or a pipeline:
// the system temporary folder / "KelvaneTemp".
QString applicationTemporaryFolder();

// Removes `folder` (the application temporary folder when none is given) with everything in it,
// then every folder directly in the system temporary folder that other applications' drags leave
// behind ("TemporaryDirectory.xxxxx"). Each removal and each failure is one printed line.
void cleanupTemporaryDirectory(const std::optional<QString>& folder = std::nullopt);

} // namespace kelvane
