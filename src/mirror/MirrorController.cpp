#include "MirrorController.h"

#include "settings/Keys.h"

#include <algorithm>

namespace kelvane {

MirrorController::MirrorController(
    CameraDevices& devices, Camera& camera, SettingsStore& settings, Scheduler& scheduler, QObject* parent)
    : QObject(parent)
    , m_devices(devices)
    , m_camera(camera)
    , m_defaultDevice(settings, Keys::defaultMirrorDevice(), this, [this](const QString&) { update(); })
    , m_automatic(settings, Keys::mirrorCameraInputWhenAvail(), this, [this](bool) { update(); })
    , m_scheduler(scheduler)
    , m_viewers([this](bool any) {
        // Each time the widget shows, a click starts the camera again unless it starts by itself.
        if (!any)
            m_asked = false;
        update();
    })
{
    m_camera.started = [this] {
        if (!m_open)
            return;
        m_timeout.cancel();
        set(QStringLiteral("showing"));
    };
    m_camera.failed = [this](const QString& reason) { fail(reason); };
    m_devices.setChangeHandler([this] { update(); });
    update();
}

MirrorController::~MirrorController()
{
    m_devices.setChangeHandler({});
    m_camera.started = nullptr;
    m_camera.failed = nullptr;
    closeCamera();
}

QString MirrorController::chosenDevice(const std::vector<CameraInfo>& cameras) const
{
    if (cameras.empty())
        return {};
    const QString& wanted = m_defaultDevice.get();
    if (!wanted.isEmpty() && std::ranges::find(cameras, wanted, &CameraInfo::id) != cameras.end())
        return wanted;
    const auto system = std::ranges::find(cameras, true, &CameraInfo::isDefault);
    return system != cameras.end() ? system->id : cameras.front().id;
}

void MirrorController::setShown(bool shown, QObject* viewer) { m_viewers.set(shown, viewer); }

void MirrorController::fail(const QString& reason)
{
    if (!m_open)
        return;
    closeCamera();
    // Asked again only by the user: a camera in use stays in use for a while.
    m_asked = false;
    set(QStringLiteral("failed"), reason);
}

void MirrorController::start()
{
    m_asked = true;
    update();
}

void MirrorController::update()
{
    const std::vector<CameraInfo> cameras = m_devices.cameras();
    const QString device = chosenDevice(cameras);
    if (!m_viewers.any()) {
        closeCamera();
        m_device = device;
        set(device.isEmpty() ? QStringLiteral("noCamera") : QStringLiteral("waiting"));
        return;
    }
    if (m_open && device == m_device)
        return;
    const bool unplugged = m_open && std::ranges::find(cameras, m_device, &CameraInfo::id) == cameras.end();
    closeCamera();
    m_device = device;
    if (device.isEmpty()) {
        set(QStringLiteral("noCamera"), unplugged ? QStringLiteral("The camera was unplugged.") : QString());
        return;
    }
    if (m_state == QStringLiteral("failed") && !m_asked)
        return;
    if (!m_automatic.get() && !m_asked) {
        set(QStringLiteral("waiting"), unplugged ? QStringLiteral("The camera was unplugged.") : QString());
        return;
    }
    openCamera(device);
}

void MirrorController::openCamera(const QString& id)
{
    m_open = true;
    set(QStringLiteral("starting"));
    m_timeout = m_scheduler.schedule(startTimeout, [this] { fail(QStringLiteral("The camera did not answer.")); });
    m_camera.open(id);
}

void MirrorController::closeCamera()
{
    if (!m_open)
        return;
    m_open = false;
    m_timeout.cancel();
    m_camera.close();
}

void MirrorController::set(const QString& state, const QString& message)
{
    if (m_state == state && m_message == message)
        return;
    m_state = state;
    m_message = message;
    Q_EMIT changed();
}

} // namespace kelvane
