#pragma once

#include "notch/ScreenProvider.h"

class QScreen;

namespace kelvane {

// The screens Qt knows (on X11: the RandR outputs or monitors), and their changes.
class QtScreenProvider final : public ScreenProvider {
    Q_OBJECT
public:
    explicit QtScreenProvider(QObject* parent = nullptr);

    QList<ScreenInfo> screens() const override;
    QObject* mainScreen() const override;

    static ScreenInfo describe(QScreen* screen);

private:
    void watch(QScreen* screen);
};

} // namespace kelvane
