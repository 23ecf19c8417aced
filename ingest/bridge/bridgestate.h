#pragma once

#include <QMutex>

#include <atomic>
#include <chrono>

namespace kivo {

/** How much the bridge lets its peers hold: open connections, and how long a request may take to arrive. */
struct BridgeLimits {
    /** Open connections at most; at the bound the connection idle the longest is dropped for a new one. */
    int maxConnections = 2048;
    /** A request not fully received this long after its connection opened is dropped unanswered. */
    std::chrono::milliseconds requestTimeout{10000};
    /** An answer the peer does not take in this long (it stopped reading) is abandoned with its connection. */
    std::chrono::milliseconds sendTimeout{5000};
};

/** The little the bridge thread and the application share: the clip session flag and a few counts. */
struct BridgeState {
    mutable QMutex stateLock; // guards clipSessionActive only
    bool clipSessionActive = false;

    std::atomic<int> openConnections{0};
    std::atomic<quint64> accepted{0};
    std::atomic<quint64> refusedPeers{0};
    std::atomic<quint64> evictedIdle{0};
    std::atomic<quint64> timedOut{0};
    std::atomic<quint64> invalidRequests{0};

    [[nodiscard]] bool readClipSessionActive() const
    {
        QMutexLocker lock(&stateLock);
        return clipSessionActive;
    }
};

} // namespace kivo
