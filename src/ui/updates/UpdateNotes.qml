import QtQuick
import Sonvel
import SonvelUpdates

// The release notes; scrolled by wheel and keys.
FocusScope {
    id: root

    required property UpdatePresenter presenter

    implicitHeight: Math.min(200, words.implicitHeight + 24)
    activeFocusOnTab: area.contentHeight > area.height
    Accessible.role: Accessible.Paragraph
    Accessible.name: qsTr("Release notes")
    Accessible.description: root.presenter.notes

    Keys.onUpPressed: area.scrollTo(area.contentY - 40)
    Keys.onDownPressed: area.scrollTo(area.contentY + 40)

    Rectangle {
        anchors.fill: parent
        radius: 8
        color: PanelTheme.menu
        border.width: root.activeFocus ? 2 : 1
        border.color: root.activeFocus ? PanelTheme.accent : PanelTheme.separator
    }

    PanelScrollArea {
        id: area

        objectName: "notesArea"
        anchors.fill: parent
        anchors.margins: 2
        contentHeight: words.implicitHeight + 20

        PanelLabel {
            id: words

            x: 12
            y: 10
            width: area.width - 28
            wrapMode: Text.Wrap
            text: root.presenter.notes
        }
    }
}
