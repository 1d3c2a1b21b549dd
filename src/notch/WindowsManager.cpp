#include "WindowsManager.h"


#include "FullscreenMonitor.h"
#include "NotchGeometry.h"

#include "core/MainThread.h"

#include <QUuid>

namespace kelvane {

using namespace std::chrono_literals;

namespace {
WindowsManager* s_shared = nullptr;
constexpr auto rebuildDelay = 1s;
} // namespace

WindowsManager::WindowsManager(const Dependencies& dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(dependencies)
    , m_general(dependencies.settings, Keys::generalSettings(), this)
    , m_intro(std::make_unique<IntroGuide>(dependencies.settings, dependencies.scheduler))
{
    connect(&m_deps.screens, &ScreenProvider::screenParametersChanged, this,
            &WindowsManager::screenDidChange);
    updateLastKnownScreenConfigurations();
    updateWindows();
    m_expandedNoteManager.openWindow = [this](qint64 note, const QUuid& kit, bool isCodeMode) {
        openNoteWindow(note, kit, isCodeMode);
    };
    m_expandedNoteManager.closeWindow = [this] {
        m_expandedNoteWindowController.reset();
        m_expandedNoteManager.setOpenNoteId(0);
    };
}

WindowsManager::~WindowsManager()
{
    tearDown();
    if (s_shared == this)
        s_shared = nullptr;
}

void WindowsManager::openNoteWindow(qint64 note, const QUuid& inDisplayKitId, bool isCodeMode)
{
    if (!m_noteWindows)
        return;
    if (m_expandedNoteWindowController && m_expandedNoteWindowController->noteId() == note) {
        m_expandedNoteWindowController->raise();
        return;
    }
    // From the given notch, else the first; the notch's closed outline at the top centre.
    const DisplayKit* kit = displayKit(inDisplayKitId);
    if (!kit && !m_displayKits.empty())
        kit = m_displayKits.front().get();
    const QRectF screen = kit ? kit->screen.frame : QRectF(0, 0, 1280, 800);
    const QSizeF size = kit && !kit->notchSize.isEmpty() ? kit->notchSize : QSizeF(200, 32);
    const QRectF notch(screen.center().x() - size.width() / 2, screen.top(), size.width(), size.height());
    // One window: the note that had it goes back to the panel first.
    m_expandedNoteWindowController.reset();
    m_expandedNoteWindowController = m_noteWindows->createNoteWindow(note, isCodeMode, notch, screen, [this, note] {
        if (m_expandedNoteManager.openNoteId() != note)
            return;
        // The window is still inside its own close: it is let go of from the main loop, but it
        // is no longer the open one, so that opening the note again makes a new window.
        std::shared_ptr<NoteWindow> closing(std::move(m_expandedNoteWindowController));
        QMetaObject::invokeMethod(this, [closing] {}, Qt::QueuedConnection);
        m_expandedNoteManager.setOpenNoteId(0);
    });
    m_expandedNoteManager.setOpenNoteId(m_expandedNoteWindowController ? note : 0);
}

DisplayKit* WindowsManager::displayKit(const QUuid& id) const
{
    for (const auto& kit : m_displayKits)
        if (kit->id == id)
            return kit.get();
    return nullptr;
}

QString WindowsManager::keyOf(const ScreenInfo& screen)
{
    // A screen without a number gets a key that matches nothing, so it always counts as changed.
    return screen.number.value_or(QUuid::createUuid().toString(QUuid::WithoutBraces));
}

void WindowsManager::tearDown()
{
    for (const auto& kit : m_displayKits) {
        kit->windowController->setResignKeyHandler({});
        kit->windowController->clearContent();
        kit->kelvane->cleanup();
        kit->windowController->close();
    }
    m_displayKits.clear();
}

void WindowsManager::updateWindows()
{
    assertMainThread();
    tearDown();
    for (const ScreenInfo& screen : m_deps.screens.screens())
        m_displayKits.push_back(setupDisplayKitForScreen(screen));
    Q_EMIT displayKitsChanged();
}

std::unique_ptr<DisplayKit> WindowsManager::setupDisplayKitForScreen(const ScreenInfo& screen)
{
    auto kit = std::make_unique<DisplayKit>();
    kit->id = QUuid::createUuid();
    kit->screen = screen;
    const QSizeF ppi = NotchGeometry::pointsPerInch(screen.frame.size(), screen.physicalSizeMm);
    kit->notchSize = NotchGeometry::rawNotchSize(screen.safeAreaTopInset, ppi);
    kit->kelvane = std::make_unique<KelvaneState>(m_deps.scheduler, m_deps.settings);
    kit->viewModel =
        std::make_unique<NotchViewModel>(NotchViewModel::Screen{kit->notchSize, screen.frame.size(), ppi,
                                                                isBuiltInPanel(screen.number.value_or(QString()))},
                                         *kit->kelvane, m_deps.settings);
    kit->viewModel->followIntro(*m_intro);
    kit->controller = std::make_unique<NotchController>(*kit->kelvane, *kit->viewModel, m_deps.settings,
                                                        m_deps.scheduler, m_deps.haptics,
                                                        m_deps.trayFileCount);
    kit->gestures = std::make_unique<NotchGestures>(
        NotchGestures::Dependencies{*kit->kelvane, *kit->viewModel, *kit->controller, m_deps.scheduler, m_deps.settings,
                                    [this] { return m_isTrackingContextMenu; }, m_deps.skipTrack});

    const QRectF contentRect =
        NotchGeometry::windowContentRect(screen.frame.size(), kit->viewModel->windowSize());
    NotchWindowSetup setup;
    setup.displayKitId = kit->id;
    setup.screen = screen;
    setup.rawNotchSize = kit->notchSize;
    setup.frame = NotchGeometry::toDesktop(screen.frame, contentRect);
    setup.kelvane = kit->kelvane.get();
    setup.viewModel = kit->viewModel.get();
    setup.controller = kit->controller.get();
    setup.gestures = kit->gestures.get();
    setup.windowsManager = this;
    kit->windowController = m_deps.windows.createWindow(setup);

    DisplayKit* raw = kit.get();
    kit->windowController->setResignKeyHandler([this, raw] { handleResignKey(*raw); });
    kit->windowController->orderFront();
    return kit;
}

void WindowsManager::updateFullScreen(const std::function<bool(const QRectF&)>& isFullScreen)
{
    for (const auto& kit : m_displayKits) {
        kit->viewModel->setFullScreen(isFullScreen(kit->screen.frame));
        // A full-screen window that comes up over an open panel puts it away.
        if (kit->viewModel->hiddenForFullScreen() && kit->kelvane->mode() != KelvaneState::Mode::closed)
            kit->controller->closeNotch(false, true);
    }
}

void WindowsManager::handleResignKey(DisplayKit& kit)
{
    if (m_isTrackingContextMenu)
        return; // a menu of the notch took the focus
    if (kit.kelvane->locked())
        return;
    if (kit.windowController->isEditingText() && m_general->preventUnhoverCloseWhenTyping)
        return;
    kit.kelvane->setMode(KelvaneState::Mode::closed,
                         m_general->transluscent ? Springs::liquidCloseFootprint : Springs::closePlain);
}

void WindowsManager::debouncedUpdateWindows()
{
    m_updateWindowsWorkItem = m_deps.scheduler.schedule(rebuildDelay, [this] { updateWindows(); });
}

void WindowsManager::screenDidChange()
{
    if (hasSignificantScreenChanges())
        debouncedUpdateWindows();
}

bool WindowsManager::hasSignificantScreenChanges()
{
    const QList<ScreenInfo> screens = m_deps.screens.screens();
    if (screens.size() != m_lastKnownScreenConfigurations.size()) {
        updateLastKnownScreenConfigurations();
        return true;
    }
    for (const ScreenInfo& screen : screens) {
        const auto stored = m_lastKnownScreenConfigurations.constFind(keyOf(screen));
        if (stored == m_lastKnownScreenConfigurations.constEnd() ||
            !(*stored == Configuration::of(screen))) {
            updateLastKnownScreenConfigurations();
            return true;
        }
    }
    return false;
}

void WindowsManager::updateLastKnownScreenConfigurations()
{
    m_lastKnownScreenConfigurations.clear();
    for (const ScreenInfo& screen : m_deps.screens.screens())
        m_lastKnownScreenConfigurations.insert(keyOf(screen), Configuration::of(screen));
}

void WindowsManager::showIndicator(const std::optional<Indicator>& indicator, bool onAllScreens)
{
    assertMainThread();
    if (indicator)
        ++m_indicatorsShown;
    QObject* main = onAllScreens ? nullptr : m_deps.screens.mainScreen();
    for (const auto& kit : m_displayKits) {
        if (!onAllScreens && kit->screen.handle != main)
            continue;
        if (kit->kelvane->indicator() != indicator)
            kit->kelvane->setIndicator(indicator);
        else if (indicator)
            kit->kelvane->restartIndicatorTimer();
    }
}

void WindowsManager::menuDidBeginTracking()
{
    m_menuTrackingEnd.cancel();
    if (!m_isTrackingContextMenu) {
        m_isTrackingContextMenu = true;
        Q_EMIT trackingContextMenuChanged();
    }
}

void WindowsManager::menuDidEndTracking()
{
    // One loop turn later, so that the focus loss the menu itself causes is still ignored.
    m_menuTrackingEnd = m_deps.scheduler.post([this] {
        if (m_isTrackingContextMenu) {
            m_isTrackingContextMenu = false;
            Q_EMIT trackingContextMenuChanged();
        }
    });
}

void WindowsManager::showSettings(const QString& pane) { Q_EMIT settingsRequested(pane); }

WindowsManager& WindowsManager::shared()
{
    Q_ASSERT_X(s_shared, "WindowsManager::shared", "no instance registered");
    return *s_shared;
}

void WindowsManager::setShared(WindowsManager* instance) { s_shared = instance; }

} // namespace kelvane
