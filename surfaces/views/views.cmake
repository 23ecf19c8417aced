# The views of a selection and their parts: list rows, the links rail, the preview, the view options.
qt_target_qml_sources(kivo_surfaces
    QML_FILES
        views/ItemPreview.qml
        views/LinksRail.qml
        views/ListRow.qml
        views/RailLinkCard.qml
        views/RowFields.qml
        views/RowList.qml
        views/SelectionView.qml
        views/ViewOptionsPopup.qml
)
