# The details panel: one item's fields, tags and collections, edited in place.
target_sources(kivo_surfaces PRIVATE
    details/detailscontroller.cpp details/detailscontroller.h
)
set_property(SOURCE ${CMAKE_CURRENT_BINARY_DIR}/kivo_surfaces_qmltyperegistrations.cpp TARGET_DIRECTORY kivo_surfaces
    APPEND PROPERTY INCLUDE_DIRECTORIES "${CMAKE_CURRENT_SOURCE_DIR}/details")
qt_target_qml_sources(kivo_surfaces QML_FILES
    details/DetailsCollections.qml
    details/DetailsPanel.qml
    details/DetailsSection.qml
    details/DetailsTags.qml
    details/InfoLine.qml
    details/TagPill.qml
)
