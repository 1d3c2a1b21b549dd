#include "Identity.h"

#include <QStandardPaths>

namespace kelvane::identity {

QString preferencesPath(const QString& identifier)
{
    const QStringList parts = identifier.split(QLatin1Char('.'));
    const QString maker = parts.size() > 1 ? parts.at(1) : identifier;
    const QString application = parts.size() > 2 ? parts.sliced(2).join(QLatin1Char('.')) : identifier;
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QLatin1Char('/') +
           maker.toLower() + QLatin1Char('/') + application.toLower() + QStringLiteral(".conf");
}

QString applicationSupportPath(const QString& identifier)
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QLatin1Char('/') +
           (identifier.isEmpty() ? QStringLiteral("Kelvane") : identifier);
}

} // namespace kelvane::identity
