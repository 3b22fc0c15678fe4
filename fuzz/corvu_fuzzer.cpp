// The Corvu provider's load on an arbitrary installed.xml: the chain's first two
// links are fixed files in a private temporary directory, the input is the third;
// then the provider's walk of the tree into packages.
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "FuzzSupport.h"
#include "cross/corvu/CorvuDataProvider.h"

namespace {

std::string g_dir;

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    if (!out) {
        std::perror(path.c_str());
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::traceEverythingToNowhere();
    char pattern[] = "/tmp/corvu-fuzz-XXXXXX";
    if (mkdtemp(pattern) == nullptr) {
        std::perror("mkdtemp");
        std::abort();
    }
    g_dir = pattern;
    const std::string config = g_dir + "/eclipse/configuration";
    mkdir((g_dir + "/eclipse").c_str(), 0700);
    mkdir(config.c_str(), 0700);
    writeFile(g_dir + "/Corvu.dat", "location=" + g_dir + "\n");
    writeFile(config + "/config.ini", "cic.appDataLocation=" + g_dir + "\n");
    // Left behind when the fuzzer stops: the files are small and the name is unique.
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const std::wstring registry = std::wstring(g_dir.begin(), g_dir.end()) + L"/Corvu.dat";
    writeFile(g_dir + "/installed.xml", std::string(reinterpret_cast<const char*>(data), size));
    RegPlugin::CorvuDataProvider provider(registry.c_str());
    // The first query follows the chain and loads the registry.
    fuzz::walkPackages(provider);
    return 0;
}
