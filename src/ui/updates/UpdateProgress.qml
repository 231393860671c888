import QtQuick
import QtQuick.Templates as T
import Sonvel
import SonvelUpdates

// The progress, or a moving bar if it is unknown; the bar stands still in the middle if animations are off.
T.ProgressBar {
    id: root

    required property UpdatePresenter presenter
    property real place: 0.5

    implicitHeight: 6
    indeterminate: !root.presenter.isCounted
    value: root.presenter.fraction
    Accessible.role: Accessible.ProgressBar
    Accessible.name: root.presenter.heading
    Accessible.description: root.presenter.progressText

    background: Rectangle {
        radius: height / 2
        color: PanelTheme.groove
    }

    contentItem: Item {
        Rectangle {
            x: root.indeterminate ? root.place * (parent.width - width) : 0
            width: parent.width * (root.indeterminate ? 0.3 : root.position)
            height: parent.height
            radius: height / 2
            color: PanelTheme.prominent
        }
    }

    SequentialAnimation {
        running: root.visible && root.indeterminate && PanelTheme.animates
        loops: Animation.Infinite

        NumberAnimation {
            target: root
            property: "place"
            from: 0
            to: 1
            duration: 1100
            easing.type: Easing.InOutSine
        }

        NumberAnimation {
            target: root
            property: "place"
            from: 1
            to: 0
            duration: 1100
            easing.type: Easing.InOutSine
        }
    }
}
