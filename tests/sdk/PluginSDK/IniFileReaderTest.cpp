#include "PluginSDK/IniFileReader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "../TempDir.h"
#include "base/Utf8.h"

using PluginSDK::IniFileReader;

namespace {

TEST(IniFileReaderTest, SectionsKeysCommentsAndMissingFiles) {
    const TempDir dir;
    const std::string path = dir.write("test.ini",
                                       "\xEF\xBB\xBF"
                                       "location = /opt/app/   \r\n"
                                       "  # comment = no\n"
                                       "; other = no\n"
                                       "plain line without separator\n"
                                       "url=http://host/?a=b&c=d\r\n"
                                       "bad = \xFF!\n"
                                       "[ main ]\n"
                                       "key=first\n"
                                       "key = second\n"
                                       "[broken\n"
                                       "after = still main\n"
                                       "[other]\r\n"
                                       "name = gr\xC3\xBC\xC3\x9F\n"
                                       "[ ]\n"
                                       "location = replaced in the unnamed section\n"
                                       "[main]\n"
                                       "last = no newline");
    const IniFileReader reader(Utf8::decode(path.c_str()).c_str());
    ASSERT_TRUE(reader.isLoaded());
    const struct {
        const wchar_t* section;
        const wchar_t* key;
        const wchar_t* expected;  // null: absent
    } lookups[] = {
        {L"", L"location", L"replaced in the unnamed section"},
        {L"", L"url", L"http://host/?a=b&c=d"},
        {L"", L"bad", L"\xDCFF!"},
        {L"", L"plain line without separator", nullptr},
        {L"", L"# comment", nullptr},
        {L"", L"; other", nullptr},
        {L"", L"key", nullptr},
        {L"main", L"key", L"second"},
        {L"main", L"after", L"still main"},
        {L"main", L"last", L"no newline"},
        {L" main ", L"key", nullptr},
        {L"other", L"name", L"gr\u00FC\u00DF"},
    };
    for (const auto& l : lookups) {
        std::wstring value = L"untouched";
        const bool found = reader.getProperty(l.section, l.key, value);
        const std::string where = "[" + Utf8::encode(l.section) + "] " + Utf8::encode(l.key);
        EXPECT_EQ(found, l.expected != nullptr) << where;
        EXPECT_EQ(value, l.expected != nullptr ? l.expected : L"untouched") << where;
    }
    // A missing file, a directory, a pipe (without blocking), "" and null are not readable.
    ASSERT_EQ(0, mkfifo((dir.path() + "/pipe").c_str(), 0644));
    const std::wstring missing = Utf8::decode((path + ".no").c_str()),
                       directory = Utf8::decode(dir.path().c_str()),
                       pipe = Utf8::decode((dir.path() + "/pipe").c_str());
    for (const wchar_t* p : {static_cast<const wchar_t*>(nullptr), L"", missing.c_str(),
                             directory.c_str(), pipe.c_str()}) {
        EXPECT_FALSE(IniFileReader(p).isLoaded()) << (p ? Utf8::encode(p) : "(null)");
    }
}

}  // namespace
