import QtQuick
import QtQuick.Layouts
import Sonvel
import SonvelUpdates

// The window's content. Escape presses the second button, wherever the focus is. Return presses the first one
// only if the user asked for the update: a window that opens by itself must not take keys typed for another
// program.
FocusScope {
    id: root

    required property UpdatePresenter presenter

    width: 460
    height: content.implicitHeight + 40
    focus: true

    LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true

    Accessible.role: Accessible.Dialog
    Accessible.name: root.presenter.heading
    Accessible.description: root.presenter.detail

    Keys.onEscapePressed: root.presenter.dismiss()
    Keys.onReturnPressed: root.presenter.acceptByDefault()
    Keys.onEnterPressed: root.presenter.acceptByDefault()

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
                color: PanelTheme.control

                SymbolImage {
                    anchors.centerIn: parent
                    name: root.presenter.symbol
                    size: 26
                    color: root.presenter.hasFailed ? PanelTheme.red : PanelTheme.accent
                }
            }

            ColumnLayout {
                Layout.fillWidth: true
                Layout.alignment: Qt.AlignVCenter
                spacing: 4

                PanelLabel {
                    Layout.fillWidth: true
                    wrapMode: Text.Wrap
                    text: root.presenter.heading
                    font: PanelTheme.headline
                    Accessible.role: Accessible.Heading
                }

                PanelLabel {
                    Layout.fillWidth: true
                    wrapMode: Text.Wrap
                    text: root.presenter.detail
                    color: PanelTheme.secondary
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
            visible: dismiss.visible || accept.visible
            spacing: 8

            PanelLabel {
                Layout.fillWidth: true
                text: root.presenter.progressText
                color: PanelTheme.secondary
            }

            BorderedButton {
                id: dismiss

                visible: text !== ""
                text: root.presenter.dismissLabel
                font: PanelTheme.body
                horizontalPadding: 16
                verticalPadding: 7
                onClicked: root.presenter.dismiss()
            }

            BorderedButton {
                id: accept

                visible: text !== ""
                text: root.presenter.acceptLabel
                font: PanelTheme.body
                horizontalPadding: 16
                verticalPadding: 7
                prominent: root.presenter.hasDefault
                onClicked: root.presenter.accept()
            }
        }
    }
}
