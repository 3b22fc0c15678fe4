#include "xml/Node.h"

#include <string>
#include <utility>

Node::Node(Type type, const String& name) : m_type(type), m_name(std::make_shared<String>(name)) {}

Node::Node(Type type, std::shared_ptr<const String> name)
    : m_type(type), m_name(name ? std::move(name) : std::make_shared<const String>()) {}

// The subtree is taken apart breadth first: each node's children are spliced onto
// one work list before the node is deleted, so the node's own destructor finds no
// children. Splicing moves list cells and never allocates.
Node::~Node() {
    std::list<Node*> pending;
    pending.splice(pending.end(), m_children);
    while (!pending.empty()) {
        Node* node = pending.front();
        pending.pop_front();
        if (node != nullptr) {
            pending.splice(pending.end(), node->m_children);
            delete node;
        }
    }
}

void Node::appendValue(const wchar_t* text, int length) {
    if (text == nullptr || length <= 0) {
        return;
    }
    m_value.concat(String(std::wstring(text, static_cast<std::size_t>(length))));
}

int Node::getChildren(const std::list<Node*>** children) const {
    if (children == nullptr) {
        return 1;
    }
    *children = &m_children;
    return 0;
}
