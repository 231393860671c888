import QtQuick
import QtQuick.Templates as T
import SonvelUpdates

// A button that is there while it has a label.
T.Button {
    id: root

    required property UpdatePresenter presenter
    property bool isDefault: false

    visible: root.text !== ""
    focusPolicy: Qt.StrongFocus
    font.pixelSize: 13
    leftPadding: 16
    rightPadding: 16
    topPadding: 7
    bottomPadding: 7
    implicitWidth: Math.max(88, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    Accessible.name: root.text
    Accessible.onPressAction: root.clicked()

    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    contentItem: Text {
        text: root.text
        textFormat: Text.PlainText
        renderType: Text.NativeRendering
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        font: root.font
        color: root.isDefault ? root.presenter.onAccent : root.presenter.primary
    }

    background: Rectangle {
        radius: 6
        color: root.isDefault ? root.presenter.accent : root.presenter.control
        border.width: root.isDefault ? 0 : 1
        border.color: root.presenter.separator

        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            visible: root.hovered || root.pressed
            color: root.presenter.primary
            opacity: root.pressed ? 0.16 : 0.06
        }

        Rectangle {
            anchors.fill: parent
            anchors.margins: -3
            radius: parent.radius + 3
            visible: root.visualFocus
            color: "transparent"
            border.width: 2
            border.color: root.presenter.accent
        }
    }
}
