// Building regscan batch requests and reading what regscan wrote, for the
// end-to-end tests.
#ifndef REGSCAN_TESTS_E2E_REQUESTS_H
#define REGSCAN_TESTS_E2E_REQUESTS_H

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "RegscanRunner.h"

namespace e2e {

// The batch request that evaluates the expression `name` with `properties`.
inline nlohmann::json expr(const char* name, nlohmann::json properties = nlohmann::json::object()) {
    return nlohmann::json{{"expression", name}, {"properties", std::move(properties)}};
}

// "[scope] message" of each plug-in trace line (component 5) of `level` in `err`.
inline std::vector<std::string> traceLines(const std::string& err, int level) {
    std::vector<std::string> out;
    const std::string mark = " L" + std::to_string(level) + " C5 ";
    for (const std::string& line : lines(err)) {
        const std::size_t at = line.find(mark);
        if (at != std::string::npos && line.find(" [", at) != std::string::npos) {
            out.push_back(line.substr(line.find(" [", at) + 1));
        }
    }
    return out;
}

}  // namespace e2e

#endif
