// The Tessel catalog's listing parser on arbitrary command output, then every
// package through the state criteria under the four flag combinations. The same
// output arriving in pieces, as it does while the listing command runs (pieces of
// 1 to 64 bytes, after the first byte), must give the same packages.
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "FuzzSupport.h"
#include "base/ByteBuffer.h"
#include "base/String.h"
#include "cross/tessel/TesselDataProvider.h"
#include "cross/tessel/TesselPackage.h"

namespace {

using Catalog = fuzz::Parsed<RegPlugin::TesselDataProvider>;

// The ids the factory gives the provider.
#define CATALOG_IDS \
    String(L"PDXMS0164I"), String(L"PDXMS0165I"), String(L"PDXMS0804I"), String(L"PDXMS0166I")

// Every package of both, in order, with every field equal.
bool sameCatalogs(Catalog& left, Catalog& right) {
    RegPlugin::RegistryPackage* a = left.getFirst();
    RegPlugin::RegistryPackage* b = right.getFirst();
    for (; a != nullptr && b != nullptr; a = left.getNext(), b = right.getNext()) {
        if (a->key != b->key) {
            return false;
        }
        for (int field = 0; field < RegPlugin::TesselPackage::FIELD_COUNT; ++field) {
            const auto& name = RegPlugin::TesselPackage::fieldName(
                static_cast<RegPlugin::TesselPackage::Field>(field));
            PluginSDK::String x;
            PluginSDK::String y;
            if (a->getProperty(name, x) != b->getProperty(name, y) || x != y) {
                return false;
            }
        }
    }
    return a == nullptr && b == nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::traceEverythingToNowhere();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Catalog whole(CATALOG_IDS);
    whole.parseListing(reinterpret_cast<const char*>(data), size);
    whole.markLoaded();
    fuzz::walkPackages(whole);
    for (RegPlugin::RegistryPackage* package = whole.getFirst(); package != nullptr;
         package = whole.getNext()) {
        for (int flags = 0; flags < 4; ++flags) {
            bool matches = false;
            whole.checkCriteria(package, &matches, (flags & 1) != 0, (flags & 2) != 0);
        }
    }

    if (size > 0) {
        const std::size_t step = 1 + data[0] % 64;
        std::vector<std::size_t> pieceEnds;
        for (std::size_t end = step; end < size; end += step) {
            pieceEnds.push_back(end);
        }
        ByteBuffer output;
        output.append(reinterpret_cast<const char*>(data), size);
        Catalog pieces(CATALOG_IDS);
        pieces.parseListing(std::move(output), pieceEnds);
        if (!sameCatalogs(whole, pieces)) {
            __builtin_trap();
        }
    }
    return 0;
}
