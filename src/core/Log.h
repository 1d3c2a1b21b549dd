#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace kelvane {

// Diagnostics: one line on standard output, "[Owner] message".
void logLine(QStringView owner, const QString& message);

// Captures the lines logged while it lives (tests compare them word for word). Captures nest;
// the innermost one receives the lines, and nothing is printed while one is active.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const QStringList& lines() const { return m_lines; }
    void clear() { m_lines.clear(); }

private:
    friend void logLine(QStringView, const QString&);
    QStringList m_lines;
    LogCapture* m_previous;
};

} // namespace kelvane
