# The image provider that serves "image://thumb/..." from the thumbnail service.
target_sources(kivo_surfaces PRIVATE
    thumbnails/thumbnailprovider.cpp thumbnails/thumbnailprovider.h
)
