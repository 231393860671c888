import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Sonvel

// One row for each application that plays or has played.
ColumnLayout {
    id: root

    required property MixerViewModel model
    property bool isSoundKnown: true // else what plays is not seen
    readonly property alias count: rows.count

    spacing: 10

    SectionLabel {
        id: title

        text: "APPS"
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
            text: "Play audio in an app and it shows up here."
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

        // A row is made once and kept, wherever the list moves it and whether it is seen or not: it may be held.
        Repeater {
            id: rows

            model: root.model.channels

            ChannelRow {
                required property ChannelState channel

                width: parent?.width ?? 0
                // In this file, which Qt 6.4 has no way to tell its linter.
                model: root.model // qmllint disable unqualified
                ch: channel
            }

            // The keyboard goes on with the row that comes to stand there.
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
