#pragma once

#include "Configuration.h"
#include "DisplayKit.h"
#include "ExpandedNoteManager.h"
#include "HapticFeedback.h"
#include "IntroGuide.h"
#include "Indicator.h"
#include "NotchWindow.h"
#include "ScreenProvider.h"

#include "core/Scheduler.h"
#include "settings/SettingValue.h"

#include <QHash>
#include <QObject>

#include <functional>
#include <memory>
#include <vector>

namespace kelvane {

// Owns one notch window per connected screen, rebuilds them (debounced) when the screens change in
// a way that matters, and routes level indicators to them.
class WindowsManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isTrackingContextMenu READ isTrackingContextMenu NOTIFY trackingContextMenuChanged)
    Q_PROPERTY(ExpandedNoteManager* expandedNoteManager READ expandedNoteManager CONSTANT)
public:
    struct Dependencies {
        Scheduler& scheduler;
        SettingsStore& settings;
        ScreenProvider& screens;
        NotchWindowFactory& windows;
        HapticFeedback& haptics;
        // Files held in the tray, for the notch that opens on the tray when it has any.
        std::function<int()> trayFileCount;
        // Skips one track from a swipe on the notch: +1 the next, -1 the previous.
        std::function<void(int)> skipTrack = {};
    };

    explicit WindowsManager(const Dependencies& dependencies, QObject* parent = nullptr);
    ~WindowsManager() override;

    const std::vector<std::unique_ptr<DisplayKit>>& displayKits() const { return m_displayKits; }
    IntroGuide& intro() const { return *m_intro; }
    DisplayKit* displayKit(const QUuid& id) const;

    // Closes every notch window and builds one per connected screen, in the system's order.
    void updateWindows();
    // One rebuild, one second after the last request.
    void debouncedUpdateWindows();
    void screenDidChange();
    // True when the screen set, a frame, a scale or a colour space differs from the last look
    // (which is then refreshed).
    bool hasSignificantScreenChanges();
    void updateLastKnownScreenConfigurations();

    // Shows a level on the main screen's notch, or on every notch. The same level again keeps it
    // up one more second.
    void showIndicator(const std::optional<Indicator>& indicator, bool onAllScreens);
    // How many levels have been shown since the start (each shown again counts too).
    int indicatorsShown() const { return m_indicatorsShown; }

    // Tells each notch whether a full-screen window is what its screen shows.
    void updateFullScreen(const std::function<bool(const QRectF&)>& isFullScreen);

    bool isTrackingContextMenu() const { return m_isTrackingContextMenu; }
    Q_INVOKABLE void menuDidBeginTracking();
    Q_INVOKABLE void menuDidEndTracking();

    // Detached note windows: made by `factory`, one at a time.
    void setNoteWindowFactory(NoteWindowFactory* factory) { m_noteWindows = factory; }
    ExpandedNoteManager* expandedNoteManager() { return &m_expandedNoteManager; }
    // Opens a note in a window of its own that grows out of the notch of the given kit's screen.
    // A note already out is brought forward; another note takes the window's place.
    void openNoteWindow(qint64 note, const QUuid& inDisplayKitId, bool isCodeMode);

    // Brings the settings forward, optionally on one pane ("general", "tray"...).
    Q_INVOKABLE void showSettings(const QString& pane = {});

    static WindowsManager& shared();
    static void setShared(WindowsManager* instance);

Q_SIGNALS:
    void displayKitsChanged();
    void trackingContextMenuChanged();
    void settingsRequested(const QString& pane);

private:
    std::unique_ptr<DisplayKit> setupDisplayKitForScreen(const ScreenInfo& screen);
    void handleResignKey(DisplayKit& kit);
    void tearDown();
    static QString keyOf(const ScreenInfo& screen);

    // First: the views of the notches read it.
    ExpandedNoteManager m_expandedNoteManager;
    NoteWindowFactory* m_noteWindows = nullptr;
    std::unique_ptr<NoteWindow> m_expandedNoteWindowController;
    Dependencies m_deps;
    SettingValue<GeneralSettings> m_general;
    // Declared before the kits, whose views follow it.
    std::unique_ptr<IntroGuide> m_intro;
    std::vector<std::unique_ptr<DisplayKit>> m_displayKits;
    ScheduledTask m_updateWindowsWorkItem;
    ScheduledTask m_menuTrackingEnd;
    QHash<QString, Configuration> m_lastKnownScreenConfigurations;
    bool m_isTrackingContextMenu = false;
    int m_indicatorsShown = 0;
};

} // namespace kelvane
