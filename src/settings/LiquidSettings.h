#pragma once

// The glass look: a few simple controls, and the renderer's full parameter set for advanced users.

#include "SettingsTypes.h"

namespace kelvane {

struct LiquidBasicSettings : JsonRecord<LiquidBasicSettings> {
    bool advancedMode = false;
    double frost = 0;
    double refraction = 0.46;
    double thickness = 0.62;
    double rimLight = 0.75;
    double colorSpill = 0.63;
    double shadow = 0.52;
    double vibrancy = 0.3;
    GlassRGBA tint = GlassRGBA::rgba(1, 1, 1, 0);
    GlassRGBA rimColor = GlassRGBA::rgba(1, 1, 1, 0.9);

    static constexpr auto fields()
    {
        using R = LiquidBasicSettings;
        using json::field;
        return std::make_tuple(field("advancedMode", &R::advancedMode), field("frost", &R::frost),
                               field("refraction", &R::refraction), field("thickness", &R::thickness),
                               field("rimLight", &R::rimLight), field("colorSpill", &R::colorSpill),
                               field("shadow", &R::shadow), field("vibrancy", &R::vibrancy),
                               field("tint", &R::tint), field("rimColor", &R::rimColor));
    }
};

// Defaults are what fromBasic() makes of the basic controls' defaults, so that switching to the
// advanced mode does not change the look.
struct LiquidGlassSettings : JsonRecord<LiquidGlassSettings> {
    double backdropScale = 1.0;
    double backdropBlurRadius = 0;
    double innerRefractionAmount = 0.46;
    double innerRefractionHeight = 12.4;
    double outerRefractionAmount = 0.23;
    double outerRefractionHeight = 6.2;
    double faceColorMatrixBlack = 0;
    double faceColorMatrixWhite = 1;
    double faceColorMatrixSaturation = 1.3;
    double faceOpacity = 1;
    bool faceTintEnabled = false;
    GlassRGBA faceTint = GlassRGBA::rgba(1, 1, 1, 0);
    double bleedAmount = 0.63;
    double bleedOpacity = 0.63;
    double bleedDarkenBlend = 0;
    double bleedHeight = 12.4;
    double bleedBlurRadius = 8;
    double bleedDistance0 = 0;
    double bleedDistance1 = 1;
    double shadowAmount = 0.52;
    double shadowOpacity = 0.52;
    std::optional<double> shadowBlurRadius = 10.4;
    double shadowColorMatrixBlack = 0;
    double shadowColorMatrixWhite = 1;
    double shadowColorMatrixSaturation = 1;
    double shadowVibrancyContribution = 0.3;
    double highlightAmount = 0.75;
    double highlightCurvature = 0.5;
    double highlightHeight = 2;
    double highlightSpread = 0.5;
    double highlightAngle = 45;
    GlassRGBA highlightColorA = GlassRGBA::rgba(1, 1, 1, 0.9);
    GlassRGBA highlightColorB = GlassRGBA::rgba(1, 1, 1, 0.3);
    double sdfSmoothness = 1.5;
    double blurOpacity0 = 1;
    double blurOpacity1 = 0.5;
    double blurOpacity2 = 0;
    double sdrGradientDistance0 = 0;
    double sdrGradientDistance1 = 1;
    double sdrShadowOpacity = 0.52;

    // The full parameter set that gives the look of the simple controls.
    static LiquidGlassSettings fromBasic(const LiquidBasicSettings& basic);

    static constexpr auto fields()
    {
        using R = LiquidGlassSettings;
        using json::field;
        return std::make_tuple(
            field("backdropScale", &R::backdropScale),
            field("backdropBlurRadius", &R::backdropBlurRadius),
            field("innerRefractionAmount", &R::innerRefractionAmount),
            field("innerRefractionHeight", &R::innerRefractionHeight),
            field("outerRefractionAmount", &R::outerRefractionAmount),
            field("outerRefractionHeight", &R::outerRefractionHeight),
            field("faceColorMatrixBlack", &R::faceColorMatrixBlack),
            field("faceColorMatrixWhite", &R::faceColorMatrixWhite),
            field("faceColorMatrixSaturation", &R::faceColorMatrixSaturation),
            field("faceOpacity", &R::faceOpacity), field("faceTintEnabled", &R::faceTintEnabled),
            field("faceTint", &R::faceTint), field("bleedAmount", &R::bleedAmount),
            field("bleedOpacity", &R::bleedOpacity), field("bleedDarkenBlend", &R::bleedDarkenBlend),
            field("bleedHeight", &R::bleedHeight), field("bleedBlurRadius", &R::bleedBlurRadius),
            field("bleedDistance0", &R::bleedDistance0), field("bleedDistance1", &R::bleedDistance1),
            field("shadowAmount", &R::shadowAmount), field("shadowOpacity", &R::shadowOpacity),
            field("shadowBlurRadius", &R::shadowBlurRadius),
            field("shadowColorMatrixBlack", &R::shadowColorMatrixBlack),
            field("shadowColorMatrixWhite", &R::shadowColorMatrixWhite),
            field("shadowColorMatrixSaturation", &R::shadowColorMatrixSaturation),
            field("shadowVibrancyContribution", &R::shadowVibrancyContribution),
            field("highlightAmount", &R::highlightAmount),
            field("highlightCurvature", &R::highlightCurvature),
            field("highlightHeight", &R::highlightHeight),
            field("highlightSpread", &R::highlightSpread),
            field("highlightAngle", &R::highlightAngle),
            field("highlightColorA", &R::highlightColorA),
            field("highlightColorB", &R::highlightColorB), field("sdfSmoothness", &R::sdfSmoothness),
            field("blurOpacity0", &R::blurOpacity0), field("blurOpacity1", &R::blurOpacity1),
            field("blurOpacity2", &R::blurOpacity2),
            field("sdrGradientDistance0", &R::sdrGradientDistance0),
            field("sdrGradientDistance1", &R::sdrGradientDistance1),
            field("sdrShadowOpacity", &R::sdrShadowOpacity));
    }
};

} // namespace kelvane
