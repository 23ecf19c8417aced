#include "surfaces/enrichment/enrichmentprogress.h"

#include <algorithm>

namespace kivo {

void EnrichmentProgress::setPendingCount(int count)
{
    count = std::max(count, 0);
    if (count == m_pendingCount)
        return;
    m_pendingCount = count;
    Q_EMIT pendingCountChanged();
}

} // namespace kivo
