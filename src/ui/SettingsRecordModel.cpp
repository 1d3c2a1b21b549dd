#include "SettingsRecordModel.h"

#include <QJsonObject>

namespace kelvane {

SettingsRecordModel::SettingsRecordModel(SettingsStore& settings, QString key, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_key(std::move(key))
{
    connect(&settings.domain(), &SettingsDomain::valueChanged, this, [this](const QString& name) {
        if (name == m_key)
            Q_EMIT valuesChanged();
    });
}

QVariantMap SettingsRecordModel::values() const
{
    return m_settings.jsonValue(m_key).value_or(QJsonValue()).toObject().toVariantMap();
}

bool SettingsRecordModel::setField(const QString& field, const QVariant& value)
{
    QJsonObject record = m_settings.jsonValue(m_key).value_or(QJsonValue()).toObject();
    if (!record.contains(field))
        return false;
    record.insert(field, QJsonValue::fromVariant(value));
    return m_settings.setJsonValue(m_key, record) == SettingsStore::WriteResult::written;
}

} // namespace kelvane
