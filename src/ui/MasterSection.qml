import QtQuick
import QtQuick.Layouts
import Sonvel

// The volume of the default output device.
ColumnLayout {
    id: root

    required property MixerViewModel model

    spacing: 6

    SectionLabel {
        text: qsTr("OUTPUT")
    }

    RowLayout {
        spacing: 10

        SymbolImage {
            Layout.preferredWidth: size + 3
            name: "hifispeaker.fill"
            color: PanelTheme.secondary
            size: PanelTheme.body.pixelSize + 2
        }

        PanelLabel {
            id: title

            text: qsTr("System Output")
        }

        PanelSlider {
            Layout.fillWidth: true
            from: 0
            to: 1
            stepSize: 0.01
            modelValue: root.model.masterVolume
            enabled: root.model.masterSupported
            spokenValue: PanelText.spokenPercent(PanelText.masterPercent(root.model.masterVolume))
            Accessible.name: title.text
            onChosen: value => root.model.setMaster(value)
        }

        NumberText {
            Layout.preferredWidth: Math.max(30, implicitWidth)
            value: PanelText.masterPercent(root.model.masterVolume)
        }
    }

    PanelLabel {
        Layout.fillWidth: true
        visible: !root.model.masterSupported
        text: qsTr("This output device has no adjustable master volume.")
        font: PanelTheme.caption
        color: PanelTheme.secondary
        wrapMode: Text.Wrap
    }
}
