#include "ingest/import/remoteimport.h"

#include "core/backgroundpriority.h"
#include "core/database.h"
#include "ingest/import/importservice.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QScopeGuard>
#include <QTemporaryFile>
#include <QThreadPool>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** The part of a Content-Type before any parameters, trimmed and lower-cased. */
QString mediaTypeOf(const QNetworkReply &reply)
{
    const QByteArray header = reply.rawHeader("Content-Type");
    if (header.isNull())
        return {};
    return QString::fromLatin1(header).section(u';', 0, 0).trimmed().toLower();
}

void rememberSource(const ImportContext &context, LibraryItem &item, const QString &source)
{
    context.queue->write([&](Database &db) {
        db.execute(u"UPDATE item SET sourceURL = COALESCE(sourceURL, ?) WHERE id = ?"_s, {source, item.id});
    });
    if (!item.sourceURL)
        item.sourceURL = source;
}

/** The worker's part: the downloaded bytes become a picture, a video or, failing both, a link. */
RemoteResult storeDownload(const ImportContext &context, const RemoteRequest &request, const QUrl &address,
    const QString &mediaType, const QString &downloadPath, bool tooLarge)
{
    const auto removeDownload = qScopeGuard([&] {
        if (!downloadPath.isEmpty())
            QFile::remove(downloadPath);
    });
    const QString source = request.pageAddress ? request.pageAddress->toString(QUrl::FullyEncoded)
                                               : address.toString(QUrl::FullyEncoded);

    if (!tooLarge && mediaType.startsWith(u"image/")) {
        QFile file(downloadPath);
        if (!file.open(QIODevice::ReadOnly))
            throw ImportError(u"could not read the download: "_s + file.errorString());
        const QByteArray bytes = file.readAll();
        file.close();
        std::optional<QString> title = request.title;
        if (!title) {
            const QString name = QFileInfo(address.fileName()).completeBaseName();
            if (!name.isEmpty())
                title = name;
        }
        ImportedItem imported = ImportService::importImageData(context, bytes, title, request.target);
        rememberSource(context, imported.item, source);
        return {RemoteResult::Kind::media, imported.item, imported.existing};
    }

    if (!tooLarge && mediaType.startsWith(u"video/")) {
        QString extension = QFileInfo(address.path()).suffix();
        if (extension.isEmpty())
            extension = mediaType.section(u'/', 1);
        if (extension.isEmpty())
            extension = u"mp4"_s;
        const QString moved = QDir::tempPath() + u"/kivo-remote-"_s + newIdentifier() + u'.' + extension;
        if (!QFile::rename(downloadPath, moved))
            throw ImportError(u"could not move the download to "_s + moved);
        const auto removeMoved = qScopeGuard([&] { QFile::remove(moved); });
        ImportedItem imported = ImportService::importFile(context, moved, request.target);
        rememberSource(context, imported.item, source);
        return {RemoteResult::Kind::media, imported.item, imported.existing};
    }

    return {RemoteResult::Kind::page, ImportService::insertLink(context, address, std::nullopt, request.target), false};
}

} // namespace

RemoteImportJob::RemoteImportJob(QNetworkAccessManager *network, ImportContext context, RemoteRequest request)
    : QObject(network) // a manager that goes ends its imports; their futures are then cancelled
    , m_network(network)
    , m_context(std::move(context))
    , m_request(std::move(request))
{
    m_promise->start();
}

RemoteImportJob::~RemoteImportJob()
{
    if (m_reply)
        m_reply->abort();
}

void RemoteImportJob::start()
{
    m_address = ImportService::fullSizeVariant(m_request.address);
    // ### Posts on X (and pictures on X's image host whose page is a post) are resolved through
    // the post's data by the X importer, which plugs in here when it is built; until then they
    // take the ordinary way, and a post's page becomes a link.
    m_candidates = ImportService::candidateList(m_address);
    if (m_candidates.isEmpty()) {
        fail(u"there is no address to load"_s);
        return;
    }
    tryNext();
}

void RemoteImportJob::tryNext()
{
    if (m_next >= m_candidates.size()) {
        fail(m_lastFailure.isEmpty() ? u"could not load the address"_s : m_lastFailure);
        return;
    }
    const QUrl candidate = m_candidates.at(m_next++);
    m_download = std::make_unique<QTemporaryFile>(QDir::tempPath() + u"/kivo-download-XXXXXX"_s);
    if (!m_download->open()) {
        fail(u"could not make a temporary file: "_s + m_download->errorString());
        return;
    }
    m_tooLarge = false;
    m_writeFailed = false;
    QNetworkRequest request(candidate);
    request.setTransferTimeout(m_request.timeoutMs);
    m_reply = m_network->get(request);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &RemoteImportJob::headersArrived);
    connect(m_reply, &QNetworkReply::readyRead, this, &RemoteImportJob::readAvailable);
    connect(m_reply, &QNetworkReply::finished, this, &RemoteImportJob::downloadEnded);
}

void RemoteImportJob::headersArrived()
{
    // A declared length over the limit decides at once: the bytes would not be kept anyway.
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    if (status == 200 && length.isValid() && length.toLongLong() > ImportService::largestDownload) {
        m_tooLarge = true;
        m_reply->abort();
    }
}

void RemoteImportJob::readAvailable()
{
    const QByteArray chunk = m_reply->readAll();
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status != 200 || m_tooLarge || m_writeFailed)
        return; // an error page is not kept
    if (m_download->size() + chunk.size() > ImportService::largestDownload) {
        m_tooLarge = true;
        m_reply->abort();
        return;
    }
    if (m_download->write(chunk) != chunk.size()) {
        m_writeFailed = true;
        m_reply->abort();
    }
}

void RemoteImportJob::downloadEnded()
{
    if (m_reply->bytesAvailable() > 0)
        readAvailable();
    QNetworkReply *reply = m_reply;
    reply->deleteLater();
    m_reply.clear();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();

    if (m_tooLarge && status == 200) {
        m_download.reset();
        store(mediaTypeOf(*reply), QString(), true);
        return;
    }
    if (reply->error() != QNetworkReply::NoError || status != 200 || m_writeFailed) {
        if (status != 0 && status != 200)
            m_lastFailure = u"the server answered %1"_s.arg(status);
        else if (m_writeFailed)
            m_lastFailure = u"could not write the download: "_s + m_download->errorString();
        else if (reply->error() == QNetworkReply::OperationCanceledError)
            m_lastFailure = u"the request timed out"_s;
        else
            m_lastFailure = reply->errorString();
        m_download.reset(); // deletes the temporary file
        tryNext();
        return;
    }
    m_download->flush();
    m_download->setAutoRemove(false);
    const QString path = m_download->fileName();
    m_download.reset();
    store(mediaTypeOf(*reply), path, false);
}

void RemoteImportJob::store(const QString &mediaType, const QString &downloadPath, bool tooLarge)
{
    // The worker resolves the job's own promise; the job is done with its part.
    QThreadPool::globalInstance()->start([promise = m_promise, context = m_context, request = m_request,
                                             address = m_address, mediaType, downloadPath, tooLarge] {
        lowerCurrentThreadPriority();
        try {
            promise->addResult(storeDownload(context, request, address, mediaType, downloadPath, tooLarge));
        } catch (...) {
            promise->setException(std::current_exception());
        }
        promise->finish();
    });
    deleteLater();
}

void RemoteImportJob::fail(const QString &reason)
{
    m_promise->setException(std::make_exception_ptr(ImportError(reason)));
    m_promise->finish();
    deleteLater();
}

QFuture<RemoteResult> ImportService::importRemote(
    QNetworkAccessManager *network, const ImportContext &context, const RemoteRequest &request)
{
    auto *job = new RemoteImportJob(network, context, request);
    QFuture<RemoteResult> future = job->future();
    job->start();
    return future;
}

} // namespace kivo
