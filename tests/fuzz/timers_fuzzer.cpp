// The saved timers ("tuckleTimerEntries") as a crash or a hand edit leaves them: whatever loads is
// a list of timers that make sense, it runs on for a while, and what it saves loads back the same.

#include "FuzzCheck.h"

#include "activities/ActiveLiveActivitiesManager.h"
#include "core/ManualScheduler.h"
#include "core/SoundPlayer.h"
#include "core/TimersManager.h"
#include "timers/TuckleTimersStore.h"

#include <fuzzer/FuzzedDataProvider.h>

using namespace kelvane;
using namespace std::chrono_literals;

namespace {
struct Loaded {
    QUuid id;
    QString label;
    qint64 total;
    qint64 remaining;
    TimerEntry::State state;
    bool operator==(const Loaded&) const = default;
};

std::vector<Loaded> timersOf(const TuckleTimersStore& store)
{
    std::vector<Loaded> timers;
    for (const TimerEntry* t : store.timers())
        timers.push_back({t->id(), t->label(), t->totalSeconds(), t->remainingSeconds(), t->state()});
    return timers;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    const auto later = std::chrono::milliseconds(input.ConsumeIntegralInRange(0, 5000));
    const std::string saved = input.ConsumeRemainingBytesAsString();

    ManualScheduler scheduler;
    TimersManager keyed(scheduler);
    InMemorySettingsDomain domain;
    // The announcements' settings are read, never written: one for every input.
    static InMemorySettingsDomain settingsDomain;
    static SettingsStore settings(settingsDomain);
    ActiveLiveActivitiesManager activities(settings);
    SilentSoundPlayer sound;
    const TuckleTimersStore::Dependencies dependencies{scheduler, keyed, domain, activities, sound};
    domain.setValue(QString::fromLatin1(TuckleTimersStore::storageKey), QByteArray(saved.data(), qsizetype(saved.size())));

    auto store = std::make_unique<TuckleTimersStore>(dependencies);
    const auto check = [&] {
        for (const TimerEntry* t : store->timers()) {
            FUZZ_CHECK(t->totalSeconds() >= 0 && t->remainingSeconds() >= 0);
            FUZZ_CHECK(t->state() != TimerEntry::State::running || t->expiresAt());
            FUZZ_CHECK(t->state() != TimerEntry::State::expired || t->remainingSeconds() == 0);
        }
    };
    check();
    scheduler.advance(later);
    check();

    // A change saves the list; the next start reads it as it was.
    TimerEntry* added = store->add(QStringLiteral("fuzz"), 1);
    store->cancel(added);
    const std::vector<Loaded> before = timersOf(*store);
    store.reset();
    store = std::make_unique<TuckleTimersStore>(dependencies);
    FUZZ_CHECK(timersOf(*store) == before);
    return 0;
}
