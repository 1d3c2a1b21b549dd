#include "MarkdownRendering.h"

#include <QFont>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace kelvane {

QString MarkdownRendering::toHtml(const QString& markdown, qreal pixelSize)
{
    QTextDocument document;
    QFont base;
    base.setPixelSize(qMax(1, qRound(pixelSize)));
    document.setDefaultFont(base);
    document.setMarkdown(markdown, QTextDocument::MarkdownDialectGitHub);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const int level = block.blockFormat().headingLevel();
        QTextCursor cursor(block);
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        if (level > 0) {
            QTextBlockFormat plain = block.blockFormat();
            plain.setHeadingLevel(0);
            cursor.setBlockFormat(plain);
            // A heading stands out by a step or two, not by a page's worth.
            QTextCharFormat heading;
            heading.setProperty(QTextFormat::FontSizeAdjustment, 0);
            heading.setProperty(QTextFormat::FontPixelSize, qRound(pixelSize * (level == 1   ? 1.35
                                                                                : level == 2 ? 1.2
                                                                                             : 1.05)));
            heading.setFontWeight(QFont::Bold);
            cursor.mergeCharFormat(heading);
            // Written out as a paragraph: a heading element would be sized again by the reader.
            QTextBlockFormat spacing = block.blockFormat();
            spacing.setHeadingLevel(0);
            spacing.setTopMargin(level <= 2 ? pixelSize * 0.4 : pixelSize * 0.2);
            spacing.setBottomMargin(pixelSize * 0.2);
            cursor.mergeBlockFormat(spacing);
        } else {
            QTextBlockFormat spacing = block.blockFormat();
            spacing.setTopMargin(qMin(spacing.topMargin(), pixelSize * 0.3));
            spacing.setBottomMargin(qMin(spacing.bottomMargin(), pixelSize * 0.3));
            cursor.mergeBlockFormat(spacing);
        }
        // Links in the system's accent blue, code in a monospace green.
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            QTextCharFormat format = fragment.charFormat();
            bool changed = false;
            if (format.isAnchor()) {
                format.setForeground(QColor(0x0a, 0x84, 0xff));
                changed = true;
            }
            if (format.fontFixedPitch() || format.fontFamilies().toStringList().contains(QStringLiteral("monospace"))) {
                format.setForeground(QColor(0x30, 0xd1, 0x58));
                changed = true;
            }
            if (changed) {
                QTextCursor span(&document);
                span.setPosition(fragment.position());
                span.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
                span.setCharFormat(format);
            }
        }
    }
    return document.toHtml();
}

} // namespace kelvane
