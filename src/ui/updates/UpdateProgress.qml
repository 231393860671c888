import QtQuick
import QtQuick.Templates as T
import SonvelUpdates

// How far it is, or that it goes on.
T.ProgressBar {
    id: root

    required property UpdatePresenter presenter

    implicitHeight: 6
    indeterminate: !root.presenter.isCounted
    value: root.presenter.fraction
    Accessible.role: Accessible.ProgressBar
    Accessible.name: root.presenter.heading
    Accessible.description: root.presenter.progressText

    background: Rectangle {
        radius: height / 2
        color: root.presenter.groove
    }

    contentItem: UpdateProgressBar {
        isCounted: root.presenter.isCounted
        animates: root.visible && root.presenter.animates
        fraction: root.position
        color: root.presenter.accent
    }
}
