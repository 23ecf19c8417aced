# The sidebar: the fixed lists, the kind filters, the pinned collections and the collection tree,
# with the drops, renames and keys that act on them.
target_sources(kivo_surfaces PRIVATE
    sidebar/collectiondrop.cpp sidebar/collectiondrop.h
    sidebar/collectiontreemodel.cpp sidebar/collectiontreemodel.h
    sidebar/sidebarcontroller.cpp sidebar/sidebarcontroller.h
)
qt_target_qml_sources(kivo_surfaces QML_FILES
    sidebar/CollectionMenu.qml
    sidebar/CollectionRow.qml
    sidebar/IconPicker.qml
    sidebar/SectionHeader.qml
    sidebar/SortMenu.qml
)
