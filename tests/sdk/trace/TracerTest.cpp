#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>
#include <vector>

#include "base/String.h"
#include "trace/Trace.h"
#include "trace/Tracer.h"

// Every allocation of this executable is counted, so that a test can prove that a
// filtered trace line allocates nothing. The raw calls stay out of line so that the
// compiler does not pair an inlined new with free().
namespace {
std::atomic<long> g_allocations{0};

__attribute__((noinline)) void* rawAllocate(std::size_t size) {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size == 0 ? 1 : size)) {
        return p;
    }
    throw std::bad_alloc();
}

__attribute__((noinline)) void rawRelease(void* p) noexcept {
    std::free(p);
}
}  // namespace

void* operator new(std::size_t size) {
    return rawAllocate(size);
}
void* operator new[](std::size_t size) {
    return rawAllocate(size);
}
void operator delete(void* p) noexcept {
    rawRelease(p);
}
void operator delete[](void* p) noexcept {
    rawRelease(p);
}
void operator delete(void* p, std::size_t) noexcept {
    rawRelease(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    rawRelease(p);
}

namespace {

// "YYYY-MM-DDTHH:MM:SS.uuuuuuZ L<level> C<n> " and then the rest.
bool hasTimestampLevelComponent(const std::string& line) {
    int consumed = 0;
    std::sscanf(line.c_str(), "%*4d-%*2d-%*2dT%*2d:%*2d:%*2d.%*6dZ L%*1d C%*d %n", &consumed);
    return consumed > 0 && line[4] == '-' && line[10] == 'T' && line[19] == '.' && line[26] == 'Z';
}

std::vector<std::string> readLines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string makeTempDir() {
    char pattern[] = "/tmp/tracer-XXXXXX";
    return mkdtemp(pattern) != nullptr ? pattern : "";
}

class TracerTest : public ::testing::Test {
  protected:
    void SetUp() override { Tracer::setSink(&m_sink); }
    void TearDown() override {
        Tracer::setLevel(0);
        Tracer::setSink(nullptr);
        Tracer::setOutputFile(nullptr);
    }
    MemoryTraceSink m_sink;
};

TEST_F(TracerTest, FilteredLineWritesNothingAndAllocatesNothing) {
    Tracer& tracer = Tracer::getInstance(Tracer::COMPONENT_PLUGIN);
    const String baseText(L"base");
    for (int setting = 0; setting <= Tracer::MAX_LEVEL; ++setting) {
        Tracer::setLevel(setting);
        for (int level = 0; level <= Tracer::MAX_LEVEL + 1; ++level) {
            m_sink.clear();
            const bool wanted = level >= 1 && level <= setting;
            const long before = g_allocations.load();
            {
                Trace trace(tracer, "Filter::test()");
                trace.level = level;
                trace << trace.pos(__FILE__, __LINE__) << "text " << L"wide " << baseText << 1 << 2L
                      << 3u << 4ul << 5ll << 6ull << 'c' << L'w' << Trace::Modifier(0);
            }
            const long allocated = g_allocations.load() - before;
            const std::string what =
                "setting " + std::to_string(setting) + ", line level " + std::to_string(level);
            EXPECT_EQ(m_sink.lines().size(), wanted ? 1u : 0u) << what;
            if (!wanted) {
                EXPECT_EQ(allocated, 0) << what;
            }
        }
    }
}

TEST_F(TracerTest, LinesCarryLevelComponentPositionSignatureAndPieces) {
    Tracer::setLevel(3);
    Tracer& tracer = Tracer::getInstance(Tracer::COMPONENT_PLUGIN);
    EXPECT_EQ(&tracer, &Tracer::getInstance(Tracer::COMPONENT_PLUGIN));
    {
        Trace trace(tracer, L"RegPlugin::f(const wchar_t *) \u00FC");
        trace.level = 2;
        trace << trace.pos("src/x.cpp", 42) << "Property " << String(L"gr\u00FC\u00DF")
              << " not found. " << L"\U0001D11E" << ' ' << -7 << L' ' << -8L << ' '
              << static_cast<const char*>(nullptr) << static_cast<const wchar_t*>(nullptr)
              << Trace::Modifier(0);
        trace.level = 1;
        trace << trace.pos("src/y.cpp", 7) << "failure" << Trace::Modifier(0);
        trace.level = 3;
        trace << trace.pos("src/z.cpp", 1) << "dropped: never ended";
        trace << trace.pos("src/z.cpp", 2) << "info" << Trace::Modifier(0);
        trace << "after the end" << Trace::Modifier(0);
        trace << trace.pos("src/z.cpp", 3) << "dropped: unfinished at scope end";
    }
    {
        Trace other(Tracer::getInstance(static_cast<Tracer::Component>(42)), "Other::f()");
        other << other.pos("o.cpp", 9) << "odd component" << Trace::Modifier(0);
    }
    const std::vector<MemoryTraceSink::Line>& lines = m_sink.lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0].level, 2);
    EXPECT_EQ(lines[0].component, 5);
    EXPECT_EQ(lines[0].signature, "RegPlugin::f(const wchar_t *) \xC3\xBC");
    EXPECT_EQ(lines[0].file, "src/x.cpp");
    EXPECT_EQ(lines[0].line, 42);
    EXPECT_EQ(lines[0].message,
              "Property gr\xC3\xBC\xC3\x9F not found. \xF0\x9D\x84\x9E -7 -8 (null)(null)");
    EXPECT_EQ(m_sink.messages(1), std::vector<std::string>{"failure"});
    EXPECT_EQ(m_sink.messages(3), (std::vector<std::string>{"info", "odd component"}));
    EXPECT_FALSE(m_sink.contains("dropped: never ended"));
    EXPECT_EQ(lines[3].component, 42);
}

TEST(TracerFormat, LineShape) {
    const std::string message = "msg [with] brackets  and\ttab";
    struct Case {
        long long micros;
        const char* signature;
        const char* expected;
    };
    const std::vector<Case> cases = {
        {1795317255123456LL, "RegPlugin::f()",
         "2026-11-22T03:14:15.123456Z L2 C5 src/a.cpp:42 [RegPlugin::f()] "},
        {0, "", "1970-01-01T00:00:00.000000Z L2 C5 src/a.cpp:42 [] "},
        {-1, nullptr, "1969-12-31T23:59:59.999999Z L2 C5 src/a.cpp:42 [] "},
    };
    for (const Case& c : cases) {
        const TraceRecord record{c.micros, 2, 5, c.signature, "src/a.cpp", 42, &message};
        EXPECT_EQ(Tracer::format(record), std::string(c.expected) + message)
            << "micros " << c.micros;
    }
}

TEST_F(TracerTest, OutputFileGetsWholeLinesAppended) {
    const std::string dir = makeTempDir();
    const std::string path = dir + "/trace.log";
    std::ofstream(path) << "earlier\n";
    Tracer::setSink(nullptr);
    Tracer::setLevel(2);
    ASSERT_EQ(Tracer::setOutputFile(path.c_str()), 0);
    EXPECT_EQ(Tracer::setOutputFile((dir + "/missing/x.log").c_str()), ENOENT);

    Trace trace(Tracer::getInstance(Tracer::COMPONENT_PLUGIN), "File::test()");
    trace.level = 2;
    trace << trace.pos("src/f.cpp", 5) << "first" << Trace::Modifier(0);
    trace.level = 3;
    trace << trace.pos("src/f.cpp", 6) << "filtered" << Trace::Modifier(0);
    const std::vector<std::string> lines = readLines(path);
    unlink(path.c_str());
    rmdir(dir.c_str());
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "earlier");
    EXPECT_TRUE(hasTimestampLevelComponent(lines[1])) << lines[1];
    EXPECT_EQ(lines[1].substr(27), " L2 C5 src/f.cpp:5 [File::test()] first");
}

// Runs this test again in a child process whose environment configures tracing;
// returns the child's exit status.
int runChild(const std::string& level, const std::string& path) {
    char self[4096] = {};
    if (readlink("/proc/self/exe", self, sizeof self - 1) <= 0) {
        return -1;
    }
    const std::string command = "TRACER_TEST_CHILD=1 HOSTSDK_TRACE_LEVEL='" + level +
                                "' HOSTSDK_TRACE_FILE='" + path + "' '" + self +
                                "' --gtest_filter=TracerEnvironment.ReadOnceOnFirstUse >/dev/null";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(TracerEnvironment, ReadOnceOnFirstUse) {
    if (std::getenv("TRACER_TEST_CHILD") != nullptr) {
        Tracer& tracer = Tracer::getInstance(Tracer::COMPONENT_SDK);
        setenv("HOSTSDK_TRACE_LEVEL", "3", 1);  // too late: already read
        Trace trace(Tracer::getInstance(Tracer::COMPONENT_SDK), "Env::child()");
        for (int level = 1; level <= 3; ++level) {
            trace.level = level;
            trace << trace.pos("env.cpp", level) << "level " << level << Trace::Modifier(0);
        }
        EXPECT_EQ(tracer.getComponent(), Tracer::COMPONENT_SDK);
        return;
    }
    const std::string dir = makeTempDir();
    const std::string path = dir + "/env.log";
    const std::vector<std::pair<const char*, std::vector<std::string>>> cases = {
        {"2", {"level 1", "level 2"}},
        {"3", {"level 1", "level 2", "level 3"}},
        {"7", {}},
        {"1x", {}},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(runChild(c.first, path), 0) << "HOSTSDK_TRACE_LEVEL=" << c.first;
        std::vector<std::string> messages;
        for (const std::string& line : readLines(path)) {
            EXPECT_NE(line.find(" C2 env.cpp:"), std::string::npos) << line;
            messages.push_back(line.substr(line.find("] ") + 2));
        }
        EXPECT_EQ(messages, c.second) << "HOSTSDK_TRACE_LEVEL=" << c.first;
        unlink(path.c_str());
    }
    rmdir(dir.c_str());
}

}  // namespace
