#include "DesktopWallpaperSource.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QRegularExpression>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <QUrl>

#include <gio/gio.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>

namespace kelvane {

namespace {
constexpr const char* gnomeSchema = "org.gnome.desktop.background";
constexpr const char* gnomeInterface = "org.gnome.desktop.interface";

QStringList desktops()
{
    return QString::fromUtf8(qgetenv("XDG_CURRENT_DESKTOP")).toLower().split(u':', Qt::SkipEmptyParts);
}

bool hasSchema(const char* id)
{
    GSettingsSchemaSource* source = g_settings_schema_source_get_default();
    GSettingsSchema* schema = source ? g_settings_schema_source_lookup(source, id, TRUE) : nullptr;
    if (schema)
        g_settings_schema_unref(schema);
    return schema != nullptr;
}

bool hasKey(GSettings* settings, const char* key)
{
    GSettingsSchema* schema = nullptr;
    g_object_get(settings, "settings-schema", &schema, nullptr);
    const bool has = schema && g_settings_schema_has_key(schema, key);
    if (schema)
        g_settings_schema_unref(schema);
    return has;
}

// A string key's value; nothing for a key the installed schema does not have.
QString gsettingsString(GSettings* settings, const char* key)
{
    if (!hasKey(settings, key))
        return {};
    gchar* value = g_settings_get_string(settings, key);
    QString text = QString::fromUtf8(value);
    g_free(value);
    return text;
}

QImage readFile(const QString& path)
{
    if (path.isEmpty())
        return {};
    QImageReader reader(path);
    reader.setAutoTransform(true);
    // A photo larger than needed is decoded at a fraction of its size.
    const QSize size = reader.size();
    if (size.width() > 2 * CurrentWallpaperManager::keptWidth)
        reader.setScaledSize(size.scaled(2 * CurrentWallpaperManager::keptWidth, size.height(), Qt::KeepAspectRatio));
    return reader.read();
}

xcb_atom_t atom(xcb_connection_t* x, const char* name)
{
    xcb_intern_atom_reply_t* reply =
        xcb_intern_atom_reply(x, xcb_intern_atom(x, 0, std::uint16_t(std::strlen(name)), name), nullptr);
    const xcb_atom_t value = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return value;
}

// The picture set on the root window, read through a connection of the reader's own.
QImage readRootWindow()
{
    xcb_connection_t* x = xcb_connect(nullptr, nullptr);
    QImage picture;
    if (xcb_connection_has_error(x)) {
        xcb_disconnect(x);
        return picture;
    }
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(x)).data;
    for (const char* name : {"_XROOTPMAP_ID", "ESETROOT_PMAP_ID"}) {
        auto* property = xcb_get_property_reply(
            x, xcb_get_property(x, 0, screen->root, atom(x, name), XCB_ATOM_PIXMAP, 0, 1), nullptr);
        xcb_pixmap_t pixmap = xcb_pixmap_t(XCB_NONE);
        if (property && xcb_get_property_value_length(property) == 4)
            std::memcpy(&pixmap, xcb_get_property_value(property), 4);
        std::free(property);
        if (pixmap == XCB_NONE)
            continue;
        auto* geometry = xcb_get_geometry_reply(x, xcb_get_geometry(x, pixmap), nullptr);
        if (geometry && (geometry->depth == 24 || geometry->depth == 32)) {
            auto* image = xcb_get_image_reply(
                x, xcb_get_image(x, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, 0, 0, geometry->width, geometry->height, ~0u),
                nullptr);
            const qsizetype expected = qsizetype(geometry->width) * geometry->height * 4;
            if (image && xcb_get_image_data_length(image) >= expected) {
                picture = QImage(xcb_get_image_data(image), geometry->width, geometry->height, geometry->width * 4,
                                 QImage::Format_RGB32)
                              .copy();
            }
            std::free(image);
        }
        std::free(geometry);
        if (!picture.isNull())
            break;
    }
    xcb_disconnect(x);
    return picture;
}
} // namespace

QString DesktopWallpaperSource::pictureFile(const QString& setting)
{
    QString path = setting.trimmed();
    if (path.startsWith(u'\'') && path.endsWith(u'\'') && path.size() >= 2)
        path = path.mid(1, path.size() - 2);
    if (path.startsWith(QLatin1StringView("file:")))
        path = QUrl(path).toLocalFile();
    if (path.startsWith(QLatin1StringView("~/")))
        path = QDir::homePath() + path.mid(1);
    if (!QFileInfo(path).isDir())
        return QFileInfo(path).isFile() ? path : QString();
    // A wallpaper package: the same picture at several sizes; the largest.
    QString largest;
    qint64 area = 0;
    QDirIterator it(
        path, {QStringLiteral("*.png"), QStringLiteral("*.jpg"), QStringLiteral("*.jpeg"), QStringLiteral("*.webp")},
        QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        const QSize size = QImageReader(file).size();
        if (qint64(size.width()) * size.height() > area) {
            area = qint64(size.width()) * size.height();
            largest = file;
        }
    }
    return largest;
}

QString DesktopWallpaperSource::plasmaPicture(const QString& configuration)
{
    // The desktop containments' wallpaper plug-in groups; the first picture named is the one shown.
    static const QRegularExpression group(
        QStringLiteral(R"(^\[Containments\]\[\d+\]\[Wallpaper\]\[org\.kde\.image\]\[General\]\s*$)"));
    bool inGroup = false;
    for (const QString& raw : configuration.split(u'\n')) {
        const QString line = raw.trimmed();
        if (line.startsWith(u'[')) {
            inGroup = group.match(line).hasMatch();
            continue;
        }
        if (inGroup && line.startsWith(QLatin1StringView("Image="))) {
            const QString file = pictureFile(line.mid(6));
            if (!file.isEmpty())
                return file;
        }
    }
    return {};
}

DesktopWallpaperSource::DesktopWallpaperSource()
{
    const QStringList session = desktops();
    const auto isAny = [&](std::initializer_list<const char*> names) {
        for (const char* name : names)
            if (session.contains(QLatin1StringView(name)))
                return true;
        return false;
    };
    if (isAny({"kde"})) {
        m_kind = Kind::kde;
        m_plasmaFile = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                       QStringLiteral("/plasma-org.kde.plasma.desktop-appletsrc");
        // The file is replaced, not written in place: its folder is followed too.
        m_watcher.addPath(QFileInfo(m_plasmaFile).absolutePath());
        if (QFileInfo::exists(m_plasmaFile))
            m_watcher.addPath(m_plasmaFile);
        QObject::connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_watcher, [this] {
            if (!m_watcher.files().contains(m_plasmaFile) && QFileInfo::exists(m_plasmaFile))
                m_watcher.addPath(m_plasmaFile);
            changed();
        });
        QObject::connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_watcher, [this] { changed(); });
    } else if (isAny({"gnome", "unity", "ubuntu", "budgie", "pantheon", "gnome-classic", "gnome-flashback"}) &&
               hasSchema(gnomeSchema)) {
        m_kind = Kind::gnome;
        m_gnome = g_settings_new(gnomeSchema);
        m_gnomeSignal = g_signal_connect(m_gnome, "changed", G_CALLBACK(+[](GSettings*, gchar*, gpointer self) {
                                             static_cast<DesktopWallpaperSource*>(self)->changed();
                                         }),
                                         this);
    } else {
        watchRootWindow();
    }
}

DesktopWallpaperSource::~DesktopWallpaperSource()
{
    if (m_gnome) {
        g_signal_handler_disconnect(m_gnome, m_gnomeSignal);
        g_object_unref(m_gnome);
    }
    m_xEvents.reset();
    if (m_x)
        xcb_disconnect(m_x);
}

void DesktopWallpaperSource::watchRootWindow()
{
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        return;
    m_x = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(m_x)) {
        xcb_disconnect(m_x);
        m_x = nullptr;
        return;
    }
    m_kind = Kind::rootWindow;
    m_rootAtom = atom(m_x, "_XROOTPMAP_ID");
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_x)).data;
    // This connection's own interest in the root window: other clients' masks are untouched.
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_x, screen->root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(m_x);
    m_xEvents = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_x), QSocketNotifier::Read);
    QObject::connect(m_xEvents.get(), &QSocketNotifier::activated, m_xEvents.get(), [this] {
        bool picture = false;
        while (xcb_generic_event_t* event = xcb_poll_for_event(m_x)) {
            if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY &&
                reinterpret_cast<xcb_property_notify_event_t*>(event)->atom == m_rootAtom)
                picture = true;
            std::free(event);
        }
        if (xcb_connection_has_error(m_x))
            m_xEvents->setEnabled(false);
        if (picture)
            changed();
    });
}

std::function<QImage()> DesktopWallpaperSource::reader()
{
    switch (m_kind) {
    case Kind::gnome: {
        // Settings are read here, on the main thread; the file in the job.
        QString uri = gsettingsString(m_gnome, "picture-uri");
        if (hasSchema(gnomeInterface)) {
            GSettings* interface = g_settings_new(gnomeInterface);
            const bool dark = gsettingsString(interface, "color-scheme") == QLatin1StringView("prefer-dark");
            g_object_unref(interface);
            const QString darkUri = dark ? gsettingsString(m_gnome, "picture-uri-dark") : QString();
            if (!darkUri.isEmpty())
                uri = darkUri;
        }
        return [uri] { return readFile(pictureFile(uri)); };
    }
    case Kind::kde:
        return [file = m_plasmaFile] {
            QFile in(file);
            return in.open(QIODevice::ReadOnly) ? readFile(plasmaPicture(QString::fromUtf8(in.readAll()))) : QImage();
        };
    case Kind::rootWindow:
        return readRootWindow;
    case Kind::none:
        break;
    }
    return [] { return QImage(); };
}

void DesktopWallpaperSource::setChangeHandler(std::function<void()> handler) { m_handler = std::move(handler); }

void DesktopWallpaperSource::changed()
{
    if (m_handler)
        m_handler();
}

} // namespace kelvane
