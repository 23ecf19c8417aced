# The card grid and its sibling views' C++: layout from the records, keyboard and click rules,
# the list models over the Store's published lists, and the controller QML talks to.
target_sources(kivo_surfaces PRIVATE
    grid/cardlayout.cpp grid/cardlayout.h
    grid/emptystate.cpp grid/emptystate.h
    grid/gridcontroller.cpp grid/gridcontroller.h
    grid/gridnav.cpp grid/gridnav.h
    grid/kivoitemgestures.cpp grid/kivoitemgestures.h
    grid/itemlistmodel.cpp grid/itemlistmodel.h
    grid/masonrylayout.cpp grid/masonrylayout.h
    grid/masonryview.cpp grid/masonryview.h
)

# The generated type registrations include each QML_ELEMENT header by its bare name.
set_property(SOURCE ${CMAKE_CURRENT_BINARY_DIR}/kivo_surfaces_qmltyperegistrations.cpp
    TARGET_DIRECTORY kivo_surfaces APPEND PROPERTY INCLUDE_DIRECTORIES "${CMAKE_CURRENT_SOURCE_DIR}/grid")

qt_target_qml_sources(kivo_surfaces
    QML_FILES
        grid/CardGrid.qml
        grid/CardStandIn.qml
        grid/DragOut.qml
        grid/DragStack.qml
        grid/ItemCard.qml
        grid/TagChip.qml
        grid/TimelineHeading.qml
)
