#include "QuickNotchWindowFactory.h"
#include "LiveImage.h"

#include "ImageProviders.h"
#include "NotchDropView.h"
#include "NotchShape.h"
#include "QuickNotchWindow.h"
#include "SpringValue.h"
#include "WidgetGridModel.h"

#include "CodeHighlighter.h"
#include "MarkdownRendering.h"
#include "RoundedImage.h"
#include "SettingsRecordModel.h"
#include "SoundShape.h"
#include "activities/BluetoothManager.h"
#include "activities/PowerMonitor.h"
#include "activities/SelectedLiveActivity.h"
#include "calendar/CalendarFileList.h"
#include "calendar/CalendarManager.h"
#include "effects/CurrentWallpaperManager.h"
#include "media/MediaManager.h"
#include "notch/ExpandedNoteManager.h"
#include "notch/KelvaneState.h"
#include "notch/NotchController.h"
#include "notch/NotchGestures.h"
#include "notch/NotchViewModel.h"
#include "notch/WindowsManager.h"
#include "notes/NotesManager.h"
#include "effects/AudioVisualizer.h"
#include "timers/TimerCommands.h"
#include "timers/TuckleTimersStore.h"
#include "tray/Tray.h"

#include <QCoreApplication>
#include <QQmlEngine>

namespace kelvane {

void QuickNotchWindowFactory::registerTypes()
{
    static bool registered = false;
    if (registered)
        return;
    registered = true;
    const char* uri = "Kelvane";
    qmlRegisterType<SpringValue>(uri, 1, 0, "SpringValue");
    const QString owned = QStringLiteral("owned by the window manager");
    qmlRegisterUncreatableType<KelvaneState>(uri, 1, 0, "KelvaneState", owned);
    qmlRegisterUncreatableType<NotchViewModel>(uri, 1, 0, "NotchViewModel", owned);
    qmlRegisterUncreatableType<NotchController>(uri, 1, 0, "NotchController", owned);
    qmlRegisterUncreatableType<NotchGestures>(uri, 1, 0, "NotchGestures", owned);
    qmlRegisterUncreatableType<WindowsManager>(uri, 1, 0, "WindowsManager", owned);
    qmlRegisterUncreatableType<QuickNotchWindow>(uri, 1, 0, "NotchWindow", owned);
    const QString application = QStringLiteral("owned by the application");
    qmlRegisterUncreatableType<SelectedLiveActivity>(uri, 1, 0, "SelectedLiveActivity", application);
    qmlRegisterUncreatableType<PowerMonitor>(uri, 1, 0, "PowerMonitor", application);
    qmlRegisterUncreatableType<BluetoothManager>(uri, 1, 0, "BluetoothManager", application);
    qmlRegisterUncreatableType<CalendarManager>(uri, 1, 0, "CalendarManager", application);
    qmlRegisterUncreatableType<CalendarFileList>(uri, 1, 0, "CalendarFileList", application);
    qmlRegisterUncreatableType<TuckleTimersStore>(uri, 1, 0, "TimersStore", application);
    qmlRegisterUncreatableType<TimerCommands>(uri, 1, 0, "TimerCommands", application);
    qmlRegisterUncreatableType<TimerEntry>(uri, 1, 0, "TimerEntry", application);
    qmlRegisterUncreatableType<MediaManager>(uri, 1, 0, "MediaManager", application);
    qmlRegisterUncreatableType<Tray>(uri, 1, 0, "Tray", application);
    qmlRegisterUncreatableType<TrayFile>(uri, 1, 0, "TrayFile", application);
    qmlRegisterUncreatableType<DropZone>(uri, 1, 0, "DropZone", owned);
    qmlRegisterType<NotchDropView>(uri, 1, 0, "NotchDropView");
    qmlRegisterType<LiveImage>(uri, 1, 0, "LiveImage");
    qmlRegisterType<SoundShape>(uri, 1, 0, "SoundShape");
    qmlRegisterType<RoundedImage>(uri, 1, 0, "RoundedImage");
    qmlRegisterType<NotchShape>(uri, 1, 0, "NotchShape");
    qmlRegisterType<CodeHighlighter>(uri, 1, 0, "CodeHighlighter");
    qmlRegisterSingletonType<MarkdownRendering>(
        uri, 1, 0, "Markdown", [](QQmlEngine*, QJSEngine*) -> QObject* { return new MarkdownRendering; });
    qmlRegisterUncreatableType<NotesManager>(uri, 1, 0, "NotesManager", application);
    qmlRegisterUncreatableType<NoteListModel>(uri, 1, 0, "NoteListModel", application);
    qmlRegisterUncreatableType<TodoListModel>(uri, 1, 0, "TodoListModel", application);
    qmlRegisterUncreatableType<ExpandedNoteManager>(uri, 1, 0, "ExpandedNoteManager", owned);
    qmlRegisterUncreatableType<SettingsRecordModel>(uri, 1, 0, "SettingsRecord", application);
    qmlRegisterUncreatableType<WidgetGridModel>(uri, 1, 0, "WidgetGridModel", application);
    qmlRegisterUncreatableType<AudioVisualizer>(uri, 1, 0, "AudioVisualizer", application);
}

QuickNotchWindowFactory::QuickNotchWindowFactory()
{
    registerTypes();
    // The notch menu's "Quit" ends the application as the quit key does.
    QObject::connect(&m_engine, &QQmlEngine::quit, QCoreApplication::instance(), &QCoreApplication::quit,
                     Qt::QueuedConnection);
}

std::unique_ptr<NotchWindow> QuickNotchWindowFactory::createWindow(const NotchWindowSetup& setup)
{
    std::unique_ptr<DropZone> dropZone = m_dropZoneMaker && setup.kelvane ? m_dropZoneMaker(*setup.kelvane) : nullptr;
    return std::make_unique<QuickNotchWindow>(setup, m_engine, m_services, std::move(dropZone));
}

void QuickNotchWindowFactory::setServices(QVariantMap services)
{
    m_services = std::move(services);
    if (auto* media = qobject_cast<MediaManager*>(m_services.value(QStringLiteral("media")).value<QObject*>())) {
        m_engine.removeImageProvider(QStringLiteral("media"));
        m_engine.addImageProvider(QStringLiteral("media"), new MediaArtworkProvider(media));
    }
    if (auto* tray = qobject_cast<Tray*>(m_services.value(QStringLiteral("tray")).value<QObject*>())) {
        m_engine.removeImageProvider(QStringLiteral("tray"));
        m_engine.addImageProvider(QStringLiteral("tray"), new TrayImageProvider(tray));
        m_engine.addImageProvider(QStringLiteral("pdfpage"), new PdfPageProvider);
    }
    if (auto* wallpaper = qobject_cast<CurrentWallpaperManager*>(m_services.value(QStringLiteral("wallpaper")).value<QObject*>())) {
        m_engine.removeImageProvider(QStringLiteral("glass"));
        m_engine.addImageProvider(QStringLiteral("glass"), new GlassBackdropProvider(wallpaper->sharedPicture()));
    }
    if (!m_engine.imageProvider(QStringLiteral("icon")))
        m_engine.addImageProvider(QStringLiteral("icon"), new ThemeIconProvider);
}

} // namespace kelvane
