import QtQuick
import Sonvel

// Marks the control with keyboard focus.
Rectangle {
    anchors.fill: parent
    anchors.margins: -2
    color: "transparent"
    border.width: 2
    border.color: PanelTheme.accent
}
