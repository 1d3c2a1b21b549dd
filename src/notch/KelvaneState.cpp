#include "KelvaneState.h"

#include "core/MainThread.h"

namespace kelvane {

using namespace std::chrono_literals;

namespace {
constexpr auto unhideDelay = 10s;
constexpr auto indicatorLifetime = 1s;
} // namespace

QString KelvaneState::rawValue(Mode mode)
{
    switch (mode) {
    case Mode::closed:
        return QStringLiteral("closed");
    case Mode::tuckle:
        return QStringLiteral("tuckle");
    case Mode::tray:
        return QStringLiteral("tray");
    case Mode::dragging:
        return QStringLiteral("dragging");
    }
    return {};
}

std::optional<KelvaneState::Mode> KelvaneState::fromRawValue(QStringView raw)
{
    for (Mode mode : {Mode::closed, Mode::tuckle, Mode::tray, Mode::dragging})
        if (raw == rawValue(mode))
            return mode;
    return std::nullopt;
}

KelvaneState::KelvaneState(Scheduler& scheduler, SettingsStore& settings, QObject* parent)
    : QObject(parent)
    , m_scheduler(scheduler)
    , m_settings(settings)
    , m_liveActivities(settings, Keys::liveActivitiesSettings(), this)
{
}

void KelvaneState::setTransition(const Spring& spring)
{
    if (m_transition == spring)
        return;
    m_transition = spring;
    Q_EMIT transitionChanged();
}

void KelvaneState::setMode(Mode mode, const Spring& spring)
{
    assertMainThread();
    if (m_mode == mode)
        return;
    setTransition(spring);
    m_mode = mode;
    Q_EMIT modeChanged();
}

void KelvaneState::select(Mode mode)
{
    assertMainThread();
    if (mode != Mode::tuckle && mode != Mode::tray)
        return;
    if (mode == m_mode)
        return;
    if (m_willSelectTab)
        m_willSelectTab();
    setPreferredOpenMode(mode);
    // The callback may itself have switched the tab.
    if (mode != m_mode)
        setMode(mode, m_transition);
}

void KelvaneState::selectNamed(const QString& mode)
{
    if (const auto parsed = fromRawValue(mode))
        select(*parsed);
}

KelvaneState::Mode KelvaneState::preferredOpenMode() const
{
    return m_settings.value(Keys::preferredOpenMode()) == rawValue(Mode::tray) ? Mode::tray : Mode::tuckle;
}

void KelvaneState::setPreferredOpenMode(Mode mode)
{
    if (mode != Mode::tuckle && mode != Mode::tray)
        return;
    m_settings.setValue(Keys::preferredOpenMode(), rawValue(mode));
}

void KelvaneState::setHidden(bool hidden, const Spring& spring)
{
    assertMainThread();
    setTransition(spring);
    if (hidden && m_liveActivities->unhideAutomatically) {
        m_hiddenTimer = m_scheduler.schedule(unhideDelay, [this] {
            if (m_hidden)
                setHidden(false, Springs::unhide);
        });
    } else if (!hidden) {
        m_hiddenTimer.cancel();
    }
    if (m_hidden == hidden)
        return;
    m_hidden = hidden;
    Q_EMIT hiddenChanged();
}

void KelvaneState::setLocked(bool locked)
{
    assertMainThread();
    if (m_locked == locked)
        return;
    m_locked = locked;
    Q_EMIT lockedChanged();
}

void KelvaneState::setIndicator(const std::optional<Indicator>& indicator)
{
    assertMainThread();
    if (m_indicator == indicator)
        return;
    m_indicator = indicator;
    if (m_indicator)
        restartIndicatorTimer();
    else
        m_indicatorTimer.cancel();
    Q_EMIT indicatorChanged();
}

void KelvaneState::restartIndicatorTimer()
{
    m_indicatorTimer = m_scheduler.schedule(indicatorLifetime, [this] {
        setTransition(Springs::indicatorResize);
        setIndicator(std::nullopt);
    });
}

void KelvaneState::setQuickPeek(const std::optional<QList<QuickPeek>>& peek)
{
    assertMainThread();
    if (m_quickPeek == peek)
        return;
    m_quickPeek = peek;
    Q_EMIT quickPeekChanged();
}

void KelvaneState::cleanup()
{
    m_hiddenTimer.cancel();
    m_indicatorTimer.cancel();
    setIndicator(std::nullopt);
    setQuickPeek(std::nullopt);
    setLocked(false);
    setMode(Mode::closed, m_transition);
}

} // namespace kelvane
