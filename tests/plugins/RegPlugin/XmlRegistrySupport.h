// Helpers shared by the tests of the XML registries (InstallAnywhere, Corvu).
#ifndef TESTS_PLUGINS_REGPLUGIN_XMLREGISTRYSUPPORT_H
#define TESTS_PLUGINS_REGPLUGIN_XMLREGISTRYSUPPORT_H

#include <sys/stat.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "PluginSDK/StringVector.h"
#include "PluginTestSupport.h"
#include "common/CachedDataProvider.h"

namespace RegPluginTest {

// The hand-written fixture file tests/fixtures/`name`.
inline std::string fixturePath(const std::string& name) {
    return std::string(REGSCAN_SOURCE_DIR) + "/tests/fixtures/" + name;
}

inline std::string readFixture(const std::string& name) {
    std::ifstream in(fixturePath(name), std::ios::binary);
    EXPECT_TRUE(in.good()) << fixturePath(name);
    std::stringstream content;
    content << in.rdbuf();
    return content.str();
}

inline std::wstring wide(const std::string& text) {
    return PluginSDK::String(text.c_str()).c_str();
}

// The keys of a provider's cache in load order.
inline std::vector<std::string> cachedKeys(RegPlugin::CachedDataProvider& provider) {
    std::vector<std::string> keys;
    for (auto* package = provider.getFirst(); package != nullptr; package = provider.getNext())
        keys.push_back(package->key.toUtf8());
    return keys;
}

// The property `field` of `package`, or "<code>" when it cannot be had.
inline std::string propertyOf(RegPlugin::RegistryPackage& package, const wchar_t* field) {
    PluginSDK::String value;
    const TErrorCode rc = package.getProperty(field, value);
    return rc == 0 ? value.toUtf8() : "<" + std::to_string(rc) + ">";
}

// The messages of `sink`'s lines at `level` in the trace scope `signature`.
inline std::vector<std::string> scopeMessages(const MemoryTraceSink& sink, int level,
                                              const std::string& signature) {
    std::vector<std::string> out;
    for (const auto& line : sink.lines())
        if (line.level == level && line.signature == signature)
            out.push_back(line.message);
    return out;
}

// True when `message` matches `expected`, which may end in "..." to match a prefix.
inline bool messageMatches(const std::string& message, const std::string& expected) {
    const std::size_t dots = expected.size() >= 3 ? expected.size() - 3 : std::string::npos;
    if (dots != std::string::npos && expected.compare(dots, 3, "...") == 0)
        return message.compare(0, dots, expected, 0, dots) == 0;
    return message == expected;
}

inline std::string joined(const std::vector<std::string>& lines) {
    std::string out;
    for (const std::string& line : lines)
        out += "\n  " + line;
    return out;
}

// `actual` line by line against `expected` (see messageMatches).
inline void expectLines(const std::vector<std::string>& actual,
                        const std::vector<std::string>& expected) {
    ASSERT_EQ(actual.size(), expected.size()) << joined(actual);
    for (std::size_t i = 0; i < actual.size(); ++i)
        EXPECT_TRUE(messageMatches(actual[i], expected[i]))
            << actual[i] << "\nexpected: " << expected[i];
}

inline std::string repeat(const std::string& text, int times) {
    std::string out;
    while (times-- > 0)
        out += text;
    return out;
}

// A DOCTYPE for `root` whose entity &h; expands to 16^8 bytes, then `body` on line 2.
inline std::string entityBomb(const std::string& root, const std::string& body) {
    std::string out = "<!DOCTYPE " + root + " [<!ENTITY a \"" + repeat("a", 16) + "\">";
    for (char e = 'b'; e <= 'h'; ++e)
        out += std::string("<!ENTITY ") + e + " \"" + repeat({'&', char(e - 1), ';'}, 16) + "\">";
    return out + "]>\n" + body;
}

}  // namespace RegPluginTest

#endif
