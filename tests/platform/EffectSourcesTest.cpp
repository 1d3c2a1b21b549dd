#include "effects/AudioVisualizer.h"
#include "effects/CurrentWallpaperManager.h"
#include "effects/FrequencyBands.h"
#include "platform/linux/DesktopWallpaperSource.h"
#include "platform/linux/PulseAudioCapture.h"
#include "platform/linux/X11WindowHints.h"

#include "core/Log.h"
#include "settings/Keys.h"
#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SoundServer.h"
#include "support/XvfbServer.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegion>
#include <QWindow>

#include <xcb/xcb.h>

#include <gtest/gtest.h>

#include <cstring>

using namespace kelvane;
using namespace kelvane::test;

namespace {
struct Listening {
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    PulseAudioCapture capture;
    AudioVisualizer visualizer{capture, settings};
    QObject view;
    Listening()
    {
        visualizer.setShown(true, &view);
        visualizer.setPlaying(true);
    }
    int peak() const
    {
        const auto bars = visualizer.bars();
        return int(std::max_element(bars.begin(), bars.end()) - bars.begin());
    }
};

// A tone played on the server's output until the process is ended.
struct Tone {
    QProcess player;
    Tone(const QString& folder, double frequency)
    {
        const QString file = folder + QStringLiteral("/tone-%1.raw").arg(frequency);
        // Ten seconds of a sine at half strength, 48 kHz, 16-bit stereo.
        const int rate = 48000, seconds = 10;
        QByteArray data;
        for (int i = 0; i < rate * seconds; ++i) {
            const auto sample = qint16(16000 * std::sin(2 * M_PI * frequency * i / rate));
            data.append(reinterpret_cast<const char*>(&sample), 2).append(reinterpret_cast<const char*>(&sample), 2);
        }
        QFile out(file);
        out.open(QIODevice::WriteOnly);
        out.write(data);
        out.close();
        player.start("paplay", {"--raw", "--rate=48000", "--channels=2", "--format=s16le", "--latency-msec=30", file});
    }
    ~Tone()
    {
        player.kill();
        player.waitForFinished(2000);
    }
};
} // namespace

// What really plays is heard: a 440 Hz tone lights the band that holds 440 Hz most; silence lights
// nothing; when playback pauses the capture stream leaves the server.
TEST(PulseAudioCapture, HearsWhatPlaysAndLetsGoWhenPlaybackPauses)
{
    REQUIRE_PULSEAUDIO();
    TemporaryHome home;
    SoundServer sound(home.path() + "/runtime");
    ASSERT_TRUE(SoundServer::ready());

    Listening listening;
    ASSERT_TRUE(waitUntil([] { return SoundServer::recordingStreams() == 1; }, 5000));
    // Silence: a second of updates, every bar flat.
    QThread::msleep(300);
    waitUntil([] { return false; }, 1000);
    for (qreal bar : listening.visualizer.bars())
        EXPECT_EQ(bar, 0.0);

    {
        Tone tone(home.path(), 440);
        FrequencyBands bands(PulseAudioCapture::rate, AudioVisualizer::bandCount);
        EXPECT_TRUE(waitUntil(
            [&] { return listening.visualizer.level() > 0.05 && listening.peak() == bands.bandOf(440); }, 8000))
            << "bars: " << QVariant::fromValue(listening.visualizer.bars()).toString().toStdString();
        EXPECT_GT(listening.visualizer.bars()[bands.bandOf(440)], 0.6);
    }

    listening.visualizer.setPlaying(false);
    EXPECT_TRUE(waitUntil([] { return SoundServer::recordingStreams() == 0; }, 3000));
    for (qreal bar : listening.visualizer.bars())
        EXPECT_EQ(bar, 0.0);
    // And again when it plays on.
    listening.visualizer.setPlaying(true);
    EXPECT_TRUE(waitUntil([] { return SoundServer::recordingStreams() == 1; }, 5000));
}

// Without a sound server the bars lie still and one line says why.
TEST(PulseAudioCapture, WithoutASoundServerTheBarsLieStill)
{
    TemporaryHome home;
    ScopedEnvironment env;
    env.set("PULSE_SERVER", ("unix:" + home.path() + "/no-server").toUtf8());
    LogCapture log;
    Listening listening;
    ASSERT_TRUE(waitUntil([&] { return !log.lines().isEmpty(); }, 5000));
    EXPECT_FALSE(listening.visualizer.capturing());
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines()[0].startsWith("[Effects] There is no sound server to listen to ("))
        << log.lines()[0].toStdString();
    EXPECT_TRUE(log.lines()[0].endsWith(". The bars stay still.")) << log.lines()[0].toStdString();
}

namespace {
QString savePicture(const QString& path, QColor colour)
{
    QImage image(64, 48, QImage::Format_RGB32);
    image.fill(colour);
    image.save(path);
    return path;
}

// The manager's reading of its source, waited for.
QColor accentOf(CurrentWallpaperManager& manager, int serialBefore)
{
    waitUntil([&] { return manager.pictureSerial() > serialBefore; }, 5000);
    return manager.accent();
}
} // namespace

// GNOME's setting and Plasma's configuration name the picture; a change to either is followed.
TEST(DesktopWallpaperSource, ReadsAndFollowsGnomeAndPlasmaSettings)
{
    TemporaryHome home;
    ScopedEnvironment env;
    const QString red = savePicture(home.path() + "/red.png", QColor(220, 30, 30));
    const QString blue = savePicture(home.path() + "/blue.png", QColor(30, 60, 220));
    const QString green = savePicture(home.path() + "/green.png", QColor(30, 200, 60));
    const auto hue = [](QColor c) { return c.hslHueF(); };

    env.set("GSETTINGS_BACKEND", "keyfile");
    env.set("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    ASSERT_EQ(run("gsettings", {"set", "org.gnome.desktop.background", "picture-uri", "file://" + red}).status, 0);
    {
        DesktopWallpaperSource source;
        ASSERT_EQ(source.kind(), DesktopWallpaperSource::Kind::gnome);
        CurrentWallpaperManager manager(source);
        manager.refresh();
        EXPECT_NEAR(hue(accentOf(manager, 0)), 0.0, 0.03);
        EXPECT_EQ(manager.picture().size(), QSize(64, 48));
        const int serial = manager.pictureSerial();
        ASSERT_EQ(run("gsettings", {"set", "org.gnome.desktop.background", "picture-uri", "file://" + blue}).status, 0);
        EXPECT_NEAR(hue(accentOf(manager, serial)), QColor(30, 60, 220).hslHueF(), 0.03);
    }

    env.set("XDG_CURRENT_DESKTOP", "KDE");
    QDir().mkpath(home.configPath());
    const auto writePlasma = [&](const QString& picture) {
        QFile file(home.configPath() + "/plasma-org.kde.plasma.desktop-appletsrc");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(("[Containments][1]\nplugin=org.kde.panel\n\n[Containments][2][Wallpaper][org.kde.image][General]\n"
                    "Image=file://" +
                    picture + "\nSlidePaths=/usr/share/wallpapers/\n")
                       .toUtf8());
    };
    writePlasma(green);
    DesktopWallpaperSource source;
    ASSERT_EQ(source.kind(), DesktopWallpaperSource::Kind::kde);
    CurrentWallpaperManager manager(source);
    manager.refresh();
    EXPECT_NEAR(hue(accentOf(manager, 0)), QColor(30, 200, 60).hslHueF(), 0.03);
    const int serial = manager.pictureSerial();
    writePlasma(red);
    EXPECT_NEAR(hue(accentOf(manager, serial)), 0.0, 0.03);

    // A wallpaper package is a folder of sizes: the largest is taken; a missing file is none.
    QDir().mkpath(home.path() + "/pack/contents/images");
    savePicture(home.path() + "/pack/contents/images/640x480.png", Qt::red);
    QImage(1920, 1080, QImage::Format_RGB32).save(home.path() + "/pack/contents/images/1920x1080.png");
    EXPECT_EQ(DesktopWallpaperSource::pictureFile(home.path() + "/pack"),
              home.path() + "/pack/contents/images/1920x1080.png");
    EXPECT_EQ(DesktopWallpaperSource::pictureFile("'file://" + red + "'"), red);
    EXPECT_EQ(DesktopWallpaperSource::pictureFile(home.path() + "/gone.png"), QString());
}

// Elsewhere the picture set on the X root window is read, and a new one is followed.
TEST(DesktopWallpaperSource, ReadsAndFollowsTheRootWindowsPicture)
{
    ScopedEnvironment env;
    env.set("XDG_CURRENT_DESKTOP", "");
    xcb_connection_t* x = xcb_connect(nullptr, nullptr);
    ASSERT_FALSE(xcb_connection_has_error(x));
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(x)).data;
    const auto* reply = xcb_intern_atom_reply(x, xcb_intern_atom(x, 0, 13, "_XROOTPMAP_ID"), nullptr);
    const xcb_atom_t property = reply->atom;
    std::free(const_cast<xcb_intern_atom_reply_t*>(reply));
    // What a desktop-drawing program does: a pixmap painted in one colour, named on the root window.
    const auto setRoot = [&](std::uint32_t rgb) {
        const xcb_pixmap_t pixmap = xcb_generate_id(x);
        xcb_create_pixmap(x, screen->root_depth, pixmap, screen->root, 80, 60);
        const xcb_gcontext_t gc = xcb_generate_id(x);
        xcb_create_gc(x, gc, pixmap, XCB_GC_FOREGROUND, &rgb);
        const xcb_rectangle_t all{0, 0, 80, 60};
        xcb_poly_fill_rectangle(x, pixmap, gc, 1, &all);
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, screen->root, property, XCB_ATOM_PIXMAP, 32, 1, &pixmap);
        xcb_flush(x);
    };
    setRoot(0xdc1e1e);
    DesktopWallpaperSource source;
    ASSERT_EQ(source.kind(), DesktopWallpaperSource::Kind::rootWindow);
    CurrentWallpaperManager manager(source);
    manager.refresh();
    EXPECT_NEAR(accentOf(manager, 0).hslHueF(), 0.0, 0.03);
    EXPECT_EQ(manager.picture().size(), QSize(80, 60));
    const int serial = manager.pictureSerial();
    setRoot(0x1e3cdc);
    EXPECT_NEAR(accentOf(manager, serial).hslHueF(), QColor(0x1e, 0x3c, 0xdc).hslHueF(), 0.03);
    xcb_delete_property(x, screen->root, property);
    xcb_disconnect(x);
}

// Where KWin's blur runs (it announces itself by a property on the root window), the glass asks
// it to blur what lies behind the notch's outline, rectangle by rectangle, and an empty region
// asks no more.
TEST(X11WindowHints, AsksTheDesktopToBlurBehindTheOutlineWhereItCan)
{
    xcb_connection_t* x = xcb_connect(nullptr, nullptr);
    ASSERT_FALSE(xcb_connection_has_error(x));
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
    auto* reply = xcb_intern_atom_reply(x, xcb_intern_atom(x, 0, 30, "_KDE_NET_WM_BLUR_BEHIND_REGION"), nullptr);
    const xcb_atom_t blur = reply->atom;
    std::free(reply);
    xcb_flush(x);
    EXPECT_FALSE(desktopBlursBehindWindows());
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, root, blur, XCB_ATOM_CARDINAL, 32, 0, nullptr);
    std::free(xcb_get_input_focus_reply(x, xcb_get_input_focus(x), nullptr));
    EXPECT_TRUE(desktopBlursBehindWindows());

    QWindow window;
    window.setGeometry(0, 0, 200, 100);
    window.create();
    const auto asked = [&] {
        auto* property = xcb_get_property_reply(
            x, xcb_get_property(x, 0, xcb_window_t(window.winId()), blur, XCB_ATOM_CARDINAL, 0, 64), nullptr);
        std::vector<std::uint32_t> values;
        if (property && property->type == XCB_ATOM_CARDINAL) {
            const auto* data = static_cast<const std::uint32_t*>(xcb_get_property_value(property));
            values.assign(data, data + xcb_get_property_value_length(property) / 4);
        }
        std::free(property);
        return values;
    };
    // Asked on the window's own connection: read here once the server has it.
    const std::vector<std::uint32_t> rectangles{10, 0, 100, 20, 20, 20, 80, 10};
    setBlurBehind(&window, QRegion(10, 0, 100, 20) + QRegion(20, 20, 80, 10));
    EXPECT_TRUE(waitUntil([&] { return asked() == rectangles; }, 2000));
    setBlurBehind(&window, QRegion());
    EXPECT_TRUE(waitUntil([&] { return asked().empty(); }, 2000));

    xcb_delete_property(x, root, blur);
    xcb_disconnect(x);
}
