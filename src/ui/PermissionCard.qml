import QtQuick
import QtQuick.Layouts
import Sonvel

// Explains why the capture permission is needed, and requests it.
PanelCard {
    id: root

    required property MixerViewModel model
    required property bool settingsMissing

    // Texts for this desktop, where the sound server's permissions are the consent.
    readonly property string explanation: qsTr("To show and adjust each app's sound, Sonvel needs the sound server's permission to move and play what apps play. Nothing is recorded, saved, or sent; no restart, no driver. You can revoke it anytime.")
    readonly property string grantHelp: qsTr("Tries whether the sound server lets Sonvel control other apps")
    readonly property string settingsHelp: qsTr("Opens the page on how to give access to sound")
    readonly property string deniedHint: qsTr("Access is currently denied. Allow “Sonvel” in the rules of the sound server, then it appears automatically.")
    readonly property string missingHint: qsTr("This desktop has no settings for access to sound. Restart Sonvel outside of its sandbox, or see docs/access.md.")

    signal settingsRequested(url settings)

    symbol: "lock.shield"
    title: PanelText.cardTitle(root.model.isFirstRun)

    PanelLabel {
        Layout.fillWidth: true
        text: root.explanation
        font: PanelTheme.caption
        color: PanelTheme.secondary
        wrapMode: Text.Wrap
        lineHeight: 1.1
    }

    Flow {
        Layout.fillWidth: true
        spacing: 8

        BorderedButton {
            text: root.model.isRequestingPermission ? qsTr("Waiting…") : qsTr("Grant Audio Access")
            font: PanelTheme.body
            prominent: true
            spinning: root.model.isRequestingPermission
            enabled: !root.model.isRequestingPermission
            Accessible.description: root.grantHelp
            onClicked: root.model.requestPermission()
        }

        BorderedButton {
            text: qsTr("Open Settings")
            font: PanelTheme.body
            Accessible.description: root.settingsHelp
            onClicked: root.settingsRequested(PanelText.settingsURL)
        }
    }

    PanelLabel {
        Layout.fillWidth: true
        visible: PanelText.isDenied(root.model.permission)
        text: root.deniedHint
        font: PanelTheme.caption
        color: PanelTheme.orange
        wrapMode: Text.Wrap
    }

    PanelLabel {
        Layout.fillWidth: true
        visible: root.settingsMissing
        text: root.missingHint
        font: PanelTheme.caption
        color: PanelTheme.secondary
        wrapMode: Text.Wrap
    }
}
