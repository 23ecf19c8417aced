#pragma once

// A real library for import tests: a sandbox with its own settings, an opened and migrated
// database, the browsable layout, and helpers to read back what an import wrote.

#include "core/database.h"
#include "core/librarylocation.h"
#include "core/records.h"
#include "core/userdefaults.h"
#include "ingest/import/importservice.h"
#include "tests/testsupport.h"

#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <memory>

namespace QTest {
/** Optional texts in failure messages: the text, or "nothing". */
template <> inline char *toString(const std::optional<QString> &value)
{
    return value ? QTest::toString(*value) : qstrdup("nothing");
}
} // namespace QTest

namespace kivo::test {

class ImportTestLibrary
{
public:
    ImportTestLibrary()
    {
        UserDefaults defaults;
        defaults.setValue(QStringLiteral("libraryReorganised"), true);
        defaults.sync();
        LibraryLocation::ensureLibrary();
        queue = DatabaseQueue::open(LibraryLocation::databasePath());
        context = ImportContext::forLibrary(queue, sandbox.libraryRoot());
    }

    /** A live collection made directly in the database. */
    QString addCollection(const QString &name, bool isInbox = false) const
    {
        LibraryCollection collection;
        collection.id = newIdentifier();
        collection.name = name;
        collection.isInbox = isInbox;
        collection.sortIndex = isInbox ? -1 : 1;
        collection.createdAt = collection.modifiedAt = nowSeconds();
        queue->write([&](Database &db) { db.insert(collection); });
        return collection.id;
    }

    [[nodiscard]] QList<LibraryItem> items() const
    {
        return queue->read([](Database &db) {
            return db.fetchAll<LibraryItem>(QStringLiteral("SELECT * FROM item ORDER BY addedAt"));
        });
    }

    [[nodiscard]] std::optional<LibraryItem> item(const QString &id) const
    {
        return queue->read([&](Database &db) {
            return db.fetchOne<LibraryItem>(QStringLiteral("SELECT * FROM item WHERE id = ?"), {id});
        });
    }

    /** The collections an item is in, by id, sorted. */
    [[nodiscard]] QStringList memberships(const QString &itemId) const
    {
        QStringList ids;
        for (const QVariant &id : queue->read([&](Database &db) {
                 return db.fetchScalars(
                     QStringLiteral("SELECT collectionId FROM itemCollection WHERE itemId = ?"), {itemId});
             }))
            ids.append(id.toString());
        ids.sort();
        return ids;
    }

    [[nodiscard]] QString storedPath(const LibraryItem &stored) const
    {
        return context.itemFolder + QLatin1Char('/') + stored.filePath.value_or(QString());
    }

    /** A file of the sandbox with these bytes. */
    [[nodiscard]] QString source(const QString &name, const QByteArray &bytes) const
    {
        const QString path = sandbox.path() + QStringLiteral("/sources/") + name;
        writeFile(path, bytes);
        return path;
    }

    Sandbox sandbox;
    std::shared_ptr<DatabaseQueue> queue;
    ImportContext context;
};

/** JPEG bytes of a `width` by `height` picture whose EXIF orientation is `orientation`. */
inline QByteArray jpegWithOrientation(int width, int height, quint8 orientation)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkYellow);
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG");
    // An APP1 segment with one big-endian IFD entry: tag 0x0112 (orientation), SHORT, count 1.
    QByteArray exif = QByteArray::fromHex("ffe10022457869660000"
                                          "4d4d002a00000008"
                                          "0001"
                                          "011200030000000100")
        + char(orientation)
        + QByteArray::fromHex("0000"
                              "00000000");
    return jpeg.left(2) + exif + jpeg.mid(2);
}

/** PNG bytes of a plain picture; `seed` makes the bytes differ between calls. */
inline QByteArray pngBytes(int width, int height, int seed = 0)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor::fromRgb(seed % 256, (seed / 256) % 256, 90));
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

/** Runs the ffmpeg command-line tool; false when it is missing or fails. */
inline bool runFfmpeg(const QStringList &arguments)
{
    if (QStandardPaths::findExecutable(QStringLiteral("ffmpeg")).isEmpty())
        return false;
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"),
        QStringList{
            QStringLiteral("-hide_banner"), QStringLiteral("-loglevel"), QStringLiteral("error"), QStringLiteral("-y")}
            + arguments);
    return ffmpeg.waitForFinished(60000) && ffmpeg.exitStatus() == QProcess::NormalExit && ffmpeg.exitCode() == 0;
}

/** A one-second 320x240 MPEG-4 clip whose display matrix turns it a quarter clockwise. */
inline bool makeTurnedClip(const QString &path)
{
    const QString flat = path + QStringLiteral(".flat.mp4");
    const bool made = runFfmpeg({QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                          QStringLiteral("testsrc=size=320x240:rate=10:duration=1"), QStringLiteral("-c:v"),
                          QStringLiteral("mpeg4"), flat})
        // The turn is set on a stream copy, where this FFmpeg writes it into the track's matrix.
        && runFfmpeg({QStringLiteral("-i"), flat, QStringLiteral("-c"), QStringLiteral("copy"),
            QStringLiteral("-metadata:s:v:0"), QStringLiteral("rotate=90"), path});
    QFile::remove(flat);
    return made;
}

/** ffprobe's reading of a clip's turn, to check the clip before trusting a test on it. */
inline QString probedRotation(const QString &path)
{
    QProcess probe;
    probe.start(QStringLiteral("ffprobe"),
        {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
            QStringLiteral("stream_side_data=rotation"), QStringLiteral("-of"), QStringLiteral("csv=p=0"), path});
    probe.waitForFinished(30000);
    return QString::fromUtf8(probe.readAllStandardOutput()).trimmed();
}

} // namespace kivo::test
