// The XML loading pattern, through the two parser classes built on it.
#include "common/XmlDocumentParser.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "../XmlRegistrySupport.h"
#include "cross/any/AnywhereXmlNodeSink.h"
#include "cross/any/AnywhereXmlParser.h"
#include "cross/corvu/InstalledXmlNodeSink.h"
#include "cross/corvu/InstalledXmlParser.h"

namespace RegPluginTest {
namespace {

using RegPlugin::XmlDocumentParser;
using RegPlugin::XmlDocumentSink;

struct Flavour {
    const char* scope;  // the sink's scope prefix
    XmlDocumentParser* (*fromFile)(const std::string& path);
    XmlDocumentParser* (*fromBuffer)(const std::string& bytes);
    XmlDocumentSink* (*sink)();
};

template <class Parser, class Sink, class Path>
Flavour flavour(const char* scope) {
    return {scope,
            [](const std::string& path) -> XmlDocumentParser* {
                return new Parser(Path(path.c_str()));
            },
            [](const std::string& bytes) -> XmlDocumentParser* {
                return new Parser(bytes.data(), bytes.size());
            },
            []() -> XmlDocumentSink* { return new Sink(); }};
}

const Flavour kFlavours[] = {
    flavour<RegPlugin::AnywhereXmlParser, RegPlugin::AnywhereXmlNodeSink, PluginSDK::String>(
        "AnywhereXmlParser::XmlNodeSink::"),
    flavour<RegPlugin::InstalledXmlParser, RegPlugin::InstalledXmlNodeSink, String>(
        "InstalledXmlParser::XmlNodeSink::"),
};

// "level scope: message" of every captured line.
std::vector<std::string> linesOf(const MemoryTraceSink& sink) {
    std::vector<std::string> out;
    for (const auto& line : sink.lines())
        out.push_back(std::to_string(line.level) + " " + line.signature + ": " + line.message);
    return out;
}

TEST(XmlDocumentParserTest, LoadsFromAFileOrMemoryAndTracesProblemsUnderItsOwnScope) {
    TempDir dir;
    const std::string ok = "<r a='1'><c/></r>";
    const std::string broken = "<r>\n<c>\n</r>";
    const std::string warned = "<!DOCTYPE r SYSTEM 'none.dtd'>\n<r>\n\n\n\n\n&y;</r>";
    const struct {
        const char* what;
        std::string bytes;  // null path: the file does not exist
        bool exists;
        int status;
        bool root;
        std::string line;  // "level scopeSuffix: message prefix" ("" none)
    } cases[] = {
        {"clean", ok, true, 0, true, ""},
        {"missing file", "", false, 2, false,
         "1 onError(const String& ,int): Error parsing XML file at line 0 message is: Cannot open "
         "XML file '"},
        {"not well-formed", broken, true, 1, false,
         "1 onError(const String& ,int): Error parsing XML file at line 3 message is: "},
        {"warning only", warned, true, 0, true,
         "2 onWarning(const String& ,int): Warning parsing XML file at line 7 message is: Entity "
         "reference &y; left out"},
    };
    for (const Flavour& flavour : kFlavours) {
        for (const auto& c : cases) {
            for (bool memory : {false, true}) {
                if (memory && !c.exists)
                    continue;
                SCOPED_TRACE(std::string(flavour.scope) + " " + c.what +
                             (memory ? " (memory)" : ""));
                TraceCapture trace;
                const std::string path =
                    c.exists ? dir.write("doc.xml", c.bytes) : dir.path() + "/missing.xml";
                std::unique_ptr<XmlDocumentParser> parser(memory ? flavour.fromBuffer(c.bytes)
                                                                 : flavour.fromFile(path));
                EXPECT_EQ(parser->getStatus(), c.status);
                ASSERT_EQ(parser->getRootNode() != nullptr, c.root);
                if (c.root) {
                    EXPECT_EQ(std::string(parser->getRootNode()->getName()), "r");
                }
                const std::vector<std::string> lines = linesOf(trace.sink());
                if (c.line.empty()) {
                    EXPECT_TRUE(lines.empty()) << joined(lines);
                    continue;
                }
                ASSERT_EQ(lines.size(), 1u) << joined(lines);
                const std::string expected = c.line.substr(0, 2) + flavour.scope + c.line.substr(2);
                EXPECT_EQ(lines[0].substr(0, expected.size()), expected);
            }
        }
    }
}

TEST(XmlDocumentParserTest, SinkKeepsTheLastTreeAndWritesEachProblemLine) {
    for (const Flavour& flavour : kFlavours) {
        SCOPED_TRACE(flavour.scope);
        TraceCapture trace;
        std::unique_ptr<XmlDocumentSink> sink(flavour.sink());
        EXPECT_EQ(sink->getRootNode(), nullptr);
        Node* second = new Node(Node::ELEMENT, "second");
        EXPECT_EQ(sink->onNodeTree(new Node(Node::ELEMENT, "first")), 0);
        EXPECT_EQ(sink->onNodeTree(second), 0);  // the first tree is freed (leak checks)
        EXPECT_EQ(sink->getRootNode(), second);
        EXPECT_EQ(sink->onWarning("x", 7), 0);
        EXPECT_EQ(sink->onError("bad tag", 12), 0);
        EXPECT_EQ(sink->onCriticalError("no memory", 0), 0);
        EXPECT_EQ(sink->getRootNode(), second);
        const std::string s = flavour.scope;
        EXPECT_EQ(linesOf(trace.sink()),
                  (std::vector<std::string>{
                      "2 " + s +
                          "onWarning(const String& ,int): Warning parsing XML file at line "
                          "7 message is: x",
                      "1 " + s +
                          "onError(const String& ,int): Error parsing XML file at line 12 "
                          "message is: bad tag",
                      "1 " + s +
                          "onCriticalError(const String& ,int): Critical error parsing XML "
                          "file at line 0 message is: no memory"}));
    }
}

}  // namespace
}  // namespace RegPluginTest
