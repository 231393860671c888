import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Sonvel

// The list of applications.
ColumnLayout {
    id: root

    required property MixerViewModel model
    property bool isSoundKnown: true // false: playing applications can't be seen
    property real viewTop: 0 // the visible part, in this item's coordinates
    property real viewBottom: 0
    readonly property alias count: rows.count

    spacing: 10

    SectionLabel {
        id: title

        text: qsTr("APPS")
    }

    RowLayout {
        visible: rows.count === 0 && root.isSoundKnown
        spacing: 6
        Layout.topMargin: 6
        Layout.bottomMargin: 6

        SymbolImage {
            name: "speaker.wave.2"
            color: PanelTheme.secondary
            size: PanelTheme.caption.pixelSize + 2
        }

        PanelLabel {
            Layout.fillWidth: true
            text: qsTr("Play audio in an app and it shows up here.")
            font: PanelTheme.caption
            color: PanelTheme.secondary
            wrapMode: Text.Wrap
        }
    }

    ChannelColumn {
        id: rows

        visible: count > 0
        Layout.fillWidth: true
        spacing: 10
        channels: root.model.channels
        viewTop: root.viewTop - y
        viewBottom: root.viewBottom - y

        Accessible.role: Accessible.List
        Accessible.name: title.text

        row: ChannelRow {
            width: parent?.width ?? 0
            // The model is in this file, but Qt 6.4's linter cannot know it.
            model: root.model // qmllint disable unqualified
        }

        // Keyboard focus moves to the row that takes the removed row's place.
        onFocusedRowRemoved: next => {
            const control = root.Window.activeFocusItem as T.Control;
            (next as ChannelRow).takeFocus(control?.visualFocus ? Qt.TabFocusReason : Qt.OtherFocusReason);
        }
    }
}
