#include "core/media/medialog.h"

namespace kivo {

Q_LOGGING_CATEGORY(lcMedia, "kivo.core.media", QtWarningMsg)

} // namespace kivo
