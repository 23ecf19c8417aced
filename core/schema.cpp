#include "core/schema.h"

#include "core/database.h"

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

void createCoreTables(Database &db)
{
    db.executeScript(uR"(CREATE TABLE collection (
    id TEXT PRIMARY KEY,
    parentId TEXT REFERENCES collection(id) ON DELETE SET NULL,
    name TEXT NOT NULL,
    icon TEXT,
    sortIndex INTEGER NOT NULL DEFAULT 0,
    isInbox BOOLEAN NOT NULL DEFAULT 0,
    createdAt DOUBLE NOT NULL,
    modifiedAt DOUBLE NOT NULL,
    deletedAt DOUBLE
);
CREATE TABLE item (
    id TEXT PRIMARY KEY,
    kind TEXT NOT NULL,
    title TEXT,
    note TEXT,
    sourceURL TEXT,
    filePath TEXT,
    fileHash TEXT,
    fileSize INTEGER,
    width DOUBLE,
    height DOUBLE,
    duration DOUBLE,
    createdAt DOUBLE NOT NULL,
    addedAt DOUBLE NOT NULL,
    modifiedAt DOUBLE NOT NULL,
    deletedAt DOUBLE,
    favourite BOOLEAN NOT NULL DEFAULT 0
);
CREATE INDEX item_fileHash ON item(fileHash);
CREATE INDEX item_addedAt ON item(addedAt);
CREATE TABLE itemCollection (
    itemId TEXT NOT NULL REFERENCES item(id) ON DELETE CASCADE,
    collectionId TEXT NOT NULL REFERENCES collection(id) ON DELETE CASCADE,
    addedAt DOUBLE NOT NULL,
    PRIMARY KEY (itemId, collectionId)
);)"_s);
}

void addEnrichment(Database &db)
{
    db.executeScript(uR"(ALTER TABLE item ADD COLUMN ocrText TEXT;
ALTER TABLE item ADD COLUMN aiCaption TEXT;
ALTER TABLE item ADD COLUMN colors TEXT;
ALTER TABLE item ADD COLUMN enrichedAt DOUBLE;
CREATE TABLE tag (
    id TEXT PRIMARY KEY,
    name TEXT NOT NULL UNIQUE ON CONFLICT IGNORE COLLATE NOCASE
);
CREATE TABLE itemTag (
    itemId TEXT NOT NULL REFERENCES item(id) ON DELETE CASCADE,
    tagId TEXT NOT NULL REFERENCES tag(id) ON DELETE CASCADE,
    source TEXT NOT NULL,
    status TEXT NOT NULL,
    addedAt DOUBLE NOT NULL,
    PRIMARY KEY (itemId, tagId)
);)"_s);
    db.executeScript(u"CREATE VIRTUAL TABLE itemFTS USING fts5(\n    title, note, ocrText, aiCaption,\n    content='item', content_rowid='rowid'\n)"_s);
    db.executeScript(u"CREATE TRIGGER item_ai AFTER INSERT ON item BEGIN\n"
                     "INSERT INTO itemFTS(rowid, title, note, ocrText, aiCaption)\n"
                     "    VALUES (new.rowid, new.title, new.note, new.ocrText, new.aiCaption);\n"
                     "END"_s);
    db.executeScript(u"CREATE TRIGGER item_ad AFTER DELETE ON item BEGIN\n"
                     "INSERT INTO itemFTS(itemFTS, rowid, title, note, ocrText, aiCaption)\n"
                     "    VALUES ('delete', old.rowid, old.title, old.note, old.ocrText, old.aiCaption);\n"
                     "END"_s);
    db.executeScript(u"CREATE TRIGGER item_au AFTER UPDATE ON item BEGIN\n"
                     "INSERT INTO itemFTS(itemFTS, rowid, title, note, ocrText, aiCaption)\n"
                     "    VALUES ('delete', old.rowid, old.title, old.note, old.ocrText, old.aiCaption);\n"
                     "INSERT INTO itemFTS(rowid, title, note, ocrText, aiCaption)\n"
                     "    VALUES (new.rowid, new.title, new.note, new.ocrText, new.aiCaption);\n"
                     "END"_s);
    db.executeScript(u"INSERT INTO itemFTS(rowid, title, note, ocrText, aiCaption)\n"
                     "SELECT rowid, title, note, ocrText, aiCaption FROM item"_s);
}

void createEmbeddings(Database &db)
{
    db.executeScript(uR"(CREATE TABLE embedding (
    itemId TEXT NOT NULL REFERENCES item(id) ON DELETE CASCADE,
    kind TEXT NOT NULL,
    dim INTEGER NOT NULL,
    vector BLOB NOT NULL,
    PRIMARY KEY (itemId, kind)
))"_s);
}

void createCanvas(Database &db)
{
    db.executeScript(uR"(CREATE TABLE canvasPosition (
    itemId TEXT NOT NULL REFERENCES item(id) ON DELETE CASCADE,
    collectionKey TEXT NOT NULL,
    x DOUBLE NOT NULL,
    y DOUBLE NOT NULL,
    scale DOUBLE NOT NULL DEFAULT 1.0,
    z INTEGER NOT NULL DEFAULT 0,
    PRIMARY KEY (itemId, collectionKey)
))"_s);
}

void sweepOrphans(Database &db)
{
    for (const QString &statement : orphanSweepStatements())
        db.execute(statement);
}

void addCollectionOrigin(Database &db)
{
    db.executeScript(u"ALTER TABLE collection ADD COLUMN importedAt DOUBLE"_s);
}

void addViaAndRemote(Database &db)
{
    db.executeScript(u"ALTER TABLE item ADD COLUMN viaURL TEXT;\nALTER TABLE item ADD COLUMN remoteURL TEXT;"_s);
}

void addPinned(Database &db)
{
    db.executeScript(u"ALTER TABLE collection ADD COLUMN pinnedAt DOUBLE"_s);
}

void createBoardObjects(Database &db)
{
    db.executeScript(uR"(CREATE TABLE boardObject (
    id TEXT PRIMARY KEY,
    collectionKey TEXT NOT NULL,
    kind TEXT NOT NULL,
    x DOUBLE NOT NULL,
    y DOUBLE NOT NULL,
    width DOUBLE NOT NULL,
    height DOUBLE NOT NULL,
    rotation DOUBLE NOT NULL DEFAULT 0,
    zIndex TEXT NOT NULL,
    fill TEXT,
    stroke TEXT,
    strokeWidth DOUBLE NOT NULL DEFAULT 2,
    opacity DOUBLE NOT NULL DEFAULT 1,
    text TEXT,
    props TEXT,
    points BLOB,
    minX DOUBLE NOT NULL,
    minY DOUBLE NOT NULL,
    maxX DOUBLE NOT NULL,
    maxY DOUBLE NOT NULL,
    createdAt DOUBLE NOT NULL,
    updatedAt DOUBLE NOT NULL,
    deletedAt DOUBLE
);
CREATE INDEX boardObject_board ON boardObject(collectionKey, zIndex);)"_s);
}

void addHiddenFromAll(Database &db)
{
    db.executeScript(u"ALTER TABLE item ADD COLUMN hiddenAt DOUBLE"_s);
}

void addLauncherFrequency(Database &db)
{
    db.executeScript(u"ALTER TABLE item ADD COLUMN openCount INTEGER NOT NULL DEFAULT 0;\n"
                     "ALTER TABLE item ADD COLUMN lastOpenedAt DOUBLE;"_s);
}

} // namespace

const QStringList &orphanSweepStatements()
{
    static const QStringList statements{
        u"DELETE FROM itemTag WHERE itemId NOT IN (SELECT id FROM item)"_s,
        u"DELETE FROM itemTag WHERE tagId NOT IN (SELECT id FROM tag)"_s,
        u"DELETE FROM itemCollection WHERE itemId NOT IN (SELECT id FROM item)"_s,
        u"DELETE FROM itemCollection WHERE collectionId NOT IN (SELECT id FROM collection)"_s,
    };
    return statements;
}

const QList<Migration> &libraryMigrations()
{
    // Version 8 has no sweep of its own; libraries in the field were made that way.
    static const QList<Migration> migrations{
        {u"v1"_s, createCoreTables},
        {u"v2-enrichment"_s, addEnrichment},
        {u"v3-embeddings"_s, createEmbeddings},
        {u"v4-canvas"_s, createCanvas},
        {u"v5-sweep-orphans"_s, sweepOrphans},
        {u"v5-collection-origin"_s, addCollectionOrigin},
        {u"v6-sweep-orphans"_s, sweepOrphans},
        {u"v6-via-and-remote"_s, addViaAndRemote},
        {u"v7-sweep-orphans"_s, sweepOrphans},
        {u"v7-pinned"_s, addPinned},
        {u"v8-board-objects"_s, createBoardObjects},
        {u"v9-sweep-orphans"_s, sweepOrphans},
        {u"v9-hidden-from-all"_s, addHiddenFromAll},
        {u"v10-sweep-orphans"_s, sweepOrphans},
        {u"v10-launcher-frequency"_s, addLauncherFrequency},
    };
    return migrations;
}

} // namespace kivo
