// The regscan program: from the command line to the exit status.
#ifndef REGSCAN_PROGRAM_H
#define REGSCAN_PROGRAM_H

#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace regscan {

// regscan's own version.
extern const char* const kRegscanVersion;

// Runs regscan with the arguments that follow the program name; batch requests
// without a file are read from `in`, results go to `out`, messages to `err`.
// Returns the exit status (see ExitStatus in Options.h).
int runProgram(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
               std::ostream& err);

}  // namespace regscan

#endif
