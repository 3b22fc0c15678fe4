// Loads the Tessel catalog provider from a product directory and reports the package
// count and the time taken.
//
//     tessel_load DIR [RUNS]            load RUNS times (default 1), a new provider each time
//     tessel_load --parse FILE [RUNS]   only parse a saved listing (no command)
//     tessel_load --command DIR [RUNS]  only run the listing command and read its output
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "PluginSDK/Configuration.h"
#include "RegPluginConstants.h"
#include "common/RegistryDataProviderFactory.h"
#include "cross/tessel/TesselDataProvider.h"
#include "cross/tessel/TesselHandler.h"

namespace {

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

RegPlugin::TesselDataProvider* newCatalog() {
    return new RegPlugin::TesselDataProvider(String("PDXMS0164I"), String("PDXMS0165I"),
                                             String("PDXMS0804I"), String("PDXMS0166I"));
}

int parseOnly(const char* file, int runs) {
    std::ifstream in(file, std::ios::binary);
    const std::string listing((std::istreambuf_iterator<char>(in)),
                              std::istreambuf_iterator<char>());
    std::vector<double> parses;
    long count = 0;
    for (int run = 0; run < runs; ++run) {
        RegPlugin::TesselDataProvider* catalog = newCatalog();
        // The provider keeps the output it parses; hand it a copy made beforehand.
        ByteBuffer output;
        output.append(listing.data(), listing.size());
        const auto start = std::chrono::steady_clock::now();
        catalog->parseListing(std::move(output));
        parses.push_back(secondsSince(start));
        count = catalog->size();
        if (run + 1 < runs) {
            delete catalog;
        }
    }
    rusage self{};
    getrusage(RUSAGE_SELF, &self);
    std::printf("packages %ld, runs %d, parse median %.3f s, peak RSS %ld KiB\n", count, runs,
                median(parses), self.ru_maxrss);
    std::fflush(stdout);
    std::_Exit(0);
}

int commandOnly(const char* directory, int runs) {
    std::vector<double> times;
    std::size_t bytes = 0;
    for (int run = 0; run < runs; ++run) {
        RegPlugin::TesselHandler handler{String(directory)};
        ByteBuffer output;
        const auto start = std::chrono::steady_clock::now();
        const TErrorCode result = handler.runCommand(String("pdxcat -p"), output);
        times.push_back(secondsSince(start));
        if (result != 0) {
            std::fprintf(stderr, "command failed: %d\n", static_cast<int>(result));
            return 1;
        }
        bytes = output.size();
    }
    std::printf("output %zu bytes, runs %d, command and reading median %.3f s\n", bytes, runs,
                median(times));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 2 && std::strcmp(argv[1], "--parse") == 0) {
        return parseOnly(argv[2], argc > 3 ? std::atoi(argv[3]) : 1);
    }
    if (argc > 2 && std::strcmp(argv[1], "--command") == 0) {
        return commandOnly(argv[2], argc > 3 ? std::atoi(argv[3]) : 1);
    }
    const int runs = argc > 2 ? std::atoi(argv[2]) : 1;
    if (argc < 2 || argc > 3 || runs < 1) {
        std::fprintf(stderr, "usage: %s DIR [RUNS]\n", argv[0]);
        return 2;
    }
    PluginSDK::Configuration* configuration = nullptr;
    PluginSDK::Configuration::get(REG_PLUGIN_NAME, configuration);
    configuration->setProperty(REG_PLUGIN_PROPERTY_PDX_DIRECTORY, PluginSDK::String(argv[1]));

    std::vector<double> loads;
    long count = 0;
    for (int run = 0; run < runs; ++run) {
        // The provider as the factory makes it, loaded through its first question.
        RegPlugin::RegistryDataProviderFactory::cleanup();
        const auto start = std::chrono::steady_clock::now();
        auto* provider = dynamic_cast<RegPlugin::TesselDataProvider*>(
            RegPlugin::RegistryDataProviderFactory::getDataProvider(
                RegPlugin::RegistryDataProviderFactory::TESSEL_PROVIDER));
        bool exists = false;
        const TErrorCode result =
            provider != nullptr ? provider->packageExists(L"pkg-1.2.1.1", exists) : -1;
        loads.push_back(secondsSince(start));
        if (result != 0) {
            std::fprintf(stderr, "load failed: %d\n", static_cast<int>(result));
            return 1;
        }
        count = provider->size();
    }
    rusage self{};
    rusage children{};
    getrusage(RUSAGE_SELF, &self);
    getrusage(RUSAGE_CHILDREN, &children);
    std::printf("packages %ld, runs %d, load median %.3f s, peak RSS %ld KiB (command %ld KiB)\n",
                count, runs, median(loads), self.ru_maxrss, children.ru_maxrss);
    // Like the plug-in's providers, the last one lives as long as the process.
    std::fflush(stdout);
    std::_Exit(0);
}
