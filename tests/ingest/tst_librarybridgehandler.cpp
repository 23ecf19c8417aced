#include "core/appsettings.h"
#include "core/database.h"
#include "core/records.h"
#include "core/store.h"
#include "core/userdefaults.h"
#include "ingest/bridge/hotkeytext.h"
#include "ingest/bridge/librarybridgehandler.h"
#include "tests/testsupport.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using kivo::LibraryBridgeHandler;

/** The bridge's handler in the program: settings as text, collections from the library, and what it passes on. */
class TestLibraryBridgeHandler : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;

private Q_SLOTS:
    void init() { m_sandbox = std::make_unique<kivo::test::Sandbox>(); }
    void cleanup() { m_sandbox.reset(); }

    void hotkeyText_data()
    {
        QTest::addColumn<int>("keyCode");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<QString>("text");
        QTest::newRow("command-shift-S") << 1 << 768 << u"⇧⌘S"_s;
        QTest::newRow("option-B") << 11 << 2048 << u"⌥B"_s;
        QTest::newRow("all four in their order") << 40 << (4096 | 2048 | 512 | 256) << u"⌃⌥⇧⌘K"_s;
        QTest::newRow("control-command") << 1 << 4352 << u"⌃⌘S"_s;
        QTest::newRow("key 0 without modifiers") << 0 << 0 << u"A"_s;
        QTest::newRow("digits are not in order of code") << 22 << 256 << u"⌘6"_s;
        QTest::newRow("space") << 49 << 2048 << u"⌥Space"_s;
        QTest::newRow("arrow") << 126 << 4096 << u"⌃↑"_s;
        QTest::newRow("function key") << 122 << 0 << u"F1"_s;
        QTest::newRow("unknown code: glyphs only") << 200 << 256 << u"⌘"_s;
    }

    void hotkeyText()
    {
        QFETCH(int, keyCode);
        QFETCH(int, modifiers);
        QTEST(kivo::HotkeyText::text(keyCode, modifiers), "text");
    }

    void shortcutsFromSettings()
    {
        kivo::AppSettings settings;
        LibraryBridgeHandler handler(&settings, nullptr);
        settings.setClipperKey(u"j"_s);
        settings.setClipperCtrl(true);
        settings.setClipperAlt(true);
        settings.setClipperShift(true);
        settings.setClipperMeta(true);
        settings.setDropRingRequireModifier(false);
        settings.setDropRingModifier(u"shift"_s);
        kivo::ShortcutSheet sheet = handler.shortcuts();
        QCOMPARE(sheet.clipper, u"⌃⌥⇧⌘J"_s);
        QCOMPARE(sheet.dropRingModifier, QString());
        QCOMPARE(sheet.screenshot, u"⇧⌘S"_s);

        settings.setDropRingRequireModifier(true);
        QCOMPARE(handler.shortcuts().dropRingModifier, u"⇧"_s);
        settings.setClipperKey(QString());
        QCOMPARE(handler.shortcuts().clipper, QString());

        const kivo::ClipperConfig config = handler.clipperConfig();
        const QByteArray expected
            = "{\"key\":\"\",\"mods\":[\"shift\",\"alt\",\"ctrl\",\"meta\"],\"optionHold\":false}";
        QCOMPARE(config.toJson(), expected);
    }

    void dropRingGlyphs_data()
    {
        QTest::addColumn<QString>("modifier");
        QTest::addColumn<QString>("glyph");
        QTest::newRow("control") << u"control"_s << u"⌃"_s;
        QTest::newRow("command") << u"command"_s << u"⌘"_s;
        QTest::newRow("option") << u"option"_s << u"⌥"_s;
        QTest::newRow("shift") << u"shift"_s << u"⇧"_s;
    }

    void dropRingGlyphs()
    {
        QFETCH(QString, modifier);
        QTEST(kivo::HotkeyText::dropRingGlyph(modifier), "glyph");
    }

    void collectionsRecentFirst()
    {
        kivo::AppSettings settings;
        kivo::Store store;
        store.initialise();
        QVERIFY(store.dbQueue());
        store.dbQueue()->write([](kivo::Database &db) {
            for (const auto &[id, name] : {std::pair{u"b"_s, u"beta"_s}, {u"a"_s, u"Alpha"_s}, {u"c"_s, u"Gamma"_s}}) {
                kivo::LibraryCollection collection;
                collection.id = id;
                collection.name = name;
                db.insert(collection);
            }
            kivo::LibraryItem item;
            item.id = u"i"_s;
            item.kind = u"link"_s;
            db.insert(item);
            db.insert(kivo::ItemCollection{u"i"_s, u"c"_s, 5});
        });
        LibraryBridgeHandler handler(&settings, &store);
        // Used ones first; the never used by name, in SQLite's binary order (capitals first).
        const QList<kivo::CollectionSummary> expected{
            {u"c"_s, u"Gamma"_s, 1}, {u"a"_s, u"Alpha"_s, 0}, {u"b"_s, u"beta"_s, 0}};
        QCOMPARE(handler.collections(), expected);
    }

    void withoutLibraryClipsAreDropped()
    {
        kivo::AppSettings settings;
        LibraryBridgeHandler handler(&settings, nullptr);
        QSignalSpy clips(&handler, &LibraryBridgeHandler::clipArrived);
        QSignalSpy captures(&handler, &LibraryBridgeHandler::captureArrived);
        kivo::ClipRequest clip;
        clip.items.append(kivo::ClipItem{u"image"_s, u"https://a.example/i.png"_s, {}, {}, {}, {}, {}, {}});
        handler.clipReceived(clip);
        handler.captureReceived({u"image"_s, u"https://a.example/i.png"_s, {}, {}, {}});
        QCOMPARE(clips.size(), 0);
        QCOMPARE(captures.size(), 0);
        QVERIFY(handler.collections().isEmpty());
        // Hearing from the extension still counts, library or not.
        QVERIFY(handler.extensionHasClipped());
    }

    void extensionHeardOnce()
    {
        kivo::AppSettings settings;
        {
            LibraryBridgeHandler handler(&settings, nullptr);
            QVERIFY(!handler.extensionHasClipped());
            QSignalSpy changes(&handler, &LibraryBridgeHandler::extensionHasClippedChanged);
            handler.clipStatePolled();
            handler.clipStatePolled();
            QCOMPARE(changes.size(), 1);
            QVERIFY(kivo::UserDefaults().boolValue(u"extensionHasClipped"_s));
        }
        LibraryBridgeHandler later(&settings, nullptr);
        QVERIFY(later.extensionHasClipped());
    }

    void capturesThatNameWhatTheyNeed_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("handedOn");
        QTest::newRow("image") << u"image"_s << u"https://a.example/i.png"_s << QString() << true;
        QTest::newRow("image, no address") << u"image"_s << QString() << QString() << false;
        QTest::newRow("image, not an address") << u"image"_s << u"a picture"_s << QString() << false;
        QTest::newRow("link") << u"link"_s << u"https://a.example"_s << QString() << true;
        QTest::newRow("page") << u"page"_s << u"https://a.example/p"_s << QString() << true;
        QTest::newRow("selection") << u"selection"_s << QString() << u"some words"_s << true;
        QTest::newRow("selection, empty") << u"selection"_s << u"https://a.example"_s << QString() << false;
        QTest::newRow("video is not a capture") << u"video"_s << u"https://a.example/v.mp4"_s << QString() << false;
    }

    void capturesThatNameWhatTheyNeed()
    {
        QFETCH(QString, type);
        QFETCH(QString, url);
        QFETCH(QString, text);
        kivo::AppSettings settings;
        kivo::Store store;
        store.initialise();
        LibraryBridgeHandler handler(&settings, &store);
        QSignalSpy captures(&handler, &LibraryBridgeHandler::captureArrived);
        handler.captureReceived({type, url, {}, {}, text});
        QTEST(captures.size() == 1, "handedOn");
    }
};

QTEST_GUILESS_MAIN(TestLibraryBridgeHandler)
#include "tst_librarybridgehandler.moc"
