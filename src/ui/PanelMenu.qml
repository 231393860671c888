import QtQuick
import QtQuick.Templates as T
import Sonvel

// A menu inside its window: scrolls if too long, elides if too wide.
T.Menu {
    id: root

    readonly property real maximumWidth: (T.Overlay.overlay ? T.Overlay.overlay.width : 360) - 2 * margins
    readonly property real maximumHeight: (T.Overlay.overlay ? T.Overlay.overlay.height : 360) - 2 * margins
    readonly property real widest: {
        let widest = 0;
        for (let i = 0; i < count; ++i)
            widest = Math.max(widest, itemAt(i).implicitWidth);
        return widest;
    }

    width: Math.min(Math.max(160, Math.ceil(widest) + leftPadding + rightPadding), maximumWidth)
    height: Math.min(contentItem.implicitHeight + topPadding + bottomPadding, maximumHeight)
    margins: 6
    padding: 4

    contentItem: ListView {
        implicitHeight: contentHeight
        model: root.contentModel
        currentIndex: root.currentIndex
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        T.ScrollBar.vertical: PanelScrollBar {}
    }

    background: Rectangle {
        radius: 7
        color: PanelTheme.menu
        border.width: 1
        border.color: PanelTheme.separator
    }
}
