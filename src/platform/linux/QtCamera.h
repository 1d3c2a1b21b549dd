#pragma once

#include "mirror/MirrorController.h"

#include <QCameraDevice>
#include <QImage>
#include <QMediaDevices>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <atomic>
#include <memory>
#include <optional>

class QThread;
struct _GstDeviceMonitor;

namespace kelvane {

// The system's cameras as Qt Multimedia lists them (V4L2 devices, PipeWire video sources).
// Qt's GStreamer list can name a camera present at its start twice and keep one of the two after
// the camera is unplugged, so it is checked against a device monitor of our own: of each name, only
// as many of Qt's entries are kept, the newest first, as there are devices of that name.
class QtCameraDevices final : public QObject, public CameraDevices {
    Q_OBJECT
public:
    explicit QtCameraDevices(QObject* parent = nullptr);
    ~QtCameraDevices() override;
    std::vector<CameraInfo> cameras() override;
    void setChangeHandler(std::function<void()> handler) override;
    // The device of a camera listed now, if it is.
    std::optional<QCameraDevice> find(const QString& id);

private:
    void changed();

    QMediaDevices m_devices;
    ::_GstDeviceMonitor* m_monitor = nullptr;
    std::function<void()> m_changed;
};

class CameraWorker;
struct CameraLink;

// A camera run on a thread of its own, since starting one can block for long (a PipeWire camera
// with no session manager, a driver that hangs): the main thread never waits on it. Each opening
// gets a fresh thread; closing lets that thread go once the device is released, and one that never
// answers is left behind rather than joined. Each frame is made into the picture the widget shows
// on that thread too: scaled to fill the size asked for, cropped and flipped as a mirror is. Only
// the newest is handed over, so a busy main thread drops frames instead of queueing them. A camera
// that stops sending pictures (unplugged, its stream ended) is said to have failed.
class QtCamera final : public QObject, public Camera {
    Q_OBJECT
    Q_PROPERTY(bool open READ isOpen NOTIFY openChanged)
    Q_PROPERTY(QImage picture READ picture NOTIFY pictureChanged)
public:
    static constexpr int silenceMs = 3000;

    explicit QtCamera(QtCameraDevices& devices, QObject* parent = nullptr);
    ~QtCamera() override;

    void open(const QString& id) override;
    void close() override;
    bool isOpen() const { return m_worker != nullptr; }
    QImage picture() const { return m_picture; }
    // Pictures shown since the start.
    quint64 framesShown() const { return m_framesShown; }
    // The size, in device pixels, that the pictures are made to fill.
    Q_INVOKABLE void setPictureSize(const QSize& size);

Q_SIGNALS:
    void openChanged();
    void pictureChanged();

private:
    void show(const QImage& picture);
    void answered(quint64 generation, const QString& failure);
    void checkPictures();

    QtCameraDevices& m_devices;
    std::shared_ptr<CameraLink> m_link;
    QString m_id;
    QImage m_picture;
    QTimer m_watch;
    bool m_started = false;
    QList<QPointer<QThread>> m_closing;
    CameraWorker* m_worker = nullptr;
    QThread* m_thread = nullptr;
    quint64 m_generation = 0;
    bool m_answered = false;
    quint64 m_framesShown = 0;
    std::shared_ptr<std::atomic<bool>> m_framePending = std::make_shared<std::atomic<bool>>(false);
};

} // namespace kelvane
