import QtQuick
import Sonvel

// A meter: level 0 to 1 on a track; other values are clamped.
Item {
    id: root

    property alias level: fill.level
    readonly property alias shown: fill.shown

    implicitHeight: 3

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: PanelTheme.secondary
        opacity: 0.15
    }

    MeterFill {
        id: fill

        objectName: "fill"
        anchors.fill: parent
        animates: PanelTheme.animates
        mirrored: root.LayoutMirroring.enabled
        low: PanelTheme.green
        middle: PanelTheme.yellow
        high: PanelTheme.red
    }
}
