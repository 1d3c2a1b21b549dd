#pragma once

#include "activities/ActiveLiveActivitiesManager.h"
#include "activities/BluetoothManager.h"
#include "activities/LiveActivitySelectionManager.h"
#include "activities/PowerMonitor.h"
#include "activities/SelectedLiveActivity.h"
#include "apps/QuickAppsManager.h"
#include "apps/ShortcutsManager.h"
#include "mirror/MirrorController.h"
#include "platform/linux/QtCamera.h"
#include "calendar/CalendarFileList.h"
#include "calendar/CalendarManager.h"
#include "core/QtScheduler.h"
#include "core/SerialQueue.h"
#include "core/TimersManager.h"
#include "hud/HUDManager.h"
#include "hud/LevelFollower.h"
#include "hud/LevelKeys.h"
#include "hud/VolumeAndBrightnessListener.h"
#include "media/MediaManager.h"
#include "notch/FullscreenMonitor.h"
#include "notch/HapticFeedback.h"
#include "notch/NotchCommands.h"
#include "notch/QuickPeeks.h"
#include "notch/WindowsManager.h"
#include "notes/NotesManager.h"
#include "platform/linux/BacklightBrightnessService.h"
#include "platform/linux/BacklightWatch.h"
#include "platform/linux/BluezSource.h"
#include "platform/linux/CanberraSoundPlayer.h"
#include "platform/linux/DesktopEventOpener.h"
#include "platform/linux/DesktopSharing.h"
#include "platform/linux/EdsCalendarSource.h"
#include "platform/linux/GioApplicationCatalog.h"
#include "platform/linux/IcsCalendarSource.h"
#include "platform/linux/MimePasteboard.h"
#include "platform/linux/MprisMediaEnvironment.h"
#include "platform/linux/PulseVolumeService.h"
#include "platform/linux/PulseVolumeWatch.h"
#include "platform/linux/PulseAudioCapture.h"
#include "platform/linux/DesktopWallpaperSource.h"
#include "effects/AudioVisualizer.h"
#include "effects/CurrentWallpaperManager.h"
#include "effects/GlassLook.h"
#include "effects/MediaEffectStyle.h"
#include "platform/linux/QtProcessRunner.h"
#include "platform/linux/QtScreenProvider.h"
#include "platform/linux/SessionWakeEvents.h"
#include "platform/linux/UPowerSource.h"
#include "platform/linux/X11PointerProbe.h"
#include "platform/linux/X11WindowStack.h"
#include "platform/linux/XInputKeySource.h"
#include "platform/linux/XdgAutostart.h"
#include "settings/NativeSettingsDomain.h"
#include "settings/SettingsStore.h"
#include "timers/TimerCommands.h"
#include "timers/TuckleTimersStore.h"
#include "tray/DropZone.h"
#include "tray/Tray.h"
#include "ui/ApplicationMenu.h"
#include "ui/QuickNotchWindowFactory.h"
#include "ui/QuickNoteWindow.h"
#include "ui/SettingsRecordModel.h"
#include "ui/SettingsWindow.h"

#include <QQuickWindow>
#include "ui/WidgetGridModel.h"

#include <QObject>
#include <QUrl>

#include <atomic>
#include <memory>

namespace kelvane {

class DesktopColorScheme;

// The application: starts the long-lived managers in their order, answers re-launches and
// opened URLs with the settings window, and gives the system back what it borrowed when it ends.
class AppDelegate : public QObject {
    Q_OBJECT
public:
    AppDelegate();
    ~AppDelegate() override;

    void applicationDidFinishLaunching();
    // Runs once, however the process ends; later calls do nothing.
    void applicationWillTerminate();
    // A second launch of the application: the settings window comes forward.
    bool applicationShouldHandleReopen(bool hasVisibleWindows);
    // Files or addresses handed to the application are not opened: the settings window shows.
    void openUrls(const QList<QUrl>& urls);
    void showSettings(const QString& pane = {});
    // Ends the application (the menu's "Quit Kelvane").
    void terminate();
    // The "what is new" window: every release, or after an update the releases since the version
    // last run. Nothing to list, nothing shown.
    void showChangeLog(bool afterUpdate);
    QQuickWindow* changeLogWindow() const { return m_changeLogWindow.get(); }

    bool appInitialized() const { return m_appInitialized; }
    WindowsManager* windowsManager() const { return m_windowsManager.get(); }
    SettingsStore& settings() { return m_settings; }
    NotchCommands* notchCommands() const { return m_notchCommands.get(); }
    SettingsWindow* settingsWindow() const { return m_settingsWindow.get(); }
    TimerCommands* timerCommands() const { return m_timerCommands.get(); }
    SelectedLiveActivity* selectedLiveActivity() const { return m_selectedLiveActivity.get(); }
    MediaManager* media() const { return m_media.get(); }
    Tray* tray() const { return m_tray.get(); }
    PowerMonitor* power() const { return m_power.get(); }
    BluetoothManager* bluetooth() const { return m_bluetooth.get(); }
    CalendarManager* calendar() const { return m_calendar.get(); }
    ShortcutsManager* shortcuts() const { return m_shortcuts.get(); }
    MirrorController* mirror() const { return m_mirror.get(); }
    AudioVisualizer* visualizer() const { return m_visualizer.get(); }
    MediaEffectStyle* mediaStyle() const { return m_mediaStyle.get(); }
    CurrentWallpaperManager* wallpaper() const { return m_wallpaper.get(); }
    DesktopWallpaperSource* wallpaperSource() const { return m_wallpaperSource.get(); }
    GlassLook* glass() const { return m_glass.get(); }
    CameraDevices* cameras() const { return m_cameras.get(); }
    QuickAppsManager* quickApps() const { return m_quickApps.get(); }
    CalendarFileList* calendarFiles() const { return m_calendarFiles.get(); }
    NotesManager* notes() const { return m_notes.get(); }

private:
    void removeUpdateAvailableActivity();
    void setupMenu();

    // Services every manager may use, there before the launch sequence.
    QtScheduler m_scheduler;
    TimersManager m_timers{m_scheduler};
    NativeSettingsDomain m_domain;
    SettingsStore m_settings{m_domain};
    QtProcessRunner m_processRunner;
    HUDManager m_hud;
    SerialQueue m_hudQueue;
    ActiveLiveActivitiesManager m_liveActivities{m_settings};
    LiveActivitySelectionManager m_liveActivitySelection;
    CanberraSoundPlayer m_sound;

    QtScreenProvider m_screens;
    QuickNotchWindowFactory m_windowFactory;
    NullHapticFeedback m_haptics;
    std::unique_ptr<NotchCommands> m_notchCommands;
    MimePasteboard m_clipboard = MimePasteboard::clipboard();
    std::unique_ptr<DesktopSharing> m_sharing;
    StagingArea m_staging;
    std::unique_ptr<Tray> m_tray;
    std::unique_ptr<WidgetGridModel> m_widgetGrid;
    X11PointerProbe m_pointer;
    DesktopEventOpener m_eventOpener;
    std::unique_ptr<CalendarManager> m_calendar;
    std::unique_ptr<CalendarFileList> m_calendarFiles;
    std::unique_ptr<ShortcutsManager> m_shortcuts;
    std::unique_ptr<SettingsRecordModel> m_shortcutsSettings;
    std::unique_ptr<QtCameraDevices> m_cameras;
    std::unique_ptr<QtCamera> m_camera;
    std::unique_ptr<MirrorController> m_mirror;
    std::unique_ptr<GioApplicationCatalog> m_appCatalog;
    std::unique_ptr<QuickAppsManager> m_quickApps;
    std::unique_ptr<EdsCalendarSource> m_edsCalendars;
    std::unique_ptr<IcsCalendarSource> m_fileCalendars;
    std::unique_ptr<MprisMediaEnvironment> m_mediaEnvironment;
    std::unique_ptr<MediaManager> m_media;
    std::unique_ptr<UPowerSource> m_powerSource;
    std::unique_ptr<PowerMonitor> m_power;
    std::unique_ptr<DesktopWallpaperSource> m_wallpaperSource;
    std::unique_ptr<CurrentWallpaperManager> m_wallpaper;
    std::unique_ptr<PulseAudioCapture> m_audioCapture;
    std::unique_ptr<AudioVisualizer> m_visualizer;
    std::unique_ptr<MediaEffectStyle> m_mediaStyle;
    std::unique_ptr<GlassLook> m_glass;
    std::unique_ptr<SettingsRecordModel> m_tuckleSettings;
    std::unique_ptr<BluezSource> m_bluetoothSource;
    std::unique_ptr<BluetoothManager> m_bluetooth;
    std::unique_ptr<X11WindowStack> m_windowStack;
    std::unique_ptr<FullscreenMonitor> m_fullscreen;
    std::unique_ptr<SelectedLiveActivity> m_selectedLiveActivity;
    std::unique_ptr<TuckleTimersStore> m_timersStore;
    std::unique_ptr<TimerCommands> m_timerCommands;
    std::unique_ptr<XdgAutostart> m_autostart;
    std::unique_ptr<SettingsWindow> m_settingsWindow;
    std::unique_ptr<QQuickWindow> m_changeLogWindow;
    std::unique_ptr<DesktopColorScheme> m_colorScheme;
    ScheduledTask m_changeLogCheck;
    std::unique_ptr<NotesManager> m_notes;
    std::unique_ptr<SettingsRecordModel> m_notesSettings;
    std::unique_ptr<SettingsRecordModel> m_todoSettings;
    std::unique_ptr<QuickNoteWindowFactory> m_noteWindows;

    // The volume and brightness keys, shown in the notch while the user wants it.
    void startBriVolKeyListener();
    void followHUDReplacementSetting(const LiveActivitiesSettings& settings);
    void showIndicator(const Indicator& indicator);
    XInputKeySource m_keySource;
    PulseVolumeService m_volume;
    std::unique_ptr<BacklightBrightnessService> m_brightness;
    std::unique_ptr<SessionWakeEvents> m_wake;
    std::unique_ptr<LevelKeys> m_levelKeys;
    std::unique_ptr<VolumeAndBrightnessListener> m_keyListener;
    // Levels changed where no key was seen (a Wayland session sees none).
    PulseVolumeWatch m_volumeWatch;
    std::unique_ptr<BacklightWatch> m_brightnessWatch;
    std::unique_ptr<LevelFollower> m_levelFollower;
    std::unique_ptr<SettingValue<LiveActivitiesSettings>> m_liveActivitiesSettings;
    std::atomic<bool> m_mainScreenIsBuiltIn{false};

    // Empty until the launch sequence creates it; every "show settings" path goes through it.
    std::unique_ptr<WindowsManager> m_windowsManager;
    // After the windows, which it writes to.
    std::unique_ptr<QuickPeeks> m_quickPeeks;
    QuickPeek m_lastTrackPeek;
    std::unique_ptr<ApplicationMenu> m_nsMenu;
    bool m_appInitialized = false;
    bool m_terminated = false;
};

} // namespace kelvane
