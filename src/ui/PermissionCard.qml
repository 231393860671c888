import QtQuick
import QtQuick.Layouts
import Sonvel

// Says why the permission to capture is needed, and gets it.
Rectangle {
    id: root

    required property MixerViewModel model

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
                size: 16
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
            text: "To show and adjust each app's sound, macOS asks Sonvel to access system audio — the modern, driverless method. Nothing is recorded, saved, or sent; no restart, no kernel extension. You can revoke it anytime."
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
                Accessible.description: "Shows the macOS Audio Recording permission prompt"
                onClicked: root.model.requestPermission()
            }

            BorderedButton {
                text: "Open Settings"
                font: PanelTheme.body
                Accessible.description: "Opens macOS Privacy and Security settings"
                onClicked: root.settingsRequested(PanelText.settingsURL)
            }
        }

        PanelLabel {
            Layout.fillWidth: true
            visible: PanelText.isDenied(root.model.permission)
            text: "Access is currently denied. Enable “Sonvel” under Privacy & Security ▸ Audio Recording, then it appears automatically."
            font: PanelTheme.caption
            color: PanelTheme.orange
            wrapMode: Text.Wrap
        }
    }
}
