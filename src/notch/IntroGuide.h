#pragma once

#include "core/Scheduler.h"
#include "settings/Keys.h"
#include "settings/SettingValue.h"

#include <QObject>
#include <QString>

namespace kelvane {

class SettingsStore;

// The introduction shown in the notch itself while the `intro` setting is on: a few short steps,
// each on screen for a while or until clicked on, that end by turning the setting off. Turning
// it on again (a reset of the settings does) starts it over.
class IntroGuide : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool active READ isActive NOTIFY changed)
    Q_PROPERTY(int step READ step NOTIFY changed)
    Q_PROPERTY(int stepCount READ stepCount CONSTANT)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString detail READ detail NOTIFY changed)
    Q_PROPERTY(QString symbol READ symbol NOTIFY changed)
public:
    // How long a step stays before the next one comes.
    static constexpr std::chrono::milliseconds stepDuration{6000};

    IntroGuide(SettingsStore& settings, Scheduler& scheduler, QObject* parent = nullptr);

    bool isActive() const { return m_active; }
    int step() const { return m_step; }
    static int stepCount();
    QString title() const;
    QString detail() const;
    QString symbol() const;

    // On to the next step; after the last, the introduction ends.
    Q_INVOKABLE void next();
    // Ends it now.
    Q_INVOKABLE void finish();

Q_SIGNALS:
    void changed();

private:
    void follow(bool intro);
    void show(int step);

    SettingsStore& m_settings;
    Scheduler& m_scheduler;
    SettingValue<bool> m_intro;
    bool m_active = false;
    int m_step = 0;
    ScheduledTask m_advance;
};

} // namespace kelvane
