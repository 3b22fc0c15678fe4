// Runs one shell command line as a child process and collects its standard output.
#ifndef REGPLUGIN_CROSS_RPM_LEGACYRPMUTIL_H
#define REGPLUGIN_CROSS_RPM_LEGACYRPMUTIL_H

#include <cstddef>

#include "PluginSDK/String.h"
#include "PluginSDK/Types.h"
#include "cross/rpm/MemoryBuffer.h"

namespace RegPlugin {

// Receives a command's output while it is being read (see execCommand).
class CommandOutputListener {
  public:
    virtual ~CommandOutputListener();
    // Called after each read that added bytes: `output` holds the `length` bytes
    // read so far at `output.data`. The listener may change those bytes in place
    // (not move them or resize the buffer); what it changed stays changed. The
    // storage may move before the next call, so keep offsets, not pointers.
    virtual void onOutput(MemoryBuffer& output, std::size_t length) = 0;
};

class LegacyRpmUtil {
  public:
    LegacyRpmUtil() = delete;

    // Runs `command` with /bin/sh -c, in a child that inherits the environment and
    // the other open descriptors; its standard error goes to /dev/null. Blocks until
    // the child's output ends and the child has ended.
    //
    // Everything the child writes to standard output is stored at the start of
    // `output` (grown one step at a time as needed) and followed by a zero byte.
    // Returns 0 when the child exited with status 0, otherwise:
    //   REG_PLUGIN_ERROR_INVALID_COMMAND        empty command (nothing is started)
    //   REG_PLUGIN_ERROR_PIPE_CREATION_FAILURE  pipe() failed
    //   REG_PLUGIN_ERROR_FORK_FAILURE           fork() failed
    //   REG_PLUGIN_ERROR_WAIT_CHILD_FAILURE     waitpid() failed
    //   REG_PLUGIN_ERROR_CHILD_EXEC_FAILURE     the child was killed by a signal or
    //                                           exited with a non-zero status, or
    //                                           its output did not fit in memory
    // The output read is kept in `output` on failure too. `output` is left as it was
    // when nothing was started.
    static TErrorCode execCommand(const PluginSDK::String& command, MemoryBuffer& output);

    // The same, and sets `o_Length` to the number of bytes read (the output may
    // itself contain zero bytes; 0 when nothing was read or started).
    static TErrorCode execCommand(const PluginSDK::String& command, MemoryBuffer& output,
                                  std::size_t& o_Length);

    // The same, and hands the output to `listener` (when not null) as it arrives,
    // so that it can be processed while the command still runs.
    static TErrorCode execCommand(const PluginSDK::String& command, MemoryBuffer& output,
                                  std::size_t& o_Length, CommandOutputListener* listener);
};

}  // namespace RegPlugin

#endif
