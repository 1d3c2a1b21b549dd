import QtQuick
import QtQuick.Controls

// The Tuckle's quick apps: a row of the user's applications, each started with one click. A right
// click offers the application's own actions, moving it and taking it off the row; "+" opens a
// search of the installed applications to add them.
Item {
    id: widget
    property QtObject apps: null
    property QtObject notchWindow: null
    readonly property var chosen: apps ? apps.chosen : []
    readonly property real tile: 56

    // A pop-up of the notch holds it open while it is up.
    component NotchPopup: Popup {
        onOpened: if (widget.notchWindow) widget.notchWindow.popupOpened()
        onClosed: if (widget.notchWindow) widget.notchWindow.popupClosed()
        padding: 4
        background: Rectangle { radius: 9; color: "#2c2c2e"; border.color: "#48484a" }
    }

    function openPicker() {
        if (notchWindow) notchWindow.makeKeyWindow()
        picker.open()
    }

    Text {
        id: title
        text: "Apps"
        color: "white"
        font.pixelSize: 12
        font.weight: Font.DemiBold
    }
    PillButton {
        objectName: "quickAppsAddButton"
        anchors { right: parent.right; verticalCenter: title.verticalCenter }
        visible: widget.chosen.length > 0
        text: "+"
        onClicked: widget.openPicker()
    }

    Flickable {
        id: flick
        anchors { left: parent.left; right: parent.right; top: title.bottom; bottom: parent.bottom; topMargin: 4 }
        clip: true
        contentWidth: row.implicitWidth
        flickableDirection: Flickable.HorizontalFlick
        boundsBehavior: Flickable.StopAtBounds
        Row {
            id: row
            spacing: 2
            Repeater {
                model: widget.chosen
                delegate: Rectangle {
                    id: app
                    required property var modelData
                    required property int index
                    objectName: "quickApp-" + modelData.id
                    width: widget.tile
                    height: flick.height
                    radius: 8
                    color: tap.pressed ? "#3a3a3c" : hover.hovered ? "#2c2c2e" : "transparent"
                    Image {
                        id: icon
                        anchors.horizontalCenter: parent.horizontalCenter
                        y: 4
                        width: 32
                        height: 32
                        sourceSize: Qt.size(64, 64)
                        source: "image://icon/" + encodeURIComponent(app.modelData.icon || "application-x-executable")
                        asynchronous: true
                        smooth: true
                    }
                    Text {
                        anchors { top: icon.bottom; topMargin: 3; left: parent.left; right: parent.right; leftMargin: 2; rightMargin: 2 }
                        text: app.modelData.name
                        color: "#e5e5ea"
                        font.pixelSize: 9
                        horizontalAlignment: Text.AlignHCenter
                        elide: Text.ElideRight
                    }
                    HoverHandler { id: hover }
                    TapHandler { id: tap; onTapped: widget.apps.launch(app.modelData.id, "", []) }
                    TapHandler {
                        acceptedButtons: Qt.RightButton
                        onTapped: {
                            actions.app = app.modelData
                            actions.index = app.index
                            actions.parent = app
                            actions.x = 8
                            actions.y = 16
                            actions.open()
                        }
                    }
                    ToolTip.visible: hover.hovered
                    ToolTip.delay: 700
                    ToolTip.text: app.modelData.genericName || app.modelData.name
                }
            }
            // With none chosen yet, the row says how to add some.
            Rectangle {
                objectName: "quickAppsAdd"
                visible: widget.chosen.length === 0
                width: Math.max(widget.tile, flick.width)
                height: flick.height
                radius: 8
                color: addTap.pressed ? "#3a3a3c" : addHover.hovered ? "#2c2c2e" : "transparent"
                Column {
                    anchors.centerIn: parent
                    spacing: 3
                    Rectangle {
                        anchors.horizontalCenter: parent.horizontalCenter
                        width: 32; height: 32; radius: 10
                        color: "transparent"
                        border.color: "#636366"
                        border.width: 1.5
                        Text { anchors.centerIn: parent; text: "+"; color: "#c7c7cc"; font.pixelSize: 18 }
                    }
                    Text {
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: "Add your apps"
                        color: "#8e8e93"
                        font.pixelSize: 9
                    }
                }
                HoverHandler { id: addHover }
                TapHandler {
                    id: addTap
                    onTapped: widget.openPicker()
                }
            }
        }
    }

    // An application's own actions, then moving it and taking it off the row.
    NotchPopup {
        id: actions
        property var app: ({})
        property int index: 0
        width: 150
        contentItem: Column {
            Repeater {
                model: (actions.app.actions || []).concat([
                    { id: ":left", name: "Move Left" }, { id: ":right", name: "Move Right" },
                    { id: ":remove", name: "Remove from Apps" }])
                delegate: ItemDelegate {
                    required property var modelData
                    width: actions.width - 8
                    height: 24
                    visible: !(modelData.id === ":left" && actions.index === 0)
                             && !(modelData.id === ":right" && actions.index === widget.chosen.length - 1)
                    contentItem: Text {
                        text: parent.modelData.name
                        color: parent.modelData.id === ":remove" ? "#ff6961" : "white"
                        font.pixelSize: 11
                        verticalAlignment: Text.AlignVCenter
                    }
                    background: Rectangle { radius: 5; color: parent.hovered ? "#0a84ff" : "transparent" }
                    onClicked: {
                        const id = modelData.id
                        actions.close()
                        if (id === ":remove") widget.apps.remove(actions.app.id)
                        else if (id === ":left") widget.apps.move(actions.index, actions.index - 1)
                        else if (id === ":right") widget.apps.move(actions.index, actions.index + 1)
                        else widget.apps.launch(actions.app.id, id, [])
                    }
                }
            }
        }
    }

    // The installed applications, searched as they are typed; a click adds or removes one.
    NotchPopup {
        id: picker
        objectName: "quickAppsPicker"
        parent: widget
        x: 0
        y: 0
        width: Math.max(220, widget.width)
        height: Math.max(120, widget.height)
        focus: true
        onOpened: { search.text = ""; search.forceActiveFocus() }
        contentItem: Column {
            spacing: 4
            TextField {
                id: search
                objectName: "quickAppsSearch"
                width: parent.width
                height: 24
                placeholderText: "Search applications"
                placeholderTextColor: "#8e8e93"
                color: "white"
                font.pixelSize: 11
                background: Rectangle { radius: 6; color: "#1c1c1e"; border.color: search.activeFocus ? "#0a84ff" : "#3a3a3c" }
                Keys.onEscapePressed: picker.close()
                Keys.onDownPressed: results.incrementCurrentIndex()
                Keys.onUpPressed: results.decrementCurrentIndex()
                onAccepted: if (results.count > 0) results.toggle(results.model[Math.max(0, results.currentIndex)])
            }
            ListView {
                id: results
                width: parent.width
                height: picker.availableHeight - search.height - 4
                clip: true
                model: widget.apps && picker.opened ? widget.apps.searchList(search.text) : []
                currentIndex: 0
                ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }
                function toggle(entry) {
                    if (entry.chosen) widget.apps.remove(entry.id)
                    else widget.apps.add(entry.id)
                    // The list says again which are on the row.
                    model = widget.apps.searchList(search.text)
                }
                delegate: Rectangle {
                    id: result
                    required property var modelData
                    required property int index
                    width: ListView.view.width
                    height: 26
                    radius: 5
                    color: ListView.isCurrentItem ? "#3a3a3c" : resultHover.hovered ? "#323234" : "transparent"
                    Image {
                        id: resultIcon
                        x: 4
                        anchors.verticalCenter: parent.verticalCenter
                        width: 18; height: 18
                        sourceSize: Qt.size(36, 36)
                        source: "image://icon/" + encodeURIComponent(result.modelData.icon || "application-x-executable")
                        asynchronous: true
                    }
                    Text {
                        anchors { left: resultIcon.right; leftMargin: 6; right: mark.left; verticalCenter: parent.verticalCenter }
                        text: result.modelData.name
                        color: "white"
                        font.pixelSize: 11
                        elide: Text.ElideRight
                    }
                    Text {
                        id: mark
                        anchors { right: parent.right; rightMargin: 6; verticalCenter: parent.verticalCenter }
                        text: result.modelData.chosen ? "✓" : "+"
                        color: result.modelData.chosen ? "#30d158" : "#8e8e93"
                        font.pixelSize: 12
                    }
                    HoverHandler { id: resultHover }
                    TapHandler { onTapped: results.toggle(result.modelData) }
                }
                Text {
                    anchors.centerIn: parent
                    visible: results.count === 0
                    text: "No application found"
                    color: "#636366"
                    font.pixelSize: 11
                }
            }
        }
    }
}
