// `regscan inventory --format cyclonedx|spdx`: golden files for a small inventory,
// valid documents for the registry fixtures and for hostile package names.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Program.h"
#include "RealComponents.h"
#include "RegscanRunner.h"
#include "Requests.h"
#include "SbomValidator.h"

namespace {

using e2e::readFile;
using nlohmann::json;

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
    }

    // Puts an rpm first on PATH that prints `records` (rpmRecord texts, without
    // single quotes).
    void fakeRpm(const std::vector<std::string>& records) {
        std::string body;
        for (const std::string& record : records)
            body += "printf '%b' '" + record + "'\n";
        rpm = std::make_unique<e2e::FakeRpm>(body);
        options.environment["PATH"] = rpm->path();
    }

    e2e::RunResult inventory(const std::string& format) {
        return e2e::runRegscan({"inventory", "--format", format, "--sbom-timestamp", kTimestamp,
                                "--sbom-serial", kSerial},
                               options);
    }

    std::unique_ptr<e2e::FakeRpm> rpm;
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
