import QtQuick
import QtQuick.Templates as T
import SonvelUpdates

// The release notes, to be scrolled by hand or by key.
FocusScope {
    id: root

    required property UpdatePresenter presenter

    implicitHeight: Math.min(200, words.implicitHeight + 24)
    activeFocusOnTab: flickable.contentHeight > flickable.height
    Accessible.role: Accessible.Paragraph
    Accessible.name: qsTr("Release notes")
    Accessible.description: root.presenter.notes

    Keys.onUpPressed: bar.decrease()
    Keys.onDownPressed: bar.increase()

    Rectangle {
        anchors.fill: parent
        radius: 8
        color: root.presenter.wellColor
        border.width: root.activeFocus ? 2 : 1
        border.color: root.activeFocus ? root.presenter.accent : root.presenter.separator
    }

    Flickable {
        id: flickable

        objectName: "notesFlickable"
        anchors.fill: parent
        anchors.margins: 2
        clip: true
        contentWidth: width
        contentHeight: words.implicitHeight + 20
        boundsBehavior: Flickable.StopAtBounds

        T.ScrollBar.vertical: T.ScrollBar {
            id: bar

            width: 8
            visible: size < 1
            stepSize: 0.1
            padding: 2

            contentItem: Rectangle {
                radius: width / 2
                color: root.presenter.secondary
                opacity: 0.6
            }
        }

        UpdateLabel {
            id: words

            x: 12
            y: 10
            width: flickable.width - 28
            text: root.presenter.notes
            color: root.presenter.primary
        }
    }
}
