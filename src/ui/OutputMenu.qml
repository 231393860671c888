import QtQuick
import QtQuick.Templates as T
import Sonvel

// The menu of output devices for an application.
PanelMenu {
    id: root

    required property MixerViewModel model
    required property ChannelState ch

    PanelMenuItem {
        text: qsTr("Follow System Output")
        symbol: root.ch.outputUID === undefined ? "checkmark" : ""
        onTriggered: root.model.setOutput(undefined, root.ch)
    }

    T.MenuSeparator {
        Accessible.role: Accessible.Separator
        implicitHeight: 9
        verticalPadding: 4
        horizontalPadding: 8
        contentItem: Rectangle {
            color: PanelTheme.separator
        }
    }

    Repeater {
        model: root.model.outputDevices

        PanelMenuItem {
            required property var modelData
            readonly property OutputMenu outputs: menu as OutputMenu

            text: modelData.name
            symbol: outputs && modelData.uid === outputs.ch.outputUID ? "checkmark" : "hifispeaker"
            onTriggered: outputs.model.setOutput(modelData.uid, outputs.ch)
        }
    }
}
