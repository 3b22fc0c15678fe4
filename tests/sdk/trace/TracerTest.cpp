#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>
#include <vector>

#include "../TempDir.h"
#include "base/String.h"
#include "trace/Trace.h"
#include "trace/Tracer.h"

// Counts every allocation (array forms forward here) to prove that a filtered line
// allocates nothing. Out of line so that no inlined new is paired with free().
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
void operator delete(void* p) noexcept {
    rawRelease(p);
}
void operator delete(void* p, std::size_t) noexcept {
    rawRelease(p);
}

namespace {

std::vector<std::string> readLines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
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
    const String baseText(L"a text longer than the short-string buffer");
    for (int setting = 0; setting <= Tracer::MAX_LEVEL; ++setting) {
        Tracer::setLevel(setting);
        for (int level = 0; level <= Tracer::MAX_LEVEL + 1; ++level) {
            m_sink.clear();
            const long before = g_allocations.load();
            {
                Trace trace(tracer, "Filter::test()");
                trace.level = level;
                // Pieces long enough (ints twice) that formatting any one would allocate.
                trace << trace.pos(__FILE__, __LINE__) << "narrow text, longer than sixteen"
                      << L"wide text, longer than sixteen" << baseText << INT_MIN << INT_MIN
                      << LONG_MIN << UINT_MAX << UINT_MAX << ULONG_MAX << LLONG_MIN << ULLONG_MAX
                      << 'c' << L'w' << Trace::Modifier(0);
            }
            const long allocated = g_allocations.load() - before;
            const bool wanted = level >= 1 && level <= setting;
            EXPECT_EQ(m_sink.lines().size(), wanted ? 1u : 0u) << setting << "/" << level;
            EXPECT_TRUE(wanted || allocated == 0) << setting << "/" << level << ": " << allocated;
        }
    }
}

TEST(TracerFormat, LineShape) {
    const std::string message = "msg [with]\ttab";
    const TraceRecord record{1795317255123456LL, 2, 5, "Reg::f()", "src/a.cpp", 42, &message};
    EXPECT_EQ(Tracer::format(record),
              "2026-11-22T03:14:15.123456Z L2 C5 src/a.cpp:42 [Reg::f()] " + message);
}

// Unfinished lines are dropped; a modifier without a started line writes nothing.
TEST_F(TracerTest, OutputFileGetsWholeLinesAppended) {
    const TempDir dir;
    const std::string path = dir.write("trace.log", "earlier\n");
    Tracer::setSink(nullptr);
    Tracer::setLevel(3);
    ASSERT_EQ(Tracer::setOutputFile(path.c_str()), 0);
    EXPECT_EQ(Tracer::setOutputFile((dir.path() + "/missing/x.log").c_str()), ENOENT);
    {
        Trace trace(Tracer::getInstance(Tracer::COMPONENT_PLUGIN), L"Reg::f(wchar_t *) \u00FC");
        trace.level = 2;
        trace << trace.pos("src/x.cpp", 42) << "Property " << String(L"gr\u00FC\u00DF")
              << " not found. " << L"\U0001D11E" << ' ' << -7 << L' ' << -8L << ' '
              << static_cast<const char*>(nullptr) << static_cast<const wchar_t*>(nullptr)
              << Trace::Modifier(0);
        trace << trace.pos("src/z.cpp", 1) << "dropped: never ended";
        trace << trace.pos("src/z.cpp", 2) << "info" << Trace::Modifier(0);
        trace << "after the end" << Trace::Modifier(0);
        trace << trace.pos("src/z.cpp", 3) << "dropped: unfinished at scope end";
    }
    const std::vector<std::string> lines = readLines(path);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], "earlier");
    EXPECT_EQ(lines[1].substr(27),
              " L2 C5 src/x.cpp:42 [Reg::f(wchar_t *) \xC3\xBC] Property gr\xC3\xBC\xC3\x9F "
              "not found. \xF0\x9D\x84\x9E -7 -8 (null)(null)");
    EXPECT_EQ(lines[2].substr(27), " L2 C5 src/z.cpp:2 [Reg::f(wchar_t *) \xC3\xBC] info");
}

// Runs this test again in a child whose environment configures tracing.
TEST(TracerEnvironment, ReadOnceOnFirstUse) {
    if (std::getenv("TRACER_TEST_CHILD") != nullptr) {
        Trace trace(Tracer::getInstance(Tracer::COMPONENT_SDK), "Env::child()");
        setenv("HOSTSDK_TRACE_LEVEL", "3", 1);  // too late: already read
        for (int level = 1; level <= 3; ++level) {
            trace.level = level;
            trace << trace.pos("env.cpp", level) << "level " << level << Trace::Modifier(0);
        }
        return;
    }
    char self[4096] = {};
    ASSERT_GT(readlink("/proc/self/exe", self, sizeof self - 1), 0);
    const TempDir dir;
    const std::string path = dir.path() + "/env.log";
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"2", {"level 1", "level 2"}},
        {"1x", {}},
    };
    for (const auto& c : cases) {
        const std::string command =
            "TRACER_TEST_CHILD=1 HOSTSDK_TRACE_LEVEL='" + std::string(c.first) +
            "' HOSTSDK_TRACE_FILE='" + path + "' '" + self +
            "' --gtest_filter=TracerEnvironment.ReadOnceOnFirstUse >/dev/null";
        ASSERT_EQ(std::system(command.c_str()), 0) << "HOSTSDK_TRACE_LEVEL=" << c.first;
        std::vector<std::string> messages;
        for (const std::string& line : readLines(path)) {
            EXPECT_NE(line.find(" C2 env.cpp:"), std::string::npos) << line;
            messages.push_back(line.substr(line.find("] ") + 2));
        }
        EXPECT_EQ(messages, c.second) << "HOSTSDK_TRACE_LEVEL=" << c.first;
        unlink(path.c_str());
    }
}

}  // namespace
