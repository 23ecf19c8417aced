#pragma once

#include "surfaces/enrichment/enrichmentprogress.h"
#include "ingest/import/libraryimporter.h"
#include "surfaces/import/importcontroller.h"
#include "surfaces/qmlservices.h"
#include "surfaces/theme/appearancecontroller.h"
#include "tests/core/storeworld.h"
#include "tests/surfaces/quickhelpers.h"

#include <QDir>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QtQuickTest/quicktest.h>
#include <QtTest>

namespace kivo::test {

/** Types text into whatever has the keyboard focus, one key event per character. */
inline void typeText(QQuickWindow *window, const QString &text)
{
    for (const QChar character : text) {
        const char latin = character.toLatin1();
        if (latin == ' ')
            QTest::keyClick(window, Qt::Key_Space, Qt::NoModifier);
        else
            QTest::keyClick(window, latin, character.isUpper() ? Qt::ShiftModifier : Qt::NoModifier);
    }
}

/** A started Store on its own library and settings, its importer, and the real main window on it. */
struct LoadedWindow {
    StoreWorld world;
    AppearanceController appearance;
    EnrichmentProgress reading;
    LibraryImporter importer{&world.store, &world.settings};
    ImportController imports{&importer};
    std::unique_ptr<QQmlApplicationEngine> engine;
    QQuickWindow *window = nullptr;

    /** Loads Main.qml as the application does; QVERIFY-style, so call it through QVERIFY(open()). */
    bool open(const QString &appearanceSetting = QStringLiteral("light"))
    {
        appearance.setAppearance(appearanceSetting);
        QmlServices::publishAppearance(&appearance);
        QmlServices::publishSettings(&world.settings);
        QmlServices::publishStore(&world.store);
        QmlServices::publishEnrichmentProgress(&reading);
        QmlServices::publishImporter(&imports);
        engine = std::make_unique<QQmlApplicationEngine>();
        QmlServices::prepareEngine(*engine);
        engine->load(QUrl(QStringLiteral("qrc:/Kivo/window/Main.qml")));
        if (engine->rootObjects().isEmpty())
            return false;
        window = qobject_cast<QQuickWindow *>(engine->rootObjects().constFirst());
        // Active, not only shown: the window's shortcuts answer only in the window with the focus.
        if (!window || !QTest::qWaitForWindowExposed(window))
            return false;
        window->requestActivate();
        return QTest::qWaitForWindowActive(window);
    }

    [[nodiscard]] QQuickItem *item(const QString &name) const { return findItem(window->contentItem(), name); }

    [[nodiscard]] QString textOf(const QString &name, const QString &child = {}) const
    {
        QQuickItem *found = item(name);
        if (found && !child.isEmpty())
            found = findItem(found, child);
        return found ? found->property("text").toString() : QStringLiteral("<missing %1>").arg(name);
    }

    /** Lets the window lay itself out after a change, so positions read next are the drawn ones. */
    void settle() const { QQuickTest::qWaitForPolish(window); }

    /** A real left click in the middle of the item of that name, once the layout has settled. */
    void click(const QString &name, Qt::MouseButton button = Qt::LeftButton) const
    {
        settle();
        QQuickItem *target = item(name);
        QVERIFY2(isShown(target), qPrintable(name));
        QTest::mouseClick(window, button, Qt::NoModifier, centreOf(target));
    }

    /** The scene point at the middle of an item. */
    [[nodiscard]] static QPoint centreOf(QQuickItem *item)
    {
        return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
    }

    /** Saves what the window shows under the build's screenshots folder, once its motions have ended. */
    void screenshot(const QString &name) const
    {
        QTest::qWait(400);
        QDir().mkpath(QStringLiteral(KIVO_SCREENSHOT_DIR));
        const QImage image = window->grabWindow();
        QVERIFY(!image.isNull());
        QVERIFY(image.save(QStringLiteral(KIVO_SCREENSHOT_DIR) + u'/' + name));
    }
};

} // namespace kivo::test
