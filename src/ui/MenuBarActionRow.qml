import QtQuick.Layouts
import QtQuick
import Sonvel

// Buttons for the program itself.
RowLayout {
    id: root

    required property bool updatesAvailable
    required property bool updatesComeWithPackages // then updates need no button

    signal checkForUpdates()
    signal quit()

    spacing: 8

    // Disabled buttons get no hover events, so the wrapper handles them.
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
