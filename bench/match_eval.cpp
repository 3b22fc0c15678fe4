// Rule evaluation: a catalog of PackageInfoMatch signatures over an rpm database, an
// ISMP registry and a dpkg status file, against a plain loop applying the same
// compiled patterns to the same (vendor, name, version) triples held in a vector.
//
//     match_eval VPD_FILE DPKG_STATUS [SIGNATURES [RUNS [CATALOG_OUT]]]
//
// The rpm database is the one the environment names (HOME with its ~/.rpmmacros).
// Loads are done before the clock starts; both loops count the package checks
// (signatures x packages) and the matches, which must agree. With CATALOG_OUT the
// signatures are also written there as a regscan match catalog, so that the whole
// program can be timed on the same rules.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cwctype>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "PluginSDK/PluginResult.h"
#include "PluginSDK/StringVector.h"
#include "base/GlobFilter.h"
#include "common/RegistryDataProviderFactory.h"
#include "cross/dpkg/DpkgDataProvider.h"
#include "cross/ismp/IsmpDataProvider.h"
#include "cross/package/PackageInfoMatch.h"
#include "cross/rpm/LegacyRpmDataProvider.h"

namespace {

using Factory = RegPlugin::RegistryDataProviderFactory;

struct Triple {
    bool hasAll;  // false: a field cannot be read (dpkg packages have no vendor)
    std::wstring vendor, name, version;
};

struct Signature {
    std::wstring vendor, name, version;
    bool ignoreCase;
};

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Every package of the searched registries as the query reads it, in its order.
std::vector<Triple> collectTriples() {
    std::vector<Triple> triples;
    const Factory::DataProviderClass classes[] = {Factory::OS_PROVIDER, Factory::ISMP_PROVIDER,
                                                  Factory::DPKG_PROVIDER};
    for (Factory::DataProviderClass which : classes) {
        RegPlugin::RegistryDataProvider* provider = Factory::getDataProvider(which);
        PluginSDK::StringVector keys;
        if (provider->enumPackages(RegPlugin::RegistryPackage::ANY, keys) != 0) {
            std::fprintf(stderr, "registry %d cannot be listed\n", static_cast<int>(which));
            std::exit(1);
        }
        for (int i = 0; i < keys.size(); ++i) {
            RegPlugin::RegistryPackage* package = nullptr;
            provider->getPackage(keys[i], &package);
            PluginSDK::String fields[3];
            const wchar_t* names[] = {L"vendor", L"name", L"version"};
            Triple triple{true, {}, {}, {}};
            for (int f = 0; f < 3; ++f) {
                triple.hasAll = triple.hasAll && package->getProperty(names[f], fields[f]) == 0;
            }
            triple.vendor = fields[0].c_str();
            triple.name = fields[1].c_str();
            triple.version = fields[2].c_str();
            triples.push_back(std::move(triple));
        }
    }
    return triples;
}

// A realistic mix: exact names, prefix globs such as "lib*", "*" versions, and a
// third of the signatures folding case.
std::vector<Signature> makeSignatures(const std::vector<Triple>& triples, int count) {
    std::vector<const Triple*> known;
    for (const Triple& triple : triples) {
        if (triple.hasAll) {
            known.push_back(&triple);
        }
    }
    std::mt19937 random(42);
    std::vector<Signature> signatures;
    for (int i = 0; i < count; ++i) {
        const Triple& t = *known[random() % known.size()];
        Signature s{t.vendor, t.name, L"*", i % 3 == 0};
        switch (i % 4) {
            case 0:  // one product, any version
                break;
            case 1:  // a family of names
                s.name = t.name.substr(0, 3) + L"*";
                s.vendor = L"*";
                break;
            case 2:  // one version exactly, the vendor by its first word
                s.version = t.version;
                s.vendor = t.vendor.substr(0, t.vendor.find(L' ')) + L"*";
                break;
            default:  // nothing installed has this name
                s.name = L"no-such-" + std::to_wstring(i) + L"*";
                break;
        }
        if (s.ignoreCase) {
            std::transform(s.name.begin(), s.name.end(), s.name.begin(), std::towupper);
        }
        signatures.push_back(std::move(s));
    }
    return signatures;
}

long evaluatePlugin(const std::vector<Signature>& signatures) {
    long found = 0;
    for (const Signature& s : signatures) {
        RegPlugin::PackageInfoMatch expression;
        expression.setProperty(L"vendor", s.vendor.c_str());
        expression.setProperty(L"name", s.name.c_str());
        expression.setProperty(L"version", s.version.c_str());
        if (s.ignoreCase) {
            expression.setProperty(L"ignoreCase", L"true");
        }
        PluginSDK::String result;
        expression.getScalarResult(result);
        found += result == PLUGIN_RESULT_TRUE ? 1 : 0;
    }
    return found;
}

// `text` as a JSON string.
std::string jsonString(const std::wstring& text) {
    std::string out = "\"";
    for (wchar_t c : text) {
        if (c == L'"' || c == L'\\') {
            out += '\\';
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else {
            char escape[16];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c & 0xffff));
            out += escape;
        }
    }
    return out + "\"";
}

void writeCatalog(const char* path, const std::vector<Signature>& signatures) {
    FILE* out = std::fopen(path, "w");
    if (out == nullptr) {
        std::perror(path);
        std::exit(1);
    }
    std::fputs("[\n", out);
    for (std::size_t i = 0; i < signatures.size(); ++i) {
        const Signature& s = signatures[i];
        std::fprintf(out, "{\"id\": \"s%zu\", \"vendor\": %s, \"name\": %s, \"version\": %s%s}%s\n",
                     i, jsonString(s.vendor).c_str(), jsonString(s.name).c_str(),
                     jsonString(s.version).c_str(), s.ignoreCase ? ", \"ignoreCase\": true" : "",
                     i + 1 < signatures.size() ? "," : "");
    }
    std::fputs("]\n", out);
    std::fclose(out);
}

bool passes(const std::wstring& field, const std::wstring& pattern, const GlobFilter& filter) {
    return field == pattern || filter.match(field.c_str()) == 0;
}

long evaluateFloor(const std::vector<Signature>& signatures, const std::vector<Triple>& triples) {
    long found = 0;
    for (const Signature& s : signatures) {
        GlobFilter vendor, name, version;
        vendor.compile(s.vendor.c_str(), s.ignoreCase);
        name.compile(s.name.c_str(), s.ignoreCase);
        version.compile(s.version.c_str(), s.ignoreCase);
        bool any = false;
        for (const Triple& t : triples) {
            if (t.hasAll && passes(t.vendor, s.vendor, vendor) && passes(t.name, s.name, name) &&
                passes(t.version, s.version, version)) {
                any = true;
            }
        }
        found += any ? 1 : 0;
    }
    return found;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s VPD_FILE DPKG_STATUS [SIGNATURES [RUNS [CATALOG_OUT]]]\n",
                     argv[0]);
        return 2;
    }
    const int count = argc > 3 ? std::atoi(argv[3]) : 1000;
    const int runs = argc > 4 ? std::atoi(argv[4]) : 5;
    for (int which = 0; which < 8; ++which) {
        Factory::setDataProvider(static_cast<Factory::DataProviderClass>(which), nullptr);
    }
    Factory::setDataProvider(Factory::OS_PROVIDER, new RegPlugin::LegacyRpmDataProvider());
    Factory::setDataProvider(Factory::ISMP_PROVIDER, new RegPlugin::IsmpDataProvider(argv[1]));
    Factory::setDataProvider(Factory::DPKG_PROVIDER, new RegPlugin::DpkgDataProvider(argv[2]));

    const std::vector<Triple> triples = collectTriples();
    const std::vector<Signature> signatures = makeSignatures(triples, count);
    if (argc > 5) {
        writeCatalog(argv[5], signatures);
    }
    const double checks = static_cast<double>(triples.size()) * signatures.size();

    std::vector<double> plugin, floor;
    long pluginFound = 0, floorFound = 0;
    for (int run = 0; run < runs; ++run) {
        auto start = std::chrono::steady_clock::now();
        pluginFound = evaluatePlugin(signatures);
        plugin.push_back(secondsSince(start));
        start = std::chrono::steady_clock::now();
        floorFound = evaluateFloor(signatures, triples);
        floor.push_back(secondsSince(start));
    }
    if (pluginFound != floorFound) {
        std::fprintf(stderr, "the plug-in recognised %ld signatures, the floor %ld\n", pluginFound,
                     floorFound);
        return 1;
    }
    const double p = median(plugin), f = median(floor);
    std::printf("packages %zu, signatures %zu (%ld recognised), checks %.0f, runs %d\n",
                triples.size(), signatures.size(), pluginFound, checks, runs);
    std::printf("plug-in: %.3f s, %.1f M checks/s\n", p, checks / p / 1e6);
    std::printf("floor:   %.3f s, %.1f M checks/s\n", f, checks / f / 1e6);
    std::printf("plug-in / floor: %.2f (target <= 3, and >= 20 M checks/s)\n", p / f);
    Factory::cleanup();
    return 0;
}
