#include "cross/package/PackageInfoUnknown.h"

#include <gtest/gtest.h>

#include "CrossFakes.h"
#include "PluginSDK/Configuration.h"
#include "PluginSDK/PluginResult.h"
#include "cross/package/PackageInfoMatch.h"

namespace RegPluginTest {
namespace {

class PackageInfoUnknownTest : public ::testing::Test {
  protected:
    void SetUp() override {
        clearFactory();
        install(Factory::OS_PROVIDER,
                {{L"bash-5-1-x86_64", L"bash", L"5.1", L"Acme", L"/usr/;/etc/bash/"},
                 {L"zsh-5-1-x86_64", L"zsh", L"5.1", L"Acme", L"/usr/"}},
                L"RPM");
        install(Factory::TESSEL_PROVIDER, {}, L"TESSEL", REG_PLUGIN_ERROR_PDX_CLI_UNSPECIFIED);
        install(Factory::DPKG_PROVIDER, {{L"vim", L"vim", L"9.0", nullptr}}, L"DPKG");
        PluginSDK::Configuration::cleanup(L"RegPlugin");
    }
    void TearDown() override {
        PluginSDK::Configuration::cleanup(L"RegPlugin");
        Factory::cleanup();
    }

    static void configure(const wchar_t* listUnmatched) {
        PluginSDK::Configuration* configuration = nullptr;
        PluginSDK::Configuration::get(L"RegPlugin", configuration);
        configuration->setProperty(L"listUnmatchedSoftware", listUnmatched);
    }

    static void match(const wchar_t* name) {
        RegPlugin::PackageInfoMatch expression;
        expression.setProperty(L"vendor", L"*");
        expression.setProperty(L"name", name);
        expression.setProperty(L"version", L"*");
        PluginSDK::String result;
        expression.getScalarResult(result);
    }

    // Each package as provider|vendor|name|version|installDir, walking as a host
    // does; a getter with nothing to give leaves "-".
    static std::vector<std::string> walk(RegPlugin::PackageInfoUnknown& repository) {
        std::vector<std::string> out;
        int steps = 0;
        do {
            PluginSDK::String fields[5] = {L"-", L"-", L"-", L"-", L"-"};
            EXPECT_EQ(repository.getProvider(&fields[0]), 0);
            EXPECT_EQ(repository.getVendor(&fields[1]), 0);
            EXPECT_EQ(repository.getName(&fields[2]), 0);
            EXPECT_EQ(repository.getVersion(&fields[3]), 0);
            EXPECT_EQ(repository.getInstallDir(&fields[4]), 0);
            std::string line;
            for (const PluginSDK::String& field : fields)
                line += (line.empty() ? "" : "|") + field.toUtf8();
            out.push_back(line);
        } while (repository.getNext() == 0 && ++steps < 100);
        return out;
    }
};

TEST_F(PackageInfoUnknownTest, ListsWhatNoMatchRecognised) {
    configure(PLUGIN_RESULT_TRUE);
    RegPlugin::PackageInfoUnknown repository;
    TraceCapture trace;
    EXPECT_EQ(repository.init(), 0);
    EXPECT_EQ(repository.getSize(), 3);
    const std::vector<std::string> all = {"RPM|Acme|bash|5.1|/usr/;/etc/bash/",
                                          "RPM|Acme|zsh|5.1|/usr/", "DPKG|-|vim|9.0|-",
                                          // the end: every getter leaves its string
                                          "-|-|-|-|-"};
    EXPECT_EQ(walk(repository), all);
    EXPECT_EQ(repository.getNext(), PluginSDK::ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(repository.getSize(), 3);
    EXPECT_TRUE(trace.sink().contains("cannot access provider [1]"));
    EXPECT_TRUE(trace.sink().contains("enumeration of provider [4] failed"));

    // A match after init() shows at the next init() only; the recognised package is
    // reported with the retrieval line.
    match(L"zsh");
    EXPECT_EQ(repository.getSize(), 3);
    trace.sink().clear();
    EXPECT_EQ(repository.init(), 0);
    EXPECT_EQ(repository.getSize(), 2);
    EXPECT_EQ(walk(repository), (std::vector<std::string>{"RPM|Acme|bash|5.1|/usr/;/etc/bash/",
                                                          "DPKG|-|vim|9.0|-", "-|-|-|-|-"}));
    EXPECT_EQ(trace.sink().messages(1),
              (std::vector<std::string>{
                  "cant retrieve data abour ptovider: zsh-5-1-x86_64", "cannot access provider [1]",
                  "cannot access provider [2]", "cannot access provider [3]",
                  "program preload previously failed", "enumeration of provider [4] failed"}));
}

TEST_F(PackageInfoUnknownTest, EmptyUnlessSwitchedOn) {
    const struct {
        const wchar_t* setting;  // null: not set
        TErrorCode expected;
        const char* traceLine;
    } cases[] = {
        {nullptr, PluginSDK::ERROR_PROPERTY_NOT_FOUND,
         "Parameter listUnmatchedSoftwaredoes not exists, so skipping"},
        {PLUGIN_RESULT_FALSE, 0, nullptr},
        {L"true", 0, nullptr},
    };
    for (const auto& c : cases) {
        SetUp();
        if (c.setting != nullptr)
            configure(c.setting);
        RegPlugin::PackageInfoUnknown repository;
        TraceCapture trace;
        EXPECT_EQ(repository.init(), c.expected);
        EXPECT_EQ(repository.getSize(), 0);
        EXPECT_EQ(repository.getNext(), PluginSDK::ERROR_NO_MORE_ITEMS);
        PluginSDK::String name(L"kept");
        EXPECT_EQ(repository.getName(&name), 0);
        EXPECT_EQ(name, PluginSDK::String(L"kept"));
        if (c.traceLine != nullptr) {
            EXPECT_TRUE(trace.sink().contains(c.traceLine)) << c.traceLine;
        }
        // Nothing was read.
        EXPECT_EQ(
            static_cast<RowProvider*>(Factory::getDataProvider(Factory::OS_PROVIDER))->loadCalls,
            0);
    }
}

}  // namespace
}  // namespace RegPluginTest
