#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMetaType>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QThread>
#include <QUrl>

#include <optional>
#include <utility>

namespace kivo::test {

/** One answer of the fixture server: a status, headers and a body, with a delay before it if asked. */
struct FixtureResponse {
    int status = 200;
    /** The Content-Type header; none sends no such header. */
    std::optional<QByteArray> contentType = QByteArray("application/octet-stream");
    QByteArray body;
    /** When set, the body is this file, streamed in chunks (a sparse file stands for a huge one). */
    QString bodyFile;
    /** Milliseconds to wait before anything is sent: longer than a client's time-out, it times out. */
    int delayMs = 0;
    /** Without a length the body ends when the connection closes, so only its bytes tell its size. */
    bool sendLength = true;
    /** More headers, such as Location for a redirect. */
    QList<std::pair<QByteArray, QByteArray>> headers;

    [[nodiscard]] static FixtureResponse bytes(const QByteArray &body, const QByteArray &contentType, int status = 200);
    [[nodiscard]] static FixtureResponse file(const QString &path, const QByteArray &contentType, int status = 200);
    [[nodiscard]] static FixtureResponse redirect(const QString &location, int status = 302);
};

class FixtureServerWorker;

/**
 * A small HTTP/1.1 server on 127.0.0.1 for network tests: it answers each path it was given with
 * that response and everything else with 404, one request per connection. It runs on its own
 * thread, so a test may block its own (waiting for a child process, say) while it answers.
 */
class FixtureServer
{
public:
    FixtureServer();
    ~FixtureServer();
    FixtureServer(const FixtureServer &) = delete;
    FixtureServer &operator=(const FixtureServer &) = delete;

    [[nodiscard]] quint16 port() const { return m_port; }
    /** The full address of a path on this server ("/a.png?w=10" gives http://127.0.0.1:port/a.png?w=10). */
    [[nodiscard]] QUrl url(const QString &pathAndQuery) const;

    /** Answers `pathAndQuery` with `response`: an exact match with the query first, then the path alone. */
    void serve(const QString &pathAndQuery, const FixtureResponse &response);
    /** How many requests asked for this path and query. */
    [[nodiscard]] int requestCount(const QString &pathAndQuery) const;
    /** Every request target received, in order. */
    [[nodiscard]] QStringList requests() const;

private:
    friend class FixtureServerWorker;
    [[nodiscard]] FixtureResponse responseFor(const QString &target);

    mutable QMutex m_mutex;
    QHash<QString, FixtureResponse> m_responses;
    QStringList m_requests;
    QThread m_thread;
    FixtureServerWorker *m_worker = nullptr;
    quint16 m_port = 0;
};

} // namespace kivo::test

Q_DECLARE_METATYPE(kivo::test::FixtureResponse)
