import QtQuick

// As long as what is done, or on its way from one end to the other and back where that isn't counted; it stays
// in the middle where nothing is to move by itself.
Item {
    id: root

    required property bool isCounted
    required property bool animates
    required property real fraction
    required property color color
    property real place: 0.5

    clip: true

    SequentialAnimation {
        running: !root.isCounted && root.animates
        loops: Animation.Infinite

        NumberAnimation {
            target: root
            property: "place"
            from: 0
            to: 1
            duration: 1100
            easing.type: Easing.InOutSine
        }

        NumberAnimation {
            target: root
            property: "place"
            from: 1
            to: 0
            duration: 1100
            easing.type: Easing.InOutSine
        }
    }

    Rectangle {
        x: root.isCounted ? 0 : root.place * (root.width - width)
        width: root.width * (root.isCounted ? root.fraction : 0.3)
        height: root.height
        radius: height / 2
        color: root.color
    }
}
