import QtQuick
import QtQuick.Templates as T
import Sonvel

// Scrolls content taller than the panel, and follows the keyboard focus.
Flickable {
    id: root

    readonly property Item focused: Window.activeFocusItem

    function scrollTo(y: real) {
        contentY = Math.max(0, Math.min(contentHeight - height, y));
    }

    contentWidth: width
    boundsBehavior: Flickable.StopAtBounds
    clip: true

    T.ScrollBar.vertical: PanelScrollBar {}

    // Without this the wheel would scroll with inertia.
    WheelHandler {
        enabled: !PanelTheme.animates
        target: null
        onWheel: event => root.scrollTo(root.contentY - event.angleDelta.y / 2)
    }

    onFocusedChanged: {
        const control = focused as T.Control;
        if (!control || !control.visualFocus)
            return;
        let ancestor = control.parent;
        while (ancestor && ancestor !== contentItem)
            ancestor = ancestor.parent;
        if (!ancestor)
            return;
        const margin = 30;
        const top = control.mapToItem(contentItem, 0, 0).y;
        const wanted = Math.min(contentY, top - margin);
        scrollTo(Math.max(wanted, top + control.height + margin - height));
    }
}
