import QtQuick
import Sonvel

// A symbol in one colour at the screen's resolution; empty without a name.
Item {
    id: root

    required property string name
    property color color: PanelTheme.primary
    property real size: 13

    implicitWidth: size
    implicitHeight: size

    Image {
        anchors.centerIn: parent
        width: root.size
        height: root.size
        sourceSize.width: root.size
        sourceSize.height: root.size
        source: root.name !== "" ? PanelText.symbol(root.name, root.color) : ""
        fillMode: Image.PreserveAspectFit
    }
}
