#include "base/File.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "../TempDir.h"

namespace {

std::string str(const String& s) {
    return static_cast<const char*>(s);
}

TEST(FileTest, ListSelectsByTypeInByteOrderAndQueriesFollowLinks) {
    const TempDir tmp;
    const std::string root = tmp.path() + "/";
    const std::string make = "cd '" + root +
                             "' && touch b a.txt \xC3\xA9 && mkdir dir 'z dir' && "
                             "ln -s dir link-dir && ln -s b link-file && ln -s missing dangling";
    ASSERT_EQ(0, std::system(make.c_str()));
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
        names.add(String(L"kept"));  // appended to, not replaced
        EXPECT_EQ(0, File(root.c_str()).list(names, c.type)) << "type " << c.type;
        std::string got;
        for (int i = 0; i < names.size(); ++i) {
            got += (i == 0 ? "" : ",") + str(names[i]);
        }
        EXPECT_EQ(c.expected, got) << "type " << c.type;
    }
    ObjectArray<String> names;
    EXPECT_EQ(ENOENT, File(root.c_str(), "nope").list(names, File::LIST_ALL));
    EXPECT_EQ(ENOTDIR, File(root.c_str(), "b").list(names, File::LIST_ALL));
    EXPECT_EQ(0, File(root.c_str(), "dir").list(names, File::LIST_ALL));
    EXPECT_TRUE(names.isEmpty());

    EXPECT_TRUE(File(String(root.c_str()), String("link-dir")).isDirectory());
    EXPECT_TRUE(File(String(root.c_str()), String("link-file")).isFile());
    const File dangling(String(root.c_str()), String("dangling"));
    EXPECT_FALSE(dangling.exists() || dangling.isFile() || dangling.isDirectory());
}

TEST(FileTest, JoinParentAndNormalize) {
    EXPECT_EQ("/opt/app/x", str(File("/opt/app/", "x").getPath()));
    EXPECT_EQ("x", str(File("", "x").getPath()));
    const struct {
        const char* path;
        const char* parent;
        const char* normalized;
    } cases[] = {
        {"/a/b/", "/a", "/a/b/"},
        {"/a//b", "/a", "/a/b"},
        {"/a", "/", "/a"},
        {"//", "/", "/"},
        {"a/", "", "a/"},
        {"", "", ""},
        {"/..", "/", "/"},
        {"/a/./b//c", "/a/./b", "/a/b/c"},
        {"/a/..", "/a", "/"},
        {"a/../../b", "a/../..", "../b"},
        {"../../a", "../..", "../../a"},
        {"a/..", "a", "."},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.parent, str(File(c.path).getParent())) << "parent of \"" << c.path << "\"";
        EXPECT_EQ(c.normalized, str(File::NormalizePath(String(c.path))))
            << "normalized \"" << c.path << "\"";
    }
}

}  // namespace
