// Batch requests, their replies and shared fixtures for the end-to-end tests.
#ifndef REGSCAN_TESTS_E2E_REQUESTS_H
#define REGSCAN_TESTS_E2E_REQUESTS_H

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "RegscanRunner.h"

namespace e2e {

using nlohmann::json;
using Lines = std::vector<std::string>;

inline const std::string kRpmHome = std::string(REGSCAN_RPMDB_DIR) + "/home";

inline json expr(const char* name, json properties = json::object()) {
    return json{{"expression", name}, {"properties", std::move(properties)}};
}

// "[scope] message" of each plug-in trace line (component 5) of `level` in `err`.
inline Lines traceLines(const std::string& err, int level) {
    Lines out;
    const std::string mark = " L" + std::to_string(level) + " C5 ";
    for (const std::string& line : lines(err)) {
        const std::size_t at = line.find(mark);
        if (at != std::string::npos && line.find(" [", at) != std::string::npos) {
            out.push_back(line.substr(line.find(" [", at) + 1));
        }
    }
    return out;
}

inline bool contains(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

inline std::string fixture(const std::string& name) {
    return readFile(std::string(REGSCAN_SOURCE_DIR) + "/tests/fixtures/" + name);
}

// The InstallAnywhere and Corvu registries at their fixed places.
inline std::map<std::string, std::string> xmlRegistryFiles() {
    return {{"/var/.com.zerog.registry.xml", fixture("anywhere/registry.xml")},
            {"/etc/.kelvo/registry/Corvu.dat", fixture("corvu/Corvu.dat")},
            {"/opt/Kelvo/Corvu/eclipse/configuration/config.ini", fixture("corvu/config.ini")},
            {"/var/kelvo/CorvuData/installed.xml", fixture("corvu/installed.xml")}};
}

// Runs `requests` in one regscan process (`args` ends in "batch"); one reply per
// request, an object even when the line was missing or not JSON.
inline RunResult runBatch(const std::vector<json>& requests, RunOptions options,
                          std::vector<json>& replies, const Lines& args = {"batch"}) {
    for (const json& request : requests)
        options.input += request.dump() + "\n";
    RunResult run = runRegscan(args, options);
    replies.clear();
    for (const std::string& line : lines(run.out))
        replies.push_back(json::parse(line, nullptr, false));
    EXPECT_EQ(replies.size(), requests.size()) << run.out << run.err;
    replies.resize(requests.size());
    for (json& reply : replies)
        if (!reply.is_object())
            reply = json::object();
    return run;
}

// One batch request and its reply: lists compare as sets, a null result is not checked.
struct Case {
    const char* what;
    json request;
    int code;
    json result;
};

inline RunResult expectReplies(const std::vector<Case>& cases, const RunOptions& options,
                               const Lines& args = {"batch"}) {
    std::vector<json> requests, replies;
    for (const Case& c : cases)
        requests.push_back(c.request);
    RunResult run = runBatch(requests, options, replies, args);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(std::string(cases[i].what) + ": " + requests[i].dump() + " -> " +
                     replies[i].dump());
        EXPECT_EQ(replies[i].value("code", 1), cases[i].code);
        json expected = cases[i].result, actual = replies[i].value("result", json());
        if (expected.is_array() && actual.is_array()) {
            std::sort(expected.begin(), expected.end());
            std::sort(actual.begin(), actual.end());
        }
        if (!expected.is_null()) {
            EXPECT_EQ(actual, expected);
        }
    }
    return run;
}

// An `rpm` running `body` (sh), first on the PATH that path() gives; removed with it.
struct FakeRpm {
    explicit FakeRpm(const std::string& body = "exit 1\n") {
        char pattern[] = "/tmp/regscan-fake-rpm-XXXXXX";
        dir = mkdtemp(pattern) != nullptr ? pattern : "/nonexistent";
        std::ofstream(dir + "/rpm") << "#!/bin/sh\n" << body;
        chmod((dir + "/rpm").c_str(), 0755);
    }
    ~FakeRpm() { std::system(("rm -rf " + quote(dir)).c_str()); }
    std::string path() const { return dir + ":" + std::getenv("PATH"); }
    std::string dir;
};

}  // namespace e2e

#endif
