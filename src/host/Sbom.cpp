#include "Sbom.h"

namespace regscan {

// Not written yet.
void writeCycloneDx(std::ostream&, const std::vector<InventoryRecord>&, const SbomSettings&) {}
void writeSpdx(std::ostream&, const std::vector<InventoryRecord>&, const SbomSettings&) {}

}  // namespace regscan
