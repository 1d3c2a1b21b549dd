#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

namespace kelvane {

// Whether the desktop asks applications for dark colours: the appearance setting that GNOME, KDE
// and the other desktops publish through the XDG desktop portal ("color-scheme": 1 for dark),
// read without waiting and followed as it changes. Without a portal, light.
class DesktopColorScheme : public QObject {
    Q_OBJECT
public:
    explicit DesktopColorScheme(QDBusConnection bus = QDBusConnection::sessionBus(), QObject* parent = nullptr);

    bool prefersDark() const { return m_dark; }

Q_SIGNALS:
    void changed(bool dark);

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void set(const QVariant& value);

    QDBusConnection m_bus;
    bool m_dark = false;
};

} // namespace kelvane
