#pragma once

#include <QLoggingCategory>

namespace kivo {

/** Diagnostics of the media decoders (not the bracketed system log). */
Q_DECLARE_LOGGING_CATEGORY(lcMedia)

} // namespace kivo
