# Pieces the surfaces share: the keyed list model that turns reloads into row moves, and the text
# of Kivo's own drags.
target_sources(kivo_surfaces PRIVATE
    common/dragpayload.cpp common/dragpayload.h
    common/keyedlistmodel.h
)
