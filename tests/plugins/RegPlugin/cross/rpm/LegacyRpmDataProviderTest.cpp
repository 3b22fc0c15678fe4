#include "cross/rpm/LegacyRpmDataProvider.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "../../PluginTestSupport.h"
#include "RegPluginConstants.h"

namespace RegPluginTest {
namespace {

using RegPlugin::LegacyRpmDataProvider;
using RegPlugin::RegistryPackage;

// An `rpm` first on PATH that records its calls and arguments, prints `output` and
// ends with `tail`.
class FakeRpm {
  public:
    explicit FakeRpm(const std::string& output, const std::string& tail = "exit 0")
        : m_oldPath(std::getenv("PATH") != nullptr ? std::getenv("PATH") : "/usr/bin:/bin") {
        const std::string& dir = m_dir.path();
        m_dir.write("output", output);
        const std::string script = m_dir.write(
            "rpm", "#!/bin/sh\necho run >> '" + dir + "/calls'\nprintf '%s\\n' \"$@\" > '" + dir +
                       "/args'\ncat '" + dir + "/output'\n" + tail + "\n");
        ::chmod(script.c_str(), 0755);
        ::setenv("PATH", (dir + ":" + m_oldPath).c_str(), 1);
    }
    ~FakeRpm() { ::setenv("PATH", m_oldPath.c_str(), 1); }
    std::string read(const char* name) const {
        std::ifstream in(m_dir.path() + "/" + name, std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }

  private:
    TempDir m_dir;
    std::string m_oldPath;
};

// A record from its fields written with "|" between them.
std::string record(std::string fields) {
    std::replace(fields.begin(), fields.end(), '|', '\v');
    return fields + "\v\r";
}

// A record of fifteen fields with only the first four and the directories given.
std::string plain(const std::string& nvar, const std::string& dirs = "/opt/x/\a") {
    return record(nvar + "|Acme|Tue 02 Jan 2024|summary|||||||" + dirs + "|");
}

// The query format, one argument of the rpm command.
const std::string kFormat =
    "%{NAME}\v%{VERSION}\v%{ARCH}\v%{RELEASE}\v%{VENDOR}\v%{INSTALLTIME:date}\v%{SUMMARY}\v"
    "[%{REQUIRENAME}\a]\v[%{REQUIREVERSION}\a]\v[%{REQUIREFLAGS:depflags}\a]\v"
    "[%{CONFLICTNAME}\a]\v[%{CONFLICTVERSION}\a]\v[%{CONFLICTFLAGS:depflags}\a]\v"
    "[%{DIRNAMES}\a]\v[%{DISTRIBUTION}\a]\v\r";

// Each package in load order as its key and "|value" for each property in `names`,
// one a line; then "key->" and the key found for each key in `lookups` ("-": none).
std::string show(LegacyRpmDataProvider& provider, const std::string& names,
                 const std::string& lookups) {
    std::ostringstream out;
    for (RegistryPackage* p = provider.getFirst(); p != nullptr; p = provider.getNext()) {
        out << p->key.toUtf8();
        std::istringstream list(names);
        for (std::string name; list >> name;) {
            PluginSDK::String value(L"(missing)");
            p->getProperty(name.c_str(), value);
            out << "|" << value.toUtf8();
        }
        out << "\n";
        EXPECT_EQ(p->provider, PluginSDK::String(L"RPM"));
        EXPECT_EQ(p->properties.size(), 16u) << p->key.toUtf8();
    }
    std::istringstream list(lookups);
    for (std::string key; list >> key;) {
        RegistryPackage* found = provider.find(key.c_str());
        out << key << "->" << (found != nullptr ? found->key.toUtf8() : "-") << "\n";
    }
    return out.str();
}

TEST(LegacyRpmDataProviderTest, LoadsRecords) {
    const std::string all =
        "name release version displayVersion vendor installDate description requireName arch "
        "requireVersion requireFlags conflictName conflictVersion conflictFlags installDir "
        "distribution";
    std::string noCarriageReturn = plain("a|1|noarch|1");
    noCarriageReturn.pop_back();
    // Enough directories for the roots to be looked up through an index.
    std::string manyDirs, manyRoots;
    for (int i = 0; i <= 16; ++i) {
        const std::string dir = "/d" + std::to_string(i) + "/x/";
        manyDirs += dir + "\a";
        manyRoots += i == 3 ? "" : dir + ";";
    }
    struct Case {
        const char* what;
        std::string output;
        std::string names, lookups;  // see show()
        std::string expected;
    };
    const std::vector<Case> cases = {
        {"every property",
         record("foo|1.2|x86_64|3.el9|Acme Corp|Tue 02 Jan 2024 10:00:00 AM UTC|The foo tool|"
                "/bin/sh\alibc.so.6\a|\a2.3\a|\a>=\a|old-foo\a|2.0\a|<\a|"
                "/etc/foo/\a/usr/share/foo/\a/usr/share/doc/foo/\a|(none)\a"),
         all, "foo-1.2-3.el9",
         "foo-1.2-3.el9-x86_64|foo|3.el9|1.2.3.el9|1.2-3.el9|Acme Corp|Tue 02 Jan 2024 10:00:00 AM "
         "UTC|The foo tool|/bin/sh;libc.so.6|x86_64|;2.3|;>=|old-foo|2.0|<|/etc/foo/;/usr/share/|\n"
         "foo-1.2-3.el9->foo-1.2-3.el9-x86_64\n"},
        {"a record cut short is skipped, the next is read",
         plain("a|1|noarch|1") + "b\v1\vnoarch\v2\vAcme\v\r" + plain("c|1|noarch|1"), "", "b-1-2",
         "a-1-1-noarch\nc-1-1-noarch\nb-1-2->-\n"},
        {"vendor empty or (none), kept as printed",
         record("a|1|noarch|1||D|S|||||||/\a|") + record("b|1|noarch|1|(none)|D|S|||||||/\a|"),
         "vendor", "", "a-1-1-noarch|\nb-1-1-noarch|(none)\n"},
        {"(none) dropped from arrays only",
         record("a|1|(none)|1|(none)|D|S|(none)\a|||(none)\ax\a|||(none)\a|(none)\a"),
         "vendor requireName arch conflictName installDir distribution", "",
         "a-1-1-(none)|(none)|||x||\n"},
        {"array elements: (none) only as a whole element, empty, with the list separator",
         record("a|1|noarch|1|V|D|S|(none)\aa\a|(none)x\a|\a|x;y\a|||/\a|"),
         "requireName requireVersion requireFlags conflictName", "",
         "a-1-1-noarch|a|(none)x|\\0|x\\;y\n"},
        {"install roots: merged into the first root sharing more than /, which moves last",
         plain("a|1|noarch|1", "/opt/a/\a/usr/x/\a/opt/a/bin/\a") +
             plain("b|1|noarch|1", "/usr/lib/\a/usr/lib64/\a/\a/usr/\a") +
             plain("c|1|noarch|1", "\a/opt/a\a") +
             plain("d|1|noarch|1", manyDirs + "/d3/y/\a/d3/y/z/\a"),
         "installDir", "",
         "a-1-1-noarch|/usr/x/;/opt/a/\nb-1-1-noarch|/;/usr/\nc-1-1-noarch|/opt/a/\n"
         "d-1-1-noarch|" +
             manyRoots + "/d3/\n"},
        {"one version for two architectures: the short key finds the first",
         plain("a|1|x86_64|1") + plain("a|1|i686|1"), "", "a-1-1",
         "a-1-1-x86_64\na-1-1-i686\na-1-1->a-1-1-x86_64\n"},
        {"a repeated full key keeps the first record",
         record("a|1|noarch|1|V|D|first|||||||/\a|") + record("a|1|noarch|1|V|D|second|||||||/\a|"),
         "description", "", "a-1-1-noarch|first\n"},
        {"no carriage return: one record", noCarriageReturn, "", "", "a-1-1-noarch\n"},
        {"empty output", "", "", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.what) + "\noutput: " + printable(c.output));
        FakeRpm rpm(c.output);
        LegacyRpmDataProvider provider;
        ASSERT_EQ(provider.load(), 0);
        EXPECT_EQ(show(provider, c.names, c.lookups), c.expected);
        EXPECT_EQ(rpm.read("args"), "-qa\n--queryformat\n" + kFormat + "\n");
    }
}

// parseOutput reads output held in memory as load() reads the pipe: whatever the
// size of each read, records cut at a read's end, a buffer grown past its first
// 16 KB and a stray zero byte give the packages that load() gives.
TEST(LegacyRpmDataProviderTest, OutputInMemoryParsesAsTheCommandsOutput) {
    std::string many;
    for (int i = 0; i < 300; ++i) {
        many += plain(
            "pkg" + std::to_string(i) + "|1." + std::to_string(i) + "|x86_64|1",
            "/opt/p" + std::to_string(i % 7) + "/bin/\a/opt/p" + std::to_string(i % 7) + "/lib/\a");
    }
    const std::string outputs[] = {
        plain("a|1|noarch|1") + "b\v1\vnoarch\v2\vAcme\v\r" + plain("c|1|noarch|1"),
        plain("a|1|noarch|1") + std::string("x\0y\v", 5) + plain("d|1|noarch|1"),
        many,
        many.substr(0, many.size() - 1),  // the last record without its carriage return
        "",
    };
    const std::string names = "version vendor installDir";
    for (const std::string& output : outputs) {
        SCOPED_TRACE("output of " + std::to_string(output.size()) + " bytes");
        FakeRpm rpm(output);
        LegacyRpmDataProvider loaded;
        ASSERT_EQ(loaded.load(), 0);
        const std::string expected = show(loaded, names, "a-1-1 pkg7-1.7-1");
        for (const std::size_t readSize : {0, 1, 2, 7, 4096, 20000}) {
            LegacyRpmDataProvider parsed;
            parsed.parseOutput(output.data(), output.size(), readSize);
            EXPECT_EQ(show(parsed, names, "a-1-1 pkg7-1.7-1"), expected) << readSize;
        }
    }
}

// The lines about records come after the command's success, in record order, even
// though the records are read while the command is still writing.
TEST(LegacyRpmDataProviderTest, RecordLinesFollowTheCommand) {
    std::string output;
    for (int i = 0; i < 3000; ++i) {
        output += plain("p" + std::to_string(i) + "|1|noarch|1");
    }
    output += "cut\vshort\r" + plain("p0|1|noarch|1");
    FakeRpm rpm(output);
    LegacyRpmDataProvider provider;
    TraceCapture trace;
    ASSERT_EQ(provider.load(), 0);
    const std::vector<std::string> lines = trace.sink().messages(3);
    const auto success = std::find(lines.begin(), lines.end(),
                                   "command executed with success, parsing command output");
    ASSERT_NE(success, lines.end());
    ASSERT_EQ(lines.end() - success, 1 + 3000 + 3);
    for (int i = 0; i < 3000; ++i) {
        ASSERT_EQ(success[1 + i], "creating new package for p" + std::to_string(i) + "-1-1-noarch");
    }
    EXPECT_EQ(success[3001], "skipping line cut\vshort");
    EXPECT_EQ(success[3002], "creating new package for p0-1-1-noarch");
    EXPECT_EQ(success[3003], "skipping duplicate package p0-1-1-noarch");
}

TEST(LegacyRpmDataProviderTest, FailedCommandIsNeverRerun) {
    for (const std::string tail : {"exit 1", "kill -9 $$"}) {
        SCOPED_TRACE(tail);
        FakeRpm rpm(plain("a|1|noarch|1"), tail);
        LegacyRpmDataProvider provider;
        TraceCapture trace;
        RegistryPackage* found = nullptr;
        bool exists = false;
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(provider.getPackage(L"a-1-1-noarch", &found),
                      REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
            EXPECT_EQ(provider.packageExists(L"a-1-1-noarch", exists),
                      REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
        }
        EXPECT_EQ(found, nullptr);
        EXPECT_EQ(rpm.read("calls"), "run\n");
        EXPECT_TRUE(trace.sink().contains("Unable to execute rpm command "));
        // Records read before the failure leave no lines about packages behind.
        for (const std::string& message : trace.sink().messages(3)) {
            EXPECT_EQ(message.find("creating new package for"), std::string::npos) << message;
        }
        // Read while the command ran, then dropped with both keys.
        EXPECT_EQ(provider.size(), 0);
        EXPECT_EQ(provider.find(L"a-1-1"), nullptr);
    }
}

}  // namespace
}  // namespace RegPluginTest
