#include "AudioVisualizer.h"

#include "FrequencyBands.h"
#include "core/Log.h"

#include <QMetaObject>

#include <algorithm>
#include <mutex>
#include <numeric>

namespace kelvane {

// What the capture thread and the main thread share. The capture thread analyses and keeps only
// the newest bars; one delivery at a time is queued to the main thread, and none once the
// visualizer is going.
struct AudioVisualizer::Link {
    Link(int sampleRate)
        : analyzer(sampleRate, bandCount)
        , recent(analyzer.blockSize(), 0.0f)
        , hop(std::max(1, sampleRate / updatesPerSecond))
    {
    }

    std::mutex mutex;
    AudioVisualizer* owner = nullptr;
    FrequencyBands analyzer;
    BarSmoother smoother;
    std::vector<float> recent; // the last block of samples, oldest first
    int hop;
    int sinceLast = 0;
    std::vector<float> newest;
    bool queued = false;

    void take(std::span<const float> samples)
    {
        std::lock_guard lock(mutex);
        if (samples.size() >= recent.size()) {
            std::copy(samples.end() - recent.size(), samples.end(), recent.begin());
        } else {
            std::move(recent.begin() + samples.size(), recent.end(), recent.begin());
            std::copy(samples.begin(), samples.end(), recent.end() - samples.size());
        }
        sinceLast += int(samples.size());
        if (sinceLast < hop)
            return;
        sinceLast %= hop;
        newest = smoother.next(analyzer.analyze(recent));
        if (queued || !owner)
            return;
        queued = true;
        QMetaObject::invokeMethod(owner, &AudioVisualizer::deliver, Qt::QueuedConnection);
    }
};

AudioVisualizer::AudioVisualizer(AudioCapture& capture, SettingsStore& settings, QObject* parent)
    : QObject(parent)
    , m_capture(capture)
    , m_settings(settings, Keys::mediaLiveActivitySettings(), this, [this](const auto&) { update(); })
    , m_viewers([this](bool) { update(); })
    , m_link(std::make_shared<Link>(capture.sampleRate()))
{
    m_link->owner = this;
    m_bars.fill(0, bandCount);
    m_capture.failed = [this](const QString& reason) {
        if (!m_capturing)
            return;
        m_capturing = false;
        if (!m_reported)
            logLine(u"Effects", QStringLiteral("%1 The bars stay still.").arg(reason));
        m_reported = true;
        setBars({});
        Q_EMIT capturingChanged();
    };
}

AudioVisualizer::~AudioVisualizer()
{
    {
        std::lock_guard lock(m_link->mutex);
        m_link->owner = nullptr;
    }
    m_capture.failed = nullptr;
    if (m_capturing)
        m_capture.stop();
}

void AudioVisualizer::setPlaying(bool playing)
{
    if (m_playing == playing)
        return;
    m_playing = playing;
    update();
}

void AudioVisualizer::setShown(bool shown, QObject* viewer) { m_viewers.set(shown, viewer); }

bool AudioVisualizer::wanted() const
{
    return m_playing && m_viewers.any() && m_settings->effect != MediaLiveActivityEffectEnum::gif;
}

void AudioVisualizer::update()
{
    if (wanted() == m_capturing)
        return;
    m_capturing = wanted();
    if (m_capturing) {
        m_capture.start([link = m_link](std::span<const float> samples) { link->take(samples); });
    } else {
        m_capture.stop();
        std::lock_guard lock(m_link->mutex);
        m_link->smoother.reset();
        std::fill(m_link->recent.begin(), m_link->recent.end(), 0.0f);
        m_link->sinceLast = 0;
    }
    if (!m_capturing)
        setBars({});
    Q_EMIT capturingChanged();
}

void AudioVisualizer::deliver()
{
    std::vector<float> bars;
    {
        std::lock_guard lock(m_link->mutex);
        m_link->queued = false;
        bars = m_link->newest;
    }
    // A block analysed just before the capture stopped arrives late: the bars stay still.
    if (m_capturing)
        setBars(bars);
}

void AudioVisualizer::setBars(const std::vector<float>& bars)
{
    QList<qreal> next(bandCount, 0);
    for (int i = 0; i < bandCount && i < int(bars.size()); ++i)
        next[i] = bars[i];
    if (next == m_bars)
        return;
    m_bars = next;
    m_level = std::accumulate(m_bars.begin(), m_bars.end(), 0.0) / bandCount;
    Q_EMIT barsChanged();
}

} // namespace kelvane
