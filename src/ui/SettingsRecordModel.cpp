#include "SettingsRecordModel.h"

#include <QJSValue>
#include <QJsonObject>

namespace kelvane {

namespace {
// What a page hands over: lists and records arrive from script as script values.
QJsonValue toJson(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<QJSValue>())
        return QJsonValue::fromVariant(value.value<QJSValue>().toVariant());
    return QJsonValue::fromVariant(value);
}
} // namespace

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

QVariant SettingsRecordModel::value() const
{
    return m_settings.jsonValue(m_key).value_or(QJsonValue()).toVariant();
}

bool SettingsRecordModel::setValue(const QVariant& value)
{
    return m_settings.setJsonValue(m_key, toJson(value)) == SettingsStore::WriteResult::written;
}

bool SettingsRecordModel::setField(const QString& field, const QVariant& value)
{
    QJsonObject record = m_settings.jsonValue(m_key).value_or(QJsonValue()).toObject();
    if (!SettingsStore::memberNames(m_key).contains(field))
        return false;
    record.insert(field, toJson(value));
    return m_settings.setJsonValue(m_key, record) == SettingsStore::WriteResult::written;
}

} // namespace kelvane
