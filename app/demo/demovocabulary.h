#pragma once

#include "app/demo/demorandom.h"

#include <QString>
#include <QStringList>

namespace kivo::demo {

/** A saved web page: where it lives and what it is called. */
struct DemoLink {
    QString url;
    QString title;
};

/** The words on a poster, top to bottom. */
struct PosterWords {
    QString title;
    QString subtitle;
    QString date;
    QString venue;
};

/** A board of the demo library, with the boards inside it. */
struct CollectionName {
    QString name;
    QString icon;
    QList<CollectionName> children;
};

/**
 * The words of the demo library: titles, signs, posters, screen text, notes, links on real-looking
 * domains, tags and board names, all drawn from fixed lists with a seeded generator.
 */
namespace DemoVocabulary {

QString pictureTitle(DemoRandom &random);
QString screenshotTitle(DemoRandom &random, double addedAt);
QStringList signLines(DemoRandom &random);
PosterWords posterWords(DemoRandom &random);
/** A sentence of ordinary prose, capitalised and ending in a full stop. */
QString sentence(DemoRandom &random);
QString paragraph(DemoRandom &random, int sentences);
QStringList codeLines(DemoRandom &random, int count);
QString noteTitle(DemoRandom &random);
QString noteBody(DemoRandom &random);
DemoLink link(DemoRandom &random);
/** Where a saved picture came from, or empty for one from the user's own disk. */
QString pictureSource(DemoRandom &random);
QString documentTitle(DemoRandom &random);
QString soundTitle(DemoRandom &random);
QString videoTitle(DemoRandom &random);
const QStringList &userTags();
const QStringList &aiTags();
/** The boards: top level, their children and grandchildren. */
const QList<CollectionName> &collections();

} // namespace DemoVocabulary
} // namespace kivo::demo
