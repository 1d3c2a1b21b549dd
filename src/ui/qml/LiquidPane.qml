import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The glass look: a few simple controls, and behind "Advanced" every parameter of the glass.
ColumnLayout {
    id: pane
    required property QtObject settingsWindow
    readonly property QtObject basic: settingsWindow.setting("liquidBasicSettings")
    readonly property QtObject glass: settingsWindow.setting("liquidGlassSettings")
    readonly property bool advanced: basic.values.advancedMode === true
    spacing: 4

    SettingSection {
        title: "Glass"
        note: "Seen when the glass notch is on (General, Size and Look)."
        SettingSwitch { record: pane.settingsWindow.setting("generalSettings"); field: "transluscent"; text: "Glass notch"; objectName: "liquid.transluscent" }
        SettingSlider { record: pane.basic; field: "frost"; label: "Frost"; enabled: !pane.advanced }
        SettingSlider { record: pane.basic; field: "refraction"; label: "Refraction"; enabled: !pane.advanced }
        SettingSlider { record: pane.basic; field: "thickness"; label: "Thickness"; enabled: !pane.advanced }
        SettingSlider { record: pane.basic; field: "rimLight"; label: "Rim light"; enabled: !pane.advanced }
        SettingSlider { record: pane.basic; field: "colorSpill"; label: "Colour spill"; enabled: !pane.advanced }
        SettingSlider { record: pane.basic; field: "shadow"; label: "Shadow"; enabled: !pane.advanced }
        SettingSlider { record: pane.basic; field: "vibrancy"; label: "Vibrancy"; enabled: !pane.advanced }
        SettingColour { record: pane.basic; field: "tint"; label: "Tint"; enabled: !pane.advanced }
        SettingColour { record: pane.basic; field: "rimColor"; label: "Rim colour"; enabled: !pane.advanced }
        SettingSwitch { record: pane.basic; field: "advancedMode"; text: "Advanced: set every parameter of the glass" }
    }

    SettingSection {
        title: "Advanced"
        visible: pane.advanced
        note: "Starts from the look of the simple controls above."
        Repeater {
            model: [
                { field: "backdropScale", label: "Backdrop scale", from: 0.5, to: 2 },
                { field: "backdropBlurRadius", label: "Backdrop blur", from: 0, to: 40, unit: "pt" },
                { field: "innerRefractionAmount", label: "Inner refraction", from: 0, to: 1 },
                { field: "innerRefractionHeight", label: "Inner refraction height", from: 0, to: 40, unit: "pt" },
                { field: "outerRefractionAmount", label: "Outer refraction", from: 0, to: 1 },
                { field: "outerRefractionHeight", label: "Outer refraction height", from: 0, to: 40, unit: "pt" },
                { field: "faceColorMatrixBlack", label: "Face black point", from: 0, to: 1 },
                { field: "faceColorMatrixWhite", label: "Face white point", from: 0, to: 1 },
                { field: "faceColorMatrixSaturation", label: "Face saturation", from: 0, to: 3 },
                { field: "faceOpacity", label: "Face opacity", from: 0, to: 1 },
                { field: "bleedAmount", label: "Colour spill", from: 0, to: 1 },
                { field: "bleedOpacity", label: "Spill opacity", from: 0, to: 1 },
                { field: "bleedDarkenBlend", label: "Spill darkening", from: 0, to: 1 },
                { field: "bleedHeight", label: "Spill height", from: 0, to: 40, unit: "pt" },
                { field: "bleedBlurRadius", label: "Spill blur", from: 0, to: 40, unit: "pt" },
                { field: "bleedDistance0", label: "Spill from", from: 0, to: 1 },
                { field: "bleedDistance1", label: "Spill to", from: 0, to: 1 },
                { field: "shadowAmount", label: "Shadow", from: 0, to: 1 },
                { field: "shadowOpacity", label: "Shadow opacity", from: 0, to: 1 },
                { field: "shadowBlurRadius", label: "Shadow blur", from: 0, to: 40, unit: "pt" },
                { field: "shadowColorMatrixBlack", label: "Shadow black point", from: 0, to: 1 },
                { field: "shadowColorMatrixWhite", label: "Shadow white point", from: 0, to: 1 },
                { field: "shadowColorMatrixSaturation", label: "Shadow saturation", from: 0, to: 3 },
                { field: "shadowVibrancyContribution", label: "Shadow vibrancy", from: 0, to: 1 },
                { field: "highlightAmount", label: "Rim light", from: 0, to: 1 },
                { field: "highlightCurvature", label: "Rim curvature", from: 0, to: 1 },
                { field: "highlightHeight", label: "Rim height", from: 0, to: 10, unit: "pt" },
                { field: "highlightSpread", label: "Rim spread", from: 0, to: 1 },
                { field: "highlightAngle", label: "Rim light angle", from: 0, to: 360, unit: "°", decimals: 0, step: 1 },
                { field: "sdfSmoothness", label: "Edge smoothness", from: 0, to: 5 },
                { field: "blurOpacity0", label: "Blur at the top", from: 0, to: 1 },
                { field: "blurOpacity1", label: "Blur in the middle", from: 0, to: 1 },
                { field: "blurOpacity2", label: "Blur at the bottom", from: 0, to: 1 },
                { field: "sdrGradientDistance0", label: "Standard-range gradient from", from: 0, to: 1 },
                { field: "sdrGradientDistance1", label: "Standard-range gradient to", from: 0, to: 1 },
                { field: "sdrShadowOpacity", label: "Standard-range shadow", from: 0, to: 1 }
            ]
            delegate: SettingSlider {
                required property var modelData
                record: pane.glass
                field: modelData.field
                label: modelData.label
                from: modelData.from
                to: modelData.to
                unit: modelData.unit || ""
                decimals: modelData.decimals !== undefined ? modelData.decimals : 2
                stepSize: modelData.step || 0.01
            }
        }
        SettingSwitch { record: pane.glass; field: "faceTintEnabled"; text: "Tint the face" }
        SettingColour { record: pane.glass; field: "faceTint"; label: "Face tint" }
        SettingColour { record: pane.glass; field: "highlightColorA"; label: "Rim light colour" }
        SettingColour { record: pane.glass; field: "highlightColorB"; label: "Rim light second colour" }
    }
}
