#pragma once

#include "Indicator.h"
#include "QuickPeek.h"

#include "core/Scheduler.h"
#include "core/Spring.h"
#include "settings/SettingValue.h"

#include <QList>
#include <QObject>

#include <functional>
#include <optional>

namespace kelvane {

// The state of one notch: which face it shows, whether it is hidden or locked, the level indicator
// and quick peek it shows. Every view of the notch's window reads it; main thread only.
class KelvaneState : public QObject {
    Q_OBJECT
    Q_PROPERTY(Mode mode READ mode NOTIFY modeChanged)
    Q_PROPERTY(QString modeName READ modeName NOTIFY modeChanged)
    Q_PROPERTY(bool hidden READ hidden NOTIFY hiddenChanged)
    Q_PROPERTY(bool locked READ locked WRITE setLocked NOTIFY lockedChanged)
    Q_PROPERTY(bool hasIndicator READ hasIndicator NOTIFY indicatorChanged)
    Q_PROPERTY(kelvane::Indicator indicatorValue READ indicatorValue NOTIFY indicatorChanged)
    Q_PROPERTY(bool hasQuickPeek READ hasQuickPeek NOTIFY quickPeekChanged)
    // The first peek's lines, for the views.
    Q_PROPERTY(QString quickPeekTitle READ quickPeekTitle NOTIFY quickPeekChanged)
    Q_PROPERTY(QString quickPeekDetail READ quickPeekDetail NOTIFY quickPeekChanged)
    Q_PROPERTY(kelvane::Spring transition READ transition NOTIFY transitionChanged)
public:
    enum class Mode { closed, tuckle, tray, dragging };
    Q_ENUM(Mode)

    static QString rawValue(Mode mode);
    static std::optional<Mode> fromRawValue(QStringView raw);

    KelvaneState(Scheduler& scheduler, SettingsStore& settings, QObject* parent = nullptr);

    Mode mode() const { return m_mode; }
    QString modeName() const { return rawValue(m_mode); }
    // Assigns the face, animated with the given spring; nothing happens when it is already shown.
    void setMode(Mode mode, const Spring& spring);
    // Switches the open panel's tab. Only the two tabs are accepted.
    Q_INVOKABLE void select(kelvane::KelvaneState::Mode mode);
    // The same, by the mode's raw value ("tuckle", "tray"); unknown names are ignored.
    Q_INVOKABLE void selectNamed(const QString& mode);

    // The tab the panel opens on, as stored: the tray when "tray" is stored, otherwise the widgets.
    Mode preferredOpenMode() const;
    void setPreferredOpenMode(Mode mode);

    bool hidden() const { return m_hidden; }
    // Hiding starts the automatic un-hide when the user wants it: the notch comes back ten seconds
    // after the last hide.
    void setHidden(bool hidden, const Spring& spring);
    void setHidden(bool hidden) { setHidden(hidden, m_transition); }

    bool locked() const { return m_locked; }
    void setLocked(bool locked);

    const std::optional<Indicator>& indicator() const { return m_indicator; }
    bool hasIndicator() const { return m_indicator.has_value(); }
    Indicator indicatorValue() const { return m_indicator.value_or(Indicator{}); }
    // A different indicator is shown for one second from now; an equal one changes nothing.
    void setIndicator(const std::optional<Indicator>& indicator);
    // The indicator stays one more second from now (the same key was pressed again).
    void restartIndicatorTimer();

    const std::optional<QList<QuickPeek>>& quickPeek() const { return m_quickPeek; }
    bool hasQuickPeek() const { return m_quickPeek.has_value(); }
    QString quickPeekTitle() const
    {
        return hasQuickPeek() && !m_quickPeek->isEmpty() ? m_quickPeek->first().title : QString();
    }
    QString quickPeekDetail() const
    {
        return hasQuickPeek() && !m_quickPeek->isEmpty() ? m_quickPeek->first().detail : QString();
    }
    void setQuickPeek(const std::optional<QList<QuickPeek>>& peek);

    // Called just before select() changes the tab.
    void setWillSelectTab(std::function<void()> callback) { m_willSelectTab = std::move(callback); }

    // The spring of the latest animated change; the views animate with it.
    Spring transition() const { return m_transition; }

    // Before a window rebuild: timers stopped, indicator and peek gone, unlocked and closed.
    void cleanup();

Q_SIGNALS:
    void modeChanged();
    void hiddenChanged();
    void lockedChanged();
    void indicatorChanged();
    void quickPeekChanged();
    void transitionChanged();

private:
    void setTransition(const Spring& spring);

    Scheduler& m_scheduler;
    SettingsStore& m_settings;
    SettingValue<LiveActivitiesSettings> m_liveActivities;

    bool m_hidden = false;
    ScheduledTask m_hiddenTimer;
    std::optional<Indicator> m_indicator;
    ScheduledTask m_indicatorTimer;
    bool m_locked = false;
    std::optional<QList<QuickPeek>> m_quickPeek;
    Mode m_mode = Mode::closed;
    std::function<void()> m_willSelectTab;
    Spring m_transition = Springs::animation;
};

} // namespace kelvane
