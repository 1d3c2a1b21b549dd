#include "mirror/MirrorController.h"

#include "core/ManualScheduler.h"
#include "settings/Keys.h"

#include <gtest/gtest.h>

using namespace kelvane;

namespace {

struct FakeDevices final : CameraDevices {
    std::vector<CameraInfo> list;
    std::function<void()> changed;
    std::vector<CameraInfo> cameras() override { return list; }
    void setChangeHandler(std::function<void()> handler) override { changed = std::move(handler); }
    void set(std::vector<CameraInfo> cameras)
    {
        list = std::move(cameras);
        if (changed)
            changed();
    }
};

// Records what was asked of it; the camera's light is on while `openId` is set.
struct FakeCamera final : Camera {
    QString openId;
    QStringList opened;
    int closes = 0;
    void open(const QString& id) override
    {
        openId = id;
        opened << id;
    }
    void close() override
    {
        openId.clear();
        ++closes;
    }
};

struct World {
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    FakeDevices devices;
    FakeCamera camera;
    ManualScheduler scheduler;
    std::unique_ptr<MirrorController> mirror;
    explicit World(std::vector<CameraInfo> cameras, const QString& chosen = {}, bool automatic = true)
    {
        devices.list = std::move(cameras);
        settings.setValue(Keys::defaultMirrorDevice(), chosen);
        settings.setValue(Keys::mirrorCameraInputWhenAvail(), automatic);
        mirror = std::make_unique<MirrorController>(devices, camera, settings, scheduler);
    }
};

const CameraInfo builtIn{QStringLiteral("0"), QStringLiteral("Integrated Camera"), true};
const CameraInfo usb{QStringLiteral("1"), QStringLiteral("USB Webcam"), false};

} // namespace

TEST(Mirror, TheChosenCameraIsOpenOnlyWhileTheWidgetShows)
{
    World world({builtIn, usb});
    EXPECT_TRUE(world.camera.opened.isEmpty());
    EXPECT_EQ(world.mirror->state(), "waiting");
    world.mirror->setShown(true);
    EXPECT_EQ(world.camera.openId, "0");
    EXPECT_EQ(world.mirror->state(), "starting");
    world.camera.started();
    EXPECT_EQ(world.mirror->state(), "showing");
    world.mirror->setShown(false);
    EXPECT_EQ(world.camera.openId, QString());
    EXPECT_EQ(world.camera.closes, 1);
    world.mirror->setShown(true);
    EXPECT_EQ(world.camera.opened, QStringList({"0", "0"}));
    // Choosing another device while it shows moves the picture to it.
    world.settings.setValue(Keys::defaultMirrorDevice(), usb.id);
    EXPECT_EQ(world.camera.openId, "1");
    world.mirror.reset();
    EXPECT_EQ(world.camera.openId, QString()) << "the light goes out with the widget";
}

TEST(Mirror, TheDeviceIsTheUsersChoiceWhenItIsThereElseTheSystemsDefault)
{
    const struct {
        std::vector<CameraInfo> cameras;
        const char* chosen;
        const char* opened;
    } cases[] = {
        {{builtIn, usb}, "", "0"},
        {{usb, builtIn}, "1", "1"},
        {{usb, builtIn}, "unplugged one", "0"},
        {{usb, CameraInfo{QStringLiteral("2"), QStringLiteral("Other"), false}}, "", "1"},
        {{}, "1", ""},
    };
    for (const auto& c : cases) {
        World world(c.cameras, QString::fromLatin1(c.chosen));
        world.mirror->setShown(true);
        EXPECT_EQ(world.camera.openId, QString::fromLatin1(c.opened)) << c.chosen;
        EXPECT_EQ(world.mirror->state(), c.cameras.empty() ? "noCamera" : "starting") << c.chosen;
    }
}

TEST(Mirror, WithoutAutomaticStartAClickStartsItEachTimeItShows)
{
    World world({builtIn}, {}, false);
    world.mirror->setShown(true);
    EXPECT_EQ(world.mirror->state(), "waiting");
    EXPECT_TRUE(world.camera.opened.isEmpty());
    world.mirror->start();
    EXPECT_EQ(world.camera.openId, "0");
    world.mirror->setShown(false);
    world.mirror->setShown(true);
    EXPECT_EQ(world.mirror->state(), "waiting");
    EXPECT_EQ(world.camera.openId, QString());
}

TEST(Mirror, ACameraInUseOrUnpluggedSaysSoAndTheRestGoesOn)
{
    World world({builtIn, usb});
    world.mirror->setShown(true);
    world.camera.failed(QStringLiteral("The camera is in use by another program."));
    EXPECT_EQ(world.mirror->state(), "failed");
    EXPECT_EQ(world.mirror->message(), "The camera is in use by another program.");
    EXPECT_EQ(world.camera.openId, QString());
    // It is not tried again behind the user's back, only when asked.
    world.devices.set({builtIn, usb});
    EXPECT_EQ(world.camera.opened.size(), 1);
    world.mirror->start();
    EXPECT_EQ(world.camera.openId, "0");
    world.camera.started();

    // The camera shown is unplugged: the other takes its place; then none is left.
    world.devices.set({usb});
    EXPECT_EQ(world.camera.openId, "1");
    world.devices.set({});
    EXPECT_EQ(world.camera.openId, QString());
    EXPECT_EQ(world.mirror->state(), "noCamera");
    EXPECT_EQ(world.mirror->message(), "The camera was unplugged.");
    // Plugged in again while shown: it starts by itself.
    world.devices.set({usb});
    EXPECT_EQ(world.camera.openId, "1");
}

TEST(Mirror, ACameraThatDoesNotAnswerIsGivenUp)
{
    World world({builtIn});
    world.mirror->setShown(true);
    world.scheduler.advance(MirrorController::startTimeout - std::chrono::milliseconds(1));
    EXPECT_EQ(world.mirror->state(), "starting");
    world.scheduler.advance(std::chrono::milliseconds(1));
    EXPECT_EQ(world.mirror->state(), "failed");
    EXPECT_EQ(world.mirror->message(), "The camera did not answer.");
    EXPECT_EQ(world.camera.openId, QString());
    // A late answer from the camera given up changes nothing.
    world.camera.started();
    EXPECT_EQ(world.mirror->state(), "failed");

    // One that answers in time is not given up later.
    world.mirror->start();
    world.camera.started();
    world.scheduler.advance(MirrorController::startTimeout * 2);
    EXPECT_EQ(world.mirror->state(), "showing");
}

TEST(Mirror, TheCameraStaysOpenWhileAnyScreensWidgetShows)
{
    World world({builtIn});
    QObject left;
    auto right = std::make_unique<QObject>();
    world.mirror->setShown(true, &left);
    world.mirror->setShown(true, right.get());
    world.mirror->setShown(true, right.get());
    EXPECT_EQ(world.camera.opened.size(), 1);
    world.mirror->setShown(false, &left);
    EXPECT_EQ(world.camera.openId, "0");
    // A widget unloaded without saying so no longer holds the camera.
    right.reset();
    EXPECT_EQ(world.camera.openId, QString());
    EXPECT_EQ(world.camera.closes, 1);
}
