#pragma once

#include "core/Scheduler.h"
#include "core/Viewers.h"
#include "settings/SettingValue.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <functional>
#include <vector>

namespace kelvane {

struct CameraInfo {
    QString id;
    QString description;
    bool isDefault = false;
    bool operator==(const CameraInfo&) const = default;
};

// The cameras the system offers, and word when one comes or goes.
class CameraDevices {
public:
    virtual ~CameraDevices() = default;
    virtual std::vector<CameraInfo> cameras() = 0;
    virtual void setChangeHandler(std::function<void()> handler) = 0;
};

// One camera, opened and closed on request; it says when its picture flows or why it cannot.
class Camera {
public:
    virtual ~Camera() = default;
    virtual void open(const QString& id) = 0;
    // Lets go of the device at once (its light goes out).
    virtual void close() = 0;
    std::function<void()> started;
    std::function<void(const QString& reason)> failed;
};

// The camera mirror: the camera is open only while the widget is on screen, from the chosen device
// (`defaultMirrorDevice` when it is there, else the system's default), and starts by itself or on
// a click as `mirrorCameraInputWhenAvail` says. No camera, one in use, or one unplugged while
// shown: a message, and the rest goes on. A camera that does not answer in time is given up.
class MirrorController : public QObject {
    Q_OBJECT
    // "noCamera", "waiting" (for a click), "starting", "showing" or "failed".
    Q_PROPERTY(QString state READ state NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed)
    Q_PROPERTY(QString deviceId READ deviceId NOTIFY changed)
public:
    static constexpr std::chrono::seconds startTimeout{8};

    MirrorController(CameraDevices& devices, Camera& camera, SettingsStore& settings, Scheduler& scheduler,
        QObject* parent = nullptr);
    ~MirrorController() override;

    QString state() const { return m_state; }
    QString message() const { return m_message; }
    // The device open, or to be opened.
    QString deviceId() const { return m_device; }
    bool isOpen() const { return m_open; }

    // Whether a widget is on screen (a panel open on it). Each screen's widget is its own viewer;
    // the camera is open while any of them shows.
    Q_INVOKABLE void setShown(bool shown, QObject* viewer = nullptr);
    // The user asks for the picture (or to try again).
    Q_INVOKABLE void start();

Q_SIGNALS:
    void changed();

private:
    QString chosenDevice(const std::vector<CameraInfo>& cameras) const;
    void update();
    void openCamera(const QString& id);
    void closeCamera();
    void fail(const QString& reason);
    void set(const QString& state, const QString& message = {});

    CameraDevices& m_devices;
    Camera& m_camera;
    SettingValue<QString> m_defaultDevice;
    SettingValue<bool> m_automatic;
    Scheduler& m_scheduler;
    Viewers m_viewers;
    ScheduledTask m_timeout;
    bool m_asked = false;
    bool m_open = false;
    QString m_device;
    QString m_state = QStringLiteral("noCamera");
    QString m_message;
};

} // namespace kelvane
