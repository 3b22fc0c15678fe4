// One node of a parsed XML document.
//
// A node owns its children. Text is kept exactly as written in the document,
// white space between elements included; character references and the predefined
// entities are replaced by their characters. Adjacent character data forms one
// text node; a comment, a processing instruction, an element or a CDATA section
// between two pieces of text separates them. A CDATA section is a text node of its
// own. Destroying a tree of any depth uses a constant amount of stack and
// allocates nothing.
#ifndef HOSTSDK_XML_NODE_H
#define HOSTSDK_XML_NODE_H

#include <list>
#include <memory>

#include "base/Export.h"
#include "base/String.h"
#include "base/StringMap.h"

class HOSTSDK_API Node {
  public:
    enum Type {
        ELEMENT = 0,
        TEXT = 1,                    // character data and CDATA sections
        COMMENT = 2,                 // value: the comment's text
        PROCESSING_INSTRUCTION = 3,  // name: the target; value: the data
    };

    Node(Type type, const String& name);
    // The same with a name that several nodes share (the reader gives every
    // element of one name, and every text node, one shared name).
    Node(Type type, std::shared_ptr<const String> name);
    virtual ~Node();
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    virtual int getType() const { return m_type; }
    bool isElement() const { return getType() == ELEMENT; }
    // An element's tag name; "#text" or "#comment" for those kinds; a processing
    // instruction's target.
    const String& getName() const { return *m_name; }
    // The text of a text or comment node, the data of a processing instruction,
    // empty for an element.
    const String& getValue() const { return m_value; }
    void setValue(const String& value) { m_value = value; }
    void setValue(String&& value) { m_value = std::move(value); }
    // Appends the first `length` characters of `text` to the value; does nothing
    // when `text` is null or `length` is not positive.
    void appendValue(const wchar_t* text, int length);
    // An element's attributes; empty for the other kinds.
    const StringMap& getAttributes() const { return m_attributes; }
    StringMap& getAttributes() { return m_attributes; }

    // Sets `*children` to the list of children in document order and returns 0;
    // returns 1 when `children` is null. The list belongs to the node.
    int getChildren(const std::list<Node*>** children) const;
    // Appends `child`, which the node then owns and deletes with itself. A node may
    // be added to one parent only, and once. When the list cannot grow, std::bad_alloc
    // is thrown and `child` stays the caller's.
    void addChild(Node* child) { m_children.push_back(child); }

  private:
    Type m_type;
    std::shared_ptr<const String> m_name;  // never null
    String m_value;
    StringMap m_attributes;
    std::list<Node*> m_children;
};

#endif
