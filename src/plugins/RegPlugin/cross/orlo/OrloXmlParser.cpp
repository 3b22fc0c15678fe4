#include "cross/orlo/OrloXmlParser.h"

#include <list>
#include <new>
#include <string>
#include <utility>

#include "common/PluginTrace.h"
#include "common/XmlNodes.h"

namespace RegPlugin {

namespace {

const XmlDocumentSink::ScopeNames kScopes = {
    "OrloXmlParser::XmlNodeSink::onWarning(const String& ,int)",
    "OrloXmlParser::XmlNodeSink::onError(const String& ,int)",
    "OrloXmlParser::XmlNodeSink::onCriticalError(const String& ,int)",
};

const wchar_t* const ROOT_ELEMENT = L"ProductInventory";

bool isRecordName(const String& name) {
    return name == L"Product" || name == L"Component" || name == L"Fix";
}

// The concatenated values of the direct text children of `element`.
std::wstring directText(const Node& element) {
    std::wstring text;
    if (const std::list<Node*>* children = childrenOf(&element)) {
        for (const Node* child : *children) {
            if (child != nullptr && child->getType() == Node::TEXT) {
                text += child->getValue().wide();
            }
        }
    }
    return text;
}

}  // namespace

OrloXmlParser::OrloXmlNodeSink::OrloXmlNodeSink() : XmlDocumentSink(kScopes) {}

OrloXmlParser::OrloXmlNodeSink::~OrloXmlNodeSink() = default;

OrloXmlParser::OrloXmlParser(const PluginSDK::String& file)
    : XmlDocumentParser(new (std::nothrow) OrloXmlNodeSink(), String(file.c_str())), errorCount(0) {
    REG_TRACE_SCOPE("OrloXmlParser::OrloXmlParser(PluginSDK::String const&)");
    if (errorCount > 0) {
        REG_TRACE(1, "XML errors, aborting parsing");
        return;
    }
    const Node* root = getRootNode();
    if (root == nullptr || root->getType() != Node::ELEMENT) {
        return;
    }
    if (root->getName() != ROOT_ELEMENT) {
        parseNode(file.c_str(), root);
        return;
    }
    const std::list<Node*>* children = childrenOf(root);
    if (children == nullptr) {
        return;
    }
    for (const Node* child : *children) {
        if (REG_TRACE_FOUND_NODE(child)) {
            parseNode(file.c_str(), child);
        }
    }
}

OrloXmlParser::~OrloXmlParser() = default;

bool OrloXmlParser::parse(const wchar_t* file, std::vector<OrloProduct>& o_Products) {
    OrloXmlParser parser{PluginSDK::String(file)};
    // The parser goes with this call: its records are moved, not copied.
    for (OrloProduct& product : parser.products) {
        o_Products.push_back(std::move(product));
    }
    return !parser.products.empty();
}

bool OrloXmlParser::parseNode(const wchar_t* file, const Node* node) {
    REG_TRACE_SCOPE("OrloXmlParser::parseNode(const wchar_t*, const Node*)");
    REG_TRACE_FOUND_NODE(node);
    if (node == nullptr || !isRecordName(node->getName())) {
        return false;
    }
    // A record element without children makes no record.
    const std::list<Node*>* children = childrenOf(node);
    if (children == nullptr || children->empty()) {
        return false;
    }
    OrloProduct product;
    for (const Node* child : *children) {
        if (child == nullptr) {
            continue;
        }
        if (!REG_TRACE_FOUND_NODE(child)) {
            continue;
        }
        const std::wstring& name = child->getName().wide();
        const std::wstring text = directText(*child);
        REG_TRACE(3, "Text value of the node(", child->getName(), ") is '", text.c_str(), "'");
        product.properties[name] = text;
        if (name == L"ProductName" || name == L"ComponentName" || name == L"FixName") {
            product.properties[L"name"] = text;
        } else if (name == L"ProductVersion" || name == L"ComponentVersion" ||
                   name == L"FixVersion") {
            product.properties[L"version"] = text;
        } else if (name == L"ORLOFMIDX") {
            product.properties[L"fmidx"] = text;
        }
    }
    // Looking the three up inserts them: every record carries them.
    REG_TRACE(3, "Found product", " name='", product.properties[L"name"].c_str(), "' version='",
              product.properties[L"version"].c_str(), "' fmidx='",
              product.properties[L"fmidx"].c_str(), "'");
    product.properties.emplace(L"name", std::wstring());
    product.properties.emplace(L"version", std::wstring());
    product.properties.emplace(L"fmidx", std::wstring());
    product.kind = static_cast<const char*>(node->getName());
    product.tagFile = file != nullptr ? file : L"";
    products.push_back(std::move(product));
    return true;
}

}  // namespace RegPlugin
