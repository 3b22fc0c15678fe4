// --root DIR: makes this process see the system mounted at DIR at the fixed paths the
// plug-in reads, without ever running a program that belongs to DIR.
//
// The view is a private mount namespace (a user namespace too when not run as root)
// whose root is a fresh tmpfs holding:
//   - every top-level entry of DIR (directories and files bound read-only, symbolic
//     links copied), so that DIR's own symbolic links resolve inside DIR;
//   - this machine's /usr, /bin, /sbin and /lib* (bound read-only, or the same links)
//     in place of DIR's, for the programs the plug-in runs (rpm); DIR's own files under
//     those directories are not visible;
//   - /dev/null, /dev/zero, /dev/full, /dev/random and /dev/urandom; no /proc, /sys;
//   - DIR's rpm database (found at var/lib/rpm or usr/lib/sysimage/rpm inside DIR)
//     bound at a private place that rpm is pointed at through HOME's .rpmmacros.
// DIR's files that could make this machine's programs run DIR's code (the dynamic
// loader's preload list and cache, rpm's and popt's configuration) are masked, the
// environment is reduced to what the plug-in needs, the Tessel listing command is
// replaced by one that fails, and a registry file that is not a regular file (a FIFO,
// a device) reads as empty instead of blocking.
#ifndef REGSCAN_ROOTVIEW_H
#define REGSCAN_ROOTVIEW_H

#include <ostream>
#include <string>

#include "Options.h"

namespace regscan {

// Arranges the view of options.rootDir for the rest of the process; the plug-in
// must already be loaded. On failure writes a message to `err` and returns the exit
// status (EXIT_STATUS_USAGE); returns 0 on success.
int enterRoot(const Options& options, std::ostream& err);

}  // namespace regscan

#endif
