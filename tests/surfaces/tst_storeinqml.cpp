// The Store as QML sees it through "Kivo.Services": properties, ids as strings, lists as arrays.

#include "core/appsettings.h"
#include "core/store.h"
#include "surfaces/qmlservices.h"
#include "tests/testsupport.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

class TestStoreInQml : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void operationsFromQml();
};

void TestStoreInQml::operationsFromQml()
{
    kivo::test::Sandbox sandbox;
    kivo::AppSettings settings;
    kivo::Store store(&settings);
    store.initialise();
    QTRY_VERIFY(store.didInitialLoad());
    kivo::QmlServices::publishStore(&store);

    QQmlEngine engine;
    kivo::QmlServices::prepareEngine(engine);
    QQmlComponent component(&engine);
    // Every call goes the way a surface's QML would make it; the answers come back as plain values.
    component.setData(R"(
        import QtQml
        import Kivo.Services
        QtObject {
            function exercise() {
                const out = {}
                out.board = Store.createCollection("  Mood  ")
                out.renamed = Store.renameCollection(out.board, "Moods") ? Store.collectionPath(out.board) : ""
                out.choices = Store.collectionChoices().length
                Store.selectionKey = out.board
                out.picked = Store.selectionKey
                Store.viewMode = "list"
                out.mode = Store.viewMode
                out.deleted = Store.deleteCollections([out.board])
                out.toast = Store.toast
                out.action = Store.toastAction
                Store.triggerToastAction()
                out.afterUndo = Store.collectionData(out.board).name
                out.previews = Store.trayPreviewUrls(out.board).length
                out.tags = Store.itemTags("nothing").length
                out.targets = Store.targetIds("a")
                return out
            }
        }
    )"_ba,
        QUrl());
    std::unique_ptr<QObject> object(component.create());
    QVERIFY2(object, qPrintable(component.errorString()));
    QVariant answer;
    QVERIFY(QMetaObject::invokeMethod(object.get(), "exercise", Q_RETURN_ARG(QVariant, answer)));
    const QVariantMap out = answer.toMap();
    const QString board = out.value(u"board"_s).toString();
    QCOMPARE(board.size(), 36);
    QCOMPARE(out.value(u"renamed"_s).toString(), u"Moods"_s);
    QCOMPARE(out.value(u"choices"_s).toInt(), 1);
    QCOMPARE(out.value(u"picked"_s).toString(), board);
    QCOMPARE(out.value(u"mode"_s).toString(), u"list"_s);
    QVERIFY(out.value(u"deleted"_s).toBool());
    QCOMPARE(out.value(u"toast"_s).toString(), u"Collection Deleted"_s);
    QCOMPARE(out.value(u"action"_s).toString(), u"Undo"_s);
    QCOMPARE(out.value(u"afterUndo"_s).toString(), u"Moods"_s);
    QCOMPARE(out.value(u"previews"_s).toInt(), 0);
    QCOMPARE(out.value(u"tags"_s).toInt(), 0);
    QCOMPARE(out.value(u"targets"_s).toStringList(), QStringList{u"a"_s});
    QCOMPARE(store.collections().size(), 1);
}

QTEST_GUILESS_MAIN(TestStoreInQml)
#include "tst_storeinqml.moc"
