#include "Clock.h"

#include <QTimeZone>

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

QDateTime dateFromReferenceSeconds(double seconds)
{
    return referenceDate().addMSecs(static_cast<qint64>(seconds * 1000.0));
}

} // namespace kelvane
