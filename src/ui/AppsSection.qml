import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Sonvel

// The list of applications.
ColumnLayout {
    id: root

    required property MixerViewModel model
    property bool isSoundKnown: true // false: playing applications can't be seen
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

    Column {
        visible: rows.count > 0
        Layout.fillWidth: true
        spacing: 10

        Accessible.role: Accessible.List
        Accessible.name: title.text

        // Rows are created once and kept, wherever the list moves them and whether visible or not: the user
        // may be dragging in one.
        Repeater {
            id: rows

            model: root.model.channels

            ChannelRow {
                required property ChannelState channel

                width: parent?.width ?? 0
                // The model is in this file, but Qt 6.4's linter cannot know it.
                model: root.model // qmllint disable unqualified
                ch: channel
            }

            // Keyboard focus moves to the row that takes the removed row's place.
            onItemRemoved: (index, item) => {
                const next = rows.itemAt(Math.min(index, rows.count - 1)) as ChannelRow;
                if (!item.activeFocus || !next)
                    return;
                const control = root.Window.activeFocusItem as T.Control;
                next.takeFocus(control?.visualFocus ? Qt.TabFocusReason : Qt.OtherFocusReason);
            }
        }
    }
}
