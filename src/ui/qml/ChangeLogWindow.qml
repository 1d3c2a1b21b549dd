import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtQuick.Window
import "Colours.js" as Colours

// What changed, release by release, newest first.
ApplicationWindow {
    id: window
    // [{ version, date, changes: [text] }]
    required property var releases
    // Opened by itself after an update rather than asked for.
    property bool afterUpdate: false
    // Dark colours when the desktop asks for them.
    property bool dark: false
    SystemPalette { id: system }
    onDarkChanged: Colours.apply(palette, dark, system)
    Component.onCompleted: Colours.apply(palette, dark, system)

    title: "What Is New in Kelvane"
    width: 520
    height: 460
    minimumWidth: 360
    minimumHeight: 260
    x: Screen.virtualX + (Screen.width - width) / 2
    y: Screen.virtualY + (Screen.height - height) / 4

    Shortcut { sequences: [StandardKey.Close, "Escape"]; onActivated: window.close() }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 20
        spacing: 12

        Label {
            text: window.afterUpdate ? "Kelvane was updated" : "What is new"
            font.pixelSize: 22
            font.bold: true
        }
        ScrollView {
            id: scroller
            Layout.fillWidth: true
            Layout.fillHeight: true
            contentWidth: availableWidth
            ColumnLayout {
                width: scroller.availableWidth
                spacing: 14
                Repeater {
                    model: window.releases
                    delegate: ColumnLayout {
                        id: release
                        required property var modelData
                        objectName: "release." + modelData.version
                        Layout.fillWidth: true
                        spacing: 4
                        Label {
                            text: "Version " + release.modelData.version
                                + (release.modelData.date ? "  ·  " + release.modelData.date : "")
                            font.bold: true
                        }
                        Repeater {
                            model: release.modelData.changes
                            delegate: Label {
                                required property string modelData
                                Layout.fillWidth: true
                                leftPadding: 14
                                wrapMode: Text.Wrap
                                textFormat: Text.MarkdownText
                                text: "•  " + modelData
                            }
                        }
                    }
                }
            }
        }
        Button {
            Layout.alignment: Qt.AlignRight
            text: "Continue"
            highlighted: true
            focus: true
            onClicked: window.close()
        }
    }
}
