// Tag trees for the Orlo tests: installation directories with
// "properties/version" tag files, made under a private directory.
#ifndef TESTS_PLUGINS_REGPLUGIN_CROSS_ORLO_ORLOTESTSUPPORT_H
#define TESTS_PLUGINS_REGPLUGIN_CROSS_ORLO_ORLOTESTSUPPORT_H

#include <sys/stat.h>

#include <string>
#include <vector>

#include "../../PluginTestSupport.h"
#include "PluginSDK/StringVector.h"
#include "cross/orlo/OrloProduct.h"

namespace RegPluginTest {

// A tag file with one record element of `kind` ("Product", "Component", "Fix").
inline std::string tagRecord(const std::string& kind, const std::string& name,
                             const std::string& version, const std::string& extra = "") {
    return "<" + kind + "><" + kind + "Name>" + name + "</" + kind + "Name><" + kind + "Version>" +
           version + "</" + kind + "Version>" + extra + "</" + kind + ">";
}

class TagTree : public TempDir {
  public:
    // Makes `relative` and its parents under the tree; returns the full path.
    std::string mkdirs(const std::string& relative) const {
        const std::string& path = this->path();
        EXPECT_EQ(std::system(("mkdir -p '" + path + "/" + relative + "'").c_str()), 0);
        return path + "/" + relative;
    }
    // Writes `content` as "properties/version/<file>" under the installation
    // directory `install` (relative to the tree); returns the tag file's path.
    std::string tag(const std::string& install, const std::string& file,
                    const std::string& content) const {
        mkdirs(install + "/properties/version");
        return write(install + "/properties/version/" + file, content);
    }
};

inline std::vector<std::string> keysOf(const PluginSDK::StringVector& keys) {
    std::vector<std::string> out;
    for (int i = 0; i < keys.size(); ++i)
        out.push_back(keys[i].toUtf8());
    return out;
}

inline std::wstring wide(const std::string& text) {
    return std::wstring(text.begin(), text.end());
}

inline std::string narrow(const std::wstring& text) {
    return std::string(text.begin(), text.end());
}

// `text` with every `strip` removed.
inline std::string without(std::string text, const std::string& strip) {
    for (std::size_t at; !strip.empty() && (at = text.find(strip)) != std::string::npos;)
        text.erase(at, strip.size());
    return text;
}

// "kind name version @root" for each product, for compact comparisons.
inline std::vector<std::string> summaries(const std::vector<RegPlugin::OrloProduct>& products,
                                          const std::string& strip = "") {
    std::vector<std::string> out;
    for (const RegPlugin::OrloProduct& product : products) {
        out.push_back(product.kind + " " + narrow(product.properties.at(L"name")) + " " +
                      narrow(product.properties.at(L"version")) + " @" +
                      without(narrow(product.installRoot), strip));
    }
    return out;
}

// The level-`level` trace messages that start with `prefix`, with `strip` removed.
inline std::vector<std::string> tracedWith(const MemoryTraceSink& sink, int level,
                                           const std::string& prefix,
                                           const std::string& strip = "") {
    std::vector<std::string> out;
    for (const std::string& message : sink.messages(level))
        if (message.compare(0, prefix.size(), prefix) == 0)
            out.push_back(without(message, strip));
    return out;
}

}  // namespace RegPluginTest

#endif
