// --root DIR: makes this process see the system mounted at DIR at the fixed paths the
// plug-in reads.
#ifndef REGSCAN_ROOTVIEW_H
#define REGSCAN_ROOTVIEW_H

#include <ostream>
#include <string>

namespace regscan {

// Arranges the view of `rootDir` for the rest of the process. On failure writes a
// message to `err` and returns the exit status; returns 0 on success.
int enterRoot(const std::string& rootDir, std::ostream& err);

}  // namespace regscan

#endif
