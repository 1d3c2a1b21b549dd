#pragma once

// The records of the live activities shown on the closed notch.

#include "SettingsTypes.h"

namespace kelvane {

struct LiveActivitiesSettings : JsonRecord<LiveActivitiesSettings> {
    bool enabled = true;
    bool hiddenInNonNotchedScreens = false;
    double inactivityTimeoutInSecs = 10;
    std::set<LiveActivity> enabledLiveActivities{LiveActivity::tray, LiveActivity::media};
    bool interactive = true;
    bool enableQuickPeek = true;
    bool enableHUDReplacement = false;
    bool HUDReplacementShouldShowInAllScreens = false;
    bool disableColorsOnAudioHUDReplacement = false;
    bool unhideAutomatically = true;
    bool quickPeekEvent = false;
    std::set<LiveActivity> liveActivitiesHiddenInFullscreen;

    static constexpr auto fields()
    {
        using R = LiveActivitiesSettings;
        using json::field;
        return std::make_tuple(
            field("enabled", &R::enabled),
            field("hiddenInNonNotchedScreens", &R::hiddenInNonNotchedScreens),
            field("inactivityTimeoutInSecs", &R::inactivityTimeoutInSecs),
            field("enabledLiveActivities", &R::enabledLiveActivities),
            field("interactive", &R::interactive), field("enableQuickPeek", &R::enableQuickPeek),
            field("enableHUDReplacement", &R::enableHUDReplacement),
            field("HUDReplacementShouldShowInAllScreens", &R::HUDReplacementShouldShowInAllScreens),
            field("disableColorsOnAudioHUDReplacement", &R::disableColorsOnAudioHUDReplacement),
            field("unhideAutomatically", &R::unhideAutomatically),
            field("quickPeekEvent", &R::quickPeekEvent),
            field("liveActivitiesHiddenInFullscreen", &R::liveActivitiesHiddenInFullscreen));
    }
};

struct MediaLiveActivitySettings : JsonRecord<MediaLiveActivitySettings> {
    bool isAutomaticallyColored = true;
    double albumCornerRadius = 5;
    MediaLiveActivityEffectEnum effect = MediaLiveActivityEffectEnum::audioSpectrograph;
    double gifVerticalOffset = 0;
    double gifHorizontalOffset = 0;
    std::optional<QUrl> customGifURL;
    double gifScale = 1;
    GIFScalingQuality gifScalingQuality = GIFScalingQuality::pixelPerfect;
    PredefinedGIF selectedGIF = PredefinedGIF::spinningVinyl;

    static constexpr auto fields()
    {
        using R = MediaLiveActivitySettings;
        using json::field;
        return std::make_tuple(field("isAutomaticallyColored", &R::isAutomaticallyColored),
                               field("albumCornerRadius", &R::albumCornerRadius),
                               field("effect", &R::effect),
                               field("gifVerticalOffset", &R::gifVerticalOffset),
                               field("gifHorizontalOffset", &R::gifHorizontalOffset),
                               field("customGifURL", &R::customGifURL), field("gifScale", &R::gifScale),
                               field("gifScalingQuality", &R::gifScalingQuality),
                               field("selectedGIF", &R::selectedGIF));
    }
};

// How the calendar activity appears: now and then for a while, or constantly.
struct AppearanceMode {
    enum class Kind { periodic, constant };
    Kind kind = Kind::constant;
    double interval = 0; // seconds, for periodic

    static AppearanceMode periodic(double seconds) { return {Kind::periodic, seconds}; }
    static AppearanceMode constant() { return {Kind::constant, 0}; }
    bool operator==(const AppearanceMode&) const = default;
};

struct CalendarLiveActivitySettings : JsonRecord<CalendarLiveActivitySettings> {
    int preEventWindow = 15;
    bool onlyEventsWithMeetings = false;
    bool showEventTimeLapsed = false;
    AppearanceMode appearanceMode = AppearanceMode::constant();

    static constexpr auto fields()
    {
        using R = CalendarLiveActivitySettings;
        using json::field;
        return std::make_tuple(field("preEventWindow", &R::preEventWindow),
                               field("onlyEventsWithMeetings", &R::onlyEventsWithMeetings),
                               field("showEventTimeLapsed", &R::showEventTimeLapsed),
                               field("appearanceMode", &R::appearanceMode));
    }
};

struct BatteryLiveActivitySettings : JsonRecord<BatteryLiveActivitySettings> {
    int lowBatteryThreshold = 20;
    bool showWhenPluggedIn = true;
    bool showWhenUnplugged = true;
    bool showWhenFullyCharged = true;
    bool showLowBatteryWarning = true;

    static constexpr auto fields()
    {
        using R = BatteryLiveActivitySettings;
        using json::field;
        return std::make_tuple(field("lowBatteryThreshold", &R::lowBatteryThreshold),
                               field("showWhenPluggedIn", &R::showWhenPluggedIn),
                               field("showWhenUnplugged", &R::showWhenUnplugged),
                               field("showWhenFullyCharged", &R::showWhenFullyCharged),
                               field("showLowBatteryWarning", &R::showLowBatteryWarning));
    }
};

} // namespace kelvane

namespace kelvane::json {

// {"periodic":{"interval":30}} or {"constant":{}}: one member, named after the case.
template <>
struct CustomCodec<AppearanceMode> {
    static QJsonValue encode(const AppearanceMode& mode)
    {
        if (mode.kind == AppearanceMode::Kind::periodic)
            return QJsonObject{{QStringLiteral("periodic"),
                                QJsonObject{{QStringLiteral("interval"), mode.interval}}}};
        return QJsonObject{{QStringLiteral("constant"), QJsonObject{}}};
    }
    static std::optional<AppearanceMode> decode(const QJsonValue& json)
    {
        const QJsonObject object = json.toObject();
        if (!json.isObject() || object.size() != 1)
            return std::nullopt;
        const QString name = object.begin().key();
        const QJsonValue payload = object.begin().value();
        if (!payload.isObject())
            return std::nullopt;
        if (name == QLatin1StringView("constant"))
            return AppearanceMode::constant();
        if (name == QLatin1StringView("periodic")) {
            const auto interval = json::decode<double>(payload.toObject().value(QStringLiteral("interval")));
            if (!interval)
                return std::nullopt;
            return AppearanceMode::periodic(*interval);
        }
        return std::nullopt;
    }
};

} // namespace kelvane::json
