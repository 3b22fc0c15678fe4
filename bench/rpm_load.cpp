// Loads the rpm provider from the rpm database that the caller's environment names
// (HOME with its ~/.rpmmacros) and reports the package count and the time taken.
//
//     rpm_load [RUNS]              load RUNS times (default 1), a new provider each time
//     rpm_load --exec-only [RUNS]  only run the command into a buffer (no parsing)
//     rpm_load --command           print the command line the provider runs
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "cross/rpm/LegacyRpmDataProvider.h"
#include "cross/rpm/LegacyRpmUtil.h"

namespace {

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "--command") == 0) {
        std::fputs(RegPlugin::LegacyRpmDataProvider::queryCommand(), stdout);
        return 0;
    }
    const bool execOnly = argc > 1 && std::strcmp(argv[1], "--exec-only") == 0;
    const int runs = argc > (execOnly ? 2 : 1) ? std::atoi(argv[execOnly ? 2 : 1]) : 1;
    if (runs < 1) {
        std::fprintf(stderr, "usage: %s [--exec-only] [RUNS] | --command\n", argv[0]);
        return 2;
    }
    std::vector<double> loads;
    std::vector<double> destructions;
    long count = 0;
    for (int run = 0; run < runs; ++run) {
        TErrorCode result;
        auto start = std::chrono::steady_clock::now();
        if (execOnly) {
            RegPlugin::MemoryBuffer buffer(16384, 4096);
            std::size_t length = 0;
            result = RegPlugin::LegacyRpmUtil::execCommand(
                RegPlugin::LegacyRpmDataProvider::queryCommand(), buffer, length);
            count = static_cast<long>(length);
            loads.push_back(secondsSince(start));
        } else {
            auto provider = std::make_unique<RegPlugin::LegacyRpmDataProvider>();
            result = provider->load();
            count = provider->size();
            loads.push_back(secondsSince(start));
            if (run + 1 == runs) {
                // Like the plug-in's providers, the last one lives as long as the
                // process: its destruction is no part of a load.
                static_cast<void>(provider.release());
            } else {
                start = std::chrono::steady_clock::now();
                provider.reset();
                destructions.push_back(secondsSince(start));
            }
        }
        if (result != 0) {
            std::fprintf(stderr, "load failed: %d\n", static_cast<int>(result));
            return 1;
        }
    }
    rusage self{};
    rusage children{};
    getrusage(RUSAGE_SELF, &self);
    getrusage(RUSAGE_CHILDREN, &children);
    std::printf(
        "%s %ld, runs %d, load median %.3f s, destruction median %.3f s, "
        "peak RSS %ld KiB (rpm %ld KiB)\n",
        execOnly ? "bytes" : "packages", count, runs, median(loads),
        destructions.empty() ? 0.0 : median(destructions), self.ru_maxrss, children.ru_maxrss);
    return 0;
}
