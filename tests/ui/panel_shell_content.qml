import QtQuick
import QtQuick.Templates as T

// Sample content with a menu.
Item {
    property T.Menu menu: T.Menu {
        contentItem: Item {}
    }

    implicitWidth: 360
    Accessible.role: Accessible.Pane
}
