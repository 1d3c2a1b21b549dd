import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The Tuckle's timers: a form to start one (a label and a duration such as "5m" or "1:30") and
// the running, paused and ended timers with their controls.
Item {
    id: widget
    property QtObject timers: null
    property QtObject commands: null
    property QtObject notchWindow: null

    function clock(seconds) {
        const h = Math.floor(seconds / 3600), m = Math.floor(seconds % 3600 / 60), s = seconds % 60
        const pad = n => (n < 10 ? "0" : "") + n
        return h > 0 ? h + ":" + pad(m) + ":" + pad(s) : m + ":" + pad(s)
    }

    function startTimer() {
        if (!commands)
            return
        const error = commands.addTimer(labelField.text, durationField.text)
        problem.text = error
        if (error === "") {
            labelField.text = ""
            durationField.text = ""
        }
    }

    component Field: TextField {
        implicitWidth: 80
        color: "white"
        placeholderTextColor: "#8e8e93"
        font.pixelSize: 12
        selectByMouse: true
        background: Rectangle { radius: 6; color: "#2c2c2e"; border.color: parent.activeFocus ? "#0a84ff" : "#3a3a3c" }
        onPressed: if (widget.notchWindow) widget.notchWindow.makeKeyWindow()
    }

    RowLayout {
        anchors.fill: parent
        spacing: 12

        ColumnLayout {
            Layout.preferredWidth: 180
            Layout.maximumWidth: 180
            Layout.fillHeight: true
            Layout.alignment: Qt.AlignTop
            spacing: 6
            Field { id: labelField; objectName: "timerLabelField"; Layout.fillWidth: true; placeholderText: "Timer label"
                    onAccepted: durationField.forceActiveFocus() }
            RowLayout {
                Layout.fillWidth: true
                spacing: 6
                Field { id: durationField; objectName: "timerDurationField"; Layout.fillWidth: true
                        placeholderText: "5m or 1:30"; onAccepted: widget.startTimer() }
                PillButton { text: "Start"; onClicked: widget.startTimer() }
            }
            Text {
                id: problem
                Layout.fillWidth: true
                visible: text !== ""
                color: "#ff6961"
                font.pixelSize: 10
                wrapMode: Text.Wrap
                maximumLineCount: 3
                elide: Text.ElideRight
            }
            Item { Layout.fillHeight: true }
        }

        ListView {
            id: list
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            spacing: 4
            model: widget.timers ? widget.timers.timers : []
            delegate: RowLayout {
                id: row
                required property QtObject modelData
                readonly property string timerState: modelData.stateName
                width: ListView.view.width
                spacing: 6
                Text {
                    Layout.fillWidth: true
                    text: row.modelData.label !== "" ? row.modelData.label : "Timer"
                    color: "white"
                    font.pixelSize: 12
                    elide: Text.ElideRight
                }
                Text {
                    text: row.timerState === "expired" ? "Ended" : widget.clock(row.modelData.remainingSeconds)
                    color: row.timerState === "expired" ? "#ff9f0a" : row.timerState === "paused" ? "#8e8e93" : "white"
                    font.pixelSize: 13
                    font.family: "monospace"
                }
                PillButton {
                    visible: row.timerState !== "expired"
                    text: row.timerState === "running" ? "Pause" : "Resume"
                    onClicked: row.timerState === "running" ? widget.timers.pause(row.modelData) : widget.timers.start(row.modelData)
                }
                PillButton {
                    text: row.timerState === "expired" ? "Dismiss" : "Cancel"
                    textColor: row.timerState === "expired" ? "white" : "#ff6961"
                    onClicked: widget.timers.cancel(row.modelData)
                }
            }
            Text {
                anchors.centerIn: parent
                visible: list.count === 0
                text: "No timers"
                color: "#8e8e93"
                font.pixelSize: 12
            }
        }
    }
}
