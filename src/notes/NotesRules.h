#pragma once

#include "NotesStore.h"

#include <QString>

namespace kelvane::notes {

// The title a note shows: its own, else its first line with Markdown's heading, quote, list and
// task marks taken off, at most `maxTitleLength` characters (as a reader counts them).
inline constexpr int maxTitleLength = 60;
QString derivedTitle(const QString& body);
QString displayTitle(const Note& note);

// A note is left empty when it has neither a title of its own nor anything but blanks.
bool isEmpty(const Note& note);

// A done to-do goes to the archive once more than `days` whole days have passed since it was
// done; a negative number of days never archives.
bool shouldArchive(const Todo& todo, double now, int days);

// The note a first run finds.
QString welcomeNoteBody();

} // namespace kelvane::notes
