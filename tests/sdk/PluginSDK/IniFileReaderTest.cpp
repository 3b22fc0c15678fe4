#include "PluginSDK/IniFileReader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "base/Utf8.h"

using PluginSDK::IniFileReader;

namespace {

class IniFileReaderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/inireader-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_dir = pattern;
        m_path = m_dir + "/test.ini";
    }
    void TearDown() override {
        unlink(m_path.c_str());
        rmdir(m_dir.c_str());
    }
    std::wstring write(const std::string& content) {
        std::ofstream(m_path, std::ios::binary) << content;
        return Utf8::decode(m_path.c_str());
    }
    std::string m_dir;
    std::string m_path;
};

TEST_F(IniFileReaderTest, SectionsKeysAndComments) {
    const IniFileReader reader(write("\xEF\xBB\xBF"
                                     "location = /opt/corvu/   \r\n"
                                     "  # comment = no\n"
                                     "; other = no\n"
                                     "\n"
                                     "plain line without separator\n"
                                     "= empty key\n"
                                     "url=http://host/?a=b&c=d\r\n"
                                     "bad = \xFF!\n"
                                     "[ main ]\n"
                                     "key=first\n"
                                     "key = second\n"
                                     "Key = upper\n"
                                     "empty =\n"
                                     "[broken\n"
                                     "after = still main\n"
                                     "[other]\r\n"
                                     "name = gr\xC3\xBC\xC3\x9F\n"
                                     "[main]\n"
                                     "last = no newline")
                                   .c_str());
    ASSERT_TRUE(reader.isLoaded());
    struct Lookup {
        const wchar_t* section;
        const wchar_t* key;
        const wchar_t* expected;  // null: absent
    };
    const std::wstring bad = std::wstring(1, wchar_t(0xDCFF)) + L"!";
    const std::vector<Lookup> lookups = {
        {L"", L"location", L"/opt/corvu/"},
        {L"", L"url", L"http://host/?a=b&c=d"},
        {L"", L"bad", bad.c_str()},
        {L"", L"# comment", nullptr},
        {L"", L"; other", nullptr},
        {L"", L"", nullptr},
        {L"", L"key", nullptr},
        {L"main", L"key", L"second"},
        {L"main", L"Key", L"upper"},
        {L"main", L"empty", L""},
        {L"main", L"after", L"still main"},
        {L"main", L"last", L"no newline"},
        {L" main ", L"key", nullptr},
        {L"other", L"name", L"gr\u00FC\u00DF"},
        {L"other", L"key", nullptr},
        {L"missing", L"key", nullptr},
    };
    for (const Lookup& l : lookups) {
        std::wstring value = L"untouched";
        const bool found = reader.getProperty(l.section, l.key, value);
        const std::string where = "[" + Utf8::encode(l.section) + "] " + Utf8::encode(l.key);
        EXPECT_EQ(found, l.expected != nullptr) << where;
        EXPECT_EQ(value, l.expected != nullptr ? l.expected : L"untouched") << where;
    }
}

TEST_F(IniFileReaderTest, UnreadableInputsAreNotLoaded) {
    EXPECT_TRUE(IniFileReader(write("").c_str()).isLoaded());
    const std::wstring missing = Utf8::decode((m_dir + "/missing.ini").c_str());
    const std::wstring directory = Utf8::decode(m_dir.c_str());
    for (const wchar_t* path :
         {static_cast<const wchar_t*>(nullptr), L"", missing.c_str(), directory.c_str()}) {
        const IniFileReader reader(path);
        EXPECT_FALSE(reader.isLoaded()) << (path ? Utf8::encode(path) : "(null)");
        std::wstring value = L"untouched";
        EXPECT_FALSE(reader.getProperty(L"", L"location", value));
        EXPECT_EQ(value, L"untouched");
    }
}

}  // namespace
