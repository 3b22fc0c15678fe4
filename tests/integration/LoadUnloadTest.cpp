// A host that loads and unloads the plug-in many times, with queries in between,
// must not lose descriptors or memory to it.
#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "PluginSDK/Plugin.h"
#include "PluginSDK/PluginResult.h"
#include "PluginSDK/ScalarExpression.h"
#include "PluginSDK/StringVector.h"
#include "PluginSDK/UnknownSoftwareRepository.h"
#include "PluginSDK/VectorExpression.h"

namespace {

int openDescriptors() {
    int count = 0;
    if (DIR* dir = opendir("/proc/self/fd")) {
        while (readdir(dir) != nullptr)
            ++count;
        closedir(dir);
    }
    return count;
}

long residentKiB() {
    std::ifstream statm("/proc/self/statm");
    long size = 0, resident = 0;
    statm >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

// One host session: load, configure, evaluate a list, a pattern query and the
// unknown-software list, then tear everything down and unload.
void session() {
    void* library = dlopen(REGSCAN_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto create = reinterpret_cast<PluginSDK::CreatePluginFunction>(dlsym(library, "createPlugin"));
    auto destroy =
        reinterpret_cast<PluginSDK::DestroyPluginFunction>(dlsym(library, "destroyPlugin"));
    ASSERT_TRUE(create != nullptr && destroy != nullptr);
    PluginSDK::Plugin* plugin = create();
    plugin->setProperty(L"listUnmatchedSoftware", PLUGIN_RESULT_TRUE);
    EXPECT_EQ(plugin->initializePlugin(), 0);

    PluginSDK::Expression* list = nullptr;
    ASSERT_EQ(plugin->createExpression(L"DpkgProductList", &list), 0);
    PluginSDK::StringVector keys;
    EXPECT_EQ(dynamic_cast<PluginSDK::VectorExpression*>(list)->getVectorResult(keys), 0);
    EXPECT_GT(keys.size(), 0);
    plugin->destroyExpression(list);

    PluginSDK::Expression* match = nullptr;
    ASSERT_EQ(plugin->createExpression(L"PackageInfoMatch", &match), 0);
    match->setProperty(L"vendor", L"*");
    match->setProperty(L"name", L"*");
    match->setProperty(L"version", L"*");
    PluginSDK::String result;
    dynamic_cast<PluginSDK::ScalarExpression*>(match)->getScalarResult(result);
    plugin->destroyExpression(match);

    PluginSDK::UnknownSoftwareRepository* unknown = plugin->getUnknownSoftware();
    EXPECT_EQ(unknown->init(), 0);
    EXPECT_GT(unknown->getSize(), 0);
    delete unknown;

    EXPECT_EQ(plugin->cleanupPlugin(), 0);
    destroy(plugin);
    EXPECT_EQ(dlclose(library), 0);
}

TEST(LoadUnloadTest, DescriptorsAndMemoryStayFlat) {
    for (int i = 0; i < 20; ++i)
        session();  // warm the allocator and the loader's caches
    const int descriptors = openDescriptors();
    const long resident = residentKiB();
    for (int i = 0; i < 1000 && !HasFatalFailure(); ++i)
        session();
    EXPECT_EQ(openDescriptors(), descriptors);
#if defined(__SANITIZE_ADDRESS__)
    // Freed memory sits in the sanitizer's quarantine; leaks are its own check.
    static_cast<void>(resident);
#else
    // A few pages of allocator slack; a leaked registry would be megabytes.
    EXPECT_LT(residentKiB() - resident, 2048) << "resident KiB before: " << resident;
#endif
}

}  // namespace
