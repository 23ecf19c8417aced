#pragma once

#include "core/backgroundpriority.h"

#include <QFuture>
#include <QPromise>
#include <QThreadPool>

#include <exception>
#include <memory>
#include <utility>

namespace kivo {

/**
 * Runs blocking work on a pool and gives its result as a future. An exception thrown by the work
 * is kept as it is, so `result()` rethrows the original error (an ImportError, a DatabaseError)
 * rather than an opaque wrapper. The pool is one of background workers, so the work runs niced.
 */
template <typename Result, typename Work> QFuture<Result> runOnWorker(QThreadPool *pool, Work work)
{
    auto promise = std::make_shared<QPromise<Result>>();
    promise->start();
    QFuture<Result> future = promise->future();
    pool->start([promise, work = std::move(work)]() mutable {
        lowerCurrentThreadPriority();
        try {
            promise->addResult(work());
        } catch (...) {
            promise->setException(std::current_exception());
        }
        promise->finish();
    });
    return future;
}

} // namespace kivo
