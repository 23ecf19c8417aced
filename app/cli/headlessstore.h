#pragma once

#include "app/cli/headlesslibrary.h"
#include "core/appsettings.h"
#include "core/store.h"

#include <QString>

#include <memory>

namespace kivo::cli {

/**
 * The window's model over a headless command's library: the same Store, with the user's settings,
 * so a command lists and changes exactly what the window would. Collections are loaded; rows are
 * read only when a command asks for them.
 */
class HeadlessStore
{
public:
    /** Opens the library and loads its collections; on failure returns null and one line saying why. */
    static std::unique_ptr<HeadlessStore> open(QString *failure);

    [[nodiscard]] Store &store() const { return *m_store; }
    [[nodiscard]] AppSettings &settings() const { return *m_settings; }

    /** The item with this id, trashed ones too; sets `failure` to "no item with id ..." when there is none. */
    [[nodiscard]] std::optional<LibraryItem> item(const QString &id, QString *failure) const;
    /** The live collection (or the inbox) with this id; "no collection with id ..." when there is none. */
    [[nodiscard]] std::optional<LibraryCollection> collection(const QString &id, QString *failure) const;

private:
    HeadlessStore() = default;
    std::unique_ptr<HeadlessLibrary> m_library;
    std::unique_ptr<AppSettings> m_settings;
    std::unique_ptr<Store> m_store;
};

} // namespace kivo::cli
