import QtQuick
import Sonvel

// Marks an application that is not playing.
Item {
    implicitWidth: label.implicitWidth + 10
    implicitHeight: label.implicitHeight + 2

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: PanelTheme.secondary
        opacity: 0.15
    }

    PanelLabel {
        id: label

        anchors.centerIn: parent
        text: qsTr("idle")
        font: PanelTheme.badge
        color: PanelTheme.secondary
    }
}
