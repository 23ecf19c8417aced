#pragma once

#include <QImage>
#include <QQuickImageProvider>
#include <QString>

namespace kivo {

/**
 * Serves the previews that arrive with clips ("image://clippreview/<key>"): the card's and the
 * pending list's. They are small pictures already decoded in memory, so they are handed out as
 * they are; the list of them is shared by the whole process and guarded by a lock.
 */
class ClipPreviewProvider : public QQuickImageProvider
{
public:
    static constexpr const char *providerId = "clippreview";

    ClipPreviewProvider();
    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;

    /** Keeps `image` under `key` until it is replaced or removed. */
    static void put(const QString &key, const QImage &image);
    static void remove(const QString &key);
    [[nodiscard]] static bool contains(const QString &key);
};

} // namespace kivo
