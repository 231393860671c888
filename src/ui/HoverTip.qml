import QtQuick
import Sonvel

// A tool tip for the parent; created when shown.
Loader {
    id: root

    property string text: ""
    property bool isHovered: false

    anchors.fill: parent
    active: text !== "" && isHovered
    source: "PanelToolTip.qml"
    onLoaded: {
        const tip = item as PanelToolTip;
        tip.text = Qt.binding(() => root.text);
        tip.open();
    }
}
