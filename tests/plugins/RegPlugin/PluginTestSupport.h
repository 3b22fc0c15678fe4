// Helpers shared by the plug-in's unit tests.
#ifndef TESTS_PLUGINS_REGPLUGIN_PLUGINTESTSUPPORT_H
#define TESTS_PLUGINS_REGPLUGIN_PLUGINTESTSUPPORT_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <ostream>
#include <string>

#include "PluginSDK/String.h"
#include "trace/Tracer.h"

namespace PluginSDK {
inline void PrintTo(const String& text, std::ostream* out) {
    *out << '"' << text.toUtf8() << '"';
}
}  // namespace PluginSDK

namespace RegPluginTest {

// Sends every trace line into memory while it lives.
class TraceCapture {
  public:
    TraceCapture() {
        Tracer::setSink(&m_sink);
        Tracer::setLevel(Tracer::MAX_LEVEL);
    }
    ~TraceCapture() {
        Tracer::setLevel(0);
        Tracer::setSink(nullptr);
    }
    MemoryTraceSink& sink() { return m_sink; }

  private:
    MemoryTraceSink m_sink;
};

// A private directory, removed with its files.
class TempDir {
  public:
    TempDir() {
        char pattern[] = "/tmp/regplugin-test-XXXXXX";
        EXPECT_NE(::mkdtemp(pattern), nullptr);
        m_path = pattern;
    }
    ~TempDir() { EXPECT_EQ(std::system(("rm -rf '" + m_path + "'").c_str()), 0); }
    const std::string& path() const { return m_path; }
    // Writes `content` to the file `name` and returns its path.
    std::string write(const std::string& name, const std::string& content) const {
        const std::string file = m_path + "/" + name;
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }

  private:
    std::string m_path;
};

// The first 300 bytes of `text`, control and non-ASCII bytes shown as \xNN.
inline std::string printable(const std::string& text) {
    std::string out;
    for (unsigned char c : text.substr(0, 300)) {
        if (c >= 0x20 && c < 0x7f)
            out += static_cast<char>(c);
        else
            out += {'\\', 'x', "0123456789abcdef"[c >> 4], "0123456789abcdef"[c & 15]};
    }
    return out;
}

}  // namespace RegPluginTest

#endif
