import QtQuick

// A small drawn symbol for a live activity in the top bar, in the activity's own colour.
Canvas {
    id: glyph
    property string kind: ""
    readonly property color tint: ({
        timerExpired: "#ff9f0a", tray: "#64d2ff", calendar: "#ff453a", media: "#ffffff",
        updateAvailable: "#30d158", bluetoothDevice: "#0a84ff", batteryVisualizer: "#30d158"
    })[kind] || "#ffffff"

    onKindChanged: requestPaint()
    onWidthChanged: requestPaint()
    onHeightChanged: requestPaint()

    onPaint: {
        const ctx = getContext("2d")
        ctx.reset()
        const s = Math.min(width, height)
        const cx = width / 2, cy = height / 2
        ctx.strokeStyle = tint
        ctx.fillStyle = tint
        ctx.lineWidth = Math.max(1.5, s * 0.1)
        ctx.lineCap = "round"
        ctx.lineJoin = "round"
        ctx.beginPath()
        switch (kind) {
        case "timerExpired":            // a clock face with its hands
            ctx.arc(cx, cy, s * 0.42, 0, 2 * Math.PI)
            ctx.moveTo(cx, cy); ctx.lineTo(cx, cy - s * 0.26)
            ctx.moveTo(cx, cy); ctx.lineTo(cx + s * 0.18, cy + s * 0.08)
            ctx.stroke()
            break
        case "tray":                    // a folder
            ctx.moveTo(cx - s * 0.42, cy + s * 0.32); ctx.lineTo(cx - s * 0.42, cy - s * 0.3)
            ctx.lineTo(cx - s * 0.12, cy - s * 0.3); ctx.lineTo(cx - s * 0.02, cy - s * 0.18)
            ctx.lineTo(cx + s * 0.42, cy - s * 0.18); ctx.lineTo(cx + s * 0.42, cy + s * 0.32)
            ctx.closePath(); ctx.stroke()
            break
        case "calendar":                // a page with its header
            ctx.rect(cx - s * 0.38, cy - s * 0.34, s * 0.76, s * 0.7); ctx.stroke()
            ctx.fillRect(cx - s * 0.38, cy - s * 0.34, s * 0.76, s * 0.2)
            break
        case "updateAvailable":         // an arrow into a tray
            ctx.moveTo(cx, cy - s * 0.4); ctx.lineTo(cx, cy + s * 0.12)
            ctx.moveTo(cx - s * 0.2, cy - s * 0.08); ctx.lineTo(cx, cy + s * 0.12); ctx.lineTo(cx + s * 0.2, cy - s * 0.08)
            ctx.moveTo(cx - s * 0.38, cy + s * 0.38); ctx.lineTo(cx + s * 0.38, cy + s * 0.38)
            ctx.stroke()
            break
        case "bluetoothDevice":         // the rune
            ctx.moveTo(cx - s * 0.22, cy - s * 0.2); ctx.lineTo(cx + s * 0.2, cy + s * 0.2)
            ctx.lineTo(cx, cy + s * 0.4); ctx.lineTo(cx, cy - s * 0.4); ctx.lineTo(cx + s * 0.2, cy - s * 0.2)
            ctx.lineTo(cx - s * 0.22, cy + s * 0.2)
            ctx.stroke()
            break
        case "batteryVisualizer":       // a battery
            ctx.rect(cx - s * 0.42, cy - s * 0.2, s * 0.76, s * 0.4); ctx.stroke()
            ctx.fillRect(cx + s * 0.36, cy - s * 0.08, s * 0.08, s * 0.16)
            ctx.fillRect(cx - s * 0.34, cy - s * 0.12, s * 0.4, s * 0.24)
            break
        default:                        // media: three level bars
            for (let i = 0; i < 3; ++i) {
                const h = s * [0.5, 0.8, 0.35][i]
                ctx.fillRect(cx - s * 0.36 + i * s * 0.28, cy + s * 0.4 - h, s * 0.16, h)
            }
        }
    }
}
