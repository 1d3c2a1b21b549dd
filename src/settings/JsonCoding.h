#pragma once

// Records are coded to JSON from a table of their fields: one line per field, its JSON member name
// and its member pointer. Decoding is strict: a missing non-optional member, a member of the wrong
// type or an unknown enumeration raw value makes the whole record fail to decode.

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QUrl>

#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace kelvane::json {

template <class R, class T>
struct Field {
    std::string_view name;
    T R::*member;
};

template <class R, class T>
constexpr Field<R, T> field(std::string_view name, T R::*member)
{
    return {name, member};
}

// Specialised for every enumeration stored by its raw value: `entries` lists (case, raw value)
// pairs in declaration order.
template <class E>
struct EnumTraits;

// Specialised for value types with a coding of their own (a size as an array, an enumeration with
// an associated value).
template <class T>
struct CustomCodec;

template <class E>
concept RawEnum = requires { EnumTraits<E>::entries; };

template <class R>
concept Record = requires { R::fields(); };

template <class T>
concept HasCustomCodec = requires(const T& v, const QJsonValue& j) {
    { CustomCodec<T>::encode(v) } -> std::convertible_to<QJsonValue>;
    { CustomCodec<T>::decode(j) } -> std::same_as<std::optional<T>>;
};

template <class T>
struct IsOptional : std::false_type {};
template <class T>
struct IsOptional<std::optional<T>> : std::true_type {};

template <class T>
struct IsSequence : std::false_type {};
template <class T>
struct IsSequence<std::vector<T>> : std::true_type {};
template <class T>
struct IsSequence<std::set<T>> : std::true_type {};

template <RawEnum E>
QString rawValue(E value)
{
    for (const auto& [c, raw] : EnumTraits<E>::entries)
        if (c == value)
            return QString::fromUtf8(raw.data(), static_cast<qsizetype>(raw.size()));
    return {};
}

template <RawEnum E>
std::optional<E> fromRawValue(QStringView raw)
{
    for (const auto& [c, r] : EnumTraits<E>::entries)
        if (raw == QLatin1StringView(r.data(), static_cast<qsizetype>(r.size())))
            return c;
    return std::nullopt;
}

template <RawEnum E>
constexpr auto allCases()
{
    std::array<E, EnumTraits<E>::entries.size()> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i)
        cases[i] = EnumTraits<E>::entries[i].first;
    return cases;
}

template <class T>
QJsonValue encode(const T& value);
template <class T>
std::optional<T> decode(const QJsonValue& json);

template <Record R>
QJsonObject encodeRecord(const R& record)
{
    QJsonObject object;
    std::apply(
        [&](const auto&... f) {
            (
                [&] {
                    const auto& member = record.*(f.member);
                    const QString name = QString::fromUtf8(f.name.data(), f.name.size());
                    using M = std::remove_cvref_t<decltype(member)>;
                    if constexpr (IsOptional<M>::value) {
                        // Absent optionals are left out.
                        if (member)
                            object.insert(name, encode(*member));
                    } else {
                        object.insert(name, encode(member));
                    }
                }(),
                ...);
        },
        R::fields());
    return object;
}

template <Record R>
std::optional<R> decodeRecord(const QJsonObject& object)
{
    R record{};
    bool ok = true;
    std::apply(
        [&](const auto&... f) {
            (
                [&] {
                    if (!ok)
                        return;
                    auto& member = record.*(f.member);
                    using M = std::remove_cvref_t<decltype(member)>;
                    const QJsonValue value =
                        object.value(QString::fromUtf8(f.name.data(), f.name.size()));
                    if constexpr (IsOptional<M>::value) {
                        if (value.isUndefined() || value.isNull()) {
                            member.reset();
                            return;
                        }
                        auto decoded = decode<typename M::value_type>(value);
                        if (!decoded)
                            ok = false;
                        else
                            member = std::move(*decoded);
                    } else {
                        auto decoded = decode<M>(value);
                        if (!decoded)
                            ok = false;
                        else
                            member = std::move(*decoded);
                    }
                }(),
                ...);
        },
        R::fields());
    if (!ok)
        return std::nullopt;
    return record;
}

template <class T>
QJsonValue encode(const T& value)
{
    if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, int> || std::is_same_v<T, double>) {
        return QJsonValue(value);
    } else if constexpr (std::is_same_v<T, qint64>) {
        return QJsonValue(static_cast<double>(value));
    } else if constexpr (std::is_same_v<T, QString>) {
        return QJsonValue(value);
    } else if constexpr (std::is_same_v<T, QUrl>) {
        return QJsonValue(value.toString(QUrl::FullyEncoded));
    } else if constexpr (RawEnum<T>) {
        return QJsonValue(rawValue(value));
    } else if constexpr (Record<T>) {
        return QJsonValue(encodeRecord(value));
    } else if constexpr (IsSequence<T>::value) {
        QJsonArray array;
        for (const auto& element : value)
            array.append(encode(element));
        return QJsonValue(array);
    } else {
        static_assert(HasCustomCodec<T>, "no JSON coding for this type");
        return CustomCodec<T>::encode(value);
    }
}

template <class T>
std::optional<T> decode(const QJsonValue& json)
{
    if constexpr (std::is_same_v<T, bool>) {
        if (!json.isBool())
            return std::nullopt;
        return json.toBool();
    } else if constexpr (std::is_same_v<T, int>) {
        if (!json.isDouble())
            return std::nullopt;
        const double d = json.toDouble();
        if (std::trunc(d) != d || d < std::numeric_limits<int>::min() ||
            d > std::numeric_limits<int>::max())
            return std::nullopt;
        return static_cast<int>(d);
    } else if constexpr (std::is_same_v<T, qint64>) {
        // Whole numbers that a JSON number holds exactly.
        constexpr double exact = 9007199254740992.0;
        if (!json.isDouble())
            return std::nullopt;
        const double d = json.toDouble();
        if (std::trunc(d) != d || d < -exact || d > exact)
            return std::nullopt;
        return static_cast<qint64>(d);
    } else if constexpr (std::is_same_v<T, double>) {
        if (!json.isDouble())
            return std::nullopt;
        return json.toDouble();
    } else if constexpr (std::is_same_v<T, QString>) {
        if (!json.isString())
            return std::nullopt;
        return json.toString();
    } else if constexpr (std::is_same_v<T, QUrl>) {
        if (!json.isString())
            return std::nullopt;
        QUrl url(json.toString(), QUrl::StrictMode);
        if (!url.isValid() || url.isEmpty())
            return std::nullopt;
        return url;
    } else if constexpr (RawEnum<T>) {
        if (!json.isString())
            return std::nullopt;
        return fromRawValue<T>(json.toString());
    } else if constexpr (Record<T>) {
        if (!json.isObject())
            return std::nullopt;
        return decodeRecord<T>(json.toObject());
    } else if constexpr (IsSequence<T>::value) {
        if (!json.isArray())
            return std::nullopt;
        T result;
        for (const QJsonValue& element : json.toArray()) {
            auto decoded = decode<typename T::value_type>(element);
            if (!decoded)
                return std::nullopt;
            if constexpr (requires { result.push_back(*decoded); })
                result.push_back(std::move(*decoded));
            else
                result.insert(std::move(*decoded));
        }
        return result;
    } else {
        static_assert(HasCustomCodec<T>, "no JSON coding for this type");
        return CustomCodec<T>::decode(json);
    }
}

// Records also read from and write to the compact JSON text under which they are stored.
template <Record R>
QString toJsonText(const R& record)
{
    return QString::fromUtf8(QJsonDocument(encodeRecord(record)).toJson(QJsonDocument::Compact));
}

template <Record R>
std::optional<R> fromJsonText(const QString& text)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return decodeRecord<R>(document.object());
}

} // namespace kelvane::json

namespace kelvane {

// Base of the plain settings records: JSON coding from the record's field table, and equality of
// every field in that table (the base itself holds nothing to compare).
template <class R>
struct JsonRecord {
    QJsonObject toJson() const { return json::encodeRecord(static_cast<const R&>(*this)); }
    static std::optional<R> fromJson(const QJsonObject& object) { return json::decodeRecord<R>(object); }
    friend bool operator==(const R& a, const R& b)
    {
        return std::apply([&](const auto&... fields) { return ((a.*(fields.member) == b.*(fields.member)) && ...); },
                          R::fields());
    }
};

} // namespace kelvane
