// A missing real component (rpm, dpkg-query, unshare, overlays, the test rpm
// database) fails the test, since tools/setup.sh installs them all; only
// REGSCAN_ALLOW_SKIP=1 turns that into a skip.
#ifndef REGSCAN_TESTS_SUPPORT_REALCOMPONENTS_H
#define REGSCAN_TESTS_SUPPORT_REALCOMPONENTS_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace regscan_test {

inline bool skipAllowed() {
    const char* allow = std::getenv("REGSCAN_ALLOW_SKIP");
    return allow != nullptr && std::strcmp(allow, "1") == 0;
}

}  // namespace regscan_test

// Use in a test body or SetUp(): returns from it, failing (or skipping, when allowed)
// unless `available` holds. `what` names the missing component for the message.
#define REGSCAN_REQUIRE_COMPONENT(available, what)                                         \
    do {                                                                                   \
        if (!(available)) {                                                                \
            if (::regscan_test::skipAllowed()) {                                           \
                GTEST_SKIP() << what << " (skipped: REGSCAN_ALLOW_SKIP=1)";                \
            }                                                                              \
            FAIL() << what << ": run tools/setup.sh, or set REGSCAN_ALLOW_SKIP=1 to skip"; \
        }                                                                                  \
    } while (false)

#endif
