#pragma once

#include <QObject>
#include <QString>

namespace kelvane {

// Markdown as a note shows it while read: Qt's own Markdown reader, with headings, code and links
// sized and coloured for a small dark panel instead of a page.
class MarkdownRendering : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Rich text for a text item whose base font is `pixelSize` pixels.
    Q_INVOKABLE static QString toHtml(const QString& markdown, qreal pixelSize);
};

} // namespace kelvane
