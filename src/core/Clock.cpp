#include "Clock.h"

#include <QLocale>
#include <QTimeZone>

#include <cmath>

namespace kelvane {

namespace {
const QDateTime& referenceDate()
{
    static const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), QTimeZone::utc());
    return reference;
}
} // namespace

double secondsSinceReferenceDate(const QDateTime& time)
{
    return static_cast<double>(referenceDate().msecsTo(time)) / 1000.0;
}

std::optional<QDateTime> dateFromReferenceSeconds(double seconds)
{
    // Milliseconds must fit a 64-bit count before they are one: a cast of anything larger is no
    // number at all.
    constexpr double largest = 9.0e15;
    if (!std::isfinite(seconds) || std::abs(seconds) > largest)
        return std::nullopt;
    const QDateTime date = referenceDate().addMSecs(static_cast<qint64>(seconds * 1000.0));
    return date.isValid() ? std::optional(date) : std::nullopt;
}

QString clockTime(const QTime& time)
{
    QString format = QLocale().timeFormat(QLocale::ShortFormat);
    format.remove(QStringLiteral(":ss")).remove(QStringLiteral(".ss"));
    return QLocale().toString(time, format);
}

} // namespace kelvane
