#include "cross/package/PackageInfoEqual.h"

#include <gtest/gtest.h>

#include "CrossFakes.h"
#include "PluginSDK/PluginResult.h"

namespace RegPluginTest {
namespace {

class PackageInfoEqualTest : public ::testing::Test {
  protected:
    void TearDown() override { Factory::cleanup(); }
};

// The rpm database and the ISMP registry of every case, unless a case breaks one.
enum Registries { kBoth, kNativeFails, kNoNative, kNoIsmpFile, kIsmpEnumFails, kNoIsmp };

void setUp(Registries setup) {
    clearFactory();
    if (setup != kNoNative) {
        install(Factory::OS_PROVIDER,
                {{L"bash-5.1-2-x86_64", L"bash", L"5.1.2", L"Acme"},
                 {L"anon-1-1-noarch", L"", L"1.1", L"Acme"},
                 {L"blank-1-1-noarch", L" blank ", L"  ", L"\tAcme "},
                 {L"novendor-1-1-noarch", L"novendor", L"1.1", nullptr}},
                L"RPM", setup == kNativeFails ? REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST : 0);
    }
    if (setup != kNoIsmp) {
        RowProvider* ismp = install(Factory::ISMP_PROVIDER,
                                    {{L"tool@1.0", L"Tool", L"1.0", L"Acme"},
                                     {L"bash-5.1-2-x86_64", L"bash", L"5.1.2", L"Other"},
                                     {L"twice@1.0", L"Twice", L"1.0", L"Acme"},
                                     {L"twice@2.0", L"Twice", L"2.0", L"Acme"},
                                     {L"bare", L"Bare", L"", L""},
                                     {L"a@b@c", L"Ab", L"c", L""},
                                     {L"broken@1", L"Broken", nullptr, L"Acme"}},
                                    L"ISMP");
        if (setup == kNoIsmpFile)
            ismp->enumResult = REG_PLUGIN_ERROR_NO_VALID_ISMP_REGISTRY_FILE;
        if (setup == kIsmpEnumFails)
            ismp->enumResult = REG_PLUGIN_ERROR_PARSING_ISMP_REGISTRY;
    }
}

TErrorCode evaluate(const wchar_t* code, const wchar_t* value, const wchar_t* provider,
                    PluginSDK::String& result) {
    RegPlugin::PackageInfoEqual expression;
    expression.setProperty(L"code", code);
    expression.setProperty(L"value", value);
    expression.setProperty(L"provider", provider);
    return expression.getScalarResult(result);
}

TEST_F(PackageInfoEqualTest, AnswersAndCodes) {
    const struct {
        Registries setup;
        const wchar_t *code, *value, *provider;
        TErrorCode expected;
        bool found;
        const char* traceLine;  // a line that must be written, or null
    } cases[] = {
        // Properties: "provider" is checked last and wins.
        {kBoth, nullptr, L"x", nullptr, REG_PLUGIN_ERROR_UNSPECIFIED_PROVIDER, false,
         "cannot retrieve \"provider\" property"},
        {kBoth, nullptr, L"x", L"os", REG_PLUGIN_ERROR_UNSPECIFIED_CODE, false,
         "cannot retrieve \"code\" property"},
        {kBoth, L"bash", nullptr, L"os", REG_PLUGIN_ERROR_UNSPECIFIED_VALUE, false,
         "cannot retrieve \"value\" property"},
        {kBoth, L"bash", L"x", L"ANY", REG_PLUGIN_ERROR_INVALID_PROVIDER, false,
         "\"provider\" property is invalid:ANY"},
        {kBoth, nullptr, nullptr, L"rpm", REG_PLUGIN_ERROR_INVALID_PROVIDER, false,
         "invalid properties"},
        // The native registry.
        {kBoth, L"bash-5.1-2-x86_64", L"bash 5.1.2 Acme", L"os", 0, true,
         "processing completed with success, checking value: bash 5.1.2 Acme against bash "
         "5.1.2 Acme"},
        {kBoth, L"bash-5.1-2-x86_64", L"bash 5.1.2 acme", L"os", 0, false,
         "no match found for given package"},
        {kBoth, L"anon-1-1-noarch", L" 1.1 Acme", L"os", 0, true, nullptr},
        {kBoth, L"blank-1-1-noarch", L"blank Acme", L"os", 0, true, nullptr},
        // An absent package is compared as the empty description.
        {kBoth, L"zsh", L"", L"os", 0, true, "package NOT found in this registry"},
        {kBoth, L"zsh", L"zsh", L"os", 0, false, nullptr},
        {kBoth, L"novendor-1-1-noarch", L"novendor 1.1", L"os", REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND,
         false, "cannot retrieve property \"vendor\""},
        {kNativeFails, L"bash-5.1-2-x86_64", L"bash 5.1.2 Acme", L"os",
         REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST, false, "processing error"},
        {kNoNative, L"bash-5.1-2-x86_64", L"bash 5.1.2 Acme", L"os",
         REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER, false, "cannot access OS provider"},
        // The ISMP registry: the identifier is the key before its last "@".
        {kBoth, L"tool", L"Tool 1.0 Acme", L"ismp", 0, true, "matching item found"},
        {kBoth, L"tool@1.0", L"Tool 1.0 Acme", L"ismp", 0, false, nullptr},
        {kBoth, L"bare", L"Bare", L"ismp", 0, true, nullptr},
        {kBoth, L"a@b", L"Ab c", L"ismp", 0, true, nullptr},
        // One description for all candidates: the second is compared with the first
        // one's text in front of its own.
        {kBoth, L"twice", L"Twice 2.0 Acme", L"ismp", 0, false, "no matching item found so far"},
        {kBoth, L"twice", L"Twice 1.0 AcmeTwice 2.0 Acme", L"ismp", 0, true, nullptr},
        {kBoth, L"broken", L"Broken", L"ismp", REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND, false,
         "processing aborted, existing..."},
        {kNoIsmpFile, L"tool", L"Tool 1.0 Acme", L"ismp", 0, false, nullptr},
        {kIsmpEnumFails, L"tool", L"Tool 1.0 Acme", L"ismp", REG_PLUGIN_ERROR_PARSING_ISMP_REGISTRY,
         false, "cannot get list of packages"},
        {kNoIsmp, L"tool", L"Tool 1.0 Acme", L"ismp", REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER, false,
         "cannot access ISMP provider"},
        // Both, the native registry first; an ISMP lookup replaces its error.
        {kBoth, L"bash-5.1-2-x86_64", L"bash 5.1.2 Other", L"any", 0, true, nullptr},
        {kNativeFails, L"tool", L"Tool 1.0 Acme", L"any", 0, true,
         "error looking up package in native registry"},
        {kNativeFails, L"zsh", L"zsh", L"any", 0, false, nullptr},
        {kNoIsmp, L"zsh", L"zsh", L"any", REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER, false,
         "error looking up package in ISMP registry"},
    };
    for (const auto& c : cases) {
        const std::string label =
            PluginSDK::String(c.code).toUtf8() + "|" + PluginSDK::String(c.value).toUtf8() + "|" +
            PluginSDK::String(c.provider).toUtf8() + " setup " + std::to_string(c.setup);
        setUp(c.setup);
        TraceCapture trace;
        PluginSDK::String result(L"old");
        EXPECT_EQ(evaluate(c.code, c.value, c.provider, result), c.expected) << label;
        EXPECT_EQ(result, c.found ? PLUGIN_RESULT_TRUE : PLUGIN_RESULT_FALSE) << label;
        if (c.traceLine != nullptr) {
            EXPECT_TRUE(trace.sink().contains(c.traceLine)) << label << ": " << c.traceLine;
        }
    }
}

TEST_F(PackageInfoEqualTest, NativeMatchLeavesTheIsmpRegistryUnread) {
    setUp(kBoth);
    PluginSDK::String result;
    EXPECT_EQ(evaluate(L"bash-5.1-2-x86_64", L"bash 5.1.2 Acme", L"any", result), 0);
    EXPECT_EQ(result, PLUGIN_RESULT_TRUE);
    EXPECT_EQ(
        static_cast<RowProvider*>(Factory::getDataProvider(Factory::ISMP_PROVIDER))->loadCalls, 0);
}

}  // namespace
}  // namespace RegPluginTest
