#pragma once

#include "MprisPlayers.h"

#include <QVariantMap>

#include <optional>

// How the values that MPRIS players put on the bus are read. Players are other programs: any
// value may be missing, of another type, nested oddly or out of range, and is read as what it can
// stand for, else as nothing.
namespace kelvane::mpris {

// D-Bus values as plain Qt values: variants unwrapped, dictionaries as maps, arrays as lists.
QVariant plain(const QVariant& value);
QVariantMap plainMap(const QVariant& value);
// A time in microseconds, from an integer or a real number; nothing when it is neither or does
// not fit.
std::optional<qint64> micros(const QVariant& value);
QString trackId(const QVariantMap& metadata);

// Reads the root interface's properties (its identity and desktop entry) into the player, with the
// application identifier and display name they make.
void describe(MprisPlayer& player, const QVariantMap& rootProperties);

// What a map of the player interface's properties changed.
struct Changes {
    bool status = false;
    bool metadata = false;
    // The track or the playback status changed without a position: the one held is no longer right.
    bool positionStale = false;
};
Changes apply(MprisPlayer& player, const QVariantMap& properties);

} // namespace kelvane::mpris
