# Pieces the surfaces share: the keyed list model that turns reloads into row moves.
target_sources(kivo_surfaces PRIVATE
    common/keyedlistmodel.h
)
