#include "CodeHighlighter.h"

#include "core/Log.h"

#include <QFile>
#include <QSyntaxHighlighter>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

#include <srchilite/formatter.h>
#include <srchilite/formattermanager.h>
#include <srchilite/formatterparams.h>
#include <srchilite/highlightstate.h>
#include <srchilite/instances.h>
#include <srchilite/langdefmanager.h>
#include <srchilite/langmap.h>
#include <srchilite/sourcehighlighter.h>

#include <map>
#include <optional>

namespace kelvane {

namespace {

// Colours for the panel's dark glass, one per element of the language definitions.
const std::map<std::string, QTextCharFormat>& styles()
{
    static const std::map<std::string, QTextCharFormat> table = [] {
        std::map<std::string, QTextCharFormat> formats;
        const auto add = [&](const char* element, const char* color, bool bold = false, bool italic = false,
                             bool underline = false) {
            QTextCharFormat format;
            if (color)
                format.setForeground(QColor(QLatin1StringView(color)));
            if (bold)
                format.setFontWeight(QFont::Bold);
            format.setFontItalic(italic);
            format.setFontUnderline(underline);
            format.setProperty(QTextFormat::UserProperty, QString::fromLatin1(element));
            formats.emplace(element, format);
        };
        add("keyword", "#ff7ab2", true);
        add("type", "#5dd8ff");
        add("usertype", "#5dd8ff");
        add("classname", "#5dd8ff");
        add("string", "#fc6a5d");
        add("regexp", "#fc6a5d");
        add("specialchar", "#d0bf69");
        add("comment", "#7f8c98", false, true);
        add("number", "#d0bf69");
        add("preproc", "#fd8f3f");
        add("symbol", "#ffd60a");
        add("cbracket", "#ebebf5");
        add("function", "#67b7a4");
        add("todo", "#ffd60a", true);
        add("fixed", "#30d158");
        add("predef_var", "#a167e6");
        add("predef_func", "#a167e6");
        add("variable", "#a167e6");
        add("url", "#0a84ff", false, false, true);
        add("bold", nullptr, true);
        add("italics", nullptr, false, true);
        add("value", "#fc6a5d");
        add("property", "#5dd8ff");
        add("selector", "#ff7ab2");
        add("oldfile", "#ff453a");
        add("newfile", "#30d158");
        add("difflines", "#64d2ff");
        return formats;
    }();
    return table;
}

// The definitions Kelvane brings itself live in its resources; the library reads files.
QString ownDefinitions()
{
    static QTemporaryDir folder;
    static const bool written = [] {
        if (!folder.isValid())
            return false;
        return QFile::copy(QStringLiteral(":/kelvane/highlight/markdown.lang"),
                           folder.filePath(QStringLiteral("markdown.lang")));
    }();
    return written ? folder.path() : QString();
}

struct Definition {
    std::string path;
    std::string file;
};

std::optional<Definition> definitionOf(const QString& language)
{
    const QString name = language.trimmed().toLower();
    if (name.isEmpty())
        return std::nullopt;
    if (name == QLatin1StringView("markdown") || name == QLatin1StringView("md")) {
        const QString folder = ownDefinitions();
        if (folder.isEmpty())
            return std::nullopt;
        return Definition{folder.toStdString(), "markdown.lang"};
    }
    try {
        const std::string file = srchilite::Instances::getLangMap()->getMappedFileName(name.toStdString());
        if (file.empty())
            return std::nullopt;
        return Definition{{}, file};
    } catch (...) {
        return std::nullopt;
    }
}

srchilite::HighlightStatePtr mainStateOf(const Definition& definition)
{
    auto* manager = srchilite::Instances::getLangDefManager();
    return definition.path.empty() ? manager->getHighlightState(definition.file)
                                   : manager->getHighlightState(definition.path, definition.file);
}

struct Span {
    int start;
    int length;
    const QTextCharFormat* format;
};

// Records where each coloured element lies in the line being highlighted.
class Recorder final : public srchilite::Formatter {
public:
    Recorder(std::vector<Span>& spans, const QTextCharFormat* format)
        : m_spans(spans)
        , m_format(format)
    {
    }
    void format(const std::string& text, const srchilite::FormatterParams* params) override
    {
        if (m_format && params && !text.empty())
            m_spans.push_back({params->start, int(text.size()), m_format});
    }

private:
    std::vector<Span>& m_spans;
    const QTextCharFormat* m_format;
};

// Where a line's highlighting stopped, for the next line to go on from.
struct LineEnd final : QTextBlockUserData {
    srchilite::HighlightStatePtr state;
    srchilite::HighlightStateStackPtr stack;
};

} // namespace

class SourceHighlighting final : public QSyntaxHighlighter {
public:
    SourceHighlighting(srchilite::HighlightStatePtr mainState, QTextDocument* document)
        : QSyntaxHighlighter(static_cast<QObject*>(nullptr))
        , m_highlighter(mainState)
        , m_formatters(srchilite::FormatterPtr(new Recorder(m_spans, nullptr)))
    {
        for (const auto& [element, format] : styles())
            m_formatters.addFormatter(element, srchilite::FormatterPtr(new Recorder(m_spans, &format)));
        m_highlighter.setFormatterManager(&m_formatters);
        m_highlighter.setFormatterParams(&m_params);
        m_highlighter.setOptimize(false);
        setDocument(document);
    }

protected:
    void highlightBlock(const QString& text) override
    {
        if (const auto* previous = dynamic_cast<const LineEnd*>(currentBlock().previous().userData())) {
            m_highlighter.setCurrentState(previous->state);
            m_highlighter.setStateStack(
                srchilite::HighlightStateStackPtr(new srchilite::HighlightStateStack(*previous->stack)));
        } else {
            m_highlighter.setCurrentState(m_highlighter.getMainState());
            m_highlighter.clearStateStack();
        }
        m_spans.clear();
        m_params.start = 0;
        const QByteArray utf8 = text.toUtf8();
        try {
            m_highlighter.highlightParagraph(utf8.toStdString());
        } catch (...) {
            // A definition the library cannot apply to this line: the line stays plain.
            m_spans.clear();
        }
        // The library counts bytes; the document counts UTF-16 units.
        std::vector<int> unitAt(size_t(utf8.size()) + 1, int(text.size()));
        for (int unit = 0, byte = 0; unit < text.size(); ++unit) {
            unitAt[size_t(byte)] = unit;
            const char32_t c = text.at(unit).unicode();
            if (QChar::isHighSurrogate(c) && unit + 1 < text.size()) {
                byte += 4;
                ++unit;
            } else {
                byte += c < 0x80 ? 1 : c < 0x800 ? 2 : 3;
            }
        }
        for (const Span& span : m_spans) {
            const size_t end = std::min(size_t(span.start + span.length), size_t(utf8.size()));
            if (span.start < 0 || size_t(span.start) >= end)
                continue;
            const int from = unitAt[size_t(span.start)];
            setFormat(from, unitAt[end] - from, *span.format);
        }
        auto* line = new LineEnd;
        line->state = m_highlighter.getCurrentState();
        line->stack =
            srchilite::HighlightStateStackPtr(new srchilite::HighlightStateStack(*m_highlighter.getStateStack()));
        setCurrentBlockUserData(line);
        // The next line is done again only when where this one stopped has changed.
        setCurrentBlockState(int(line->state->getId() * 64 + line->stack->size()));
    }

private:
    std::vector<Span> m_spans;
    srchilite::SourceHighlighter m_highlighter;
    srchilite::FormatterManager m_formatters;
    srchilite::FormatterParams m_params;
};

namespace {
std::unique_ptr<SourceHighlighting> makeHighlighting(const QString& language, QTextDocument* document)
{
    const auto definition = definitionOf(language);
    if (!definition || !document)
        return nullptr;
    try {
        return std::make_unique<SourceHighlighting>(mainStateOf(*definition), document);
    } catch (const std::exception& error) {
        logLine(u"Notes",
                QStringLiteral("Cannot highlight %1: %2").arg(language, QString::fromLocal8Bit(error.what())));
    } catch (...) {
        logLine(u"Notes", QStringLiteral("Cannot highlight %1.").arg(language));
    }
    return nullptr;
}
} // namespace

CodeHighlighter::CodeHighlighter(QObject* parent)
    : QObject(parent)
{
}

CodeHighlighter::~CodeHighlighter() = default;

void CodeHighlighter::setDocument(QQuickTextDocument* document)
{
    if (m_document == document)
        return;
    m_document = document;
    rebuild();
    Q_EMIT documentChanged();
}

void CodeHighlighter::setLanguage(const QString& language)
{
    if (m_language == language)
        return;
    m_language = language;
    rebuild();
    Q_EMIT languageChanged();
}

bool CodeHighlighter::isActive() const { return m_highlighting != nullptr; }

void CodeHighlighter::rebuild()
{
    const bool was = isActive();
    m_highlighting.reset();
    m_highlighting = makeHighlighting(m_language, m_document ? m_document->textDocument() : nullptr);
    if (was != isActive())
        Q_EMIT activeChanged();
}

QStringList CodeHighlighter::languages()
{
    static const QStringList known = [] {
        QStringList list{QStringLiteral("markdown")};
        for (const char* name : {"sh",   "c",      "cpp",        "csharp", "css",   "diff", "go",       "haskell",
                                 "html", "java",   "javascript", "json",   "latex", "lua",  "makefile", "perl",
                                 "php",  "python", "ruby",       "rust",   "scala", "sql",  "xml"})
            if (definitionOf(QLatin1StringView(name)))
                list << QLatin1StringView(name);
        return list;
    }();
    return known;
}

QStringList CodeHighlighter::elementsOf(const QString& language, const QString& text)
{
    QTextDocument document;
    document.setPlainText(text);
    const auto highlighting = makeHighlighting(language, &document);
    QStringList elements;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const auto formats = block.layout()->formats();
        for (int i = 0; i < block.length() - 1; ++i) {
            QString element = QStringLiteral("normal");
            for (const QTextLayout::FormatRange& range : formats)
                if (i >= range.start && i < range.start + range.length)
                    element = range.format.property(QTextFormat::UserProperty).toString();
            elements << element;
        }
        if (block.next().isValid())
            elements << QStringLiteral("newline");
    }
    return elements;
}

} // namespace kelvane
