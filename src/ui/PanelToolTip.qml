import QtQuick
import QtQuick.Templates as T
import Sonvel

T.ToolTip {
    id: root

    x: parent ? (parent.width - implicitWidth) / 2 : 0
    y: -implicitHeight - 4
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    margins: 4
    horizontalPadding: 7
    verticalPadding: 4
    delay: 700

    contentItem: Text {
        text: root.text
        textFormat: Text.PlainText
        renderType: Text.NativeRendering
        font: PanelTheme.caption
        color: PanelTheme.primary
    }

    background: Rectangle {
        radius: 5
        color: PanelTheme.menu
        border.width: 1
        border.color: PanelTheme.separator
    }
}
