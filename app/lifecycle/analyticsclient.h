#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

class QNetworkAccessManager;

namespace kivo {

/**
 * The client of a self-hosted analytics service's event endpoint. It sends nothing unless a host
 * is configured (the build sets none) and `analyticsEnabled` holds, so an unconfigured Kivo never
 * makes a request. The one event is `app_opened`, at each launch, without properties.
 */
class AnalyticsClient : public QObject
{
    Q_OBJECT

public:
    /** `host` is the service's base address; empty means analytics are off for good. */
    AnalyticsClient(const QUrl &host, const QString &appKey, QNetworkAccessManager *network, QObject *parent = nullptr);

    /** The host and key this build was configured with (both empty unless set at build time). */
    [[nodiscard]] static QUrl configuredHost();
    [[nodiscard]] static QString configuredAppKey();

    /** Whether events may leave: a host is set and `analyticsEnabled` (default true) holds. */
    [[nodiscard]] bool isActive() const;

    /** Sends one event; returns whether a request was made. */
    bool track(const QString &eventName);
    /** Sends an event once per installation, guarded by "analytics.once." and its name. */
    bool trackOnce(const QString &eventName);

Q_SIGNALS:
    /** A request finished; `ok` when the service accepted it. */
    void sent(const QString &eventName, bool ok);

private:
    QUrl m_host;
    QString m_appKey;
    QString m_sessionId;
    QNetworkAccessManager *m_network;
};

} // namespace kivo
