# The main window's frame: the toolbar, the splitter, the details toggle and the toast area.
target_sources(kivo_surfaces PRIVATE
    window/windowcontroller.cpp window/windowcontroller.h
)
set_property(SOURCE ${CMAKE_CURRENT_BINARY_DIR}/kivo_surfaces_qmltyperegistrations.cpp TARGET_DIRECTORY kivo_surfaces
    APPEND PROPERTY INCLUDE_DIRECTORIES "${CMAKE_CURRENT_SOURCE_DIR}/window")
qt_target_qml_sources(kivo_surfaces QML_FILES
    window/ToastArea.qml
    window/Toolbar.qml
)
