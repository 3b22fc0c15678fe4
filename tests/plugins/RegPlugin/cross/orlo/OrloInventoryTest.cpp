#include "cross/orlo/OrloInventory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "OrloTestSupport.h"

namespace RegPluginTest {
namespace {

using RegPlugin::OrloInventory;
using RegPlugin::OrloProduct;
using Strings = std::vector<std::string>;

TEST(OrloInventoryTest, ScansTheTagDirectoryOfEachCandidate) {
    TagTree tree;
    const std::string root = tree.path();
    tree.tag("a", "a.xml", tagRecord("Product", "A", "1"));
    // Any name is a tag file; entries that are not regular files are skipped, and
    // sub-directories are not entered.
    tree.tag("b", "notes.txt", tagRecord("Component", "B", "2"));
    tree.tag("b", "zz-not-xml", "this is not XML");
    tree.mkdirs("b/properties/version/sub");
    tree.tag("b/properties/version/sub", "deep.xml", tagRecord("Product", "Deep", "9"));
    ASSERT_EQ(::mkfifo((root + "/b/properties/version/fifo").c_str(), 0644), 0);
    ASSERT_EQ(::symlink("/dev/zero", (root + "/b/properties/version/dev").c_str()), 0);
    ASSERT_EQ(::symlink("loop", (root + "/b/properties/version/loop").c_str()), 0);
    ASSERT_EQ(::symlink(("../../../a/properties/version/a.xml"),
                        (root + "/b/properties/version/link.xml").c_str()),
              0);
    tree.mkdirs("empty/properties/version");
    tree.mkdirs("plain/properties");
    tree.write("plain/properties/version", "a file");
    tree.mkdirs("none");

    const std::vector<std::wstring> paths = {
        wide(root + "/a"),    wide(root + "/b/"),      wide(root + "/empty"), wide(root + "/plain"),
        wide(root + "/none"), wide(root + "/missing"), wide(root + "/a")};
    TraceCapture capture;
    std::vector<OrloProduct> products;
    OrloInventory().scanPaths(paths, products);

    // Each product carries its candidate path exactly as given, trailing "/" kept.
    EXPECT_EQ(summaries(products, root), (Strings{"Product A 1 @/a", "Product A 1 @/b/",
                                                  "Component B 2 @/b/", "Product A 1 @/a"}));
    EXPECT_EQ(narrow(products[1].tagFile), root + "/b/properties/version/link.xml");
    const MemoryTraceSink& sink = capture.sink();
    EXPECT_EQ(tracedWith(sink, 2, "Path: ", root),
              (Strings{"Path: /plain/properties/version is not directory, skipping",
                       "Path: /none/properties/version not existing, skipping",
                       "Path: /missing/properties/version not existing, skipping"}));
    EXPECT_EQ(tracedWith(sink, 2, "No files found in dir: ", root),
              Strings{"No files found in dir: /empty/properties/version"});
    EXPECT_EQ(tracedWith(sink, 2, "The file ", root),
              (Strings{"The file is not regular: /b/properties/version/dev, skipping",
                       "The file is not regular: /b/properties/version/fifo, skipping",
                       "The file does not exist: /b/properties/version/loop, skipping",
                       "The file is not regular: /b/properties/version/sub, skipping"}));
    Strings counts;
    for (const std::string& line : tracedWith(sink, 3, "Found ", root))
        if (line.find(" products in ") != std::string::npos)
            counts.push_back(line);
    EXPECT_EQ(counts, (Strings{"Found 1 products in /a/properties/version",
                               "Found 2 products in /b/properties/version",
                               "Found 0 products in /empty/properties/version",
                               "Found 1 products in /a/properties/version"}));
    EXPECT_EQ(tracedWith(sink, 2, "Looking at path: ", root).size(), paths.size());
}

TEST(OrloInventoryTest, DirectoryAndFileResults) {
    TagTree tree;
    const std::string dir = tree.mkdirs("x/properties/version");
    tree.tag("x", "bad.xml", "<Product/>");
    const std::string good = tree.tag("y", "good.xml", tagRecord("Fix", "F", "1"));
    std::vector<OrloProduct> products;
    OrloInventory inventory;
    EXPECT_FALSE(inventory.scanDirectory(wide(dir).c_str(), products));
    EXPECT_FALSE(inventory.scanDirectory(wide(tree.path() + "/nowhere").c_str(), products));
    EXPECT_FALSE(inventory.scanFile(wide(dir).c_str(), products));
    EXPECT_TRUE(products.empty());
    EXPECT_TRUE(inventory.scanFile(wide(good).c_str(), products));
    EXPECT_EQ(summaries(products), Strings{"Fix F 1 @"});
}

TEST(OrloInventoryTest, TagDirectoryWithManyEntries) {
    TagTree tree;
    const std::string dir = tree.mkdirs("many/properties/version");
    // Large enough to show the scan is linear and bounded; 100,000 behaves the same,
    // only slower.
    for (int i = 0; i < 20000; ++i)
        ::close(::creat((dir + "/e" + std::to_string(i)).c_str(), 0644));
    tree.tag("many", "e5", tagRecord("Product", "Five", "5"));
    std::vector<OrloProduct> products;
    OrloInventory().scanPaths({wide(tree.path() + "/many")}, products);
    EXPECT_EQ(summaries(products, tree.path()), Strings{"Product Five 5 @/many"});
}

}  // namespace
}  // namespace RegPluginTest
