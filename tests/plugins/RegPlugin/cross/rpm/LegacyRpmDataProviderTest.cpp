#include "cross/rpm/LegacyRpmDataProvider.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <fstream>
#include <list>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "PluginSDK/StringVector.h"
#include "PluginSDK/VectorString.h"
#include "RegPluginConstants.h"
#include "RpmTestSupport.h"

namespace {

using RegPlugin::LegacyRpmDataProvider;
using RegPlugin::RegistryPackage;

std::string utf8(const wchar_t* text) {
    return text == nullptr ? "(null)" : PluginSDK::String(text).toUtf8();
}

// Takes a malloc'ed result, returns it as UTF-8 ("(null)" for null) and frees it.
std::string take(wchar_t* text) {
    const std::string result = utf8(text);
    std::free(text);
    return result;
}

TEST(LegacyRpmParsingTest, GetTokenKeepsEmptyFields) {
    const std::vector<std::tuple<std::string, char, std::string>> cases = {
        {"a\vb\v", '\v', "[a][b]"},
        {"a\v\vb", '\v', "[a][][b]"},
        {"\v\v", '\v', "[][]"},
        {"", '\v', ""},
        {"abc", '\v', "[abc]"},
        {"a\ab\a\a", '\a', "[a][b][]"},
        {"a\vb\ac\v", '\a', "[a\vb][c\v]"},
    };
    for (const auto& [input, separator, expected] : cases) {
        std::string text = input;
        char* position = nullptr;
        std::string tokens;
        for (char* token = RegPlugin::getToken(&text[0], separator, &position); token != nullptr;
             token = RegPlugin::getToken(nullptr, separator, &position)) {
            tokens += "[" + std::string(token) + "]";
        }
        EXPECT_EQ(tokens, expected) << "input: " << rpmtest::printable(input);
    }
}

TEST(LegacyRpmParsingTest, SlashedAndCommonDirectories) {
    const std::vector<std::pair<const wchar_t*, std::string>> slashed = {
        {L"/opt/app", "/opt/app/"}, {L"/opt/app/", "/opt/app/"}, {L"/", "/"}, {L"", ""}};
    for (const auto& [input, expected] : slashed) {
        EXPECT_EQ(take(RegPlugin::getSlashedDir(input)), expected) << "input: " << utf8(input);
    }
    const std::vector<std::tuple<const wchar_t*, const wchar_t*, std::string>> common = {
        {L"/usr/lib/foo/", L"/usr/lib/bar/", "/usr/lib/"},
        {L"/usr/share/foo/", L"/usr/share/doc/foo/", "/usr/share/"},
        {L"/usr/", L"/opt/", "/"},
        {L"/usr/lib/", L"/usr/lib64/", "/usr/"},
        {L"/etc/foo/", L"/etc/foo/", "/etc/foo/"},
        {L"abc", L"abd", "(null)"},
        {L"a/b/", L"a/c/", "a/"},
    };
    for (const auto& [a, b, expected] : common) {
        EXPECT_EQ(take(RegPlugin::getCommonDir(a, b)), expected) << utf8(a) << " + " << utf8(b);
    }
}

TEST(LegacyRpmParsingTest, ArraysDropNone) {
    LegacyRpmDataProvider provider;
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"a\ab\a", "a;b"},    {"(none)\a", ""},         {"", ""},
        {"\a", "\\0"},        {"\a2.3\a", ";2.3"},      {"x;y\a", "x\\;y"},
        {"(none)\aa\a", "a"}, {"(none)x\a", "(none)x"}, {"caf\xc3\xa9\a", "caf\xc3\xa9"},
    };
    for (const auto& [input, expected] : cases) {
        std::string text = input;
        EXPECT_EQ(take(provider.parseRpmArray(&text[0])), expected)
            << "input: " << rpmtest::printable(input);
    }
}

TEST(LegacyRpmParsingTest, RootDirectories) {
    LegacyRpmDataProvider provider;
    const std::vector<std::pair<std::wstring, std::string>> cases = {
        {L"/etc/foo/;/usr/share/foo/;/usr/share/doc/foo/", "/etc/foo/;/usr/share/"},
        {L"/usr/lib/foo/;/usr/lib/bar/", "/usr/lib/"},
        {L"/usr/;/opt/", "/usr/;/opt/"},
        {L"/opt/app", "/opt/app/"},
        {L"/opt/a/;/usr/x/;/opt/a/bin/", "/usr/x/;/opt/a/"},  // a merged root moves last
        {L"/;/", "/;/"},
        {L"", ""},
        {L"\\0", ""},
        {L";/opt/a/", "/opt/a/"},
    };
    for (const auto& [input, expected] : cases) {
        std::wstring text = input;
        EXPECT_EQ(take(provider.getRpmRootDirs(&text[0])), expected)
            << "input: " << utf8(input.c_str());
    }
}

// The merge done the plain way: each directory compared with every root in order.
std::string referenceRootDirs(const std::vector<std::wstring>& dirs) {
    std::list<std::wstring> roots;
    for (const std::wstring& dir : dirs) {
        wchar_t* slashedText = RegPlugin::getSlashedDir(dir.c_str());
        const std::wstring slashed = slashedText;
        std::free(slashedText);
        if (slashed.empty()) {
            continue;
        }
        auto root = roots.begin();
        std::wstring common;
        for (; root != roots.end(); ++root) {
            wchar_t* text = RegPlugin::getCommonDir(slashed.c_str(), root->c_str());
            common = text != nullptr ? text : L"";
            std::free(text);
            if (!common.empty() && common != L"/") {
                break;
            }
        }
        if (root != roots.end()) {
            roots.erase(root);
            roots.push_back(common);
        } else {
            roots.push_back(slashed);
        }
    }
    PluginSDK::VectorString joined;
    for (const std::wstring& root : roots) {
        joined += root.c_str();
    }
    return utf8(joined);
}

TEST(LegacyRpmParsingTest, RootDirectoriesMatchThePlainMerge) {
    LegacyRpmDataProvider provider;
    std::mt19937 random(7);
    const wchar_t alphabet[] = L"//ab";
    for (int round = 0; round < 3000; ++round) {
        // Long lists also go through the index of roots.
        std::vector<std::wstring> dirs(1 + random() % (round % 2 == 0 ? 8 : 60));
        PluginSDK::VectorString input;
        for (std::wstring& dir : dirs) {
            for (unsigned int n = random() % 7; n > 0; --n) {
                dir += alphabet[random() % 4];
            }
            input += dir.c_str();
        }
        std::wstring text = static_cast<const wchar_t*>(input);
        ASSERT_EQ(take(provider.getRpmRootDirs(&text[0])), referenceRootDirs(dirs))
            << "input: " << utf8(input);
    }
}

// An `rpm` first on PATH that records its arguments and calls, prints `output` and
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
    rpmtest::TempDir m_dir;
    std::string m_oldPath;
};

// A record from its fields written with "|" between them.
std::string record(std::string fields) {
    std::replace(fields.begin(), fields.end(), '|', '\v');
    return fields + "\v\r";
}

// A record of fifteen fields with only the first four given.
std::string plain(const std::string& nvar) {
    return record(nvar + "|Acme|Tue 02 Jan 2024|summary|||||||/opt/x/\a|");
}

const std::string kFormat =
    "%{NAME}\v%{VERSION}\v%{ARCH}\v%{RELEASE}\v%{VENDOR}\v%{INSTALLTIME:date}\v%{SUMMARY}\v"
    "[%{REQUIRENAME}\a]\v[%{REQUIREVERSION}\a]\v[%{REQUIREFLAGS:depflags}\a]\v"
    "[%{CONFLICTNAME}\a]\v[%{CONFLICTVERSION}\a]\v[%{CONFLICTFLAGS:depflags}\a]\v"
    "[%{DIRNAMES}\a]\v[%{DISTRIBUTION}\a]\v\r";

TEST(LegacyRpmDataProviderTest, RunsTheQueryAsOneShellWord) {
    const std::string command = "rpm -qa --queryformat '" + kFormat + "'";
    EXPECT_EQ(LegacyRpmDataProvider::queryCommand(), command);
    FakeRpm rpm("");
    rpmtest::TraceCapture trace;
    LegacyRpmDataProvider provider;
    EXPECT_EQ(provider.load(), 0);
    EXPECT_EQ(rpm.read("args"), "-qa\n--queryformat\n" + kFormat + "\n");
    EXPECT_TRUE(trace.sink().contains("Executing rpm command " + command));
    EXPECT_TRUE(trace.sink().contains("command executed with success, parsing command output"));
}

// Each package in load order as its key followed by "|" and the value of each
// property in `names` (space-separated), one package a line; then, for each key in
// `lookups`, "key->" and the key of the package it finds ("-" for none).
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
        EXPECT_EQ(p->type, RegistryPackage::PRODUCT);
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
    const char kZero[] = "b|1|noarch|1|V|D|x\0y|||||||/\a|";  // a zero byte in the summary
    std::string noCarriageReturn = plain("a|1|noarch|1");
    noCarriageReturn.pop_back();
    struct Case {
        const char* what;
        std::string output;
        std::string names, lookups;  // see show()
        std::string expected;
        std::string traceLine;  // a level 3 line that must be written
    };
    const std::vector<Case> cases = {
        {"every property",
         record("foo|1.2|x86_64|3.el9|Acme Corp|Tue 02 Jan 2024 10:00:00 AM UTC|The foo tool|"
                "/bin/sh\alibc.so.6\a|\a2.3\a|\a>=\a|old-foo\a|2.0\a|<\a|"
                "/etc/foo/\a/usr/share/foo/\a/usr/share/doc/foo/\a|(none)\a"),
         all, "foo-1.2-3.el9",
         "foo-1.2-3.el9-x86_64|foo|3.el9|1.2.3.el9|1.2-3.el9|Acme Corp|Tue 02 Jan 2024 10:00:00 AM "
         "UTC|The foo tool|/bin/sh;libc.so.6|x86_64|;2.3|;>=|old-foo|2.0|<|/etc/foo/;/usr/share/|\n"
         "foo-1.2-3.el9->foo-1.2-3.el9-x86_64\n",
         "creating new package for foo-1.2-3.el9-x86_64"},
        {"a record cut short is skipped, the next is read",
         plain("a|1|noarch|1") + "b\v1\vnoarch\v2\vAcme\v\r" + plain("c|1|noarch|1"), "", "b-1-2",
         "a-1-1-noarch\nc-1-1-noarch\nb-1-2->-\n", "skipping line b\v1\vnoarch\v2\vAcme\v"},
        {"vendor empty or (none), kept as printed",
         record("a|1|noarch|1||D|S|||||||/\a|") + record("b|1|noarch|1|(none)|D|S|||||||/\a|"),
         "vendor", "", "a-1-1-noarch|\nb-1-1-noarch|(none)\n", ""},
        {"(none) dropped from arrays only",
         record("a|1|(none)|1|(none)|D|S|(none)\a|||(none)\ax\a|||(none)\a|(none)\a"),
         "vendor requireName arch conflictName installDir distribution", "",
         "a-1-1-(none)|(none)|||x||\n", ""},
        {"one version for two architectures: the short key finds the first",
         plain("a|1|x86_64|1") + plain("a|1|i686|1"), "", "a-1-1",
         "a-1-1-x86_64\na-1-1-i686\na-1-1->a-1-1-x86_64\n", ""},
        {"a repeated full key keeps the first record",
         record("a|1|noarch|1|V|D|first|||||||/\a|") + record("a|1|noarch|1|V|D|second|||||||/\a|"),
         "description", "", "a-1-1-noarch|first\n", ""},
        {"full keys colliding through hyphens in names",
         plain("a-1|2|x|3") + plain("a|1|3-x|2") + plain("a|1|3|2"), "", "a-1-2-3 a-1-2",
         "a-1-2-3-x\na-1-2-3->a-1-2-3-x\na-1-2->-\n", ""},
        {"no carriage return: one record", noCarriageReturn, "", "", "a-1-1-noarch\n", ""},
        {"empty output", "", "", "", "", ""},
        {"bytes that are not UTF-8",
         record("a|1|noarch|1|V|D|caf\xe9 \xff\xfe|||||||/\a|") + plain("b|1|noarch|1"),
         "description", "", "a-1-1-noarch|caf\xe9 \xff\xfe\nb-1-1-noarch|summary\n", ""},
        {"a zero byte costs one record only",
         plain("a|1|noarch|1") + record(std::string(kZero, sizeof kZero - 1)) +
             plain("c|1|noarch|1"),
         "", "", "a-1-1-noarch\nc-1-1-noarch\n", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.what) + "\noutput: " + rpmtest::printable(c.output));
        FakeRpm rpm(c.output);
        rpmtest::TraceCapture trace;
        LegacyRpmDataProvider provider;
        ASSERT_EQ(provider.load(), 0);
        EXPECT_EQ(show(provider, c.names, c.lookups), c.expected);
        if (!c.traceLine.empty()) {
            const std::vector<std::string> lines = trace.sink().messages(3);
            EXPECT_NE(std::find(lines.begin(), lines.end(), c.traceLine), lines.end())
                << rpmtest::printable(c.traceLine);
        }
        RegistryPackage* first = provider.getFirst();
        if (first != nullptr) {
            PluginSDK::String value(L"untouched");
            EXPECT_EQ(first->getProperty(L"Name", value), REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND);
            EXPECT_EQ(value, PluginSDK::String(L"untouched"));
        }
    }
}

TEST(LegacyRpmDataProviderTest, FailedCommandIsNeverRerun) {
    for (const std::string tail : {"exit 1", "kill -9 $$"}) {
        SCOPED_TRACE(tail);
        FakeRpm rpm(plain("a|1|noarch|1"), tail);
        rpmtest::TraceCapture trace;
        LegacyRpmDataProvider provider;
        RegistryPackage* found = nullptr;
        bool exists = false;
        PluginSDK::StringVector keys;
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(provider.getPackage(L"a-1-1-noarch", &found),
                      REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
            EXPECT_EQ(provider.packageExists(L"a-1-1-noarch", exists),
                      REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
            EXPECT_EQ(provider.enumPackages(RegistryPackage::ANY, keys),
                      REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
        }
        EXPECT_EQ(found, nullptr);
        EXPECT_EQ(rpm.read("calls"), "run\n");
        EXPECT_TRUE(trace.sink().contains("Unable to execute rpm command "));
        // Read while the command ran, then dropped with both keys.
        EXPECT_EQ(provider.size(), 0);
        EXPECT_EQ(provider.find(L"a-1-1-noarch"), nullptr);
        EXPECT_EQ(provider.find(L"a-1-1"), nullptr);
    }
}

}  // namespace
