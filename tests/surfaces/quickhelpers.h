#pragma once

#include <QQuickItem>
#include <QQuickWindow>
#include <QString>
#include <QtTest>

namespace kivo::test {

/** The first visual descendant of `root` (or `root` itself) with this objectName. */
inline QQuickItem *findItem(QQuickItem *root, const QString &objectName)
{
    if (!root)
        return nullptr;
    if (root->objectName() == objectName)
        return root;
    const QList<QQuickItem *> children = root->childItems();
    for (QQuickItem *child : children) {
        if (QQuickItem *found = findItem(child, objectName))
            return found;
    }
    return nullptr;
}

/** A real click (left unless told) in the middle of `item`, through the window's event delivery. */
inline void clickItem(QQuickWindow *window, QQuickItem *item, Qt::MouseButton button = Qt::LeftButton)
{
    QVERIFY(item);
    QVERIFY2(item->isVisible(), qPrintable(item->objectName()));
    const QPointF centre = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
    QTest::mouseClick(window, button, Qt::NoModifier, centre.toPoint());
}

/** Whether `item` is shown: visible itself and inside a visible parent chain. */
inline bool isShown(QQuickItem *item)
{
    return item && item->isVisible() && item->opacity() > 0;
}

} // namespace kivo::test
