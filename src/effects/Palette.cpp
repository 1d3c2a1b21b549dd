#include "Palette.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvane {

namespace {
// Pictures are judged from a small copy: the colours that count are the large areas. Picked, not
// blended, when the colours themselves are counted: blending makes new ones along every edge.
QImage sample(const QImage& picture, Qt::TransformationMode mode = Qt::SmoothTransformation)
{
    if (picture.isNull())
        return {};
    return picture.scaled(48, 48, Qt::IgnoreAspectRatio, mode).convertToFormat(QImage::Format_ARGB32);
}

// Hues in 24 sectors, each with its weight and its colours' sum.
struct Bucket {
    double weight = 0;
    double r = 0, g = 0, b = 0;
    QColor mean() const
    {
        return weight > 0 ? QColor::fromRgbF(float(r / weight), float(g / weight), float(b / weight)) : QColor();
    }
};
constexpr int hueSectors = 24;

// Black has the notch's own colour: an accent must stand out from it.
QColor legible(QColor colour)
{
    float h, s, l, a;
    colour.getHslF(&h, &s, &l, &a);
    return QColor::fromHslF(h < 0 ? 0 : h, std::min(s, 0.85f), std::clamp(l, 0.55f, 0.8f));
}
} // namespace

QColor Palette::accent(const QImage& picture)
{
    const QImage small = sample(picture);
    if (small.isNull())
        return QColor(Qt::white);
    std::array<Bucket, hueSectors> buckets{};
    double colourful = 0, all = 0;
    for (int y = 0; y < small.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(small.constScanLine(y));
        for (int x = 0; x < small.width(); ++x) {
            const QColor c = QColor::fromRgba(line[x]);
            const double alpha = c.alphaF();
            all += alpha;
            float h, s, v, a;
            c.getHsvF(&h, &s, &v, &a);
            // Greys and near-black count for nothing; a vivid, bright pixel counts most.
            const double weight = alpha * s * s * v;
            if (h < 0 || weight < 0.02)
                continue;
            colourful += alpha;
            auto& bucket = buckets[std::min(hueSectors - 1, int(h * hueSectors))];
            bucket.weight += weight;
            bucket.r += weight * c.redF();
            bucket.g += weight * c.greenF();
            bucket.b += weight * c.blueF();
        }
    }
    // Hardly any colour: a grey that reads on black.
    if (all <= 0 || colourful / all < 0.05)
        return QColor::fromHslF(0, 0, 0.75f);
    const auto best = std::max_element(buckets.begin(), buckets.end(),
                                       [](const Bucket& a, const Bucket& b) { return a.weight < b.weight; });
    return legible(best->mean());
}

QList<QColor> Palette::dominant(const QImage& picture, int count)
{
    const QImage small = sample(picture, Qt::FastTransformation);
    QList<QColor> colours;
    if (small.isNull() || count <= 0)
        return colours;
    // Colours quantised to 4 bits a channel; neighbours within a distance are one colour.
    std::array<Bucket, 4096> cells{};
    for (int y = 0; y < small.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(small.constScanLine(y));
        for (int x = 0; x < small.width(); ++x) {
            const QRgb p = line[x];
            const double w = qAlpha(p) / 255.0;
            auto& cell = cells[(qRed(p) >> 4) << 8 | (qGreen(p) >> 4) << 4 | qBlue(p) >> 4];
            cell.weight += w;
            cell.r += w * qRed(p) / 255.0;
            cell.g += w * qGreen(p) / 255.0;
            cell.b += w * qBlue(p) / 255.0;
        }
    }
    // A colour on a few pixels (an edge between two others) is not one of the picture's colours.
    const double least = 0.03 * small.width() * small.height();
    std::vector<const Bucket*> order;
    for (const auto& cell : cells)
        if (cell.weight >= least)
            order.push_back(&cell);
    std::sort(order.begin(), order.end(), [](const Bucket* a, const Bucket* b) { return a->weight > b->weight; });
    for (const Bucket* cell : order) {
        const QColor c = cell->mean();
        const bool distinct = std::all_of(colours.begin(), colours.end(), [&](const QColor& o) {
            return std::hypot(c.redF() - o.redF(), c.greenF() - o.greenF(), c.blueF() - o.blueF()) > 0.25;
        });
        if (distinct)
            colours.append(c);
        if (colours.size() == count)
            break;
    }
    return colours;
}

} // namespace kelvane
