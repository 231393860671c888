import QtQuick
import Sonvel

// Shows where the keyboard is.
Rectangle {
    anchors.fill: parent
    anchors.margins: -2
    color: "transparent"
    border.width: 2
    border.color: PanelTheme.accent
}
