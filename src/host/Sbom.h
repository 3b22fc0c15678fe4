// The inventory as a software bill of materials: CycloneDX 1.5 JSON and SPDX 2.3 JSON.
//
// Both documents list one component (package) per inventory record, in a stable
// order: registries in the order they were listed, and within a registry by key
// (byte order). Every text is made valid UTF-8 first (a byte that is not part of a
// well-formed sequence becomes U+FFFD), so any record gives a valid document.
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

// Returns the empty string when `settings` can be written as they are, otherwise a
// message for people naming the option at fault. A timestamp must read
// "YYYY-MM-DDThh:mm:ssZ"; a serial is a UUID (hex digits in groups of 8-4-4-4-12),
// optionally preceded by "urn:uuid:", in either case.
std::string checkSbomSettings(const SbomSettings& settings);

// `settings` with the empty members filled in: the current UTC time, a random
// (version 4) UUID. A given serial is reduced to its lower-case UUID.
SbomSettings completeSbomSettings(const SbomSettings& settings);

// The sources of `registries` with the further Info fields the SBOM formats read:
// rpm's "arch". They land in InventoryRecord::extraFields, which only the json format
// shows, so the other formats read them only when an SBOM is wanted.
std::vector<RegistrySource> withSbomFields(std::vector<RegistrySource> registries);

// `text` made valid UTF-8: each undecodable byte becomes U+FFFD.
std::string validUtf8(const std::string& text);

// Percent-encodes `text` (taken as UTF-8) for a package URL component: every byte
// except ASCII letters, digits, ".", "-", "_", "~" and ":" becomes "%XX".
std::string purlEncode(const std::string& text);

// The package URL of `record`, or the empty string when it has no name to give:
// pkg:rpm/NAME@VERSION?arch=ARCH for rpm, pkg:deb/NAME@VERSION for dpkg (its records
// carry no architecture) and pkg:generic/NAME@VERSION?registry=REGISTRY for the
// other registries. A missing version or architecture is left out; a missing name
// is replaced by the key.
std::string packageUrl(const InventoryRecord& record);

// "SPDXRef-" followed by `text` with every character outside [A-Za-z0-9.-] (each
// byte of a multi-byte one) replaced by "-".
std::string spdxId(const std::string& text);

// Write one complete document and a final newline. `settings` are completed with
// completeSbomSettings and must pass checkSbomSettings.
void writeCycloneDx(std::ostream& out, const std::vector<InventoryRecord>& records,
                    const SbomSettings& settings);
void writeSpdx(std::ostream& out, const std::vector<InventoryRecord>& records,
               const SbomSettings& settings);

}  // namespace regscan

#endif
