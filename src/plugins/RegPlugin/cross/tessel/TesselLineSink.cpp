#include "cross/tessel/TesselLineSink.h"

namespace RegPlugin {

TesselLineSink::~TesselLineSink() = default;

}  // namespace RegPlugin
