#include "Pasteboard.h"

#include "core/Log.h"

namespace kelvane {

void airDropItems(const QList<QUrl>& items, SharingService& service)
{
    QList<QUrl> files;
    for (const QUrl& url : items)
        if (url.isLocalFile())
            files.append(url);
    if (files.isEmpty()) {
        emitLine(QStringLiteral("No file URLs to share via AirDrop"));
        return;
    }
    service.perform(files);
}

} // namespace kelvane
