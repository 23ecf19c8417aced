#pragma once

#include "core/records.h"

#include <QString>

namespace kivo {

/**
 * The SQL test that puts an item (aliased `i`) under one of the sidebar's kind filters. The
 * type counts and the rows of a kind filter share it, so a count always matches what opens.
 */
[[nodiscard]] QString mediaTypePredicate(MediaTypeFilter filter);

/** The seven audio extensions that move a file from Documents to Audio, in their fixed order. */
[[nodiscard]] const QStringList &audioExtensions();

} // namespace kivo
