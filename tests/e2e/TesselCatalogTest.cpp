// The Tessel catalog through regscan: a product directory made here (environment
// script, a listing command printing CR LF lines), named by --set or batch config.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "RegscanRunner.h"
#include "Requests.h"

namespace {

using e2e::expr;
using nlohmann::json;
namespace fs = std::filesystem;

const json kShowAll = {{"showUncommittedPackages", "true"}, {"showRemovedPackages", "true"}};

std::string record(const std::string& name, const std::string& version, const std::string& state) {
    return "PDXMS0164I Package name: " + name + "\r\nPDXMS0165I Package version: " + version +
           "\r\nPDXMS0804I Uninstall data: /opt/" + name + "/uninstall\r\n" +
           "PDXMS0166I Package state: " + state + "\r\nPDXMS0167I --------\r\n\r\n";
}

// A product directory named `name` inside a scratch directory.
class Product {
  public:
    explicit Product(const std::string& name = "product") {
        char pattern[] = "/tmp/regscan-tessel-XXXXXX";
        m_root = ::mkdtemp(pattern);
        m_path = m_root + "/" + name;
        fs::create_directories(m_path + "/bin");
        write("pdx_env.sh", "PDX_HOME=\"$PWD\"; export PDX_HOME\nPATH=\"$PWD/bin:$PATH\"\n");
        write("bin/pdxcat",
              "#!/bin/sh\n[ -n \"$PDX_HOME\" ] || exit 3\n"
              "printf 'PDXMS0001I Catalog listing\\r\\n\\r\\n'\ncat \"$PDX_HOME/listing\"\n");
        ::chmod((m_path + "/bin/pdxcat").c_str(), 0755);
        write("listing", record("base", "1.0", "IC---") + record("beta", "2.0", "I-P--") +
                             record("gone", "3.0", "-C---"));
    }
    ~Product() {
        std::error_code ignored;
        fs::remove_all(m_root, ignored);
    }
    const std::string& path() const { return m_path; }
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(m_path + "/" + name, std::ios::binary) << content;
    }

  private:
    std::string m_root;
    std::string m_path;
};

std::vector<std::string> tesselKeys(const std::string& jsonText) {
    std::vector<std::string> keys;
    const json rows = json::parse(jsonText, nullptr, false);
    EXPECT_TRUE(rows.is_array()) << jsonText;
    for (const json& row : rows) {
        if (row.value("registry", "") == "tessel")
            keys.push_back(row.value("key", ""));
    }
    return keys;
}

TEST(TesselCatalogTest, InventoryListsTheCatalogOnlyWhenConfigured) {
    Product product;
    e2e::RunResult plain = e2e::runRegscan({"inventory", "--format", "json"});
    EXPECT_TRUE(tesselKeys(plain.out).empty());
    EXPECT_EQ(plain.err.find("tessel"), std::string::npos) << plain.err;

    e2e::RunResult listed = e2e::runRegscan(
        {"inventory", "--format", "json", "--set", "pdxDirectory=" + product.path()});
    EXPECT_EQ(tesselKeys(listed.out), (std::vector<std::string>{"base.1.0"})) << listed.err;
    for (const json& row : json::parse(listed.out)) {
        if (row["registry"] != "tessel")
            continue;
        EXPECT_EQ(row, json::parse(R"({"registry":"tessel","key":"base.1.0","name":"base",
            "version":"1.0","vendor":"","installDir":"","description":"",
            "uninstData":"/opt/base/uninstall","isInstalled":"true","isCommitted":"true",
            "backupState":"","rebootRequired":"false","isDiscovered":"false","isHidden":"false",
            "errorState":""})"));
    }

    e2e::RunResult all = e2e::runRegscan(
        {"inventory", "--format", "json", "--set", "pdxDirectory=" + product.path(), "--set",
         "showUncommittedPackages=yes", "--set", "showRemovedPackages=true"});
    EXPECT_EQ(tesselKeys(all.out), (std::vector<std::string>{"base.1.0", "beta.2.0", "gone.3.0"}));

    e2e::RunResult table =
        e2e::runRegscan({"inventory", "--set", "pdxDirectory=" + product.path()});
    EXPECT_NE(table.out.find("tessel    base.1.0"), std::string::npos) << table.out;

    e2e::RunResult broken = e2e::runRegscan({"inventory", "--set", "pdxDirectory=/nonexistent"});
    EXPECT_NE(broken.err.find("tessel: cannot list packages (-13111 "
                              "REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST)"),
              std::string::npos)
        << broken.err;

    e2e::RunResult help = e2e::runRegscan({"inventory", "--help"});
    EXPECT_NE(help.out.find("--set pdxDirectory=DIR"), std::string::npos);
}

TEST(TesselCatalogTest, BatchConfigurationAndExpressions) {
    Product product("dir with 'quotes'; and spaces");
    e2e::RunOptions options;
    const json list = expr("TesselCatalogList"), all = expr("TesselCatalogList", kShowAll);
    const std::vector<json> requests = {
        list,
        {{"config", {{"pdxDirectory", product.path()}}}},
        list,
        all,
        expr("TesselCatalogExists", {{"code", "beta.2.0"}}),
        expr("TesselCatalogExists", {{"code", "beta.2.0"}, {"showUncommittedPackages", "true"}}),
        expr("TesselCatalogInfo", {{"code", "gone.3.0"}, {"field", "isCommitted"}}),
        expr("TesselCatalogInfo",
             {{"code", "gone.3.0"}, {"field", "isInstalled"}, {"showRemovedPackages", "true"}}),
        {{"config", {{"showRemovedPackages", "TRUE"}}}},
        expr("TesselCatalogList", {{"filter", "g*"}})};
    const std::vector<std::string> expected = {
        // Read once, before the directory was configured: the failure is kept.
        R"({"code":-13111,"result":[]})",
        R"({"code":0})",
        R"({"code":-13111,"result":[]})",
        R"({"code":-13111,"result":[]})",
        R"({"code":-13111,"result":""})",
        R"({"code":-13111,"result":""})",
        R"({"code":-13100,"result":""})",
        R"({"code":-13100,"result":""})",
        R"({"code":0})",
        R"({"code":-13111,"result":[]})"};
    for (const json& request : requests)
        options.input += request.dump() + "\n";
    e2e::RunResult run = e2e::runRegscan({"batch"}, options);
    EXPECT_EQ(e2e::lines(run.out), expected) << run.err;

    // Configured first: the directory's odd name is only the working directory.
    options.input.clear();
    for (std::size_t i = 1; i < requests.size(); ++i)
        options.input += requests[i].dump() + "\n";
    run = e2e::runRegscan({"batch"}, options);
    EXPECT_EQ(e2e::lines(run.out),
              (std::vector<std::string>{
                  R"({"code":0})", R"({"code":0,"result":["base.1.0"]})",
                  R"({"code":0,"result":["base.1.0","beta.2.0","gone.3.0"]})",
                  R"({"code":0,"result":"FALSE"})", R"({"code":0,"result":"TRUE"})",
                  R"({"code":-13100,"result":""})", R"({"code":0,"result":"false"})",
                  R"({"code":0})", R"({"code":0,"result":["gone.3.0"]})"}))
        << run.err;
}

TEST(TesselCatalogTest, TraceShowsTheCommandAndTheEnvironment) {
    Product product;
    char pattern[] = "/tmp/regscan-tessel-trace-XXXXXX";
    const std::string dir = ::mkdtemp(pattern);
    const std::string traceFile = dir + "/trace.log";
    e2e::RunOptions options;
    options.environment["TESSEL_E2E_MARK"] = "marked";
    e2e::RunResult run =
        e2e::runRegscan({"--trace", "3", "--trace-file", traceFile, "--set",
                         "pdxDirectory=" + product.path(), "eval", "TesselCatalogList"},
                        options);
    EXPECT_EQ(run.out, "base.1.0\n") << run.err;
    const std::string trace = e2e::readFile(traceFile);
    EXPECT_NE(trace.find("[TesselHandler::runCommand(const String &)] Preparing process "
                         "environment for command /bin/sh -c '. ./pdx_env.sh ; pdxcat -p'\n"),
              std::string::npos)
        << trace;
    EXPECT_NE(trace.find("\n\tTESSEL_E2E_MARK=marked\n"), std::string::npos);
    std::error_code ignored;
    fs::remove_all(dir, ignored);
}

}  // namespace
