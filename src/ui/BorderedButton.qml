import QtQuick
import QtQuick.Layouts
import Sonvel

// A button with a background, a text and optionally a symbol.
PanelButton {
    id: root

    property string symbol: ""
    property bool prominent: false
    property bool spinning: false
    readonly property color textColor: prominent ? PanelTheme.onAccent : PanelTheme.primary

    font: PanelTheme.caption
    horizontalPadding: 9
    verticalPadding: 4
    ringRadius: 5
    cutText: label.truncated ? text : ""

    contentItem: RowLayout {
        spacing: root.spinning ? 6 : 4

        Spinner {
            visible: root.spinning
            running: root.spinning
            color: root.textColor
        }

        SymbolImage {
            visible: root.symbol !== ""
            name: root.symbol
            color: root.textColor
            size: root.font.pixelSize + 1
        }

        Text {
            id: label

            Layout.fillWidth: true
            text: root.text
            textFormat: Text.PlainText
            renderType: Text.NativeRendering
            elide: Text.ElideRight
            font: root.font
            color: root.textColor
        }
    }

    background: Rectangle {
        radius: 5
        color: root.prominent ? PanelTheme.prominent : PanelTheme.control
        border.width: root.prominent ? 0 : 1
        border.color: PanelTheme.separator

        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            visible: root.enabled && (root.hovered || root.pressed)
            color: PanelTheme.primary
            opacity: root.pressed ? 0.16 : 0.06
        }
    }
}
