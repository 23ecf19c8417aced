-- A library as an older Kivo left it: the first nine schema steps (v1 .. v7-sweep-orphans) and a
-- few rows. Built into library-v7-sweep.sqlite by make-library-v7-sweep.sh.
PRAGMA foreign_keys = ON;
CREATE TABLE grdb_migrations (identifier TEXT NOT NULL PRIMARY KEY);

-- v1
CREATE TABLE collection (
    id TEXT PRIMARY KEY,
    parentId TEXT REFERENCES collection ON DELETE SET NULL,
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
    itemId TEXT NOT NULL REFERENCES item ON DELETE CASCADE,
    collectionId TEXT NOT NULL REFERENCES collection ON DELETE CASCADE,
    addedAt DOUBLE NOT NULL,
    PRIMARY KEY (itemId, collectionId)
);
INSERT INTO grdb_migrations VALUES ('v1');

-- v2-enrichment
ALTER TABLE item ADD COLUMN ocrText TEXT;
ALTER TABLE item ADD COLUMN aiCaption TEXT;
ALTER TABLE item ADD COLUMN colors TEXT;
ALTER TABLE item ADD COLUMN enrichedAt DOUBLE;
CREATE TABLE tag (id TEXT PRIMARY KEY, name TEXT NOT NULL UNIQUE ON CONFLICT IGNORE COLLATE NOCASE);
CREATE TABLE itemTag (
    itemId TEXT NOT NULL REFERENCES item ON DELETE CASCADE,
    tagId TEXT NOT NULL REFERENCES tag ON DELETE CASCADE,
    source TEXT NOT NULL,
    status TEXT NOT NULL,
    addedAt DOUBLE NOT NULL,
    PRIMARY KEY (itemId, tagId)
);
CREATE VIRTUAL TABLE itemFTS USING fts5(
    title, note, ocrText, aiCaption,
    content='item', content_rowid='rowid'
);
CREATE TRIGGER item_ai AFTER INSERT ON item BEGIN
INSERT INTO itemFTS(rowid, title, note, ocrText, aiCaption)
    VALUES (new.rowid, new.title, new.note, new.ocrText, new.aiCaption);
END;
CREATE TRIGGER item_ad AFTER DELETE ON item BEGIN
INSERT INTO itemFTS(itemFTS, rowid, title, note, ocrText, aiCaption)
    VALUES ('delete', old.rowid, old.title, old.note, old.ocrText, old.aiCaption);
END;
CREATE TRIGGER item_au AFTER UPDATE ON item BEGIN
INSERT INTO itemFTS(itemFTS, rowid, title, note, ocrText, aiCaption)
    VALUES ('delete', old.rowid, old.title, old.note, old.ocrText, old.aiCaption);
INSERT INTO itemFTS(rowid, title, note, ocrText, aiCaption)
    VALUES (new.rowid, new.title, new.note, new.ocrText, new.aiCaption);
END;
INSERT INTO itemFTS(rowid, title, note, ocrText, aiCaption)
SELECT rowid, title, note, ocrText, aiCaption FROM item;
INSERT INTO grdb_migrations VALUES ('v2-enrichment');

-- v3-embeddings
CREATE TABLE embedding (
    itemId TEXT NOT NULL REFERENCES item ON DELETE CASCADE,
    kind TEXT NOT NULL,
    dim INTEGER NOT NULL,
    vector BLOB NOT NULL,
    PRIMARY KEY (itemId, kind)
);
INSERT INTO grdb_migrations VALUES ('v3-embeddings');

-- v4-canvas
CREATE TABLE canvasPosition (
    itemId TEXT NOT NULL REFERENCES item ON DELETE CASCADE,
    collectionKey TEXT NOT NULL,
    x DOUBLE NOT NULL,
    y DOUBLE NOT NULL,
    scale DOUBLE NOT NULL DEFAULT 1.0,
    z INTEGER NOT NULL DEFAULT 0,
    PRIMARY KEY (itemId, collectionKey)
);
INSERT INTO grdb_migrations VALUES ('v4-canvas');

-- v5-sweep-orphans, v5-collection-origin, v6-sweep-orphans, v6-via-and-remote, v7-sweep-orphans
INSERT INTO grdb_migrations VALUES ('v5-sweep-orphans');
ALTER TABLE collection ADD COLUMN importedAt DOUBLE;
INSERT INTO grdb_migrations VALUES ('v5-collection-origin');
INSERT INTO grdb_migrations VALUES ('v6-sweep-orphans');
ALTER TABLE item ADD COLUMN viaURL TEXT;
ALTER TABLE item ADD COLUMN remoteURL TEXT;
INSERT INTO grdb_migrations VALUES ('v6-via-and-remote');
INSERT INTO grdb_migrations VALUES ('v7-sweep-orphans');

-- Rows
INSERT INTO collection (id, parentId, name, sortIndex, isInbox, createdAt, modifiedAt)
VALUES ('0c000000-0000-4000-8000-000000000001', NULL, 'Inbox', -1, 1, 1600000000, 1600000000),
       ('0c000000-0000-4000-8000-000000000002', NULL, 'Moodboard', 0, 0, 1600000001, 1600000001),
       ('0c000000-0000-4000-8000-000000000003', '0c000000-0000-4000-8000-000000000002', 'Blues', 0, 0, 1600000002, 1600000002);
UPDATE collection SET importedAt = 1600000100 WHERE name = 'Blues';
INSERT INTO item (id, kind, title, note, filePath, fileHash, fileSize, width, height, createdAt, addedAt, modifiedAt, favourite, ocrText, colors, enrichedAt, viaURL)
VALUES ('1a000000-0000-4000-8000-000000000001', 'image', 'Harbour at dusk', NULL, '1a/1a000000-0000-4000-8000-000000000001.jpg',
        'abc123', 2048, 640.0, 480.0, 1600000010.5, 1600000010.5, 1600000010.5, 1, 'ferry timetable', '["#112233"]', 1600000020, 'https://example.org/via');
INSERT INTO item (id, kind, title, sourceURL, createdAt, addedAt, modifiedAt)
VALUES ('2b000000-0000-4000-8000-000000000002', 'link', 'Typography notes', 'https://example.org/type', 1600000030, 1600000030, 1600000030);
INSERT INTO item (id, kind, title, note, createdAt, addedAt, modifiedAt, deletedAt)
VALUES ('3c000000-0000-4000-8000-000000000003', 'text', 'Shopping', 'lemons and thyme', 1600000040, 1600000040, 1600000040, 1600000050);
INSERT INTO tag (id, name) VALUES ('7a000000-0000-4000-8000-000000000001', 'Harbour'), ('7a000000-0000-4000-8000-000000000002', 'type');
INSERT INTO itemTag VALUES ('1a000000-0000-4000-8000-000000000001', '7a000000-0000-4000-8000-000000000001', 'ai', 'suggested', 1600000021),
                           ('2b000000-0000-4000-8000-000000000002', '7a000000-0000-4000-8000-000000000002', 'user', 'accepted', 1600000031);
INSERT INTO itemCollection VALUES ('1a000000-0000-4000-8000-000000000001', '0c000000-0000-4000-8000-000000000001', 1600000010.5),
                                  ('1a000000-0000-4000-8000-000000000001', '0c000000-0000-4000-8000-000000000003', 1600000011),
                                  ('3c000000-0000-4000-8000-000000000003', '0c000000-0000-4000-8000-000000000002', 1600000041);
INSERT INTO embedding VALUES ('1a000000-0000-4000-8000-000000000001', 'clip-image', 2, X'0000803F00000000');
INSERT INTO canvasPosition (itemId, collectionKey, x, y) VALUES ('1a000000-0000-4000-8000-000000000001', 'all', 10.5, -4);
