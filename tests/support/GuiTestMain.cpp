#include "support/XvfbServer.h"

#include <QGuiApplication>
#include <QQuickWindow>

#include <gtest/gtest.h>

#include <memory>

// Each GUI test process gets an X server of its own (two monitors side by side) before the
// application object connects to it.
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    // Listing the tests at build time must not need a display.
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();

    auto server = std::make_unique<kelvane::test::XvfbServer>();
    if (!server->start()) {
        std::fprintf(stderr, "could not start Xvfb\n");
        return 1;
    }
    server->setMonitors({{QStringLiteral("M1"), QRect(0, 0, 1512, 982), QSize(400, 260), true},
                         {QStringLiteral("M2"), QRect(1512, 0, 1280, 800), QSize(340, 212), false}});
    kelvane::test::XvfbServer::setCurrent(server.get());
    qputenv("DISPLAY", server->display().toUtf8());
    qputenv("QT_QPA_PLATFORM", "xcb");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    int result = 0;
    {
        QGuiApplication app(argc, argv);
        QGuiApplication::setQuitOnLastWindowClosed(false);
        result = RUN_ALL_TESTS();
    }
    kelvane::test::XvfbServer::setCurrent(nullptr);
    return result;
}
