// The built regscan program driven end to end with the real plug-in.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

struct Outcome {
    int status;
    std::string out, err;
};

std::string slurp(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// Runs regscan with `args` (shell words), feeding `input` to its standard input.
Outcome regscan(const std::string& args, const std::string& input) {
    const std::string base = ::testing::TempDir() + "regscan-" + std::to_string(getpid());
    std::ofstream(base + ".in", std::ios::binary) << input;
    std::string command = std::string("'") + REGSCAN_PROGRAM_PATH + "' " + args;
    int status =
        std::system((command + " <" + base + ".in >" + base + ".out 2>" + base + ".err").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp(base + ".out"),
            slurp(base + ".err")};
}

TEST(ProgramTest, CommandsResultsTracesAndExitStatus) {
    struct Case {
        const char* args;
        int status;
        const char* out;         // exact standard output
        const char* err;         // expected within standard error; null: nothing at all
        const char* input = "";  // standard input
    } cases[] = {
        {"names", 0,
         "PackageInfoEqual\nPackageInfoMatch\nIsmpProductList\nIsmpProductExists\nIsmpProductInfo\n"
         "VoidProductList\nVoidProductExists\nVoidProductInfo\nRpmProductList\nRpmProductExists\n"
         "RpmProductInfo\nDpkgProductList\nDpkgProductExists\nDpkgProductInfo\nCorvuList\n"
         "CorvuExists\nCorvuInfo\nTesselCatalogList\nTesselCatalogExists\nTesselCatalogInfo\n"
         "InstallAnywhereList\nInstallAnywhereExists\nInstallAnywhereInfo\nOrloProductList\n"
         "OrloProductInfo\n",
         nullptr},
        // Without --trace no trace lines, even for a rejected setting.
        {"--set showRemovedPackages=maybe eval VoidProductExists", 0, "FALSE\n", nullptr},
        {"--trace 2 --set showRemovedPackages=maybe eval VoidProductExists", 0, "FALSE\n",
         "Unexpected plugin property, skipping. plugin=[RegPlugin] name=[showRemovedPackages] "
         "value=[maybe]"},
        // "Yes" reaches the plug-in as the host's true text and is accepted silently.
        {"--trace 2 --set showUncommittedPackages=Yes eval VoidProductList", 0, "", nullptr},
        {"eval VoidProductInfo code=bash field=installDir", 0, "\n", nullptr},
        {"eval VoidProductList type=PTF", 3, "", "-13006 REG_PLUGIN_ERROR_INVALID_PRODUCT_TYPE"},
        {"eval OrloProductExists", 3, "", "-10008 ERROR_NO_SUCH_EXPRESSION"},
        {"eval RpmProductInfo", 3, "", "-13000 REG_PLUGIN_ERROR_UNSPECIFIED_CODE"},
        // One reply a line; a bad line makes the exit status 1. Each unknown request
        // walks a new iterator to its end (listing is off: this machine's packages
        // would otherwise fill the reply).
        {"batch", 1,
         "{\"code\":0,\"result\":\"FALSE\"}\n{\"error\":\"\\\"names\\\" must be true\"}\n"
         "{\"code\":0}\n{\"code\":0,\"size\":0,\"packages\":[]}\n"
         "{\"code\":0,\"size\":0,\"packages\":[]}\n",
         nullptr,
         "{\"expression\": \"VoidProductExists\"}\n{\"names\": false}\n"
         "{\"config\": {\"listUnmatchedSoftware\": \"FALSE\"}}\n{\"unknown\": true}\n"
         "{\"unknown\": true}\n"},
        {"batch /dev/null", 0, "", nullptr},
        {"batch /", 2, "", "cannot read /: it is a directory"},
        {"batch /nonexistent/requests", 2, "", "cannot open /nonexistent/requests"},
        {"eval X novalue", 2, "", "usage"},
        {"--trace-file /nonexistent/trace names", 2, "", "cannot open trace file"},
        {"--plugin /bin/sh names", 4, "", "cannot load plug-in /bin/sh"},
    };
    for (const Case& c : cases) {
        Outcome run = regscan(c.args, c.input);
        EXPECT_EQ(run.status, c.status) << c.args << "\nstderr:\n" << run.err;
        EXPECT_EQ(run.out, c.out) << c.args;
        EXPECT_TRUE(c.err ? run.err.find(c.err) != std::string::npos : run.err.empty())
            << c.args << "\nstderr:\n"
            << run.err;
    }
}

}  // namespace
