#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>

class QQmlEngine;
class QQuickWindow;

namespace kelvane {

class SettingsStore;
class SettingsRecordModel;

// The settings window: made on first use, then shown and brought forward on every request.
class SettingsWindow : public QObject {
    Q_OBJECT
    Q_PROPERTY(QStringList panes READ panes CONSTANT)
public:
    SettingsWindow(QQmlEngine& engine, SettingsStore& settings, std::function<void()> quit,
                   QObject* parent = nullptr);
    ~SettingsWindow() override;

    // The panes it has, by name.
    static QStringList panes();
    // Shows the window in front; an empty pane keeps the page that was shown last.
    void show(const QString& pane);
    bool isVisible() const;

    Q_INVOKABLE void resetDefaults();
    Q_INVOKABLE void quit();

Q_SIGNALS:
    void paneRequested(const QString& pane);

private:
    void create();

    QQmlEngine& m_engine;
    SettingsStore& m_settings;
    std::function<void()> m_quit;
    std::unique_ptr<SettingsRecordModel> m_general;
    std::unique_ptr<QQuickWindow> m_window;
};

} // namespace kelvane
