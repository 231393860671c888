import QtQuick
import QtQuick.Templates as T
import Sonvel

// What every button of the panel has in common; how it is drawn is its own.
T.AbstractButton {
    id: root

    property string help: ""
    property real ringRadius: 5

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    opacity: enabled ? 1 : 0.45

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.description: help
    Accessible.onPressAction: root.clicked()

    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    FocusRing {
        visible: root.visualFocus
        radius: root.ringRadius + 2
    }

    Loader {
        anchors.fill: parent
        active: root.help !== "" && root.hovered && !root.pressed
        source: "PanelToolTip.qml"
        onLoaded: {
            const tip = item as PanelToolTip;
            tip.text = Qt.binding(() => root.help);
            tip.open();
        }
    }
}
