import QtQuick.Layouts
import QtQuick
import Sonvel

// What concerns the program as a whole.
RowLayout {
    id: root

    required property bool updatesAvailable

    signal checkForUpdates()
    signal quit()

    spacing: 8

    FlatButton {
        text: "Check for Updates"
        enabled: root.updatesAvailable
        onClicked: root.checkForUpdates()
    }

    Item {
        Layout.fillWidth: true
    }

    FlatButton {
        text: "Quit"
        onClicked: root.quit()
    }
}
