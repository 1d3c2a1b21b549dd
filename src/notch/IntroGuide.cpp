#include "IntroGuide.h"

#include "settings/SettingsStore.h"

#include <array>

namespace kelvane {

namespace {
struct Step {
    const char* symbol;
    const char* title;
    const char* detail;
};

constexpr std::array steps{
    Step{"☝", "Welcome to Kelvane", "Rest the pointer on the notch, click it, or swipe down on it to open it."},
    Step{"⇩", "Keep files here", "Drop files on the notch: they wait in the tray until you drag them out."},
    Step{"♪", "Always in view", "What plays, your next meeting and your battery show beside the camera."},
    Step{"🔊", "Your keys, here", "Volume and brightness levels show in the notch when you press their keys."},
    Step{"⚙", "Make it yours", "Right-click the notch for Settings, or run kelvanectl show-settings."},
};
} // namespace

IntroGuide::IntroGuide(SettingsStore& settings, Scheduler& scheduler, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_scheduler(scheduler)
    , m_intro(settings, Keys::intro(), this, [this](bool intro) { follow(intro); })
{
    follow(m_intro.get());
}

int IntroGuide::stepCount() { return static_cast<int>(steps.size()); }

QString IntroGuide::title() const { return m_active ? QString::fromUtf8(steps[m_step].title) : QString(); }

QString IntroGuide::detail() const { return m_active ? QString::fromUtf8(steps[m_step].detail) : QString(); }

QString IntroGuide::symbol() const { return m_active ? QString::fromUtf8(steps[m_step].symbol) : QString(); }

void IntroGuide::follow(bool intro)
{
    if (intro == m_active)
        return;
    if (intro) {
        m_active = true;
        show(0);
        return;
    }
    m_active = false;
    m_advance.cancel();
    Q_EMIT changed();
}

void IntroGuide::show(int step)
{
    m_step = step;
    m_advance = m_scheduler.schedule(stepDuration, [this] { next(); });
    Q_EMIT changed();
}

void IntroGuide::next()
{
    if (!m_active)
        return;
    if (m_step + 1 < stepCount())
        show(m_step + 1);
    else
        finish();
}

void IntroGuide::finish()
{
    // Turning the setting off is what ends it, here and on every notch.
    m_settings.setValue(Keys::intro(), false);
}

} // namespace kelvane
