import QtQuick
import Sonvel

// The error of an application's sound control; screen readers read it as one item.
Column {
    id: root

    required property string error

    spacing: 2

    Accessible.role: Accessible.StaticText
    Accessible.name: PanelText.spokenPair(title.text, error)

    Text {
        id: title

        width: parent.width
        text: qsTr("Audio control error")
        elide: Text.ElideRight
        renderType: Text.NativeRendering
        horizontalAlignment: Text.AlignLeft
        font: PanelTheme.caption
        color: PanelTheme.red
    }

    Text {
        width: parent.width
        text: root.error
        textFormat: Text.PlainText
        renderType: Text.NativeRendering
        horizontalAlignment: Text.AlignLeft
        wrapMode: Text.Wrap
        font: PanelTheme.caption
        color: PanelTheme.red
    }
}
