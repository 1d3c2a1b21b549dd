#include "NotesRules.h"

#include <QRegularExpression>
#include <QTextBoundaryFinder>

namespace kelvane::notes {

namespace {
QString firstGraphemes(const QString& text, int count)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype end = 0;
    for (int n = 0; n < count; ++n) {
        const qsizetype next = finder.toNextBoundary();
        if (next < 0)
            return text;
        end = next;
    }
    return end >= text.size() ? text : text.left(end).trimmed() + QStringLiteral("…");
}
} // namespace

QString derivedTitle(const QString& body)
{
    static const QRegularExpression marks(QStringLiteral(R"(^\s*(?:#{1,6}\s+|>\s*|[-*+]\s+(?:\[[ xX]\]\s+)?|\d+[.)]\s+)*)"));
    // Lines that only frame what follows: code fences and rules.
    static const QRegularExpression frame(QStringLiteral(R"(^\s*(?:(?:```|~~~)[\w+#.-]*|([-*_])(?:\s*\1){2,})\s*$)"));
    for (QStringView line : QStringView(body).split(QLatin1Char('\n'))) {
        QString text = line.toString();
        if (frame.match(text).hasMatch())
            continue;
        text.remove(marks);
        text = text.trimmed();
        if (!text.isEmpty())
            return firstGraphemes(text, maxTitleLength);
    }
    return {};
}

QString displayTitle(const Note& note)
{
    return note.title.trimmed().isEmpty() ? derivedTitle(note.body) : note.title.trimmed();
}

bool isEmpty(const Note& note) { return note.title.trimmed().isEmpty() && note.body.trimmed().isEmpty(); }

bool shouldArchive(const Todo& todo, double now, int days)
{
    if (!todo.done || todo.archived || days < 0)
        return false;
    // Done before completion dates were kept: counted from now on, never archived at once.
    if (!todo.completed)
        return false;
    return now - *todo.completed > double(days) * 86400.0;
}

QString welcomeNoteBody()
{
    return QStringLiteral(
        "# Welcome to Kelvane\n"
        "\n"
        "Your notch is now a small workspace.\n"
        "\n"
        "- **Open it** by hovering over the notch, clicking it or swiping down on the touchpad.\n"
        "- **Drop files** on the notch to keep them in the tray, then drag them on from there.\n"
        "- **Widgets**: what is playing, your calendar, timers, these notes and a to-do list.\n"
        "- **Volume and brightness keys** show their level in the notch.\n"
        "- **Notes** render Markdown as you read them; turn on *code mode* for highlighted code, "
        "or open a note in its own window.\n"
        "- **Settings**: right-click the notch, or run `kelvanectl show-settings`.\n"
        "\n"
        "Delete this note whenever you like; it will not come back.\n");
}

} // namespace kelvane::notes
