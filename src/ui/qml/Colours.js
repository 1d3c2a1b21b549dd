.pragma library

// The colours of a window that follows the desktop's light or dark preference: dark ones of our
// own, else the desktop's palette as Qt reads it.
const darkRoles = {
    window: "#242428", windowText: "#eeeef0", base: "#1c1c20", alternateBase: "#2e2e33",
    text: "#eeeef0", button: "#34343a", buttonText: "#eeeef0", brightText: "#ffffff",
    highlight: "#3584e4", highlightedText: "#ffffff", link: "#78aeed", linkVisited: "#a78bd8",
    light: "#4a4a52", midlight: "#3c3c43", mid: "#2a2a2f", dark: "#141417", shadow: "#000000",
    toolTipBase: "#34343a", toolTipText: "#eeeef0", placeholderText: "#8e8e96"
}

function apply(palette, dark, system) {
    for (const role in darkRoles) {
        if (dark)
            palette[role] = darkRoles[role]
        else if (system[role] !== undefined)
            palette[role] = system[role]
    }
}
