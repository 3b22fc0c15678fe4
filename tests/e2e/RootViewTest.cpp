// regscan --root DIR: the registries of a system unpacked in a directory, read
// through a view where DIR is "/", without running DIR's programs.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "RegscanRunner.h"
#include "Requests.h"

namespace {

namespace fs = std::filesystem;

const std::string kRpmDb = std::string(REGSCAN_RPMDB_DIR) + "/db";
// Every run gets a time limit that a blocked read would exceed. The view has no
// /proc, which the leak checker of the sanitizer build needs at exit: leaks are
// checked by the runs without --root.
const char kTimeLimit[] = "timeout -s KILL 60 env ASAN_OPTIONS=detect_leaks=0:abort_on_error=1";

std::string statusWith(const std::string& package) {
    return "Package: " + package +
           "\nStatus: install ok installed\nVersion: 1.0\nArchitecture: all\n"
           "Description: inside the root\n\n";
}

// A registry file of every kind at its fixed place (relative to a root), and an
// Orlo tag under the install directory that the ISMP registry reports.
std::map<std::string, std::string> registryFiles() {
    std::map<std::string, std::string> files = e2e::xmlRegistryFiles();
    files["/root/vpd.properties"] =
        "I1|4|0|0|0|x|1=RootIsmp|Root ISMP product|true|Vendor|url|4.0|/opt/rootismp"
        "|0|0|0|0|4|\"_uninst\" \"uninstall.jar\" \"uninstall.dat\" \"\"|1|2|3|4|5|6|7|8|9\n";
    files["/opt/rootismp/properties/version/ismp.xml"] =
        "<Product><ProductName>RootIsmp</ProductName><ProductVersion>4.0</ProductVersion>"
        "</Product>";
    return files;
}

class RootViewTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!e2e::namespacesAvailable())
            GTEST_SKIP() << "needs root with mount namespaces and overlay mounts";
        root = std::string(REGSCAN_BINARY_DIR) + "/testdata/root-" + std::to_string(::getpid());
        fs::remove_all(root);
        fs::create_directories(root);
        // Readable for the normal-user case.
        fs::permissions(root, fs::perms::all, fs::perm_options::add);
        write("/etc/passwd", "root:x:0:0:root:/root:/bin/sh\n");
    }
    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }

    void write(const std::string& path, const std::string& content) {
        fs::create_directories(fs::path(root + path).parent_path());
        std::ofstream(root + path, std::ios::binary) << content;
    }
    void link(const std::string& path, const std::string& target) {
        fs::create_directories(fs::path(root + path).parent_path());
        fs::create_symlink(target, root + path);
    }
    void copyRpmDatabase() {
        fs::create_directories(root + "/var/lib/rpm");
        fs::copy(kRpmDb, root + "/var/lib/rpm", fs::copy_options::recursive);
    }

    e2e::RunResult run(std::vector<std::string> args, const std::string& input = "",
                       const std::string& prefix = kTimeLimit) {
        args.insert(args.begin(), {"--root", root});
        e2e::RunOptions options;
        options.input = input;
        options.prefix = prefix;
        return e2e::runRegscan(args, options);
    }

    std::string root;
};

TEST_F(RootViewTest, SameInventoryAsTheSameFilesInPlace) {
    write("/var/lib/dpkg/status", e2e::readFile("/var/lib/dpkg/status"));
    copyRpmDatabase();
    for (const auto& [path, content] : registryFiles())
        write(path, content);

    e2e::RunOptions inPlace;
    inPlace.files = registryFiles();
    inPlace.environment["HOME"] = e2e::kRpmHome;
    e2e::RunResult expected = e2e::runRegscan({"inventory", "--format", "json"}, inPlace);
    e2e::RunResult got = run({"inventory", "--format", "json"});
    ASSERT_EQ(expected.exitStatus, 0) << expected.err;
    ASSERT_EQ(got.exitStatus, 0) << got.err;
    EXPECT_EQ(got.out, expected.out);
    // Install directories under /usr are this machine's: always said in the trace.
    e2e::RunResult traced = run({"--trace", "2", "eval", "DpkgProductList"});
    EXPECT_NE(traced.err.find("/usr, /bin, /sbin and /lib* are this machine's own"),
              std::string::npos)
        << traced.err;
    for (const char* registry :
         {"\"rpm\"", "\"dpkg\"", "\"ismp\"", "\"any\"", "\"corvu\"", "\"orlo\""})
        EXPECT_NE(got.out.find(std::string("\"registry\": ") + registry), std::string::npos)
            << registry;
}

TEST_F(RootViewTest, LinksResolveInsideTheRootAndSpecialFilesDoNotBlock) {
    const struct {
        const char* what;
        const char* target;  // the dpkg status file is a link to this
        const char* listed;  // a package that must be listed, or null
        const char* err;     // expected within standard error, or null
    } cases[] = {
        {"absolute link", "/etc/shadow", "in-root-shadow", nullptr},
        {"relative link climbing out", "../../../../../../../../etc/shadow", "in-root-shadow",
         nullptr},
        {"link through /proc", "/proc/self/root/etc/passwd", nullptr, nullptr},
        {"link to a FIFO", "/var/fifo", nullptr, "/var/lib/dpkg/status is not a regular file"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        fs::remove_all(root + "/var");
        write("/etc/shadow", statusWith("in-root-shadow"));
        link("/var/lib/dpkg/status", c.target);
        ASSERT_EQ(::mkfifo((root + "/var/fifo").c_str(), 0644), 0);
        e2e::RunResult got = run({"eval", "DpkgProductList"});
        EXPECT_NE(got.exitStatus, 128 + 9) << "killed: the read blocked";
        if (c.listed) {
            EXPECT_EQ(got.out, std::string(c.listed) + "\n") << got.err;
        } else {
            EXPECT_EQ(got.out.find("bash"), std::string::npos) << "the machine's own packages";
        }
        if (c.err) {
            EXPECT_NE(got.err.find(c.err), std::string::npos) << got.err;
        }
    }
}

TEST_F(RootViewTest, TheRootsProgramsNeverRun) {
    // A product directory whose environment script and listing command would list
    // a package if they ran.
    write("/opt/prod/pdx_env.sh",
          "echo 'PDXMS0164I: Name        : sourced'\necho 'PDXMS0165I: Version     : 1'\n"
          "PATH=/opt/prod:$PATH; export PATH\n");
    write("/opt/prod/pdxcat",
          "#!/bin/sh\necho 'PDXMS0164I: Name        : evil'\necho 'PDXMS0165I: Version     : 1'\n");
    fs::permissions(root + "/opt/prod/pdxcat", fs::perms::owner_all, fs::perm_options::add);
    // Preloading a library of the root into this machine's programs is refused.
    write("/etc/ld.so.preload", root + "/opt/prod/evil.so\n");
    copyRpmDatabase();

    e2e::RunResult refused = run({"--set", "pdxDirectory=/opt/prod", "inventory"});
    EXPECT_EQ(refused.exitStatus, 2);
    EXPECT_NE(refused.err.find("Tessel catalog cannot be listed for a root"), std::string::npos)
        << refused.err;

    e2e::RunResult batch = run({"batch"},
                               "{\"config\": {\"pdxDirectory\": \"/opt/prod\"}}\n"
                               "{\"expression\": \"TesselCatalogList\"}\n"
                               "{\"expression\": \"RpmProductExists\", \"properties\": {\"code\": "
                               "\"synth5-5.5.5-1.el9-noarch\"}}\n");
    EXPECT_EQ(batch.out.find("evil"), std::string::npos) << batch.out;
    EXPECT_EQ(batch.out.find("sourced"), std::string::npos) << batch.out;
    EXPECT_NE(batch.out.find("{\"code\":0,\"result\":\"TRUE\"}"), std::string::npos)
        << "rpm of this machine, the root's database\n"
        << batch.out << batch.err;
    EXPECT_EQ(batch.err.find("preloaded"), std::string::npos) << batch.err;
}

TEST_F(RootViewTest, BadRootsAreRefused) {
    write("/file", "x");
    fs::create_directories(root + "/private");
    fs::permissions(root + "/private", fs::perms::owner_all);
    const std::string asNobody =
        std::string(kTimeLimit) + " setpriv --reuid=65534 --regid=65534 --clear-groups";
    const struct {
        std::string dir;
        const char* err;
        std::string prefix;
    } cases[] = {
        {root + "/missing", "No such file or directory", kTimeLimit},
        {root + "/file", "not a directory", kTimeLimit},
        {"/", "this is the machine's own root", kTimeLimit},
        {root + "/private", "cannot be read: Permission denied", asNobody},
        {root + "/../" + fs::path(root).filename().string() + "/..//..", nullptr, kTimeLimit},
    };
    for (const auto& c : cases) {
        e2e::RunOptions options;
        options.prefix = c.prefix;
        e2e::RunResult got = e2e::runRegscan({"--root", c.dir, "eval", "DpkgProductList"}, options);
        if (c.err) {
            EXPECT_EQ(got.exitStatus, 2) << c.dir;
            EXPECT_NE(got.err.find(c.err), std::string::npos) << c.dir << ": " << got.err;
        } else {
            EXPECT_NE(got.exitStatus, 128 + 9) << c.dir;
        }
    }
}

// A batch file or catalog named on the command line is this machine's, read even
// though the root has no such file.
TEST_F(RootViewTest, FilesNamedOnTheCommandLineAreTheMachines) {
    for (const auto& [path, content] : registryFiles())
        write(path, content);
    const std::string outside = root + "-files";
    fs::create_directories(outside);
    std::ofstream(outside + "/requests.jsonl")
        << "{\"expression\": \"IsmpProductExists\", \"properties\": {\"code\": \"I1@4.0.0.0\"}}\n";
    std::ofstream(outside + "/catalog.json")
        << "[{\"id\": \"root-ismp\", \"vendor\": \"Vendor\", \"name\": \"Root ISMP*\", "
           "\"version\": \"4.*\"}]";
    const struct {
        std::vector<std::string> args;
        const char* out;
    } cases[] = {
        {{"batch", outside + "/requests.jsonl"}, "{\"code\":0,\"result\":\"TRUE\"}"},
        {{"match", "--catalog", outside + "/catalog.json", "--format", "csv"}, "root-ismp"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[0]);
        e2e::RunResult got = run(c.args);
        EXPECT_EQ(got.exitStatus, 0) << got.err;
        EXPECT_NE(got.out.find(c.out), std::string::npos) << got.out << got.err;
    }
    e2e::RunResult missing = run({"batch", outside + "/missing.jsonl"});
    EXPECT_EQ(missing.exitStatus, 2);
    EXPECT_NE(missing.err.find("cannot open " + outside + "/missing.jsonl"), std::string::npos)
        << missing.err;
    std::error_code ignored;
    fs::remove_all(outside, ignored);
}

// As a normal user: a user namespace where the kernel allows one, else a clear error.
TEST_F(RootViewTest, NormalUserGetsAUserNamespaceOrAClearError) {
    write("/var/lib/dpkg/status", statusWith("as-nobody"));
    e2e::RunResult got =
        run({"eval", "DpkgProductList"}, "",
            std::string(kTimeLimit) + " setpriv --reuid=65534 --regid=65534 --clear-groups");
    if (got.exitStatus == 0) {
        EXPECT_EQ(got.out, "as-nobody\n");
    } else {
        EXPECT_TRUE(got.err.find("user namespace") != std::string::npos ||
                    got.err.find("Permission denied") != std::string::npos)
            << got.exitStatus << ": " << got.err;
    }
}

}  // namespace
