#include "ingest/capture/capturecardhost.h"

namespace kivo {

CaptureCardHost::~CaptureCardHost() = default;

} // namespace kivo
