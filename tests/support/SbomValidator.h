// Runs tests/host/validate_sbom.py (the CycloneDX schema and structural checks) on an
// SBOM document held in memory.
#ifndef REGSCAN_TESTS_SUPPORT_SBOMVALIDATOR_H
#define REGSCAN_TESTS_SUPPORT_SBOMVALIDATOR_H

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace regscan_test {

// The Python that runs the validator: Debian's, where tools/setup.sh installs
// jsonschema, else the first python3 on PATH; empty when neither can import it.
inline std::string sbomValidatorPython() {
    static const std::string python = [] {
        for (const char* candidate : {"/usr/bin/python3", "python3"}) {
            std::string probe = std::string(candidate) + " -c 'import jsonschema' >/dev/null 2>&1";
            if (std::system(probe.c_str()) == 0) {
                return std::string(candidate);
            }
        }
        return std::string();
    }();
    return python;
}

inline bool sbomValidatorAvailable() {
    return !sbomValidatorPython().empty();
}

struct SbomVerdict {
    int status = -1;     // 0 valid, 1 invalid, anything else: the validator did not run
    std::string report;  // one line per problem
};

// Validates `text` as a document of `format` ("cyclonedx" or "spdx").
inline SbomVerdict validateSbom(const std::string& format, const std::string& text) {
    SbomVerdict verdict;
    char path[] = "/tmp/regscan-sbom-XXXXXX";
    int fd = mkstemp(path);
    if (fd < 0) {
        verdict.report = "mkstemp failed";
        return verdict;
    }
    close(fd);
    std::ofstream(path, std::ios::binary) << text;
    std::string command = sbomValidatorPython() + " '" + REGSCAN_SOURCE_DIR +
                          "/tests/host/validate_sbom.py' " + format + " '" + path + "' 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe != nullptr) {
        char buffer[4096];
        while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
            verdict.report += buffer;
        }
        int raw = pclose(pipe);
        verdict.status = raw != -1 && WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    }
    std::remove(path);
    return verdict;
}

}  // namespace regscan_test

#endif
