#include "Track.h"

#include <QCoreApplication>

namespace kelvane {

Track Track::empty()
{
    Track track;
    track.title = QCoreApplication::translate("Track", "Unknown Title");
    track.artist = QCoreApplication::translate("Track", "Unknown Artist");
    track.album = QCoreApplication::translate("Track", "Unknown Album");
    return track;
}

QString Track::albumId() const
{
    return title + artist + album + (loved.value_or(false) ? QStringLiteral("true") : QStringLiteral("false"));
}

bool Track::isValidReplacement(const Track& other) const
{
    if (albumId() != other.albumId())
        return true;
    if (mediaApp != other.mediaApp)
        return true;
    return albumArt.isNull() && !other.albumArt.isNull();
}

} // namespace kelvane
