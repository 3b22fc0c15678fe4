#include "RootView.h"

#include "Options.h"

namespace regscan {

// Not written yet.
int enterRoot(const std::string& rootDir, std::ostream& err) {
    err << "regscan: --root " << rootDir << ": not supported yet\n";
    return EXIT_STATUS_USAGE;
}

}  // namespace regscan
