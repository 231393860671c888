import QtQuick
import QtQuick.Layouts
import Sonvel

// Explains what closing the window does without a tray icon, and lets the user choose.
PanelCard {
    id: root

    required property bool quitsOnClose

    signal chosen(bool quits)

    symbol: "slider.vertical.3"
    title: qsTr("Closing this window")

    PanelLabel {
        Layout.fillWidth: true
        text: qsTr("This desktop shows no tray icon. Unless you choose otherwise, Sonvel keeps running when you close this window, and every app stays as you set it; start Sonvel again to open the window. Quitting gives every app its own sound back.")
        font: PanelTheme.caption
        color: PanelTheme.secondary
        wrapMode: Text.Wrap
        lineHeight: 1.1
    }

    Flow {
        Layout.fillWidth: true
        spacing: 8

        BorderedButton {
            text: qsTr("Keep Running")
            font: PanelTheme.body
            prominent: !root.quitsOnClose
            onClicked: root.chosen(false)
        }

        BorderedButton {
            text: qsTr("Quit on Close")
            font: PanelTheme.body
            prominent: root.quitsOnClose
            onClicked: root.chosen(true)
        }
    }
}
