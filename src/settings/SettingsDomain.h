#pragma once

#include <QObject>
#include <QVariantMap>

namespace kelvane {

// The defaults domain: values the user stored, over a registration layer of defaults that is never
// written anywhere. Every write, from whichever writer, is announced.
class SettingsDomain : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // The stored value, else the registered default, else an invalid QVariant.
    QVariant value(const QString& key) const;
    bool contains(const QString& key) const;
    void setValue(const QString& key, const QVariant& value);
    void remove(const QString& key);
    // Adds defaults to the registration layer; stored values are never touched.
    void registerDefaults(const QVariantMap& defaults);

Q_SIGNALS:
    void valueChanged(const QString& key);

protected:
    virtual QVariant storedValue(const QString& key) const = 0;
    virtual void store(const QString& key, const QVariant& value) = 0;
    virtual void erase(const QString& key) = 0;

private:
    QVariantMap m_registered;
};

class InMemorySettingsDomain final : public SettingsDomain {
    Q_OBJECT
public:
    using SettingsDomain::SettingsDomain;

protected:
    QVariant storedValue(const QString& key) const override { return m_values.value(key); }
    void store(const QString& key, const QVariant& value) override { m_values.insert(key, value); }
    void erase(const QString& key) override { m_values.remove(key); }

private:
    QVariantMap m_values;
};

} // namespace kelvane
