import QtQuick
import QtQuick.Templates as T

// Something to show in a panel, with a menu. It tells what happens to it.
Rectangle {
    id: root

    required property QtObject journal
    property real wantedHeight: 300
    readonly property alias menu: menu

    implicitWidth: 360
    implicitHeight: wantedHeight

    Component.onCompleted: journal.note("appeared")
    Component.onDestruction: journal.note("disappeared")

    T.Menu {
        id: menu

        width: 100
        height: 50
        contentItem: Item {}
    }
}
