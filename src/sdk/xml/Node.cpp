#include "xml/Node.h"

#include "NodeArena.h"

#include <string>
#include <utility>

namespace {

// The value of every node without one.
const std::shared_ptr<const String>& emptyText() {
    static const std::shared_ptr<const String> empty = std::make_shared<const String>();
    return empty;
}

}  // namespace

Node::Node(Type type, const String& name)
    : m_type(type), m_name(std::make_shared<String>(name)), m_value(emptyText()) {}

Node::Node(Type type, std::shared_ptr<const String> name)
    : m_type(type),
      m_name(name ? std::move(name) : std::make_shared<const String>()),
      m_value(emptyText()) {}

void Node::setValue(const String& value) {
    m_value = std::make_shared<const String>(value);
}

void Node::setValue(String&& value) {
    m_value = std::make_shared<const String>(std::move(value));
}

void Node::setValue(std::shared_ptr<const String> value) {
    m_value = value ? std::move(value) : emptyText();
}

// The subtree is taken apart breadth first: each node's children are spliced onto
// one work list before the node is destroyed, so the node's own destructor finds no
// children. Splicing moves list cells and never allocates. The arena of a
// reader-built root goes last, with the members, once no node lives in it.
Node::~Node() {
    std::list<Node*> pending;
    pending.splice(pending.end(), m_children);
    while (!pending.empty()) {
        Node* node = pending.front();
        pending.pop_front();
        if (node != nullptr) {
            pending.splice(pending.end(), node->m_children);
            release(node);
        }
    }
}

void Node::release(Node* node) {
    if (node == nullptr) {
        return;
    }
    if (node->m_inArena) {
        node->~Node();
    } else {
        delete node;
    }
}

void Node::appendValue(const wchar_t* text, int length) {
    if (text == nullptr || length <= 0) {
        return;
    }
    std::wstring joined = m_value->wide();
    joined.append(text, static_cast<std::size_t>(length));
    m_value = std::make_shared<const String>(std::move(joined));
}

int Node::getChildren(const std::list<Node*>** children) const {
    if (children == nullptr) {
        return 1;
    }
    *children = &m_children;
    return 0;
}
