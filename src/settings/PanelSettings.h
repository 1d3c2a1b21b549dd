#pragma once

// The records of the notch's general behaviour, gestures and panels.

#include "SettingsTypes.h"

namespace kelvane {

struct GeneralSettings : JsonRecord<GeneralSettings> {
    bool demoMode = false;
    FullscreenOption showInFullscreen = FullscreenOption::notchedScreens;
    bool preferRoundButtons = true;
    double notchWidthFineTune = 0;
    double notchHeightFineTune = 0;
    bool alwaysOpenNotchOnHover = true;
    // Spelled so on purpose: it is the stored member name.
    bool transluscent = false;
    QSizeF handleSize{184, 8};
    double contentPadding = 12;
    bool transparentHandle = false;
    bool disableHaptics = false;
    bool enableOnNonNotchScreens = true;
    bool preventUnhoverCloseWhenTyping = true;
    bool lockKVWhenTyping = false;
    MediaSource preferredMediaSource = MediaSource::systemWide;

    static constexpr auto fields()
    {
        using R = GeneralSettings;
        using json::field;
        return std::make_tuple(
            field("demoMode", &R::demoMode), field("showInFullscreen", &R::showInFullscreen),
            field("preferRoundButtons", &R::preferRoundButtons),
            field("notchWidthFineTune", &R::notchWidthFineTune),
            field("notchHeightFineTune", &R::notchHeightFineTune),
            field("alwaysOpenNotchOnHover", &R::alwaysOpenNotchOnHover),
            field("transluscent", &R::transluscent), field("handleSize", &R::handleSize),
            field("contentPadding", &R::contentPadding),
            field("transparentHandle", &R::transparentHandle),
            field("disableHaptics", &R::disableHaptics),
            field("enableOnNonNotchScreens", &R::enableOnNonNotchScreens),
            field("preventUnhoverCloseWhenTyping", &R::preventUnhoverCloseWhenTyping),
            field("lockKVWhenTyping", &R::lockKVWhenTyping),
            field("preferredMediaSource", &R::preferredMediaSource));
    }
};

struct GestureControlSettings : JsonRecord<GestureControlSettings> {
    bool allowGestures = true;
    bool controlMedia = true;
    bool controlOpenState = true;
    bool invertMediaGestures = false;

    static constexpr auto fields()
    {
        using R = GestureControlSettings;
        using json::field;
        return std::make_tuple(field("allowGestures", &R::allowGestures),
                               field("controlMedia", &R::controlMedia),
                               field("controlOpenState", &R::controlOpenState),
                               field("invertMediaGestures", &R::invertMediaGestures));
    }
};

// The widget panel as a whole.
struct TuckleSettings : JsonRecord<TuckleSettings> {
    bool enabled = true;
    TuckleGrid::Size size = TuckleGrid::Size::cells(11, 2);
    // Left-to-right order of the widgets in the panel.
    std::vector<TuckleWidget> enabledWidgets{TuckleWidget::media, TuckleWidget::mirror};
    bool showDividers = true;
    double widgetsPadding = 12;
    SlabVideoBackdrop wallpaper = SlabVideoBackdrop::clouds;
    double wallpaperBlur = 4;

    static constexpr auto fields()
    {
        using R = TuckleSettings;
        using json::field;
        return std::make_tuple(field("enabled", &R::enabled), field("size", &R::size),
                               field("enabledWidgets", &R::enabledWidgets),
                               field("showDividers", &R::showDividers),
                               field("widgetsPadding", &R::widgetsPadding),
                               field("wallpaper", &R::wallpaper),
                               field("wallpaperBlur", &R::wallpaperBlur));
    }
};

// The tray tab and the drop area are sized in grid cells like the widget panel.
using TraySettings = SizeOnlySettings<struct TrayTag, 11, 2>;
using DropAreaSettings = SizeOnlySettings<struct DropAreaTag, 11, 2>;

} // namespace kelvane
