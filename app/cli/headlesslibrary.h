#pragma once

#include "core/database.h"
#include "core/librarylock.h"

#include <QString>

#include <memory>

namespace kivo::cli {

/**
 * An existing library opened for a headless command: locked against other Kivo processes and
 * migrated, never created by accident.
 */
class HeadlessLibrary
{
public:
    /** Opens the library at the current root; on failure returns null and one line saying why. */
    static std::unique_ptr<HeadlessLibrary> open(QString *failure);

    [[nodiscard]] const QString &root() const { return m_root; }
    [[nodiscard]] DatabaseQueue &queue() const { return *m_queue; }
    [[nodiscard]] std::shared_ptr<DatabaseQueue> sharedQueue() const { return m_queue; }

private:
    HeadlessLibrary() = default;
    QString m_root;
    std::unique_ptr<LibraryLock> m_lock;
    std::shared_ptr<DatabaseQueue> m_queue;
};

} // namespace kivo::cli
