import QtQuick
import QtQuick.Templates as T
import Sonvel

// A slider that shows the model's value except while it is held. Pointer, keys and screen readers all emit
// chosen().
T.Slider {
    id: root

    required property real modelValue
    required property string spokenValue // screen readers get it as the description, the only place for it
    property string help: ""
    property real pageStep: (to - from) / 10
    readonly property real minimumValue: from // range for screen readers
    readonly property real maximumValue: to
    property bool following: false
    property bool ready: false
    property real shownPosition: visualPosition

    // The value that the user wants.
    signal chosen(real value)

    function follow() {
        if (pressed)
            return;
        following = true;
        value = modelValue;
        following = false;
    }

    implicitWidth: 120
    implicitHeight: implicitHandleHeight
    focusPolicy: Qt.StrongFocus

    onModelValueChanged: follow()
    onPressedChanged: follow()
    onValueChanged: {
        if (!ready || following)
            return;
        if (enabled)
            chosen(value);
        else // screen readers can set it in any case
            follow();
    }
    Component.onCompleted: {
        follow();
        ready = true;
        glide.enabled = Qt.binding(() => PanelTheme.animates && !root.pressed && !root.visualFocus);
    }

    Behavior on shownPosition {
        id: glide

        enabled: false
        NumberAnimation { duration: 180; easing.type: Easing.OutCubic }
    }

    Accessible.role: Accessible.Slider
    Accessible.description: help === "" ? spokenValue : PanelText.spokenPair(spokenValue, help)

    Keys.onPressed: event => {
        const steps = {
            [Qt.Key_Left]: mirrored ? stepSize : -stepSize,
            [Qt.Key_Right]: mirrored ? -stepSize : stepSize,
            [Qt.Key_Up]: stepSize,
            [Qt.Key_Down]: -stepSize,
            [Qt.Key_PageUp]: pageStep,
            [Qt.Key_PageDown]: -pageStep,
            [Qt.Key_Home]: from - to,
            [Qt.Key_End]: to - from
        };
        if (steps[event.key] === undefined)
            return;
        value += steps[event.key];
        event.accepted = true;
    }

    handle: Rectangle {
        x: root.leftPadding + root.shownPosition * (root.availableWidth - width)
        y: root.topPadding + (root.availableHeight - height) / 2
        implicitWidth: 16
        implicitHeight: 16
        radius: width / 2
        color: PanelTheme.handle
        border.width: 1
        border.color: PanelTheme.tertiary

        FocusRing {
            visible: root.visualFocus
            radius: width / 2
        }
    }

    background: Rectangle {
        x: root.leftPadding
        y: root.topPadding + (root.availableHeight - height) / 2
        width: root.availableWidth
        height: 4
        radius: height / 2
        color: PanelTheme.groove

        Rectangle {
            readonly property real end: root.handle.x + root.handle.width / 2 - root.leftPadding

            x: root.mirrored ? end : 0
            width: root.mirrored ? parent.width - end : end
            height: parent.height
            radius: parent.radius
            color: root.enabled ? PanelTheme.tint : PanelTheme.tertiary
        }
    }
}
