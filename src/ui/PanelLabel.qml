import QtQuick
import Sonvel

// Plain text, never markup, known to screen readers.
Text {
    color: PanelTheme.primary
    font: PanelTheme.body
    textFormat: Text.PlainText
    renderType: Text.NativeRendering
    horizontalAlignment: Text.AlignLeft

    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
