#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickTextDocument>
#include <QStringList>

#include <memory>

namespace kelvane {

class SourceHighlighting;

// Colours a code note as it is typed, with GNU Source-highlight's language definitions; set on a
// text editor's document from QML. An unknown language leaves the text plain.
class CodeHighlighter : public QObject {
    Q_OBJECT
    Q_PROPERTY(QQuickTextDocument* document READ document WRITE setDocument NOTIFY documentChanged)
    Q_PROPERTY(QString language READ language WRITE setLanguage NOTIFY languageChanged)
    Q_PROPERTY(bool active READ isActive NOTIFY activeChanged)
public:
    explicit CodeHighlighter(QObject* parent = nullptr);
    ~CodeHighlighter() override;

    QQuickTextDocument* document() const { return m_document; }
    void setDocument(QQuickTextDocument* document);
    QString language() const { return m_language; }
    void setLanguage(const QString& language);
    // True when the language is known and the text is coloured.
    bool isActive() const;

    // The languages offered for a code note, known ones only, "markdown" first.
    static QStringList languages();
    // Colours `text` as one document would show it, for the tests: for each character, the name
    // of the element it belongs to ("keyword", "comment"...; "normal" for plain).
    static QStringList elementsOf(const QString& language, const QString& text);

Q_SIGNALS:
    void documentChanged();
    void languageChanged();
    void activeChanged();

private:
    void rebuild();

    QPointer<QQuickTextDocument> m_document;
    QString m_language;
    std::unique_ptr<SourceHighlighting> m_highlighting;
};

} // namespace kelvane
