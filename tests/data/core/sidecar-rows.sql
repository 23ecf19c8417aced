-- The rows behind item-sidecar.kivo.json and library-manifest.kivo.json. Columns marked "not
-- written" must stay out of the JSON.
INSERT INTO item (id, kind, title, note, sourceURL, viaURL, remoteURL, filePath, fileHash, fileSize, width, height,
                  createdAt, addedAt, modifiedAt, hiddenAt, favourite, ocrText, colors, enrichedAt, openCount, lastOpenedAt)
VALUES ('9f1c2e3a-0000-4000-8000-000000000001', 'image', 'Harbour at dusk – Ærø',
        'Taken from the "Ærøskøbing" ferry' || char(10) || 'at 10:45', 'https://example.org/harbour?size=large',
        'https://example.org/via' /* not written */, 'https://cdn.example.org/h.jpg' /* not written */,
        '2024-03/harbour-at-dusk-ærø.jpg', '5d41402abc4b2a76b9719d911017c592', 204800, 1920.0, 1080.0,
        1709200000.5, 1709294400.0, 1709294460.25, 1709300000.0 /* not written */, 1, 'FERRY 10:45',
        '["#1A2B3C","#FFFFFF"]', 1709294500.0, 4 /* not written */, 1709400000.0 /* not written */);
INSERT INTO collection (id, parentId, name, icon, sortIndex, isInbox, createdAt, modifiedAt, deletedAt, importedAt, pinnedAt)
VALUES ('c0000000-0000-4000-8000-000000000000', NULL, 'Inbox', NULL, -1, 1, 1709000000.0, 1709000000.0, NULL, NULL, NULL),
       ('c0000000-0000-4000-8000-000000000001', NULL, 'Moodboard', 'sparkles', 0, 0, 1709000100.0, 1709000200.5, NULL,
        1709000150.0 /* not written */, 1709000160.0 /* not written */),
       ('c0000000-0000-4000-8000-000000000002', 'c0000000-0000-4000-8000-000000000001', 'Blues', NULL, 3, 0,
        1709000300.0, 1709100000.0, 1709100000.0, NULL, NULL);
INSERT INTO tag VALUES ('7a000000-0000-4000-8000-000000000001', 'Harbour'), ('7a000000-0000-4000-8000-000000000002', 'boats');
INSERT INTO itemTag VALUES
    ('9f1c2e3a-0000-4000-8000-000000000001', '7a000000-0000-4000-8000-000000000001', 'user', 'accepted', 1709294400.0),
    ('9f1c2e3a-0000-4000-8000-000000000001', '7a000000-0000-4000-8000-000000000002', 'ai', 'suggested', 1709294400.0);
INSERT INTO itemCollection VALUES
    ('9f1c2e3a-0000-4000-8000-000000000001', 'c0000000-0000-4000-8000-000000000000', 1709294400.0),
    ('9f1c2e3a-0000-4000-8000-000000000001', 'c0000000-0000-4000-8000-000000000001', 1709294400.0);
INSERT INTO canvasPosition VALUES
    ('9f1c2e3a-0000-4000-8000-000000000001', 'all', 120.5, -40.0, 1.25, 2),
    ('9f1c2e3a-0000-4000-8000-000000000001', 'c0000000-0000-4000-8000-000000000001', 0.0, 16.75, 1.0, 0);
