#include "xml/Node.h"

#include <gtest/gtest.h>

namespace {

TEST(NodeTest, ChildrenNeedAnOutPointer) {
    Node node(Node::ELEMENT, "r");
    EXPECT_EQ(node.getChildren(nullptr), 1);
    const std::list<Node*>* children = nullptr;
    ASSERT_EQ(node.getChildren(&children), 0);
    EXPECT_TRUE(children->empty());
}

TEST(NodeTest, AppendValueTakesTheGivenLength) {
    Node text(Node::TEXT, "#text");
    text.appendValue(L"abc", 2);
    text.appendValue(nullptr, 3);
    text.appendValue(L"xyz", 0);
    text.appendValue(L"c\0d", 3);
    EXPECT_EQ(text.getValue().wide(), std::wstring(L"abc\0d", 5));
}

TEST(NodeTest, DestroysALongChainWithoutRecursion) {
    Node* root = new Node(Node::ELEMENT, "a");
    Node* tip = root;
    for (int i = 0; i < 200000; ++i) {
        Node* child = new Node(i % 2 ? Node::ELEMENT : Node::TEXT, "a");
        tip->addChild(child);
        tip->addChild(new Node(Node::COMMENT, "#comment"));
        tip = child;
    }
    delete root;
}

}  // namespace
