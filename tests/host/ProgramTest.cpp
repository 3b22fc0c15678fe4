// The built regscan program driven end to end with the real plug-in.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace {

using nlohmann::json;

struct Outcome {
    int status;
    std::string out, err, command;
    std::string describe() const {
        return command + " -> " + std::to_string(status) + "\nstdout:\n" + out.substr(0, 2000) +
               "\nstderr:\n" + err.substr(0, 2000);
    }
};

std::string slurp(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// Runs regscan with `args` (no single quotes in them), feeding `input` to its stdin.
Outcome regscan(const std::vector<std::string>& args, const std::string& input = "") {
    const std::string base = ::testing::TempDir() + "regscan-" + std::to_string(getpid());
    std::ofstream(base + ".in", std::ios::binary) << input;
    std::string command = std::string("'") + REGSCAN_PROGRAM_PATH + "'";
    for (const std::string& arg : args) {
        command += " '" + arg + "'";
    }
    int status =
        std::system((command + " <" + base + ".in >" + base + ".out 2>" + base + ".err").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp(base + ".out"),
            slurp(base + ".err"), command};
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        result.push_back(line);
    }
    return result;
}

TEST(ProgramTest, NamesListsTheAnnouncedNamesInOrder) {
    Outcome run = regscan({"names"});
    std::vector<std::string> names = lines(run.out);
    ASSERT_EQ(run.status, 0) << run.describe();
    ASSERT_EQ(names.size(), 25u) << run.out;
    EXPECT_EQ(names.front(), "PackageInfoEqual");
    EXPECT_EQ(names[8], "RpmProductList");
    EXPECT_EQ(names.back(), "OrloProductInfo");
}

TEST(ProgramTest, EvalResultsCodesAndExitStatus) {
    struct Case {
        std::vector<std::string> args;
        int status;
        const char* out;  // exact standard output
        const char* err;  // expected within standard error
    } cases[] = {
        {{"eval", "VoidProductExists"}, 0, "FALSE\n", ""},
        {{"eval", "VoidProductList"}, 0, "", ""},
        {{"eval", "OrloProductExists"}, 3, "", "-10008 ERROR_NO_SUCH_EXPRESSION"},
        {{"eval", "voidproductexists"}, 3, "", "-10008 ERROR_NO_SUCH_EXPRESSION"},
        {{"eval", "RpmProductInfo"}, 3, "", "-13000 REG_PLUGIN_ERROR_UNSPECIFIED_CODE"},
        {{"eval", "X", "novalue"}, 2, "", "usage"},
        {{"--plugin", "/bin/sh", "names"}, 4, "", "cannot load plug-in /bin/sh"},
    };
    for (const Case& c : cases) {
        Outcome run = regscan(c.args);
        EXPECT_EQ(run.status, c.status) << run.describe();
        EXPECT_EQ(run.out, c.out) << run.describe();
        EXPECT_NE(run.err.find(c.err), std::string::npos) << run.describe();
    }
}

TEST(ProgramTest, BatchAnswersEachLineAndExitsOneOnBadLines) {
    Outcome run =
        regscan({"batch"},
                "{\"expression\": \"VoidProductExists\"}\r\n"
                "this is not json\n"
                "{\"expression\": \"VoidProductList\", \"properties\": {\"type\": \"PTF\"}}\n"
                "{\"expression\": \"OrloProductExists\"}\n"
                "{\"names\": true}\n"
                "{\"config\": {\"listUnmatchedSoftware\": \"TRUE\"}}\n"
                "{\"unknown\": true}\n");
    EXPECT_EQ(run.status, 1) << run.describe();
    std::vector<std::string> replies = lines(run.out);
    ASSERT_EQ(replies.size(), 7u) << run.describe();
    const char* expected[] = {
        R"({"code":0,"result":"FALSE"})",   nullptr, R"({"code":-13006,"result":[]})",
        R"({"code":-10008,"result":null})", nullptr, R"({"code":0})"};
    for (int i = 0; i < 6; ++i) {
        if (expected[i] != nullptr) {
            EXPECT_EQ(json::parse(replies[i]), json::parse(expected[i])) << replies[i];
        }
    }
    EXPECT_TRUE(json::parse(replies[1]).contains("error"));
    EXPECT_EQ(json::parse(replies[4])["names"].size(), 25u);
    json unknown = json::parse(replies[6]);
    EXPECT_EQ(unknown["code"], 0) << replies[6];
    EXPECT_EQ(unknown["size"], unknown["packages"].size()) << replies[6].substr(0, 500);

    Outcome good = regscan({"batch"}, "{\"names\": true}\n");
    EXPECT_EQ(good.status, 0) << good.describe();
}

TEST(ProgramTest, RejectedSettingShowsThePluginsWarningWhenTracing) {
    Outcome run = regscan({"--trace", "2", "--set", "showRemovedPackages=maybe", "--set",
                           "showUncommittedPackages=Yes", "eval", "VoidProductExists"});
    EXPECT_EQ(run.status, 0) << run.describe();
    EXPECT_NE(run.err.find("Unexpected plugin property, skipping. plugin=[RegPlugin] "
                           "name=[showRemovedPackages] value=[maybe]"),
              std::string::npos)
        << run.describe();
    // "Yes" reaches the plug-in as the host's true text and is accepted silently.
    EXPECT_EQ(run.err.find("showUncommittedPackages"), std::string::npos) << run.describe();

    Outcome quiet = regscan({"--set", "showRemovedPackages=maybe", "eval", "VoidProductExists"});
    EXPECT_EQ(quiet.err, "") << "no --trace, no trace lines";
}

}  // namespace
