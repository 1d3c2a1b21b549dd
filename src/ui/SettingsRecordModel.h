#pragma once

#include "settings/SettingsStore.h"

#include <QObject>
#include <QVariantMap>

namespace kelvane {

// One settings record for the settings window: its members as a map the page binds to, and a
// way to change one member. Edits go through the store whole, so a value the record cannot take
// is refused and nothing is written.
class SettingsRecordModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString key READ key CONSTANT)
    Q_PROPERTY(QVariantMap values READ values NOTIFY valuesChanged)
public:
    SettingsRecordModel(SettingsStore& settings, QString key, QObject* parent = nullptr);

    QString key() const { return m_key; }
    QVariantMap values() const;
    Q_INVOKABLE bool setField(const QString& field, const QVariant& value);

Q_SIGNALS:
    void valuesChanged();

private:
    SettingsStore& m_settings;
    QString m_key;
};

} // namespace kelvane
