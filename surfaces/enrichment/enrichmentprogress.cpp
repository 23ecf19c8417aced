#include "surfaces/enrichment/enrichmentprogress.h"

#include <algorithm>

namespace kivo {

namespace {
constexpr int showEveryMs = 250;
}

EnrichmentProgress::EnrichmentProgress(QObject *parent)
    : QObject(parent)
{
    m_showLater.setSingleShot(true);
    connect(&m_showLater, &QTimer::timeout, this, &EnrichmentProgress::show);
}

void EnrichmentProgress::setPendingCount(int count)
{
    m_latestCount = std::max(count, 0);
    const bool startsOrEnds = (m_latestCount == 0) != (m_pendingCount == 0);
    if (startsOrEnds || !m_sinceShown.isValid() || m_sinceShown.elapsed() >= showEveryMs) {
        show();
        return;
    }
    if (!m_showLater.isActive())
        m_showLater.start(int(showEveryMs - m_sinceShown.elapsed()));
}

void EnrichmentProgress::show()
{
    m_showLater.stop();
    m_sinceShown.start();
    if (m_latestCount == m_pendingCount)
        return;
    m_pendingCount = m_latestCount;
    Q_EMIT pendingCountChanged();
}

} // namespace kivo
