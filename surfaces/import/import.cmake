# Drops and pastes into the library: the controller that runs them through the import pipeline and
# the progress card with its list of failures.
target_sources(kivo_surfaces PRIVATE
    import/importcontroller.cpp import/importcontroller.h
)
set_property(SOURCE ${CMAKE_CURRENT_BINARY_DIR}/kivo_surfaces_qmltyperegistrations.cpp TARGET_DIRECTORY kivo_surfaces
    APPEND PROPERTY INCLUDE_DIRECTORIES "${CMAKE_CURRENT_SOURCE_DIR}/import")
qt_target_qml_sources(kivo_surfaces QML_FILES
    import/ImportProgress.qml
)
