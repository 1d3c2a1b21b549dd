#pragma once

#include "JsonCoding.h"

#include <QVariant>

#include <optional>

namespace kelvane {

// How a key's value is held in the defaults domain: flags, numbers and strings as native values,
// records as one JSON text. Reading accepts what a text-based domain gives back ("true", "15").
template <class T>
QVariant toStored(const T& value)
{
    if constexpr (json::Record<T>)
        return QVariant(json::toJsonText(value));
    else
        return QVariant::fromValue(value);
}

template <class T>
std::optional<T> fromStored(const QVariant& stored)
{
    const auto type = stored.metaType().id();
    const bool isText = type == QMetaType::QString || type == QMetaType::QByteArray;
    if constexpr (json::Record<T>) {
        if (!isText)
            return std::nullopt;
        return json::fromJsonText<T>(stored.toString());
    } else if constexpr (std::is_same_v<T, QString>) {
        if (!isText)
            return std::nullopt;
        return stored.toString();
    } else if constexpr (std::is_same_v<T, bool>) {
        if (type == QMetaType::Bool)
            return stored.toBool();
        const QString text = stored.toString().trimmed().toLower();
        if (text == QLatin1StringView("true") || text == QLatin1StringView("1"))
            return true;
        if (text == QLatin1StringView("false") || text == QLatin1StringView("0"))
            return false;
        return std::nullopt;
    } else if constexpr (std::is_same_v<T, int>) {
        bool ok = false;
        const int value = stored.toInt(&ok);
        if (!ok || (!isText && stored.toDouble() != value))
            return std::nullopt;
        return value;
    } else {
        static_assert(std::is_same_v<T, double>, "unsupported key type");
        bool ok = false;
        const double value = stored.toDouble(&ok);
        if (!ok || type == QMetaType::Bool)
            return std::nullopt;
        return value;
    }
}

// A setting: the name it is stored under, its type and its default.
template <class T>
class Key {
public:
    using ValueType = T;
    Key(QString name, T defaultValue)
        : m_name(std::move(name))
        , m_default(std::move(defaultValue))
    {
    }
    const QString& name() const { return m_name; }
    const T& defaultValue() const { return m_default; }

private:
    QString m_name;
    T m_default;
};

} // namespace kelvane
