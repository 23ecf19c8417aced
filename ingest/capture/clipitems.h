#pragma once

#include "core/records.h"
#include "ingest/bridge/bridgemessages.h"
#include "ingest/capture/clipentry.h"

#include <QImage>
#include <QString>
#include <QUrl>

#include <optional>

namespace kivo {

/** How the capture flow reads one clipped thing: its preview, its page, its draft item. */
namespace ClipItems {

/**
 * The picture inside a data address: only one whose part before the first "," begins with
 * "data:image", with base64 behind it. Null when it is not such an address or does not decode.
 */
[[nodiscard]] QImage decodeDataImage(const QString &address);

/** The host of an address, lower-cased, with a leading "www." cut; empty without one. */
[[nodiscard]] QString domainOf(const QString &address);

/** The page a clip came from: `sourceURL`, or else `url`. */
[[nodiscard]] QString pageAddress(const ClipItem &item);

/** For a "page" clip only: its title by the card title rule, its host and its address. */
[[nodiscard]] std::optional<LinkContext> linkContext(const ClipItem &item);

/** The kind the card shows before the import has decided: "link", "video", "text" or "image". */
[[nodiscard]] QString draftKind(const QString &type);

/** An unsaved item for the card to show while the clip is imported: fresh id and times. */
[[nodiscard]] LibraryItem draftItem(const ClipItem &item);

/** `text` as an address when it parses as one with a scheme; else nothing. */
[[nodiscard]] std::optional<QUrl> parsedAddress(const QString &text);

/** An http or https address from which a preview may be fetched. */
[[nodiscard]] bool isWebAddress(const QString &text);

} // namespace ClipItems
} // namespace kivo
