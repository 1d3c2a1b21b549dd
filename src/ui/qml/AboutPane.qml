import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The version, the licence, where to learn more, and the folders Kelvane keeps.
ColumnLayout {
    id: pane
    required property QtObject settingsWindow
    spacing: 4

    ColumnLayout {
        Layout.topMargin: 20
        Layout.alignment: Qt.AlignHCenter
        spacing: 6
        Image {
            Layout.alignment: Qt.AlignHCenter
            source: "qrc:/kelvane/icons/io.kelvane.Kelvane.svg"
            sourceSize: Qt.size(96, 96)
        }
        Label { Layout.alignment: Qt.AlignHCenter; text: "Kelvane"; font.pixelSize: 24; font.bold: true }
        Label {
            objectName: "version"
            Layout.alignment: Qt.AlignHCenter
            text: "Version " + pane.settingsWindow.version
            opacity: 0.8
        }
        Label {
            Layout.alignment: Qt.AlignHCenter
            text: "The top of your screen, alive: what plays, your files, your day."
            wrapMode: Text.Wrap
        }
    }

    SettingSection {
        title: "Licence"
        Label {
            Layout.fillWidth: true
            wrapMode: Text.Wrap
            text: "Kelvane is free software: you can redistribute it and change it under the terms of the "
                + "GNU General Public License, version 3 or any later version. It comes with no warranty."
        }
        Label {
            text: "<a href=\"https://www.gnu.org/licenses/gpl-3.0.html\">Read the licence</a>"
            onLinkActivated: link => Qt.openUrlExternally(link)
        }
    }

    SettingSection {
        title: "Help"
        Label {
            Layout.fillWidth: true
            wrapMode: Text.Wrap
            text: "<b>kelvanectl --help</b> lists what the command line can do; <b>man kelvane</b> describes the agent."
        }
        Button { text: "What Is New"; onClicked: pane.settingsWindow.showChangeLog() }
    }

    SettingSection {
        title: "Where Kelvane Keeps Things"
        Repeater {
            model: pane.settingsWindow.places
            delegate: RowLayout {
                id: place
                required property var modelData
                Layout.fillWidth: true
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 0
                    Label { text: place.modelData.title }
                    Label {
                        text: place.modelData.path
                        opacity: 0.7
                        elide: Text.ElideMiddle
                        Layout.fillWidth: true
                        font.family: "monospace"
                    }
                }
                Button { text: "Open"; onClicked: pane.settingsWindow.openPlace(place.modelData.path) }
            }
        }
    }
}
