import QtQuick
import Sonvel

// A busy indicator: eight dots that fade around a circle.
Item {
    id: root

    required property bool running
    property color color: PanelTheme.primary

    implicitWidth: PanelTheme.caption.pixelSize + 2
    implicitHeight: implicitWidth

    Repeater {
        model: 8

        Item {
            id: spoke

            required property int index
            readonly property Spinner spinner: parent as Spinner

            anchors.fill: parent
            rotation: index * 45

            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                width: parent.width / 5
                height: width
                radius: width / 2
                color: spoke.spinner?.color ?? "transparent"
                opacity: 0.25 + 0.75 * spoke.index / 7
            }
        }
    }

    RotationAnimation on rotation {
        running: root.running && root.visible && PanelTheme.animates
        from: 0
        to: 360
        duration: 900
        loops: Animation.Infinite
    }
}
