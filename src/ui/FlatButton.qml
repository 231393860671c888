import QtQuick
import Sonvel

// A text button without a background.
PanelButton {
    id: root

    font: PanelTheme.caption
    verticalPadding: 2
    cutText: label.truncated ? text : ""

    contentItem: Text {
        id: label

        text: root.text
        textFormat: Text.PlainText
        renderType: Text.NativeRendering
        elide: Text.ElideRight
        font: root.font
        color: !root.enabled ? PanelTheme.disabled
                             : root.hovered || root.visualFocus ? PanelTheme.primary : PanelTheme.secondary
        opacity: root.pressed ? 0.5 : 1
    }
}
