import QtQuick
import Sonvel

// A number that its reader watches: right-aligned, and a new one slides in over the old.
PanelLabel {
    id: root

    required property int value

    text: PanelText.number(value)
    font: PanelTheme.digits
    horizontalAlignment: Text.AlignRight
    width: Math.max(30, implicitWidth)
    Accessible.name: PanelText.spokenPercent(value)

    transform: Translate { id: shift }

    // One that changes faster than it can slide, as under a finger, just changes.
    onValueChanged: if (PanelTheme.animates && !slide.running) slide.restart()

    ParallelAnimation {
        id: slide

        NumberAnimation {
            target: shift
            property: "y"
            from: 3
            to: 0
            duration: 160
            easing.type: Easing.OutCubic
        }
        NumberAnimation {
            target: root
            property: "opacity"
            from: 0.4
            to: 1
            duration: 160
        }
    }
}
