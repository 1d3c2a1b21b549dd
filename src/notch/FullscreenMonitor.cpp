#include "FullscreenMonitor.h"

#include "core/Log.h"

namespace kelvane {

bool isCoveredByFullScreen(const QRectF& screenFrame, const WindowStack& stack)
{
    const QPointF centre = screenFrame.center();
    const auto covers = [&](const StackedWindow& window) { return !window.ignored && window.frame.contains(centre); };
    if (!stack.ordered)
        return stack.active && covers(*stack.active) && stack.active->fullScreen;
    for (const StackedWindow& window : stack.windows) {
        if (covers(window))
            return window.fullScreen;
    }
    return false;
}

bool notchShowsOverFullScreen(FullscreenOption option, bool builtInPanel)
{
    switch (option) {
    case FullscreenOption::allMonitors:
        return true;
    case FullscreenOption::notchedScreens:
        return builtInPanel;
    case FullscreenOption::never:
        break;
    }
    return false;
}

bool isBuiltInPanel(const QString& outputName)
{
    for (const char* prefix : {"eDP", "LVDS", "DSI"}) {
        if (outputName.startsWith(QLatin1StringView(prefix)))
            return true;
    }
    return false;
}

FullscreenMonitor::FullscreenMonitor(WindowStackSource& source, QObject* parent)
    : QObject(parent)
{
    connect(&source, &WindowStackSource::stackChanged, this, [this](const WindowStack& stack) {
        if (stack == m_stack)
            return;
        m_stack = stack;
        Q_EMIT changed();
    });
    connect(&source, &WindowStackSource::unavailable, this, [](const QString& reason) {
        logLine(u"FullscreenMonitor", QStringLiteral("Full-screen windows are not followed: %1.").arg(reason));
    });
    source.start();
}

} // namespace kelvane
