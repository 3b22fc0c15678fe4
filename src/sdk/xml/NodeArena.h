// The memory of the nodes below the root of a tree that the reader built: nodes
// are placed one after the other in blocks that the root frees at once, after the
// nodes in them were destroyed (Node::~Node). A large document has hundreds of
// thousands of nodes, mostly small text nodes; building and freeing them one by
// one was a large part of reading it.
#ifndef HOSTSDK_XML_NODEARENA_H
#define HOSTSDK_XML_NODEARENA_H

#include <cstddef>
#include <memory>
#include <vector>

class NodeArena {
  public:
    NodeArena() = default;
    NodeArena(const NodeArena&) = delete;
    NodeArena& operator=(const NodeArena&) = delete;

    // Room for `size` bytes aligned for any object; valid until the arena is
    // destroyed. Throws std::bad_alloc when a new block cannot be had.
    void* allocate(std::size_t size) {
        size = (size + kAlignment - 1) & ~(kAlignment - 1);
        if (size > m_left) {
            grow(size);
        }
        void* room = m_next;
        m_next += size;
        m_left -= size;
        return room;
    }

  private:
    static constexpr std::size_t kAlignment = alignof(std::max_align_t);
    static constexpr std::size_t kFirstBlock = 4 * 1024;
    static constexpr std::size_t kLargestBlock = 256 * 1024;

    void grow(std::size_t size) {
        std::size_t block = m_blocks.empty() ? kFirstBlock : m_blockSize * 2;
        if (block > kLargestBlock) {
            block = kLargestBlock;
        }
        if (block < size) {
            block = size;
        }
        m_blocks.reserve(m_blocks.size() + 1);
        m_blocks.emplace_back(new char[block]);
        m_blockSize = block;
        m_next = m_blocks.back().get();
        m_left = block;
    }

    std::vector<std::unique_ptr<char[]>> m_blocks;
    std::size_t m_blockSize = 0;
    char* m_next = nullptr;
    std::size_t m_left = 0;
};

#endif
