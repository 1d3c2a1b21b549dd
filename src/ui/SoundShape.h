#pragma once

#include "effects/AudioVisualizer.h"
#include "effects/PerlinNoise.h"

#include <QColor>
#include <QElapsedTimer>
#include <QPointer>
#include <QQuickPaintedItem>
#include <QRectF>

#include <vector>

namespace kelvane {

// A shape that moves with the sound: the spectrum's bars ("audioSpectrograph"), a wave line across
// the item ("waves") or a ring whose rim noise pushes out and in ("vibratingCircle"). It is drawn again only when the
// sound changes what it shows, so it stands still when nothing plays and costs nothing then; drawn with a painter, it
// looks the same under every scene renderer.
class SoundShape : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QString kind READ kind WRITE setKind NOTIFY changed)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY changed)
    // The overall loudness, 0 to 1.
    Q_PROPERTY(qreal level READ level WRITE setLevel NOTIFY changed)
    // The bands' loudness, low to high: the wave's detail.
    Q_PROPERTY(QList<qreal> bars READ bars WRITE setBars NOTIFY changed)
    // Where the bars and the level come from while the sound is heard: read here at each update,
    // without a trip through the script engine thirty times a second.
    Q_PROPERTY(kelvane::AudioVisualizer* visualizer READ visualizer WRITE setVisualizer NOTIFY visualizerChanged)
public:
    explicit SoundShape(QQuickItem* parent = nullptr);

    QString kind() const { return m_kind; }
    void setKind(const QString& kind);
    QColor color() const { return m_color; }
    void setColor(const QColor& color);
    qreal level() const { return m_level; }
    void setLevel(qreal level);
    QList<qreal> bars() const { return m_bars; }
    void setBars(const QList<qreal>& bars);
    AudioVisualizer* visualizer() const { return m_visualizer; }
    void setVisualizer(AudioVisualizer* visualizer);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void changed();
    void visualizerChanged();

private:
    // Seconds since the item was made: where the noise is read.
    double now() const { return m_clock.elapsed() / 1000.0; }
    void paintWave(QPainter* painter, double time);
    void paintCircle(QPainter* painter, double time);
    void paintBars(QPainter* painter);
    // Where each bar is drawn, its height to the half device pixel.
    std::vector<QRectF> barRects(const QList<qreal>& bars) const;

    QString m_kind = QStringLiteral("waves");
    QColor m_color = Qt::white;
    qreal m_level = 0;
    QList<qreal> m_bars;
    QPointer<AudioVisualizer> m_visualizer;
    QMetaObject::Connection m_following;
    PerlinNoise m_noise{7};
    QElapsedTimer m_clock;
};

} // namespace kelvane
