#pragma once

#include "TimerEntry.h"

#include "settings/JsonCoding.h"

#include <QUuid>

namespace kelvane {

// How a timer is saved: its fields under their own names, the state by its case name and the
// dates as seconds since 2001-01-01 00:00:00 UTC; a missing date is left out.
struct TimerSnapshot : JsonRecord<TimerSnapshot> {
    QUuid id;
    QString label;
    qint64 totalSeconds = 0;
    qint64 remainingSeconds = 0;
    TimerEntry::State state = TimerEntry::State::paused;
    std::optional<double> startedAt;
    std::optional<double> expiresAt;

    static constexpr auto fields()
    {
        using R = TimerSnapshot;
        using json::field;
        return std::make_tuple(field("id", &R::id), field("label", &R::label),
                               field("totalSeconds", &R::totalSeconds),
                               field("remainingSeconds", &R::remainingSeconds), field("state", &R::state),
                               field("startedAt", &R::startedAt), field("expiresAt", &R::expiresAt));
    }
};

} // namespace kelvane

namespace kelvane::json {

template <>
struct EnumTraits<TimerEntry::State> {
    static constexpr std::array entries{std::pair{TimerEntry::State::running, std::string_view("running")},
                                        std::pair{TimerEntry::State::paused, std::string_view("paused")},
                                        std::pair{TimerEntry::State::expired, std::string_view("expired")}};
};

template <>
struct CustomCodec<QUuid> {
    static QJsonValue encode(const QUuid& id) { return id.toString(QUuid::WithoutBraces).toUpper(); }
    static std::optional<QUuid> decode(const QJsonValue& json)
    {
        const QUuid id = QUuid::fromString(json.toString());
        if (!json.isString() || id.isNull())
            return std::nullopt;
        return id;
    }
};

} // namespace kelvane::json
