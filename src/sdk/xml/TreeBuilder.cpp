#include "TreeBuilder.h"

#include <climits>
#include <cstring>
#include <utility>

#include "base/Utf8.h"

static_assert(sizeof(XML_Char) == 1, "the parser must deliver UTF-8");

namespace {

int currentLine(XML_Parser parser) {
    XML_Size line = XML_GetCurrentLineNumber(parser);
    return line > static_cast<XML_Size>(INT_MAX) ? INT_MAX : static_cast<int>(line);
}

}  // namespace

TreeBuilder::TreeBuilder(XML_Parser parser, NodeSink& sink)
    : m_parser(parser),
      m_sink(sink),
      m_textName(std::make_shared<const String>("#text")),
      m_commentName(std::make_shared<const String>("#comment")) {
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, &TreeBuilder::startElement, &TreeBuilder::endElement);
    XML_SetCharacterDataHandler(parser, &TreeBuilder::characters);
    XML_SetCommentHandler(parser, &TreeBuilder::comment);
    XML_SetProcessingInstructionHandler(parser, &TreeBuilder::instruction);
    XML_SetCdataSectionHandler(parser, &TreeBuilder::startCdata, &TreeBuilder::endCdata);
    XML_SetSkippedEntityHandler(parser, &TreeBuilder::skippedEntity);
}

TreeBuilder::~TreeBuilder() = default;

template <class Action>
void TreeBuilder::guarded(void* data, Action action) {
    TreeBuilder& self = *static_cast<TreeBuilder*>(data);
    if (self.m_stopped) {
        return;
    }
    try {
        action(self);
    } catch (...) {
        self.m_failure = std::current_exception();
        self.stop();
    }
}

void TreeBuilder::stop() {
    m_stopped = true;
    XML_StopParser(m_parser, XML_FALSE);
}

Node* TreeBuilder::adopt(std::unique_ptr<Node> node) {
    if (m_open.empty()) {
        return nullptr;
    }
    m_open.back()->addChild(node.get());
    return node.release();
}

std::unique_ptr<Node> TreeBuilder::takeText() {
    std::unique_ptr<Node> text(new Node(Node::TEXT, m_textName));
    std::wstring value;
    Utf8::decode(m_text.data(), m_text.size(), value);
    text->setValue(String(std::move(value)));
    m_text.clear();
    return text;
}

void TreeBuilder::flushText() {
    if (!m_text.empty()) {
        adopt(takeText());
    }
}

const std::shared_ptr<const String>& TreeBuilder::sharedName(const char* name) {
    std::shared_ptr<const String>& shared = m_names[name];
    if (!shared) {
        shared = std::make_shared<const String>(name);
    }
    return shared;
}

void XMLCALL TreeBuilder::startElement(void* data, const XML_Char* name, const XML_Char** atts) {
    guarded(data, [name, atts](TreeBuilder& self) {
        self.flushText();
        std::unique_ptr<Node> element(new Node(Node::ELEMENT, self.sharedName(name)));
        // The parser has refused repeated attributes already.
        std::size_t count = 0;
        std::size_t bytes = 0;
        for (const XML_Char** att = atts; att[0] != nullptr; att += 2) {
            ++count;
            bytes += std::strlen(att[0]) + std::strlen(att[1]);
        }
        if (count > 0) {
            StringMap& attributes = element->getAttributes();
            attributes.reserveUtf8(count, bytes);
            for (const XML_Char** att = atts; att[0] != nullptr; att += 2) {
                attributes.addEntryUtf8(att[0], std::strlen(att[0]), att[1], std::strlen(att[1]));
            }
        }
        Node* added;
        if (self.m_open.empty()) {
            // The parser refuses a second root element before this could replace one.
            self.m_root = std::move(element);
            added = self.m_root.get();
        } else {
            added = self.adopt(std::move(element));
        }
        self.m_open.push_back(added);
    });
}

void XMLCALL TreeBuilder::endElement(void* data, const XML_Char* /*name*/) {
    guarded(data, [](TreeBuilder& self) {
        self.flushText();
        if (!self.m_open.empty()) {
            self.m_open.pop_back();
        }
    });
}

void XMLCALL TreeBuilder::characters(void* data, const XML_Char* text, int length) {
    guarded(data, [text, length](TreeBuilder& self) {
        if (!self.m_open.empty() && length > 0) {
            self.m_text.append(text, static_cast<std::size_t>(length));
        }
    });
}

void XMLCALL TreeBuilder::comment(void* data, const XML_Char* text) {
    guarded(data, [text](TreeBuilder& self) {
        self.flushText();
        if (!self.m_open.empty()) {
            std::unique_ptr<Node> node(new Node(Node::COMMENT, self.m_commentName));
            node->setValue(text);
            self.adopt(std::move(node));
        }
    });
}

void XMLCALL TreeBuilder::instruction(void* data, const XML_Char* target, const XML_Char* text) {
    guarded(data, [target, text](TreeBuilder& self) {
        self.flushText();
        if (!self.m_open.empty()) {
            std::unique_ptr<Node> node(new Node(Node::PROCESSING_INSTRUCTION, target));
            node->setValue(text);
            self.adopt(std::move(node));
        }
    });
}

void XMLCALL TreeBuilder::startCdata(void* data) {
    guarded(data, [](TreeBuilder& self) { self.flushText(); });
}

// A CDATA section is a text node of its own, even when it is empty.
void XMLCALL TreeBuilder::endCdata(void* data) {
    guarded(data, [](TreeBuilder& self) { self.adopt(self.takeText()); });
}

// Called for a reference to an entity whose declaration was not read (it would be
// in an external part of the document type definition, which is never loaded).
void XMLCALL TreeBuilder::skippedEntity(void* data, const XML_Char* name, int isParameter) {
    guarded(data, [name, isParameter](TreeBuilder& self) {
        std::string message = "Entity reference ";
        message += isParameter ? "%" : "&";
        message += name;
        message += "; left out: its declaration was not read";
        if (self.m_sink.onWarning(String(message.c_str()), currentLine(self.m_parser)) != 0) {
            self.stop();
        }
    });
}
