#include "surfaces/import/importcontroller.h"

#include "ingest/import/libraryimporter.h"

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QLocale>
#include <QMimeData>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** Kivo's own drag words: an item or collection dragged out and back in is not a new import. */
bool isOwnPayload(const QString &text)
{
    return text.startsWith(u"KIVO-ITEM"_s) || text.startsWith(u"KIVO-COLLECTION "_s);
}

bool isWebAddress(const QUrl &url)
{
    return url.isValid() && (url.scheme() == u"http" || url.scheme() == u"https") && !url.host().isEmpty();
}

/** Picture bytes as they were copied, in a format the library keeps as it is; else the image re-encoded as PNG. */
QByteArray pictureBytes(const QMimeData &mime)
{
    for (const QString &format : {u"image/png"_s, u"image/jpeg"_s, u"image/gif"_s, u"image/webp"_s}) {
        if (mime.hasFormat(format)) {
            const QByteArray bytes = mime.data(format);
            if (!bytes.isEmpty())
                return bytes;
        }
    }
    if (!mime.hasImage())
        return {};
    const QImage image = qvariant_cast<QImage>(mime.imageData());
    if (image.isNull())
        return {};
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

} // namespace

ImportController::ImportController(LibraryImporter *importer, QObject *parent) : QObject(parent), m_importer(importer)
{
}

ImportController::~ImportController() = default;

int ImportController::done() const
{
    int sum = 0;
    for (const QPointer<ImportBatch> &batch : m_batches) {
        if (batch)
            sum += batch->done();
    }
    return sum;
}

int ImportController::total() const
{
    int sum = 0;
    for (const QPointer<ImportBatch> &batch : m_batches) {
        if (batch)
            sum += batch->total();
    }
    return sum;
}

double ImportController::progress() const
{
    const int all = total();
    return all > 0 ? double(done()) / all : 0.0;
}

QString ImportController::progressText() const
{
    if (!busy())
        return {};
    const int all = total();
    if (all == 0)
        return u"Preparing import\u2026"_s;
    const QLocale locale;
    return u"Importing %1 of %2"_s.arg(locale.toString(std::min(done() + 1, all)), locale.toString(all));
}

QString ImportController::failureSummary() const
{
    if (m_failures.isEmpty())
        return {};
    if (m_failures.size() == 1)
        return u"1 file couldn\u2019t be imported"_s;
    return u"%1 files couldn\u2019t be imported"_s.arg(QLocale().toString(qsizetype(m_failures.size())));
}

std::optional<QString> ImportController::target(const QString &collectionId) const
{
    return m_importer->destination(collectionId.isEmpty() ? std::nullopt : std::optional<QString>(collectionId));
}

bool ImportController::importUrls(const QList<QUrl> &urls, const QString &collectionId)
{
    if (!m_importer || urls.isEmpty())
        return false;
    const auto destination = target(collectionId);
    QStringList files;
    bool took = false;
    for (const QUrl &url : urls) {
        if (url.isLocalFile()) {
            files.append(url.toLocalFile());
        } else if (isWebAddress(url)) {
            queueAddress(url, destination);
            took = true;
        }
    }
    if (!files.isEmpty()) {
        if (ImportBatch *batch = m_importer->importFiles(files, destination)) {
            watch(batch);
            took = true;
        }
    }
    return took;
}

bool ImportController::importDrop(const QList<QUrl> &urls, const QString &text, const QString &collectionId)
{
    if (!m_importer || isOwnPayload(text))
        return false;
    if (!urls.isEmpty())
        return importUrls(urls, collectionId);
    return importText(text, target(collectionId));
}

bool ImportController::importMimeData(const QMimeData *mime, const QString &collectionId)
{
    if (!mime || !m_importer)
        return false;
    const QString text = mime->hasText() ? mime->text() : QString();
    if (isOwnPayload(text))
        return false;
    if (mime->hasUrls() && importUrls(mime->urls(), collectionId))
        return true;
    const QByteArray picture = pictureBytes(*mime);
    if (!picture.isEmpty()) {
        (void)m_importer->importImageData(picture, std::nullopt, target(collectionId));
        return true;
    }
    return importText(text, target(collectionId));
}

bool ImportController::paste(const QString &collectionId)
{
    return importMimeData(QGuiApplication::clipboard()->mimeData(), collectionId);
}

bool ImportController::importText(const QString &text, const std::optional<QString> &destination)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return false;
    // A lone address is a thing to fetch; anything else is somebody's words.
    const QUrl address(trimmed, QUrl::StrictMode);
    if (!trimmed.contains(QChar(u' ')) && !trimmed.contains(u'\n') && isWebAddress(address)) {
        queueAddress(address, destination);
        return true;
    }
    return m_importer->importText(text, std::nullopt, destination).has_value();
}

void ImportController::queueAddress(const QUrl &address, const std::optional<QString> &destination)
{
    m_addresses.append({address, destination});
    importNextAddress();
}

void ImportController::importNextAddress()
{
    if (m_addressRunning || m_addresses.isEmpty() || !m_importer)
        return;
    const PendingAddress next = m_addresses.takeFirst();
    m_addressRunning = true;
    // One address at a time, in the order dropped; each ends as a picture, a video or a link.
    m_importer->importRemote(next.address, std::nullopt, std::nullopt, next.target)
        .then(this, [this](const RemoteImportOutcome &) {
            m_addressRunning = false;
            importNextAddress();
        });
}

void ImportController::watch(ImportBatch *batch)
{
    m_batches.append(batch);
    connect(batch, &ImportBatch::totalKnown, this, &ImportController::progressChanged);
    connect(batch, &ImportBatch::progressed, this, [this](const FileImportOutcome &outcome) {
        noteOutcome(outcome);
        Q_EMIT progressChanged();
    });
    connect(batch, &ImportBatch::finished, this, [this, batch] { batchFinished(batch); });
    Q_EMIT progressChanged();
}

void ImportController::noteOutcome(const FileImportOutcome &outcome)
{
    if (outcome.succeeded())
        return;
    m_failures.append(
        QVariantMap{{u"name"_s, outcome.fileName()}, {u"path"_s, outcome.path}, {u"error"_s, outcome.error}});
    Q_EMIT failuresChanged();
}

void ImportController::batchFinished(ImportBatch *batch)
{
    m_batches.removeAll(batch);
    m_batches.removeAll(nullptr);
    batch->deleteLater();
    Q_EMIT progressChanged();
}

void ImportController::cancel()
{
    for (const QPointer<ImportBatch> &batch : std::as_const(m_batches)) {
        if (batch)
            batch->cancel();
    }
    m_addresses.clear();
}

void ImportController::dismissFailures()
{
    if (m_failures.isEmpty())
        return;
    m_failures.clear();
    Q_EMIT failuresChanged();
}

} // namespace kivo
