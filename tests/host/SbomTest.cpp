// CycloneDX and SPDX output: package URLs and identifiers for hostile names, the
// option checks, and documents that stay valid whatever the records hold.
#include <gtest/gtest.h>
#include <algorithm>

#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "RealComponents.h"
#include "Sbom.h"
#include "SbomValidator.h"

namespace {

using nlohmann::json;
using regscan::InventoryRecord;

InventoryRecord record(const std::string& registry, const std::string& key, const std::string& name,
                       const std::string& version, const std::string& arch = "") {
    InventoryRecord r{registry, key, name, version, "", "", ""};
    if (!arch.empty()) {
        r.extraFields.emplace_back("arch", arch);
    }
    return r;
}

TEST(SbomTest, PackageUrlsEncodeWhatTheirSyntaxReserves) {
    struct Case {
        InventoryRecord in;
        const char* purl;
    } cases[] = {
        {record("rpm", "bash-5.1-2-x86_64", "bash", "5.1-2", "x86_64"),
         "pkg:rpm/bash@5.1-2?arch=x86_64"},
        {record("rpm", "k", "libstdc++", "12.2-1", "(none)"), "pkg:rpm/libstdc%2B%2B@12.2-1"},
        {record("rpm", "k", "x", "1", "x 86&y=z"), "pkg:rpm/x@1?arch=x%2086%26y%3Dz"},
        {record("dpkg", "Foo", "Foo", "1:2.3-4+b1"), "pkg:deb/foo@1:2.3-4%2Bb1"},
        {record("ismp", "k@4", "Report Server", "4.2"),
         "pkg:generic/Report%20Server@4.2?registry=ismp"},
        {record("corvu", "k", "a/b?c#d@e%f&g=h", "1/2"),
         "pkg:generic/a%2Fb%3Fc%23d%40e%25f%26g%3Dh@1%2F2?registry=corvu"},
        {record("any", "k", "caf\u00e9", ""), "pkg:generic/caf%C3%A9?registry=any"},
        {record("tessel", "k", "bad\xff", "\xc3"),
         "pkg:generic/bad%EF%BF%BD@%EF%BF%BD?registry=tessel"},
        // No name: the key stands in; no key either: no package URL at all.
        {record("orlo", "App#1.0@/opt", "", "1.0"),
         "pkg:generic/App%231.0%40%2Fopt@1.0?registry=orlo"},
        {record("dpkg", "", "", "1"), ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(regscan::packageUrl(c.in), c.purl) << c.in.registry << " " << c.in.name;
    }
}

TEST(SbomTest, SpdxIdsKeepOnlyLettersDigitsDotsAndHyphens) {
    struct Case {
        const char *in, *id;
    } cases[] = {
        {"Package-rpm-bash-5.1-2", "SPDXRef-Package-rpm-bash-5.1-2"},
        {"a_b c/d:e@f#g", "SPDXRef-a-b-c-d-e-f-g"},
        {"caf\u00e9", "SPDXRef-caf--"},
        {"\xff", "SPDXRef--"},
        {"", "SPDXRef-"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(regscan::spdxId(c.in), c.id) << c.in;
    }
}

TEST(SbomTest, SettingsAreCheckedAndCompleted) {
    struct Case {
        const char *timestamp, *serial;
        bool valid;
    } cases[] = {
        {"", "", true},
        {"2026-11-23T10:00:00Z", "3e671687-395b-41f5-a30f-a58921a69b79", true},
        {"", "URN:UUID:3E671687-395B-41F5-A30F-A58921A69B79", true},
        {"2026-11-23 10:00:00", "", false},
        {"2026-11-23T10:00:00+01:00", "", false},
        {"2026-11-23T10:00:00Zx", "", false},
        {"", "3e671687395b41f5a30fa58921a69b79", false},
        {"", "urn:uuid:", false},
        {"", "3e671687-395b-41f5-a30f-a58921a69b7g", false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(regscan::checkSbomSettings({c.timestamp, c.serial}).empty(), c.valid)
            << c.timestamp << " " << c.serial;
    }
    EXPECT_EQ(
        regscan::completeSbomSettings({"", "URN:UUID:3E671687-395B-41F5-A30F-A58921A69B79"}).serial,
        "3e671687-395b-41f5-a30f-a58921a69b79");
    // Defaults: now, and a fresh version 4 UUID each time.
    regscan::SbomSettings a = regscan::completeSbomSettings({}),
                          b = regscan::completeSbomSettings({});
    EXPECT_TRUE(regscan::checkSbomSettings(a).empty()) << a.timestamp << " " << a.serial;
    EXPECT_EQ(a.serial.substr(14, 1), "4") << a.serial;
    EXPECT_NE(std::string("89ab").find(a.serial[19]), std::string::npos) << a.serial;
    EXPECT_NE(a.serial, b.serial);
}

// Records a registry can hold: bad bytes, reserved characters, empty fields, keys
// that collide after cleaning, and the same key twice and in two registries.
std::vector<InventoryRecord> hostileRecords() {
    std::vector<InventoryRecord> records = {
        record("rpm", "zsh-5.9-1-x86_64", "zsh", "5.9-1", "x86_64"),
        record("rpm", "a b-1-1-noarch", "a b", "1-1", "noarch"),
        record("rpm", "a_b-1-1-noarch", "a_b", "1-1", "noarch"),
        record("rpm", "", "", "", ""),
        record("dpkg", "same", "same", "1"),
        record("dpkg", "same", "same", "2"),
        record("dpkg", "bad\xff\xfe", "bad\xff\xfe", "1\x80"),
        record("ismp", "same", "same", ""),
        record("ismp", "q?#@%&=/\\\"\n\t", "q?#@%&=/\\\"\n\t", "v 1"),
        record("orlo", "App#1.0@/opt/app", "", "", ""),
    };
    records[0].vendor = "Example \xff Inc.\n";
    records[1].vendor = "(none)";
    records[4].vendor = "   ";
    records[8].installDir = "/opt/q\xff";
    records[8].description = "two\nlines\x01";
    return records;
}

json document(void (*writer)(std::ostream&, const std::vector<InventoryRecord>&,
                             const regscan::SbomSettings&),
              const std::vector<InventoryRecord>& records) {
    std::ostringstream out;
    writer(out, records, {"2026-11-23T10:00:00Z", "3e671687-395b-41f5-a30f-a58921a69b79"});
    return json::parse(out.str(), nullptr, false);
}

TEST(SbomTest, HostileRecordsGiveUniqueIdsInStableOrder) {
    std::vector<InventoryRecord> records = hostileRecords();
    json cdx = document(regscan::writeCycloneDx, records);
    json spdx = document(regscan::writeSpdx, records);
    ASSERT_FALSE(cdx.is_discarded());
    ASSERT_FALSE(spdx.is_discarded());
    ASSERT_EQ(cdx["components"].size(), records.size());
    ASSERT_EQ(spdx["packages"].size(), records.size());

    std::set<std::string> refs, ids{"SPDXRef-DOCUMENT"};
    std::vector<std::string> keys;
    for (const json& component : cdx["components"]) {
        EXPECT_TRUE(refs.insert(component["bom-ref"].get<std::string>()).second) << component;
        keys.push_back(component["properties"][1]["value"]);
    }
    for (const json& package : spdx["packages"]) {
        const std::string id = package["SPDXID"];
        EXPECT_TRUE(ids.insert(id).second) << id;
        EXPECT_TRUE(id.size() > 8 && id.rfind("SPDXRef-", 0) == 0 &&
                    id.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                         "0123456789.-") == std::string::npos)
            << id;
    }
    // Registries in their first order, keys sorted within; equal keys keep theirs.
    EXPECT_EQ(keys, (std::vector<std::string>{"", "a b-1-1-noarch", "a_b-1-1-noarch",
                                              "zsh-5.9-1-x86_64", "bad\uFFFD\uFFFD", "same", "same",
                                              "q?#@%&=/\\\"\n\t", "same", "App#1.0@/opt/app"}));
    EXPECT_EQ(cdx["components"][5]["version"], "1");
    EXPECT_EQ(cdx["components"][6]["version"], "2");
    // Vendors: cleaned to one line, absent when rpm says "(none)" or only blanks.
    EXPECT_EQ(cdx["components"][3]["supplier"]["name"], "Example \uFFFD Inc.");
    EXPECT_FALSE(cdx["components"][1].contains("supplier"));
    EXPECT_EQ(spdx["packages"][3]["supplier"], "Organization: Example \uFFFD Inc.");
    EXPECT_EQ(spdx["packages"][1]["supplier"], "NOASSERTION");
    EXPECT_EQ(spdx["packages"][5]["supplier"], "NOASSERTION");
    // Without name and key there is neither a package URL nor a name to show.
    EXPECT_FALSE(cdx["components"][0].contains("purl"));
    EXPECT_FALSE(spdx["packages"][0].contains("externalRefs"));
    EXPECT_EQ(cdx["components"][9]["name"], "App#1.0@/opt/app");

    // The order does not depend on the order of the records given.
    std::reverse(records.begin(), records.begin() + 4);
    std::swap(records[7], records[8]);
    EXPECT_EQ(document(regscan::writeCycloneDx, records)["components"], cdx["components"]);
    EXPECT_EQ(document(regscan::writeSpdx, records)["packages"], spdx["packages"]);
}

TEST(SbomTest, DocumentsPassTheValidator) {
    REGSCAN_REQUIRE_COMPONENT(regscan_test::sbomValidatorAvailable(), "python3 with jsonschema");
    struct Case {
        const char* format;
        void (*writer)(std::ostream&, const std::vector<InventoryRecord>&,
                       const regscan::SbomSettings&);
        std::vector<InventoryRecord> records;
    } cases[] = {
        {"cyclonedx", regscan::writeCycloneDx, hostileRecords()},
        {"spdx", regscan::writeSpdx, hostileRecords()},
        {"cyclonedx", regscan::writeCycloneDx, {}},
        {"spdx", regscan::writeSpdx, {}},
    };
    for (const Case& c : cases) {
        std::ostringstream out;
        c.writer(out, c.records, {});
        regscan_test::SbomVerdict verdict = regscan_test::validateSbom(c.format, out.str());
        EXPECT_EQ(verdict.status, 0) << c.format << " with " << c.records.size() << " records:\n"
                                     << verdict.report << out.str();
    }
    // The validator itself rejects what it must: a broken purl, a duplicate identifier.
    json cdx = document(regscan::writeCycloneDx, hostileRecords());
    cdx["components"][3]["purl"] = "pkg:rpm/a b@1";
    json spdx = document(regscan::writeSpdx, hostileRecords());
    spdx["packages"][1]["SPDXID"] = spdx["packages"][2]["SPDXID"];
    json badSerial = document(regscan::writeCycloneDx, {});
    badSerial["serialNumber"] = "urn:uuid:X";
    for (const auto& bad : {std::make_pair("cyclonedx", cdx), std::make_pair("spdx", spdx),
                            std::make_pair("cyclonedx", badSerial)}) {
        EXPECT_EQ(regscan_test::validateSbom(bad.first, bad.second.dump()).status, 1)
            << bad.second.dump();
    }
}

}  // namespace
