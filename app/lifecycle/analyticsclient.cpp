#include "app/lifecycle/analyticsclient.h"

#include "core/userdefaults.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QRandomGenerator>
#include <QSysInfo>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

const QString enabledKey = u"analyticsEnabled"_s;
const QString oncePrefix = u"analytics.once."_s;
constexpr int requestTimeoutMs = 10000;

} // namespace

AnalyticsClient::AnalyticsClient(const QUrl &host, const QString &appKey, QNetworkAccessManager *network, QObject *parent)
    : QObject(parent)
    , m_host(host)
    , m_appKey(appKey)
    , m_sessionId(QString::number(QDateTime::currentSecsSinceEpoch()) + QString::number(QRandomGenerator::global()->bounded(100000000)))
    , m_network(network)
{
}

QUrl AnalyticsClient::configuredHost()
{
    return QUrl(QStringLiteral(KIVO_ANALYTICS_HOST));
}

QString AnalyticsClient::configuredAppKey()
{
    return QStringLiteral(KIVO_ANALYTICS_KEY);
}

bool AnalyticsClient::isActive() const
{
    return m_host.isValid() && !m_host.isEmpty() && m_network && UserDefaults().boolValue(enabledKey, true);
}

bool AnalyticsClient::track(const QString &eventName)
{
    if (!isActive())
        return false;
    // The body follows the common open-source event APIs: a list of events with system properties.
    const QJsonObject event{
        {u"timestamp"_s, QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
        {u"sessionId"_s, m_sessionId},
        {u"eventName"_s, eventName},
        {u"systemProps"_s,
         QJsonObject{
             {u"osName"_s, QSysInfo::productType()},
             {u"osVersion"_s, QSysInfo::productVersion()},
             {u"locale"_s, QLocale::system().name()},
             {u"appVersion"_s, QCoreApplication::applicationVersion()},
             {u"appBuildNumber"_s, QStringLiteral(KIVO_BUILD)},
             {u"sdkVersion"_s, u"kivo-qt@1"_s},
             {u"isDebug"_s, false},
         }},
        {u"props"_s, QJsonObject{}},
    };
    QUrl endpoint = m_host;
    QString base = endpoint.path();
    if (!base.endsWith(u'/'))
        base += u'/';
    endpoint.setPath(base + u"api/v0/events"_s);
    QNetworkRequest request(endpoint);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    request.setRawHeader("App-Key", m_appKey.toUtf8());
    request.setTransferTimeout(requestTimeoutMs);
    QNetworkReply *reply = m_network->post(request, QJsonDocument(QJsonArray{event}).toJson(QJsonDocument::Compact));
    connect(reply, &QNetworkReply::finished, this, [this, reply, eventName] {
        reply->deleteLater();
        Q_EMIT sent(eventName, reply->error() == QNetworkReply::NoError);
    });
    return true;
}

bool AnalyticsClient::trackOnce(const QString &eventName)
{
    UserDefaults defaults;
    if (defaults.boolValue(oncePrefix + eventName))
        return false;
    if (!track(eventName))
        return false;
    defaults.setValue(oncePrefix + eventName, true);
    return true;
}

} // namespace kivo
