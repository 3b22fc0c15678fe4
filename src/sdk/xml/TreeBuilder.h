// Builds a Node tree from the callbacks of one expat parser.
//
// Open elements are kept on an explicit stack, so any depth of nesting costs heap,
// not call stack. The builder owns everything it built until takeRoot() hands the
// root over; destroying the builder frees a tree that was not taken. No exception
// leaves a handler: the first one is kept (failure()) and the parser is stopped;
// handlers called after that do nothing.
#ifndef HOSTSDK_XML_TREEBUILDER_H
#define HOSTSDK_XML_TREEBUILDER_H

#include <expat.h>

#include <exception>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "xml/Node.h"
#include "xml/NodeSink.h"

class TreeBuilder {
  public:
    // Installs the handlers and itself as user data on `parser`; the builder must
    // stay alive while the parser runs. `sink` receives warnings only.
    TreeBuilder(XML_Parser parser, NodeSink& sink);
    ~TreeBuilder();
    TreeBuilder(const TreeBuilder&) = delete;
    TreeBuilder& operator=(const TreeBuilder&) = delete;

    // True once a handler stopped the parser: an exception, or a non-zero result of
    // the sink's onWarning.
    bool stopped() const { return m_stopped; }
    // The exception that stopped the parser; null when there was none.
    std::exception_ptr failure() const { return m_failure; }
    // The root element, or null when none was opened; the caller owns it afterwards.
    std::unique_ptr<Node> takeRoot() { return std::move(m_root); }

  private:
    static void XMLCALL startElement(void* data, const XML_Char* name, const XML_Char** atts);
    static void XMLCALL endElement(void* data, const XML_Char* name);
    static void XMLCALL characters(void* data, const XML_Char* text, int length);
    static void XMLCALL comment(void* data, const XML_Char* text);
    static void XMLCALL instruction(void* data, const XML_Char* target, const XML_Char* text);
    static void XMLCALL startCdata(void* data);
    static void XMLCALL endCdata(void* data);
    static void XMLCALL skippedEntity(void* data, const XML_Char* name, int isParameter);

    // Runs `action` on the builder unless the parser was stopped; an exception
    // stops the parser and is kept.
    template <class Action>
    static void guarded(void* data, Action action);
    void stop();
    // Adds `node` under the innermost open element and returns it; deletes it and
    // returns null when no element is open (content outside the root).
    Node* adopt(std::unique_ptr<Node> node);
    // Turns the character data gathered since the last node into a text node.
    void flushText();
    // A new text node holding the character data gathered so far (which is cleared).
    std::unique_ptr<Node> takeText();
    // The shared name `name` (UTF-8): one String for every element of a name.
    const std::shared_ptr<const String>& sharedName(const char* name);

    XML_Parser m_parser;
    NodeSink& m_sink;
    std::unique_ptr<Node> m_root;
    std::vector<Node*> m_open;  // open elements, innermost last; owned by m_root
    std::string m_text;         // UTF-8 character data not yet in a node
    std::unordered_map<std::string, std::shared_ptr<const String>> m_names;
    std::shared_ptr<const String> m_textName;
    std::shared_ptr<const String> m_commentName;
    bool m_stopped = false;
    std::exception_ptr m_failure;
};

#endif
