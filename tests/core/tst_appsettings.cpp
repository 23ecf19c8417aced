#include "core/appsettings.h"
#include "core/userdefaults.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using kivo::AppSettings;
using kivo::UserDefaults;

/** The settings model against its persisted keys: defaults, fallbacks, clamps, per-view keys and one-time changes. */
class TestAppSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults_data()
    {
        QTest::addColumn<QString>("property");
        QTest::addColumn<QVariant>("expected");
        const QList<std::pair<QString, QVariant>> table{
            {u"appearance"_s, u"system"_s},        {u"cardShape"_s, u"original"_s},
            {u"listRowStyle"_s, u"oneLine"_s},     {u"sidebarWidth"_s, 228.0},
            {u"sidebarToggleKeyCode"_s, 1},        {u"sidebarToggleModifiers"_s, 4352},
            {u"listShowDomain"_s, true},           {u"gridColumns"_s, 4.0},
            {u"gridSpacing"_s, 14.0},              {u"dropRingRequireModifier"_s, true},
            {u"dropRingModifier"_s, u"control"_s}, {u"collectionSort"_s, u"manual"_s},
            {u"itemSort"_s, u"newest"_s},          {u"shelfEdgeGap"_s, 26.0},
            {u"shelfTopGap"_s, 40.0},              {u"shelfPreviewSize"_s, u"medium"_s},
            {u"shelfEnabled"_s, false},            {u"fullscreenStyle"_s, u"wholeScreen"_s},
            {u"screenshotHotkeyKeyCode"_s, 1},     {u"screenshotHotkeyModifiers"_s, 768},
            {u"shelfHotkeyKeyCode"_s, 46},         {u"shelfPinHotkeyKeyCode"_s, 35},
            {u"savePageHotkeyKeyCode"_s, 11},      {u"launcherHotkeyKeyCode"_s, 40},
            {u"launcherHotkeyModifiers"_s, 768},   {u"visionHotkeyKeyCode"_s, 9},
            {u"captureCardEnabled"_s, true},       {u"captureDestination"_s, u"inbox"_s},
            {u"sidebarSolidity"_s, 0.55},          {u"rimSolidity"_s, 0.0},
            {u"captureSoundVolume"_s, 0.7},        {u"captureSoundName"_s, u"Collect"_s},
            {u"claudeAutoTags"_s, true},           {u"backupSchedule"_s, u"off"_s},
            {u"backupKeepVersions"_s, 5},          {u"backupHour"_s, 3},
            {u"allViewKinds"_s, QStringList{u"image"_s, u"video"_s, u"link"_s, u"text"_s, u"file"_s}},
        };
        for (const auto &[property, expected] : table)
            QTest::newRow(qPrintable(property)) << property << expected;
    }

    void defaults()
    {
        QFETCH(QString, property);
        QFETCH(QVariant, expected);
        kivo::test::Sandbox sandbox;
        AppSettings settings;
        const QVariant actual = settings.property(property.toUtf8().constData());
        QVERIFY2(actual.isValid(), "no such property");
        if (expected.typeId() == QMetaType::Double)
            QCOMPARE(actual.toDouble(), expected.toDouble());
        else
            QCOMPARE(actual, expected);
    }

    void storedValuesAreReadBackWithFallbacksAndClamps()
    {
        kivo::test::Sandbox sandbox;
        {
            UserDefaults defaults;
            defaults.setValue(u"cardShape"_s, u"hexagon"_s);
            defaults.setValue(u"shelfPreviewSize"_s, u"enormous"_s);
            defaults.setValue(u"appearance"_s, u"dark"_s);
            defaults.setValue(u"sidebarSolidity"_s, 1.4);
            defaults.setValue(u"rimSolidity"_s, -1);
            defaults.setValue(u"gridColumns"_s, u"not a number"_s);
            defaults.setValue(u"allViewKinds"_s, QStringList{u"image"_s, u"moodboard"_s, u"link"_s});
            defaults.setValue(u"dropPopupExcludedApps"_s, QStringList{u"maim"_s});
        }
        AppSettings settings;
        QCOMPARE(settings.cardShape(), u"original"_s);
        QCOMPARE(settings.shelfPreviewSize(), u"medium"_s);
        QCOMPARE(settings.appearance(), u"dark"_s);
        QCOMPARE(settings.sidebarSolidity(), 1.0);
        QCOMPARE(settings.rimSolidity(), 0.0);
        QCOMPARE(settings.gridColumns(), 4.0);
        QCOMPARE(settings.allViewKinds(), (QStringList{u"image"_s, u"link"_s}));
        QCOMPARE(settings.dropPopupExcludedApps(), QStringList{u"maim"_s});

        // An unknown raw string set from code is refused, and nothing is written.
        settings.setCardShape(u"square"_s);
        settings.setCardShape(u"triangle"_s);
        QCOMPARE(settings.cardShape(), u"square"_s);
    }

    void changesPersistUnderTheirKeys()
    {
        kivo::test::Sandbox sandbox;
        {
            AppSettings settings;
            QSignalSpy changed(&settings, &AppSettings::sidebarWidthChanged);
            settings.setSidebarWidth(300);
            settings.setSidebarWidth(300);
            QCOMPARE(changed.count(), 1);
            settings.setCollectionSort(u"recentlyUsed"_s);
            settings.setLastFiledCollectionId(u"c0ffee00-0000-4000-8000-000000000000"_s);
            settings.setLibraryBackgroundRecents({u"#112233"_s});
        }
        UserDefaults defaults;
        QCOMPARE(defaults.doubleValue(u"sidebarWidth"_s), 300.0);
        QCOMPARE(defaults.stringValue(u"collectionSort"_s), u"recentlyUsed"_s);
        AppSettings again;
        QCOMPARE(again.sidebarWidth(), 300.0);
        QCOMPARE(again.lastFiledCollectionId(), u"c0ffee00-0000-4000-8000-000000000000"_s);
        QCOMPARE(again.libraryBackgroundRecents(), QStringList{u"#112233"_s});
        again.setLastFiledCollectionId(QString());
        QVERIFY(!UserDefaults().contains(u"lastFiledCollectionId"_s));
    }

    void perViewPreferencesUseDottedKeysWithThePlainKeyAsFallback()
    {
        kivo::test::Sandbox sandbox;
        {
            UserDefaults defaults;
            defaults.setValue(u"gridColumns"_s, 6);
            defaults.setValue(u"gridColumns.trash"_s, 3);
            defaults.setValue(u"cardShowTitle.trash"_s, true);
        }
        AppSettings settings;
        QCOMPARE(settings.currentViewKey(), u"all"_s);
        QCOMPARE(settings.gridColumns(), 6.0); // no dotted key: the plain key

        settings.loadViewPreferences(u"trash"_s);
        QCOMPARE(settings.gridColumns(), 3.0);
        QVERIFY(settings.cardShowTitle());
        // Loading wrote nothing back.
        QVERIFY(!UserDefaults().contains(u"cardShowTitle.all"_s));
        QVERIFY(!UserDefaults().contains(u"gridColumns.all"_s));

        settings.setGridColumns(5);
        QCOMPARE(UserDefaults().doubleValue(u"gridColumns.trash"_s), 5.0);
        QCOMPARE(UserDefaults().doubleValue(u"gridColumns"_s), 6.0);

        settings.loadViewPreferences(u"all"_s);
        QCOMPARE(settings.gridColumns(), 6.0);
        QVERIFY(!settings.cardShowTitle());
        settings.setAllViewKinds({u"image"_s});
        QCOMPARE(UserDefaults().stringListValue(u"allViewKinds.all"_s), QStringList{u"image"_s});
    }

    void rimSolidityIsWrittenAfterAShortDelay()
    {
        kivo::test::Sandbox sandbox;
        AppSettings settings;
        settings.setRimSolidity(0.4);
        settings.setRimSolidity(0.5);
        QVERIFY(!UserDefaults().contains(u"rimSolidity"_s));
        QTRY_COMPARE(UserDefaults().doubleValue(u"rimSolidity"_s, -1), 0.5);
    }

    void oneTimeHotkeyChanges_data()
    {
        QTest::addColumn<QVariantMap>("stored");
        QTest::addColumn<int>("launcherKey");
        QTest::addColumn<int>("launcherModifiers");
        QTest::addColumn<QVariant>("shelfEnabled");
        QTest::newRow("fresh") << QVariantMap{} << 40 << 768 << QVariant();
        QTest::newRow("stored shelf flag is switched on")
            << QVariantMap{{u"shelfEnabled"_s, false}} << 40 << 768 << QVariant(true);
        QTest::newRow("option-B launcher moves back")
            << QVariantMap{{u"launcherOnOptionB"_s, true}, {u"launcherHotkeyKeyCode"_s, 11}, {u"launcherHotkeyModifiers"_s, 2048}}
            << 40 << 768 << QVariant();
        QTest::newRow("a launcher key of the user's own stays")
            << QVariantMap{{u"launcherOnOptionB"_s, true}, {u"launcherHotkeyKeyCode"_s, 12}, {u"launcherHotkeyModifiers"_s, 256}}
            << 12 << 256 << QVariant();
        QTest::newRow("both steps done: nothing changes")
            << QVariantMap{{u"launcherOnOptionB"_s, true}, {u"launcherHandoffUndone"_s, true},
                           {u"launcherHotkeyKeyCode"_s, 11}, {u"launcherHotkeyModifiers"_s, 2048}, {u"shelfEnabled"_s, false}}
            << 11 << 2048 << QVariant(false);
    }

    void oneTimeHotkeyChanges()
    {
        QFETCH(QVariantMap, stored);
        QFETCH(int, launcherKey);
        QFETCH(int, launcherModifiers);
        QFETCH(QVariant, shelfEnabled);
        kivo::test::Sandbox sandbox;
        {
            UserDefaults defaults;
            for (auto it = stored.constBegin(); it != stored.constEnd(); ++it)
                defaults.setValue(it.key(), it.value());
        }
        AppSettings settings;
        QCOMPARE(settings.launcherHotkeyKeyCode(), launcherKey);
        QCOMPARE(settings.launcherHotkeyModifiers(), launcherModifiers);
        QCOMPARE(settings.shelfHotkeyKeyCode(), 46);
        QCOMPARE(settings.shelfHotkeyModifiers(), 768);
        UserDefaults defaults;
        QVERIFY(defaults.boolValue(u"launcherOnOptionB"_s));
        QVERIFY(defaults.boolValue(u"launcherHandoffUndone"_s));
        if (shelfEnabled.isValid())
            QCOMPARE(settings.shelfEnabled(), shelfEnabled.toBool());
        else
            QVERIFY(!settings.shelfEnabled());
    }

    void onlyAnAbandonedLockIsCleared()
    {
        kivo::test::Sandbox sandbox;
        const QString path = UserDefaults().fileName() + u".lock"_s;
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        {
            // A lock that names a live process stays: Qt waits for its owner.
            QLockFile held(path);
            QVERIFY(held.tryLock());
            UserDefaults::clearAbandonedLock(0);
            QVERIFY(QFileInfo(path).size() > 0);
        }
        // An empty one, written a moment ago, stays while it may still be filled in...
        kivo::test::writeFile(path, QByteArray());
        UserDefaults::clearAbandonedLock(0);
        QVERIFY(QFile::exists(path));
        // ...and goes once it cannot be: a write then goes through at once.
        UserDefaults::clearAbandonedLock(3000);
        QVERIFY(!QFile::exists(path));
        UserDefaults defaults;
        defaults.setValue(u"written"_s, true);
        defaults.sync();
        QCOMPARE(defaults.value(u"written"_s).toBool(), true);
    }
};

QTEST_GUILESS_MAIN(TestAppSettings)
#include "tst_appsettings.moc"
