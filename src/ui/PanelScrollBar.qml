import QtQuick
import QtQuick.Templates as T
import Sonvel

T.ScrollBar {
    id: root

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: 2
    minimumSize: 0.1
    visible: size < 1

    contentItem: Rectangle {
        implicitWidth: 5
        implicitHeight: 5
        radius: 2.5
        color: PanelTheme.tertiary
        opacity: root.pressed || root.hovered ? 0.9 : 0.5
    }
}
