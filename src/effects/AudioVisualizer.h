#pragma once

#include "AudioCapture.h"
#include "core/Viewers.h"
#include "settings/LiveActivityRecords.h"
#include "settings/SettingValue.h"

#include <QList>
#include <QObject>

#include <memory>

namespace kelvane {

// The bars beside the artwork: the spectrum of what really plays, about thirty times a second,
// only while something plays and an effect that moves with the sound is on screen. Reading the
// sound stops otherwise, and the bars lie still.
class AudioVisualizer : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<qreal> bars READ bars NOTIFY barsChanged)
    // The overall loudness, 0 to 1, for the effects that follow one level.
    Q_PROPERTY(qreal level READ level NOTIFY barsChanged)
    Q_PROPERTY(bool capturing READ capturing NOTIFY capturingChanged)
public:
    static constexpr int bandCount = 6;
    static constexpr int updatesPerSecond = 30;

    AudioVisualizer(AudioCapture& capture, SettingsStore& settings, QObject* parent = nullptr);
    ~AudioVisualizer() override;

    QList<qreal> bars() const { return m_bars; }
    qreal level() const { return m_level; }
    bool capturing() const { return m_capturing; }

    void setPlaying(bool playing);
    // Whether an effect that follows the sound is on screen; each one is its own viewer.
    Q_INVOKABLE void setShown(bool shown, QObject* viewer = nullptr);

Q_SIGNALS:
    void barsChanged();
    void capturingChanged();

private:
    struct Link;
    bool wanted() const;
    void update();
    void deliver();
    void setBars(const std::vector<float>& bars);

    AudioCapture& m_capture;
    SettingValue<MediaLiveActivitySettings> m_settings;
    Viewers m_viewers;
    std::shared_ptr<Link> m_link;
    bool m_playing = false;
    bool m_capturing = false;
    bool m_reported = false;
    QList<qreal> m_bars;
    qreal m_level = 0;
};

} // namespace kelvane
