import QtQuick
import QtQuick.Templates as T

// Something to show in a panel, with a menu.
Item {
    property T.Menu menu: T.Menu {
        contentItem: Item {}
    }

    implicitWidth: 360
    implicitHeight: 300
}
