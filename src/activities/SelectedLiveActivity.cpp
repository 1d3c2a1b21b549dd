#include "SelectedLiveActivity.h"

#include "ActiveLiveActivitiesManager.h"
#include "LiveActivityInfo.h"

#include <QJsonArray>

namespace kelvane {

namespace {
QJsonArray names(const std::set<LiveActivity>& activities)
{
    QJsonArray list;
    for (LiveActivity activity : activities)
        list.append(json::rawValue(activity));
    return list;
}
} // namespace

SelectedLiveActivity::SelectedLiveActivity(ActiveLiveActivitiesManager& activities,
                                           const LiveActivitySelectionManager& selection, SettingsStore& settings,
                                           QObject* parent)
    : QObject(parent)
    , m_activities(activities)
    , m_selection(selection)
    , m_calendarSettings(settings, Keys::calendarLiveActivitySettings(), this,
                         [this](const CalendarLiveActivitySettings&) { refresh(); })
{
    connect(&m_activities, &ActiveLiveActivitiesManager::activeLiveActivitiesChanged, this,
            &SelectedLiveActivity::refresh);
    refresh();
}

void SelectedLiveActivity::setBatteryStatusSource(BatteryStatusSource source)
{
    m_batteryStatus = std::move(source);
    refresh();
}

void SelectedLiveActivity::refresh()
{
    const auto battery = m_batteryStatus ? m_batteryStatus() : std::nullopt;
    const auto shown = m_activities.activeLiveActivities();
    const auto selected = m_selection.selectActivity(shown, battery, m_calendarSettings.get());
    auto shownInFullScreen = shown;
    for (LiveActivity activity : m_activities.liveActivitiesSettingsCache().liveActivitiesHiddenInFullscreen)
        shownInFullScreen.erase(activity);
    const auto fullScreenSelected = m_selection.selectActivity(shownInFullScreen, battery, m_calendarSettings.get());
    const bool hidden = m_activities.liveActivitiesSettingsCache().hiddenInNonNotchedScreens;
    if (selected == m_selected && fullScreenSelected == m_fullScreenSelected && hidden == m_hiddenInNonNotchedScreens)
        return;
    m_selected = selected;
    m_fullScreenSelected = fullScreenSelected;
    m_hiddenInNonNotchedScreens = hidden;
    Q_EMIT selectedChanged();
}

QString SelectedLiveActivity::name() const { return m_selected ? json::rawValue(*m_selected) : QString(); }
QString SelectedLiveActivity::fullScreenName() const
{
    return m_fullScreenSelected ? json::rawValue(*m_fullScreenSelected) : QString();
}
QString SelectedLiveActivity::displayName() const { return m_selected ? kelvane::displayName(*m_selected) : QString(); }
QString SelectedLiveActivity::iconName() const { return m_selected ? kelvane::iconName(*m_selected) : QString(); }

QJsonObject SelectedLiveActivity::state() const
{
    return {{QStringLiteral("raised"), names(m_activities.rawActiveLiveActivities())},
            {QStringLiteral("shown"), names(m_activities.activeLiveActivities())},
            {QStringLiteral("selected"), m_selected ? QJsonValue(name()) : QJsonValue(QJsonValue::Null)},
            {QStringLiteral("selectedInFullScreen"),
             m_fullScreenSelected ? QJsonValue(fullScreenName()) : QJsonValue(QJsonValue::Null)}};
}

} // namespace kelvane
