#include "QtCamera.h"

#include "core/Log.h"

#include <QCamera>
#include <QCameraDevice>
#include <QDateTime>
#include <QMediaCaptureSession>
#include <QMutex>
#include <QThread>
#include <QVideoFrame>
#include <QVideoSink>

#include <gst/gst.h>
extern "C" {
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <cstring>
#include <vector>

namespace kelvane {

namespace {

// The frame formats cameras deliver, as the scaler names them; the second tells that the two colour
// planes come in the other order.
std::pair<AVPixelFormat, bool> scalerFormat(QVideoFrameFormat::PixelFormat format)
{
    using F = QVideoFrameFormat;
    switch (format) {
    case F::Format_YUYV: return {AV_PIX_FMT_YUYV422, false};
    case F::Format_UYVY: return {AV_PIX_FMT_UYVY422, false};
    case F::Format_NV12: return {AV_PIX_FMT_NV12, false};
    case F::Format_NV21: return {AV_PIX_FMT_NV21, false};
    case F::Format_YUV420P: return {AV_PIX_FMT_YUV420P, false};
    case F::Format_YV12: return {AV_PIX_FMT_YUV420P, true};
    case F::Format_YUV422P: return {AV_PIX_FMT_YUV422P, false};
    case F::Format_Y8: return {AV_PIX_FMT_GRAY8, false};
    case F::Format_BGRA8888: return {AV_PIX_FMT_BGRA, false};
    case F::Format_BGRX8888: return {AV_PIX_FMT_BGR0, false};
    case F::Format_RGBA8888: return {AV_PIX_FMT_RGBA, false};
    case F::Format_RGBX8888: return {AV_PIX_FMT_RGB0, false};
    case F::Format_ARGB8888: return {AV_PIX_FMT_ARGB, false};
    case F::Format_XRGB8888: return {AV_PIX_FMT_0RGB, false};
    case F::Format_ABGR8888: return {AV_PIX_FMT_ABGR, false};
    case F::Format_XBGR8888: return {AV_PIX_FMT_0BGR, false};
    default: return {AV_PIX_FMT_NONE, false};
    }
}

// PipeWire's camera source hands on frames that point into buffers it shares with the server, and
// unmaps those buffers when the camera goes away, even while a frame of theirs is still on its way
// to us: reading it then crashes. Each such source is told to copy its frames, when Qt puts one
// into its pipeline.
void copyPipeWireFrames()
{
    static const bool installed = [] {
        g_signal_add_emission_hook(
            g_signal_lookup("element-added", GST_TYPE_BIN), 0,
            [](GSignalInvocationHint*, guint count, const GValue* values, gpointer) -> gboolean {
                GObject* element = count >= 2 ? static_cast<GObject*>(g_value_get_object(&values[1])) : nullptr;
                if (element && g_str_has_prefix(G_OBJECT_TYPE_NAME(element), "GstPipeWire")
                    && g_object_class_find_property(G_OBJECT_GET_CLASS(element), "always-copy"))
                    g_object_set(element, "always-copy", TRUE, nullptr);
                return TRUE;
            },
            nullptr, nullptr);
        return true;
    }();
    Q_UNUSED(installed);
}

QString reasonFor(const QString& error)
{
    if (error.contains(QLatin1String("busy"), Qt::CaseInsensitive))
        return QStringLiteral("The camera is in use by another program.");
    if (error.contains(QLatin1String("permission"), Qt::CaseInsensitive))
        return QStringLiteral("Kelvane is not allowed to use the camera.");
    return QStringLiteral("The camera could not start: %1").arg(error.isEmpty() ? QStringLiteral("no picture") : error);
}

} // namespace

// The way back from a camera thread to its owner, cut when the owner goes; and the size the owner
// wants its pictures in.
struct CameraLink {
    QMutex mutex;
    QtCamera* owner = nullptr;
    QSize pictureSize{160, 160};
    // When the camera thread last received a frame (milliseconds since the epoch), so that a main
    // thread held up for a while does not take the camera for silent.
    std::atomic<qint64> lastFrame{0};

    QSize wanted()
    {
        QMutexLocker lock(&mutex);
        return pictureSize;
    }

    template <typename Work>
    void post(Work work)
    {
        QMutexLocker lock(&mutex);
        if (owner)
            QMetaObject::invokeMethod(owner, [owner = owner, work = std::move(work)] { work(owner); }, Qt::QueuedConnection);
    }
};

// Lives on its camera's thread; everything in it runs there.
class CameraWorker final : public QObject {
public:
    CameraWorker(std::shared_ptr<CameraLink> link, quint64 generation, std::shared_ptr<std::atomic<bool>> framePending,
        std::function<void(QtCamera*, quint64, QString)> answer, std::function<void(QtCamera*, QImage)> show)
        : m_link(std::move(link))
        , m_generation(generation)
        , m_framePending(std::move(framePending))
        , m_answer(std::move(answer))
        , m_show(std::move(show))
    {
    }

    ~CameraWorker() override { sws_freeContext(m_scaler); }

    void start(const QCameraDevice& device)
    {
        m_session = new QMediaCaptureSession(this);
        m_sink = new QVideoSink(this);
        m_camera = new QCamera(device, this);
        m_session->setVideoSink(m_sink);
        m_session->setCamera(m_camera);
        connect(m_camera, &QCamera::errorOccurred, this, [this](QCamera::Error error, const QString& text) {
            if (error != QCamera::NoError)
                reply(reasonFor(text));
        });
        connect(m_sink, &QVideoSink::videoFrameChanged, this, [this](const QVideoFrame& frame) {
            if (!frame.isValid())
                return;
            m_link->lastFrame.store(QDateTime::currentMSecsSinceEpoch());
            if (!m_answered)
                reply({});
            if (m_framePending->exchange(true))
                return;
            QImage picture = mirrorPicture(frame, m_link->wanted());
            if (picture.isNull() && !m_saidFormat) {
                m_saidFormat = true;
                logLine(u"Mirror", QStringLiteral("The camera's picture format %1 cannot be shown.")
                                       .arg(QVideoFrameFormat::pixelFormatToString(frame.pixelFormat())));
            }
            if (picture.isNull()) {
                m_framePending->store(false);
                return;
            }
            m_link->post([show = m_show, picture = std::move(picture)](QtCamera* owner) { show(owner, picture); });
        });
        m_camera->start();
    }

    // Lets go of the device: its light goes out here.
    void stop()
    {
        if (m_camera)
            m_camera->stop();
        delete m_camera;
        delete m_session;
        delete m_sink;
        m_camera = nullptr;
        m_session = nullptr;
        m_sink = nullptr;
        sws_freeContext(m_scaler);
        m_scaler = nullptr;
    }

private:
    // The frame filling `size`, its middle kept, flipped left to right. Converted and scaled in one
    // pass by the scaler on this thread (Qt's own conversion wants a graphics context of its own).
    QImage mirrorPicture(const QVideoFrame& frame, const QSize& size)
    {
        const auto [format, swapped] = scalerFormat(frame.pixelFormat());
        if (format == AV_PIX_FMT_NONE || size.isEmpty() || frame.width() <= 0 || frame.height() <= 0)
            return {};
        const QSize scaled = frame.size().scaled(size, Qt::KeepAspectRatioByExpanding);
        m_scaler = sws_getCachedContext(m_scaler, frame.width(), frame.height(), format, scaled.width(),
                                        scaled.height(), AV_PIX_FMT_BGRA, SWS_AREA, nullptr, nullptr, nullptr);
        QVideoFrame mapped(frame);
        if (!m_scaler || !mapped.map(QVideoFrame::ReadOnly))
            return {};
        // The scaler reads a little past the end of each plane, and a camera's buffer may end on
        // the last byte of a mapped page: the planes are read from a copy with room after each.
        constexpr std::size_t padding = 64;
        const int planeCount = std::min(mapped.planeCount(), 4);
        std::size_t total = 0;
        for (int plane = 0; plane < planeCount; ++plane)
            total += std::size_t(std::max(0, mapped.mappedBytes(plane))) + padding;
        m_input.resize(total);
        const uint8_t* planes[4] = {};
        int strides[4] = {};
        std::size_t at = 0;
        for (int plane = 0; plane < planeCount; ++plane) {
            const auto bytes = std::size_t(std::max(0, mapped.mappedBytes(plane)));
            std::memcpy(m_input.data() + at, mapped.bits(plane), bytes);
            std::memset(m_input.data() + at + bytes, 0, padding);
            planes[plane] = m_input.data() + at;
            strides[plane] = mapped.bytesPerLine(plane);
            at += bytes + padding;
        }
        if (swapped) {
            std::swap(planes[1], planes[2]);
            std::swap(strides[1], strides[2]);
        }
        // Room to the right and below as well: the scaler writes whole blocks of pixels.
        QImage image(QSize((scaled.width() + 15) / 16 * 16, scaled.height() + 1), QImage::Format_RGB32);
        uint8_t* target[4] = {image.bits()};
        const int targetStrides[4] = {int(image.bytesPerLine())};
        mapped.unmap();
        sws_scale(m_scaler, planes, strides, 0, frame.height(), target, targetStrides);
        const QRect middle(QPoint((scaled.width() - size.width()) / 2, (scaled.height() - size.height()) / 2), size);
        return image.copy(middle).mirrored(true, false);
    }

    void reply(const QString& failure)
    {
        if (m_answered)
            return;
        m_answered = true;
        m_link->post([answer = m_answer, generation = m_generation, failure](QtCamera* owner) {
            answer(owner, generation, failure);
        });
    }

    std::shared_ptr<CameraLink> m_link;
    quint64 m_generation;
    std::shared_ptr<std::atomic<bool>> m_framePending;
    std::function<void(QtCamera*, quint64, QString)> m_answer;
    std::function<void(QtCamera*, QImage)> m_show;
    QCamera* m_camera = nullptr;
    QMediaCaptureSession* m_session = nullptr;
    QVideoSink* m_sink = nullptr;
    SwsContext* m_scaler = nullptr;
    std::vector<uint8_t> m_input;
    bool m_answered = false;
    bool m_saidFormat = false;
};

QtCameraDevices::QtCameraDevices(QObject* parent)
    : QObject(parent)
{
    // Qt says so while it first reads the list, holding a lock that reading the list again takes:
    // the handler runs one loop turn later.
    connect(&m_devices, &QMediaDevices::videoInputsChanged, this, &QtCameraDevices::changed, Qt::QueuedConnection);
    gst_init(nullptr, nullptr);
    copyPipeWireFrames();
    m_monitor = gst_device_monitor_new();
    gst_device_monitor_add_filter(m_monitor, "Video/Source", nullptr);
    GstBus* bus = gst_device_monitor_get_bus(m_monitor);
    gst_bus_set_sync_handler(
        bus,
        [](GstBus*, GstMessage* message, gpointer self) {
            const GstMessageType type = GST_MESSAGE_TYPE(message);
            if (type == GST_MESSAGE_DEVICE_ADDED || type == GST_MESSAGE_DEVICE_REMOVED)
                QMetaObject::invokeMethod(static_cast<QtCameraDevices*>(self), &QtCameraDevices::changed,
                                          Qt::QueuedConnection);
            return GST_BUS_DROP;
        },
        this, nullptr);
    gst_object_unref(bus);
    if (!gst_device_monitor_start(m_monitor))
        logLine(u"Mirror", QStringLiteral("The cameras cannot be followed: GStreamer has no camera provider."));
}

QtCameraDevices::~QtCameraDevices()
{
    gst_device_monitor_stop(m_monitor);
    GstBus* bus = gst_device_monitor_get_bus(m_monitor);
    gst_bus_set_sync_handler(bus, nullptr, nullptr, nullptr);
    gst_object_unref(bus);
    gst_object_unref(m_monitor);
}

std::optional<QCameraDevice> QtCameraDevices::find(const QString& id)
{
    const std::vector<CameraInfo> listed = cameras();
    if (std::ranges::find(listed, id, &CameraInfo::id) == listed.end())
        return std::nullopt;
    const QList<QCameraDevice> inputs = QMediaDevices::videoInputs();
    const auto device = std::ranges::find(inputs, id.toUtf8(), &QCameraDevice::id);
    return device != inputs.end() ? std::optional(*device) : std::nullopt;
}

void QtCameraDevices::changed()
{
    if (m_changed)
        m_changed();
}

std::vector<CameraInfo> QtCameraDevices::cameras()
{
    QHash<QString, int> present;
    GList* devices = gst_device_monitor_get_devices(m_monitor);
    for (GList* item = devices; item; item = item->next) {
        gchar* name = gst_device_get_display_name(GST_DEVICE(item->data));
        ++present[QString::fromUtf8(name)];
        g_free(name);
    }
    g_list_free_full(devices, gst_object_unref);

    std::vector<CameraInfo> list;
    const QList<QCameraDevice> inputs = QMediaDevices::videoInputs();
    for (auto device = inputs.rbegin(); device != inputs.rend(); ++device) {
        int& left = present[device->description()];
        if (left == 0)
            continue;
        --left;
        list.insert(list.begin(), {QString::fromUtf8(device->id()), device->description(), device->isDefault()});
    }
    return list;
}

void QtCameraDevices::setChangeHandler(std::function<void()> handler)
{
    m_changed = std::move(handler);
}

QtCamera::QtCamera(QtCameraDevices& devices, QObject* parent)
    : QObject(parent)
    , m_devices(devices)
    , m_link(std::make_shared<CameraLink>())
{
    m_link->owner = this;
    m_watch.setInterval(500);
    connect(&m_watch, &QTimer::timeout, this, &QtCamera::checkPictures);
}

QtCamera::~QtCamera()
{
    close();
    {
        QMutexLocker lock(&m_link->mutex);
        m_link->owner = nullptr;
    }
    // Threads that let go of their device end at once; one stuck in its driver is left behind.
    for (const QPointer<QThread>& thread : std::as_const(m_closing)) {
        if (thread && !thread->wait(1500))
            logLine(u"Mirror", QStringLiteral("A camera thread did not end; it is left behind."));
    }
}

void QtCamera::open(const QString& id)
{
    close();
    const quint64 generation = ++m_generation;
    const std::optional<QCameraDevice> device = m_devices.find(id);
    if (!device) {
        m_link->post([generation](QtCamera* self) { self->answered(generation, QStringLiteral("The camera was unplugged.")); });
        return;
    }
    m_thread = new QThread;
    m_thread->setObjectName(QStringLiteral("camera"));
    m_worker = new CameraWorker(
        m_link, generation, m_framePending,
        [](QtCamera* self, quint64 from, const QString& failure) { self->answered(from, failure); },
        [from = generation](QtCamera* self, const QImage& picture) {
            self->m_framePending->store(false);
            if (from == self->m_generation)
                self->show(picture);
        });
    m_worker->moveToThread(m_thread);
    connect(m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    connect(m_thread, &QThread::finished, m_thread, &QObject::deleteLater);
    m_thread->start();
    m_id = id;
    m_started = false;
    m_watch.start();
    QMetaObject::invokeMethod(m_worker, [worker = m_worker, camera = *device] { worker->start(camera); });
    Q_EMIT openChanged();
}

void QtCamera::close()
{
    ++m_generation;
    if (!m_worker)
        return;
    CameraWorker* worker = std::exchange(m_worker, nullptr);
    QThread* thread = std::exchange(m_thread, nullptr);
    QMetaObject::invokeMethod(worker, [worker, thread] {
        worker->stop();
        thread->quit();
    });
    m_closing.removeAll(nullptr);
    m_closing.append(thread);
    m_watch.stop();
    show(QImage());
    Q_EMIT openChanged();
}

void QtCamera::answered(quint64 generation, const QString& failure)
{
    if (generation != m_generation)
        return;
    if (failure.isEmpty()) {
        m_started = true;
        if (started)
            started();
    } else if (failed) {
        failed(failure);
    }
}

void QtCamera::show(const QImage& picture)
{
    if (!picture.isNull())
        ++m_framesShown;
    if (picture.isNull() && m_picture.isNull())
        return;
    m_picture = picture;
    Q_EMIT pictureChanged();
}

void QtCamera::checkPictures()
{
    if (!m_started || QDateTime::currentMSecsSinceEpoch() - m_link->lastFrame.load() < silenceMs)
        return;
    const QString reason = m_devices.find(m_id) ? QStringLiteral("The camera stopped sending pictures.")
                                                : QStringLiteral("The camera was unplugged.");
    close();
    if (failed)
        failed(reason);
}

void QtCamera::setPictureSize(const QSize& size)
{
    QMutexLocker lock(&m_link->mutex);
    if (!size.isEmpty())
        m_link->pictureSize = size.boundedTo(QSize(1024, 1024));
}

} // namespace kelvane
