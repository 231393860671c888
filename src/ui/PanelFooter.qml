import QtQuick
import QtQuick.Layouts
import Sonvel

// Actions for all applications, and the status line.
ColumnLayout {
    id: root

    required property MixerViewModel model
    required property string statusLine
    required property bool updatesComeWithPackages

    property bool hasClosingChoice: false

    signal closingAsked()
    signal quitRequested()

    spacing: 9

    Flow {
        Layout.fillWidth: true
        spacing: 8

        BorderedButton {
            text: qsTr("Reset all")
            symbol: "arrow.uturn.backward"
            onClicked: root.model.resetAllVolumes()
        }

        BorderedButton {
            text: qsTr("Everything → Speakers")
            symbol: "hifispeaker"
            onClicked: root.model.everythingToSystemOutput()
        }
    }

    PanelLabel {
        Layout.fillWidth: true
        visible: text !== ""
        text: root.statusLine
        font: PanelTheme.caption2
        color: PanelTheme.secondary
        wrapMode: Text.Wrap
        maximumLineCount: 2
        elide: Text.ElideRight
    }

    MenuBarActionRow {
        Layout.fillWidth: true
        updatesAvailable: root.model.updatesAvailable
        updatesComeWithPackages: root.updatesComeWithPackages
        onCheckForUpdates: root.model.checkForUpdates()
        hasClosingChoice: root.hasClosingChoice
        onClosingAsked: root.closingAsked()
        onQuit: root.quitRequested()
    }
}
