#include "platform/linux/QtCamera.h"

#include "support/PipeWireCamera.h"
#include "support/Polling.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace kelvane::test;

namespace {

// What the camera tells its owner.
struct Answers {
    int started = 0;
    QStringList failures;
    void listen(QtCamera& camera)
    {
        camera.started = [this] { ++started; };
        camera.failed = [this](const QString& reason) { failures << reason; };
    }
};


} // namespace

TEST(QtCamera, ShowsTheCamerasPictureMirroredAndLetsGoOfItWhenClosed)
{
    REQUIRE_PIPEWIRE();
    PipeWireCamera pipewire;
    QtCameraDevices devices;
    std::vector<CameraInfo> cameras;
    ASSERT_TRUE(waitUntil([&] { return !(cameras = devices.cameras()).empty(); }, 15000)) << "no camera listed";
    EXPECT_EQ(cameras.front().description, "TestCam");

    QtCamera camera(devices);
    Answers answers;
    answers.listen(camera);
    int pictures = 0;
    QObject::connect(&camera, &QtCamera::pictureChanged, [&] { pictures += camera.picture().isNull() ? 0 : 1; });
    // A square widget: the 4:3 picture is cropped to its middle.
    camera.setPictureSize(QSize(120, 120));
    for (int round = 0; round < 2; ++round) {
        camera.open(cameras.front().id);
        EXPECT_TRUE(camera.isOpen());
        ASSERT_TRUE(waitUntil([&] { return pictures > 10; }, 15000)) << "pictures: " << pictures;
        EXPECT_EQ(answers.started, round + 1);
        EXPECT_TRUE(answers.failures.isEmpty()) << answers.failures.join(QLatin1Char('\n'));
        const QImage picture = camera.picture();
        EXPECT_EQ(picture.size(), QSize(120, 120));
        // The colour bars run from grey and yellow on the left to red and blue on the right; a
        // mirror shows them the other way round.
        const QColor left = picture.pixelColor(15, 10), right = picture.pixelColor(110, 10);
        EXPECT_GT(left.red(), 150) << left.name();
        EXPECT_LT(left.green(), 60) << left.name();
        EXPECT_GT(right.red(), 150) << right.name();
        EXPECT_GT(right.green(), 150) << right.name();
        EXPECT_EQ(PipeWireCamera::readers(), 1);

        camera.close();
        EXPECT_TRUE(camera.picture().isNull()) << "the last picture is cleared";
        EXPECT_TRUE(waitUntil([&] { return PipeWireCamera::readers() == 0; }, 5000)) << "the camera is still read";
        pictures = 0;
    }
}

TEST(QtCamera, ListsACameraThereFromTheStartOnceAndSaysWhenItGoesAway)
{
    REQUIRE_PIPEWIRE();
    PipeWireCamera pipewire;
    // The camera is there before Qt first reads its list, as when the agent starts (Qt then names it
    // twice), and the change handler reads the list again, as the mirror does.
    ASSERT_TRUE(pipewire.offered());
    QMediaDevices::videoInputs();
    QtCameraDevices devices;
    devices.setChangeHandler([&] { devices.cameras(); });
    ASSERT_TRUE(waitUntil([&] { return !devices.cameras().empty(); }, 15000));
    waitUntil([] { return false; }, 500);
    const std::vector<CameraInfo> cameras = devices.cameras();
    ASSERT_EQ(cameras.size(), 1u);

    QtCamera camera(devices);
    Answers answers;
    answers.listen(camera);
    camera.open(cameras.front().id);
    EXPECT_TRUE(waitUntil([&] { return answers.started == 1; }, 15000)) << answers.failures.join(QLatin1Char('\n'));

    pipewire.removeSource();
    EXPECT_TRUE(waitUntil([&] { return devices.cameras().empty(); }, 10000));
    // The picture stops: the camera is said to be gone.
    EXPECT_TRUE(waitUntil([&] { return !answers.failures.isEmpty(); }, QtCamera::silenceMs + 3000));
    EXPECT_EQ(answers.failures, QStringList{"The camera was unplugged."});
    EXPECT_FALSE(camera.isOpen());

    // Opening a camera that is gone answers with a reason rather than silence.
    camera.open(cameras.front().id);
    EXPECT_TRUE(waitUntil([&] { return answers.failures.size() == 2; }));
    EXPECT_EQ(answers.failures, QStringList({"The camera was unplugged.", "The camera was unplugged."}));
}

TEST(QtCamera, ACameraThatNeverStartsDoesNotHoldUpTheMainThread)
{
    REQUIRE_PIPEWIRE();
    // Without its session manager, PipeWire lists the camera but never connects a reader to it.
    PipeWireCamera pipewire(false);
    QtCameraDevices devices;
    ASSERT_TRUE(waitUntil([&] { return !devices.cameras().empty(); }, 15000));
    auto camera = std::make_unique<QtCamera>(devices);
    Answers answers;
    answers.listen(*camera);
    QElapsedTimer longest;
    qint64 worst = 0;
    const QString id = devices.cameras().front().id;
    longest.start();
    camera->open(id);
    waitUntil([&] {
        worst = std::max(worst, longest.restart());
        return false;
    }, 3000);
    EXPECT_LT(worst, 200) << "the main thread was held";
    EXPECT_EQ(answers.started, 0);
    QElapsedTimer closing;
    closing.start();
    camera->close();
    camera.reset();
    EXPECT_LT(closing.elapsed(), 2500);
}
