#include "SettingsWindow.h"

#include "SettingsRecordModel.h"

#include "core/Log.h"
#include "settings/SettingsStore.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>

namespace kelvane {

SettingsWindow::SettingsWindow(QQmlEngine& engine, SettingsStore& settings, std::function<void()> quit,
                               QObject* parent)
    : QObject(parent)
    , m_engine(engine)
    , m_settings(settings)
    , m_quit(std::move(quit))
{
}

SettingsWindow::~SettingsWindow() = default;

QStringList SettingsWindow::panes() { return {QStringLiteral("general")}; }

void SettingsWindow::create()
{
    m_general = std::make_unique<SettingsRecordModel>(m_settings, QStringLiteral("generalSettings"));
    QQmlComponent component(&m_engine, QUrl(QStringLiteral("qrc:/kelvane/ui/SettingsWindow.qml")));
    QObject* root = component.createWithInitialProperties({
        {QStringLiteral("settingsWindow"), QVariant::fromValue(static_cast<QObject*>(this))},
        {QStringLiteral("general"), QVariant::fromValue(static_cast<QObject*>(m_general.get()))},
    });
    m_window.reset(qobject_cast<QQuickWindow*>(root));
    if (!m_window) {
        delete root;
        for (const QQmlError& error : component.errors())
            logLine(u"SettingsWindow", error.toString());
    }
}

void SettingsWindow::show(const QString& pane)
{
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

void SettingsWindow::resetDefaults() { m_settings.resetDefaults(); }

void SettingsWindow::quit()
{
    if (m_quit)
        m_quit();
}

} // namespace kelvane
