import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Sonvel

T.MenuItem {
    id: root

    required property string symbol
    readonly property color textColor: highlighted ? PanelTheme.onAccent : PanelTheme.primary

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    horizontalPadding: 8
    verticalPadding: 5
    font: PanelTheme.body

    Accessible.role: Accessible.MenuItem
    Accessible.name: text
    Accessible.onPressAction: {
        root.triggered();
        root.menu.dismiss();
    }

    contentItem: RowLayout {
        spacing: 7

        SymbolImage {
            name: root.symbol
            color: root.textColor
            size: root.font.pixelSize
        }

        Text {
            id: label

            Layout.fillWidth: true
            text: root.text
            textFormat: Text.PlainText
            renderType: Text.NativeRendering
            horizontalAlignment: Text.AlignLeft
            elide: Text.ElideRight
            font: root.font
            color: root.textColor
        }
    }

    HoverTip {
        text: label.truncated ? root.text : ""
        isHovered: root.hovered
    }

    background: Rectangle {
        radius: 4
        color: root.highlighted ? PanelTheme.prominent : "transparent"
    }
}
