#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace kivo::ItemTitles {

/**
 * Whether a title says nothing about its item: absent or blank, a camera or screenshot name
 * ("IMG 1234", "Screenshot 2024-05-01", "DSC_0042") or a bare file name ("holiday.png"). Such a
 * title may be replaced by one taken from the item's content.
 */
[[nodiscard]] bool titleLooksGeneric(const std::optional<QString> &title);

/**
 * A title from what was found in a picture: its first line of text when that reads like a title
 * (2 to 8 words, under 61 characters, a letter), else its first one or two tags capitalised and
 * joined with ", "; nothing when neither gives one.
 */
[[nodiscard]] std::optional<QString> titleFromContent(const QStringList &tags, const std::optional<QString> &ocrText);

} // namespace kivo::ItemTitles
