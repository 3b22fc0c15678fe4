#include "cross/package/PackageInfoMatch.h"

#include <gtest/gtest.h>

#include "CrossFakes.h"
#include "PluginSDK/PluginResult.h"
#include "base/GlobFilter.h"

namespace RegPluginTest {
namespace {

class PackageInfoMatchTest : public ::testing::Test {
  protected:
    void SetUp() override {
        clearFactory();
        install(Factory::OS_PROVIDER, {{L"bash-5.1-1-x86_64", L"bash", L"5.1.1", L"Acme Corp"},
                                       {L"libfoo-2-1-x86_64", L"libfoo", L"2.1", L"Acme Corp"},
                                       {L"nover-1-1-noarch", L"nover", nullptr, L"Acme Corp"}});
        install(Factory::ISMP_PROVIDER, {{L"tool@1.0", L"Tool", L"1.0", L"[ab]"},
                                         {L"libfoo@2.1", L"libfoo", L"2.1", L"acme corp"}});
        // The same rpm database under its second keyword is never searched.
        install(Factory::RPM_PROVIDER, {{L"bash-5.1-1-x86_64", L"bash", L"5.1.1", L"Acme Corp"}});
        install(Factory::DPKG_PROVIDER, {{L"bash", L"bash", L"5.2-1", nullptr}});
    }
    void TearDown() override { Factory::cleanup(); }

    // Evaluates with the properties given (null: not set).
    static TErrorCode evaluate(const wchar_t* vendor, const wchar_t* name, const wchar_t* version,
                               const wchar_t* ignoreCase, PluginSDK::String& result) {
        RegPlugin::PackageInfoMatch expression;
        expression.setProperty(L"vendor", vendor);
        expression.setProperty(L"name", name);
        expression.setProperty(L"version", version);
        expression.setProperty(L"ignoreCase", ignoreCase);
        return expression.getScalarResult(result);
    }

    static std::string counts() {
        std::string out;
        const std::pair<Factory::DataProviderClass, const wchar_t*> packages[] = {
            {Factory::OS_PROVIDER, L"bash-5.1-1-x86_64"},
            {Factory::OS_PROVIDER, L"libfoo-2-1-x86_64"},
            {Factory::OS_PROVIDER, L"nover-1-1-noarch"},
            {Factory::ISMP_PROVIDER, L"tool@1.0"},
            {Factory::ISMP_PROVIDER, L"libfoo@2.1"},
            {Factory::RPM_PROVIDER, L"bash-5.1-1-x86_64"},
            {Factory::DPKG_PROVIDER, L"bash"}};
        for (const auto& [which, key] : packages)
            out += std::to_string(matchCountOf(which, key));
        return out;
    }
};

TEST_F(PackageInfoMatchTest, MatchesMarkEveryPackageFound) {
    const struct {
        const wchar_t *vendor, *name, *version, *ignoreCase;
        TErrorCode expected;
        bool found;
        const char* counts;  // matchCount of each package of SetUp, in its order
        const char* traceLine;
    } cases[] = {
        {nullptr, nullptr, nullptr, L"maybe", REG_PLUGIN_ERROR_INVALID_IGNORECASE, false, "0000000",
         "Wrong optional ignoreCase attribute. Should be \"true\" or \"false\""},
        {nullptr, L"*", L"*", nullptr, REG_PLUGIN_ERROR_UNSPECIFIED_VENDOR, false, "0000000",
         "cannot retrieve \"vendor\" property"},
        {L"*", nullptr, L"*", nullptr, REG_PLUGIN_ERROR_UNSPECIFIED_NAME, false, "0000000",
         "cannot retrieve \"name\" property"},
        {L"*", L"*", nullptr, L"true", REG_PLUGIN_ERROR_UNSPECIFIED_VERSION, false, "0000000",
         "invalid properties"},
        {L"*", L"*", L"*", L"TRUE", REG_PLUGIN_ERROR_INVALID_IGNORECASE, false, "0000000", nullptr},
        // Compile errors stop the search before it starts.
        {L"[ab", L"*", L"*", nullptr, GlobFilter::GLOB_UNTERMINATED_CLASS, false, "0000000",
         "Wrong regular expression in vendor"},
        {L"*", L"*", L"1\\", nullptr, GlobFilter::GLOB_TRAILING_ESCAPE, false, "0000000",
         "Wrong regular expression in version"},
        // Everything that has all three fields, in every searched registry.
        {L"*", L"*", L"*", nullptr, 0, true, "1101100",
         "Found software: VENDOR [Acme Corp] NAME [bash] VERSION [5.1.1]"},
        {L"*", L"nover", L"*", nullptr, 0, false, "0000000",
         "cant extract all information about package"},
        {L"Acme*", L"lib*", L"2.?", nullptr, 0, true, "0100000", nullptr},
        {L"ACME*", L"LIB*", L"2.?", L"true", 0, true, "0100100", nullptr},
        {L"ACME*", L"LIB*", L"2.?", L"false", 0, false, "0000000", nullptr},
        // A field equal to the pattern's text passes although the pattern does not
        // match it.
        {L"[ab]", L"Tool", L"1.0", nullptr, 0, true, "0001000", nullptr},
        {L"a", L"Tool", L"1.0", nullptr, 0, false, "0000000", nullptr},
        // A pattern's text that only begins the field is no match.
        {L"Acme", L"*", L"*", nullptr, 0, false, "0000000", nullptr},
    };
    for (const auto& c : cases) {
        const std::string label =
            PluginSDK::String(c.vendor).toUtf8() + "|" + PluginSDK::String(c.name).toUtf8() + "|" +
            PluginSDK::String(c.version).toUtf8() + "|" + PluginSDK::String(c.ignoreCase).toUtf8();
        SetUp();
        TraceCapture trace;
        PluginSDK::String result(L"old");
        EXPECT_EQ(evaluate(c.vendor, c.name, c.version, c.ignoreCase, result), c.expected) << label;
        EXPECT_EQ(result, c.found ? PLUGIN_RESULT_TRUE : PLUGIN_RESULT_FALSE) << label;
        EXPECT_EQ(counts(), c.counts) << label;
        if (c.traceLine != nullptr) {
            EXPECT_TRUE(trace.sink().contains(c.traceLine)) << label << ": " << c.traceLine;
        }
    }
}

TEST_F(PackageInfoMatchTest, EveryEvaluationCountsAgain) {
    PluginSDK::String result;
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(evaluate(L"Acme Corp", L"bash", L"5.1.1", nullptr, result), 0);
    EXPECT_EQ(counts(), "3000000");
}

// The fields read once per registry are read again after the registry changed.
TEST_F(PackageInfoMatchTest, SeesPackagesAddedAfterAnEvaluation) {
    PluginSDK::String result;
    EXPECT_EQ(evaluate(L"Late", L"late", L"*", nullptr, result), 0);
    EXPECT_EQ(result, PLUGIN_RESULT_FALSE);
    auto* os = static_cast<RowProvider*>(Factory::getDataProvider(Factory::OS_PROVIDER));
    os->add(new RowPackage({L"late-1-1-noarch", L"late", L"1.1", L"Late"}, L"RPM"));
    EXPECT_EQ(evaluate(L"Late", L"late", L"*", nullptr, result), 0);
    EXPECT_EQ(result, PLUGIN_RESULT_TRUE);
    EXPECT_EQ(matchCountOf(Factory::OS_PROVIDER, L"late-1-1-noarch"), 1);
}

TEST_F(PackageInfoMatchTest, UnreadableRegistriesAreSkippedByPosition) {
    install(Factory::OS_PROVIDER, {{L"bash-5.1-1-x86_64", L"bash", L"5.1.1", L"Acme Corp"}}, L"RPM",
            REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
    TraceCapture trace;
    PluginSDK::String result;
    EXPECT_EQ(evaluate(L"*", L"*", L"*", nullptr, result), 0);
    EXPECT_EQ(result, PLUGIN_RESULT_TRUE);
    const std::vector<std::string> failures = trace.sink().messages(1);
    const std::vector<std::string> expected = {"Unable to preload packages ( err = -13111 )",
                                               "enumeration of provider [0] failed",
                                               "cannot access provider [2]",
                                               "cannot access provider [3]",
                                               "cannot access provider [4]",
                                               "cant extract all information about package"};
    EXPECT_EQ(failures, expected);
    const std::vector<std::string> info = trace.sink().messages(3);
    EXPECT_EQ(info.front(), "Provider [0] available, extracting data");
    EXPECT_EQ(counts(), "-1-1-11100");
}

}  // namespace
}  // namespace RegPluginTest
