import QtQuick
import Sonvel

// A symbol button without a background.
PanelButton {
    id: root

    required property string symbol
    property color symbolColor: PanelTheme.primary
    property real symbolSize: 12

    contentItem: SymbolImage {
        name: root.symbol
        color: root.symbolColor
        size: root.symbolSize
        opacity: root.pressed ? 0.5 : 1
    }
}
