# Kivo's own controls beyond the button and the glyph's frame: the glyph's drawing, menus and the small glyph button.
target_sources(kivo_surfaces PRIVATE controls/glyphshape.cpp controls/glyphshape.h)
target_link_libraries(kivo_surfaces PUBLIC Qt6::Svg)

# The generated type registrations include each QML_ELEMENT header by its bare name.
set_property(SOURCE ${CMAKE_CURRENT_BINARY_DIR}/kivo_surfaces_qmltyperegistrations.cpp
    TARGET_DIRECTORY kivo_surfaces APPEND PROPERTY INCLUDE_DIRECTORIES "${CMAKE_CURRENT_SOURCE_DIR}/controls")

qt_target_qml_sources(kivo_surfaces QML_FILES
    controls/GlyphButton.qml
    controls/KivoMenu.qml
    controls/KivoMenuItem.qml
    controls/KivoMenuSeparator.qml
)
