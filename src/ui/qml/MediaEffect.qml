import QtQuick
import Kelvane

// The media effect beside the artwork: the spectrum's bars, a wave, a ring that trembles with the
// sound, or an animation. It follows the sound only while it is on screen and something plays.
Item {
    id: effect
    property QtObject style: null
    property QtObject visualizer: null
    property bool playing: false
    readonly property string kind: style ? style.effect : "audioSpectrograph"
    readonly property color tint: style ? style.accent : "white"

    // Heard by the visualizer as one more viewer while it shows a sound-driven effect.
    readonly property bool listening: visible && kind !== "gif"
    onListeningChanged: if (visualizer) visualizer.setShown(listening, effect)
    Component.onCompleted: if (visualizer) visualizer.setShown(listening, effect)
    Component.onDestruction: if (visualizer) visualizer.setShown(false, effect)

    SoundShape {
        objectName: "soundShape"
        anchors.fill: parent
        visible: effect.kind !== "gif"
        kind: effect.kind
        color: effect.tint
        visualizer: effect.visualizer
    }

    Item {
        anchors.fill: parent
        clip: true
        visible: effect.kind === "gif"
        AnimatedImage {
            id: animation
            objectName: "gifAnimation"
            source: parent.visible && effect.style ? effect.style.gifSource : ""
            playing: effect.playing && parent.visible
            smooth: effect.style ? effect.style.gifSmooth : false
            mipmap: false
            readonly property rect place: effect.style && implicitWidth > 0
                ? effect.style.gifRect(Qt.size(effect.width, effect.height), Qt.size(implicitWidth, implicitHeight))
                : Qt.rect(0, 0, effect.width, effect.height)
            x: place.x
            y: place.y
            width: place.width
            height: place.height
        }
    }
}
