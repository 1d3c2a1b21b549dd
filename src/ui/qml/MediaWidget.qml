import QtQuick
import Kelvane

// What is playing: artwork, title and artist, how far it has got, and the playback controls.
// A click on the artwork brings the player forward; a click on the bar moves playback there; the
// menu button lists the players to follow (one may be pinned) and pauses and puts the music away.
Item {
    id: widget
    property QtObject media: null
    // The colours and corners the media settings ask for (the artwork's own colour when colouring
    // is automatic).
    property QtObject style: null
    readonly property bool hasTrack: media !== null && media.hasTrack
    readonly property color tint: style ? style.accent : "white"
    readonly property bool tinted: hasTrack && style !== null && style.artworkColor.valid && !Qt.colorEqual(tint, "white")
    readonly property real duration: media ? media.duration : 0
    property real elapsed: 0

    function refresh() { elapsed = media ? media.currentElapsedTime() : 0 }
    function clock(seconds) {
        const whole = Math.max(0, Math.floor(seconds))
        const h = Math.floor(whole / 3600), m = Math.floor(whole % 3600 / 60), s = whole % 60
        const pad = n => (n < 10 ? "0" : "") + n
        return h > 0 ? h + ":" + pad(m) + ":" + pad(s) : m + ":" + pad(s)
    }

    // The clock moves only while the panel shows and something plays.
    Timer {
        interval: 500
        repeat: true
        triggeredOnStart: true
        running: widget.visible && widget.media !== null && widget.media.isPlaying
        onTriggered: widget.refresh()
    }
    Connections {
        target: widget.media
        function onElapsedTimeChanged() { widget.refresh() }
        function onIsPlayingChanged() { widget.refresh() }
        function onTrackChanged() { widget.refresh() }
    }
    onVisibleChanged: {
        if (visible)
            refresh()
        else
            menu.visible = false
    }

    // The artwork's colour, glowing softly from behind it into the widget.
    Rectangle {
        objectName: "mediaGlow"
        x: -6
        y: -6
        width: widget.width + 12
        height: artwork.height + 12
        radius: 12
        visible: widget.tinted
        opacity: visible ? 1 : 0
        Behavior on opacity { NumberAnimation { duration: 300 } }
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop { position: 0; color: Qt.rgba(widget.tint.r, widget.tint.g, widget.tint.b, 0.32) }
            GradientStop { position: 0.7; color: Qt.rgba(widget.tint.r, widget.tint.g, widget.tint.b, 0.06) }
            GradientStop { position: 1; color: "transparent" }
        }
    }

    Rectangle {
        id: artwork
        objectName: "mediaArtwork"
        width: 48
        height: 48
        radius: widget.style ? Math.min(24, widget.style.albumCornerRadius * 48 / 32) : 8
        color: "#2c2c2e"
        clip: widget.style === null
        // The artwork, rounded as the settings ask.
        RoundedImage {
            anchors.fill: parent
            visible: widget.style !== null && widget.hasTrack && widget.media.hasArtwork
            image: widget.style ? widget.style.artwork : null
            radius: artwork.radius
        }
        Image {
            anchors.fill: parent
            visible: widget.style === null && widget.hasTrack && widget.media.hasArtwork
            source: visible ? "image://media/" + encodeURIComponent(widget.media.albumId) : ""
            sourceSize: Qt.size(112, 112)
            fillMode: Image.PreserveAspectCrop
            cache: false
        }
        ActivityGlyph {
            anchors.centerIn: parent
            width: 24
            height: 24
            kind: "media"
            visible: !(widget.hasTrack && widget.media.hasArtwork)
            opacity: widget.hasTrack ? 1 : 0.4
        }
        TapHandler { onTapped: if (widget.media) widget.media.openApp() }
    }

    Column {
        anchors.left: artwork.right
        anchors.leftMargin: 10
        anchors.right: menuButton.left
        anchors.verticalCenter: artwork.verticalCenter
        spacing: 2
        Text {
            objectName: "mediaTitle"
            width: parent.width
            elide: Text.ElideRight
            color: "white"
            font.pixelSize: 13
            font.bold: true
            text: widget.hasTrack ? widget.media.title : "Nothing playing"
        }
        Text {
            width: parent.width
            elide: Text.ElideRight
            color: "#a0a0a5"
            font.pixelSize: 12
            visible: widget.hasTrack
            text: widget.hasTrack ? widget.media.artist : ""
        }
    }

    Item {
        id: progress
        anchors.top: artwork.bottom
        anchors.topMargin: 8
        width: parent.width
        height: 12
        visible: widget.hasTrack
        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width
            height: 4
            radius: 2
            color: "#3a3a3c"
            Rectangle {
                objectName: "mediaProgress"
                height: parent.height
                radius: 2
                color: widget.tint
                width: widget.duration > 0 ? parent.width * Math.min(1, widget.elapsed / widget.duration) : 0
            }
        }
        TapHandler {
            onTapped: eventPoint => {
                if (widget.media && widget.duration > 0)
                    widget.media.seek(eventPoint.position.x / progress.width * widget.duration)
            }
        }
    }
    Text {
        anchors.top: progress.bottom
        anchors.left: parent.left
        visible: widget.hasTrack
        color: "#8e8e93"
        font.pixelSize: 10
        text: widget.clock(widget.elapsed)
    }
    Text {
        objectName: "mediaDuration"
        anchors.top: progress.bottom
        anchors.right: parent.right
        visible: widget.hasTrack
        color: "#8e8e93"
        font.pixelSize: 10
        text: widget.duration > 0 ? widget.clock(widget.duration) : "--:--"
    }

    // The controls sit between the two times, under the bar.
    Row {
        id: controls
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.top: progress.bottom
        anchors.topMargin: 2
        spacing: 10
        enabled: widget.hasTrack
        opacity: enabled ? 1 : 0.4
        Repeater {
            model: [
                { kind: "previous", act: () => widget.media.goToPreviousTrack() },
                { kind: widget.media && widget.media.isPlaying ? "pause" : "play", act: () => widget.media.togglePlayPause() },
                { kind: "next", act: () => widget.media.goToNextTrack() }
            ]
            delegate: Rectangle {
                required property var modelData
                width: 28
                height: 28
                radius: 14
                color: hover.hovered ? "#3a3a3c" : "transparent"
                MediaGlyph {
                    anchors.centerIn: parent
                    width: 14
                    height: 14
                    kind: parent.modelData.kind
                }
                HoverHandler { id: hover }
                TapHandler { onTapped: parent.modelData.act() }
            }
        }
    }

    Rectangle {
        id: menuButton
        objectName: "mediaMenuButton"
        anchors.right: parent.right
        anchors.top: parent.top
        width: 24
        height: 24
        radius: 12
        visible: widget.media !== null && (widget.hasTrack || widget.media.sources.length > 0)
        color: menu.visible || menuHover.hovered ? "#3a3a3c" : "transparent"
        Row {
            anchors.centerIn: parent
            spacing: 2
            Repeater {
                model: 3
                Rectangle { width: 3; height: 3; radius: 1.5; color: "#d1d1d6" }
            }
        }
        HoverHandler { id: menuHover }
        TapHandler { onTapped: menu.visible = !menu.visible }
    }

    // The sources and what can be done with them, over the widget until something is chosen:
    // pause-and-dismiss first, then "Auto" and one chip per player (the pinned one lit, the shown
    // one marked).
    Rectangle {
        id: menu
        objectName: "mediaMenu"
        visible: false
        z: 10
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        // Over the controls too.
        height: controls.y + controls.height + 4
        radius: 10
        color: "#1c1c1e"

        // Does what a chip offers and closes the menu.
        function choose(action) {
            action()
            visible = false
        }

        component Chip: Rectangle {
            id: chip
            property alias text: chipLabel.text
            property bool lit: false
            property bool shown: false
            property color textColor: "white"
            signal chosen()
            width: Math.min(chipLabel.implicitWidth + (shown ? 28 : 20), menuFlow.width)
            height: 20
            radius: 10
            color: lit ? "#0a84ff" : chipHover.hovered ? "#48484a" : "#3a3a3c"
            Rectangle {
                visible: chip.shown
                width: 6
                height: 6
                radius: 3
                anchors.left: parent.left
                anchors.leftMargin: 8
                anchors.verticalCenter: parent.verticalCenter
                color: chip.lit ? "white" : "#30d158"
            }
            Text {
                id: chipLabel
                anchors.left: parent.left
                anchors.leftMargin: chip.shown ? 18 : 10
                anchors.right: parent.right
                anchors.rightMargin: 10
                anchors.verticalCenter: parent.verticalCenter
                elide: Text.ElideRight
                color: chip.textColor
                font.pixelSize: 11
            }
            HoverHandler { id: chipHover }
            TapHandler { onTapped: chip.chosen() }
        }

        Text {
            id: closeMenu
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.rightMargin: 8
            anchors.topMargin: 6
            color: closeHover.hovered ? "white" : "#8e8e93"
            font.pixelSize: 15
            text: "×"
            HoverHandler { id: closeHover }
            TapHandler { onTapped: menu.visible = false }
        }
        Flickable {
            anchors.fill: parent
            anchors.margins: 6
            anchors.rightMargin: 24
            contentHeight: menuFlow.implicitHeight
            boundsBehavior: Flickable.StopAtBounds
            clip: true
            Flow {
                id: menuFlow
                width: parent.width
                spacing: 4
                Chip {
                    objectName: "mediaPauseAndDismiss"
                    text: "Pause and dismiss"
                    textColor: "#ff6961"
                    visible: widget.hasTrack
                    onChosen: menu.choose(() => widget.media.pauseAndDismiss())
                }
                Chip {
                    text: "Auto"
                    lit: menu.visible && widget.media !== null && !widget.media.sources.some(s => s.pinned)
                    onChosen: menu.choose(() => widget.media.pinSource(""))
                }
                Repeater {
                    // Read only while the menu shows: the list changes with every track.
                    model: menu.visible && widget.media ? widget.media.sources : []
                    delegate: Chip {
                        required property var modelData
                        readonly property bool twin: widget.media.sources.filter(s => s.displayName === modelData.displayName).length > 1
                        objectName: "mediaSource_" + modelData.clientID
                        text: modelData.displayName + (twin && modelData.pid !== undefined ? " · " + modelData.pid : "")
                        lit: modelData.pinned
                        shown: modelData.active && widget.hasTrack
                        onChosen: menu.choose(() => widget.media.pinSource(modelData.pinned ? "" : modelData.clientID))
                    }
                }
            }
        }
    }
}
