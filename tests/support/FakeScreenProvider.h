#pragma once

#include "notch/ScreenProvider.h"

namespace kelvane::test {

// Screens a test sets by hand; every change is announced like the system's notification.
class FakeScreenProvider final : public ScreenProvider {
public:
    QList<ScreenInfo> screens() const override { return m_screens; }
    QObject* mainScreen() const override { return m_main; }

    void setScreens(const QList<ScreenInfo>& screens, bool announce = true)
    {
        m_screens = screens;
        if (announce)
            Q_EMIT screenParametersChanged();
    }
    void setMainScreen(QObject* handle) { m_main = handle; }

    // A screen with a stable name and a handle unique to it.
    static ScreenInfo screen(const QString& name, const QRectF& frame, QObject* handle,
                             std::optional<QSizeF> mm = QSizeF(400, 260), double topInset = 0)
    {
        ScreenInfo info;
        info.handle = handle;
        info.number = name;
        info.frame = frame;
        info.physicalSizeMm = mm;
        info.safeAreaTopInset = topInset;
        return info;
    }

private:
    QList<ScreenInfo> m_screens;
    QObject* m_main = nullptr;
};

} // namespace kelvane::test
