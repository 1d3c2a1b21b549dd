import QtQuick

// The playback controls' symbols, drawn: "previous", "play", "pause", "next".
Canvas {
    id: glyph
    property string kind: "play"
    property color tint: "white"

    onKindChanged: requestPaint()
    onTintChanged: requestPaint()
    onWidthChanged: requestPaint()
    onHeightChanged: requestPaint()

    onPaint: {
        const ctx = getContext("2d")
        ctx.reset()
        ctx.fillStyle = tint
        const s = Math.min(width, height)
        const x0 = (width - s) / 2, y0 = (height - s) / 2
        const triangle = (left, right) => {
            // Points right when right > left, left otherwise.
            ctx.moveTo(x0 + left * s, y0 + 0.15 * s)
            ctx.lineTo(x0 + right * s, y0 + 0.5 * s)
            ctx.lineTo(x0 + left * s, y0 + 0.85 * s)
            ctx.closePath()
        }
        ctx.beginPath()
        switch (kind) {
        case "pause":
            ctx.rect(x0 + 0.2 * s, y0 + 0.15 * s, 0.2 * s, 0.7 * s)
            ctx.rect(x0 + 0.6 * s, y0 + 0.15 * s, 0.2 * s, 0.7 * s)
            break
        case "next":
            triangle(0.05, 0.5)
            triangle(0.5, 0.95)
            break
        case "previous":
            triangle(0.95, 0.5)
            triangle(0.5, 0.05)
            break
        default:
            triangle(0.2, 0.9)
        }
        ctx.fill()
    }
}
