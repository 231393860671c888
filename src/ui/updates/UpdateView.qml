import QtQuick
import QtQuick.Layouts
import SonvelUpdates

// What the window shows. Escape is the second button, Return the first, wherever the focus is.
FocusScope {
    id: root

    required property UpdatePresenter presenter

    width: 460
    height: content.implicitHeight + 40
    focus: true
    Accessible.role: Accessible.Dialog
    Accessible.name: root.presenter.heading
    Accessible.description: root.presenter.detail

    Keys.onEscapePressed: root.presenter.dismiss()
    Keys.onReturnPressed: root.presenter.accept()
    Keys.onEnterPressed: root.presenter.accept()

    ColumnLayout {
        id: content

        x: 20
        y: 20
        width: root.width - 40
        spacing: 16

        RowLayout {
            Layout.fillWidth: true
            spacing: 16

            Rectangle {
                Layout.alignment: Qt.AlignTop
                implicitWidth: 42
                implicitHeight: 42
                radius: 21
                color: root.presenter.symbolColor

                Image {
                    anchors.centerIn: parent
                    width: 26
                    height: 26
                    sourceSize.width: width
                    sourceSize.height: height
                    source: root.presenter.symbol
                }
            }

            ColumnLayout {
                Layout.fillWidth: true
                Layout.alignment: Qt.AlignVCenter
                spacing: 4

                UpdateLabel {
                    Layout.fillWidth: true
                    text: root.presenter.heading
                    color: root.presenter.primary
                    font.pixelSize: 15
                    font.weight: Font.DemiBold
                    Accessible.role: Accessible.Heading
                }

                UpdateLabel {
                    Layout.fillWidth: true
                    text: root.presenter.detail
                    color: root.presenter.secondary
                }
            }
        }

        UpdateNotes {
            Layout.fillWidth: true
            visible: root.presenter.notes !== ""
            presenter: root.presenter
        }

        UpdateProgress {
            Layout.fillWidth: true
            visible: root.presenter.hasProgress
            presenter: root.presenter
        }

        RowLayout {
            Layout.fillWidth: true
            visible: dismiss.text !== "" || accept.text !== ""
            spacing: 8

            UpdateLabel {
                Layout.fillWidth: true
                text: root.presenter.progressText
                color: root.presenter.secondary
            }

            UpdateButton {
                id: dismiss

                presenter: root.presenter
                text: root.presenter.dismissLabel
                onClicked: root.presenter.dismiss()
            }

            UpdateButton {
                id: accept

                presenter: root.presenter
                isDefault: true
                text: root.presenter.acceptLabel
                onClicked: root.presenter.accept()
            }
        }
    }
}
