#pragma once

#include "tray/Pasteboard.h"

#include <functional>

class QMimeData;

namespace kelvane {

// Qt's MIME data read as a pasteboard: file URLs in "text/uri-list" are the file-URL type, other
// addresses (and "text/x-moz-url") "public.url", plain text "public.utf8-plain-text", a picture
// image data, and an XDS direct-save offer a file promise.
class MimePasteboard : public Pasteboard {
public:
    // `contents` is asked each time, so the pasteboard follows the clipboard as it changes.
    // `live`, for a drop: the drag's own data while the drop lasts, which promised files are
    // asked for.
    explicit MimePasteboard(std::function<const QMimeData*()> contents,
                            std::function<const QMimeData*()> live = nullptr);
    // The general clipboard.
    static MimePasteboard clipboard();

    QStringList types() const override;
    QList<QUrl> fileURLs() const override;
    QImage image() const override;
    std::optional<QString> string(const QString& type) const override;
    void writeFileURLs(const QList<QUrl>& urls) override;
    QList<std::shared_ptr<FilePromiseReceiver>> filePromiseReceivers() const override;

private:
    std::function<const QMimeData*()> m_contents;
    std::function<const QMimeData*()> m_live;
};

} // namespace kelvane
