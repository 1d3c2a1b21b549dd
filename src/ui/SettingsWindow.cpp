#include "SettingsWindow.h"

#include "CodeHighlighter.h"
#include "SettingsRecordModel.h"

#include "core/Log.h"
#include "core/LoginItem.h"
#include "settings/SettingsStore.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QScreen>
#include <QUrl>

namespace kelvane {

namespace {
struct Pane {
    const char* name;
    QStringList settings;
};

// Each setting the user edits, with the pane that owns it. The version last run is the
// application's own record and has no control.
const std::vector<Pane>& paneTable()
{
    static const std::vector<Pane> table{
        {"general", {"generalSettings", "preferredOpenMode", "autoOpenTrayWithFiles", "rememberLastOpenTab", "intro"}},
        {"liquid", {"liquidBasicSettings", "liquidGlassSettings"}},
        {"gestures", {"gestureControlSettings"}},
        {"tuckle",
         {"tuckleSettings", "mediaWidgetSettings", "calendarWidgetSettings", "shortcutsWidgetSettings",
          "mirrorWidgetSettings", "defaultMirrorDevice", "mirrorCameraInputWhenAvail", "notesWidgetSettings",
          "todoListWidgetSettings", "quickAppsWidgetSettings", "timerWidgetSettings"}},
        {"tray", {"traySettings"}},
        {"dropArea", {"dropAreaSettings"}},
        {"liveActivities",
         {"liveActivitiesSettings", "mediaLiveActivitySettings", "calendarLiveActivitySettings",
          "batteryLiveActivitySettings"}},
        {"about", {}},
    };
    return table;
}

// The smallest frame worth restoring; a smaller one is what a broken session left behind.
constexpr int minimumSavedWidth = 200;
constexpr int minimumSavedHeight = 120;

std::optional<QRect> parseFrame(const QVariant& stored)
{
    const QStringList parts = stored.toString().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (parts.size() != 4)
        return std::nullopt;
    int numbers[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        numbers[i] = parts[i].toInt(&ok);
        if (!ok)
            return std::nullopt;
    }
    return QRect(numbers[0], numbers[1], numbers[2], numbers[3]);
}
} // namespace

SettingsWindow::SettingsWindow(QQmlEngine& engine, SettingsStore& settings, Hooks hooks, QObject* parent)
    : QObject(parent)
    , m_engine(engine)
    , m_settings(settings)
    , m_hooks(std::move(hooks))
{
    SettingsDomain& domain = m_settings.domain();
    if (domain.contains(QLatin1StringView(frameKey))) {
        const std::optional<QRect> frame = savedFrame();
        if (!frame || frame->width() < minimumSavedWidth || frame->height() < minimumSavedHeight)
            domain.remove(QLatin1StringView(frameKey));
    }
}

SettingsWindow::~SettingsWindow()
{
    if (isVisible())
        saveFrame();
}

QStringList SettingsWindow::panes()
{
    QStringList names;
    for (const Pane& pane : paneTable())
        names << QLatin1StringView(pane.name);
    return names;
}

QStringList SettingsWindow::settingsOf(const QString& pane)
{
    for (const Pane& entry : paneTable())
        if (pane == QLatin1StringView(entry.name))
            return entry.settings;
    return {};
}

QObject* SettingsWindow::setting(const QString& key)
{
    auto& record = m_records[key];
    if (!record)
        record = std::make_unique<SettingsRecordModel>(m_settings, key);
    return record.get();
}

std::optional<QRect> SettingsWindow::savedFrame() const
{
    return parseFrame(m_settings.domain().value(QLatin1StringView(frameKey)));
}

void SettingsWindow::saveFrame()
{
    if (!m_window)
        return;
    const QRect frame = m_window->geometry();
    m_settings.domain().setValue(QLatin1StringView(frameKey), QStringLiteral("%1 %2 %3 %4")
                                                                  .arg(frame.x())
                                                                  .arg(frame.y())
                                                                  .arg(frame.width())
                                                                  .arg(frame.height()));
}

void SettingsWindow::create()
{
    QVariantMap initial{{QStringLiteral("settingsWindow"), QVariant::fromValue(static_cast<QObject*>(this))}};
    // Back where the user left it, as long as some screen still shows most of it; else only its size.
    if (const std::optional<QRect> frame = savedFrame()) {
        const QRect within = frame->adjusted(frame->width() / 4, frame->height() / 4, -frame->width() / 4,
                                             -frame->height() / 4);
        const QList<QScreen*> screens = QGuiApplication::screens();
        if (std::any_of(screens.begin(), screens.end(),
                        [&](const QScreen* screen) { return screen->geometry().intersects(within); })) {
            initial.insert(QStringLiteral("x"), frame->x());
            initial.insert(QStringLiteral("y"), frame->y());
        }
        initial.insert(QStringLiteral("width"), frame->width());
        initial.insert(QStringLiteral("height"), frame->height());
    }
    QQmlComponent component(&m_engine, QUrl(QStringLiteral("qrc:/kelvane/ui/SettingsWindow.qml")));
    QObject* root = component.createWithInitialProperties(initial);
    m_window.reset(qobject_cast<QQuickWindow*>(root));
    if (!m_window) {
        delete root;
        for (const QQmlError& error : component.errors())
            logLine(u"SettingsWindow", error.toString());
        return;
    }
    connect(m_window.get(), &QWindow::visibleChanged, this, [this](bool visible) {
        if (!visible)
            saveFrame();
    });
}

void SettingsWindow::setDark(bool dark)
{
    if (dark == m_dark)
        return;
    m_dark = dark;
    Q_EMIT darkChanged();
}

void SettingsWindow::readStartAtLogin()
{
    // Read again each time the window comes forward: the desktop's own settings may have changed it.
    const bool start = m_hooks.loginItem && m_hooks.loginItem->isEnabled();
    if (start == m_startAtLogin && m_startAtLoginError.isEmpty())
        return;
    m_startAtLogin = start;
    m_startAtLoginError.clear();
    Q_EMIT startAtLoginChanged();
}

void SettingsWindow::setStartAtLogin(bool start)
{
    if (!m_hooks.loginItem)
        return;
    const std::optional<QString> error = m_hooks.loginItem->setEnabled(start);
    if (error)
        logLine(u"SettingsWindow", *error);
    m_startAtLoginError = error.value_or(QString());
    m_startAtLogin = m_hooks.loginItem->isEnabled();
    Q_EMIT startAtLoginChanged();
}

void SettingsWindow::show(const QString& pane)
{
    readStartAtLogin();
    if (!m_window)
        create();
    if (!m_window)
        return;
    if (!pane.isEmpty())
        Q_EMIT paneRequested(pane);
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

bool SettingsWindow::isVisible() const { return m_window && m_window->isVisible(); }

QString SettingsWindow::version() const { return QCoreApplication::applicationVersion(); }

void SettingsWindow::resetDefaults() { m_settings.resetDefaults(); }

void SettingsWindow::quit()
{
    if (m_hooks.quit)
        m_hooks.quit();
}

void SettingsWindow::calibrate(const QString& what)
{
    if (m_hooks.calibrate)
        m_hooks.calibrate(what);
}

void SettingsWindow::openPlace(const QString& path)
{
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        logLine(u"SettingsWindow", QStringLiteral("%1 could not be opened.").arg(path));
}

} // namespace kelvane

namespace kelvane {

QVariantList SettingsWindow::cameras() const { return m_hooks.cameras ? m_hooks.cameras() : QVariantList(); }

void SettingsWindow::showChangeLog()
{
    if (m_hooks.showChangeLog)
        m_hooks.showChangeLog();
}

QStringList SettingsWindow::codeLanguages() { return CodeHighlighter::languages(); }

} // namespace kelvane
