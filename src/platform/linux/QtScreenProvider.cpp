#include "QtScreenProvider.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

namespace kelvane {

QtScreenProvider::QtScreenProvider(QObject* parent)
    : ScreenProvider(parent)
{
    for (QScreen* screen : QGuiApplication::screens())
        watch(screen);
    connect(qApp, &QGuiApplication::screenAdded, this, [this](QScreen* screen) {
        watch(screen);
        Q_EMIT screenParametersChanged();
    });
    connect(qApp, &QGuiApplication::screenRemoved, this, &ScreenProvider::screenParametersChanged);
    connect(qApp, &QGuiApplication::primaryScreenChanged, this,
            &ScreenProvider::screenParametersChanged);
}

void QtScreenProvider::watch(QScreen* screen)
{
    connect(screen, &QScreen::geometryChanged, this, &ScreenProvider::screenParametersChanged);
    connect(screen, &QScreen::physicalSizeChanged, this, &ScreenProvider::screenParametersChanged);
    connect(screen, &QScreen::logicalDotsPerInchChanged, this,
            &ScreenProvider::screenParametersChanged);
}

ScreenInfo QtScreenProvider::describe(QScreen* screen)
{
    ScreenInfo info;
    info.handle = screen;
    if (!screen->name().isEmpty())
        info.number = screen->name();
    info.frame = QRectF(screen->geometry());
    info.backingScaleFactor = screen->devicePixelRatio();
    // X11 has no per-output colour space; the visual's depth is what can change under us.
    info.colorSpace = QStringLiteral("sRGB/%1-bit").arg(screen->depth());
    const QSizeF mm = screen->physicalSize();
    if (mm.width() > 0 && mm.height() > 0)
        info.physicalSizeMm = mm;
    // No Linux screen reports a camera housing.
    info.safeAreaTopInset = 0;
    return info;
}

QList<ScreenInfo> QtScreenProvider::screens() const
{
    QList<ScreenInfo> result;
    for (QScreen* screen : QGuiApplication::screens())
        result.append(describe(screen));
    return result;
}

QObject* QtScreenProvider::mainScreen() const
{
    if (QWindow* focus = QGuiApplication::focusWindow(); focus && focus->screen())
        return focus->screen();
    return QGuiApplication::primaryScreen();
}

} // namespace kelvane
