#include "MimePasteboard.h"

#include "XdsPromiseReceiver.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace kelvane {

namespace {
const QString mozillaURL = QStringLiteral("text/x-moz-url");
const QString directSave = QStringLiteral("XdndDirectSave0");

std::optional<QString> webAddress(const QMimeData& data)
{
    for (const QUrl& url : data.urls())
        if (!url.isLocalFile() && url.isValid())
            return url.toString();
    if (data.hasFormat(mozillaURL)) {
        // UTF-16: the address, a line break, the page title.
        const QByteArray raw = data.data(mozillaURL);
        const QString text = QString::fromUtf16(reinterpret_cast<const char16_t*>(raw.constData()), raw.size() / 2);
        if (const QString address = text.section(QLatin1Char('\n'), 0, 0).trimmed(); !address.isEmpty())
            return address;
    }
    return std::nullopt;
}
} // namespace

MimePasteboard::MimePasteboard(std::function<const QMimeData*()> contents, std::function<const QMimeData*()> live)
    : m_contents(std::move(contents))
    , m_live(std::move(live))
{
}

QList<std::shared_ptr<FilePromiseReceiver>> MimePasteboard::filePromiseReceivers() const
{
    const QMimeData* data = m_contents();
    if (!data || !data->hasFormat(directSave) || !m_live)
        return {};
    return {std::make_shared<XdsPromiseReceiver>([live = m_live](const QString& format) {
        const QMimeData* drag = live();
        return drag ? drag->data(format) : QByteArray();
    })};
}

MimePasteboard MimePasteboard::clipboard()
{
    return MimePasteboard([] { return QGuiApplication::clipboard()->mimeData(); });
}

QStringList MimePasteboard::types() const
{
    const QMimeData* data = m_contents();
    if (!data)
        return {};
    QStringList types;
    if (!fileURLs().isEmpty())
        types << PasteboardType::fileURL;
    if (webAddress(*data))
        types << PasteboardType::url;
    if (data->hasText())
        types << PasteboardType::plainText;
    if (data->hasImage())
        types << PasteboardType::png;
    if (data->hasFormat(directSave))
        types << PasteboardType::filePromise;
    return types;
}

QList<QUrl> MimePasteboard::fileURLs() const
{
    QList<QUrl> files;
    if (const QMimeData* data = m_contents())
        for (const QUrl& url : data->urls())
            if (url.isLocalFile())
                files.append(url);
    return files;
}

QImage MimePasteboard::image() const
{
    const QMimeData* data = m_contents();
    return data && data->hasImage() ? qvariant_cast<QImage>(data->imageData()) : QImage();
}

std::optional<QString> MimePasteboard::string(const QString& type) const
{
    const QMimeData* data = m_contents();
    if (!data)
        return std::nullopt;
    if (type == PasteboardType::url || type == PasteboardType::legacyURL || type == PasteboardType::appleURL)
        return webAddress(*data);
    if ((type == PasteboardType::plainText || type == PasteboardType::legacyString) && data->hasText())
        return data->text();
    return std::nullopt;
}

void MimePasteboard::writeFileURLs(const QList<QUrl>& urls)
{
    auto* data = new QMimeData;
    data->setUrls(urls);
    // File managers paste what they find here as a copy of the files.
    QByteArray copied = "copy";
    for (const QUrl& url : urls)
        copied += '\n' + url.toEncoded();
    data->setData(QStringLiteral("x-special/gnome-copied-files"), copied);
    QGuiApplication::clipboard()->setMimeData(data);
}

} // namespace kelvane
