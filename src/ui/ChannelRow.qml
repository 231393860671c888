import QtQuick
import QtQuick.Layouts
import Sonvel

// One application: name, volume, meter and output.
FocusScope {
    id: root

    required property MixerViewModel model
    required property ChannelState ch

    function takeFocus(reason: int) {
        volume.forceActiveFocus(reason);
    }

    implicitHeight: lines.implicitHeight + 4
    opacity: ch.isPlaying ? 1 : 0.9

    Accessible.role: Accessible.ListItem
    Accessible.name: ch.name

    Keys.onPressed: event => {
        event.accepted = !event.isAutoRepeat && event.modifiers === Qt.NoModifier;
        if (!event.accepted)
            return;
        if (event.key === Qt.Key_M)
            model.toggleMute(ch);
        else if (event.key === Qt.Key_Delete)
            model.dismissChannel(ch);
        else if (event.key === Qt.Key_Space && routing.visible)
            routing.openMenu();
        else
            event.accepted = false;
    }

    ColumnLayout {
        id: lines

        y: 2
        width: parent.width
        spacing: 5

        RowLayout {
            spacing: 8

            Image {
                readonly property int size: PanelTheme.body.pixelSize + 5

                Layout.preferredWidth: size
                Layout.preferredHeight: size
                source: PanelText.appIcon(root.ch.app, root.ch.isPlaying)
                sourceSize.width: size
                sourceSize.height: size
                opacity: root.ch.isPlaying ? 1 : 0.5
            }

            Item {
                id: title

                readonly property real marksWidth: marks.width > 0 ? marks.width + 8 : 0

                Layout.fillWidth: true
                implicitHeight: name.implicitHeight

                PanelLabel {
                    id: name

                    anchors.left: parent.left
                    width: Math.min(Math.ceil(implicitWidth), title.width - title.marksWidth)
                    text: root.ch.name
                    elide: Text.ElideRight
                    maximumLineCount: 1
                    color: root.ch.isPlaying ? PanelTheme.primary : PanelTheme.secondary

                    HoverHandler {
                        id: namePointer

                        enabled: name.truncated
                    }

                    HoverTip {
                        text: name.text
                        isHovered: namePointer.hovered
                    }
                }

                Row {
                    id: marks

                    anchors.left: name.right
                    anchors.leftMargin: 8
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 8

                    SymbolImage {
                        anchors.verticalCenter: parent.verticalCenter
                        visible: PanelText.isBoost(root.ch.gainPercent)
                        name: "bolt.fill"
                        color: PanelTheme.orange
                        size: PanelTheme.caption2.pixelSize
                    }

                    IdleBadge {
                        visible: !root.ch.isPlaying
                    }
                }
            }

            NumberText {
                Layout.preferredWidth: Math.max(30, implicitWidth)
                value: root.ch.gainPercent
                color: root.ch.muted ? PanelTheme.secondary : PanelTheme.primary
            }

            SymbolButton {
                symbol: "xmark.circle.fill"
                symbolColor: PanelTheme.tertiary
                symbolSize: PanelTheme.caption.pixelSize + 2
                help: qsTr("Remove from list")
                Accessible.name: PanelText.removeLabel(root.ch.name)
                onClicked: root.model.dismissChannel(root.ch)
            }
        }

        RowLayout {
            spacing: 8

            SymbolButton {
                Layout.preferredWidth: symbolSize + 2
                symbol: root.ch.muted ? "speaker.slash.fill" : "speaker.wave.2.fill"
                symbolColor: root.ch.muted ? PanelTheme.secondary : PanelTheme.primary
                symbolSize: PanelTheme.body.pixelSize + 1
                help: PanelText.muteHelp(root.ch.muted)
                Accessible.name: PanelText.muteLabel(root.ch.muted, root.ch.name)
                onClicked: root.model.toggleMute(root.ch)
            }

            PanelSlider {
                id: volume

                Layout.fillWidth: true
                focus: true
                from: 0
                to: 200
                stepSize: 1
                modelValue: root.ch.gainPercent
                opacity: root.ch.muted ? 0.4 : 1
                Accessible.name: PanelText.volumeLabel(root.ch.name)
                spokenValue: PanelText.spokenPercent(root.ch.gainPercent)
                help: qsTr("Adjusts this app's output volume")
                onChosen: value => root.model.setGain(PanelText.wholePercent(value), root.ch)
            }
        }

        MeterBar {
            objectName: "meter"
            Layout.fillWidth: true
            level: root.ch.muted ? 0 : root.ch.level
            opacity: root.ch.active ? 1 : 0.25
        }

        RowLayout {
            spacing: 6

            ErrorText {
                Layout.fillWidth: true
                visible: root.ch.lastError !== undefined
                error: PanelText.errorText(root.ch.lastError ?? "", root.ch.lastErrorStatus)
            }

            PanelLabel {
                Layout.fillWidth: true
                visible: root.ch.lastError === undefined && !root.ch.isPlaying
                text: qsTr("Paused — keeps this volume when it plays again")
                font: PanelTheme.caption
                color: PanelTheme.secondary
                wrapMode: Text.Wrap
            }

            PanelLabel {
                id: note

                Layout.fillWidth: true
                visible: root.ch.lastError === undefined && root.ch.isPlaying && text !== ""
                text: PanelText.sessionNote(root.ch.isPartial, root.ch.isOutputConnected,
                                            root.model.knownDeviceName(root.ch.outputUID),
                                            root.model.knownDeviceName(root.ch.playingUID))
                font: PanelTheme.caption
                color: PanelTheme.secondary
                wrapMode: Text.Wrap
            }

            RoutingMenu {
                id: routing

                Layout.alignment: Qt.AlignVCenter
                Layout.maximumWidth: root.ch.lastError !== undefined || note.visible ? 130 : lines.width
                visible: root.ch.isPlaying
                model: root.model
                ch: root.ch
            }
        }
    }
}
