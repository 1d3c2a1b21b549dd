import QtQuick
import Kelvane

// The notch of one screen: a black shape hanging from the top edge that pops when hovered, widens
// for a level indicator, opens into the panel, and collapses away when hidden.
Item {
    id: root

    required property KelvaneState kelvane
    required property NotchViewModel viewModel
    required property NotchController controller
    required property NotchGestures gestures
    required property WindowsManager windowsManager
    required property NotchWindow notchWindow
    // The application's models; a notch without them shows no activity and no timers.
    property SelectedLiveActivity liveActivity: null
    property TimersStore timers: null
    property TimerCommands timerCommands: null
    property MediaManager media: null
    property QtObject tray: null
    property DropZone dropZone: null
    property WidgetGridModel widgetGrid: null
    property PowerMonitor battery: null
    property BluetoothManager bluetooth: null
    property CalendarManager calendar: null
    property CalendarFileList calendarFiles: null
    property NotesManager notes: null
    property SettingsRecord notesSettings: null
    property SettingsRecord todoSettings: null
    property QtObject shortcuts: null
    property QtObject quickApps: null
    property SettingsRecord shortcutsSettings: null
    property QtObject mirror: null
    property QtObject mirrorCamera: null
    property QtObject visualizer: null
    property QtObject mediaStyle: null
    property QtObject wallpaper: null
    property QtObject glass: null
    property SettingsRecord tuckleSettings: null
    property string displayKitId: ""

    readonly property bool isOpen: kelvane.modeName !== "closed"
    // Over a full-screen window the notch keeps away when the user asked for that; a level key
    // still shows its indicator there.
    readonly property bool awayForFullScreen: viewModel.hiddenForFullScreen && !kelvane.hasIndicator
    property bool panelBuilt: false
    onIsOpenChanged: if (isOpen) panelBuilt = true
    readonly property size drawn: viewModel.drawnNotchSize
    readonly property real indicatorWing: kelvane.hasIndicator && !isOpen ? drawn.height * 2.5 : 0

    // The live activity beside the camera of the closed notch; the level indicator takes its place.
    readonly property string activityName: {
        if (!liveActivity || isOpen || kelvane.hidden || kelvane.hasIndicator || awayForFullScreen)
            return ""
        if (liveActivity.hiddenInNonNotchedScreens && viewModel.isNonNotch)
            return ""
        return viewModel.isFullScreen ? liveActivity.fullScreenName : liveActivity.name
    }
    readonly property string activityText: activityName === "timerExpired" ? (timers ? timers.expiredText : "")
        : activityName === "media" ? (media && media.hasTrack ? media.title : "")
        : activityName === "tray" ? (tray ? String(tray.count) : "")
        : activityName === "batteryVisualizer" ? (battery ? battery.percentage + "%" : "")
        : activityName === "bluetoothDevice" ? (bluetooth ? bluetooth.deviceName
            + (bluetooth.deviceBattery >= 0 ? "  " + bluetooth.deviceBattery + "%" : "") : "")
        : activityName === "calendar" ? (calendar ? calendar.activityTime + "  " + calendar.activityTitle : "")
        : activityName === "" ? "" : liveActivity.displayName
    readonly property real activityFontSize: Math.max(10, drawn.height * 0.4)
    // A long title is cut short rather than widening the notch across the screen.
    readonly property real activityTextWidth: Math.min(activityMetrics.advanceWidth, drawn.height * 5)
    TextMetrics { id: activityMetrics; font.pixelSize: root.activityFontSize; text: root.activityText }
    readonly property bool showsArtwork: activityName === "media" && media !== null && media.hasArtwork
    // What plays moves beside its title: the bars, a wave, a trembling ring or an animation.
    readonly property bool showsEffect: activityName === "media" && media !== null && media.hasTrack
    readonly property real effectWidth: showsEffect ? drawn.height * 1.1 : 0
    readonly property real activityWing: activityName === "" ? 0
        : Math.max(drawn.height * 1.25, activityTextWidth + effectWidth + drawn.height * (showsEffect ? 1.0 : 0.75))
    readonly property real wing: Math.max(indicatorWing, activityWing)

    // New content peeking out of the closed notch for a moment: two lines below the top bar.
    readonly property bool peeking: kelvane.hasQuickPeek && !isOpen && !kelvane.hidden && !kelvane.hasIndicator
        && !awayForFullScreen
    TextMetrics { id: peekTitleMetrics; font.pixelSize: 13; font.weight: Font.DemiBold; text: root.kelvane.quickPeekTitle }
    TextMetrics { id: peekDetailMetrics; font.pixelSize: 11; text: root.kelvane.quickPeekDetail }
    readonly property real peekWidth: Math.min(viewModel.openFootprint.width,
        Math.max(peekTitleMetrics.advanceWidth, peekDetailMetrics.advanceWidth) + 56)
    readonly property real peekHeight: drawn.height + (kelvane.quickPeekDetail === "" ? 28 : 44)

    // Pulled down, the closed notch grows towards the open panel with the pointer.
    readonly property real scrub: gestures.scrubExpansion
    readonly property size tuckleFootprint: viewModel.openFootprint
    readonly property real scrubProgress: {
        const room = Math.max(1, viewModel.openFootprint.height - drawn.height)
        return Math.min(1, scrub / room)
    }
    readonly property real closedWidth: Math.max((drawn.width + 2 * wing) * viewModel.hoverScale, peeking ? peekWidth : 0)
    readonly property real targetWidth: kelvane.hidden || awayForFullScreen ? 0
        : isOpen ? viewModel.openFootprint.width
        : scrub > 0 ? closedWidth + (viewModel.openFootprint.width - closedWidth) * scrubProgress
        : closedWidth
    readonly property real targetHeight: kelvane.hidden || awayForFullScreen ? 0
        : isOpen ? viewModel.openFootprint.height
        : scrub > 0 ? drawn.height + scrub
        : peeking ? peekHeight
        : drawn.height * viewModel.hoverScale

    SpringValue { id: widthSpring; spring: root.kelvane.transition; target: root.targetWidth }
    SpringValue { id: heightSpring; spring: root.kelvane.transition; target: root.targetHeight }

    // The pointer is taken on the shape as drawn and on where it is going, nowhere else; a hidden
    // notch keeps its handle.
    // While the menu is up the whole window takes the pointer: the menu's items, and a click beside
    // the menu that closes it.
    readonly property bool menuShown: menu.shown || notchWindow.popupShown
    // A widget's pop-up holds the notch open as the menu does.
    Connections {
        target: root.notchWindow
        function onPopupShownChanged() {
            if (root.notchWindow.popupShown) {
                root.windowsManager.menuDidBeginTracking()
            } else {
                root.windowsManager.menuDidEndTracking()
                root.gestures.menuClosed()
            }
        }
    }
    readonly property bool calibrating: viewModel.fineTuning !== ""
    readonly property QtObject intro: viewModel.intro
    readonly property var inputShape: {
        if (menuShown || calibrating)
            return { handle: true, x: 0, y: 0, w: width, h: height }
        if (intro)
            return { handle: true, x: introCard.x, y: 0, w: introCard.width, h: introCard.height }
        if (viewModel.isDisabled || awayForFullScreen)
            return { handle: true, x: 0, y: 0, w: 1, h: 1 }
        if (kelvane.hidden)
            return { handle: true, x: handle.x, y: 0, w: handle.width, h: handle.height }
        return { handle: false, w: Math.max(widthSpring.value, targetWidth), h: Math.max(heightSpring.value, targetHeight) }
    }
    function applyInputShape() {
        const s = inputShape
        notchWindow.setGlass(inGlass && glass.backdrop === "desktop", inGlass ? glassLook.margin : 0)
        if (s.handle)
            notchWindow.setInputRegion(s.x, s.y, s.w, s.h)
        else
            notchWindow.setInputShape(width / 2, s.w, s.h)
    }
    onInputShapeChanged: applyInputShape()
    onInGlassChanged: applyInputShape()
    Connections {
        target: root.glass
        function onChanged() { root.applyInputShape() }
    }
    onWidthChanged: applyInputShape()
    Component.onCompleted: applyInputShape()

    // The handle of a hidden notch: hovered or clicked, it brings the notch back.
    Rectangle {
        id: handle
        visible: root.kelvane.hidden && !root.viewModel.isDisabled && !root.awayForFullScreen
        x: (root.width - width) / 2
        width: root.viewModel.handleSize.width
        height: root.viewModel.handleSize.height
        radius: height / 2
        color: root.viewModel.transparentHandle ? "transparent" : Qt.rgba(0, 0, 0, 0.85)
        HoverHandler { onHoveredChanged: if (hovered) root.gestures.pointerEntered(); else root.gestures.pointerExited() }
        TapHandler { onTapped: root.gestures.clicked() }
    }

    // The introduction: the notch grows into a card that says, step by step, what it can do. It
    // moves on by itself, or on a click; "Skip" ends it.
    Rectangle {
        id: introCard
        objectName: "introCard"
        visible: root.intro !== null
        z: 2
        width: Math.min(root.width, 440)
        height: Math.min(root.height, root.drawn.height + 118)
        x: (root.width - width) / 2
        y: 0
        radius: 22
        color: "black"
        // The top corners meet the screen's edge square, as the notch does.
        Rectangle { width: parent.width; height: parent.radius; color: "black" }
        TapHandler { onTapped: root.intro.next() }
        Text {
            id: introSymbol
            x: 22
            y: root.drawn.height + 14
            text: root.intro ? root.intro.symbol : ""
            color: "white"
            font.pixelSize: 30
        }
        Column {
            x: 70
            y: root.drawn.height + 12
            width: introCard.width - x - 20
            spacing: 4
            Text {
                objectName: "introTitle"
                text: root.intro ? root.intro.title : ""
                color: "white"
                font.pixelSize: 15
                font.weight: Font.DemiBold
            }
            Text {
                width: parent.width
                text: root.intro ? root.intro.detail : ""
                color: "#d0d0d6"
                font.pixelSize: 12
                wrapMode: Text.Wrap
            }
        }
        Row {
            x: 70
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 14
            spacing: 6
            Repeater {
                model: root.intro ? root.intro.stepCount : 0
                Rectangle {
                    required property int index
                    width: 6; height: 6; radius: 3
                    color: root.intro && index === root.intro.step ? "white" : "#55ffffff"
                }
            }
        }
        Text {
            anchors.right: parent.right
            anchors.rightMargin: 20
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 10
            text: qsTr("Skip")
            color: "#a0a0aa"
            font.pixelSize: 12
            TapHandler { onTapped: root.intro.finish() }
        }
    }

    // The calibration face: the outline to fit onto the camera housing, by dragging or with the
    // arrow keys (Shift for larger steps); Return or Escape ends it.
    Item {
        id: calibration
        objectName: "calibration"
        anchors.fill: parent
        visible: root.calibrating
        z: 2
        focus: visible
        onVisibleChanged: if (visible) { root.notchWindow.makeKeyWindow(); forceActiveFocus() }
        readonly property bool tunesWidth: root.viewModel.fineTuning === "width"
        Rectangle {
            x: (root.width - root.drawn.width) / 2 - 2
            y: -2
            width: root.drawn.width + 4
            height: root.drawn.height + 4
            radius: 6
            color: "transparent"
            border.color: "#0a84ff"
            border.width: 2
        }
        Rectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            y: root.drawn.height + 10
            width: hint.implicitWidth + 24
            height: hint.implicitHeight + 12
            radius: 8
            color: "#ee1c1c1e"
            Text {
                id: hint
                anchors.centerIn: parent
                horizontalAlignment: Text.AlignHCenter
                color: "white"
                font.pixelSize: 12
                text: (calibration.tunesWidth ? qsTr("Drag sideways or press ← → until the outline is as wide as the camera housing.")
                                         : qsTr("Drag up or down or press ↑ ↓ until the outline is as tall as the camera housing."))
                      + "\n" + qsTr("Return when done.")
            }
        }
        DragHandler {
            id: calibrationDrag
            target: null
            // On the desktop: the window itself moves as the outline it is centred on grows.
            readonly property point onDesktop: calibration.Window.window
                ? Qt.point(calibration.Window.window.x + centroid.scenePosition.x,
                           calibration.Window.window.y + centroid.scenePosition.y)
                : centroid.scenePosition
            property point last
            onActiveChanged: last = onDesktop
            onOnDesktopChanged: {
                if (!active)
                    return
                // Half of each offset is applied, and the outline grows on both sides.
                if (calibration.tunesWidth)
                    root.controller.fineTune(4 * (onDesktop.x - last.x), 0)
                else
                    root.controller.fineTune(0, 2 * (onDesktop.y - last.y))
                last = onDesktop
            }
        }
        Keys.onPressed: (event) => {
            const step = (event.modifiers & Qt.ShiftModifier) ? 10 : 1
            if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter || event.key === Qt.Key_Escape)
                root.controller.endFineTuning()
            else if (calibration.tunesWidth && (event.key === Qt.Key_Left || event.key === Qt.Key_Right))
                root.controller.fineTune(event.key === Qt.Key_Right ? step : -step, 0)
            else if (!calibration.tunesWidth && (event.key === Qt.Key_Up || event.key === Qt.Key_Down))
                root.controller.fineTune(0, event.key === Qt.Key_Down ? step : -step)
            else
                return
            event.accepted = true
        }
    }

    NotchMenu {
        id: menu
        windowsManager: root.windowsManager
        controller: root.controller
        gestures: root.gestures
    }

    NotchShape {
        id: outline
        visible: shape.visible
        bodyWidth: shape.width
        height: shape.height
        width: shape.width + 2 * shoulderRadius
        x: shape.x - shoulderRadius
        color: root.inGlass ? "transparent" : "black"
    }

    readonly property bool inGlass: viewModel.transluscent && glass !== null
    Glass {
        id: glassLook
        objectName: "glass"
        visible: root.inGlass && shape.visible
        look: root.glass
        wallpaper: root.wallpaper
        bodyWidth: shape.width
        bodyHeight: shape.height
        cornerRadius: outline.cornerRadius
        shoulder: outline.shoulderRadius
        x: outline.x - margin
        y: 0
        width: outline.width + 2 * margin
        height: outline.height + margin
    }

    Item {
        id: shape
        visible: !root.viewModel.isDisabled && width >= 1 && height >= 1
        x: (root.width - width) / 2
        y: 0
        width: Math.max(0, widthSpring.value)
        height: Math.max(0, heightSpring.value)

        // While the outline is calibrated, the notch only shows it.
        HoverHandler {
            enabled: !root.calibrating
            onHoveredChanged: hovered ? root.gestures.pointerEntered() : root.gestures.pointerExited()
        }
        TapHandler {
            enabled: !root.calibrating
            acceptedButtons: Qt.LeftButton
            // A click on the coming meeting's line joins it; anywhere else the notch opens.
            onTapped: (point) => {
                if (root.activityName === "calendar" && root.calendar && root.calendar.activityHasMeeting
                        && point.position.x > shape.width / 2)
                    root.calendar.openAnnounced()
                else
                    root.gestures.clicked()
            }
        }
        TapHandler {
            enabled: !root.calibrating
            acceptedButtons: Qt.RightButton
            onTapped: (point) => menu.popup(shape, point.position.x, point.position.y)
        }
        // Pulled down from the closed notch, it opens past a threshold or springs back.
        DragHandler {
            target: null
            enabled: !root.isOpen && !root.calibrating
            yAxis.enabled: true
            xAxis.enabled: false
            onActiveChanged: active ? root.gestures.pressed() : root.gestures.released()
            onTranslationChanged: if (active) root.gestures.dragged(translation.y)
        }
        // Two-finger swipes arrive as smooth scrolling; a wheel works the same way. A handler takes
        // one direction.
        WheelHandler {
            target: null
            enabled: !root.calibrating
            orientation: Qt.Vertical
            onWheel: (event) => root.gestures.scrolled(0, event.angleDelta.y)
        }
        WheelHandler {
            target: null
            enabled: !root.calibrating
            orientation: Qt.Horizontal
            onWheel: (event) => root.gestures.scrolled(event.angleDelta.x, 0)
        }

        // Level indicator: its symbol in the left wing, the level bar in the right one.
        Text {
            objectName: "indicatorIcon"
            visible: root.indicatorWing > 0 && shape.width > root.drawn.width + root.indicatorWing
            anchors.left: parent.left
            anchors.leftMargin: root.indicatorWing * 0.3
            anchors.verticalCenter: parent.verticalCenter
            readonly property var indicator: root.kelvane.indicatorValue
            // Kind 0 is brightness, 1 volume.
            text: indicator.kind === 0 ? "\u2600" : "\u266A"
            color: indicator.icon === "audio-volume-muted" ? "#8e8e93" : "white"
            font.pixelSize: root.drawn.height * 0.55
        }
        Rectangle {
            visible: root.indicatorWing > 0 && shape.width > root.drawn.width + root.indicatorWing
            anchors.right: parent.right
            anchors.rightMargin: root.indicatorWing * 0.2
            anchors.verticalCenter: parent.verticalCenter
            width: root.indicatorWing * 0.6
            height: 4
            radius: 2
            color: "#555555"
            Rectangle {
                objectName: "indicatorLevel"
                width: parent.width * Math.max(0, Math.min(1, root.kelvane.indicatorValue.value))
                height: parent.height
                radius: 2
                // The volume takes the colour of what plays, unless a plain indicator was asked for.
                color: root.kelvane.indicatorValue.kind === 1 && root.mediaStyle && !root.mediaStyle.plainIndicator
                       && root.media && root.media.isPlaying ? root.mediaStyle.accent : "white"
            }
        }

        // The activity: its symbol left of the camera, its text right of it.
        Item {
            id: activityBar
            width: parent.width
            height: root.drawn.height * root.viewModel.hoverScale
            opacity: root.activityName !== "" && shape.width >= (root.drawn.width + 1.8 * root.activityWing) ? 1 : 0
            visible: opacity > 0
            Behavior on opacity { NumberAnimation { duration: 150 } }

            ActivityGlyph {
                kind: root.activityName
                level: root.battery ? root.battery.percentage / 100 : 0
                charging: root.battery ? root.battery.charging : false
                warning: root.battery ? root.battery.announced === "low" || root.battery.low : false
                deviceKind: root.bluetooth ? root.bluetooth.deviceKind : ""
                accent: root.calendar ? root.calendar.activityColor : ""
                visible: !root.showsArtwork
                anchors.left: parent.left
                anchors.leftMargin: root.drawn.height * 0.35
                anchors.verticalCenter: parent.verticalCenter
                width: root.drawn.height * 0.6
                height: width
            }
            RoundedImage {
                objectName: "topBarArtwork"
                visible: root.showsArtwork
                anchors.left: parent.left
                anchors.leftMargin: root.drawn.height * 0.3
                anchors.verticalCenter: parent.verticalCenter
                width: root.drawn.height * 0.7
                height: width
                image: root.mediaStyle ? root.mediaStyle.artwork : null
                // The corner is set for a full-size artwork; the top bar's small one is rounded alike.
                radius: root.mediaStyle ? root.mediaStyle.albumCornerRadius * width / 32 : 0
            }
            MediaEffect {
                objectName: "topBarEffect"
                visible: root.showsEffect
                anchors.right: parent.right
                anchors.rightMargin: root.drawn.height * 0.3
                anchors.verticalCenter: parent.verticalCenter
                width: root.effectWidth
                height: root.drawn.height * 0.55
                style: root.mediaStyle
                visualizer: root.visualizer
                playing: root.media ? root.media.isPlaying : false
            }
            Text {
                objectName: "topBarText"
                width: root.activityTextWidth
                elide: Text.ElideRight
                anchors.right: parent.right
                anchors.rightMargin: root.drawn.height * 0.35 + (root.showsEffect ? root.effectWidth + root.drawn.height * 0.25 : 0)
                anchors.verticalCenter: parent.verticalCenter
                text: root.activityText
                color: "white"
                font.pixelSize: root.activityFontSize
            }
        }

        // Behind the widgets of the open panel, the chosen moving backdrop, dimmed so that the
        // widgets read well on it; it moves only while the panel is open on the widgets.
        Backdrop {
            objectName: "panelBackdrop"
            anchors.fill: parent
            readonly property var record: root.tuckleSettings ? root.tuckleSettings.values : ({})
            kind: record.wallpaper !== undefined ? record.wallpaper : "none"
            blur: record.wallpaperBlur !== undefined ? record.wallpaperBlur : 4
            radius: outline.cornerRadius
            opacity: root.isOpen && root.kelvane.modeName === "tuckle" && shape.height > root.viewModel.openFootprint.height * 0.6 ? 0.55 : 0
            visible: opacity > 0 && index >= 0
            running: visible
            Behavior on opacity { NumberAnimation { duration: 160 } }
        }

        // The panel is built the first time the notch opens and then kept, so that a notch that
        // is never opened costs nothing and a half-typed timer survives closing.
        Loader {
            anchors.fill: parent
            active: root.panelBuilt
            opacity: root.isOpen && shape.height > root.viewModel.openFootprint.height * 0.6 ? 1 : 0
            visible: opacity > 0
            Behavior on opacity { NumberAnimation { duration: 120 } }
            sourceComponent: PanelContent {
                kelvane: root.kelvane
                viewModel: root.viewModel
                widgetGrid: root.widgetGrid
                timers: root.timers
                timerCommands: root.timerCommands
                media: root.media
                mediaStyle: root.mediaStyle
                tray: root.tray
                calendar: root.calendar
                calendarFiles: root.calendarFiles
                notes: root.notes
                notesSettings: root.notesSettings
                todoSettings: root.todoSettings
                shortcuts: root.shortcuts
                quickApps: root.quickApps
                shortcutsSettings: root.shortcutsSettings
                mirror: root.mirror
                mirrorCamera: root.mirrorCamera
                noteWindows: root.windowsManager.expandedNoteManager
                displayKitId: root.displayKitId
                notchWindow: root.notchWindow
                dropZone: root.dropZone
                dropSpace: dropView
            }
        }

        Column {
            objectName: "quickPeek"
            x: 28
            y: root.drawn.height + 3
            width: parent.width - 56
            opacity: root.peeking && shape.height > root.peekHeight * 0.8 ? 1 : 0
            visible: opacity > 0
            Behavior on opacity { NumberAnimation { duration: 150 } }
            Text {
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                elide: Text.ElideRight
                text: root.kelvane.quickPeekTitle
                color: "white"
                font.pixelSize: 13
                font.weight: Font.DemiBold
            }
            Text {
                width: parent.width
                visible: text !== ""
                horizontalAlignment: Text.AlignHCenter
                elide: Text.ElideRight
                text: root.kelvane.quickPeekDetail
                color: "#a1a1a6"
                font.pixelSize: 11
            }
        }

        // Drags from other applications arrive here, over the whole notch.
        NotchDropView {
            id: dropView
            anchors.fill: parent
            dropZone: root.dropZone
        }
    }
}
