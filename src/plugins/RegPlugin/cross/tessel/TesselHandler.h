// Runs one command of the software-distribution product in the product's
// directory, with the product's environment script sourced first, and returns the
// command's standard output as lines.
#ifndef REGPLUGIN_CROSS_TESSEL_TESSELHANDLER_H
#define REGPLUGIN_CROSS_TESSEL_TESSELHANDLER_H

#include <cstddef>

#include "PluginSDK/Types.h"
#include "base/ByteBuffer.h"
#include "base/ObjectArray.h"
#include "base/Process.h"
#include "base/String.h"
#include "cross/tessel/TesselLineSink.h"

namespace RegPlugin {

class TesselHandler {
  public:
    // `directory` is the product directory (the "pdxDirectory" setting). It is only
    // ever the child's working directory, never part of a command line.
    explicit TesselHandler(const String& directory);

    // Starts "/bin/sh -c '. ./pdx_env.sh ; <command>'" in the product directory
    // with a copy of this process's environment and its standard output captured.
    // When the environment variable PDXCAT is set and not empty, its value is run
    // as it stands instead (split into words, no shell). On success stores the new
    // process in `*process` (owned by the caller) and returns 0; otherwise stores
    // null and returns REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI. A null `process`
    // gives -101 and starts nothing.
    TErrorCode createProcess(const String& command, Process** process);

    // Runs the command to completion and appends its output lines to `lines` (see
    // appendLines). Returns 0; REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI when the
    // command cannot be started or ends with a non-zero exit value (a child killed
    // by a signal counts as 128 + the signal), and then `lines` is left as it was.
    // The child is always reaped before this returns.
    TErrorCode runCommand(const String& command, ObjectArray<String>& lines);
    // The same, storing the command's whole output, as it wrote it, in `output`
    // (left as it was when the command fails). A `listener` sees the output as it
    // is collected, while the command runs, whatever the command's exit value.
    TErrorCode runCommand(const String& command, ByteBuffer& output,
                          OutputListener* listener = nullptr);

    // Hands the lines of `size` bytes of UTF-8 output to `sink`, in order. A line
    // feed or a carriage return ends a line; empty lines are never handed on (so CR
    // LF is one break), and text after the last line end is the last line. Bytes
    // that are not UTF-8 become characters of their own (see base/Utf8.h); a NUL
    // byte is a character like any other. A null `data` has no lines.
    static void splitLines(const char* data, std::size_t size, TesselLineSink& sink);
    // The same, appending the lines to `lines`.
    static void appendLines(const char* data, std::size_t size, ObjectArray<String>& lines);

    // The product directory.
    const String& getDirectory() const { return m_Directory; }

  private:
    String m_Directory;
};

}  // namespace RegPlugin

#endif
