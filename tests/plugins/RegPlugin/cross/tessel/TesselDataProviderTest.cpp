#include "cross/tessel/TesselDataProvider.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "PluginSDK/PluginResult.h"
#include "RegPluginConstants.h"
#include "TesselProduct.h"
#include "cross/tessel/TesselPackage.h"

namespace RegPluginTest {
namespace {

using RegPlugin::RegistryPackage;
using RegPlugin::TesselDataProvider;
using RegPlugin::TesselPackage;
using Strings = std::vector<std::string>;

// The provider as the factory makes it.
class Catalog : public TesselDataProvider {
  public:
    Catalog()
        : TesselDataProvider(String("PDXMS0164I"), String("PDXMS0165I"), String("PDXMS0804I"),
                             String("PDXMS0166I")) {}
};

const char* const kFields[] = {"name",        "version",     "uninstData",     "isInstalled",
                               "isCommitted", "backupState", "rebootRequired", "isDiscovered",
                               "isHidden",    "errorState"};

// Each package in load order: its key, then "|" and the value of each field.
std::string show(TesselDataProvider& provider) {
    std::ostringstream out;
    for (RegistryPackage* p = provider.getFirst(); p != nullptr; p = provider.getNext()) {
        out << p->key.toUtf8();
        for (const char* field : kFields) {
            PluginSDK::String value(L"(missing)");
            p->getProperty(field, value);
            out << "|" << value.toUtf8();
        }
        out << "\n";
        EXPECT_EQ(p->provider, PluginSDK::String(L"TESSEL"));
        EXPECT_EQ(p->type, RegistryPackage::PRODUCT);
        EXPECT_EQ(p->properties.size(), 10u) << p->key.toUtf8();
    }
    return out.str();
}

// The same records from the raw listing, whole and arriving in pieces (a byte at a
// time, in pieces of 7 bytes), and from its lines.
void expectBothParsersGive(const std::string& listing, const std::string& expected) {
    Catalog fromBuffer;
    fromBuffer.parseListing(listing.data(), listing.size());
    EXPECT_EQ(show(fromBuffer), expected);
    for (const std::size_t step : {1, 7}) {
        std::vector<std::size_t> pieceEnds;
        for (std::size_t end = step; end < listing.size(); end += step) {
            pieceEnds.push_back(end);
        }
        ByteBuffer output;
        output.append(listing.data(), listing.size());
        Catalog fromPieces;
        fromPieces.parseListing(std::move(output), pieceEnds);
        EXPECT_EQ(show(fromPieces), expected) << "in pieces of " << step << " bytes";
    }
    ObjectArray<String> lines;
    RegPlugin::TesselHandler::appendLines(listing.data(), listing.size(), lines);
    Catalog fromLines;
    fromLines.parseLines(lines);
    EXPECT_EQ(show(fromLines), expected);
}

TEST(TesselDataProviderTest, ParsesRecords) {
    const std::string kOddName = std::string("n\xc3\xa9\xff") + std::string("\0x", 2);
    const std::vector<std::pair<std::string, std::string>> cases = {
        // Each state letter; letters are compared exactly.
        {tesselRecord("a", "1", "u", "I-UH-") + tesselRecord("b", "1", "u", "xxxxx") +
             tesselRecord("c", "1", "u", "ICUHE") + tesselRecord("d", "1", "u", "icpbc"),
         "a.1|a|1|u|true|false|undoable|false|false|true|\n"
         "b.1|b|1|u|false|false||false|false|false|\n"
         "c.1|c|1|u|true|true|undoable|false|false|true|error\n"
         "d.1|d|1|u|false|false||false|false|false|\n"},
        // State texts shorter than five letters.
        {tesselRecord("a", "1", "u", "IC") + tesselRecord("b", "1", "u", "I") +
             "PDXMS0166I Package state:\r\nPDXMS0164I Package name: c\r\nPDXMS0167I -\r\n",
         "a.1|a|1|u|true|true||false|false|false|\n"
         "b.1|b|1|u|true|false||false|false|false|\n"
         "c.1|c|1|u|false|false||false|false|false|\n"},
        // A record missing its state or uninstall data line inherits the previous one's.
        {tesselRecord("a", "1", "u-a", "ICP--") + tesselRecord("b", "2", "", "") +
             tesselRecord("c", "3", "u-c", "") + tesselRecord("d", "4", "", "--R-E"),
         "a.1|a|1|u-a|true|true|prepared|false|false|false|\n"
         "b.2|b|2|u-a|true|true|prepared|false|false|false|\n"
         "c.3|c|3|u-c|true|true|prepared|false|false|false|\n"
         "d.4|d|4|u-c|false|false|restored|false|false|false|error\n"},
        // Duplicates: the first wins.
        {tesselRecord("a", "1", "first", "IC---") + tesselRecord("a", "1", "second", "-----") +
             tesselRecord("a", "1.0", "third", "I----"),
         "a.1|a|1|first|true|true||false|false|false|\n"
         "a.1.0|a|1.0|third|true|false||false|false|false|\n"},
        // Blank lines alone do not end a record: the last values win.
        {"PDXMS0164I Package name: a\r\nPDXMS0165I Package version: 1\r\n\r\n\r\n"
         "PDXMS0164I Package name: b\r\nPDXMS0165I Package version: 2\n",
         "b.2|b|2||false|false||false|false|false|\n"},
        // An id line without a colon ends the record.
        {"PDXMS0164I Package name: a\nPDXMS0164I broken name\nPDXMS0165I Package version: 1\n",
         "a.|a|||false|false||false|false|false|\na.1|a|1||false|false||false|false|false|\n"},
        {"PDXMS0164I Package name:\nPDXMS0165I Package version: 1\nend\n",
         ".1||1||false|false||false|false|false|\n"},
        {"PDXMS0001I Catalog is empty\r\n\r\n", ""},
        {"", ""},
        // Bytes that are not UTF-8, NUL bytes and garbage are kept as characters.
        {std::string("\x01\x02garbage\xff\r\n") + "PDXMS0164I Package name: " + kOddName +
             "\nPDXMS0165I Package version: 1\n",
         kOddName + ".1|" + kOddName + "|1||false|false||false|false|false|\n"},
        // Positions count characters, not bytes: a three-byte character after the
        // colon is skipped whole, an undecodable byte is one character.
        {"PDXMS0164I n:\xe2\x82\xacrest\nPDXMS0165I v:x1\n",
         "rest.1|rest|1||false|false||false|false|false|\n"},
        {"PDXMS0164I n:\xff\xfe"
         "ab\nPDXMS0165I v: 1\n",
         "\xfe"
         "ab.1|\xfe"
         "ab|1||false|false||false|false|false|\n"},
        {"PDXMS0164I\xc3\xa9: a\nPDXMS0165\xc3\xa9 \xe2\x82\xac: 1\n",
         "a.1|a|1||false|false||false|false|false|\n"},
        {"PDXMS0164I n: a\nPDXMS0165I v: 1\nPDXMS0166I s: \xc3\xa9"
         "CUHE\n",
         "a.1|a|1||false|true|undoable|false|false|true|error\n"},
        // A carriage return alone splits a value.
        {"PDXMS0164I n: a\rb\nPDXMS0165I v: 1\n",
         "a.|a|||false|false||false|false|false|\na.1|a|1||false|false||false|false|false|\n"},
        // Nine characters of the id are compared, case and place exactly; the value
        // starts after the first colon from the 11th character on, skipping one
        // character whatever it is.
        {"PDXMS0164E Package name: err\nPDXMS0165I Time: 10:20\nPDXMS0804:a: value\n"
         " PDXMS0164I n: x\npdxms0165I v: 2\nPDXMS0164I n:  padded \t\nPDXMS0165I v: 1\n",
         "err.10:20|err|10:20|value|false|false||false|false|false|\n"
         " padded \t.1| padded \t|1|value|false|false||false|false|false|\n"},
        // Eleven characters are the shortest line with a value.
        {"PDXMS0164I\nPDXMS0165I:\nPDXMS0164I: x\n", "x.|x|||false|false||false|false|false|\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE("listing: " + printable(c.first));
        expectBothParsersGive(c.first, c.second);
    }  // The one-line form: 1 and the value, or 0 and the value left alone.
    Catalog catalog;
    String value(L"kept");
    EXPECT_EQ(catalog.matchResultLine(String("PDXMS0164I"), String("PDXMS0164I no colon"), value),
              0);
    EXPECT_EQ(value.wide(), L"kept");
    EXPECT_EQ(catalog.matchResultLine(String("PDXMS0164I"), String("PDXMS0164I a: b"), value), 1);
    EXPECT_EQ(value.wide(), L"b");
}

// The records are read while the command runs, but their lines come after the
// command's, as if the output were parsed once the command had ended.
TEST(TesselDataProviderTest, LoadsTheListing) {
    TesselProduct product(kTesselHeader + tesselRecord("office-suite", "1.0", "uninst-1", "ICPBC") +
                          tesselRecord("editor", "2.1", "uninst-2", "-CRDE") +
                          tesselRecord("editor", "2.1", "again", "") +
                          "PDXMS0002I 2 packages listed\r\n");
    ScopedConfiguration configuration;
    configuration.set(REG_PLUGIN_PROPERTY_PDX_DIRECTORY, product.path());
    TraceCapture trace;
    Catalog catalog;
    ASSERT_EQ(catalog.load(), 0);
    EXPECT_EQ(show(catalog),
              "office-suite.1.0|office-suite|1.0|uninst-1|true|true|prepared|true|false|false|"
              "changing\n"
              "editor.2.1|editor|2.1|uninst-2|false|true|restored|false|true|false|error\n");
    EXPECT_TRUE(trace.sink().contains("The pdxDirectory property is " + product.path()));
    Strings order;
    for (const MemoryTraceSink::Line& line : trace.sink().lines()) {
        if (line.message == "Process exited; code: 0" ||
            line.message == "Parsing output from list command" ||
            (line.message == "Skipped duplicate package with key='editor.2.1'" && line.level == 1 &&
             line.signature ==
                 "TesselDataProvider::addPackage(String &, String &, String &, String &)")) {
            order.push_back(line.message);
        }
    }
    EXPECT_EQ(order, (Strings{"Process exited; code: 0", "Parsing output from list command",
                              "Skipped duplicate package with key='editor.2.1'"}));
}

TEST(TesselDataProviderTest, LoadFailures) {
    // The records read while the command ran are dropped, their trace lines too.
    TesselProduct product(tesselRecord("a", "1", "u", "IC---") + tesselRecord("a", "1", "u", ""),
                          "exit 1");
    struct Case {
        const char* what;
        const wchar_t* directory;  // null: not configured
        TErrorCode expected;
        std::string traceLine;
    };
    const std::string path = product.path();
    const std::wstring widePath(path.begin(), path.end());
    const std::vector<Case> cases = {
        {"pdxDirectory missing", nullptr, REG_PLUGIN_ERROR_PDX_CLI_UNSPECIFIED,
         "Property pdxDirectory not found. Skipping finding any software "},
        {"the command exits with 1", widePath.c_str(), REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI,
         "Process exited with 1 exit code"},
        {"the directory does not exist", L"/nonexistent", REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI,
         "Unable to run the listing command"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ScopedConfiguration configuration;
        configuration.set(REG_PLUGIN_PROPERTY_PDX_DIRECTORY, c.directory);
        TraceCapture trace;
        Catalog catalog;
        EXPECT_EQ(catalog.load(), c.expected);
        EXPECT_EQ(catalog.size(), 0);
        EXPECT_EQ(catalog.getFirst(), nullptr);
        EXPECT_TRUE(trace.sink().contains(c.traceLine));
        EXPECT_FALSE(trace.sink().contains("Skipped duplicate package with key='a.1'"));
        // Through the preloaded base: the loader's code is logged, never retried.
        Catalog queried;
        bool exists = true;
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(queried.packageExists(L"a.1", exists),
                      REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
        }
        EXPECT_TRUE(exists);
        EXPECT_TRUE(trace.sink().contains(
            "Unable to preload packages ( err = " + std::to_string(c.expected) + " )"));
        EXPECT_TRUE(trace.sink().contains("program preload previously failed"));
    }
    Catalog catalog;
    EXPECT_EQ(catalog.loadInformation(nullptr), PluginSDK::ERROR_NULL_ARGUMENT);
}

TEST(TesselDataProviderTest, GetProperties) {
    struct Case {
        const wchar_t* storedUncommitted;  // configuration; null: not set
        const wchar_t* storedRemoved;
        const wchar_t* overrideUncommitted;  // expression; null: not given
        const wchar_t* overrideRemoved;
        bool uncommitted, removed;
        std::string lines;  // level 3, each ended by "\n"; empty: not checked
    };
    const wchar_t* T = PLUGIN_RESULT_TRUE;
    const wchar_t* F = PLUGIN_RESULT_FALSE;
    const std::string getU = "Retrieving the showUncommittedPackages property\n",
                      noU = "Property showUncommittedPackages not found\n",
                      getR = "Retrieving the showRemovedPackages property\n",
                      noR = "Property showRemovedPackages not found\n",
                      skipU = "Skipping uncommitted Tessel packages\n",
                      skipR = "Skipping removed Tessel packages\n",
                      listU = "Listing uncommitted Tessel packages\n",
                      listR = "Listing removed Tessel packages\n";
    const std::vector<Case> cases = {
        {nullptr, nullptr, nullptr, nullptr, false, false, getU + noU + getR + noR + skipU + skipR},
        {T, T, nullptr, nullptr, true, true, getU + getR + listU + listR},
        {F, T, nullptr, nullptr, false, true, ""},
        // Only the host's true text counts in the configuration.
        {L"true", L"yes", nullptr, nullptr, false, false, ""},
        {T, T, L"false", L"false", false, false, skipU + skipR},
        {nullptr, nullptr, L"true", nullptr, true, false, getR + noR + listU + skipR},
        {F, F, nullptr, L"true", false, true, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases.data());
        ScopedConfiguration configuration;
        configuration.set(REG_PLUGIN_PROPERTY_SHOW_UNCOMMITTED_PDX_PKG, c.storedUncommitted)
            .set(REG_PLUGIN_PROPERTY_SHOW_REMOVED_PDX_PKG, c.storedRemoved);
        TraceCapture trace;
        Catalog catalog;
        bool uncommitted = false, removed = false;
        ASSERT_EQ(catalog.getProperties(configuration.store(), c.overrideUncommitted,
                                        c.overrideRemoved, &uncommitted, &removed),
                  0);
        EXPECT_EQ(uncommitted, c.uncommitted);
        EXPECT_EQ(removed, c.removed);
        std::string lines;
        for (const std::string& line : trace.sink().messages(3))
            lines += line + "\n";
        EXPECT_TRUE(c.lines.empty() || lines == c.lines) << lines;
    }
    // The outputs are only ever raised from the configuration.
    ScopedConfiguration configuration;
    Catalog catalog;
    bool uncommitted = true, removed = true;
    EXPECT_EQ(
        catalog.getProperties(configuration.store(), nullptr, nullptr, &uncommitted, &removed), 0);
    EXPECT_TRUE(uncommitted && removed);
    EXPECT_EQ(catalog.getProperties(configuration.store(), nullptr, nullptr, nullptr, &removed),
              PluginSDK::ERROR_NULL_ARGUMENT);
}

TEST(TesselDataProviderTest, GetPropertiesRejectsBrokenRules) {
    Catalog catalog;
    bool uncommitted = false, removed = false;
    PluginSDK::Configuration* store = ScopedConfiguration::store();
    EXPECT_DEATH(catalog.getProperties(store, L"TRUE", nullptr, &uncommitted, &removed),
                 "isTrue \\|\\| isFalse");
    EXPECT_DEATH(catalog.getProperties(store, nullptr, L"", &uncommitted, &removed),
                 "isTrue \\|\\| isFalse");
    EXPECT_DEATH(catalog.getProperties(nullptr, nullptr, nullptr, &uncommitted, &removed),
                 "configuration != 0");
    PluginSDK::Configuration::cleanup(REG_PLUGIN_NAME);
}

TEST(TesselDataProviderTest, CheckCriteria) {
    struct Case {
        const wchar_t* installed;  // null: the field is missing
        const wchar_t* committed;
        bool showUncommitted, showRemoved;
        TErrorCode expected;
        int matches;  // 0, 1, or -1: left as it was
    };
    const TErrorCode kMissing = REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
    const std::vector<Case> cases = {
        {L"true", L"true", false, false, 0, 1},
        {L"true", L"false", false, false, 0, 0},
        {L"true", L"false", true, false, 0, 1},
        {L"false", L"true", false, false, 0, 0},
        {L"false", L"true", true, false, 0, 0},
        {L"false", L"false", false, true, 0, 1},
        // Anything but "false" counts as installed; only "true" as committed.
        {L"", L"TRUE", false, false, 0, 0},
        {L"FALSE", L"true", false, false, 0, 1},
        // With both flags the fields are not read.
        {nullptr, nullptr, true, true, 0, 1},
        {nullptr, L"true", false, false, kMissing, -1},
        {L"true", nullptr, false, true, kMissing, -1},
        {L"false", nullptr, false, false, 0, 0},
    };
    Catalog catalog;
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases.data());
        TesselPackage package(L"p.1");
        if (c.installed != nullptr)
            package.setProperty(L"isInstalled", c.installed);
        if (c.committed != nullptr)
            package.setProperty(L"isCommitted", c.committed);
        for (const bool before : {false, true}) {
            bool matches = before;
            EXPECT_EQ(catalog.checkCriteria(&package, &matches, c.showUncommitted, c.showRemoved),
                      c.expected);
            EXPECT_EQ(matches, c.matches < 0 ? before : c.matches == 1);
        }
    }
    bool matches = false;
    EXPECT_EQ(catalog.checkCriteria(nullptr, &matches, false, true),
              PluginSDK::ERROR_NULL_ARGUMENT);
    TesselPackage package(L"p.1");
    EXPECT_EQ(catalog.checkCriteria(&package, nullptr, true, true), PluginSDK::ERROR_NULL_ARGUMENT);
}

// A package read from a listing makes its fields when they are asked for: the
// answers must be those of a package whose fields were all stored at load time.
TEST(TesselDataProviderTest, FieldsReadInAnyOrderAfterTheListingIsGone) {
    std::string listing = tesselRecord("a", "1", "u-a", "ICPHE") + tesselRecord("b", "2", "", "");
    Catalog catalog;
    catalog.parseListing(listing.data(), listing.size());
    listing.assign(listing.size(), 'x');  // the caller's text is not the one read
    // A second listing: its record of a known key is dropped, the others are added
    // and read from their own listing.
    std::string second =
        tesselRecord("a", "1", "other", "-----") + tesselRecord("c", "3", "u-c", "");
    catalog.parseListing(second.data(), second.size());
    second.clear();
    // Each key, then field=value pairs read in this order.
    for (const std::string c :
         {"a.1 errorState=error isHidden=true name=a uninstData=u-a version=1 isInstalled=true",
          "b.2 backupState=prepared uninstData=u-a isCommitted=true",
          "c.3 uninstData=u-c name=c isInstalled=false"}) {
        std::istringstream words(c);
        std::string key, pair;
        words >> key;
        RegistryPackage* package = catalog.find(PluginSDK::String(key.c_str()));
        ASSERT_NE(package, nullptr) << key;
        while (words >> pair) {
            const std::string field = pair.substr(0, pair.find('='));
            PluginSDK::String value(L"(missing)");
            EXPECT_EQ(package->getProperty(field.c_str(), value), 0) << key << " " << field;
            EXPECT_EQ(field + "=" + value.toUtf8(), pair) << key;
        }
    }
    // c.3 inherits the state of the second listing's dropped record, not the first's.
    EXPECT_EQ(show(catalog),
              "a.1|a|1|u-a|true|true|prepared|false|false|true|error\n"
              "b.2|b|2|u-a|true|true|prepared|false|false|true|error\n"
              "c.3|c|3|u-c|false|false||false|false|false|\n");
}

TEST(TesselDataProviderTest, StoredValuesAndOtherNames) {
    const std::string listing = tesselRecord("a", "1", "u", "IC---");
    struct Case {
        const char* set;  // stored with setProperty before any read; null: none
        const char* setValue;
        const char* read;
        TErrorCode expected;
        const char* value;  // "(untouched)" when nothing is read
        std::string shown;  // show() afterwards
    };
    const TErrorCode kMissing = REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
    const std::string plain = "a.1|a|1|u|true|true||false|false|false|\n";
    const std::vector<Case> cases = {
        // A stored value replaces the listing's, also before it was ever read.
        {"isInstalled", "false", "isInstalled", 0, "false",
         "a.1|a|1|u|false|true||false|false|false|\n"},
        {"name", "renamed", "version", 0, "1", "a.1|renamed|1|u|true|true||false|false|false|\n"},
        // Names that are not fields: nothing to make.
        {nullptr, nullptr, "vendor", kMissing, "(untouched)", plain},
        {nullptr, nullptr, "Name", kMissing, "(untouched)", plain},
        {nullptr, nullptr, "", kMissing, "(untouched)", plain},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases.data());
        Catalog catalog;
        catalog.parseListing(listing.data(), listing.size());
        RegistryPackage* package = catalog.find(PluginSDK::String(L"a.1"));
        ASSERT_NE(package, nullptr);
        if (c.set != nullptr)
            static_cast<TesselPackage*>(package)->setProperty(c.set, c.setValue);
        PluginSDK::String value(L"(untouched)");
        EXPECT_EQ(package->getProperty(c.read, value), c.expected);
        EXPECT_EQ(value.toUtf8(), c.value);
        EXPECT_EQ(show(catalog), c.shown);
    }
}

}  // namespace
}  // namespace RegPluginTest
