#include "effects/GlassLook.h"

#include "settings/Keys.h"

#include <QPainter>

#include <gtest/gtest.h>

using namespace kelvane;

namespace {

// Red on the left half, blue on the right.
QImage halves(const QSize& size)
{
    QImage picture(size, QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.fillRect(0, 0, size.width() / 2, size.height(), Qt::red);
    painter.fillRect(size.width() / 2, 0, size.width() - size.width() / 2, size.height(), Qt::blue);
    return picture;
}

} // namespace

// The part of the picture under a window, as the desktop shows the picture: scaled to cover the
// screen, centred, on a screen that may not be the first.
TEST(GlassBackdrop, IsThePartOfTheCoveringPictureUnderTheWindow)
{
    struct Case {
        const char* name;
        QSize picture;
        QRect screen, area;
        double blur;
        QSize size;
        QColor left, right;  // at a quarter and three quarters of the way across, halfway down
    };
    const Case cases[] = {
        {"same shape, across the middle", {200, 100}, {0, 0, 1000, 500}, {400, 0, 200, 50}, 0, {200, 50}, Qt::red, Qt::blue},
        {"left of the middle", {200, 100}, {0, 0, 1000, 500}, {100, 0, 200, 50}, 0, {200, 50}, Qt::red, Qt::red},
        {"a second screen", {200, 100}, {1000, 0, 1000, 500}, {1600, 0, 200, 50}, 0, {200, 50}, Qt::blue, Qt::blue},
        // A square picture on a wide screen: its top and bottom are cut, not its sides.
        {"cropped top and bottom", {100, 100}, {0, 0, 200, 100}, {50, 0, 100, 40}, 0, {100, 40}, Qt::red, Qt::blue},
        {"frosted comes back smaller", {200, 100}, {0, 0, 1000, 500}, {400, 0, 200, 50}, 10, {40, 10}, Qt::red, Qt::blue},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const QImage backdrop = glassBackdrop(halves(c.picture), c.screen, c.area, c.blur);
        ASSERT_EQ(backdrop.size(), c.size);
        EXPECT_EQ(backdrop.pixelColor(backdrop.width() / 4, backdrop.height() / 2), c.left);
        EXPECT_EQ(backdrop.pixelColor(backdrop.width() * 3 / 4, backdrop.height() / 2), c.right);
    }
    EXPECT_TRUE(glassBackdrop(QImage(), {0, 0, 100, 100}, {0, 0, 10, 10}, 0).isNull());
    EXPECT_TRUE(glassBackdrop(halves({100, 100}), {0, 0, 100, 100}, {200, 0, 10, 10}, 0).isNull()) << "off the screen";
}

// The simple controls give the renderer's parameters unless the advanced mode is on; what the
// glass bends is the desktop's own blur where there is one, else the picture, else nothing.
TEST(GlassLook, TakesTheAdvancedParametersOnlyInTheAdvancedModeAndTheBestBackdrop)
{
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    GlassLook glass(settings);
    EXPECT_FALSE(glass.enabled());
    EXPECT_EQ(glass.effective(), LiquidGlassSettings{}) << "the defaults of both agree";

    LiquidGlassSettings advanced;
    advanced.innerRefractionAmount = 0.9;
    settings.setValue(Keys::liquidGlassSettings(), advanced);
    LiquidBasicSettings basic;
    basic.refraction = 0.2;
    basic.rimColor = GlassRGBA::rgba(1, 0.5, 0, 0.6);
    settings.setValue(Keys::liquidBasicSettings(), basic);
    EXPECT_DOUBLE_EQ(glass.parameters()["innerRefractionAmount"].toDouble(), 0.2);
    EXPECT_DOUBLE_EQ(glass.parameters()["highlightColorB"].toMap()["a"].toDouble(), 0.2) << "the rim fades to a third";
    basic.advancedMode = true;
    settings.setValue(Keys::liquidBasicSettings(), basic);
    EXPECT_DOUBLE_EQ(glass.parameters()["innerRefractionAmount"].toDouble(), 0.9);

    EXPECT_EQ(glass.backdrop(), "none");
    glass.setHasPicture(true);
    EXPECT_EQ(glass.backdrop(), "picture");
    glass.setDesktopBlurs(true);
    EXPECT_EQ(glass.backdrop(), "desktop");
}
