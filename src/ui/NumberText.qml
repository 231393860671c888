import QtQuick
import Sonvel

// A changing number: right-aligned, a new value slides in over the old one.
PanelLabel {
    id: root

    required property int value

    text: PanelText.number(value)
    font: PanelTheme.digits
    horizontalAlignment: Text.AlignRight
    width: Math.max(30, implicitWidth)
    Accessible.name: PanelText.spokenPercent(value)

    transform: Translate { id: shift }

    // Changes that arrive during a slide, as while dragging, are shown at once.
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
