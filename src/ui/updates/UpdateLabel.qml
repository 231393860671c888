import QtQuick

// Words as they are, never as markup.
Text {
    textFormat: Text.PlainText
    renderType: Text.NativeRendering
    wrapMode: Text.Wrap
    font.pixelSize: 13
    lineHeight: 1.1
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
