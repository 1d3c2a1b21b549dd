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
        objectName: "backdropShader"
        anchors.fill: parent
        visible: backdrop.shaders
        property real time: 0
        property real blur: Math.max(0, Math.min(20, backdrop.blur))
        property real kind: backdrop.index
        property real radius: backdrop.radius
        property size size: Qt.size(width, height)
        fragmentShader: "qrc:/kelvane/shaders/backdrop.frag.qsb"
        NumberAnimation on time {
            running: backdrop.running && backdrop.shaders && backdrop.visible
            from: 0; to: 3600; duration: 3600 * 1000; loops: Animation.Infinite
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
