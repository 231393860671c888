import Sonvel

PanelLabel {
    font: PanelTheme.sectionLabel
    color: PanelTheme.secondary
}
