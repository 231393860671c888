import QtQuick.Layouts
import QtQuick
import Sonvel

// What concerns the program as a whole.
RowLayout {
    id: root

    required property bool updatesAvailable
    required property bool updatesComeWithPackages // then this program has no say in them

    signal checkForUpdates()
    signal quit()

    spacing: 8

    // A button that can't be pressed is told of no pointer.
    Item {
        visible: !root.updatesComeWithPackages
        implicitWidth: check.implicitWidth
        implicitHeight: check.implicitHeight

        FlatButton {
            id: check

            text: "Check for Updates"
            enabled: root.updatesAvailable
            Accessible.description: reason.text
            onClicked: root.checkForUpdates()
        }

        HoverHandler {
            id: pointer
        }

        HoverTip {
            id: reason

            text: root.updatesAvailable ? "" : "Updates are not configured in this build."
            isHovered: pointer.hovered
        }
    }

    Item {
        Layout.fillWidth: true
    }

    FlatButton {
        text: "Quit"
        onClicked: root.quit()
    }
}
