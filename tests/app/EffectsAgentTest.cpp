#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"

#include <QColor>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPainter>
#include <QProcess>
#include <QRandomGenerator>

#include <xcb/xcb.h>

#include <gtest/gtest.h>

#include <cstdlib>

using namespace kelvane;
using namespace kelvane::test;

namespace {

// A busy, colourful desktop picture, set on the X root window as a desktop-drawing program sets
// it: shown as the root's background and named by its pixmap property.
void setDesktopPicture(const QSize& size, QImage& shown)
{
    QImage picture(size, QImage::Format_RGB32);
    QPainter painter(&picture);
    QLinearGradient sky(0, 0, size.width(), size.height());
    sky.setColorAt(0, QColor(0x12, 0x3a, 0xc8));
    sky.setColorAt(1, QColor(0xe8, 0x3a, 0x6a));
    painter.fillRect(picture.rect(), sky);
    QRandomGenerator random(7);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int i = 0; i < 160; ++i) {
        painter.setBrush(QColor::fromHsv(random.bounded(360), 200 + random.bounded(55), 180 + random.bounded(75)));
        painter.setPen(Qt::NoPen);
        const int r = 20 + random.bounded(90);
        painter.drawEllipse(QPoint(random.bounded(size.width()), random.bounded(size.height())), r, r);
    }
    painter.end();
    shown = picture;

    xcb_connection_t* x = xcb_connect(nullptr, nullptr);
    ASSERT_FALSE(xcb_connection_has_error(x));
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(x)).data;
    const xcb_pixmap_t pixmap = xcb_generate_id(x);
    xcb_create_pixmap(x, screen->root_depth, pixmap, screen->root, size.width(), size.height());
    const xcb_gcontext_t gc = xcb_generate_id(x);
    xcb_create_gc(x, gc, pixmap, 0, nullptr);
    for (int top = 0; top < size.height(); top += 32) {
        const int rows = std::min(32, size.height() - top);
        xcb_put_image(x, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, gc, size.width(), rows, 0, top, 0, screen->root_depth,
                      rows * picture.bytesPerLine(), picture.constScanLine(top));
    }
    auto* reply = xcb_intern_atom_reply(x, xcb_intern_atom(x, 0, 13, "_XROOTPMAP_ID"), nullptr);
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, screen->root, reply->atom, XCB_ATOM_PIXMAP, 32, 1, &pixmap);
    std::free(reply);
    xcb_change_window_attributes(x, screen->root, XCB_CW_BACK_PIXMAP, &pixmap);
    xcb_clear_area(x, 0, screen->root, 0, 0, 0, 0);
    // The pixmap outlives this connection, as a desktop program leaves it behind.
    xcb_set_close_down_mode(x, XCB_CLOSE_DOWN_RETAIN_PERMANENT);
    std::free(xcb_get_input_focus_reply(x, xcb_get_input_focus(x), nullptr));
    xcb_disconnect(x);
}

void setField(const QString& key, const QString& field, const QJsonValue& value)
{
    QJsonObject record = ctlJson({"settings", "get", key});
    record[field] = value;
    const Result set = ctl({"settings", "set", key, QString::fromUtf8(QJsonDocument(record).toJson())});
    EXPECT_EQ(set.status, 0) << set.err.toStdString();
}

// What the first screen's notch shows around its middle: `width` by `height` points from the
// top edge, centred on its window.
QImage notchArea(const QImage& picture, int width, int height)
{
    const QJsonObject window = notch("M1")["window"].toObject();
    const int centre = int(window["x"].toDouble() + window["width"].toDouble() / 2);
    return picture.copy(centre - width / 2, 0, width, height);
}
QImage notchArea(const QString& picture, int width, int height) { return notchArea(QImage(picture), width, height); }

// The same, from screenshots taken until `done` holds of it (the renderer draws in software here,
// slowly on a busy machine) or a few seconds have passed; the last one is kept as NAME.png.
template <class Done>
QImage notchAreaOnce(const QString& name, int width, int height, Done done)
{
    QImage area;
    waitUntil([&] {
        area = notchArea(screenshot(name, 300), width, height);
        return done(area);
    }, 8000);
    return area;
}

// How far apart two pictures of one size are: the mean difference of their pixels' channels.
double difference(const QImage& a, const QImage& b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QColor p = a.pixelColor(x, y), q = b.pixelColor(x, y);
            sum += std::abs(p.red() - q.red()) + std::abs(p.green() - q.green()) + std::abs(p.blue() - q.blue());
        }
    return sum / (3.0 * a.width() * a.height());
}

int vividPixels(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            count += c.hsvSaturation() > 70 && c.value() > 50 ? 1 : 0;
        }
    return count;
}

// The agent drawn with OpenGL: on this machine Mesa's software driver, which leaves two blocks of
// its own unfreed at exit after it has been unloaded, so that no suppression can name it. Under
// the leak checker these agents keep every other check but that one.
void drawWithOpenGL(ScopedEnvironment& env)
{
    env.set("KELVANE_RENDERER", "opengl");
    if (const QByteArray asan = qgetenv("ASAN_OPTIONS"); !asan.isEmpty())
        env.set("ASAN_OPTIONS", asan + ":detect_leaks=0");
}

} // namespace

// Drawn by the graphics card's interface (the shaders), on a busy desktop picture: the glass
// bends the picture where the plain notch is black, and each backdrop has colours of its own and
// moves. The pictures are kept among the build's artifacts.
TEST(EffectsAgent, TheGlassShowsTheDesktopPictureAndEachBackdropItsOwnColours)
{
    TemporaryHome home;
    SessionBus session;
    ScopedEnvironment env;
    drawWithOpenGL(env);
    env.set("XDG_CURRENT_DESKTOP", "");
    QImage desktop;
    setDesktopPicture(QSize(1600, 900), desktop);
    ComposedDesktop composed;
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    ASSERT_TRUE(waitUntil([&] { return agent.readOutput().contains("OpenGL"); }, 5000)) << agent.output.toStdString();
    setField("tuckleSettings", "enabledWidgets", QJsonArray{"mirror"});

    const QJsonObject effects = ctlJson({"effects"});
    EXPECT_EQ(effects["desktopPicture"]["source"], "rootWindow");
    EXPECT_EQ(effects["desktopPicture"]["width"], 1600);
    EXPECT_EQ(effects["glass"]["backdrop"], "picture");

    const QImage plain = notchArea(screenshot("glass-off-closed"), 80, 20);
    EXPECT_LT(vividPixels(plain), 20) << "the plain notch is black";

    setField("generalSettings", "transluscent", true);
    const QImage closed = notchAreaOnce("glass-closed", 80, 20, [](const QImage& a) { return vividPixels(a) > 800; });
    EXPECT_GT(vividPixels(closed), 800) << "the glass shows the picture behind it";
    EXPECT_GT(difference(closed, notchArea(desktop, 80, 20)), 12) << "the glass frosts and tints what it shows";

    setField("tuckleSettings", "wallpaper", "none");
    ASSERT_EQ(ctl({"open", "tuckle"}).status, 0);
    const QImage open =
        notchAreaOnce("glass-opening", 400, 120, [](const QImage& a) { return vividPixels(a) > 20000; });
    EXPECT_GT(vividPixels(open), 20000);
    EXPECT_GT(difference(open, notchArea(desktop, 400, 120)), 12);
    // The panel once its spring has come to rest, for a person to look at.
    screenshot("glass-open", 1500);
    ASSERT_EQ(ctl({"close"}).status, 0);

    setField("generalSettings", "transluscent", false);
    QList<QImage> panels;
    const QStringList kinds{"clouds", "aurora", "petals", "sea"};
    for (const QString& kind : kinds) {
        setField("tuckleSettings", "wallpaper", kind);
        ASSERT_EQ(ctl({"open", "tuckle"}).status, 0);
        // Beside the widget, in the panel's lower half.
        panels << notchArea(screenshot("backdrop-" + kind, 1200), 500, 140).copy(0, 90, 160, 50);
        // It moves while the panel is open (the clouds slowest: a mean change of about 0.8 a second).
        const QImage later = notchArea(screenshot("backdrop-" + kind, 1000), 500, 140).copy(0, 90, 160, 50);
        EXPECT_GT(difference(panels.last(), later), 0.2) << kind.toStdString() << " stands still";
        ASSERT_EQ(ctl({"close"}).status, 0);
        waitUntil([] { return notch("M1")["mode"] == "closed"; }, 3000);
    }
    for (int a = 0; a < panels.size(); ++a)
        for (int b = a + 1; b < panels.size(); ++b)
            EXPECT_GT(difference(panels[a], panels[b]), 12) << kinds[a].toStdString() << " " << kinds[b].toStdString();
    // Every view the panel is made of loaded.
    EXPECT_FALSE(agent.readOutput().contains("[NotchWindow] qrc:")) << agent.output.toStdString();
}

// Each media effect at the right end of the top bar, beside the title of what plays; the
// animations are drawn in their own colours.
TEST(EffectsAgent, EachMediaEffectShowsBesideWhatPlays)
{
    TemporaryHome home;
    SessionBus session;
    ScopedEnvironment env;
    drawWithOpenGL(env);
    QProcess player;
    player.start(KELVANE_MPRIS_TEST_PLAYER, {"vlc", "--identity", "VLC", "--title", "Golden Hour", "--artist",
                                             "Neon Sea", "--length", "200", "--status", "Playing"});
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    ASSERT_TRUE(waitUntil([] { return notch("M1")["topBarText"] == "Golden Hour"; }, 10000));
    for (const char* effect : {"audioSpectrograph", "waves", "vibratingCircle", "gif"}) {
        setField("mediaLiveActivitySettings", "effect", effect);
        const QImage bar = notchArea(screenshot(QStringLiteral("effect-%1").arg(QLatin1String(effect)), 800), 440, 26);
        // The effect's place: the right end of the top bar.
        int lit = 0;
        for (int y = 0; y < bar.height(); ++y)
            for (int x = bar.width() / 2; x < bar.width(); ++x)
                lit += bar.pixelColor(x, y).value() > 60 ? 1 : 0;
        EXPECT_GT(lit, 10) << effect;
        if (QLatin1String(effect) == QLatin1String("gif")) {
            EXPECT_GT(vividPixels(bar), 10) << "the animation is drawn in colour";
        }
    }
    player.terminate();
    player.waitForFinished(3000);
}
