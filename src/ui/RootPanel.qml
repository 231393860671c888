import QtQuick
import QtQuick.Layouts
import Sonvel

// The panel. It exists while its window is open, and tells the model so.
Rectangle {
    id: root

    required property MixerViewModel model
    required property string serverNotice
    property bool updatesComeWithPackages: false
    property bool serverHasAnswered: true
    property bool soundIsElsewhere: false // sound runs on another system and can't be seen
    property bool settingsMissing: false // the user asked for settings, which do not exist
    property bool isSeen: true // false while minimised or covered
    property bool isWithoutIcon: false // no tray icon can open the window
    property bool quitsOnClose: false // closing the window then quits the program
    property bool isClosingExplained: false // the user has chosen what closing does

    signal quitRequested()
    signal closingChosen(bool quits)
    signal settingsRequested(url settings)

    implicitWidth: 360
    implicitHeight: header.height + 2 + Math.max(320, Math.min(460, scrollArea.contentHeight)) + footer.height
    color: PanelTheme.window

    LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true

    onIsSeenChanged: isSeen ? model.onAppear() : model.onDisappear()
    Component.onCompleted: model.onAppear()
    Component.onDestruction: if (isSeen) model.onDisappear()

    Item {
        id: header

        width: parent.width
        height: title.implicitHeight + 20

        RowLayout {
            id: title

            anchors.fill: parent
            anchors.leftMargin: 12
            anchors.rightMargin: 12
            spacing: 8

            SymbolImage {
                name: "slider.vertical.3"
                size: PanelTheme.headline.pixelSize + 3
            }

            PanelLabel {
                Layout.fillWidth: true
                text: "Sonvel"
                font: PanelTheme.headline
            }
        }
    }

    Rectangle {
        id: upperDivider

        anchors.top: header.bottom
        width: parent.width
        height: 1
        color: PanelTheme.separator
    }

    PanelScrollArea {
        id: scrollArea

        objectName: "scrollArea"
        anchors.top: upperDivider.bottom
        anchors.bottom: lowerDivider.top
        width: parent.width
        contentHeight: sections.implicitHeight + 24

        ColumnLayout {
            id: sections

            x: 12
            y: 12
            width: scrollArea.width - 24
            spacing: 14

            ClosingCard {
                Layout.fillWidth: true
                visible: root.isWithoutIcon && !root.isClosingExplained
                quitsOnClose: root.quitsOnClose
                onChosen: quits => root.closingChosen(quits)
            }

            PermissionCard {
                Layout.fillWidth: true
                visible: !root.model.permissionGranted && root.serverHasAnswered
                model: root.model
                settingsMissing: root.settingsMissing
                onSettingsRequested: settings => root.settingsRequested(settings)
            }

            MasterSection {
                Layout.fillWidth: true
                visible: root.model.permissionGranted
                model: root.model
            }

            AppsSection {
                id: apps

                Layout.fillWidth: true
                isSoundKnown: !root.soundIsElsewhere
                viewTop: scrollArea.contentY - sections.y - y
                viewBottom: viewTop + scrollArea.height
                model: root.model
            }
        }
    }

    Rectangle {
        id: lowerDivider

        anchors.bottom: footer.top
        width: parent.width
        height: 1
        color: PanelTheme.separator
    }

    Item {
        id: footer

        anchors.bottom: parent.bottom
        width: parent.width
        height: actions.implicitHeight + 24

        PanelFooter {
            id: actions

            x: 12
            y: 12
            width: parent.width - 24
            model: root.model
            updatesComeWithPackages: root.updatesComeWithPackages
            statusLine: PanelText.statusLine(root.serverNotice, root.model.status,
                                             root.model.restorationFailure, apps.count)
            hasClosingChoice: root.isWithoutIcon && root.isClosingExplained
            onClosingAsked: root.isClosingExplained = false
            onQuitRequested: root.quitRequested()
        }
    }
}
