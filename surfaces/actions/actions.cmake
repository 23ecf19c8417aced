# What can be done to saved items from a context menu or a key, and the menus and pickers for it.
target_sources(kivo_surfaces PRIVATE
    actions/itemactions.cpp actions/itemactions.h
)
# The generated type registrations include each QML_ELEMENT header by its bare name.
set_property(SOURCE ${CMAKE_CURRENT_BINARY_DIR}/kivo_surfaces_qmltyperegistrations.cpp TARGET_DIRECTORY kivo_surfaces
    APPEND PROPERTY INCLUDE_DIRECTORIES "${CMAKE_CURRENT_SOURCE_DIR}/actions")
qt_target_qml_sources(kivo_surfaces QML_FILES
    actions/CollectionPicker.qml
    actions/ItemContextMenu.qml
    actions/TextPrompt.qml
)
