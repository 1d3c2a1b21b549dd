#pragma once

#include "settings/SettingValue.h"

#include <QObject>
#include <QStringList>

#include <optional>
#include <set>

namespace kelvane {

// The activities the monitors have raised, and the part of them the user's settings let show:
// an ended timer always shows; anything else only when it is enabled and the master switch is on.
// Turning an activity off hides it without dropping it, so turning it on shows it again at once.
// Main thread only.
class ActiveLiveActivitiesManager : public QObject {
    Q_OBJECT
    // Raw values of the shown activities, for the views.
    Q_PROPERTY(QStringList activeNames READ activeNames NOTIFY activeLiveActivitiesChanged)
public:
    using Set = std::set<LiveActivity>;

    explicit ActiveLiveActivitiesManager(SettingsStore& settings, QObject* parent = nullptr);

    Set activeLiveActivities() const;
    // Replaces the raised set; from another thread the write is posted to the main thread.
    void setActiveLiveActivities(const Set& activities);
    const Set& rawActiveLiveActivities() const { return m_activeLiveActivities; }
    QStringList activeNames() const;

    // True when the activity was not raised yet.
    bool insertSync(LiveActivity activity);
    // The removed activity, if it was raised.
    std::optional<LiveActivity> removeSync(LiveActivity activity);

    const LiveActivitiesSettings& liveActivitiesSettingsCache() const { return m_liveActivitiesSettingsCache.get(); }
    const GeneralSettings& generalSettingsCache() const { return m_generalSettingsCache.get(); }

    static ActiveLiveActivitiesManager& shared();
    static void setShared(ActiveLiveActivitiesManager* instance);

Q_SIGNALS:
    void activeLiveActivitiesChanged();

private:
    Set m_activeLiveActivities;
    SettingValue<LiveActivitiesSettings> m_liveActivitiesSettingsCache;
    SettingValue<GeneralSettings> m_generalSettingsCache;
};

} // namespace kelvane
