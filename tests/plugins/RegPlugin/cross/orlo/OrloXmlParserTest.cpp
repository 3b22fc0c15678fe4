#include "cross/orlo/OrloXmlParser.h"

#include <gtest/gtest.h>

#include "OrloTestSupport.h"
#include "PluginSDK/StringVector.h"

namespace RegPluginTest {
namespace {

using RegPlugin::OrloProduct;
using RegPlugin::OrloXmlParser;

std::string repeat(const std::string& text, int times) {
    std::string out;
    while (times-- > 0)
        out += text;
    return out;
}

// "Kind{name=..,version=..}" with every property in key order.
std::string describe(const OrloProduct& product) {
    std::string out = product.kind + "{";
    for (const auto& [name, value] : product.properties)
        out += (out.back() == '{' ? "" : ",") + narrow(name) + "=" + narrow(value);
    return out + "}";
}

std::vector<std::string> parseText(const TempDir& dir, const std::string& content) {
    const std::string file = dir.write("tag.xml", content);
    std::vector<OrloProduct> products;
    const bool found = OrloXmlParser::parse(wide(file).c_str(), products);
    std::vector<std::string> out;
    for (const OrloProduct& product : products) {
        EXPECT_EQ(narrow(product.tagFile), file);
        EXPECT_TRUE(product.installRoot.empty());
        out.push_back(describe(product));
    }
    EXPECT_EQ(found, !out.empty());
    return out;
}

TEST(OrloXmlParserTest, RecordsFromTagFiles) {
    const std::string inventoryOfThree =
        "<?xml version='1.0'?>\n<ProductInventory>\n"
        "  <Product><ProductName>Alpha</ProductName><ProductVersion>1.0</ProductVersion>"
        "<ORLOFMIDX>AL1</ORLOFMIDX></Product>\n"
        "  <!-- a comment between records -->\n"
        "  <Product><ProductName>Beta</ProductName><ProductVersion>2.0</ProductVersion></Product>\n"
        "  <Fix><FixName>PQ1</FixName><FixVersion>1.0.0.1</FixVersion></Fix>\n"
        "  <Other><ProductName>Ignored</ProductName></Other>\n"
        "</ProductInventory>\n";
    // Five levels of ten-fold expansion of a 1000-byte text.
    std::string bomb = "<!DOCTYPE p [<!ENTITY a '" + std::string(1000, 'x') + "'>";
    for (char e = 'b'; e <= 'f'; ++e)
        bomb += std::string("<!ENTITY ") + e + " '" + repeat({'&', char(e - 1), ';'}, 10) + "'>";
    bomb += "]>";
    using Strings = std::vector<std::string>;
    const Strings none;
    const struct {
        const char* what;
        std::string content;
        Strings records;
    } cases[] = {
        {"inventory of records, in document order", inventoryOfThree,
         Strings{"Product{ORLOFMIDX=AL1,ProductName=Alpha,ProductVersion=1.0,fmidx=AL1,name=Alpha,"
                 "version=1.0}",
                 "Product{ProductName=Beta,ProductVersion=2.0,fmidx=,name=Beta,version=2.0}",
                 "Fix{FixName=PQ1,FixVersion=1.0.0.1,fmidx=,name=PQ1,version=1.0.0.1}"}},
        {"single component root", tagRecord("Component", "Gamma", "3"),
         Strings{"Component{ComponentName=Gamma,ComponentVersion=3,fmidx=,name=Gamma,version=3}"}},
        {"name pairs are not tied to the kind",
         "<Product><FixVersion>9</FixVersion><ComponentName>C</ComponentName></Product>",
         Strings{"Product{ComponentName=C,FixVersion=9,fmidx=,name=C,version=9}"}},
        {"text joined around a comment, CDATA and a nested element; no trimming",
         "<Product><ProductName> Delta </ProductName><ProductVersion>1.0<!-- c -->.2"
         "<b>x</b><![CDATA[.3]]></ProductVersion></Product>",
         Strings{"Product{ProductName= Delta ,ProductVersion=1.0.2.3,fmidx=,name= Delta ,"
                 "version=1.0.2.3}"}},
        {"a nested record is a property holding the outer text only",
         "<Product><ProductName>Outer</ProductName><Product>a<ProductName>Inner</ProductName>b"
         "</Product></Product>",
         Strings{"Product{Product=ab,ProductName=Outer,fmidx=,name=Outer,version=}"}},
        {"a later child of the same name wins",
         "<Fix><FixName>one</FixName><FixName>two</FixName></Fix>",
         Strings{"Fix{FixName=two,fmidx=,name=two,version=}"}},
        {"record without a name element", "<Product><Vendor>Acme</Vendor></Product>",
         Strings{"Product{Vendor=Acme,fmidx=,name=,version=}"}},
        {"record without children", "<Product/>", none},
        {"root differing only in case",
         "<productinventory>" + tagRecord("Product", "A", "1") + "</productinventory>", none},
        {"root that is not a record", "<Products>" + tagRecord("Product", "A", "1") + "</Products>",
         none},
        {"not XML", "name=Alpha\nversion=1.0\n", none},
        {"empty file", "", none},
        {"truncated document", "<ProductInventory>" + tagRecord("Product", "A", "1"), none},
        {"invalid UTF-8", "<Product><ProductName>\xff\xfe</ProductName></Product>", none},
        {"entity expansion bomb", bomb + "<Product><ProductName>&f;</ProductName></Product>", none},
        {"unclosed 100,000 levels", repeat("<Product>", 100000), none},
        {"closed 100,000 levels",
         "<Product><ProductName>N</ProductName><X>" + repeat("<a>", 100000) +
             repeat("</a>", 100000) + "</X></Product>",
         Strings{"Product{ProductName=N,X=,fmidx=,name=N,version=}"}},
    };
    for (const auto& c : cases) {
        TempDir dir;
        EXPECT_EQ(parseText(dir, c.content), c.records) << c.what;
    }
}

TEST(OrloXmlParserTest, ALargeNameIsKeptWhole) {
    TempDir dir;
    const std::string big = "<Product><ProductName>" + std::string(50 << 20, 'n') +
                            "</ProductName><ProductVersion>1</ProductVersion></Product>";
    std::vector<OrloProduct> products;
    ASSERT_TRUE(OrloXmlParser::parse(wide(dir.write("big.xml", big)).c_str(), products));
    EXPECT_EQ(products[0].properties.at(L"name").size(), std::size_t(50) << 20);
}

TEST(OrloXmlParserTest, TracesTheWalkAndTheReadersProblems) {
    TempDir dir;
    TraceCapture capture;
    parseText(dir,
              "<ProductInventory><!--c--><Fix><FixName>F</FixName>t<FixVersion>2</FixVersion></Fix>"
              "</ProductInventory>");
    const std::string other = "Found node name='-not-a-node-actually-'";
    EXPECT_EQ(capture.sink().messages(3),
              (std::vector<std::string>{
                  other, "Found node name='Fix'", "Found node name='Fix'",
                  "Found node name='FixName'", "Text value of the node(FixName) is 'F'", other,
                  "Found node name='FixVersion'", "Text value of the node(FixVersion) is '2'",
                  "Found product name='F' version='2' fmidx=''"}));
    for (const auto& line : capture.sink().lines())
        EXPECT_TRUE(line.signature == "OrloXmlParser::OrloXmlParser(PluginSDK::String const&)" ||
                    line.signature == "OrloXmlParser::parseNode(const wchar_t*, const Node*)")
            << line.signature;

    capture.sink().clear();
    parseText(dir, "<Product>");
    ASSERT_EQ(capture.sink().lines().size(), 1u);
    const auto& error = capture.sink().lines()[0];
    EXPECT_EQ(error.level, 1);
    EXPECT_EQ(error.signature, "OrloXmlParser::XmlNodeSink::onError(const String& ,int)");
    EXPECT_EQ(error.message.rfind("Error parsing XML file at line 1 message is: ", 0), 0u)
        << error.message;
}

TEST(OrloXmlParserTest, ProductReadOperations) {
    OrloProduct product;
    product.properties = {{L"version", L"1"}, {L"name", L"N"}};
    PluginSDK::StringVector names;
    names.addString(L"stale");
    EXPECT_TRUE(product.getPropertiesNames(names));
    EXPECT_EQ(keysOf(names), (std::vector<std::string>{"name", "version"}));
    PluginSDK::String value(L"untouched");
    EXPECT_FALSE(product.getProperty(L"fmidx", value));
    EXPECT_EQ(value, L"untouched");
}

}  // namespace
}  // namespace RegPluginTest
