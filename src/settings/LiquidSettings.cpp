#include "LiquidSettings.h"

namespace kelvane {

LiquidGlassSettings LiquidGlassSettings::fromBasic(const LiquidBasicSettings& basic)
{
    // Thickness is the glass's depth: 20 points at full thickness, the bleed as deep as the inner
    // refraction, the outer refraction half of it.
    constexpr double depth = 20.0;
    LiquidGlassSettings glass;
    glass.backdropBlurRadius = basic.frost * depth;
    glass.innerRefractionAmount = basic.refraction;
    glass.innerRefractionHeight = basic.thickness * depth;
    glass.outerRefractionAmount = basic.refraction * 0.5;
    glass.outerRefractionHeight = basic.thickness * depth * 0.5;
    glass.faceColorMatrixSaturation = 1.0 + basic.vibrancy;
    glass.faceTintEnabled = basic.tint.a > 0;
    glass.faceTint = basic.tint;
    glass.bleedAmount = basic.colorSpill;
    glass.bleedOpacity = basic.colorSpill;
    glass.bleedHeight = basic.thickness * depth;
    glass.shadowAmount = basic.shadow;
    glass.shadowOpacity = basic.shadow;
    glass.shadowBlurRadius = basic.shadow * depth;
    glass.shadowVibrancyContribution = basic.vibrancy;
    glass.highlightAmount = basic.rimLight;
    glass.highlightColorA = basic.rimColor;
    // The rim fades to a third of its strength where the light does not fall.
    glass.highlightColorB = GlassRGBA::rgba(basic.rimColor.r, basic.rimColor.g, basic.rimColor.b, basic.rimColor.a / 3);
    glass.sdrShadowOpacity = basic.shadow;
    return glass;
}

} // namespace kelvane
