import QtQuick
import Sonvel

// A level from 0 to 1 on a track; what is beyond is cut. It rises fast and falls
// slowly, from one reading to the next.
Item {
    id: root

    required property real level
    readonly property real fraction: PanelText.meterFraction(level)
    property real shown: 0
    readonly property bool mirrored: LayoutMirroring.enabled

    implicitHeight: 3

    onFractionChanged: {
        glide.stop();
        if (!PanelTheme.animates) {
            shown = fraction;
            return;
        }
        glide.to = fraction;
        glide.duration = fraction > shown ? 80 : 300;
        glide.start();
    }

    NumberAnimation {
        id: glide

        target: root
        property: "shown"
    }

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: PanelTheme.secondary
        opacity: 0.15
    }

    Rectangle {
        anchors.left: parent.left
        width: parent.width * root.shown
        height: parent.height
        radius: height / 2
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop { position: 0; color: root.mirrored ? PanelTheme.red : PanelTheme.green }
            GradientStop { position: 0.5; color: PanelTheme.yellow }
            GradientStop { position: 1; color: root.mirrored ? PanelTheme.green : PanelTheme.red }
        }
    }
}
