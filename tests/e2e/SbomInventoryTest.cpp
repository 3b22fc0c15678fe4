// `regscan inventory --format cyclonedx|spdx` end to end: a small fixed inventory
// against golden files, the registry fixtures and hostile package names validated.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Program.h"
#include "RealComponents.h"
#include "RegscanRunner.h"
#include "SbomValidator.h"

namespace {

using nlohmann::json;

const std::string kRpmHome = std::string(REGSCAN_RPMDB_DIR) + "/home";
const char* const kTimestamp = "2026-11-23T10:00:00Z";
const char* const kSerial = "3e671687-395b-41f5-a30f-a58921a69b79";

// rpm records as the provider's query format prints them: fifteen fields, each
// ended by \v, arrays with elements ended by \a, the record ended by \r. Fields:
// name, version, arch, release, vendor, install time, summary, six dependency
// arrays, directories, distribution.
std::string rpmRecord(const std::string& name, const std::string& version, const std::string& arch,
                      const std::string& release, const std::string& vendor,
                      const std::string& directory) {
    return name + "\\v" + version + "\\v" + arch + "\\v" + release + "\\v" + vendor +
           "\\vMon Jan  1 00:00:00 2024\\vsummary of " + name + "\\v\\v\\v\\v\\v\\v\\v" +
           directory + "\\a\\v\\v\\r";
}

const char* kStatus =
    "Package: zlib1g\nStatus: install ok installed\nVersion: 1:1.2.13.dfsg-1\n"
    "Description: compression library - runtime\n\n"
    "Package: libc6\nStatus: install ok installed\nVersion: 2.36-9+deb12u4\n"
    "Description: GNU C Library: Shared libraries\n";

const char* kVpd =
    "0a1b2c3d|4|2|0|1|0|1=Report Server|Reporting server|1|Example Software Inc.|null|1|"
    "/opt/example/report|1|true|0|0|0|0|_uninst\"-cp\"uninstall.jar\"-run\"uninstaller.bin|"
    "1|0|true|false|en|1|0|1|0\n"
    "0a1b2c3d-f1|4|2|0|1|0|1=Report Server Help|Online help|1|Example Software Inc.|null|1|"
    "/opt/example/report/help|0|0|0|0|0| \n";

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The version of regscan in a document, replaced so the golden files outlive it.
std::string withoutVersion(std::string text) {
    const std::string version = regscan::kRegscanVersion;
    const std::string creator = "regscan-" + version;
    for (std::size_t at = 0; (at = text.find(creator, at)) != std::string::npos;) {
        text.replace(at, creator.size(), "regscan-@VERSION@");
    }
    const std::string tool = "\"version\": \"" + version + "\"";
    std::size_t name = text.find("\"name\": \"regscan\"");
    std::size_t at = name == std::string::npos ? name : text.find(tool, name);
    if (at != std::string::npos) {
        text.replace(at, tool.size(), "\"version\": \"@VERSION@\"");
    }
    return text;
}

class SbomInventoryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        REGSCAN_REQUIRE_COMPONENT(e2e::namespacesAvailable(),
                                  "root with mount namespaces and overlay mounts");
        REGSCAN_REQUIRE_COMPONENT(regscan_test::sbomValidatorAvailable(),
                                  "python3 with jsonschema");
        char pattern[] = "/tmp/regscan-sbom-rpm-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        fakeRpmDir = pattern;
    }
    void TearDown() override {
        if (!fakeRpmDir.empty()) {
            std::system(("rm -rf '" + fakeRpmDir + "'").c_str());
        }
    }

    // Puts an rpm first on PATH that prints `records` (rpmRecord texts, without single
    // quotes; other bytes are printed as they are).
    void fakeRpm(const std::vector<std::string>& records) {
        std::ofstream script(fakeRpmDir + "/rpm");
        script << "#!/bin/sh\n";
        for (const std::string& record : records) {
            script << "printf '%b' '" << record << "'\n";
        }
        script.close();
        chmod((fakeRpmDir + "/rpm").c_str(), 0755);
        options.environment["PATH"] = fakeRpmDir + ":" + std::getenv("PATH");
    }

    e2e::RunResult inventory(const std::string& format) {
        return e2e::runRegscan({"inventory", "--format", format, "--sbom-timestamp", kTimestamp,
                                "--sbom-serial", kSerial},
                               options);
    }

    std::string fakeRpmDir;
    e2e::RunOptions options;
};

TEST_F(SbomInventoryTest, SmallInventoryMatchesTheGoldenFiles) {
    fakeRpm({rpmRecord("bash", "5.2.15", "x86_64", "3.fc39", "Fedora Project", "/opt/sbom/bash/"),
             rpmRecord("libstdc++", "12.2.1", "aarch64", "4", "Example Corp", "/opt/sbom/lib/"),
             rpmRecord("gpg-pubkey", "3228467c", "(none)", "613798eb", "(none)", "(none)")});
    options.files["/var/lib/dpkg/status"] = kStatus;
    options.files["/root/vpd.properties"] = kVpd;
    struct Case {
        const char *format, *golden;
    } cases[] = {{"cyclonedx", "inventory.cdx.json"}, {"spdx", "inventory.spdx.json"}};
    for (const Case& c : cases) {
        e2e::RunResult result = inventory(c.format);
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        const std::string golden =
            std::string(REGSCAN_SOURCE_DIR) + "/tests/e2e/golden/" + c.golden;
        const char* update = std::getenv("REGSCAN_UPDATE_GOLDEN");
        if (update != nullptr && std::string(update) == "1") {
            std::ofstream(golden, std::ios::binary) << withoutVersion(result.out);
        }
        EXPECT_EQ(withoutVersion(result.out), readFile(golden)) << c.format;
        regscan_test::SbomVerdict verdict = regscan_test::validateSbom(c.format, result.out);
        EXPECT_EQ(verdict.status, 0) << verdict.report;
    }
}

TEST_F(SbomInventoryTest, HostileNamesStillGiveValidDocuments) {
    fakeRpm({rpmRecord("we ird/na?me#1", "1%2", "x86_64", "1+x", "Q&A\x01 Ltd\n", "/opt/w/"),
             rpmRecord("caf\xe9", "\x80", "i686", "", "", "/opt/c/"),
             rpmRecord("", "", "", "", "", ""),
             rpmRecord("bash", "1", "x86_64", "1", "", "/opt/b/"),
             rpmRecord("bash", "1", "x86_64", "1", "", "/opt/b2/")});
    options.files["/var/lib/dpkg/status"] =
        "Package: bash\nStatus: install ok installed\nVersion:\nDescription: \xff\n\n"
        "Package: Caf\xe9/@?#%\nStatus: install ok installed\nVersion: 1.0 beta\n\n"
        "Package: bash\nStatus: install ok installed\nVersion: 2\n";
    options.files["/root/vpd.properties"] = kVpd;
    std::set<std::string> purls;
    for (const char* format : {"cyclonedx", "spdx"}) {
        e2e::RunResult result = inventory(format);
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        regscan_test::SbomVerdict verdict = regscan_test::validateSbom(format, result.out);
        EXPECT_EQ(verdict.status, 0) << verdict.report << result.out;
        json document = json::parse(result.out, nullptr, false);
        ASSERT_FALSE(document.is_discarded()) << result.out;
        for (const json& component : document["components"]) {
            purls.insert(component.value("purl", ""));
        }
        for (const json& package : document["packages"]) {
            for (const json& ref : package["externalRefs"]) {
                purls.insert(ref["referenceLocator"].get<std::string>() + " (spdx)");
            }
        }
    }
    // The rpm cache keeps one of two equal keys; "bash" of rpm and of dpkg are both kept.
    for (const char* purl :
         {"pkg:rpm/we%20ird%2Fna%3Fme%231@1%252-1%2Bx?arch=x86_64",
          "pkg:rpm/caf%EF%BF%BD@%EF%BF%BD-?arch=i686", "pkg:rpm/bash@1-1?arch=x86_64",
          "pkg:deb/caf%EF%BF%BD%2F%40%3F%23%25@1.0%20beta", "pkg:deb/bash@%0A"}) {
        EXPECT_EQ(purls.count(purl), 1u) << purl;
        EXPECT_EQ(purls.count(std::string(purl) + " (spdx)"), 1u) << purl;
    }
    EXPECT_EQ(purls.size(), 2 * 8u);
}

TEST_F(SbomInventoryTest, RegistryFixturesGiveValidDocuments) {
    REGSCAN_REQUIRE_COMPONENT(std::ifstream(kRpmHome + "/.rpmmacros").good(),
                              "the test rpm database at " + kRpmHome);
    options.environment["HOME"] = kRpmHome;
    options.files["/var/lib/dpkg/status"] = kStatus;
    options.files["/root/vpd.properties"] = kVpd;
    const std::string fixtures = std::string(REGSCAN_SOURCE_DIR) + "/tests/fixtures/";
    options.files["/var/.com.zerog.registry.xml"] = readFile(fixtures + "anywhere/registry.xml");
    options.files["/etc/.kelvo/registry/Corvu.dat"] = readFile(fixtures + "corvu/Corvu.dat");
    options.files["/opt/Kelvo/Corvu/eclipse/configuration/config.ini"] =
        readFile(fixtures + "corvu/config.ini");
    options.files["/var/kelvo/CorvuData/installed.xml"] =
        readFile(fixtures + "corvu/installed.xml");

    e2e::RunResult listed = e2e::runRegscan({"inventory", "--format", "json"}, options);
    json records = json::parse(listed.out, nullptr, false);
    ASSERT_TRUE(records.is_array()) << listed.err;
    e2e::RunResult cdx = inventory("cyclonedx");
    e2e::RunResult spdx = inventory("spdx");
    for (const auto& run : {std::make_pair("cyclonedx", cdx), std::make_pair("spdx", spdx)}) {
        EXPECT_EQ(run.second.exitStatus, 0) << run.second.err;
        regscan_test::SbomVerdict verdict = regscan_test::validateSbom(run.first, run.second.out);
        EXPECT_EQ(verdict.status, 0) << run.first << ":\n" << verdict.report;
    }
    // One component per record, every registry present; an rpm package's architecture
    // qualifier is the end of its key.
    json components = json::parse(cdx.out, nullptr, false)["components"];
    ASSERT_EQ(components.size(), records.size());
    std::set<std::string> registries, seen;
    for (const json& record : records) {
        registries.insert(record["registry"].get<std::string>());
    }
    for (const json& component : components) {
        const std::string registry = component["properties"][0]["value"];
        const std::string key = component["properties"][1]["value"];
        seen.insert(registry);
        if (registry == "rpm") {
            const std::string arch = key.substr(key.rfind('-') + 1);
            const std::string purl = component["purl"];
            EXPECT_EQ(purl.substr(purl.size() - arch.size() - 6), "?arch=" + arch) << key;
        }
    }
    EXPECT_EQ(seen, registries);
    EXPECT_GE(registries.size(), 5u);
}

// The value's form is checked before any registry is read.
TEST_F(SbomInventoryTest, BadTimestampOrSerialIsAUsageError) {
    struct Case {
        const char *format, *option, *value;
    } cases[] = {{"cyclonedx", "--sbom-timestamp", "2026-11-23T10:00:00+01:00"},
                 {"spdx", "--sbom-serial", "42"}};
    for (const Case& c : cases) {
        e2e::RunResult result =
            e2e::runRegscan({"inventory", "--format", c.format, c.option, c.value, "--trace", "3"});
        EXPECT_EQ(result.exitStatus, 2) << c.value;
        EXPECT_EQ(result.err.rfind(std::string("regscan: ") + c.option + " wants a", 0), 0u)
            << result.err;
        EXPECT_EQ(e2e::lines(result.err).size(), 1u) << result.err;
        EXPECT_EQ(result.out, "") << c.value;
    }
}

}  // namespace
