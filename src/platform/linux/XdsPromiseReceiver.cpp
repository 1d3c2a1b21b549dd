#include "XdsPromiseReceiver.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QSaveFile>

#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace kelvane {

namespace {
const QString directSave = QStringLiteral("XdndDirectSave0");
} // namespace

XdsPromiseReceiver::XdsPromiseReceiver(std::function<QByteArray(const QString& format)> fetch)
    : m_fetch(std::move(fetch))
{
}

QString XdsPromiseReceiver::safeName(const QByteArray& proposed)
{
    // Only a name, never a path: whatever the source says, the file lands in our folder.
    QString name = QString::fromUtf8(proposed).section(QLatin1Char('/'), -1).trimmed();
    name.remove(QChar(0));
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        return QStringLiteral("Dropped file");
    return name;
}

void XdsPromiseReceiver::receive(const QString& folder,
                                 std::function<void(const std::optional<QUrl>& file, const QString& error)> done)
{
    auto* x11 = qApp ? qApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    Display* display = x11 ? x11->display() : nullptr;
    if (!display)
        return done(std::nullopt, QStringLiteral("promised files need an X server"));
    const Atom selection = XInternAtom(display, "XdndSelection", False);
    const Atom property = XInternAtom(display, "XdndDirectSave0", False);
    const Atom textPlain = XInternAtom(display, "text/plain", False);
    // The window that owns the drag's selection is the one that carries the promise.
    const Window source = XGetSelectionOwner(display, selection);
    if (source == None)
        return done(std::nullopt, QStringLiteral("the drag's source is gone"));

    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    QByteArray proposed;
    if (XGetWindowProperty(display, source, property, 0, 1024, False, AnyPropertyType, &type, &format, &count, &after,
                           &data) == Success &&
        data && format == 8)
        proposed = QByteArray(reinterpret_cast<const char*>(data), int(count));
    if (data)
        XFree(data);
    if (proposed.isEmpty())
        return done(std::nullopt, QStringLiteral("the source did not name the file"));

    const QString path = QDir(folder).filePath(safeName(proposed));
    if (QFile::exists(path))
        return done(std::nullopt, QStringLiteral("%1 already exists").arg(path));
    const QByteArray uri = QUrl::fromLocalFile(path).toEncoded();
    XChangeProperty(display, source, property, textPlain, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(uri.constData()), int(uri.size()));
    XFlush(display);

    // The source writes the file when asked for the direct-save type, and answers how it went:
    // "S" written, "F" send the bytes instead, "E" failed.
    const QByteArray answer = m_fetch(directSave).trimmed();
    if (answer == "S" && QFile::exists(path))
        return done(QUrl::fromLocalFile(path), {});
    if (answer == "F") {
        const QByteArray bytes = m_fetch(QStringLiteral("application/octet-stream"));
        QSaveFile file(path);
        if (!bytes.isEmpty() && file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
            return done(QUrl::fromLocalFile(path), {});
        return done(std::nullopt, QStringLiteral("the source sent nothing to write"));
    }
    done(std::nullopt, answer.isEmpty() ? QStringLiteral("the source did not answer")
                                        : QStringLiteral("the source could not save %1").arg(safeName(proposed)));
}

} // namespace kelvane
