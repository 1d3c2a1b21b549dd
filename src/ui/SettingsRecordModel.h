#pragma once

#include "settings/SettingsStore.h"

#include <QObject>
#include <QVariantMap>

namespace kelvane {

// One setting for the views that edit or show it: a record's members as a map a page binds to,
// or a plain setting's value, and a way to change either. Edits go through the store whole, so a
// value the setting cannot take is refused and nothing is written.
class SettingsRecordModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString key READ key CONSTANT)
    Q_PROPERTY(QVariantMap values READ values NOTIFY valuesChanged)
    // The stored value itself: a record as a map, a list, or a plain value.
    Q_PROPERTY(QVariant value READ value NOTIFY valuesChanged)
public:
    SettingsRecordModel(SettingsStore& settings, QString key, QObject* parent = nullptr);

    QString key() const { return m_key; }
    QVariantMap values() const;
    QVariant value() const;
    Q_INVOKABLE bool setField(const QString& field, const QVariant& value);
    Q_INVOKABLE bool setValue(const QVariant& value);

Q_SIGNALS:
    void valuesChanged();

private:
    SettingsStore& m_settings;
    QString m_key;
};

} // namespace kelvane
