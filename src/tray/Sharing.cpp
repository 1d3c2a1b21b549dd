#include "Pasteboard.h"

#include "core/Log.h"

namespace kelvane {

void airDropItems(const QList<QUrl>& items, SharingService& service, std::function<void()> finished)
{
    if (!finished)
        finished = [] {};
    QList<QUrl> files;
    for (const QUrl& url : items)
        if (url.isLocalFile())
            files.append(url);
    if (files.isEmpty()) {
        emitLine(QStringLiteral("No file URLs to share via AirDrop"));
        finished();
        return;
    }
    service.perform(files, std::move(finished));
}

} // namespace kelvane
