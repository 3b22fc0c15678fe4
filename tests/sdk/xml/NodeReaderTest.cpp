#include "xml/NodeReader.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "../TempDir.h"

namespace {

std::string narrow(const String& text) {
    return static_cast<const char*>(text);
}

std::string repeat(const std::string& text, int times) {
    std::string out;
    while (times-- > 0) {
        out += text;
    }
    return out;
}

// A compact picture of a tree: elements as name{attributes}(children), text in
// double quotes, comments as <!--text-->, instructions as <?target data?>.
std::string describe(const Node& node) {
    switch (node.getType()) {
        case Node::TEXT:
            return "\"" + narrow(node.getValue()) + "\"";
        case Node::COMMENT:
            return "<!--" + narrow(node.getValue()) + "-->";
        case Node::PROCESSING_INSTRUCTION:
            return "<?" + narrow(node.getName()) + " " + narrow(node.getValue()) + "?>";
        default:
            break;
    }
    std::string out = narrow(node.getName());
    const char* separator = "{";
    for (const auto& entry : node.getAttributes().entries()) {
        out += separator + narrow(String(entry.first)) + "=" + narrow(String(entry.second));
        separator = ",";
    }
    out += *separator == ',' ? "}" : "";
    const std::list<Node*>* children = nullptr;
    node.getChildren(&children);
    for (const Node* child : *children) {
        out += (child == children->front() ? "(" : " ") + describe(*child);
    }
    return out + (children->empty() ? "" : ")");
}

struct RecordingSink : NodeSink {
    int onNodeTree(Node* node) override {
        tree.reset(node);
        return 0;
    }
    int onWarning(const String& message, int line) override {
        warnings.push_back(narrow(message) + "@" + std::to_string(line));
        return warningResult;
    }
    int onError(const String& message, int line) override {
        errors.push_back(narrow(message));
        errorLine = line;
        return 0;
    }
    int onCriticalError(const String& message, int line) override { return onError(message, line); }

    std::unique_ptr<Node> tree;
    int errorLine = -1;
    int warningResult = 0;
    std::vector<std::string> warnings, errors;
};

class NodeReaderTest : public ::testing::Test {
  protected:
    // From a file, or the same bytes from memory ("" as a null buffer).
    int parse(const std::string& bytes, bool fromFile = true) {
        sink.tree.reset();
        NodeReader reader(sink);
        const int status = fromFile ? reader.process(m_dir.write("doc.xml", bytes).c_str(), 0)
                                    : reader.processBuffer(bytes.empty() ? nullptr : bytes.data(),
                                                           bytes.size(), 0);
        EXPECT_EQ(reader.getStatus(), status);
        return status;
    }

    RecordingSink sink;
    const TempDir m_dir;
};

TEST_F(NodeReaderTest, BuildsTheTreeAsWritten) {
    const struct {
        const char* xml;
        const char* tree;
    } cases[] = {
        {"<v>1.0<!--c-->.2</v>", "v(\"1.0\" <!--c--> \".2\")"},
        {"<r>a<![CDATA[<b>&amp;]]>c<![CDATA[]]></r>", "r(\"a\" \"<b>&amp;\" \"c\" \"\")"},
        {"<r b=\"2\" a='1 &amp; &lt;'/>", "r{a=1 & <,b=2}"},
        {"<r>\n  <a> x </a>\n</r>", "r(\"\n  \" a(\" x \") \"\n\")"},
        {"<r>&lt;&#65;&#x263A;&gt;&amp;&quot;&apos;</r>", "r(\"<A\xe2\x98\xba>&\"'\")"},
        {"<!DOCTYPE r [<!ENTITY e \"m<i/>d\">]><r>a&e;b</r>", "r(\"am\" i \"db\")"},
        {"<?xml version=\"1.0\"?><!--out--><?pi x?><r><?t data?></r><!--after-->", "r(<?t data?>)"},
        {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r a='\xe9'>\xe9</r>",
         "r{a=\xc3\xa9}(\"\xc3\xa9\")"},
    };
    for (const auto& c : cases) {
        for (const bool fromFile : {true, false}) {
            SCOPED_TRACE(c.xml + std::string(fromFile ? " from a file" : " from memory"));
            ASSERT_EQ(parse(c.xml, fromFile), NodeReader::STATUS_OK);
            ASSERT_NE(sink.tree, nullptr);
            EXPECT_EQ(describe(*sink.tree), c.tree);
            EXPECT_TRUE(sink.errors.empty() && sink.warnings.empty());
        }
    }
}

// Line 0: an I/O error, for a file that cannot be opened or is not a regular file.
TEST_F(NodeReaderTest, RefusesBadDocumentsAndFilesWithTheirLine) {
    // Seven levels of sixteen references each: 16^7 bytes from a tiny document.
    std::string laughs = "<!DOCTYPE r [<!ENTITY a \"" + repeat("a", 16) + "\">";
    for (char e = 'b'; e <= 'g'; ++e) {
        laughs +=
            std::string("<!ENTITY ") + e + " \"" + repeat({'&', char(e - 1), ';'}, 16) + "\">";
    }
    laughs += "]>\n<r>&g;</r>";
    const struct {
        std::string xml;
        int line;
        const char* reason;
        const char* file = "doc.xml";
    } cases[] = {
        {"<r>\n<a>\n</r>", 3, "mismatched tag"},
        {"", 1, "no element found"},
        {"<r>\n&nope;</r>", 2, "undefined entity"},
        {"<r>\n\xff</r>", 2, "not well-formed"},
        {laughs, 2, "amplification"},
        {"<r/>", 0, "No such file", "missing.xml"},
        {"<r/>", 0, "not a regular file", "."},
    };
    for (const auto& c : cases) {
        // Documents also from memory, where errors name "(buffer)" instead of the file.
        for (const bool fromFile : {true, false}) {
            if (!fromFile && c.line == 0) {
                break;  // a file's own failures
            }
            const std::string path = fromFile ? m_dir.path() + "/" + c.file : "(buffer)";
            SCOPED_TRACE(path + ": " + c.xml.substr(0, 40));
            m_dir.write("doc.xml", c.xml);
            sink.errors.clear();
            const auto start = std::chrono::steady_clock::now();
            EXPECT_EQ(fromFile ? NodeReader(sink).process(path.c_str(), 0) : parse(c.xml, false),
                      c.line == 0 ? NodeReader::STATUS_IO_ERROR : NodeReader::STATUS_PARSE_ERROR);
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
            EXPECT_EQ(sink.tree, nullptr);
            ASSERT_EQ(sink.errors.size(), 1u);
            const std::string& e = sink.errors[0];
            EXPECT_NE(e.find(c.reason), std::string::npos) << e;
            EXPECT_TRUE(c.line == 0 ? e.find(" XML file '" + path + "': ") != std::string::npos
                                    : e.rfind(path + ": ", 0) == 0)
                << e;
            EXPECT_EQ(sink.errorLine, c.line) << e;
        }
    }
}

TEST_F(NodeReaderTest, NeverReadsExternalEntitiesAndWarningsCanStop) {
    const std::string secret = m_dir.write("secret.xml", "<leak>SECRET</leak>");
    const std::string dtd = m_dir.write("secret.dtd", "<!ENTITY y '<leak>SECRET</leak>'>");
    const struct {
        std::string xml;
        const char* tree;
        const char* warning;  // the warning's end: entity and line, or null
    } cases[] = {
        {"<!DOCTYPE r [<!ENTITY x SYSTEM 'file://" + secret + "'>]><r>&x;</r>", "r", nullptr},
        {"<!DOCTYPE r SYSTEM '" + dtd + "'><r>\n&y;</r>", "r(\"\n\")", "&y;@2"},
        {"<!DOCTYPE r [<!ENTITY % p SYSTEM '" + dtd + "'> %p;]><r>&y;</r>", "r", "&y;@1"},
    };
    for (const auto& c : cases) {
        sink.warnings.clear();
        ASSERT_EQ(parse(c.xml), NodeReader::STATUS_OK) << c.xml;
        EXPECT_EQ(describe(*sink.tree), c.tree) << c.xml;
        ASSERT_EQ(sink.warnings.size(), c.warning ? 1u : 0u) << c.xml;
        if (c.warning != nullptr) {
            const std::string& w = sink.warnings[0];
            EXPECT_NE(w.find(std::string(c.warning, 3)), std::string::npos) << w;
            EXPECT_EQ(w.substr(w.rfind('@')), c.warning + 3) << w;
        }
    }
    // The sink can stop the parse from a warning.
    sink.warningResult = 1;
    EXPECT_EQ(parse("<!DOCTYPE r SYSTEM 'none.dtd'><r><a/>&y;<b/></r>"),
              NodeReader::STATUS_PARSE_ERROR);
    EXPECT_EQ(sink.tree, nullptr);
    EXPECT_TRUE(sink.errors.empty());
}

// The read buffer follows the file's size up to one chunk (64 KiB): documents around
// those sizes, and multi-byte characters and references split across chunks, from a
// file and from memory, give one whole text node.
TEST_F(NodeReaderTest, TextAcrossChunksIsOneNode) {
    std::vector<std::pair<std::string, std::string>> cases;  // document, text
    for (const std::size_t size : {1u, 2u, 4089u, 65528u, 65529u, 65530u, 131066u}) {
        cases.emplace_back("<r>" + std::string(size, 't') + "</r>", std::string(size, 't'));
    }
    const std::string text = "\xc3\xa9\xe2\x82\xac\xf0\x9d\x84\x9e";
    cases.emplace_back("<r>" + repeat(text + "&amp;", 20000) + "</r><!-- trailing -->",
                       repeat(text + "&", 20000));
    for (const auto& [xml, expected] : cases) {
        for (const bool fromFile : {true, false}) {
            SCOPED_TRACE(std::to_string(xml.size()) + (fromFile ? " from a file" : " from memory"));
            ASSERT_EQ(parse(xml, fromFile), NodeReader::STATUS_OK);
            const std::list<Node*>* children = nullptr;
            ASSERT_EQ(sink.tree->getChildren(&children), 0);
            ASSERT_EQ(children->size(), 1u);
            EXPECT_TRUE(narrow(children->front()->getValue()) == expected);  // no huge diffs
        }
    }
}

TEST_F(NodeReaderTest, DeepNestingIsBuiltAndFreed) {
    const int depth = 100000;
    const std::string xml = repeat("<a>", depth) + "x" + repeat("</a>", depth);
    ASSERT_EQ(parse(xml), NodeReader::STATUS_OK);
    int levels = 0;
    const Node* node = sink.tree.get();
    const std::list<Node*>* children = nullptr;
    while (node->isElement() && node->getChildren(&children) == 0 && children->size() == 1) {
        node = children->front();
        ++levels;
    }
    EXPECT_EQ(levels, depth);
    EXPECT_EQ(narrow(node->getValue()), "x");
    // The last end tag missing: the partial tree of full depth is freed.
    EXPECT_EQ(parse(xml.substr(0, xml.size() - 4)), NodeReader::STATUS_PARSE_ERROR);
}

}  // namespace
