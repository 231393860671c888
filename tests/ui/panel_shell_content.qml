import QtQuick
import QtQuick.Templates as T

// Something to show in a panel, with a menu.
Rectangle {
    property real wantedHeight: 300
    readonly property alias menu: menu

    implicitWidth: 360
    implicitHeight: wantedHeight

    T.Menu {
        id: menu

        contentItem: Item {}
    }
}
