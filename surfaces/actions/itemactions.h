#pragma once

#include "core/store.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace kivo {

/**
 * Every operation on saved items that a card's or row's context menu and the keyboard offer:
 * which apply to the clicked item (or to the multi-selection holding it), their words and keys,
 * and running them through the Store, which shows the toasts. The grid, the list and the rail
 * call the same object, so a menu reads the same wherever it opens.
 */
class ItemActions : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kivo::Store *store READ store WRITE setStore NOTIFY storeChanged)
    /** The keys of the actions: maps of action and sequence (portable text, "Ctrl+Shift+C"). */
    Q_PROPERTY(QVariantList shortcuts READ shortcuts CONSTANT)

public:
    explicit ItemActions(QObject *parent = nullptr);

    [[nodiscard]] Store *store() const { return m_store; }
    void setStore(Store *store);
    [[nodiscard]] QVariantList shortcuts() const;

    /**
     * The menu for a right click on `itemId`, in order: maps of action, text, shortcut and
     * destructive; {"separator": true} between groups; the action "file" opens the submenu of
     * collections. Actions that need words first ("rename", "tag", "fileNew") are answered with
     * `inputRequested` when triggered.
     */
    Q_INVOKABLE QVariantList menuFor(const QString &itemId) const;
    /** The items an action on `itemId` applies to: the multi-selection when it holds it, else the item. */
    Q_INVOKABLE QStringList targets(const QString &itemId) const;
    /** The item the keys act on: the multi-selection's first, else the focused item; empty for none. */
    Q_INVOKABLE QString keyTarget() const;

    /** Runs an action of the menu on the items it applies to; false when it does not apply. */
    Q_INVOKABLE bool trigger(const QString &action, const QString &itemId);
    /** Runs the action of a key on the key target, if it applies there. */
    Q_INVOKABLE bool triggerFromKeyboard(const QString &action);

    /** Collections to file into, in sidebar order: maps of id, name, depth, icon, and holdsAll (every target is in it
     * already). */
    Q_INVOKABLE QVariantList fileChoices(const QString &itemId) const;
    Q_INVOKABLE bool fileInto(const QString &collectionId, const QString &itemId);
    /** Makes a collection of that name and files the targets into it. */
    Q_INVOKABLE bool fileIntoNew(const QString &name, const QString &itemId);
    /** Tags the targets; several selected ones are announced with "Tagged N as name". */
    Q_INVOKABLE bool tag(const QString &name, const QString &itemId);
    Q_INVOKABLE bool rename(const QString &itemId, const QString &title);
    /** The title an item's rename starts from: its title, else what the card shows. */
    Q_INVOKABLE QString titleOf(const QString &itemId) const;

Q_SIGNALS:
    void storeChanged();
    /** An action needs words or a choice first: "rename", "tag", "file" or "fileNew", for these items. */
    void inputRequested(const QString &action, const QString &itemId);

private:
    [[nodiscard]] bool applies(const QString &action, const QStringList &ids) const;
    [[nodiscard]] QString currentCollectionId() const;
    /** The records of these items, in their order; ids that name nothing are left out. */
    [[nodiscard]] QList<LibraryItem> itemsOf(const QStringList &ids) const;

    QPointer<Store> m_store;
};

} // namespace kivo
