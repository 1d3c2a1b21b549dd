// What people type as a timer's length: a duration is whole seconds from none to a week, and the
// seconds it stands for read back as the same duration.

#include "FuzzCheck.h"

#include "timers/Duration.h"

#include <QString>

using namespace kelvane;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    const auto seconds = parseDuration(text);
    if (!seconds)
        return 0;
    FUZZ_CHECK(*seconds >= 0 && *seconds <= 7 * 24 * 3600);
    FUZZ_CHECK(parseDuration(QString::number(*seconds)) == seconds);
    FUZZ_CHECK(parseDuration(QStringLiteral("%1s").arg(*seconds)) == seconds);
    return 0;
}
