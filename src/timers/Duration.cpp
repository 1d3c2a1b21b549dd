#include "Duration.h"

#include <QRegularExpression>

#include <cmath>

namespace kelvane {

namespace {
constexpr qint64 longest = longestDurationSeconds;

std::optional<qint64> withinLimit(double seconds)
{
    if (!std::isfinite(seconds) || seconds < 0 || seconds > static_cast<double>(longest))
        return std::nullopt;
    return std::llround(seconds);
}

std::optional<qint64> parseClock(QStringView text)
{
    static const QRegularExpression clock(QStringLiteral(R"(^(?:(\d+):([0-5]\d)|(\d+)):([0-5]\d)$)"));
    const auto match = clock.match(text.toString());
    if (!match.hasMatch())
        return std::nullopt;
    if (match.hasCaptured(1))
        return withinLimit(match.capturedView(1).toDouble() * 3600 + match.capturedView(2).toDouble() * 60 +
                           match.capturedView(4).toDouble());
    return withinLimit(match.capturedView(3).toDouble() * 60 + match.capturedView(4).toDouble());
}

std::optional<qint64> parseUnits(QStringView text)
{
    static const QRegularExpression units(
        QStringLiteral(R"(^(?:(\d+(?:\.\d+)?)\s*h(?:ours?|rs?)?)?\s*(?:(\d+(?:\.\d+)?)\s*m(?:in(?:utes?|s)?)?)?)"
                       R"(\s*(?:(\d+(?:\.\d+)?)\s*s(?:ec(?:onds?|s)?)?)?$)"),
        QRegularExpression::CaseInsensitiveOption);
    const auto match = units.match(text.toString());
    if (!match.hasMatch() || (!match.hasCaptured(1) && !match.hasCaptured(2) && !match.hasCaptured(3)))
        return std::nullopt;
    return withinLimit(match.capturedView(1).toDouble() * 3600 + match.capturedView(2).toDouble() * 60 +
                       match.capturedView(3).toDouble());
}
} // namespace

std::optional<qint64> parseDuration(QStringView text)
{
    const QStringView trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return std::nullopt;
    bool isNumber = false;
    const double seconds = trimmed.toDouble(&isNumber);
    if (isNumber)
        return trimmed.front().isDigit() ? withinLimit(seconds) : std::nullopt;
    if (trimmed.contains(QLatin1Char(':')))
        return parseClock(trimmed);
    return parseUnits(trimmed);
}

} // namespace kelvane
