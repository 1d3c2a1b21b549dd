#include "AppDelegate.h"

#include "ChangeLog.h"
#include "Identity.h"

#include "core/HandOff.h"
#include "core/Log.h"
#include "platform/linux/DesktopColorScheme.h"
#include "platform/linux/X11WindowHints.h"
#include "platform/linux/XdgAutostart.h"
#include "ui/CodeHighlighter.h"

#include <QFile>
#include <QGuiApplication>
#include <QLocale>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QScreen>
#include <QWindow>

#include <thread>
#include <unistd.h>

namespace kelvane {

namespace {
void sleepFor(std::chrono::microseconds duration) { std::this_thread::sleep_for(duration); }
} // namespace

AppDelegate::AppDelegate()
    : m_domain(identity::preferencesPath(QLatin1StringView(identity::bundleIdentifier)))
    , m_hud(m_processRunner, sleepFor, static_cast<unsigned>(::getuid()))
{
    // Dates of the calendar and the timers are computed in the user's own region.
    QLocale::setDefault(QLocale::system());
    TimersManager::setShared(&m_timers);
    SettingsStore::setShared(&m_settings);
    HUDManager::setShared(&m_hud);
    ActiveLiveActivitiesManager::setShared(&m_liveActivities);
    LiveActivitySelectionManager::setShared(&m_liveActivitySelection);
}

AppDelegate::~AppDelegate()
{
    // The key thread goes first: it reports to everything below.
    m_liveActivitiesSettings.reset();
    m_keyListener.reset();
    m_levelFollower.reset();
    m_nsMenu.reset();
    m_settingsWindow.reset();
    m_notchCommands.reset();
    WindowsManager::setShared(nullptr);
    m_windowsManager.reset();
    m_noteWindows.reset();
    m_notes.reset();
    m_timerCommands.reset();
    TuckleTimersStore::setShared(nullptr);
    m_timersStore.reset();
    m_selectedLiveActivity.reset();
    m_liveActivitySelection.setCalendarModel(nullptr);
    m_calendar.reset();
    m_shortcutsSettings.reset();
    m_mirror.reset();
    m_camera.reset();
    m_cameras.reset();
    m_quickApps.reset();
    m_appCatalog.reset();
    m_shortcuts.reset();
    m_fileCalendars.reset();
    m_edsCalendars.reset();
    m_calendarFiles.reset();
    m_fullscreen.reset();
    m_windowStack.reset();
    m_bluetooth.reset();
    m_bluetoothSource.reset();
    m_tuckleSettings.reset();
    m_glass.reset();
    m_mediaStyle.reset();
    m_visualizer.reset();
    m_audioCapture.reset();
    m_wallpaper.reset();
    m_wallpaperSource.reset();
    m_power.reset();
    m_powerSource.reset();
    m_media.reset();
    m_mediaEnvironment.reset();
    m_tray.reset();
    m_sharing.reset();
    LiveActivitySelectionManager::setShared(nullptr);
    ActiveLiveActivitiesManager::setShared(nullptr);
    HUDManager::setShared(nullptr);
    SettingsStore::setShared(nullptr);
    TimersManager::setShared(nullptr);
}

void AppDelegate::applicationDidFinishLaunching()
{
    // The process-wide managers start first, in this order, as each of them lands:
    // calendar, shortcuts, media, power, output volume, wallpaper colours.
    const QString dataFolder = identity::applicationSupportPath(QLatin1StringView(identity::bundleIdentifier));
    m_calendar = std::make_unique<CalendarManager>(
        CalendarManager::Dependencies{m_scheduler, m_settings, m_liveActivities, m_eventOpener});
    m_liveActivitySelection.setCalendarModel(m_calendar.get());
    m_calendarFiles = std::make_unique<CalendarFileList>(dataFolder);
    // Evolution is reached on the session bus; without one, its absence is already told.
    if (QDBusConnection::sessionBus().isConnected()) {
        m_edsCalendars = std::make_unique<EdsCalendarSource>();
        m_calendar->addSource(*m_edsCalendars);
    }
    m_fileCalendars = std::make_unique<IcsCalendarSource>(*m_calendarFiles);
    m_calendar->addSource(*m_fileCalendars);
    // Shortcuts are given the files selected in the tray, which starts later and is asked then.
    m_shortcuts = std::make_unique<ShortcutsManager>(ShortcutsManager::Dependencies{
        m_scheduler, m_settings, dataFolder + QStringLiteral("/Shortcuts"), [this] {
            QStringList files;
            if (m_tray)
                for (const TrayFile* file : m_tray->selectedFiles())
                    files << file->path();
            return files;
        }});
    m_shortcutsSettings = std::make_unique<SettingsRecordModel>(m_settings, QStringLiteral("shortcutsWidgetSettings"));
    m_appCatalog = std::make_unique<GioApplicationCatalog>();
    m_quickApps = std::make_unique<QuickAppsManager>(*m_appCatalog, dataFolder);
    m_cameras = std::make_unique<QtCameraDevices>();
    m_camera = std::make_unique<QtCamera>(*m_cameras);
    m_mirror = std::make_unique<MirrorController>(*m_cameras, *m_camera, m_settings, m_scheduler);

    m_mediaEnvironment = std::make_unique<MprisMediaEnvironment>(QDBusConnection::sessionBus(),
                                                                 QDBusConnection::systemBus());
    m_media = std::make_unique<MediaManager>(
        MediaManager::Dependencies{m_scheduler, m_timers, m_settings, m_liveActivities, *m_mediaEnvironment});
    m_powerSource = std::make_unique<UPowerSource>(QDBusConnection::systemBus());
    m_power = std::make_unique<PowerMonitor>(
        PowerMonitor::Dependencies{*m_powerSource, m_timers, m_liveActivities, m_settings});
    // The desktop picture's colours, and the effects that use them and the sound.
    m_wallpaperSource = std::make_unique<DesktopWallpaperSource>();
    m_wallpaper = std::make_unique<CurrentWallpaperManager>(*m_wallpaperSource);
    m_wallpaper->refresh();
    m_audioCapture = std::make_unique<PulseAudioCapture>();
    m_visualizer = std::make_unique<AudioVisualizer>(*m_audioCapture, m_settings);
    m_mediaStyle = std::make_unique<MediaEffectStyle>(m_settings, m_wallpaper.get());
    m_tuckleSettings = std::make_unique<SettingsRecordModel>(m_settings, QStringLiteral("tuckleSettings"));
    // The glass bends what the desktop blurs behind it, else the desktop picture.
    m_glass = std::make_unique<GlassLook>(m_settings);
    m_glass->setDesktopBlurs(desktopBlursBehindWindows());
    m_glass->setHasPicture(m_wallpaper->hasPicture());
    connect(m_wallpaper.get(), &CurrentWallpaperManager::pictureChanged, m_glass.get(),
            [this] { m_glass->setHasPicture(m_wallpaper->hasPicture()); });
    connect(m_media.get(), &MediaManager::isPlayingChanged, m_visualizer.get(),
            [this] { m_visualizer->setPlaying(m_media->isPlaying()); });
    connect(m_media.get(), &MediaManager::trackChanged, m_mediaStyle.get(),
            [this] { m_mediaStyle->setArtwork(m_media->albumId(), m_media->track().albumArt); });

    // The tray comes back as it was left.
    m_sharing = std::make_unique<DesktopSharing>(QDBusConnection::sessionBus());
    m_tray = std::make_unique<Tray>(Tray::Dependencies{
        m_scheduler, m_liveActivities, m_clipboard, *m_sharing, *m_sharing, m_staging, dataFolder});
    m_tray->setupTempDirectory();
    m_tray->loadPersistedFiles();

    // An "update available" activity never outlives the process that found the update.
    removeUpdateAvailableActivity();

    // Then the Bluetooth and full-screen monitors, and the default notes.
    m_bluetoothSource = std::make_unique<BluezSource>(QDBusConnection::systemBus());
    m_bluetooth = std::make_unique<BluetoothManager>(
        BluetoothManager::Dependencies{*m_bluetoothSource, m_timers, m_liveActivities});
    m_windowStack = std::make_unique<X11WindowStack>();
    m_fullscreen = std::make_unique<FullscreenMonitor>(*m_windowStack);
    m_notes = std::make_unique<NotesManager>(NotesManager::Dependencies{
        m_scheduler, m_settings, dataFolder + QStringLiteral("/notes.sqlite"), CodeHighlighter::languages()});
    if (const auto error = m_notes->seedAndPruneDefaultNotes())
        emitLine(QStringLiteral("[Notes] seedAndPruneDefaultNotes failed: ") + *error);
    m_notesSettings = std::make_unique<SettingsRecordModel>(m_settings, QStringLiteral("notesWidgetSettings"));
    m_todoSettings = std::make_unique<SettingsRecordModel>(m_settings, QStringLiteral("todoListWidgetSettings"));

    // The timers and the top bar's activity exist before the notches that show them.
    m_timersStore = std::make_unique<TuckleTimersStore>(
        TuckleTimersStore::Dependencies{m_scheduler, m_timers, m_domain, m_liveActivities, m_sound});
    TuckleTimersStore::setShared(m_timersStore.get());
    m_timerCommands = std::make_unique<TimerCommands>(*m_timersStore);
    m_selectedLiveActivity =
        std::make_unique<SelectedLiveActivity>(m_liveActivities, m_liveActivitySelection, m_settings);
    m_selectedLiveActivity->setBatteryStatusSource([this] { return m_power->batteryStatus(); });
    connect(m_power.get(), &PowerMonitor::changed, m_selectedLiveActivity.get(), &SelectedLiveActivity::refresh);
    connect(m_calendar.get(), &CalendarManager::activityChanged, m_selectedLiveActivity.get(),
            &SelectedLiveActivity::refresh);
    // The widgets that have a view; the others take no room in the panel.
    m_widgetGrid = std::make_unique<WidgetGridModel>(m_settings, std::set{TuckleWidget::media, TuckleWidget::timer,
                                                                          TuckleWidget::calendar, TuckleWidget::notes,
                                                                          TuckleWidget::todoList, TuckleWidget::shortcuts,
                                                                          TuckleWidget::quickApps, TuckleWidget::mirror});
    m_windowFactory.setServices({
        {QStringLiteral("widgetGrid"), QVariant::fromValue(static_cast<QObject*>(m_widgetGrid.get()))},
        {QStringLiteral("liveActivity"), QVariant::fromValue(static_cast<QObject*>(m_selectedLiveActivity.get()))},
        {QStringLiteral("timers"), QVariant::fromValue(static_cast<QObject*>(m_timersStore.get()))},
        {QStringLiteral("timerCommands"), QVariant::fromValue(static_cast<QObject*>(m_timerCommands.get()))},
        {QStringLiteral("media"), QVariant::fromValue(static_cast<QObject*>(m_media.get()))},
        {QStringLiteral("tray"), QVariant::fromValue(static_cast<QObject*>(m_tray.get()))},
        {QStringLiteral("battery"), QVariant::fromValue(static_cast<QObject*>(m_power.get()))},
        {QStringLiteral("bluetooth"), QVariant::fromValue(static_cast<QObject*>(m_bluetooth.get()))},
        {QStringLiteral("calendar"), QVariant::fromValue(static_cast<QObject*>(m_calendar.get()))},
        {QStringLiteral("calendarFiles"), QVariant::fromValue(static_cast<QObject*>(m_calendarFiles.get()))},
        {QStringLiteral("notes"), QVariant::fromValue(static_cast<QObject*>(m_notes.get()))},
        {QStringLiteral("notesSettings"), QVariant::fromValue(static_cast<QObject*>(m_notesSettings.get()))},
        {QStringLiteral("todoSettings"), QVariant::fromValue(static_cast<QObject*>(m_todoSettings.get()))},
        {QStringLiteral("shortcuts"), QVariant::fromValue(static_cast<QObject*>(m_shortcuts.get()))},
        {QStringLiteral("quickApps"), QVariant::fromValue(static_cast<QObject*>(m_quickApps.get()))},
        {QStringLiteral("shortcutsSettings"), QVariant::fromValue(static_cast<QObject*>(m_shortcutsSettings.get()))},
        {QStringLiteral("mirror"), QVariant::fromValue(static_cast<QObject*>(m_mirror.get()))},
        {QStringLiteral("mirrorCamera"), QVariant::fromValue(static_cast<QObject*>(m_camera.get()))},
        {QStringLiteral("visualizer"), QVariant::fromValue(static_cast<QObject*>(m_visualizer.get()))},
        {QStringLiteral("mediaStyle"), QVariant::fromValue(static_cast<QObject*>(m_mediaStyle.get()))},
        {QStringLiteral("wallpaper"), QVariant::fromValue(static_cast<QObject*>(m_wallpaper.get()))},
        {QStringLiteral("glass"), QVariant::fromValue(static_cast<QObject*>(m_glass.get()))},
        {QStringLiteral("tuckleSettings"), QVariant::fromValue(static_cast<QObject*>(m_tuckleSettings.get()))},
    });

    // Every notch takes drops: they open it into its drop area and land in the tray or a pipeline.
    m_windowFactory.setDropZoneMaker([this](KelvaneState& kelvane) {
        return std::make_unique<DropZone>(
            DropZone::Dependencies{m_scheduler, m_settings, kelvane, *m_tray, m_staging, *m_sharing, m_pointer});
    });
    m_windowsManager = std::make_unique<WindowsManager>(WindowsManager::Dependencies{
        m_scheduler, m_settings, m_screens, m_windowFactory, m_haptics, [this] { return m_tray->count(); },
        [this](int step) {
            if (m_media)
                step > 0 ? m_media->goToNextTrack() : m_media->goToPreviousTrack();
        }});
    WindowsManager::setShared(m_windowsManager.get());
    // A note opened in a window of its own.
    m_noteWindows = std::make_unique<QuickNoteWindowFactory>(m_windowFactory.engine());
    m_noteWindows->setServices({
        {QStringLiteral("notes"), QVariant::fromValue(static_cast<QObject*>(m_notes.get()))},
        {QStringLiteral("settings"), QVariant::fromValue(static_cast<QObject*>(m_notesSettings.get()))},
    });
    m_windowsManager->setNoteWindowFactory(m_noteWindows.get());
    // Each notch knows whether its screen shows a full-screen window, also after a rebuild.
    const auto followFullScreen = [this] {
        m_windowsManager->updateFullScreen([this](const QRectF& screen) { return m_fullscreen->isFullScreen(screen); });
    };
    connect(m_fullscreen.get(), &FullscreenMonitor::changed, m_windowsManager.get(), followFullScreen);
    connect(m_windowsManager.get(), &WindowsManager::displayKitsChanged, m_windowsManager.get(), followFullScreen);
    followFullScreen();
    m_notchCommands = std::make_unique<NotchCommands>(*m_windowsManager, m_screens);
    // Once the notches are on screen: what is new since the version last run, after an update.
    m_changeLogCheck = m_scheduler.post([this] { showChangeLog(true); });
    // A new track peeks out of the closed notch: its title, and its artist below.
    m_quickPeeks = std::make_unique<QuickPeeks>(m_scheduler, m_settings, *m_windowsManager);
    connect(m_media.get(), &MediaManager::trackChanged, this, [this] {
        const QuickPeek peek{m_media->title(), m_media->artist()};
        if (m_quickPeeks && peek != std::exchange(m_lastTrackPeek, peek))
            m_quickPeeks->post(peek);
    });
    // A shortcut that ends peeks out with its last line of output.
    connect(m_shortcuts.get(), &ShortcutsManager::finished, this,
            [this](const QString& name, const QString& lastLine, bool succeeded) {
                if (m_quickPeeks)
                    m_quickPeeks->post(QuickPeek{ShortcutsManager::labelOf(name),
                                                 !lastLine.isEmpty() ? lastLine
                                                 : succeeded         ? QStringLiteral("Done")
                                                                     : QStringLiteral("Failed")});
            });
    // An event coming near peeks too, when the user asked for that.
    connect(m_calendar.get(), &CalendarManager::eventNear, this, [this](const QString& title, const QString& when) {
        if (m_quickPeeks && m_settings.value(Keys::liveActivitiesSettings()).quickPeekEvent)
            m_quickPeeks->post(QuickPeek{title, when});
    });
    m_autostart = std::make_unique<XdgAutostart>(QLatin1StringView(identity::bundleIdentifier), QStringLiteral("Kelvane"),
                                                 QCoreApplication::applicationFilePath());
    SettingsWindow::Hooks hooks;
    hooks.quit = [this] { terminate(); };
    hooks.calibrate = [this](const QString& what) {
        if (const auto error = m_notchCommands->calibrate(what, {}))
            logLine(u"AppDelegate", *error);
    };
    hooks.loginItem = m_autostart.get();
    const auto place = [](const QString& title, const QString& path) {
        return QVariantMap{{QStringLiteral("title"), title}, {QStringLiteral("path"), path}};
    };
    hooks.places = {place(QStringLiteral("Settings"),
                          identity::preferencesPath(QLatin1StringView(identity::bundleIdentifier))),
                    place(QStringLiteral("Data: notes, to-dos, quick apps, calendars"), dataFolder),
                    place(QStringLiteral("Tray files"), m_tray->trayFolder()),
                    place(QStringLiteral("Shortcuts"), dataFolder + QStringLiteral("/Shortcuts")),
                    place(QStringLiteral("Start at login"), m_autostart->entryPath())};
    hooks.cameras = [this] {
        QVariantList list;
        for (const CameraInfo& camera : m_cameras->cameras())
            list << QVariantMap{{QStringLiteral("value"), camera.id}, {QStringLiteral("title"), camera.description}};
        return list;
    };
    hooks.showChangeLog = [this] { showChangeLog(false); };
    m_settingsWindow = std::make_unique<SettingsWindow>(m_windowFactory.engine(), m_settings, std::move(hooks));
    // The application's own windows take the desktop's light or dark colours, as they change.
    m_colorScheme = std::make_unique<DesktopColorScheme>();
    connect(m_colorScheme.get(), &DesktopColorScheme::changed, this, [this](bool dark) {
        m_settingsWindow->setDark(dark);
        if (m_changeLogWindow)
            m_changeLogWindow->setProperty("dark", dark);
    });
    connect(m_windowsManager.get(), &WindowsManager::settingsRequested, m_settingsWindow.get(),
            &SettingsWindow::show);

    // No dock or task bar presence: every notch window tells the window manager to leave it out
    // of the task bar and pager as it is first shown. The settings window is an ordinary window.

    setupMenu();
    startBriVolKeyListener();
    m_appInitialized = true;
}

void AppDelegate::showChangeLog(bool afterUpdate)
{
    QFile file(QStringLiteral(":/kelvane/CHANGELOG.md"));
    const QList<Release> log = file.open(QIODevice::ReadOnly) ? parseChangeLog(QString::fromUtf8(file.readAll()))
                                                              : QList<Release>();
    const QVersionNumber running = QVersionNumber::fromString(QLatin1StringView(identity::version));
    const QList<Release> releases = afterUpdate ? releasesSinceLastRun(m_settings, running, log) : log;
    if (releases.isEmpty())
        return;
    QVariantList list;
    for (const Release& release : releases)
        list << QVariantMap{{QStringLiteral("version"), release.version.toString()},
                            {QStringLiteral("date"), release.date},
                            {QStringLiteral("changes"), release.changes}};
    QQmlComponent component(&m_windowFactory.engine(), QUrl(QStringLiteral("qrc:/kelvane/ui/ChangeLogWindow.qml")));
    QObject* root = component.createWithInitialProperties(
        {{QStringLiteral("releases"), list},
         {QStringLiteral("afterUpdate"), afterUpdate},
         {QStringLiteral("dark"), m_colorScheme && m_colorScheme->prefersDark()}});
    m_changeLogWindow.reset(qobject_cast<QQuickWindow*>(root));
    if (!m_changeLogWindow) {
        delete root;
        logLine(u"AppDelegate", component.errorString().trimmed());
        return;
    }
    m_changeLogWindow->show();
    m_changeLogWindow->raise();
    m_changeLogWindow->requestActivate();
}

void AppDelegate::startBriVolKeyListener()
{
    // A laptop's own panel is the built-in display.
    const auto followMainScreen = [this] {
        const QScreen* screen = QGuiApplication::primaryScreen();
        m_mainScreenIsBuiltIn = screen && isBuiltInPanel(screen->name());
    };
    followMainScreen();
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, followMainScreen);

    m_brightness = std::make_unique<BacklightBrightnessService>(BacklightBrightnessService::defaultRoot(),
                                                                QDBusConnection::systemBus());
    m_wake = std::make_unique<SessionWakeEvents>(QDBusConnection::sessionBus(), QDBusConnection::systemBus());
    const auto post = [this](const Indicator& indicator) {
        QMetaObject::invokeMethod(this, Handed([this, indicator] { showIndicator(indicator); }), Qt::QueuedConnection);
    };
    m_levelKeys = std::make_unique<LevelKeys>(LevelKeys::Dependencies{
        m_volume, *m_brightness, [this](MediaKey key) { return m_keySource.grabbedElsewhere(key); }, post,
        [](std::chrono::milliseconds delay) { std::this_thread::sleep_for(delay); }});
    m_keyListener = std::make_unique<VolumeAndBrightnessListener>(VolumeAndBrightnessListener::Dependencies{
        m_scheduler, m_keySource, *m_wake, [this] { return m_mainScreenIsBuiltIn.load(); },
        [this](std::function<void()> work) { m_hudQueue.async(std::move(work)); },
        [this] { m_hud.disableSystemHUD(); }, [this] { m_hud.enableSystemHUD(); }});
    m_brightnessWatch = std::make_unique<BacklightWatch>(*m_brightness, BacklightBrightnessService::defaultRoot());
    m_levelFollower = std::make_unique<LevelFollower>(
        LevelFollower::Dependencies{m_volumeWatch, *m_brightnessWatch, m_scheduler.clock(), post});
    // The key's own indicator shows the change it makes: the follower is told first.
    m_keyListener->setSideEffect(QStringLiteral("notch"), [this](MediaKey key) {
        m_levelFollower->keyObserved(key);
        (*m_levelKeys)(key);
    });
    m_liveActivitiesSettings = std::make_unique<SettingValue<LiveActivitiesSettings>>(
        m_settings, Keys::liveActivitiesSettings(), this,
        [this](const LiveActivitiesSettings& settings) { followHUDReplacementSetting(settings); });
    followHUDReplacementSetting(m_liveActivitiesSettings->get());
}

void AppDelegate::followHUDReplacementSetting(const LiveActivitiesSettings& settings)
{
    if (settings.enableHUDReplacement == m_keyListener->isRunning())
        return;
    if (!settings.enableHUDReplacement) {
        m_keyListener->stop();
        m_levelFollower->stop();
        return;
    }
    m_keyListener->start();
    m_levelFollower->start();
    if (insideWaylandSession())
        logLine(u"HUD", QStringLiteral("A Wayland session keeps the volume and brightness keys to itself: the indicator "
                                       "follows the levels of the sound server and the backlight"));
    else if (!m_keyListener->isObservingKeys())
        logLine(u"HUD", QStringLiteral("The volume and brightness keys cannot be observed here: the indicator follows "
                                       "the levels of the sound server and the backlight"));
    else
        logLine(u"HUD", QStringLiteral("The indicator shows on the volume and brightness keys (XInput 2), and on level "
                                       "changes made without them"));
}

void AppDelegate::showIndicator(const Indicator& indicator)
{
    if (m_windowsManager && m_liveActivitiesSettings)
        m_windowsManager->showIndicator(indicator, (*m_liveActivitiesSettings)->HUDReplacementShouldShowInAllScreens);
}

void AppDelegate::removeUpdateAvailableActivity()
{
    m_settings.update(Keys::liveActivitiesSettings(), [](LiveActivitiesSettings& settings) {
        settings.enabledLiveActivities.erase(LiveActivity::updateAvailable);
    });
}

void AppDelegate::setupMenu()
{
    m_nsMenu = std::make_unique<ApplicationMenu>([this](ApplicationMenu::Action action) {
        if (action == ApplicationMenu::Action::showSettings)
            showSettings();
        else if (action == ApplicationMenu::Action::quit)
            terminate();
    });
}

void AppDelegate::applicationWillTerminate()
{
    if (m_terminated)
        return;
    m_terminated = true;
    // Never leave the desktop without its own volume and brightness pop-up. Anything still queued
    // for the pop-up helper runs first.
    m_hudQueue.sync([this] { m_hud.enableSystemHUD(); });
    // A copy into the tray never holds the end up for more than a moment.
    if (m_tray)
        m_tray->shutdown();
    // Settings reach the disk as they change; the notes keep what is being typed until it is saved.
    if (m_notes)
        if (const auto error = m_notes->save())
            emitLine(QStringLiteral("[Notes] applicationWillTerminate save failed: ") + *error);
}

bool AppDelegate::applicationShouldHandleReopen(bool /*hasVisibleWindows*/)
{
    showSettings();
    return true;
}

void AppDelegate::openUrls(const QList<QUrl>& /*urls*/) { showSettings(); }

void AppDelegate::showSettings(const QString& pane)
{
    if (m_windowsManager)
        m_windowsManager->showSettings(pane);
}

void AppDelegate::terminate() { QCoreApplication::quit(); }

} // namespace kelvane
