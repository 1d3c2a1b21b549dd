#include "ScriptingService.h"

#include "AppDelegate.h"
#include "media/MediaCommands.h"
#include "tray/TrayCommands.h"
#include "Identity.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimer>
#include <QUrl>

namespace kelvane {

namespace {
// JSON text of any value, scalars included.
QString jsonText(const QJsonValue& value)
{
    const QByteArray wrapped = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(wrapped.sliced(1, wrapped.size() - 2));
}

std::optional<QJsonValue> parseJson(const QString& text, QString& error)
{
    QJsonParseError parse;
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray("[") + text.toUtf8() + QByteArray("]"), &parse);
    if (parse.error != QJsonParseError::NoError || document.array().size() != 1) {
        error = parse.error != QJsonParseError::NoError ? parse.errorString()
                                                        : QStringLiteral("expected one value");
        return std::nullopt;
    }
    return document.array().first();
}
} // namespace

ScriptingService::ScriptingService(QObject* parent)
    : QObject(parent)
{
}

QString ScriptingService::errorName()
{
    return QLatin1StringView(identity::interfaceName) + QStringLiteral(".Error");
}

bool ScriptingService::ready()
{
    if (m_delegate && m_delegate->appInitialized())
        return true;
    fail(QStringLiteral("Kelvane is still starting."));
    return false;
}

void ScriptingService::fail(const QString& message)
{
    if (calledFromDBus())
        sendErrorReply(errorName(), message);
}

void ScriptingService::failOn(const std::optional<QString>& error)
{
    if (error)
        fail(*error);
}

void ScriptingService::Reopen()
{
    if (ready())
        m_delegate->applicationShouldHandleReopen(true);
}

void ScriptingService::OpenURLs(const QStringList& urls)
{
    if (!ready())
        return;
    QList<QUrl> list;
    for (const QString& url : urls)
        list << QUrl(url);
    m_delegate->openUrls(list);
}

void ScriptingService::ShowSettings(const QString& pane)
{
    if (!ready())
        return;
    if (!pane.isEmpty() && !SettingsWindow::panes().contains(pane)) {
        fail(QStringLiteral("Unknown settings pane \"%1\": use %2.")
                 .arg(pane, SettingsWindow::panes().join(QStringLiteral(", "))));
        return;
    }
    m_delegate->showSettings(pane);
}

QString ScriptingService::State()
{
    if (!ready())
        return {};
    return QString::fromUtf8(QJsonDocument(m_delegate->notchCommands()->state()).toJson(QJsonDocument::Indented));
}

void ScriptingService::Open(const QString& tab, const QString& screen)
{
    if (ready())
        if (auto error = m_delegate->notchCommands()->open(tab, screen))
            fail(*error);
}

void ScriptingService::Close(const QString& screen)
{
    if (ready())
        if (auto error = m_delegate->notchCommands()->close(screen))
            fail(*error);
}

void ScriptingService::Hide(const QString& screen)
{
    if (ready())
        if (auto error = m_delegate->notchCommands()->hide(screen))
            fail(*error);
}

void ScriptingService::Calibrate(const QString& what, const QString& screen)
{
    if (ready())
        if (auto error = m_delegate->notchCommands()->calibrate(what, screen))
            fail(*error);
}

void ScriptingService::Select(const QString& tab, const QString& screen)
{
    if (ready())
        if (auto error = m_delegate->notchCommands()->select(tab, screen))
            fail(*error);
}

QStringList ScriptingService::SettingKeys() { return SettingsStore::keyNames(); }

QString ScriptingService::GetSetting(const QString& key)
{
    if (!ready())
        return {};
    const auto value = m_delegate->settings().jsonValue(key);
    if (!value) {
        fail(QStringLiteral("Unknown setting \"%1\".").arg(key));
        return {};
    }
    return jsonText(*value);
}

void ScriptingService::SetSetting(const QString& key, const QString& json)
{
    if (!ready())
        return;
    QString parseError;
    const auto value = parseJson(json, parseError);
    if (!value) {
        fail(QStringLiteral("Not JSON (%1); nothing was written.").arg(parseError));
        return;
    }
    switch (m_delegate->settings().setJsonValue(key, *value)) {
    case SettingsStore::WriteResult::written:
        return;
    case SettingsStore::WriteResult::unknownKey:
        fail(QStringLiteral("Unknown setting \"%1\".").arg(key));
        return;
    case SettingsStore::WriteResult::invalidValue:
        fail(QStringLiteral("The value is not a valid %1; nothing was written.").arg(key));
        return;
    }
}

void ScriptingService::ResetSettings()
{
    if (ready())
        m_delegate->settings().resetDefaults();
}

QString ScriptingService::Activities()
{
    if (!ready())
        return {};
    QJsonObject state = m_delegate->selectedLiveActivity()->state();
    state.insert(QStringLiteral("battery"), m_delegate->power()->state());
    state.insert(QStringLiteral("bluetooth"), m_delegate->bluetooth()->state());
    return QString::fromUtf8(QJsonDocument(state).toJson(QJsonDocument::Indented));
}

QString ScriptingService::Calendar()
{
    if (!ready())
        return {};
    return QString::fromUtf8(QJsonDocument(m_delegate->calendar()->eventsJson()).toJson(QJsonDocument::Indented));
}

QString ScriptingService::CalendarSources()
{
    if (!ready())
        return {};
    const QJsonObject sources{
        {QStringLiteral("files"), QJsonArray::fromStringList(m_delegate->calendarFiles()->paths())},
        {QStringLiteral("calendars"), QJsonArray::fromVariantList(m_delegate->calendar()->calendars())}};
    return QString::fromUtf8(QJsonDocument(sources).toJson(QJsonDocument::Indented));
}

void ScriptingService::CalendarAddSource(const QString& path)
{
    if (!ready())
        return;
    if (const QString error = m_delegate->calendarFiles()->add(path); !error.isEmpty())
        fail(error);
}

void ScriptingService::CalendarRemoveSource(const QString& path)
{
    if (!ready())
        return;
    if (const QString error = m_delegate->calendarFiles()->remove(path); !error.isEmpty())
        fail(error);
}

QString ScriptingService::Timers()
{
    if (!ready())
        return {};
    return QString::fromUtf8(QJsonDocument(m_delegate->timerCommands()->list()).toJson(QJsonDocument::Indented));
}

QString ScriptingService::AddTimer(const QString& label, const QString& duration)
{
    if (!ready())
        return {};
    const TimerCommands::Added added = m_delegate->timerCommands()->add(label, duration);
    failOn(added.error);
    return added.timer ? added.timer->idText() : QString();
}

void ScriptingService::PauseTimer(const QString& id)
{
    if (ready())
        failOn(m_delegate->timerCommands()->pause(id));
}

void ScriptingService::ResumeTimer(const QString& id)
{
    if (ready())
        failOn(m_delegate->timerCommands()->resume(id));
}

void ScriptingService::CancelTimer(const QString& id)
{
    if (ready())
        failOn(m_delegate->timerCommands()->cancel(id));
}

std::function<void(int)> ScriptingService::replyLater()
{
    setDelayedReply(true);
    return [reply = message().createReply(), bus = connection()](int count) mutable {
        reply << count;
        bus.send(reply);
    };
}

QString ScriptingService::TrayList()
{
    if (!ready())
        return {};
    return QString::fromUtf8(QJsonDocument(TrayCommands::list(*m_delegate->tray())).toJson(QJsonDocument::Indented));
}

int ScriptingService::TrayAdd(const QStringList& paths)
{
    if (!ready())
        return 0;
    if (const auto error = TrayCommands::checkFiles(paths)) {
        fail(*error);
        return 0;
    }
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    m_delegate->tray()->addFilesFromURLs(urls, replyLater());
    return 0;
}

int ScriptingService::TrayPaste()
{
    if (!ready())
        return 0;
    m_delegate->tray()->pasteFromClipboard(replyLater());
    return 0;
}

void ScriptingService::TrayRemove(const QString& nameOrId)
{
    if (ready())
        failOn(TrayCommands::remove(*m_delegate->tray(), nameOrId));
}

namespace {
QString indented(const QJsonValue& value)
{
    return value.isArray() ? QString::fromUtf8(QJsonDocument(value.toArray()).toJson(QJsonDocument::Indented))
                           : QString::fromUtf8(QJsonDocument(value.toObject()).toJson(QJsonDocument::Indented));
}

std::optional<qint64> idOf(const QString& text)
{
    bool ok = false;
    const qint64 id = text.trimmed().toLongLong(&ok);
    return ok && id > 0 ? std::optional(id) : std::nullopt;
}
} // namespace

std::optional<qint64> ScriptingService::named(Kind kind, const QString& id)
{
    const auto number = idOf(id);
    const NotesManager& notes = *m_delegate->notes();
    if (number && (kind == Kind::note ? notes.note(*number) != nullptr : notes.todo(*number) != nullptr))
        return number;
    fail((kind == Kind::note ? QStringLiteral("No note %1.") : QStringLiteral("No to-do %1.")).arg(id));
    return std::nullopt;
}

std::function<void(const std::optional<QString>&)> ScriptingService::replyWhenSaved(const QVariant& value)
{
    setDelayedReply(true);
    return [message = message(), bus = connection(), value](const std::optional<QString>& error) mutable {
        if (error) {
            bus.send(message.createErrorReply(errorName(), QStringLiteral("Not saved: %1").arg(*error)));
            return;
        }
        QDBusMessage reply = message.createReply();
        if (value.isValid())
            reply << value;
        bus.send(reply);
    };
}

QString ScriptingService::Notes() { return ready() ? indented(m_delegate->notes()->notesJson()) : QString(); }

QString ScriptingService::NoteShow(const QString& id)
{
    if (!ready())
        return {};
    const auto number = named(Kind::note, id);
    return number ? indented(m_delegate->notes()->noteJson(*m_delegate->notes()->note(*number))) : QString();
}

QString ScriptingService::NoteAdd(const QString& text)
{
    if (!ready())
        return {};
    if (text.trimmed().isEmpty()) {
        fail(QStringLiteral("A note needs some text."));
        return {};
    }
    NotesManager& notes = *m_delegate->notes();
    notes.addNote(text, replyWhenSaved(QString::number(notes.nextNoteId())));
    return {};
}

void ScriptingService::NoteRemove(const QString& id)
{
    if (!ready())
        return;
    if (const auto number = named(Kind::note, id))
        m_delegate->notes()->removeNote(*number, replyWhenSaved());
}

QString ScriptingService::Todos() { return ready() ? indented(m_delegate->notes()->todosJson()) : QString(); }

QString ScriptingService::TodoAdd(const QString& text)
{
    if (!ready())
        return {};
    if (text.trimmed().isEmpty()) {
        fail(QStringLiteral("A to-do needs some text."));
        return {};
    }
    NotesManager& notes = *m_delegate->notes();
    const qint64 id = notes.nextTodoId();
    notes.addTodo(text, replyWhenSaved(QString::number(id)));
    return {};
}

void ScriptingService::TodoSetDone(const QString& id, bool done)
{
    if (!ready())
        return;
    if (const auto number = named(Kind::todo, id))
        m_delegate->notes()->setTodoDone(*number, done, replyWhenSaved());
}

void ScriptingService::TodoRemove(const QString& id)
{
    if (!ready())
        return;
    if (const auto number = named(Kind::todo, id))
        m_delegate->notes()->removeTodo(*number, replyWhenSaved());
}

QString ScriptingService::Apps(const QString& search)
{
    if (!ready())
        return {};
    const QuickAppsManager& apps = *m_delegate->quickApps();
    QJsonArray installed;
    for (const QVariant& entry : apps.searchList(search)) {
        const QVariantMap app = entry.toMap();
        installed.append(QJsonObject{{QStringLiteral("id"), app.value(QStringLiteral("id")).toString()},
                                     {QStringLiteral("name"), app.value(QStringLiteral("name")).toString()},
                                     {QStringLiteral("chosen"), app.value(QStringLiteral("chosen")).toBool()}});
    }
    return indented(QJsonObject{{QStringLiteral("chosen"), QJsonArray::fromStringList(apps.chosenIds())},
                                {QStringLiteral("installed"), installed}});
}

void ScriptingService::AppAdd(const QString& id)
{
    if (!ready())
        return;
    const QString error = m_delegate->quickApps()->add(id);
    failOn(error.isEmpty() ? std::nullopt : std::optional(error));
}

void ScriptingService::AppRemove(const QString& id)
{
    if (!ready())
        return;
    const QString error = m_delegate->quickApps()->remove(id);
    failOn(error.isEmpty() ? std::nullopt : std::optional(error));
}

QString ScriptingService::Mirror()
{
    if (!ready())
        return {};
    const MirrorController& mirror = *m_delegate->mirror();
    QJsonArray cameras;
    for (const CameraInfo& camera : m_delegate->cameras()->cameras())
        cameras.append(QJsonObject{{QStringLiteral("id"), camera.id},
                                   {QStringLiteral("description"), camera.description},
                                   {QStringLiteral("default"), camera.isDefault}});
    return indented(QJsonObject{
        {QStringLiteral("state"), mirror.state()},
        {QStringLiteral("message"), mirror.message()},
        {QStringLiteral("device"), mirror.deviceId()},
        {QStringLiteral("open"), mirror.isOpen()},
        {QStringLiteral("cameras"), cameras},
    });
}

QString ScriptingService::Effects()
{
    if (!ready())
        return {};
    const AudioVisualizer& visualizer = *m_delegate->visualizer();
    const CurrentWallpaperManager& wallpaper = *m_delegate->wallpaper();
    const GlassLook& glass = *m_delegate->glass();
    QJsonArray bars, colours;
    for (const qreal bar : visualizer.bars())
        bars.append(bar);
    for (const QColor& colour : wallpaper.colors())
        colours.append(colour.name());
    static const char* const sources[] = {"gnome", "kde", "rootWindow", "none"};
    return indented(QJsonObject{
        {QStringLiteral("effect"), m_delegate->mediaStyle()->effect()},
        {QStringLiteral("capturing"), visualizer.capturing()},
        {QStringLiteral("bars"), bars},
        {QStringLiteral("desktopPicture"),
         QJsonObject{{QStringLiteral("source"), QLatin1String(sources[int(m_delegate->wallpaperSource()->kind())])},
                     {QStringLiteral("width"), wallpaper.picture().width()},
                     {QStringLiteral("height"), wallpaper.picture().height()},
                     {QStringLiteral("colors"), colours}}},
        {QStringLiteral("glass"), QJsonObject{{QStringLiteral("enabled"), glass.enabled()},
                                              {QStringLiteral("backdrop"), glass.backdrop()}}},
    });
}

QString ScriptingService::Shortcuts()
{
    if (!ready())
        return {};
    ShortcutsManager& shortcuts = *m_delegate->shortcuts();
    QStringList shown;
    for (const QVariant& entry : shortcuts.shown())
        shown << entry.toMap().value(QStringLiteral("name")).toString();
    QJsonArray list;
    for (const ShortcutsManager::Shortcut* shortcut : shortcuts.all()) {
        static const char* const states[] = {"idle", "running", "done", "failed"};
        list.append(QJsonObject{
            {QStringLiteral("name"), shortcut->name},
            {QStringLiteral("path"), shortcut->path},
            {QStringLiteral("executable"), shortcut->executable},
            {QStringLiteral("shown"), shown.contains(shortcut->name)},
            {QStringLiteral("state"), QLatin1StringView(states[int(shortcut->state)])},
            {QStringLiteral("exitStatus"), shortcut->exitStatus ? QJsonValue(*shortcut->exitStatus) : QJsonValue()},
            {QStringLiteral("lastLine"), shortcut->lastLine},
        });
    }
    return indented(list);
}

void ScriptingService::ShortcutRun(const QString& name, const QStringList& files)
{
    if (!ready())
        return;
    ShortcutsManager& shortcuts = *m_delegate->shortcuts();
    if (files.isEmpty()) {
        const QString error = shortcuts.runWithSelection(name);
        failOn(error.isEmpty() ? std::nullopt : std::optional(error));
        return;
    }
    failOn(shortcuts.run(name, files));
}

void ScriptingService::ShortcutStop(const QString& name)
{
    if (!ready())
        return;
    if (!m_delegate->shortcuts()->shortcut(name)) {
        fail(QStringLiteral("There is no shortcut %1.").arg(name));
        return;
    }
    m_delegate->shortcuts()->stop(name);
}

QString ScriptingService::Media()
{
    if (!ready())
        return {};
    return QString::fromUtf8(QJsonDocument(mediaState(*m_delegate->media())).toJson(QJsonDocument::Indented));
}

void ScriptingService::MediaCommand(const QStringList& words)
{
    if (ready())
        failOn(performMediaCommand(*m_delegate->media(), words));
}

void ScriptingService::Quit()
{
    if (!ready())
        return;
    // The reply goes out first; the application ends from the main loop.
    QTimer::singleShot(0, m_delegate, [delegate = m_delegate] { delegate->terminate(); });
}

} // namespace kelvane
