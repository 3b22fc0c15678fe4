// Small helpers for walking a host XML tree (XmlDocumentParser's root) in the
// XML registry providers.
#ifndef REGPLUGIN_COMMON_XMLNODES_H
#define REGPLUGIN_COMMON_XMLNODES_H

#include <list>

#include "PluginSDK/String.h"
#include "base/String.h"
#include "common/PluginTrace.h"
#include "xml/Node.h"

namespace RegPlugin {

// The children of `node` in document order, or null when `node` is null or the
// host cannot give them (Node::getChildren failed or gave no list).
inline const std::list<Node*>* childrenOf(const Node* node) {
    const std::list<Node*>* children = nullptr;
    if (node == nullptr || node->getChildren(&children) != 0) {
        return nullptr;
    }
    return children;
}

// True for a non-null element node named `name` (compared exactly).
inline bool isElementNamed(const Node* node, const wchar_t* name) {
    return node != nullptr && node->isElement() && node->getName() == name;
}

// The attribute `name` of `element` as a plug-in string; empty when absent.
inline PluginSDK::String attributeOf(const Node& element, const String& name) {
    String value;
    element.getAttributes().getEntry(name, value);
    return PluginSDK::String(value.getWideString(), static_cast<std::size_t>(value.length()));
}

// Writes the level 3 line "Found node name='" NAME "'" into `trace` for one child
// met while walking a registry, NAME being the element's name, or
// "-not-a-node-actually-" for anything that is not an element (text, comments).
// Returns whether `node` is an element: the walk skips the others.
inline bool traceFoundNode(Trace& trace, const char* file, int line, const Node* node) {
    const bool element = node != nullptr && node->isElement();
    if (element) {
        traceLine(trace, 3, file, line, "Found node name='", node->getName(), "'");
    } else {
        traceLine(trace, 3, file, line, "Found node name='", "-not-a-node-actually-", "'");
    }
    return element;
}

}  // namespace RegPlugin

// traceFoundNode in the current REG_TRACE_SCOPE, at the caller's position.
#define REG_TRACE_FOUND_NODE(node) ::RegPlugin::traceFoundNode(regTrace_, __FILE__, __LINE__, node)

#endif
