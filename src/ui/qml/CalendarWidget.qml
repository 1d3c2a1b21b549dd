import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The Tuckle's calendar: a strip of days with today marked, the chosen day's events with their
// time, calendar colour and place; a click opens an event, "Join" joins its meeting. Behind the
// gear: which calendars show, and the iCalendar files and folders read.
Item {
    id: widget
    property QtObject calendar: null
    property QtObject calendarFiles: null
    property QtObject notchWindow: null
    property bool showingOptions: false

    RowLayout {
        id: header
        anchors.left: parent.left
        anchors.right: parent.right
        height: 40
        spacing: 4

        ListView {
            id: strip
            objectName: "calendarDays"
            Layout.fillWidth: true
            Layout.fillHeight: true
            orientation: ListView.Horizontal
            clip: true
            spacing: 2
            visible: !widget.showingOptions
            model: widget.calendar ? widget.calendar.days : []
            // Today in view when the strip first fills.
            onCountChanged: positionToday()
            Component.onCompleted: positionToday()
            function positionToday() {
                const days = widget.calendar ? widget.calendar.days : []
                for (let i = 0; i < days.length; ++i)
                    if (days[i].today) { positionViewAtIndex(i, ListView.Center); return }
            }
            delegate: Rectangle {
                id: chip
                required property var modelData
                readonly property bool chosen: widget.calendar && widget.calendar.selectedDate === modelData.date
                width: 30
                height: strip.height
                radius: 8
                color: chosen ? "#2c2c2e" : "transparent"
                Column {
                    anchors.centerIn: parent
                    spacing: 1
                    Text {
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: chip.modelData.weekday
                        color: chip.modelData.today ? "#ff453a" : "#8e8e93"
                        font.pixelSize: 8
                        font.weight: Font.DemiBold
                    }
                    Rectangle {
                        anchors.horizontalCenter: parent.horizontalCenter
                        width: 20
                        height: 18
                        radius: 9
                        color: chip.modelData.today ? "#ff453a" : "transparent"
                        Text {
                            anchors.centerIn: parent
                            text: chip.modelData.day
                            color: "white"
                            font.pixelSize: 11
                            font.weight: chip.modelData.today ? Font.Bold : Font.Normal
                        }
                    }
                    Rectangle {
                        anchors.horizontalCenter: parent.horizontalCenter
                        width: 4
                        height: 4
                        radius: 2
                        color: chip.modelData.count > 0 ? "#8e8e93" : "transparent"
                    }
                }
                TapHandler { onTapped: if (widget.calendar) widget.calendar.selectedDate = chip.modelData.date }
            }
        }
        Text {
            visible: widget.showingOptions
            Layout.fillWidth: true
            text: "Calendars"
            color: "white"
            font.pixelSize: 12
            font.weight: Font.DemiBold
        }
        Text {
            objectName: "calendarOptionsButton"
            text: widget.showingOptions ? "Done" : "\u2699"
            color: "#8e8e93"
            font.pixelSize: widget.showingOptions ? 11 : 14
            Layout.alignment: Qt.AlignTop
            TapHandler { onTapped: widget.showingOptions = !widget.showingOptions }
        }
    }

    ListView {
        id: events
        objectName: "calendarEvents"
        visible: !widget.showingOptions
        anchors.top: header.bottom
        anchors.topMargin: 4
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        clip: true
        spacing: 4
        model: widget.calendar ? widget.calendar.dayEvents : []
        delegate: Rectangle {
            id: row
            required property var modelData
            width: events.width
            height: 34
            radius: 6
            color: modelData.now ? "#2c2c2e" : "#1c1c1e"
            opacity: modelData.past ? 0.5 : 1
            Rectangle {
                x: 5
                y: 5
                width: 3
                height: parent.height - 10
                radius: 1.5
                color: row.modelData.color
            }
            Column {
                x: 14
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width - x - (join.visible ? join.width + 12 : 6)
                Text {
                    width: parent.width
                    text: row.modelData.title
                    color: "white"
                    font.pixelSize: 11
                    font.weight: Font.DemiBold
                    elide: Text.ElideRight
                }
                Text {
                    width: parent.width
                    text: row.modelData.time + (row.modelData.location !== "" && !row.modelData.hasMeeting
                                                ? "  \u00b7  " + row.modelData.location : "")
                    color: "#8e8e93"
                    font.pixelSize: 9
                    elide: Text.ElideRight
                }
            }
            TapHandler { onTapped: widget.calendar.openEvent(row.modelData.index) }
            PillButton {
                id: join
                visible: row.modelData.hasMeeting && !row.modelData.past
                anchors.right: parent.right
                anchors.rightMargin: 6
                anchors.verticalCenter: parent.verticalCenter
                text: "Join"
                onClicked: widget.calendar.joinEvent(row.modelData.index)
            }
        }
        Text {
            anchors.centerIn: parent
            visible: events.count === 0
            text: "No events"
            color: "#8e8e93"
            font.pixelSize: 11
        }
    }

    // Which calendars show, and the files read as calendars.
    Flickable {
        visible: widget.showingOptions
        anchors.top: header.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        clip: true
        contentHeight: options.height
        Column {
            id: options
            width: parent.width
            spacing: 4
            Repeater {
                model: widget.calendar ? widget.calendar.calendars : []
                delegate: Row {
                    id: entry
                    required property var modelData
                    spacing: 6
                    height: 18
                    Rectangle {
                        anchors.verticalCenter: parent.verticalCenter
                        width: 12
                        height: 12
                        radius: 3
                        color: entry.modelData.shown ? entry.modelData.color : "transparent"
                        border.color: entry.modelData.color
                        border.width: 1.5
                    }
                    Text {
                        anchors.verticalCenter: parent.verticalCenter
                        text: entry.modelData.title
                        color: entry.modelData.shown ? "white" : "#8e8e93"
                        font.pixelSize: 11
                    }
                    TapHandler {
                        onTapped: widget.calendar.setCalendarShown(entry.modelData.id, !entry.modelData.shown)
                    }
                }
            }
            Text {
                text: "Files and folders"
                color: "#8e8e93"
                font.pixelSize: 10
                topPadding: 4
            }
            Repeater {
                model: widget.calendarFiles ? widget.calendarFiles.paths : []
                delegate: Row {
                    id: file
                    required property string modelData
                    spacing: 6
                    Text {
                        text: "\u2715"
                        color: "#ff453a"
                        font.pixelSize: 10
                        TapHandler { onTapped: widget.calendarFiles.remove(file.modelData) }
                    }
                    Text {
                        width: options.width - 20
                        text: file.modelData
                        color: "white"
                        font.pixelSize: 10
                        elide: Text.ElideMiddle
                    }
                }
            }
            RowLayout {
                width: parent.width
                TextField {
                    id: pathField
                    Layout.fillWidth: true
                    placeholderText: "Add an .ics file or folder"
                    color: "white"
                    placeholderTextColor: "#8e8e93"
                    font.pixelSize: 10
                    selectByMouse: true
                    background: Rectangle { radius: 6; color: "#2c2c2e"; border.color: pathField.activeFocus ? "#0a84ff" : "#3a3a3c" }
                    onPressed: if (widget.notchWindow) widget.notchWindow.makeKeyWindow()
                    onAccepted: addButton.clicked()
                }
                PillButton {
                    id: addButton
                    text: "Add"
                    onClicked: {
                        const error = widget.calendarFiles.add(pathField.text.replace(/^file:\/\//, ""))
                        problem.text = error
                        if (error === "")
                            pathField.text = ""
                    }
                }
            }
            Text {
                id: problem
                width: parent.width
                visible: text !== ""
                color: "#ff6961"
                font.pixelSize: 9
                wrapMode: Text.Wrap
            }
        }
    }
}
