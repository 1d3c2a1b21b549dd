#include "effects/GifPlacement.h"
#include "effects/Palette.h"
#include "effects/PerlinNoise.h"
#include "effects/FrequencyBands.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace kelvane;

// The same seed gives the same field, another seed another one; whole-numbered points are zero;
// neighbouring points differ by little (no jumps, also across cell borders); values stay in -1..1.
TEST(PerlinNoise, IsRepeatableSmoothAndBounded)
{
    const PerlinNoise a(42), b(42), c(43);
    int differing = 0;
    for (int i = 0; i < 200; ++i) {
        const double x = i * 0.37, y = i * 0.11, z = i * 0.05;
        EXPECT_EQ(a.at(x, y, z), b.at(x, y, z));
        differing += a.at(x, y, z) != c.at(x, y, z);
        EXPECT_DOUBLE_EQ(a.at(i, 2 * i, 3), 0.0);
    }
    EXPECT_GT(differing, 150);

    double largestStep = 0, largest = 0;
    constexpr double step = 1e-3;
    for (double x = -3; x < 3; x += step) {
        largestStep = std::max(largestStep, std::abs(a.at(x + step, 0.3, 0.7) - a.at(x, 0.3, 0.7)));
        largest = std::max(largest, std::abs(a.fractal(x, 0.3, 0.7, 3)));
    }
    // The gradient of improved noise is bounded by a few units per unit of distance.
    EXPECT_LT(largestStep, 5 * step);
    EXPECT_LE(largest, 1.0);
    EXPECT_GT(largest, 0.1) << "a field that is flat everywhere";
    EXPECT_EQ(a.at(std::nan(""), 0, 0), 0.0);
}

namespace {
QImage picture(std::initializer_list<std::pair<QColor, double>> parts)
{
    QImage image(100, 100, QImage::Format_RGB32);
    QPainter painter(&image);
    double top = 0;
    for (const auto& [colour, share] : parts) {
        painter.fillRect(QRectF(0, top * 100, 100, share * 100), colour);
        top += share;
    }
    return image;
}
} // namespace

// The accent is the picture's main colourful hue, light enough to read on black; a picture with no
// colour gives a light grey rather than an invented hue or black.
TEST(Palette, AccentIsTheMainHueMadeLegibleOnBlack)
{
    const struct {
        const char* name;
        QImage image;
        double hue; // -1: no hue (grey)
    } cases[] = {
        {"mostly red", picture({{QColor(200, 20, 30), 0.7}, {QColor(20, 20, 200), 0.3}}), 0.0},
        {"dark green", picture({{QColor(0, 60, 0), 1.0}}), 1.0 / 3},
        {"blue on white", picture({{Qt::white, 0.6}, {QColor(30, 60, 220), 0.4}}), 0.63},
        {"black and white", picture({{Qt::black, 0.5}, {Qt::white, 0.5}}), -1},
        {"black", picture({{Qt::black, 1.0}}), -1},
        {"nothing", QImage(), -1},
    };
    for (const auto& c : cases) {
        const QColor accent = Palette::accent(c.image);
        float h, s, l, a;
        accent.getHslF(&h, &s, &l, &a);
        EXPECT_GE(l, 0.54f) << c.name;
        if (c.hue < 0) {
            EXPECT_LT(s, 0.05f) << c.name;
        } else {
            EXPECT_GT(s, 0.5f) << c.name;
            EXPECT_NEAR(std::min(std::abs(h - c.hue), 1 - std::abs(h - c.hue)), 0.0, 0.04) << c.name;
        }
    }
    const auto colours = Palette::dominant(picture({{Qt::red, 0.6}, {Qt::blue, 0.3}, {Qt::red, 0.1}}), 3);
    ASSERT_EQ(colours.size(), 2);
    EXPECT_EQ(colours[0], QColor(Qt::red));
    EXPECT_EQ(colours[1], QColor(Qt::blue));
}

// An animation is fitted whole into its box and centred, then scaled about the centre and moved;
// a positive vertical offset moves it up; nonsense scales count as 1.
TEST(GifPlacement, FitsScalesAndOffsets)
{
    const struct {
        QSizeF box, frame;
        double scale, dx, dy;
        QRectF expected;
    } cases[] = {
        {{40, 20}, {10, 10}, 1, 0, 0, {10, 0, 20, 20}},
        {{40, 20}, {100, 10}, 1, 0, 0, {0, 8, 40, 4}},
        {{40, 20}, {10, 10}, 0.5, 0, 0, {15, 5, 10, 10}},
        {{40, 20}, {10, 10}, 2, 0, 0, {0, -10, 40, 40}},
        {{40, 20}, {10, 10}, 1, 3, 4, {13, -4, 20, 20}},
        {{40, 20}, {10, 10}, -1, 0, 0, {10, 0, 20, 20}},
        {{40, 20}, {10, 10}, std::nan(""), std::nan(""), INFINITY, {10, 0, 20, 20}},
        {{40, 20}, {0, 0}, 1, 0, 0, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(placeGif(c.box, c.frame, c.scale, c.dx, c.dy), c.expected) << c.frame.width() << " " << c.scale;
    EXPECT_FALSE(smoothGif(GIFScalingQuality::pixelPerfect));
    EXPECT_TRUE(smoothGif(GIFScalingQuality::interpolated));
}

namespace {
std::vector<float> tone(double frequency, double amplitude, int rate = 48000, int count = 4096)
{
    std::vector<float> samples(count);
    for (int i = 0; i < count; ++i)
        samples[i] = float(amplitude * std::sin(2 * std::numbers::pi * frequency * i / rate));
    return samples;
}
} // namespace

// A pure tone lights its own band most; a quieter one lights it less; silence lights nothing; a
// short block is padded rather than read past its end.
TEST(FrequencyBands, APureToneLightsItsOwnBand)
{
    FrequencyBands analyzer(48000, 6);
    for (double frequency : {80.0, 440.0, 1000.0, 5000.0, 11000.0}) {
        const auto bars = analyzer.analyze(tone(frequency, 0.5));
        const int peak = int(std::max_element(bars.begin(), bars.end()) - bars.begin());
        EXPECT_EQ(peak, analyzer.bandOf(frequency)) << frequency;
        EXPECT_GT(bars[peak], 0.8f) << frequency;
    }
    const float loud = analyzer.analyze(tone(440, 0.5))[analyzer.bandOf(440)];
    const float quiet = analyzer.analyze(tone(440, 0.01))[analyzer.bandOf(440)];
    EXPECT_LT(quiet, loud - 0.2f);
    for (float bar : analyzer.analyze(std::vector<float>(4096, 0.0f)))
        EXPECT_EQ(bar, 0.0f);
    EXPECT_EQ(analyzer.analyze(tone(440, 0.5, 48000, 100)).size(), 6u);
    EXPECT_EQ(analyzer.bandOf(10), -1);
}

// Bars jump up at once and fall back a share at a time, down to nothing.
TEST(BarSmoother, RisesAtOnceAndFallsSlowly)
{
    BarSmoother smoother;
    EXPECT_EQ(smoother.next({1.0f, 0.2f}), (std::vector<float>{1.0f, 0.2f}));
    EXPECT_EQ(smoother.next({0.0f, 0.5f}), (std::vector<float>{BarSmoother::fall, 0.5f}));
    std::vector<float> bars;
    for (int i = 0; i < 40; ++i)
        bars = smoother.next({0.0f, std::nanf("")});
    EXPECT_EQ(bars, (std::vector<float>{0.0f, 0.0f}));
}
