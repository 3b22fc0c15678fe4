#include "cross/tessel/TesselHandler.h"

#include <cstdlib>
#include <string>

#include "RegPluginConstants.h"
#include "base/Runtime.h"
#include "base/Utf8.h"
#include "common/PluginTrace.h"

extern char** environ;

namespace RegPlugin {

namespace {

// The wrapper around the command: the product's environment script is sourced
// from the working directory (the product directory) first.
const wchar_t kShellPrefix[] = L"/bin/sh -c '. ./pdx_env.sh ; ";
const wchar_t kShellSuffix[] = L"'";
// Replaces the whole shell line when set and not empty.
const char kOverrideVariable[] = "PDXCAT";

// Appends each line to an array.
class ArraySink : public TesselLineSink {
  public:
    explicit ArraySink(ObjectArray<String>& lines) : m_lines(lines) {}
    void onLine(const wchar_t* text, std::size_t length) override {
        m_lines.add(String());
        m_lines[m_lines.size() - 1] = String(std::wstring(text, length));
    }

  private:
    ObjectArray<String>& m_lines;
};

}  // namespace

TesselHandler::TesselHandler(const String& directory) : m_Directory(directory) {}

TErrorCode TesselHandler::createProcess(const String& command, Process** process) {
    // The scope carries the name of the one-argument form, as it always has.
    REG_TRACE_SCOPE("TesselHandler::runCommand(const String &)");
    if (process == nullptr) {
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    String shellLine(kShellPrefix);
    shellLine.concat(command);
    shellLine.concat(String(kShellSuffix));
    const char* replacement = std::getenv(kOverrideVariable);
    if (replacement != nullptr && *replacement != '\0') {
        shellLine = String(replacement);
    }

    // One line: the command, then every environment entry on a line of its own.
    if (Tracer::isEnabled(3)) {
        regTrace_.level = 3;
        regTrace_ << regTrace_.pos(__FILE__, __LINE__)
                  << "Preparing process environment for command " << shellLine << "\n";
    }
    ObjectArray<String> environment;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        environment.add(String(*entry));
        regTrace_ << "\t" << environment[environment.size() - 1] << "\n";
    }
    regTrace_ << Trace::Modifier(0);

    Process* started = Runtime::getRuntime()->exec(shellLine, &environment, &m_Directory,
                                                   Runtime::EXEC_CAPTURE_OUTPUT);
    if (started != nullptr) {
        *process = started;
        return PluginSDK::RESULT_OK;
    }
    REG_TRACE(1, "Unable to create the process for command ", shellLine);
    *process = nullptr;
    return REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI;
}

TErrorCode TesselHandler::runCommand(const String& command, ObjectArray<String>& lines) {
    ByteBuffer output;
    const TErrorCode rc = runCommand(command, output);
    if (rc == PluginSDK::RESULT_OK) {
        appendLines(output.data(), output.size(), lines);
    }
    return rc;
}

TErrorCode TesselHandler::runCommand(const String& command, ByteBuffer& output,
                                     OutputListener* listener) {
    REG_TRACE_SCOPE("TesselHandler::runCommand(const String &, ObjectArray<String> &)");
    Process* process = nullptr;
    TErrorCode rc = createProcess(command, &process);
    if (rc != PluginSDK::RESULT_OK) {
        REG_TRACE(1, "Unable to run the listing command");
        return rc;
    }

    REG_TRACE(3, "Waiting for process to complete");
    // Collects the output while it waits, so a child writing more than a pipe holds
    // never blocks; a child that could not be waited for keeps the exit value -1.
    if (listener != nullptr) {
        process->waitFor(*listener);
    } else {
        process->waitFor();
    }
    const int exitValue = process->exitValue();
    REG_TRACE(3, "Process exited; code: ", exitValue);
    if (exitValue != 0) {
        REG_TRACE(1, "Process exited with ", exitValue, " exit code");
        rc = REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI;
    }
    process->release();

    if (rc == PluginSDK::RESULT_OK) {
        REG_TRACE(3, "Reading output from child process");
        output = process->getInputStream()->takeAll();
    }
    delete process;
    return rc;
}

void TesselHandler::splitLines(const char* data, std::size_t size, TesselLineSink& sink) {
    if (data == nullptr) {
        return;
    }
    // CR and LF are single bytes that never occur inside a UTF-8 sequence, so the
    // bytes can be split before they are decoded.
    std::wstring line;
    const char* start = data;
    const char* const end = data + size;
    for (const char* p = data; p < end; ++p) {
        if (*p == '\n' || *p == '\r') {
            if (p > start) {
                line.clear();
                Utf8::decode(start, static_cast<std::size_t>(p - start), line);
                sink.onLine(line.data(), line.size());
            }
            start = p + 1;
        }
    }
    if (end > start) {
        line.clear();
        Utf8::decode(start, static_cast<std::size_t>(end - start), line);
        sink.onLine(line.data(), line.size());
    }
}

void TesselHandler::appendLines(const char* data, std::size_t size, ObjectArray<String>& lines) {
    ArraySink sink(lines);
    splitLines(data, size, sink);
}

}  // namespace RegPlugin
