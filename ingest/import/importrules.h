#pragma once

#include "core/records.h"

#include <QString>
#include <QUrl>

#include <optional>

namespace kivo {

/**
 * The import pipeline's decisions that need nothing but their input: the kind of a file by its
 * name, which titles are junk, how a page title and a host become a link's title, and where an
 * import goes when the user didn't aim it at a collection. Kept pure so each rule is a table of
 * cases in the tests.
 */
namespace ImportRules {

/**
 * The kind of a file from its extension alone (the bytes are not read): a picture type is
 * "image", video and audio are "video", plain text (source code too) is "text", and anything
 * else, or a name with no known extension, is "file".
 */
[[nodiscard]] ItemKind kindForFileName(const QString &fileName);

/**
 * Whether a title says nothing and may be replaced: absent or blank; a camera or screenshot name
 * ("IMG 2041", "Screenshot 2024..."); one word holding a digit ("IMG_1234"); or one word that is
 * a file name of a picture, video or PDF ("holiday.jpeg").
 */
[[nodiscard]] bool isJunkTitle(const std::optional<QString> &title);

/** The host with every "www." taken out; the whole address when it has no host. */
[[nodiscard]] QString hostTitle(const QUrl &address);

/** The name of the site at this host ("GitHub" for gist.github.com); empty without a host. */
[[nodiscard]] QString siteName(const QString &host);

/**
 * The title kept for a link from its page's title: a leading counter such as "(3) " dropped, the
 * site's own name cut from the end, then "Site - title" in at most 70 characters. Nothing for a
 * blank title.
 */
[[nodiscard]] std::optional<QString> linkTitle(const std::optional<QString> &rawTitle, const QUrl &pageAddress);

/** The title of a text item without one: its first 60 characters, as they come. */
[[nodiscard]] QString textTitle(const QString &text);

/** The values of `captureDestination`, in their order. */
enum class CaptureDestination { inbox, picker, automatic };
[[nodiscard]] CaptureDestination captureDestinationFromRaw(const QString &raw);

/**
 * Where an import goes when the user didn't aim it: an explicit collection wins; otherwise, with
 * the automatic destination, the collection open in the window; in every other case the inbox.
 */
[[nodiscard]] std::optional<QString> destination(const std::optional<QString> &explicitCollectionId,
    CaptureDestination setting, const std::optional<QString> &openCollectionId, const std::optional<QString> &inboxId);

} // namespace ImportRules
} // namespace kivo
