import QtQuick
import QtQuick.Layouts
import Sonvel

// A card with a title above its content.
Rectangle {
    id: root

    property alias symbol: picture.name
    property alias title: heading.text
    default property alias content: parts.data

    implicitHeight: parts.implicitHeight + 20
    radius: 10
    color: PanelTheme.fill

    ColumnLayout {
        id: parts

        x: 10
        y: 10
        width: parent.width - 20
        spacing: 8

        RowLayout {
            spacing: 8

            SymbolImage {
                id: picture

                color: PanelTheme.accent
                size: PanelTheme.headline.pixelSize + 3
            }

            PanelLabel {
                id: heading

                Layout.fillWidth: true
                font: PanelTheme.headline
                wrapMode: Text.Wrap
            }
        }
    }
}
