#include "base/File.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string str(const String& s) {
    return static_cast<const char*>(s);
}

std::string joined(const ObjectArray<String>& names) {
    std::string out;
    for (int i = 0; i < names.size(); ++i) {
        out += (i == 0 ? "" : ",") + str(names[i]);
    }
    return out;
}

class FileTreeTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/filetest.XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(pattern));
        m_root = pattern;
        // b, a.txt (files), "z dir", dir (directories), "\xC3\xA9" (file, UTF-8 name),
        // link-dir -> dir, link-file -> b, dangling -> missing.
        for (const char* name : {"b", "a.txt", "\xC3\xA9"}) {
            std::FILE* f = std::fopen((m_root + "/" + name).c_str(), "w");
            ASSERT_NE(nullptr, f);
            std::fclose(f);
        }
        ASSERT_EQ(0, ::mkdir((m_root + "/dir").c_str(), 0755));
        ASSERT_EQ(0, ::mkdir((m_root + "/z dir").c_str(), 0755));
        ASSERT_EQ(0, ::symlink("dir", (m_root + "/link-dir").c_str()));
        ASSERT_EQ(0, ::symlink("b", (m_root + "/link-file").c_str()));
        ASSERT_EQ(0, ::symlink("missing", (m_root + "/dangling").c_str()));
    }
    void TearDown() override {
        if (!m_root.empty()) {
            std::system(("rm -rf '" + m_root + "'").c_str());
        }
    }
    std::string m_root;
};

TEST_F(FileTreeTest, ListSelectsByTypeInByteOrder) {
    const struct {
        File::ListTypes type;
        const char* expected;
    } cases[] = {
        {File::LIST_ALL, "a.txt,b,dangling,dir,link-dir,link-file,z dir,\xC3\xA9"},
        {File::LIST_FILES, "a.txt,b,dangling,link-file,\xC3\xA9"},
        {File::LIST_DIRECTORIES, "dir,link-dir,z dir"},
    };
    for (const auto& c : cases) {
        ObjectArray<String> names;
        names.add(String(L"kept"));
        EXPECT_EQ(0, File(m_root.c_str()).list(names, c.type)) << "type " << c.type;
        EXPECT_EQ(std::string("kept,") + c.expected, joined(names)) << "type " << c.type;
    }
}

TEST_F(FileTreeTest, ListOfMissingOrNonDirectoryReturnsErrno) {
    ObjectArray<String> names;
    EXPECT_EQ(ENOENT, File(m_root.c_str(), "nope").list(names, File::LIST_ALL));
    EXPECT_EQ(ENOTDIR, File(m_root.c_str(), "b").list(names, File::LIST_ALL));
    EXPECT_TRUE(names.isEmpty());
    ObjectArray<String> empty;
    EXPECT_EQ(0, File(m_root.c_str(), "dir").list(empty, File::LIST_ALL));
    EXPECT_TRUE(empty.isEmpty());
}

TEST_F(FileTreeTest, QueriesFollowLinks) {
    const struct {
        const char* name;
        bool exists, isFile, isDirectory;
    } cases[] = {
        {"b", true, true, false},          {"dir", true, false, true},
        {"link-dir", true, false, true},   {"link-file", true, true, false},
        {"dangling", false, false, false}, {"nope", false, false, false},
        {"\xC3\xA9", true, true, false},
    };
    for (const auto& c : cases) {
        const File file(String(m_root.c_str()), String(c.name));
        EXPECT_EQ(c.exists, file.exists()) << c.name;
        EXPECT_EQ(c.isFile, file.isFile()) << c.name;
        EXPECT_EQ(c.isDirectory, file.isDirectory()) << c.name;
    }
}

TEST(FileTest, JoinsDirectoryAndName) {
    const struct {
        const char* dir;
        const char* name;
        const char* expected;
    } cases[] = {
        {"/opt/app", "properties/version", "/opt/app/properties/version"},
        {"/opt/app/", "x", "/opt/app/x"},
        {"/", "etc", "/etc"},
        {"", "x", "x"},
        {"rel", "x", "rel/x"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, str(File(c.dir, c.name).getPath())) << c.dir << " + " << c.name;
        EXPECT_EQ(
            c.expected,
            str(File(String(c.dir).getWideString(), String(c.name).getWideString()).getPath()));
    }
}

TEST(FileTest, GetParent) {
    const struct {
        const char* path;
        const char* expected;
    } cases[] = {
        {"/a/b", "/a"}, {"/a/b/", "/a"}, {"/a//b", "/a"}, {"/a/b//", "/a"},
        {"/a", "/"},    {"/", "/"},      {"//", "/"},     {"a", ""},
        {"a/b", "a"},   {"", ""},        {"//a", "/"},    {"a/", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, str(File(c.path).getParent())) << "path: \"" << c.path << "\"";
    }
}

TEST(FileTest, NormalizePath) {
    const struct {
        const char* path;
        const char* expected;
    } cases[] = {
        {"", ""},
        {"/", "/"},
        {"/..", "/"},
        {"/../a", "/a"},
        {"/a/b/../c", "/a/c"},
        {"/a/./b//c", "/a/b/c"},
        {"//a///b", "/a/b"},
        {"/a/b/", "/a/b/"},
        {"/a/b/..", "/a"},
        {"/a/b/../", "/a/"},
        {"/a/..", "/"},
        {"a/../..", ".."},
        {"../../a", "../../a"},
        {"a/../../b", "../b"},
        {"./a", "a"},
        {"a/..", "."},
        {".", "."},
        {"/opt/app/bin/../lib/./x", "/opt/app/lib/x"},
        {"/caf\xC3\xA9/../x", "/x"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, str(File::NormalizePath(String(c.path))))
            << "path: \"" << c.path << "\"";
    }
}

}  // namespace
