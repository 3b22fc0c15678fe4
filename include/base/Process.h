// A child process started by Runtime::exec, with its captured standard output.
#ifndef HOSTSDK_BASE_PROCESS_H
#define HOSTSDK_BASE_PROCESS_H

#include <sys/types.h>

#include <string>

#include "base/ByteBuffer.h"
#include "base/Export.h"

// The child's standard output, read after the process has been waited for.
class HOSTSDK_API InputStream {
  public:
    InputStream();
    ~InputStream();
    InputStream(const InputStream&) = delete;
    InputStream& operator=(const InputStream&) = delete;

    // The next character, decoded from UTF-8 (see base/Utf8.h: an undecodable byte
    // gives one character in U+DC80..U+DCFF), or a negative number at the end.
    int read();
    // Everything not read yet, as bytes; the stream is then at its end.
    std::string readAll();
    // The same, handed over without a copy when nothing was read yet.
    ByteBuffer takeAll();

  private:
    friend class Process;
    ByteBuffer m_data;
    std::size_t m_position;
};

// Sees a child's standard output while Process::waitFor collects it, so that the
// output can be worked on while the child still writes.
class HOSTSDK_API OutputListener {
  public:
    virtual ~OutputListener();
    // Called after each piece is collected: `output` is everything collected so
    // far (its bytes may have moved since the last call), of which the bytes from
    // `from` on are new. The child writes on meanwhile, into the pipe.
    virtual void onOutput(const ByteBuffer& output, std::size_t from) = 0;
};

class HOSTSDK_API Process {
  public:
    // Deleting a process that has not been waited for kills the child (SIGKILL) and
    // reaps it.
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // Waits until the child has ended, collecting its standard output meanwhile, so
    // that a child writing more than a pipe holds never blocks. The pipe holds 1 MiB
    // where the system allows it; it is then emptied in large pieces, about once a
    // millisecond while the child writes, rather than after every write. Output that the
    // child's own children write after it has ended is not waited for. Returns 0
    // (also on later calls), or an errno value when the child could not be waited
    // for (for example ECHILD when it was reaped elsewhere); the process is then
    // forgotten: getPid() gives -1 and the destructor kills nothing.
    int waitFor();
    // The same, telling `listener` of every piece of output as it is collected,
    // the last one (collected after the child ended) too. The first call only.
    int waitFor(OutputListener& listener);
    // The child's exit status; 128 + the signal number when it was killed by a
    // signal; -1 before waitFor() has succeeded.
    int exitValue() const { return m_exitValue; }
    // Gives the child's resources back (descriptors; the child is reaped by
    // waitFor). The captured output stays readable. The object itself is deleted by
    // its owner.
    void release();
    // The captured standard output; owned by this process. Empty unless the process
    // was started with Runtime::EXEC_CAPTURE_OUTPUT.
    InputStream* getInputStream() { return &m_output; }
    pid_t getPid() const { return m_pid; }

  private:
    friend class Runtime;
    Process(pid_t pid, int outputFd);
    int waitAndCollect(OutputListener* listener);
    void forget();

    pid_t m_pid;
    int m_outputFd;
    int m_exitValue;
    bool m_waited;
    InputStream m_output;
};

#endif
