import QtQuick
import Sonvel

// Words that come up while the pointer rests on the parent; made only then.
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
