# Kivo's own controls beyond the button and the glyph: menus and the small glyph button.
qt_target_qml_sources(kivo_surfaces QML_FILES
    controls/GlyphButton.qml
    controls/KivoMenu.qml
    controls/KivoMenuItem.qml
    controls/KivoMenuSeparator.qml
)
