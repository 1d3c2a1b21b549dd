import QtQuick
import Kelvane

// The panel's moving backdrop behind the widgets. It moves only while `running`; without a
// hardware scene (the software renderer draws no shaders) each backdrop is a still gradient of
// its own colours.
Item {
    id: backdrop
    property string kind: "clouds"
    property real blur: 4
    property real radius: 0
    property bool running: false
    readonly property int index: ["clouds", "aurora", "petals", "sea"].indexOf(kind)
    readonly property bool shaders: GraphicsInfo.api !== GraphicsInfo.Software && GraphicsInfo.api !== GraphicsInfo.Unknown
    visible: index >= 0

    ShaderEffect {
        id: shader
        objectName: "backdropShader"
        anchors.fill: parent
        visible: backdrop.shaders
        property real time: 0
        property real blur: Math.max(0, Math.min(20, backdrop.blur))
        property real kind: backdrop.index
        property real radius: backdrop.radius
        property size size: Qt.size(width, height)
        fragmentShader: "qrc:/kelvane/shaders/backdrop.frag.qsb"
        // The backdrops drift slowly: thirty pictures a second move them as smoothly as every
        // frame would, at half the work. The time is read from the clock, so that a late tick
        // never slows the motion.
        property double started: 0
        Timer {
            interval: 33
            repeat: true
            running: backdrop.running && backdrop.shaders && backdrop.visible
            onRunningChanged: if (running) shader.started = Date.now() - shader.time * 1000
            onTriggered: shader.time = ((Date.now() - shader.started) / 1000) % 3600
        }
    }

    Rectangle {
        id: still
        objectName: "backdropStill"
        anchors.fill: parent
        visible: !backdrop.shaders
        radius: backdrop.radius
        readonly property var stops: [["#2a4a85", "#6b99d1"], ["#03060f", "#1b6e55"], ["#f9c9c4", "#f2a5b8"], ["#8cc9e6", "#05385c"]]
        gradient: Gradient {
            GradientStop { position: 0; color: backdrop.index >= 0 ? still.stops[backdrop.index][0] : "black" }
            GradientStop { position: 1; color: backdrop.index >= 0 ? still.stops[backdrop.index][1] : "black" }
        }
    }
}
