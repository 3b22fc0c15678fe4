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

class FileTreeTest : public ::testing::Test {
  protected:
    // Files b, a.txt, "\xC3\xA9"; directories dir, "z dir"; links to each and a dangling one.
    void SetUp() override {
        char pattern[] = "/tmp/filetest.XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(pattern));
        m_root = pattern;
        for (const char* name : {"b", "a.txt", "\xC3\xA9"}) {
            std::fclose(std::fopen((m_root + "/" + name).c_str(), "w"));
        }
        ASSERT_EQ(0, ::mkdir((m_root + "/dir").c_str(), 0755));
        ASSERT_EQ(0, ::mkdir((m_root + "/z dir").c_str(), 0755));
        ASSERT_EQ(0, ::symlink("dir", (m_root + "/link-dir").c_str()));
        ASSERT_EQ(0, ::symlink("b", (m_root + "/link-file").c_str()));
        ASSERT_EQ(0, ::symlink("missing", (m_root + "/dangling").c_str()));
    }
    void TearDown() override { std::system(("rm -rf '" + m_root + "'").c_str()); }
    std::string m_root;
};

TEST_F(FileTreeTest, ListSelectsByTypeInByteOrder) {
    const struct {
        File::ListTypes type;
        const char* expected;
    } cases[] = {
        {File::LIST_ALL, "kept,a.txt,b,dangling,dir,link-dir,link-file,z dir,\xC3\xA9"},
        {File::LIST_FILES, "kept,a.txt,b,dangling,link-file,\xC3\xA9"},
        {File::LIST_DIRECTORIES, "kept,dir,link-dir,z dir"},
    };
    for (const auto& c : cases) {
        ObjectArray<String> names;
        names.add(String(L"kept"));
        EXPECT_EQ(0, File(m_root.c_str()).list(names, c.type)) << "type " << c.type;
        std::string got;
        for (int i = 0; i < names.size(); ++i) {
            got += (i == 0 ? "" : ",") + str(names[i]);
        }
        EXPECT_EQ(c.expected, got) << "type " << c.type;
    }
    ObjectArray<String> names;
    EXPECT_EQ(ENOENT, File(m_root.c_str(), "nope").list(names, File::LIST_ALL));
    EXPECT_EQ(ENOTDIR, File(m_root.c_str(), "b").list(names, File::LIST_ALL));
    EXPECT_EQ(0, File(m_root.c_str(), "dir").list(names, File::LIST_ALL));
    EXPECT_TRUE(names.isEmpty());
}

TEST_F(FileTreeTest, QueriesFollowLinks) {
    EXPECT_TRUE(File(String(m_root.c_str()), String("link-dir")).isDirectory());
    EXPECT_TRUE(File(String(m_root.c_str()), String("link-file")).isFile());
    const File dangling(String(m_root.c_str()), String("dangling"));
    EXPECT_FALSE(dangling.exists() || dangling.isFile() || dangling.isDirectory());
}

TEST(FileTest, JoinAndParent) {
    EXPECT_EQ("/opt/app/x", str(File("/opt/app/", "x").getPath()));
    EXPECT_EQ("x", str(File("", "x").getPath()));
    const struct {
        const char* path;
        const char* parent;
    } cases[] = {
        {"/a/b/", "/a"}, {"/a//b", "/a"}, {"/a", "/"}, {"//", "/"}, {"a/", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.parent, str(File(c.path).getParent())) << "path: \"" << c.path << "\"";
    }
}

TEST(FileTest, NormalizePath) {
    const struct {
        const char* path;
        const char* expected;
    } cases[] = {
        {"", ""},
        {"/..", "/"},
        {"/a/./b//c", "/a/b/c"},
        {"/a/..", "/"},
        {"a/../../b", "../b"},
        {"../../a", "../../a"},
        {"a/..", "."},
        {"/opt/app/bin/../lib/./x", "/opt/app/lib/x"},
        {"/caf\xC3\xA9/../x", "/x"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, str(File::NormalizePath(String(c.path))))
            << "path: \"" << c.path << "\"";
    }
}

}  // namespace
