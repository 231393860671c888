import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Sonvel

// Shows an application's output, and opens the menu to choose it.
PanelButton {
    id: root

    required property MixerViewModel model
    required property ChannelState ch
    readonly property bool routed: ch.outputUID !== undefined
    readonly property color labelColor: routed ? PanelTheme.accent : PanelTheme.secondary
    property T.Control opener: null
    property bool openedByKey: false

    function openMenu() {
        opener = Window.activeFocusItem as T.Control;
        openedByKey = opener?.visualFocus ?? false;
        menuLoader.setSource("OutputMenu.qml", { model: root.model, ch: root.ch });
        (menuLoader.item as OutputMenu).open();
    }

    function closeMenu() {
        menuLoader.source = "";
    }

    // Reading outputDevices makes this binding update when the devices change.
    text: model.outputDevices && model.outputName(ch.outputUID)
    font: PanelTheme.caption2
    verticalPadding: 1
    help: implicitContentWidth > availableWidth ? text : "" // only if elided

    Accessible.name: PanelText.outputLabel(ch.name)
    Accessible.description: text

    onClicked: openMenu()
    onVisibleChanged: if (!visible) closeMenu()
    Keys.onDownPressed: root.openMenu()

    contentItem: RowLayout {
        spacing: 3

        SymbolImage {
            name: root.routed ? "headphones" : "arrow.triangle.branch"
            color: root.labelColor
            size: root.font.pixelSize + 1
        }

        Text {
            Layout.fillWidth: true
            text: root.text
            textFormat: Text.PlainText
            renderType: Text.NativeRendering
            horizontalAlignment: Text.AlignLeft
            elide: Text.ElideRight
            font: root.font
            color: root.labelColor
            opacity: root.pressed ? 0.5 : 1
        }
    }

    Loader {
        id: menuLoader

        y: root.height + 3
    }

    Connections {
        target: menuLoader.item

        function onClosed() {
            root.closeMenu();
            root.opener?.forceActiveFocus(root.openedByKey ? Qt.TabFocusReason : Qt.OtherFocusReason);
        }
    }
}
