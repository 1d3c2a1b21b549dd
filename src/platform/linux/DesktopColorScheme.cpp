#include "DesktopColorScheme.h"

#include "core/Log.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace kelvane {

namespace {
const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString key = QStringLiteral("color-scheme");

// The portal wraps the value in one variant, some versions in two.
QVariant unwrapped(QVariant value)
{
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}
} // namespace

DesktopColorScheme::DesktopColorScheme(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    if (!m_bus.isConnected())
        return;
    m_bus.connect(portal, path, settings, QStringLiteral("SettingChanged"), this,
                  SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage read = QDBusMessage::createMethodCall(portal, path, settings, QStringLiteral("Read"));
    read << group << key;
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(read), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *finished;
        if (reply.isError()) {
            logLine(u"DesktopColorScheme",
                    QStringLiteral("No desktop appearance setting (%1): light colours.").arg(reply.error().name()));
            return;
        }
        set(reply.value().variant());
    });
}

void DesktopColorScheme::settingChanged(const QString& changedGroup, const QString& changedKey, const QDBusVariant& value)
{
    if (changedGroup == group && changedKey == key)
        set(value.variant());
}

void DesktopColorScheme::set(const QVariant& value)
{
    const QVariant scheme = unwrapped(value);
    bool ok = false;
    const uint number = scheme.toUInt(&ok);
    const bool dark = ok && number == 1;
    if (dark == m_dark)
        return;
    m_dark = dark;
    Q_EMIT changed(m_dark);
}

} // namespace kelvane
