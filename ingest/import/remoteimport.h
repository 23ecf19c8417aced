#pragma once

#include "ingest/import/importservice.h"

#include <QObject>
#include <QPointer>
#include <QPromise>

#include <memory>

class QNetworkAccessManager;
class QNetworkReply;
class QTemporaryFile;

namespace kivo {

/**
 * One remote import in flight: tries the candidate addresses one after another on the network
 * manager's thread, downloading each to a temporary file, and hands the first good answer to a
 * worker that stores it as a picture, a video or a link. It deletes itself when the future is
 * resolved. `ImportService::importRemote` is its only user.
 */
class RemoteImportJob : public QObject
{
    Q_OBJECT

public:
    RemoteImportJob(QNetworkAccessManager *network, ImportContext context, RemoteRequest request);
    ~RemoteImportJob() override;

    [[nodiscard]] QFuture<RemoteResult> future() { return m_promise->future(); }
    void start();

private:
    void tryNext();
    void readAvailable();
    void headersArrived();
    void downloadEnded();
    /** Hands the download (or, when it was too large, nothing) to a worker to be stored. */
    void store(const QString &mediaType, const QString &downloadPath, bool tooLarge);
    void fail(const QString &reason);

    QNetworkAccessManager *m_network;
    ImportContext m_context;
    RemoteRequest m_request;
    /** The address after the full-size rewrite: the one the item remembers. */
    QUrl m_address;
    QList<QUrl> m_candidates;
    qsizetype m_next = 0;
    /** Shared with the worker that resolves it, which may outlive the job. */
    std::shared_ptr<QPromise<RemoteResult>> m_promise = std::make_shared<QPromise<RemoteResult>>();
    QPointer<QNetworkReply> m_reply;
    std::unique_ptr<QTemporaryFile> m_download;
    bool m_tooLarge = false;
    bool m_writeFailed = false;
    QString m_lastFailure;
};

} // namespace kivo
