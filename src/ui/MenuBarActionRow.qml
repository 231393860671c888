import QtQuick.Layouts
import QtQuick
import Sonvel

// Buttons for the program itself.
RowLayout {
    id: root

    required property bool updatesAvailable
    required property bool updatesComeWithPackages // then updates need no button

    property bool hasClosingChoice: false

    signal checkForUpdates()
    signal closingAsked()
    signal quit()

    spacing: 8

    // Disabled buttons get no hover events, so the wrapper handles them.
    Item {
        visible: !root.updatesComeWithPackages
        implicitWidth: check.implicitWidth
        implicitHeight: check.implicitHeight

        FlatButton {
            id: check

            text: qsTr("Check for Updates")
            enabled: root.updatesAvailable
            Accessible.description: reason.text
            onClicked: root.checkForUpdates()
        }

        HoverHandler {
            id: pointer
        }

        HoverTip {
            id: reason

            text: root.updatesAvailable ? "" : qsTr("Updates are not configured in this build.")
            isHovered: pointer.hovered
        }
    }

    Item {
        Layout.fillWidth: true
    }

    FlatButton {
        Layout.fillWidth: true
        Layout.maximumWidth: implicitWidth
        Layout.minimumWidth: 0
        visible: root.hasClosingChoice
        text: qsTr("On Close…")
        onClicked: root.closingAsked()
    }

    FlatButton {
        text: qsTr("Quit")
        onClicked: root.quit()
    }
}
