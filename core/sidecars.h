#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QSet>
#include <QString>

namespace kivo {

class DatabaseQueue;
struct LibraryItem;
struct LibrarySnapshot;

/**
 * The JSON files that keep a library readable without the program: one sidecar per item beside
 * its file, and the manifest of collections and tags. They are a written-out copy of the
 * database; nothing reads them back.
 */
namespace Sidecars {

/** The sidecar object of one item. */
[[nodiscard]] QJsonObject itemSidecar(const LibraryItem &item, const LibrarySnapshot &snapshot);
/** The manifest object of the whole library. */
[[nodiscard]] QJsonObject manifest(const LibrarySnapshot &snapshot);
/** UTF-8 JSON with sorted keys, pretty printed. */
[[nodiscard]] QByteArray serialise(const QJsonObject &object);
/** Writes the object to the path, replacing what was there. Throws LibraryError. */
void writeFile(const QString &path, const QJsonObject &object);

/** Takes the first of base, base-2, base-3, ... not yet in the set (compared in lower case), and notes it. */
QString claimStem(QSet<QString> &used, const QString &base);

/** Rewrites every sidecar and the manifest from the database; nothing happens in the older layout. Throws. */
void refresh(DatabaseQueue &queue, const QString &root);
void refresh(DatabaseQueue &queue, const QString &root, bool reorganised);

} // namespace Sidecars
} // namespace kivo
