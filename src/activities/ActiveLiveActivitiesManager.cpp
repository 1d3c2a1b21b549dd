#include "ActiveLiveActivitiesManager.h"

#include "core/HandOff.h"
#include "core/MainThread.h"

namespace kelvane {

namespace {
ActiveLiveActivitiesManager* s_shared = nullptr;
}

ActiveLiveActivitiesManager::ActiveLiveActivitiesManager(SettingsStore& settings, QObject* parent)
    : QObject(parent)
    , m_liveActivitiesSettingsCache(settings, Keys::liveActivitiesSettings(), this,
                                    [this](const LiveActivitiesSettings&) { Q_EMIT activeLiveActivitiesChanged(); })
    , m_generalSettingsCache(settings, Keys::generalSettings(), this)
{
}

ActiveLiveActivitiesManager::Set ActiveLiveActivitiesManager::activeLiveActivities() const
{
    const LiveActivitiesSettings& settings = m_liveActivitiesSettingsCache.get();
    Set shown;
    for (LiveActivity activity : m_activeLiveActivities) {
        const bool alwaysShown = activity == LiveActivity::timerExpired;
        const bool enabled = settings.enabledLiveActivities.count(activity) > 0;
        if (alwaysShown || (enabled && settings.enabled))
            shown.insert(activity);
    }
    return shown;
}

void ActiveLiveActivitiesManager::setActiveLiveActivities(const Set& activities)
{
    if (!isMainThread()) {
        QMetaObject::invokeMethod(this, Handed([this, activities] { setActiveLiveActivities(activities); }),
                                  Qt::QueuedConnection);
        return;
    }
    if (activities == m_activeLiveActivities)
        return;
    m_activeLiveActivities = activities;
    Q_EMIT activeLiveActivitiesChanged();
}

QStringList ActiveLiveActivitiesManager::activeNames() const
{
    QStringList names;
    for (LiveActivity activity : activeLiveActivities())
        names << json::rawValue(activity);
    return names;
}

bool ActiveLiveActivitiesManager::insertSync(LiveActivity activity)
{
    assertMainThread();
    if (!m_activeLiveActivities.insert(activity).second)
        return false;
    Q_EMIT activeLiveActivitiesChanged();
    return true;
}

std::optional<LiveActivity> ActiveLiveActivitiesManager::removeSync(LiveActivity activity)
{
    assertMainThread();
    if (m_activeLiveActivities.erase(activity) == 0)
        return std::nullopt;
    Q_EMIT activeLiveActivitiesChanged();
    return activity;
}

ActiveLiveActivitiesManager& ActiveLiveActivitiesManager::shared()
{
    Q_ASSERT(s_shared);
    return *s_shared;
}

void ActiveLiveActivitiesManager::setShared(ActiveLiveActivitiesManager* instance) { s_shared = instance; }

} // namespace kelvane
