import QtQuick

// A small rounded button for the dark panel.
Rectangle {
    id: button
    property alias text: label.text
    property color textColor: "white"
    signal clicked()

    implicitWidth: label.implicitWidth + 16
    implicitHeight: label.implicitHeight + 8
    radius: height / 2
    color: tap.pressed ? "#636366" : hover.hovered ? "#48484a" : "#3a3a3c"

    Text {
        id: label
        anchors.centerIn: parent
        color: button.textColor
        font.pixelSize: 11
    }
    HoverHandler { id: hover }
    TapHandler { id: tap; onTapped: button.clicked() }
}
