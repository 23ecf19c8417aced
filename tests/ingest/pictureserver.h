#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QTcpServer>
#include <QUrl>

namespace kivo::test {

/**
 * A small HTTP server on 127.0.0.1 for the import tests: each path answers with the status,
 * type and bytes it was given; any other path answers 404. It counts what was asked of it.
 */
class PictureServer : public QTcpServer
{
    Q_OBJECT

public:
    struct Answer {
        int status = 200;
        QByteArray type;
        QByteArray body;
    };

    PictureServer();
    void serve(const QString &path, const Answer &answer) { m_answers.insert(path, answer); }
    [[nodiscard]] QUrl url(const QString &path) const;
    [[nodiscard]] int hits(const QString &path) const { return m_hits.value(path); }

private:
    void answer(QTcpSocket *socket);

    QHash<QString, Answer> m_answers;
    QHash<QString, int> m_hits;
};

} // namespace kivo::test
