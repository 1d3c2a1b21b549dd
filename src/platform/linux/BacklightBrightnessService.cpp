#include "BacklightBrightnessService.h"

#include <QDBusMessage>
#include <QDir>
#include <QFile>

#include <cmath>

namespace kelvane {

namespace {
std::optional<long> readNumber(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    bool ok = false;
    const long value = file.readAll().trimmed().toLong(&ok);
    return ok ? std::optional<long>(value) : std::nullopt;
}
} // namespace

BacklightBrightnessService::BacklightBrightnessService(QString root, QDBusConnection systemBus)
    : m_root(std::move(root))
    , m_systemBus(std::move(systemBus))
{
}

QString BacklightBrightnessService::defaultRoot()
{
    const QString root = qEnvironmentVariable("KELVANE_BACKLIGHT_ROOT");
    return root.isEmpty() ? QStringLiteral("/sys/class/backlight") : root;
}

std::optional<BacklightBrightnessService::Device> BacklightBrightnessService::device(QString* why) const
{
    const QStringList names = QDir(m_root).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::System, QDir::Name);
    for (const QString& name : names) {
        const QString path = QDir(m_root).filePath(name);
        const auto brightness = readNumber(path + QStringLiteral("/brightness"));
        const auto maximum = readNumber(path + QStringLiteral("/max_brightness"));
        if (brightness && maximum && *maximum > 0)
            return Device{path, name, *brightness, *maximum};
    }
    *why = QStringLiteral("no backlight device in %1").arg(m_root);
    return std::nullopt;
}

std::optional<double> BacklightBrightnessService::read(QString* why)
{
    const auto found = device(why);
    if (!found)
        return std::nullopt;
    return std::clamp(static_cast<double>(found->brightness) / static_cast<double>(found->maximum), 0.0, 1.0);
}

void BacklightBrightnessService::step(double delta)
{
    QString why;
    const auto found = device(&why);
    if (!found)
        return;
    const double current = static_cast<double>(found->brightness) / static_cast<double>(found->maximum);
    const double target = std::clamp(std::round((current + delta) * 100) / 100, 0.0, 1.0);
    const long value = std::lround(target * static_cast<double>(found->maximum));
    QFile file(found->path + QStringLiteral("/brightness"));
    if (file.open(QIODevice::WriteOnly) && file.write(QByteArray::number(static_cast<qlonglong>(value))) > 0)
        return;
    // The user's own session may set its backlight through logind.
    QDBusMessage set = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1/session/auto"),
        QStringLiteral("org.freedesktop.login1.Session"), QStringLiteral("SetBrightness"));
    set << QStringLiteral("backlight") << found->name << static_cast<uint>(value);
    // Sent without waiting for the answer: the key press that asked for it is not held up.
    m_systemBus.send(set);
}

} // namespace kelvane
