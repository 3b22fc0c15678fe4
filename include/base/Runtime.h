// The process runtime: starts child processes and reads the process environment.
#ifndef HOSTSDK_BASE_RUNTIME_H
#define HOSTSDK_BASE_RUNTIME_H

#include "base/Export.h"
#include "base/ObjectArray.h"
#include "base/Process.h"
#include "base/String.h"
#include "base/StringMap.h"

class HOSTSDK_API Runtime {
  public:
    enum ExecFlags {
        EXEC_CAPTURE_OUTPUT = 1,  // the child's standard output goes to the Process
    };

    // The one runtime of the process; never null.
    static Runtime* getRuntime();

    // Starts `command`, split into words as a shell would split it without expanding
    // anything: blanks separate words; '...' keeps everything literally; "..." keeps
    // everything but \" \\ \$ \` which stand for the second character; outside quotes
    // \ makes the next character literal. The first word is the program: a word with
    // a "/" is taken as a path (a relative one from the working directory), any other
    // is looked up in the PATH of the child's environment (of this process's when
    // that has none).
    //
    // `environment`: name=value entries for the child; null inherits this process's.
    // `workingDirectory`: the child's working directory; null keeps this process's.
    // Standard input is /dev/null; standard error is inherited.
    //
    // Returns a new Process owned by the caller, or null when the command is empty,
    // has an unterminated quote, or the program could not be started (not found, not
    // executable, the working directory cannot be entered, fork failed).
    Process* exec(const String& command, const ObjectArray<String>* environment,
                  const String* workingDirectory, int flags);

    // The process environment as name=value entries, in the process's order.
    int getEnvironment(ObjectArray<String>& out) const;
    // The process environment as a map from name to value.
    int getEnvironment(StringMap& out) const;

    // Splits a command text as exec does; false on an unterminated quote or a
    // trailing backslash.
    static bool splitCommand(const String& command, ObjectArray<String>& words);

  private:
    Runtime() = default;
};

#endif
