// The inventory as a software bill of materials: CycloneDX 1.5 JSON and SPDX 2.3 JSON.
#ifndef REGSCAN_SBOM_H
#define REGSCAN_SBOM_H

#include <ostream>
#include <string>
#include <vector>

#include "Inventory.h"

namespace regscan {

struct SbomSettings {
    std::string timestamp;  // empty: now
    std::string serial;     // empty: a random one
};

void writeCycloneDx(std::ostream& out, const std::vector<InventoryRecord>& records,
                    const SbomSettings& settings);
void writeSpdx(std::ostream& out, const std::vector<InventoryRecord>& records,
               const SbomSettings& settings);

}  // namespace regscan

#endif
