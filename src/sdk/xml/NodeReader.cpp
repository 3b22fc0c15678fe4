// The installed expat is built with DTD support; its entity-expansion limits are
// declared only when this is defined.
#ifndef XML_DTD
#define XML_DTD
#endif

#include "xml/NodeReader.h"

#include <expat.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "TreeBuilder.h"

namespace {

// Bytes handed to the parser at a time.
constexpr int kChunkSize = 64 * 1024;
// Entity expansion is refused once the expanded text exceeds both this many bytes
// and this many times the size of the document read so far.
constexpr unsigned long long kAmplificationThreshold = 8ULL * 1024 * 1024;
constexpr float kMaximumAmplification = 100.0f;

// strerror_r comes in a GNU form (returns the text) and a POSIX form (fills buf).
[[maybe_unused]] const char* errorText(const char* result, const char* /*buffer*/) {
    return result;
}
[[maybe_unused]] const char* errorText(int /*result*/, const char* buffer) {
    return buffer;
}

std::string describeErrno(int error) {
    char buffer[256] = "unknown error";
    return errorText(strerror_r(error, buffer, sizeof buffer), buffer);
}

int clampLine(XML_Size line) {
    return line > static_cast<XML_Size>(INT_MAX) ? INT_MAX : static_cast<int>(line);
}

struct ParserFree {
    void operator()(XML_ParserStruct* parser) const { XML_ParserFree(parser); }
};
using ParserPtr = std::unique_ptr<XML_ParserStruct, ParserFree>;

class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) : m_fd(fd) {}
    ~FileDescriptor() {
        if (m_fd >= 0) {
            close(m_fd);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return m_fd; }

  private:
    int m_fd;
};

// Reads up to `size` bytes; returns the count (0 at the end) or -1 with errno set.
ssize_t readSome(int fd, void* buffer, std::size_t size) {
    for (;;) {
        ssize_t got = read(fd, buffer, size);
        if (got >= 0 || errno != EINTR) {
            return got;
        }
    }
}

// One run of NodeReader::process; returns its status.
class Run {
  public:
    Run(NodeSink& sink, const String& path) : m_sink(sink), m_path(path) {}

    int execute() {
        FileDescriptor file(open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
        if (file.get() < 0) {
            return ioFailure("Cannot open XML file '", errno, false);
        }
        struct stat info;
        if (fstat(file.get(), &info) != 0) {
            return ioFailure("Cannot open XML file '", errno, false);
        }
        if (!S_ISREG(info.st_mode)) {
            m_sink.onError(
                String(("Cannot read XML file '" + m_path + "': not a regular file").c_str()), 0);
            return NodeReader::STATUS_IO_ERROR;
        }
        return parse(
            [&file](void* buffer, std::size_t room) { return readSome(file.get(), buffer, room); },
            chunkFor(info.st_size));
    }

    // Parses the `size` bytes at `data`.
    int executeBuffer(const char* data, std::size_t size) {
        std::size_t offset = 0;
        return parse(
            [data, size, &offset](void* buffer, std::size_t room) {
                const std::size_t count = size - offset < room ? size - offset : room;
                if (count > 0) {
                    std::memcpy(buffer, data + offset, count);
                }
                offset += count;
                return static_cast<ssize_t>(count);
            },
            chunkFor(static_cast<off_t>(size)));
    }

  private:
    // Parses the bytes that `source(buffer, room)` delivers (a count, 0 at the end,
    // -1 with errno set on a read error) and hands the tree to the sink.
    // The parser's read buffer for a document of `size` bytes: small documents (tag
    // files, say) need no 64 KiB buffer, whose allocation would cost more than
    // their parse.
    static int chunkFor(off_t size) {
        return size >= 0 && size < kChunkSize ? static_cast<int>(size) + 1 : kChunkSize;
    }

    template <class Source>
    int parse(Source source, int chunkSize) {
        ParserPtr parser(XML_ParserCreate(nullptr));
        if (!parser) {
            throw std::bad_alloc();
        }
        // External parameter entities and the external DTD subset are never read, and
        // no external entity handler is installed, so no other file is ever opened.
        XML_SetParamEntityParsing(parser.get(), XML_PARAM_ENTITY_PARSING_NEVER);
        XML_SetBillionLaughsAttackProtectionMaximumAmplification(parser.get(),
                                                                 kMaximumAmplification);
        XML_SetBillionLaughsAttackProtectionActivationThreshold(parser.get(),
                                                                kAmplificationThreshold);
        TreeBuilder builder(parser.get(), m_sink);

        for (;;) {
            void* buffer = XML_GetBuffer(parser.get(), chunkSize);
            if (buffer == nullptr) {
                return parseFailure(parser.get(), builder);
            }
            ssize_t got = source(buffer, static_cast<std::size_t>(chunkSize));
            if (got < 0) {
                return ioFailure("Cannot read XML file '", errno, true);
            }
            bool last = got == 0;
            if (XML_ParseBuffer(parser.get(), static_cast<int>(got), last) != XML_STATUS_OK ||
                builder.stopped()) {
                return parseFailure(parser.get(), builder);
            }
            if (last) {
                break;
            }
        }

        std::unique_ptr<Node> root = builder.takeRoot();
        if (!root) {
            // A complete parse always has a root element; kept as a guard.
            m_sink.onError(String((m_path + ": no root element").c_str()), 0);
            return NodeReader::STATUS_PARSE_ERROR;
        }
        // The parser and the builder are done with the tree: hand it over.
        m_sink.onNodeTree(root.release());
        return NodeReader::STATUS_OK;
    }

    int ioFailure(const char* what, int error, bool critical) {
        String message((what + m_path + "': " + describeErrno(error)).c_str());
        if (critical) {
            m_sink.onCriticalError(message, 0);
        } else {
            m_sink.onError(message, 0);
        }
        return NodeReader::STATUS_IO_ERROR;
    }

    // Reports why the parse stopped. Called with the partial tree still in `builder`,
    // which frees it.
    int parseFailure(XML_Parser parser, const TreeBuilder& builder) {
        int line = clampLine(XML_GetCurrentLineNumber(parser));
        if (std::exception_ptr failure = builder.failure()) {
            std::rethrow_exception(failure);  // std::bad_alloc is reported by process()
        }
        if (builder.stopped()) {
            return NodeReader::STATUS_PARSE_ERROR;  // the sink asked to stop
        }
        XML_Error code = XML_GetErrorCode(parser);
        if (code == XML_ERROR_NO_MEMORY) {
            throw std::bad_alloc();
        }
        const XML_LChar* reason = XML_ErrorString(code);
        std::string message = m_path + ": " + (reason != nullptr ? reason : "parse error") +
                              " at line " + std::to_string(line) + ", column " +
                              std::to_string(XML_GetCurrentColumnNumber(parser) + 1);
        m_sink.onError(String(message.c_str()), line);
        return NodeReader::STATUS_PARSE_ERROR;
    }

    NodeSink& m_sink;
    std::string m_path;  // the path's bytes
};

}  // namespace

NodeReader::NodeReader(NodeSink& sink) : m_sink(sink), m_status(STATUS_OK) {}

NodeReader::~NodeReader() = default;

namespace {

// Runs one parse, reporting running out of memory to the sink; returns the status.
template <class Body>
int guardedRun(NodeSink& sink, const char* name, Body body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        try {
            std::string message = "Out of memory while reading XML file '";
            message += name;
            message += "'";
            sink.onCriticalError(String(message.c_str()), 0);
        } catch (const std::bad_alloc&) {
            // Nothing more can be reported.
        }
    }
    return NodeReader::STATUS_PARSE_ERROR;
}

const char* const kBufferName = "(buffer)";

}  // namespace

int NodeReader::process(const String& path, int /*flags*/) {
    m_status = STATUS_PARSE_ERROR;
    m_status = guardedRun(m_sink, static_cast<const char*>(path),
                          [this, &path] { return Run(m_sink, path).execute(); });
    return m_status;
}

int NodeReader::processBuffer(const char* data, std::size_t size, int /*flags*/) {
    m_status = STATUS_PARSE_ERROR;
    if (data == nullptr) {
        size = 0;
    }
    m_status = guardedRun(m_sink, kBufferName, [this, data, size] {
        return Run(m_sink, String(kBufferName)).executeBuffer(data, size);
    });
    return m_status;
}
