import QtQuick
import Kelvane

// The camera mirror: the camera's picture, flipped as a mirror is, on a rounded tile. The camera
// is open only while the tile is on screen; without one, or when it cannot be used, the tile says
// why, and a click starts it (or tries again) where it does not start by itself.
Item {
    id: widget
    property QtObject mirror: null
    property QtObject camera: null
    readonly property string state_: mirror ? mirror.state : "noCamera"
    readonly property bool shown: visible && width > 8 && height > 8
    readonly property real radius: 14

    onShownChanged: if (mirror) mirror.setShown(shown, widget)
    Component.onCompleted: if (mirror && shown) mirror.setShown(true, widget)
    Component.onDestruction: if (mirror) mirror.setShown(false, widget)

    Rectangle {
        anchors.fill: parent
        radius: widget.radius
        color: "#1c1c1e"
    }

    // The camera makes its pictures mirrored and of this size; each screen's widget asks for its own.
    LiveImage {
        id: video
        objectName: "mirrorPicture"
        anchors.fill: parent
        visible: widget.state_ === "showing"
        Binding on image { when: widget.camera !== null; value: widget.camera.picture }
        readonly property size wanted: Qt.size(Math.round(width * Screen.devicePixelRatio),
                                               Math.round(height * Screen.devicePixelRatio))
        onWantedChanged: if (widget.camera && width > 0) widget.camera.setPictureSize(wanted)
        Component.onCompleted: if (widget.camera && width > 0) widget.camera.setPictureSize(wanted)
    }
    // Rounds the picture's corners: a ring of the notch's black whose inner edge is the tile's.
    Rectangle {
        visible: video.visible
        anchors.fill: parent
        anchors.margins: -8
        radius: widget.radius + 8
        color: "transparent"
        border.width: 8
        border.color: "black"
    }

    // A camera drawn in lines, struck through when there is none to use.
    Item {
        id: glyph
        visible: widget.state_ !== "showing"
        width: 34
        height: 24
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.verticalCenter: parent.verticalCenter
        anchors.verticalCenterOffset: message.text ? -message.height / 2 - 4 : 0
        opacity: widget.state_ === "starting" ? pulse.value : 1
        readonly property color ink: widget.state_ === "failed" ? "#ff9f0a" : "#8e8e93"
        Rectangle {
            x: 0; y: 3; width: 25; height: 19; radius: 5
            color: "transparent"; border.color: glyph.ink; border.width: 2
        }
        Rectangle {
            x: 7.5; y: 7.5; width: 10; height: 10; radius: 5
            color: "transparent"; border.color: glyph.ink; border.width: 2
        }
        // The lens hood on the right.
        Canvas {
            x: 24; y: 5; width: 10; height: 15
            property color ink: glyph.ink
            onInkChanged: requestPaint()
            onPaint: {
                const ctx = getContext("2d")
                ctx.reset()
                ctx.fillStyle = ink
                ctx.beginPath()
                ctx.moveTo(0, 5); ctx.lineTo(10, 0); ctx.lineTo(10, 15); ctx.lineTo(0, 10)
                ctx.closePath()
                ctx.fill()
            }
        }
        // The stroke, with a gap cut on either side of it.
        Rectangle {
            visible: widget.state_ === "noCamera" || widget.state_ === "failed"
            anchors.centerIn: parent
            width: 42; height: 6; radius: 3
            rotation: 35
            color: "#1c1c1e"
            Rectangle {
                anchors.centerIn: parent
                width: 40; height: 2; radius: 1
                color: glyph.ink
            }
        }
    }
    QtObject {
        id: pulse
        property real value: 1
        property SequentialAnimation run: SequentialAnimation {
            running: widget.state_ === "starting"
            loops: Animation.Infinite
            NumberAnimation { target: pulse; property: "value"; to: 0.35; duration: 500; easing.type: Easing.InOutSine }
            NumberAnimation { target: pulse; property: "value"; to: 1; duration: 500; easing.type: Easing.InOutSine }
        }
    }

    Text {
        id: message
        objectName: "mirrorMessage"
        visible: widget.state_ !== "showing"
        anchors { left: parent.left; right: parent.right; margins: 8; top: glyph.bottom; topMargin: 8 }
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        maximumLineCount: 3
        elide: Text.ElideRight
        color: "#c7c7cc"
        font.pixelSize: 11
        text: {
            switch (widget.state_) {
            case "noCamera": return widget.mirror && widget.mirror.message ? widget.mirror.message : "No camera"
            case "waiting": return widget.mirror && widget.mirror.message ? widget.mirror.message + " Click to start." : "Click to show the camera"
            case "starting": return "Starting…"
            case "failed": return (widget.mirror ? widget.mirror.message : "") + " Click to try again."
            }
            return ""
        }
    }

    HoverHandler {
        cursorShape: widget.state_ === "waiting" || widget.state_ === "failed" ? Qt.PointingHandCursor : Qt.ArrowCursor
    }
    TapHandler {
        enabled: widget.state_ === "waiting" || widget.state_ === "failed"
        onTapped: widget.mirror.start()
    }
}
