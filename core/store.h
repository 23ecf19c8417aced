#pragma once

#include "core/database.h"
#include "core/records.h"

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <optional>

namespace kivo {

/**
 * The application's one model object: owner of the database handle and publisher of what the
 * surfaces show. Lives on the main thread; every writer ends by asking it to reload.
 */
class Store : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString setupError READ setupError NOTIFY setupErrorChanged)
    Q_PROPERTY(bool didInitialLoad READ didInitialLoad NOTIFY didInitialLoadChanged)
    Q_PROPERTY(QString libraryRoot READ libraryRoot CONSTANT)
    Q_PROPERTY(int allCount READ allCount NOTIFY countsChanged)
    Q_PROPERTY(int inboxCount READ inboxCount NOTIFY countsChanged)
    Q_PROPERTY(int favouritesCount READ favouritesCount NOTIFY countsChanged)
    Q_PROPERTY(int linksCount READ linksCount NOTIFY countsChanged)
    Q_PROPERTY(int trashCount READ trashCount NOTIFY countsChanged)
    Q_PROPERTY(int hiddenCount READ hiddenCount NOTIFY countsChanged)
    /** Live items per kind filter, by the filter's raw string ("image", "videos", ...); hidden ones count. */
    Q_PROPERTY(QVariantMap typeCounts READ typeCounts NOTIFY typeCountsChanged)

public:
    explicit Store(QObject *parent = nullptr);
    ~Store() override;

    /** Ensures the library, opens and migrates the database and makes sure the inbox exists. */
    void initialise();

    [[nodiscard]] QString setupError() const { return m_setupError.value_or(QString()); }
    [[nodiscard]] bool didInitialLoad() const { return m_didInitialLoad; }
    [[nodiscard]] QString libraryRoot() const { return m_libraryRoot; }
    [[nodiscard]] int allCount() const { return m_allCount; }
    [[nodiscard]] int inboxCount() const { return m_inboxCount; }
    [[nodiscard]] int favouritesCount() const { return m_favouritesCount; }
    [[nodiscard]] int linksCount() const { return m_linksCount; }
    [[nodiscard]] int trashCount() const { return m_trashCount; }
    [[nodiscard]] int hiddenCount() const { return m_hiddenCount; }
    [[nodiscard]] QVariantMap typeCounts() const { return m_typeCounts; }

    /** The database handle; null when the library could not be opened. */
    [[nodiscard]] std::shared_ptr<DatabaseQueue> dbQueue() const { return m_dbQueue; }
    [[nodiscard]] std::optional<QString> inboxId() const { return m_inboxId; }

    Q_INVOKABLE void reloadAll();
    void reloadCollections();
    void reloadTypeCounts();

Q_SIGNALS:
    void setupErrorChanged();
    void didInitialLoadChanged();
    void countsChanged();
    void typeCountsChanged();

private:
    void ensureInbox();
    void retireBoardObjects();

    std::shared_ptr<DatabaseQueue> m_dbQueue;
    std::optional<QString> m_setupError;
    std::optional<QString> m_inboxId;
    QString m_libraryRoot;
    bool m_didInitialLoad = false;
    int m_allCount = 0;
    int m_inboxCount = 0;
    int m_favouritesCount = 0;
    int m_linksCount = 0;
    int m_trashCount = 0;
    int m_hiddenCount = 0;
    QVariantMap m_typeCounts;
};

} // namespace kivo
