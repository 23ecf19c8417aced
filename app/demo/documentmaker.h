#pragma once

#include "app/demo/demorandom.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace kivo::demo {

/**
 * The documents of the demo library: a PDF of a page or two with a heading and prose, and a zip
 * archive of a few text files. Both are real files that other programs open.
 */
namespace DocumentMaker {

[[nodiscard]] QByteArray pdf(const QString &title, DemoRandom &random);

/** One member of an archive. */
struct ZipEntry {
    QString name;
    QByteArray bytes;
};

/** A zip archive storing the entries uncompressed. */
[[nodiscard]] QByteArray zip(const QList<ZipEntry> &entries);
/** A zip of two to five notes and a listing, for a demo item. */
[[nodiscard]] QByteArray zipOfNotes(const QString &title, DemoRandom &random);

} // namespace DocumentMaker
} // namespace kivo::demo
