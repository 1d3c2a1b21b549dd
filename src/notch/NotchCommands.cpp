#include "NotchCommands.h"

#include "WindowsManager.h"

#include <QJsonArray>

namespace kelvane {

namespace {
QJsonObject sizeJson(const QSizeF& size)
{
    return {{QStringLiteral("width"), size.width()}, {QStringLiteral("height"), size.height()}};
}

QString screenKey(const DisplayKit& kit) { return kit.screen.number.value_or(QString()); }

QJsonValue indicatorJson(const std::optional<Indicator>& indicator)
{
    if (!indicator)
        return QJsonValue::Null;
    return QJsonObject{
        {QStringLiteral("kind"), indicator->kind == Indicator::Kind::volume ? QStringLiteral("volume")
                                                                            : QStringLiteral("brightness")},
        {QStringLiteral("icon"), indicator->icon},
        {QStringLiteral("value"), indicator->value},
    };
}
} // namespace

NotchCommands::NotchCommands(WindowsManager& windows, ScreenProvider& screens)
    : m_windows(windows)
    , m_screens(screens)
{
}

QJsonObject NotchCommands::state() const
{
    QJsonArray notches;
    QObject* main = m_screens.mainScreen();
    for (const auto& kit : m_windows.displayKits()) {
        const QRectF frame = kit->windowController ? kit->windowController->frame() : QRectF();
        const KelvaneState& kelvane = *kit->kelvane;
        notches.append(QJsonObject{
            {QStringLiteral("screen"), screenKey(*kit)},
            {QStringLiteral("main"), kit->screen.handle == main},
            {QStringLiteral("window"), QJsonObject{{QStringLiteral("x"), frame.x()},
                                                   {QStringLiteral("y"), frame.y()},
                                                   {QStringLiteral("width"), frame.width()},
                                                   {QStringLiteral("height"), frame.height()}}},
            {QStringLiteral("rawNotchSize"), sizeJson(kit->notchSize)},
            {QStringLiteral("effectiveNotchSize"), sizeJson(kit->viewModel->notchSize())},
            {QStringLiteral("mode"), kelvane.modeName()},
            {QStringLiteral("hidden"), kelvane.hidden()},
            {QStringLiteral("locked"), kelvane.locked()},
            {QStringLiteral("calibrating"), kit->viewModel->fineTuning()},
            {QStringLiteral("introStep"), kit->viewModel->notchState() == NotchViewModel::State::showingIntro
                                              ? QJsonValue(m_windows.intro().step())
                                              : QJsonValue()},
            {QStringLiteral("fullScreen"), kit->viewModel->isFullScreen()},
            {QStringLiteral("shown"), !kit->viewModel->isDisabled() && !kit->viewModel->hiddenForFullScreen()},
            {QStringLiteral("quickPeek"), kelvane.hasQuickPeek() ? QJsonValue(kelvane.quickPeekTitle()) : QJsonValue()},
            {QStringLiteral("indicator"), indicatorJson(kelvane.indicator())},
            {QStringLiteral("topBarText"), kit->windowController ? kit->windowController->topBarText() : QString()},
            {QStringLiteral("drop"), kit->windowController ? kit->windowController->dropState() : QJsonObject()},
        });
    }
    return {{QStringLiteral("notches"), notches}, {QStringLiteral("indicatorsShown"), m_windows.indicatorsShown()}};
}

NotchCommands::Error NotchCommands::forEachTarget(const QString& screen, Default fallback,
                                                 const std::function<void(DisplayKit&)>& action)
{
    QObject* main = m_screens.mainScreen();
    std::vector<DisplayKit*> kits;
    for (const auto& kit : m_windows.displayKits()) {
        const bool wanted = !screen.isEmpty() ? screenKey(*kit) == screen
                            : fallback == Default::everyScreen ? true
                                                               : kit->screen.handle == main;
        if (wanted)
            kits.push_back(kit.get());
    }
    if (kits.empty() && !screen.isEmpty())
        return QStringLiteral("No notch on screen \"%1\".").arg(screen);
    if (kits.empty())
        return QStringLiteral("No notch is shown.");
    for (DisplayKit* kit : kits)
        action(*kit);
    return std::nullopt;
}

NotchCommands::Error NotchCommands::checkTab(const QString& tab)
{
    if (tab == QLatin1StringView("tuckle") || tab == QLatin1StringView("tray"))
        return std::nullopt;
    return QStringLiteral("Unknown tab \"%1\": use tuckle or tray.").arg(tab);
}

NotchCommands::Error NotchCommands::open(const QString& tab, const QString& screen)
{
    if (!tab.isEmpty())
        if (auto error = checkTab(tab))
            return error;
    const auto mode = KelvaneState::fromRawValue(tab).value_or(KelvaneState::Mode::tuckle);
    return forEachTarget(screen, Default::mainScreen, [&](DisplayKit& kit) {
        kit.controller->openNotch(mode);
        // A hidden notch only comes back, and the tray may win over the widgets when it has
        // files: the tab asked for is chosen afterwards.
        if (!tab.isEmpty() && kit.kelvane->modeName() != tab)
            kit.kelvane->selectNamed(tab);
    });
}

NotchCommands::Error NotchCommands::close(const QString& screen)
{
    return forEachTarget(screen, Default::everyScreen,
                         [](DisplayKit& kit) { kit.controller->closeNotch(false, true); });
}

NotchCommands::Error NotchCommands::hide(const QString& screen)
{
    return forEachTarget(screen, Default::everyScreen, [](DisplayKit& kit) { kit.controller->hideNotch(); });
}

NotchCommands::Error NotchCommands::calibrate(const QString& what, const QString& screen)
{
    if (what == QLatin1StringView("done"))
        return forEachTarget(screen, Default::everyScreen, [](DisplayKit& kit) { kit.controller->endFineTuning(); });
    const bool width = what == QLatin1StringView("width");
    if (!width && what != QLatin1StringView("height"))
        return QStringLiteral("Unknown calibration \"%1\": use width, height or done.").arg(what);
    return forEachTarget(screen, Default::mainScreen, [&](DisplayKit& kit) {
        kit.controller->closeNotch(false, true);
        kit.viewModel->setFineTuning(width ? NotchViewModel::State::fineTuningWidth
                                           : NotchViewModel::State::fineTuningHeight);
    });
}

NotchCommands::Error NotchCommands::select(const QString& tab, const QString& screen)
{
    if (auto error = checkTab(tab))
        return error;
    return forEachTarget(screen, Default::mainScreen, [&](DisplayKit& kit) { kit.kelvane->selectNamed(tab); });
}

} // namespace kelvane
