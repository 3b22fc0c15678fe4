#include "trace/Tracer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <mutex>

std::atomic<int> Tracer::s_level{0};

namespace {

// Where finished lines go. Created once and never destroyed, so that lines written
// while the process exits still find it.
struct Output {
    std::mutex mutex;
    TraceSink* sink = nullptr;
    int fd = STDERR_FILENO;
    bool ownsFd = false;
};

Output& output() {
    static Output* const instance = new Output;
    return *instance;
}

int openForAppend(const char* path) {
    return ::open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
}

// Swaps the stream output to `fd` (owned when `owns`), closing an owned old one.
void useDescriptor(int fd, bool owns) {
    Output& out = output();
    std::lock_guard<std::mutex> lock(out.mutex);
    if (out.ownsFd) {
        ::close(out.fd);
    }
    out.fd = fd;
    out.ownsFd = owns;
}

void writeAll(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(fd, data, size);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;  // nowhere to report it
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
}

}  // namespace

TraceSink::~TraceSink() = default;

void MemoryTraceSink::write(const TraceRecord& record) {
    m_lines.push_back(Line{record.level, record.component,
                           record.signature != nullptr ? record.signature : "",
                           record.file != nullptr ? record.file : "", record.line,
                           record.message != nullptr ? *record.message : std::string()});
}

std::vector<std::string> MemoryTraceSink::messages(int level) const {
    std::vector<std::string> result;
    for (const Line& line : m_lines) {
        if (line.level == level) {
            result.push_back(line.message);
        }
    }
    return result;
}

bool MemoryTraceSink::contains(const std::string& message) const {
    for (const Line& line : m_lines) {
        if (line.message == message) {
            return true;
        }
    }
    return false;
}

Tracer& Tracer::getInstance(Component component) {
    configureFromEnvironment();
    // The usual components live in a fixed table; any other value gets a tracer of
    // its own on first request. Neither is ever destroyed.
    enum { TABLE_SIZE = 8 };
    static Tracer table[TABLE_SIZE] = {
        Tracer(Component(0)), Tracer(Component(1)), Tracer(Component(2)), Tracer(Component(3)),
        Tracer(Component(4)), Tracer(Component(5)), Tracer(Component(6)), Tracer(Component(7)),
    };
    const int index = static_cast<int>(component);
    if (index >= 0 && index < TABLE_SIZE) {
        return table[index];
    }
    static std::mutex mutex;
    static auto* const others = new std::map<int, std::unique_ptr<Tracer>>;
    std::lock_guard<std::mutex> lock(mutex);
    std::unique_ptr<Tracer>& slot = (*others)[index];
    if (!slot) {
        slot.reset(new Tracer(component));
    }
    return *slot;
}

void Tracer::configureFromEnvironment() {
    static std::once_flag once;
    std::call_once(once, [] {
        const char* level = std::getenv("HOSTSDK_TRACE_LEVEL");
        int value = 0;
        if (level != nullptr && level[0] >= '0' && level[0] <= '0' + MAX_LEVEL &&
            level[1] == '\0') {
            value = level[0] - '0';
        }
        const char* file = std::getenv("HOSTSDK_TRACE_FILE");
        if (file != nullptr && *file != '\0') {
            const int fd = openForAppend(file);
            if (fd >= 0) {
                useDescriptor(fd, true);
            }
        }
        s_level.store(value, std::memory_order_relaxed);
    });
}

void Tracer::setLevel(int level) {
    configureFromEnvironment();
    if (level < 0) {
        level = 0;
    } else if (level > MAX_LEVEL) {
        level = MAX_LEVEL;
    }
    s_level.store(level, std::memory_order_relaxed);
}

void Tracer::setSink(TraceSink* sink) {
    configureFromEnvironment();
    Output& out = output();
    std::lock_guard<std::mutex> lock(out.mutex);
    out.sink = sink;
}

int Tracer::setOutputFile(const char* path) {
    configureFromEnvironment();
    if (path == nullptr) {
        useDescriptor(STDERR_FILENO, false);
        return 0;
    }
    const int fd = openForAppend(path);
    if (fd < 0) {
        return errno;
    }
    useDescriptor(fd, true);
    return 0;
}

std::string Tracer::format(const TraceRecord& record) {
    long long seconds = record.timeMicros / 1000000;
    long long micros = record.timeMicros % 1000000;
    if (micros < 0) {
        micros += 1000000;
        --seconds;
    }
    const std::time_t when = static_cast<std::time_t>(seconds);
    std::tm utc{};
    char stamp[64];
    if (::gmtime_r(&when, &utc) == nullptr ||
        std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &utc) == 0) {
        std::snprintf(stamp, sizeof stamp, "%lld", seconds);
    }
    char head[256];
    std::snprintf(head, sizeof head, "%s.%06lldZ L%d C%d ", stamp, micros, record.level,
                  record.component);
    std::string line(head);
    line += record.file != nullptr ? record.file : "?";
    line += ':';
    line += std::to_string(record.line);
    line += " [";
    if (record.signature != nullptr) {
        line += record.signature;
    }
    line += "] ";
    if (record.message != nullptr) {
        line += *record.message;
    }
    return line;
}

void Tracer::emit(const TraceRecord& record) {
    Output& out = output();
    std::lock_guard<std::mutex> lock(out.mutex);
    if (out.sink != nullptr) {
        out.sink->write(record);
        return;
    }
    std::string line = format(record);
    line += '\n';
    writeAll(out.fd, line.data(), line.size());
}
