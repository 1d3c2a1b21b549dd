#include "HapticFeedback.h"

#include "core/Log.h"

namespace kelvane {

void NullHapticFeedback::levelChange()
{
    if (m_reported)
        return;
    m_reported = true;
    logLine(u"HapticFeedback", QStringLiteral("Haptic feedback is not available here."));
}

} // namespace kelvane
