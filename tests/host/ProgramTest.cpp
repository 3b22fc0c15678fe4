// The built regscan program driven end to end with the real plug-in.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Outcome {
    int status = -1;  // exit status, or 128 + signal
    std::string out;
    std::string err;
};

// Runs regscan with `args`, feeding `input` to its standard input.
Outcome regscan(const std::vector<std::string>& args, const std::string& input = "") {
    int in[2], out[2], err[2];
    if (pipe(in) != 0 || pipe(out) != 0 || pipe(err) != 0) {
        ADD_FAILURE() << "pipe failed";
        return {};
    }
    pid_t pid = fork();
    if (pid == 0) {
        dup2(in[0], 0);
        dup2(out[1], 1);
        dup2(err[1], 2);
        for (int fd : {in[0], in[1], out[0], out[1], err[0], err[1]}) {
            close(fd);
        }
        std::vector<char*> argv{const_cast<char*>(REGSCAN_PROGRAM_PATH)};
        for (const std::string& arg : args) {
            argv.push_back(const_cast<char*>(arg.c_str()));
        }
        argv.push_back(nullptr);
        execv(REGSCAN_PROGRAM_PATH, argv.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    close(err[1]);
    signal(SIGPIPE, SIG_IGN);
    fcntl(in[1], F_SETFL, O_NONBLOCK);
    Outcome run;
    std::size_t written = 0;
    int inFd = in[1];
    if (input.empty()) {
        close(inFd);
        inFd = -1;
    }
    std::string* sinks[] = {&run.out, &run.err};
    int open = 2;
    while (open > 0 || inFd >= 0) {
        pollfd fds[3] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}, {inFd, POLLOUT, 0}};
        if (poll(fds, 3, -1) < 0) {
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd >= 0 && (fds[i].revents & (POLLIN | POLLHUP | POLLERR))) {
                char buffer[65536];
                ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
                if (n > 0) {
                    sinks[i]->append(buffer, static_cast<std::size_t>(n));
                } else {
                    close(fds[i].fd);
                    (i == 0 ? out[0] : err[0]) = -1;
                    --open;
                }
            }
        }
        if (inFd >= 0 && (fds[2].revents & (POLLOUT | POLLERR | POLLHUP))) {
            ssize_t n = write(inFd, input.data() + written, input.size() - written);
            written += n > 0 ? static_cast<std::size_t>(n) : 0;
            if (n < 0 || written == input.size()) {
                close(inFd);
                inFd = -1;
            }
        }
    }
    int status = 0;
    waitpid(pid, &status, 0);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return run;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        result.push_back(line);
    }
    return result;
}

std::string describe(const std::vector<std::string>& args, const Outcome& run) {
    std::string text = "regscan";
    for (const std::string& arg : args) {
        text += " '" + arg + "'";
    }
    return text + " -> " + std::to_string(run.status) + "\nstdout:\n" + run.out.substr(0, 2000) +
           "\nstderr:\n" + run.err.substr(0, 2000);
}

TEST(ProgramTest, NamesListsTheAnnouncedNamesInOrder) {
    Outcome run = regscan({"names"});
    std::vector<std::string> names = lines(run.out);
    ASSERT_EQ(run.status, 0) << describe({"names"}, run);
    ASSERT_EQ(names.size(), 25u) << run.out;
    EXPECT_EQ(names.front(), "PackageInfoEqual");
    EXPECT_EQ(names[8], "RpmProductList");
    EXPECT_EQ(names.back(), "OrloProductInfo");
    EXPECT_EQ(std::count(names.begin(), names.end(), "OrloProductExists"), 0);
}

TEST(ProgramTest, EvalResultsCodesAndExitStatus) {
    struct Case {
        std::vector<std::string> args;
        int status;
        const char* out;  // exact standard output
        const char* err;  // expected within standard error ("" checks nothing)
    } cases[] = {
        {{"eval", "VoidProductExists"}, 0, "FALSE\n", ""},
        {{"eval", "VoidProductInfo", "code=x", "field=name"}, 0, "\n", ""},
        {{"eval", "VoidProductList"}, 0, "", ""},
        {{"eval", "NoSuchExpression"}, 3, "", "-10008 ERROR_NO_SUCH_EXPRESSION"},
        {{"eval", "OrloProductExists"}, 3, "", "-10008 ERROR_NO_SUCH_EXPRESSION"},
        {{"eval", "voidproductexists"}, 3, "", "-10008 ERROR_NO_SUCH_EXPRESSION"},
        {{"eval", "RpmProductInfo"}, 3, "", "-13000 REG_PLUGIN_ERROR_UNSPECIFIED_CODE"},
        {{"eval", "DpkgProductInfo", "code=x"}, 3, "", "-13001 REG_PLUGIN_ERROR_UNSPECIFIED_FIELD"},
        {{"eval", "VoidProductList", "type=PTF"},
         3,
         "",
         "-13006 REG_PLUGIN_ERROR_INVALID_PRODUCT_TYPE"},
        {{"eval"}, 2, "", "usage"},
        {{"eval", "X", "novalue"}, 2, "", "usage"},
        {{"--plugin", "/nonexistent/libRegPlugin.so", "names"}, 4, "", "cannot load plug-in"},
        {{"--plugin", "/bin/sh", "names"}, 4, "", "cannot load plug-in /bin/sh"},
    };
    for (const Case& c : cases) {
        Outcome run = regscan(c.args);
        EXPECT_EQ(run.status, c.status) << describe(c.args, run);
        EXPECT_EQ(run.out, c.out) << describe(c.args, run);
        EXPECT_NE(run.err.find(c.err), std::string::npos) << describe(c.args, run);
    }
}

TEST(ProgramTest, BatchAnswersEachLineAndExitsOneOnBadLines) {
    const std::string input =
        "{\"expression\": \"VoidProductExists\"}\n"
        "this is not json\n"
        "{\"expression\": \"VoidProductList\", \"properties\": {\"type\": \"PTF\"}}\n"
        "{\"expression\": \"OrloProductExists\"}\n"
        "{\"names\": true}\n"
        "{\"config\": {\"listUnmatchedSoftware\": \"TRUE\"}}\n"
        "{\"unknown\": true}\n";
    Outcome run = regscan({"batch"}, input);
    EXPECT_EQ(run.status, 1) << describe({"batch"}, run);
    std::vector<std::string> replies = lines(run.out);
    ASSERT_EQ(replies.size(), 7u) << describe({"batch"}, run);
    using nlohmann::json;
    EXPECT_EQ(json::parse(replies[0]), json::parse(R"({"code":0,"result":"FALSE"})"));
    EXPECT_TRUE(json::parse(replies[1]).contains("error"));
    EXPECT_EQ(json::parse(replies[2]), json::parse(R"({"code":-13006,"result":[]})"));
    EXPECT_EQ(json::parse(replies[3]), json::parse(R"({"code":-10008,"result":null})"));
    EXPECT_EQ(json::parse(replies[4])["names"].size(), 25u);
    EXPECT_EQ(json::parse(replies[5]), json::parse(R"({"code":0})"));
    json unknown = json::parse(replies[6]);
    EXPECT_EQ(unknown["code"], 0) << replies[6];
    EXPECT_EQ(unknown["size"], unknown["packages"].size()) << replies[6].substr(0, 500);

    Outcome good = regscan({"batch"}, "{\"names\": true}\n");
    EXPECT_EQ(good.status, 0) << describe({"batch"}, good);
    Outcome missing = regscan({"batch", "/nonexistent/requests"});
    EXPECT_EQ(missing.status, 2) << describe({"batch", "/nonexistent/requests"}, missing);
}

TEST(ProgramTest, RejectedSettingShowsThePluginsWarningWhenTracing) {
    std::vector<std::string> args = {"--trace", "2",
                                     "--set",   "showRemovedPackages=maybe",
                                     "--set",   "showUncommittedPackages=Yes",
                                     "eval",    "VoidProductExists"};
    Outcome run = regscan(args);
    EXPECT_EQ(run.status, 0) << describe(args, run);
    EXPECT_NE(run.err.find("Unexpected plugin property, skipping. plugin=[RegPlugin] "
                           "name=[showRemovedPackages] value=[maybe]"),
              std::string::npos)
        << describe(args, run);
    // "Yes" reaches the plug-in as the host's true text and is accepted silently.
    EXPECT_EQ(run.err.find("showUncommittedPackages"), std::string::npos) << describe(args, run);

    Outcome quiet = regscan({"--set", "showRemovedPackages=maybe", "eval", "VoidProductExists"});
    EXPECT_EQ(quiet.err, "") << "no --trace, no trace lines";
}

TEST(ProgramTest, VersionNamesBothPrograms) {
    Outcome run = regscan({"--version"});
    EXPECT_EQ(run.status, 0) << describe({"--version"}, run);
    EXPECT_EQ(run.out.rfind("regscan ", 0), 0u) << run.out;
    EXPECT_NE(run.out.find("plug-in RegPlugin 1.1.1.1"), std::string::npos) << run.out;
}

TEST(ProgramTest, InventoryFormatsAgreeAndFailuresAreReportedOnce) {
    Outcome json = regscan({"inventory", "--format", "json"});
    Outcome csv = regscan({"inventory", "--format=csv"});
    Outcome table = regscan({"inventory"});
    std::vector<std::string> failures;
    for (const std::string& line : lines(json.err)) {
        if (line.find(": cannot list packages (") != std::string::npos) {
            failures.push_back(line);
        }
    }
    EXPECT_EQ(json.status, failures.size() == 2 ? 3 : 0) << describe({"inventory"}, json);
    nlohmann::json records = nlohmann::json::parse(json.out, nullptr, false);
    ASSERT_TRUE(records.is_array()) << json.out.substr(0, 500);
    for (const auto& record : records) {
        ASSERT_EQ(record.size(), 7u) << record.dump();
        EXPECT_TRUE(record["registry"] == "rpm" || record["registry"] == "dpkg") << record.dump();
    }
    EXPECT_EQ(csv.status, json.status);
    EXPECT_EQ(table.status, json.status);
    EXPECT_EQ(lines(csv.err), lines(json.err));
    // Descriptions and names may span lines in CSV only inside quotes; the table has
    // exactly one line per record.
    EXPECT_EQ(lines(table.out).size(), records.size() + 1) << table.out.substr(0, 500);
    EXPECT_EQ(csv.out.rfind("registry,key,name,version,vendor,installDir,description\r\n", 0), 0u);
}

}  // namespace
