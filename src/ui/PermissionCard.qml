import QtQuick
import QtQuick.Layouts
import Sonvel

// Explains why the capture permission is needed, and requests it.
Rectangle {
    id: root

    required property MixerViewModel model
    required property bool settingsMissing

    // Texts for this desktop, where the sound server's permissions are the consent.
    readonly property string explanation: "To show and adjust each app's sound, Sonvel needs the sound server's permission to move and play what apps play. Nothing is recorded, saved, or sent; no restart, no driver. You can revoke it anytime."
    readonly property string grantHelp: "Tries whether the sound server lets Sonvel control other apps"
    readonly property string settingsHelp: "Opens the page on how to give access to sound"
    readonly property string deniedHint: "Access is currently denied. Allow “Sonvel” in the rules of the sound server, then it appears automatically."
    readonly property string missingHint: "This desktop has no settings for access to sound. Restart Sonvel outside of its sandbox, or see docs/access.md."

    signal settingsRequested(url settings)

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
                name: "lock.shield"
                color: PanelTheme.accent
                size: PanelTheme.headline.pixelSize + 3
            }

            PanelLabel {
                Layout.fillWidth: true
                text: PanelText.cardTitle(root.model.isFirstRun)
                font: PanelTheme.headline
                wrapMode: Text.Wrap
            }
        }

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
                text: root.model.isRequestingPermission ? "Waiting…" : "Grant Audio Access"
                font: PanelTheme.body
                prominent: true
                spinning: root.model.isRequestingPermission
                enabled: !root.model.isRequestingPermission
                Accessible.description: root.grantHelp
                onClicked: root.model.requestPermission()
            }

            BorderedButton {
                text: "Open Settings"
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
}
