#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace kelvane {

// The tray's saved list as read back from "tray_state.json": the records that name a tray file,
// and why each of the others does not. Whether the files are still there is for the caller to see.
struct SavedTrayList {
    struct Entry {
        QUrl url;
        std::optional<QUuid> stackID;
    };
    QList<Entry> entries;
    // "record 3 (no file URL)", one for each record left out.
    QStringList rejected;
    // Set when the text is not a list at all; nothing is read then.
    std::optional<QString> error;

    static SavedTrayList read(const QByteArray& contents);
};

} // namespace kelvane
