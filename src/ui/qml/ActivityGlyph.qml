import QtQuick

// A small drawn symbol for a live activity in the top bar, in the activity's own colour.
Canvas {
    id: glyph
    property string kind: ""
    // The battery's level (0 to 1), whether it charges, and whether it is low.
    property real level: 0
    property bool charging: false
    property bool warning: false
    // The connected Bluetooth device's kind ("headphones", "keyboard"...).
    property string deviceKind: ""
    // The calendar's own colour, for its event.
    property string accent: ""
    readonly property color tint: kind === "batteryVisualizer" && warning ? "#ff453a"
        : kind === "calendar" && accent !== "" ? accent : ({
        timerExpired: "#ff9f0a", tray: "#64d2ff", calendar: "#ff453a", media: "#ffffff",
        updateAvailable: "#30d158", bluetoothDevice: "#0a84ff", batteryVisualizer: "#30d158"
    })[kind] || "#ffffff"

    onKindChanged: requestPaint()
    onLevelChanged: requestPaint()
    onChargingChanged: requestPaint()
    onWarningChanged: requestPaint()
    onDeviceKindChanged: requestPaint()
    onTintChanged: requestPaint()
    onWidthChanged: requestPaint()
    onHeightChanged: requestPaint()

    // A connected device by its kind; an unknown kind gets the Bluetooth rune.
    function drawDevice(ctx, s, cx, cy) {
        switch (deviceKind) {
        case "headphones":              // a headband with two cups
            ctx.arc(cx, cy + s * 0.05, s * 0.32, Math.PI, 2 * Math.PI)
            ctx.stroke()
            ctx.fillRect(cx - s * 0.4, cy + s * 0.02, s * 0.16, s * 0.32)
            ctx.fillRect(cx + s * 0.24, cy + s * 0.02, s * 0.16, s * 0.32)
            break
        case "speaker":                 // a cabinet with its cone
            ctx.rect(cx - s * 0.26, cy - s * 0.4, s * 0.52, s * 0.8); ctx.stroke()
            ctx.beginPath(); ctx.arc(cx, cy + s * 0.08, s * 0.15, 0, 2 * Math.PI); ctx.stroke()
            break
        case "keyboard":                // keys in rows
            ctx.rect(cx - s * 0.44, cy - s * 0.24, s * 0.88, s * 0.48); ctx.stroke()
            for (let i = 0; i < 4; ++i)
                ctx.fillRect(cx - s * 0.32 + i * s * 0.18, cy - s * 0.1, s * 0.08, s * 0.06)
            ctx.fillRect(cx - s * 0.2, cy + s * 0.06, s * 0.4, s * 0.06)
            break
        case "mouse":                   // a rounded body with its wheel
            ctx.roundedRect(cx - s * 0.22, cy - s * 0.38, s * 0.44, s * 0.76, s * 0.2, s * 0.2); ctx.stroke()
            ctx.beginPath(); ctx.moveTo(cx, cy - s * 0.26); ctx.lineTo(cx, cy - s * 0.1); ctx.stroke()
            break
        case "gamepad":                 // a pad with its cross and buttons
            ctx.roundedRect(cx - s * 0.44, cy - s * 0.22, s * 0.88, s * 0.44, s * 0.2, s * 0.2); ctx.stroke()
            ctx.fillRect(cx - s * 0.3, cy - s * 0.03, s * 0.2, s * 0.06)
            ctx.fillRect(cx - s * 0.23, cy - s * 0.1, s * 0.06, s * 0.2)
            ctx.beginPath(); ctx.arc(cx + s * 0.22, cy, s * 0.05, 0, 2 * Math.PI); ctx.fill()
            break
        case "phone":                   // a handset
            ctx.roundedRect(cx - s * 0.2, cy - s * 0.42, s * 0.4, s * 0.84, s * 0.08, s * 0.08); ctx.stroke()
            ctx.fillRect(cx - s * 0.06, cy + s * 0.3, s * 0.12, s * 0.04)
            break
        case "computer":                // a notebook
            ctx.rect(cx - s * 0.32, cy - s * 0.3, s * 0.64, s * 0.42); ctx.stroke()
            ctx.fillRect(cx - s * 0.44, cy + s * 0.2, s * 0.88, s * 0.07)
            break
        case "watch":                   // a face on its strap
            ctx.fillRect(cx - s * 0.12, cy - s * 0.44, s * 0.24, s * 0.88)
            ctx.beginPath(); ctx.fillStyle = "black"; ctx.arc(cx, cy, s * 0.2, 0, 2 * Math.PI); ctx.fill()
            ctx.beginPath(); ctx.arc(cx, cy, s * 0.2, 0, 2 * Math.PI); ctx.stroke()
            break
        default:                        // the rune
            ctx.moveTo(cx - s * 0.22, cy - s * 0.2); ctx.lineTo(cx + s * 0.2, cy + s * 0.2)
            ctx.lineTo(cx, cy + s * 0.4); ctx.lineTo(cx, cy - s * 0.4); ctx.lineTo(cx + s * 0.2, cy - s * 0.2)
            ctx.lineTo(cx - s * 0.22, cy + s * 0.2)
            ctx.stroke()
        }
    }

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
        case "bluetoothDevice":
            drawDevice(ctx, s, cx, cy)
            break
        case "batteryVisualizer": {     // a battery filled to its level, with a bolt while charging
            const w = s * 0.8, h = s * 0.44, x = cx - s * 0.44, y = cy - h / 2
            ctx.lineWidth = Math.max(1, s * 0.07)
            ctx.strokeStyle = Qt.rgba(1, 1, 1, 0.55)
            ctx.rect(x, y, w, h); ctx.stroke()
            ctx.fillStyle = Qt.rgba(1, 1, 1, 0.55)
            ctx.fillRect(x + w + s * 0.02, cy - h * 0.2, s * 0.06, h * 0.4)
            ctx.fillStyle = tint
            const inset = s * 0.07
            ctx.fillRect(x + inset, y + inset, Math.max(s * 0.04, (w - 2 * inset) * Math.max(0, Math.min(1, level))), h - 2 * inset)
            if (charging) {
                ctx.beginPath()
                ctx.fillStyle = "white"
                ctx.strokeStyle = "black"
                ctx.lineWidth = Math.max(1, s * 0.05)
                ctx.moveTo(cx + s * 0.06, cy - s * 0.3); ctx.lineTo(cx - s * 0.14, cy + s * 0.04)
                ctx.lineTo(cx - s * 0.01, cy + s * 0.04); ctx.lineTo(cx - s * 0.08, cy + s * 0.3)
                ctx.lineTo(cx + s * 0.14, cy - s * 0.05); ctx.lineTo(cx + s * 0.01, cy - s * 0.05)
                ctx.closePath(); ctx.stroke(); ctx.fill()
            }
            break
        }
        default:                        // media: three level bars
            for (let i = 0; i < 3; ++i) {
                const h = s * [0.5, 0.8, 0.35][i]
                ctx.fillRect(cx - s * 0.36 + i * s * 0.28, cy + s * 0.4 - h, s * 0.16, h)
            }
        }
    }
}
