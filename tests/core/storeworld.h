#pragma once

#include "core/appsettings.h"
#include "core/desktop.h"
#include "core/store.h"
#include "tests/testsupport.h"

#include <QStringList>
#include <QUrl>

#include <functional>

namespace kivo::test {

/** A desktop that only records what the Store asked of it. */
class RecordingDesktop final : public Desktop
{
public:
    void copyText(const QString &text) override { copiedTexts.append(text); }
    void copyImageFile(const QString &path) override { copiedImages.append(path); }
    void copyFiles(const QStringList &paths) override { copiedFiles.append(paths); }
    void revealFiles(const QStringList &paths) override { revealed.append(paths); }
    void openUrl(const QUrl &url) override { opened.append(url); }
    QString downloadsFolder() const override { return downloads; }

    QStringList copiedTexts;
    QStringList copiedImages;
    QList<QStringList> copiedFiles;
    QList<QStringList> revealed;
    QList<QUrl> opened;
    QString downloads;
};

/** Collects the system log's lines while it lives. */
/** Puts rows straight into the database inside one transaction (each commit of a library costs a sync). */
class Seed
{
public:
    explicit Seed(Database &db) : m_db(db) { }
    /** Inserts an item; `tweak` fills in more fields before the insert. */
    QString item(const QString &kind, double addedAt, const std::function<void(LibraryItem &)> &tweak = {});
    void membership(const QString &itemId, const QString &collectionId, double addedAt);
    [[nodiscard]] Database &db() const { return m_db; }

private:
    Database &m_db;
};

/**
 * A started Store on its own sandboxed library and settings, with a recording desktop, after its
 * first load; and the shortcuts tests use to put rows straight into the database.
 */
class StoreWorld
{
public:
    /** `beforeStart` sets the Store up as the window does, before its first load. */
    explicit StoreWorld(const std::function<void(Store &)> &beforeStart = {});

    Sandbox sandbox;
    AppSettings settings;
    RecordingDesktop desktop;
    Store store{&settings};

    [[nodiscard]] DatabaseQueue &db() const { return *store.dbQueue(); }
    /** Runs `fill` in one write. */
    void seed(const std::function<void(Seed &)> &fill);
    /** Inserts an item; `tweak` fills in more fields before the insert. */
    QString addItem(const QString &kind, double addedAt, const std::function<void(LibraryItem &)> &tweak = {});
    /** Inserts a membership with its own addedAt. */
    void addMembership(const QString &itemId, const QString &collectionId, double addedAt);
    /** Creates a collection through the Store. */
    QString addCollection(const QString &name, const QString &parentId = {});
    [[nodiscard]] LibraryItem item(const QString &id) const;
    [[nodiscard]] QVariant scalar(const QString &sql, const QVariantList &arguments = {}) const;
    /** Writes a stored file of the library and returns its `filePath`. */
    QString storeFile(const QString &relativePath, const QByteArray &bytes = "data");
};

/** The ids of a list of rows, in order. */
[[nodiscard]] QStringList idsOf(const QList<LibraryItem> &items);

} // namespace kivo::test
