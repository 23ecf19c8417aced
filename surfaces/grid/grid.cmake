# The card grid and its sibling views' C++: layout from the records, keyboard and click rules,
# the list models over the Store's published lists, and the controller QML talks to.
target_sources(kivo_surfaces PRIVATE
    grid/cardlayout.cpp grid/cardlayout.h
    grid/gridnav.cpp grid/gridnav.h
    grid/kivoitemgestures.cpp grid/kivoitemgestures.h
    grid/masonrylayout.cpp grid/masonrylayout.h
)
