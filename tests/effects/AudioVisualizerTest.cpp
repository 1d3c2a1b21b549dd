#include "effects/AudioVisualizer.h"

#include "core/Log.h"
#include "settings/Keys.h"

#include <QCoreApplication>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace kelvane;

namespace {
// Records whether it is reading; the test feeds its blocks as the sound library's thread would.
struct FakeCapture final : AudioCapture {
    std::function<void(std::span<const float>)> block;
    int starts = 0, stops = 0;
    void start(std::function<void(std::span<const float>)> b) override
    {
        block = std::move(b);
        ++starts;
    }
    void stop() override
    {
        block = nullptr;
        ++stops;
    }
    int sampleRate() const override { return 48000; }
    bool reading() const { return block != nullptr; }
    // A thirtieth of a second of a tone.
    void play(double frequency)
    {
        std::vector<float> samples(1600);
        for (size_t i = 0; i < samples.size(); ++i)
            samples[i] = float(0.5 * std::sin(2 * std::numbers::pi * frequency * double(phase++) / 48000));
        block(samples);
    }
    long phase = 0;
};

struct Fixture {
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    FakeCapture capture;
    AudioVisualizer visualizer{capture, settings};
    void setEffect(MediaLiveActivityEffectEnum effect)
    {
        auto record = settings.value(Keys::mediaLiveActivitySettings());
        record.effect = effect;
        settings.setValue(Keys::mediaLiveActivitySettings(), record);
    }
};
} // namespace

// The sound is read only while something plays, an effect that follows it is on screen, and that
// effect is not an animation; each viewer counts, and one that is destroyed no longer shows.
TEST(AudioVisualizer, ReadsTheSoundOnlyWhilePlayingAndShown)
{
    Fixture f;
    QObject top, widget;
    auto* gone = new QObject;
    const struct {
        const char* step;
        std::function<void()> act;
        bool reading;
    } steps[] = {
        {"shown, nothing plays", [&] { f.visualizer.setShown(true, &top); }, false},
        {"plays", [&] { f.visualizer.setPlaying(true); }, true},
        {"a second viewer", [&] { f.visualizer.setShown(true, &widget); }, true},
        {"the first hides", [&] { f.visualizer.setShown(false, &top); }, true},
        {"the second hides", [&] { f.visualizer.setShown(false, &widget); }, false},
        {"a viewer that goes away", [&] { f.visualizer.setShown(true, gone); }, true},
        {"it is destroyed", [&] { delete gone; }, false},
        {"shown again", [&] { f.visualizer.setShown(true, &top); }, true},
        {"an animation instead", [&] { f.setEffect(MediaLiveActivityEffectEnum::gif); }, false},
        {"a wave", [&] { f.setEffect(MediaLiveActivityEffectEnum::waves); }, true},
        {"paused", [&] { f.visualizer.setPlaying(false); }, false},
    };
    int changes = 0;
    for (const auto& s : steps) {
        const bool before = f.capture.reading();
        s.act();
        EXPECT_EQ(f.capture.reading(), s.reading) << s.step;
        EXPECT_EQ(f.visualizer.capturing(), s.reading) << s.step;
        changes += before != s.reading;
    }
    EXPECT_EQ(f.capture.starts + f.capture.stops, changes) << "started or stopped without need";
}

// Blocks become bars on the main thread, the newest only; once reading stops the bars lie still
// even if a block analysed just before arrives late.
TEST(AudioVisualizer, BarsFollowTheSoundAndLieStillWhenItStops)
{
    Fixture f;
    QObject view;
    f.visualizer.setShown(true, &view);
    f.visualizer.setPlaying(true);
    QSignalSpy changed(&f.visualizer, &AudioVisualizer::barsChanged);
    for (int i = 0; i < 5; ++i)
        f.capture.play(440);
    EXPECT_EQ(changed.count(), 0) << "bars set off the main thread's turn";
    QCoreApplication::processEvents();
    EXPECT_EQ(changed.count(), 1) << "one delivery for several blocks";
    const auto bars = f.visualizer.bars();
    const int peak = int(std::max_element(bars.begin(), bars.end()) - bars.begin());
    EXPECT_EQ(peak, 2) << "440 Hz lies in the third of six bands";
    EXPECT_GT(f.visualizer.level(), 0.0);

    auto block = f.capture.block;
    f.visualizer.setPlaying(false);
    block(std::vector<float>(1600, 0.5f));
    QCoreApplication::processEvents();
    for (qreal bar : f.visualizer.bars())
        EXPECT_EQ(bar, 0.0);
}

// A capture that cannot start is told in one line, once, and the bars lie still; the next play
// tries again.
TEST(AudioVisualizer, NoSoundServerIsToldOnceAndTheBarsLieStill)
{
    Fixture f;
    LogCapture log;
    QObject view;
    f.visualizer.setShown(true, &view);
    for (int attempt = 0; attempt < 2; ++attempt) {
        f.visualizer.setPlaying(true);
        f.capture.block = nullptr;
        f.capture.failed(QStringLiteral("There is no sound server to listen to (Connection refused)."));
        EXPECT_FALSE(f.visualizer.capturing());
        f.visualizer.setPlaying(false);
    }
    EXPECT_EQ(f.capture.starts, 2);
    EXPECT_EQ(
        log.lines(),
        QStringList{"[Effects] There is no sound server to listen to (Connection refused). The bars stay still."});
}
