import QtQuick
import QtQuick.Window
import Kelvane

// The notch in glass: the item covers the outline and, around it, the room its shadow takes.
// With a hardware scene the glass is drawn by its shader over the desktop picture (or over what
// the desktop blurs behind the window); the software renderer draws a dark translucent face with
// its rim instead.
Item {
    id: glass
    property QtObject look: null
    property QtObject wallpaper: null
    property real bodyWidth: 0
    property real bodyHeight: 0
    property real cornerRadius: 0
    property real shoulder: 0
    readonly property var p: look ? look.parameters : ({})
    readonly property bool shaders: GraphicsInfo.api !== GraphicsInfo.Software && GraphicsInfo.api !== GraphicsInfo.Unknown
    // The room the shadow takes beyond the outline.
    readonly property real margin: shaders ? Math.ceil(Math.min(48, Math.max(0, p.shadowBlurRadius || 0))) : 0
    readonly property bool onPicture: look !== null && look.backdrop === "picture" && shaders

    function vec(c) { return c ? Qt.vector4d(c.r, c.g, c.b, c.a) : Qt.vector4d(1, 1, 1, 0) }

    // What lies behind the window on the desktop picture, frosted, as a texture for the shader.
    Image {
        id: behind
        visible: false
        asynchronous: true
        cache: false
        smooth: true
        readonly property var win: glass.Window.window
        source: glass.onPicture && win && glass.wallpaper
            ? "image://glass/" + glass.wallpaper.pictureSerial
              + "/" + [glass.Screen.virtualX, glass.Screen.virtualY, glass.Screen.width, glass.Screen.height].join(",")
              + "/" + [win.x, win.y, win.width, win.height].join(",")
              + "/" + Number(glass.p.backdropBlurRadius || 0).toFixed(1)
            : ""
    }

    ShaderEffect {
        objectName: "glassShader"
        anchors.fill: parent
        visible: glass.shaders
        readonly property var win: glass.Window.window
        property size size: Qt.size(width, height)
        property vector4d body: Qt.vector4d(glass.margin + glass.shoulder, glass.bodyWidth, glass.bodyHeight, glass.cornerRadius)
        property real shoulder: glass.shoulder
        property vector4d sourceRect: win && win.width > 0 && win.height > 0
            ? Qt.vector4d(glass.x / win.width, glass.y / win.height, width / win.width, height / win.height)
            : Qt.vector4d(0, 0, 1, 1)
        property real hasSource: glass.onPicture && behind.status === Image.Ready ? 1 : 0
        property real clearness: glass.look && glass.look.backdrop === "desktop" ? 1 : 0
        property var source: behind
        property real innerRefractionAmount: glass.p.innerRefractionAmount || 0
        property real innerRefractionHeight: glass.p.innerRefractionHeight || 0
        property real outerRefractionAmount: glass.p.outerRefractionAmount || 0
        property real outerRefractionHeight: glass.p.outerRefractionHeight || 0
        property real backdropBlurRadius: glass.p.backdropBlurRadius || 0
        property real faceColorMatrixBlack: glass.p.faceColorMatrixBlack || 0
        property real faceColorMatrixWhite: glass.p.faceColorMatrixWhite !== undefined ? glass.p.faceColorMatrixWhite : 1
        property real faceColorMatrixSaturation: glass.p.faceColorMatrixSaturation !== undefined ? glass.p.faceColorMatrixSaturation : 1
        property real faceOpacity: glass.p.faceOpacity !== undefined ? glass.p.faceOpacity : 1
        property vector4d faceTint: glass.p.faceTintEnabled ? glass.vec(glass.p.faceTint) : Qt.vector4d(0, 0, 0, 0)
        property real bleedAmount: glass.p.bleedAmount || 0
        property real bleedOpacity: glass.p.bleedOpacity || 0
        property real bleedDarkenBlend: glass.p.bleedDarkenBlend || 0
        property real bleedHeight: glass.p.bleedHeight || 0
        property real shadowOpacity: glass.p.shadowOpacity || 0
        property real shadowBlurRadius: glass.p.shadowBlurRadius || 0
        property real shadowVibrancyContribution: glass.p.shadowVibrancyContribution || 0
        property real highlightAmount: glass.p.highlightAmount || 0
        property real highlightCurvature: glass.p.highlightCurvature || 0
        property real highlightHeight: glass.p.highlightHeight || 0
        property real highlightSpread: glass.p.highlightSpread || 0
        property real highlightAngle: glass.p.highlightAngle || 0
        property vector4d highlightColorA: glass.vec(glass.p.highlightColorA)
        property vector4d highlightColorB: glass.vec(glass.p.highlightColorB)
        property real sdfSmoothness: glass.p.sdfSmoothness !== undefined ? glass.p.sdfSmoothness : 1
        fragmentShader: "qrc:/kelvane/shaders/glass.frag.qsb"
    }

    NotchShape {
        objectName: "glassStill"
        visible: !glass.shaders
        x: glass.margin
        bodyWidth: glass.bodyWidth
        height: glass.bodyHeight
        width: glass.bodyWidth + 2 * glass.shoulder
        color: Qt.rgba(0, 0, 0, 0.78)
        rimColor: {
            const c = glass.p.highlightColorA
            return c ? Qt.rgba(c.r, c.g, c.b, c.a * Math.min(1, glass.p.highlightAmount || 0) * 0.6) : "transparent"
        }
    }
}
