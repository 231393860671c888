import QtQuick
import Sonvel

// Text as it stands: never markup, and known to assistive technologies.
Text {
    color: PanelTheme.primary
    font: PanelTheme.body
    textFormat: Text.PlainText
    renderType: Text.NativeRendering
    horizontalAlignment: Text.AlignLeft

    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
