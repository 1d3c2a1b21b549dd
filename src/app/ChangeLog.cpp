#include "ChangeLog.h"

#include "settings/Keys.h"
#include "settings/SettingsStore.h"

#include <QRegularExpression>

namespace kelvane {

QList<Release> parseChangeLog(const QString& markdown)
{
    static const QRegularExpression heading(QStringLiteral(R"(^##\s+\[?v?(\d+(?:\.\d+)*)\]?\s*(?:[-–—(]\s*([^)]*?)\)?)?\s*$)"));
    QList<Release> releases;
    bool inRelease = false;
    for (const QString& line : markdown.split(u'\n')) {
        if (line.startsWith(QLatin1StringView("## "))) {
            const QRegularExpressionMatch match = heading.match(line.trimmed());
            inRelease = match.hasMatch();
            if (inRelease)
                releases.append({QVersionNumber::fromString(match.captured(1)), match.captured(2).trimmed(), {}});
            continue;
        }
        if (!inRelease || line.trimmed().isEmpty())
            continue;
        const QString text = line.trimmed();
        if (line.startsWith(QLatin1StringView("- ")) || line.startsWith(QLatin1StringView("* ")))
            releases.last().changes.append(text.mid(2).trimmed());
        else if (line.front().isSpace() && !releases.last().changes.isEmpty())
            releases.last().changes.last() += u' ' + text;
    }
    return releases;
}

QList<Release> releasesSinceLastRun(SettingsStore& settings, const QVersionNumber& running,
                                    const QList<Release>& changeLog)
{
    const QString recorded = settings.value(Keys::lastVersionNumber()).trimmed();
    const QVersionNumber last = QVersionNumber::fromString(recorded);
    if (recorded != running.toString())
        settings.setValue(Keys::lastVersionNumber(), running.toString());
    // "0", the value before any run, and anything unreadable.
    if (last.isNull() || last == QVersionNumber(0) || last >= running)
        return {};
    QList<Release> news;
    for (const Release& release : changeLog)
        if (release.version > last && release.version <= running)
            news.append(release);
    return news;
}

} // namespace kelvane
