#pragma once

// Value types and enumerations shared by the settings records. Enumerations are stored by their raw
// values, listed here in declaration order.

#include "JsonCoding.h"

#include <QSizeF>

#include <string_view>

namespace kelvane {

namespace TuckleGrid {
// A count of grid cells.
struct Point : JsonRecord<Point> {
    int value = 0;
    static constexpr auto fields() { return std::make_tuple(json::field("value", &Point::value)); }
};

// Cells across and cells down.
struct Size : JsonRecord<Size> {
    Point width;
    Point height;
    static Size cells(int across, int down)
    {
        Size s;
        s.width.value = across;
        s.height.value = down;
        return s;
    }
    static constexpr auto fields()
    {
        return std::make_tuple(json::field("width", &Size::width), json::field("height", &Size::height));
    }
};
} // namespace TuckleGrid

// A record whose only field is its size in grid cells; the tag keeps the records distinct types.
template <class Tag, int Across, int Down>
struct SizeOnlySettings : JsonRecord<SizeOnlySettings<Tag, Across, Down>> {
    TuckleGrid::Size size = TuckleGrid::Size::cells(Across, Down);
    static constexpr auto fields()
    {
        return std::make_tuple(json::field("size", &SizeOnlySettings::size));
    }
};

struct GlassRGBA : JsonRecord<GlassRGBA> {
    double r = 1;
    double g = 1;
    double b = 1;
    double a = 1;
    static GlassRGBA rgba(double r, double g, double b, double a)
    {
        GlassRGBA c;
        c.r = r;
        c.g = g;
        c.b = b;
        c.a = a;
        return c;
    }
    static constexpr auto fields()
    {
        return std::make_tuple(json::field("r", &GlassRGBA::r), json::field("g", &GlassRGBA::g),
                               json::field("b", &GlassRGBA::b), json::field("a", &GlassRGBA::a));
    }
};

enum class FullscreenOption { allMonitors, notchedScreens, never };
enum class MediaSource { appleMusic, spotify, systemWide };
enum class SlabVideoBackdrop { none, clouds, aurora, petals, sea };
enum class TuckleWidget { calendar, media, shortcuts, mirror, notes, quickApps, todoList, timer };
// The small activities the closed notch can show beside the camera.
enum class LiveActivity {
    media,
    tray,
    calendar,
    updateAvailable,
    bluetoothDevice,
    batteryVisualizer,
    timerExpired
};
using LiveActivityEnum = LiveActivity;
enum class MediaLiveActivityEffectEnum { audioSpectrograph, waves, vibratingCircle, gif };
enum class GIFScalingQuality { pixelPerfect, interpolated };
// The animations that ship with the media activity's "animated image" effect.
enum class PredefinedGIF { equalizerBars, pixelHeart, retroCassette, spinningVinyl };

} // namespace kelvane

namespace kelvane::json {

using namespace std::string_view_literals;

template <>
struct EnumTraits<FullscreenOption> {
    static constexpr std::array entries{std::pair{FullscreenOption::allMonitors, "allMonitors"sv},
                                        std::pair{FullscreenOption::notchedScreens, "notchedScreens"sv},
                                        std::pair{FullscreenOption::never, "never"sv}};
};

template <>
struct EnumTraits<MediaSource> {
    static constexpr std::array entries{std::pair{MediaSource::appleMusic, "com.apple.Music"sv},
                                        std::pair{MediaSource::spotify, "com.spotify.client"sv},
                                        std::pair{MediaSource::systemWide, "systemWide"sv}};
};

template <>
struct EnumTraits<SlabVideoBackdrop> {
    static constexpr std::array entries{std::pair{SlabVideoBackdrop::none, "none"sv},
                                        std::pair{SlabVideoBackdrop::clouds, "clouds"sv},
                                        std::pair{SlabVideoBackdrop::aurora, "aurora"sv},
                                        std::pair{SlabVideoBackdrop::petals, "petals"sv},
                                        std::pair{SlabVideoBackdrop::sea, "sea"sv}};
};

template <>
struct EnumTraits<TuckleWidget> {
    static constexpr std::array entries{std::pair{TuckleWidget::calendar, "calendar"sv},
                                        std::pair{TuckleWidget::media, "media"sv},
                                        std::pair{TuckleWidget::shortcuts, "shortcuts"sv},
                                        std::pair{TuckleWidget::mirror, "mirror"sv},
                                        std::pair{TuckleWidget::notes, "notes"sv},
                                        std::pair{TuckleWidget::quickApps, "quickApps"sv},
                                        std::pair{TuckleWidget::todoList, "todoList"sv},
                                        std::pair{TuckleWidget::timer, "timer"sv}};
};

template <>
struct EnumTraits<LiveActivity> {
    static constexpr std::array entries{
        std::pair{LiveActivity::media, "media"sv},
        std::pair{LiveActivity::tray, "tray"sv},
        std::pair{LiveActivity::calendar, "calendar"sv},
        std::pair{LiveActivity::updateAvailable, "updateAvailable"sv},
        std::pair{LiveActivity::bluetoothDevice, "bluetoothDevice"sv},
        std::pair{LiveActivity::batteryVisualizer, "batteryVisualizer"sv},
        std::pair{LiveActivity::timerExpired, "timerExpired"sv}};
};

template <>
struct EnumTraits<MediaLiveActivityEffectEnum> {
    static constexpr std::array entries{
        std::pair{MediaLiveActivityEffectEnum::audioSpectrograph, "audioSpectrograph"sv},
        std::pair{MediaLiveActivityEffectEnum::waves, "waves"sv},
        std::pair{MediaLiveActivityEffectEnum::vibratingCircle, "vibratingCircle"sv},
        std::pair{MediaLiveActivityEffectEnum::gif, "gif"sv}};
};

template <>
struct EnumTraits<GIFScalingQuality> {
    static constexpr std::array entries{std::pair{GIFScalingQuality::pixelPerfect, "Pixel-perfect"sv},
                                        std::pair{GIFScalingQuality::interpolated, "Interpolated"sv}};
};

template <>
struct EnumTraits<PredefinedGIF> {
    static constexpr std::array entries{std::pair{PredefinedGIF::equalizerBars, "equalizerBars"sv},
                                        std::pair{PredefinedGIF::pixelHeart, "pixelHeart"sv},
                                        std::pair{PredefinedGIF::retroCassette, "retroCassette"sv},
                                        std::pair{PredefinedGIF::spinningVinyl, "spinningVinyl"sv}};
};

// A size is coded the way the platform codes sizes: [width, height].
template <>
struct CustomCodec<QSizeF> {
    static QJsonValue encode(const QSizeF& size) { return QJsonArray{size.width(), size.height()}; }
    static std::optional<QSizeF> decode(const QJsonValue& json)
    {
        const QJsonArray array = json.toArray();
        if (!json.isArray() || array.size() != 2 || !array[0].isDouble() || !array[1].isDouble())
            return std::nullopt;
        return QSizeF(array[0].toDouble(), array[1].toDouble());
    }
};

} // namespace kelvane::json
