#include "SoundShape.h"

#include <QPainter>
#include <QPainterPath>
#include <QQuickWindow>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvane {

SoundShape::SoundShape(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    m_clock.start();
}

void SoundShape::setKind(const QString& kind)
{
    if (kind == m_kind)
        return;
    m_kind = kind;
    Q_EMIT changed();
    update();
}

void SoundShape::setColor(const QColor& color)
{
    if (color == m_color)
        return;
    m_color = color;
    Q_EMIT changed();
    update();
}

void SoundShape::setLevel(qreal level)
{
    level = std::isfinite(level) ? std::clamp(level, 0.0, 1.0) : 0.0;
    if (level == m_level)
        return;
    m_level = level;
    Q_EMIT changed();
    // Only the ring is drawn by the level.
    if (m_kind == QLatin1StringView("vibratingCircle"))
        update();
}

void SoundShape::setBars(const QList<qreal>& bars)
{
    if (bars == m_bars)
        return;
    // Bars that would be drawn to the same half pixel are not drawn again: steady music then
    // costs nothing on screen.
    const bool shows = m_kind != QLatin1StringView("audioSpectrograph") || barRects(bars) != barRects(m_bars);
    m_bars = bars;
    Q_EMIT changed();
    if (shows)
        update();
}

void SoundShape::setVisualizer(AudioVisualizer* visualizer)
{
    if (visualizer == m_visualizer)
        return;
    disconnect(m_following);
    m_visualizer = visualizer;
    if (visualizer) {
        const auto follow = [this] {
            setBars(m_visualizer->bars());
            setLevel(m_visualizer->level());
        };
        m_following = connect(visualizer, &AudioVisualizer::barsChanged, this, follow);
        follow();
    }
    Q_EMIT visualizerChanged();
}

void SoundShape::paint(QPainter* painter)
{
    painter->setRenderHint(QPainter::Antialiasing);
    if (m_kind == QLatin1StringView("vibratingCircle"))
        paintCircle(painter, now());
    else if (m_kind == QLatin1StringView("audioSpectrograph"))
        paintBars(painter);
    else
        paintWave(painter, now());
}

void SoundShape::paintWave(QPainter* painter, double time)
{
    const double w = width(), h = height();
    if (w < 2 || h < 2)
        return;
    const double mid = h / 2;
    const double low = m_bars.isEmpty() ? m_level : (m_bars.value(0) + m_bars.value(1)) / 2;
    const double high =
        m_bars.isEmpty() ? m_level : (m_bars.value(m_bars.size() - 1) + m_bars.value(m_bars.size() - 2)) / 2;
    const int steps = std::max(16, int(w));
    // Two crossing waves: a slow, wide one for the bass and a quick, small one for the treble,
    // each wandering with the noise so that no two moments look alike; faded at both ends.
    const auto yAt = [&](double x) {
        const double u = x / w;
        const double envelope = std::sin(std::numbers::pi * u);
        const double bass =
            std::sin(2 * std::numbers::pi * (1.3 * u + 0.6 * time)) * (0.6 + 0.4 * m_noise.at(3 * u, time * 0.8));
        const double treble =
            std::sin(2 * std::numbers::pi * (3.7 * u - 1.4 * time)) * m_noise.at(5 * u + 11, time * 1.7);
        return mid - envelope * (mid - 1.5) * (0.85 * low * bass + 0.6 * high * treble);
    };
    for (int pass = 0; pass < 2; ++pass) {
        // The second pass is the first's reflection at half its height.
        const auto at = [&](double x) { return pass == 0 ? yAt(x) : mid - 0.5 * (yAt(x) - mid); };
        QPainterPath path;
        path.moveTo(0, at(0));
        for (int i = 1; i <= steps; ++i)
            path.lineTo(w * i / steps, at(w * i / steps));
        QColor colour = m_color;
        colour.setAlphaF(pass == 0 ? 1.0f : 0.45f);
        painter->setPen(
            QPen(colour, pass == 0 ? std::max(1.5, h / 12) : std::max(1.0, h / 18), Qt::SolidLine, Qt::RoundCap));
        painter->drawPath(path);
    }
}

std::vector<QRectF> SoundShape::barRects(const QList<qreal>& bars) const
{
    const int count = std::max<int>(1, int(bars.size()));
    const double gap = std::max(1.0, width() / 20);
    const double barWidth = std::max(2.0, (width() - gap * (count - 1)) / count);
    const double step = 0.5 / std::max(1.0, window() ? window()->effectiveDevicePixelRatio() : 1.0);
    std::vector<QRectF> rects;
    for (int i = 0; i < count; ++i) {
        // A still bar is a dot; the loudest fills the height.
        const double level = std::isfinite(bars.value(i)) ? std::clamp(bars.value(i), 0.0, 1.0) : 0.0;
        const double h = std::round(std::max(barWidth, height() * level) / step) * step;
        rects.emplace_back(i * (barWidth + gap), (height() - h) / 2, barWidth, h);
    }
    return rects;
}

void SoundShape::paintBars(QPainter* painter)
{
    painter->setPen(Qt::NoPen);
    painter->setBrush(m_color);
    for (const QRectF& bar : barRects(m_bars))
        painter->drawRoundedRect(bar, bar.width() / 2, bar.width() / 2);
}

void SoundShape::paintCircle(QPainter* painter, double time)
{
    const double size = std::min(width(), height());
    if (size < 4)
        return;
    const QPointF centre(width() / 2, height() / 2);
    // At rest a calm ring; the louder, the more the noise pushes its rim.
    const double base = size * 0.3;
    const double push = size * 0.17 * (0.15 + 0.85 * m_level);
    QPainterPath rim;
    constexpr int points = 72;
    for (int i = 0; i <= points; ++i) {
        const double angle = 2 * std::numbers::pi * i / points;
        // The noise is read on a circle so that the rim closes on itself without a seam.
        const double n =
            m_noise.fractal(1.2 * std::cos(angle) + 4, 1.2 * std::sin(angle) + 4, time * (0.5 + 1.5 * m_level), 2);
        const double r = base + push * (0.5 + n);
        const QPointF p = centre + QPointF(r * std::cos(angle), r * std::sin(angle));
        if (i == 0)
            rim.moveTo(p);
        else
            rim.lineTo(p);
    }
    QColor glow = m_color;
    glow.setAlphaF(0.25f + 0.35f * float(m_level));
    painter->setPen(Qt::NoPen);
    painter->setBrush(glow);
    painter->drawPath(rim);
    painter->setPen(QPen(m_color, std::max(1.2, size / 14)));
    painter->setBrush(Qt::NoBrush);
    painter->drawPath(rim);
}

} // namespace kelvane
