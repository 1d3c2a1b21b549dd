#pragma once

#include "tray/Pasteboard.h"

#include <QByteArray>

#include <functional>

namespace kelvane {

// A file promised by an X11 drag through the direct-save protocol (XDS, "XdndDirectSave0"), as
// archive managers offer the files dragged out of an archive: the source names the file, the drop
// target tells it where to write it, the source writes it and answers. Main thread only, within
// the drop (while the drag's data can still be asked for).
class XdsPromiseReceiver : public FilePromiseReceiver {
public:
    // `fetch` converts the drag's data to a format, while the drop lasts.
    explicit XdsPromiseReceiver(std::function<QByteArray(const QString& format)> fetch);
    void receive(const QString& folder,
                 std::function<void(const std::optional<QUrl>& file, const QString& error)> done) override;

    // The file name a source proposed, made safe to write into a folder of ours.
    static QString safeName(const QByteArray& proposed);

private:
    std::function<QByteArray(const QString&)> m_fetch;
};

} // namespace kelvane
