#include "core/launchoptions.h"

#include <QTest>

using namespace Qt::StringLiterals;
using kivo::LaunchOptions;

/** The switches of one run, each found by plain membership wherever it stands. */
class TestLaunchOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void switches_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("on"); // the switches expected on
        QTest::addColumn<int>("step");       // -1 for none

        QTest::newRow("none") << QStringList{u"kivo"_s} << QStringList{} << -1;
        QTest::newRow("each once") << QStringList{u"kivo"_s, u"--no-enrich"_s, u"--churn-trace"_s, u"--checklist"_s}
                                   << QStringList{u"noEnrich"_s, u"churnTrace"_s, u"checklist"_s} << -1;
        QTest::newRow("after the library") << QStringList{u"kivo"_s, u"--library"_s, u"/tmp/x"_s, u"--mouse-probe"_s, u"--view-options"_s}
                                           << QStringList{u"mouseProbe"_s, u"viewOptions"_s} << -1;
        QTest::newRow("backup job") << QStringList{u"kivo"_s, u"--run-scheduled-backup"_s} << QStringList{u"runScheduledBackup"_s} << -1;
        QTest::newRow("onboarding at a step") << QStringList{u"kivo"_s, u"--onboarding"_s, u"--onboarding-step"_s, u"3"_s}
                                              << QStringList{u"onboarding"_s} << 3;
        QTest::newRow("step without a number") << QStringList{u"kivo"_s, u"--onboarding-step"_s, u"--checklist"_s}
                                               << QStringList{u"checklist"_s} << -1;
        QTest::newRow("step as the last argument") << QStringList{u"kivo"_s, u"--onboarding-step"_s} << QStringList{} << -1;
        // Membership, not prefixes: a longer word is another switch.
        QTest::newRow("near misses") << QStringList{u"kivo"_s, u"--no-enrichment"_s, u"--onboarding-steps"_s, u"-checklist"_s}
                                     << QStringList{} << -1;
    }

    void switches()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, on);
        QFETCH(int, step);
        const LaunchOptions options = LaunchOptions::parse(arguments);
        const QList<std::pair<QString, bool>> actual{
            {u"runScheduledBackup"_s, options.runScheduledBackup}, {u"onboarding"_s, options.onboarding},
            {u"checklist"_s, options.checklist},                   {u"mouseProbe"_s, options.mouseProbe},
            {u"churnTrace"_s, options.churnTrace},                 {u"noEnrich"_s, options.noEnrich},
            {u"viewOptions"_s, options.viewOptions},
        };
        for (const auto &[name, value] : actual)
            QVERIFY2(value == on.contains(name), qPrintable(name));
        QCOMPARE(options.onboardingStep.value_or(-1), step);
    }

    void currentIsWhatWasSet()
    {
        QVERIFY(!LaunchOptions::current().noEnrich);
        LaunchOptions::setCurrent(LaunchOptions::parse({u"kivo"_s, u"--no-enrich"_s}));
        QVERIFY(LaunchOptions::current().noEnrich);
        LaunchOptions::setCurrent({});
    }
};

QTEST_GUILESS_MAIN(TestLaunchOptions)
#include "tst_launchoptions.moc"
