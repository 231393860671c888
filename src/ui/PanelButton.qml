import QtQuick
import QtQuick.Templates as T
import Sonvel

// The common behaviour of the panel's buttons; each draws itself.
T.AbstractButton {
    id: root

    property string help: ""
    property string cutText: "" // the full text if it is elided
    property real ringRadius: 5

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.description: help
    Accessible.onPressAction: if (root.enabled) root.clicked()

    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    FocusRing {
        visible: root.visualFocus
        radius: root.ringRadius + 2
    }

    HoverTip {
        text: root.cutText !== "" ? root.cutText : root.help
        isHovered: root.hovered && !root.pressed
    }
}
