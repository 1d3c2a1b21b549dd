#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVersionNumber>

namespace kelvane {

class SettingsStore;

// One release in the project's change log.
struct Release {
    QVersionNumber version;
    QString date;
    QStringList changes;
    bool operator==(const Release&) const = default;
};

// The project's change log as it ships with it (Markdown): a "## VERSION" heading per release,
// optionally followed by its date ("## 0.2.0 - 2026-12-01"), its changes as "- " items below
// (an item may go on over indented lines). Headings that are not a version ("## Unreleased")
// and everything above the first release are left out. Newest first, as written.
QList<Release> parseChangeLog(const QString& markdown);

// The check made when a notch is first shown: the releases newer than the version last run and
// not newer than the running one, newest first; the version last run then becomes the running
// one. The very first run (no version recorded yet) shows nothing, as does a recorded version
// that cannot be read.
QList<Release> releasesSinceLastRun(SettingsStore& settings, const QVersionNumber& running,
                                    const QList<Release>& changeLog);

} // namespace kelvane
