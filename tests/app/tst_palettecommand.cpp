#include "tests/testsupport.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/** How a child `kivo` ended, and what it printed. */
struct Outcome {
    int exitCode = -1;
    QString out;
    QString err;
};

// 3072 white pixels, 768 blue, and 256 in one bin shared by #102030 and #1F2F3F (mean #172737).
QImage mixedPicture()
{
    QImage image(64, 64, QImage::Format_RGB32);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            QRgb colour = y < 48 ? qRgb(255, 255, 255) : y < 60 ? qRgb(0, 0, 255) : 0;
            if (y >= 60)
                colour = x % 2 ? qRgb(0x10, 0x20, 0x30) : qRgb(0x1F, 0x2F, 0x3F);
            image.setPixel(x, y, colour);
        }
    }
    return image;
}

} // namespace

/** `kivo palette`: a picture's palette from the real binary. */
class TestPaletteCommand : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;

    QProcessEnvironment childEnvironment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, m_sandbox->homePath());
        environment.insert(u"XDG_CONFIG_HOME"_s, m_sandbox->path() + u"/child-config"_s);
        return environment;
    }

    Outcome kivo(const QStringList &arguments) const
    {
        QProcess process;
        process.setProcessEnvironment(childEnvironment());
        process.start(QStringLiteral(KIVO_BINARY), arguments);
        if (!process.waitForFinished(60000))
            process.kill();
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
    }

private Q_SLOTS:
    void init() { m_sandbox = std::make_unique<kivo::test::Sandbox>(); }
    void cleanup() { m_sandbox.reset(); }

    void printsThePaletteAsTextAndJson()
    {
        const QString path = m_sandbox->path() + u"/mixed.png"_s;
        QVERIFY(mixedPicture().save(path));

        const Outcome text = kivo({u"palette"_s, path});
        QCOMPARE(text.exitCode, 0);
        QCOMPARE(text.out, u"#FFFFFF  white\n#0000FF  blue\n#172737  blue\n"_s);

        const Outcome json = kivo({u"palette"_s, path, u"--json"_s});
        QCOMPARE(json.exitCode, 0);
        const QJsonObject object = QJsonDocument::fromJson(json.out.toUtf8()).object();
        QCOMPARE(object.value(u"colors"_s).toArray(), QJsonArray({u"#FFFFFF"_s, u"#0000FF"_s, u"#172737"_s}));
        QCOMPARE(object.value(u"names"_s).toArray(), QJsonArray({u"white"_s, u"blue"_s, u"blue"_s}));
    }

    void transparentPictureHasAnEmptyPalette()
    {
        const QString path = m_sandbox->path() + u"/clear.png"_s;
        QImage clear(40, 40, QImage::Format_ARGB32);
        clear.fill(Qt::transparent);
        QVERIFY(clear.save(path));
        const Outcome text = kivo({u"palette"_s, path});
        QCOMPARE(text.exitCode, 0);
        QCOMPARE(text.out, QString());
        const Outcome json = kivo({u"--json"_s, u"palette"_s, path});
        QCOMPARE(json.out.trimmed(), u"{\"colors\":[],\"names\":[]}"_s);
    }

    void refusesWhatIsNoPicture_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("message");
        QTest::newRow("no file") << QStringList{u"palette"_s} << 2 << u"kivo: palette takes one picture file"_s;
        QTest::newRow("two files") << QStringList{u"palette"_s, u"a"_s, u"b"_s} << 2
                                   << u"kivo: palette takes one picture file"_s;
        QTest::newRow("missing") << QStringList{u"palette"_s, u"SANDBOX/missing.png"_s} << 1
                                 << u"kivo: no file at SANDBOX/missing.png"_s;
        QTest::newRow("folder") << QStringList{u"palette"_s, u"SANDBOX"_s} << 1 << u"kivo: no file at SANDBOX"_s;
        QTest::newRow("not a picture") << QStringList{u"palette"_s, u"SANDBOX/notes.png"_s} << 1
                                       << u"kivo: cannot read a picture from SANDBOX/notes.png"_s;
    }
    void refusesWhatIsNoPicture()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, message);
        kivo::test::writeFile(m_sandbox->path() + u"/notes.png"_s, "just some words");
        arguments.replaceInStrings(u"SANDBOX"_s, m_sandbox->path());
        message.replace(u"SANDBOX"_s, m_sandbox->path());
        const Outcome outcome = kivo(arguments);
        QCOMPARE(outcome.exitCode, exitCode);
        QCOMPARE(outcome.err.trimmed(), message);
        QCOMPARE(outcome.out, QString());
    }
};

QTEST_GUILESS_MAIN(TestPaletteCommand)
#include "tst_palettecommand.moc"
