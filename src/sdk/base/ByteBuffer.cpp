#include "base/ByteBuffer.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstring>

namespace {

// The first mapping; later ones at least double.
constexpr std::size_t kFirstCapacity = std::size_t(256) << 10;
// From this size on the mapping asks for huge pages.
constexpr std::size_t kHugeFrom = std::size_t(4) << 20;
constexpr std::size_t kPage = 4096;

void adviseHuge(char* data, std::size_t capacity) {
#ifdef MADV_HUGEPAGE
    if (capacity >= kHugeFrom) {
        // Only advice: without huge pages the buffer works the same.
        ::madvise(data, capacity, MADV_HUGEPAGE);
    }
#else
    (void)data;
    (void)capacity;
#endif
}

}  // namespace

ByteBuffer::~ByteBuffer() {
    clear();
}

ByteBuffer::ByteBuffer(ByteBuffer&& other) noexcept
    : m_data(other.m_data), m_size(other.m_size), m_capacity(other.m_capacity) {
    other.m_data = nullptr;
    other.m_size = 0;
    other.m_capacity = 0;
}

ByteBuffer& ByteBuffer::operator=(ByteBuffer&& other) noexcept {
    if (this != &other) {
        clear();
        m_data = other.m_data;
        m_size = other.m_size;
        m_capacity = other.m_capacity;
        other.m_data = nullptr;
        other.m_size = 0;
        other.m_capacity = 0;
    }
    return *this;
}

char* ByteBuffer::room(std::size_t count) noexcept {
    if (m_capacity - m_size >= count) {
        return m_data + m_size;
    }
    if (count > SIZE_MAX / 4 - m_size) {
        return nullptr;
    }
    std::size_t capacity = m_capacity < kFirstCapacity ? kFirstCapacity : m_capacity * 2;
    while (capacity - m_size < count) {
        capacity *= 2;
    }
    capacity = (capacity + kPage - 1) / kPage * kPage;
    void* grown = MAP_FAILED;
    if (m_data == nullptr) {
        grown =
            ::mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    } else {
        grown = ::mremap(m_data, m_capacity, capacity, MREMAP_MAYMOVE);
    }
    if (grown == MAP_FAILED) {
        return nullptr;
    }
    m_data = static_cast<char*>(grown);
    m_capacity = capacity;
    adviseHuge(m_data, m_capacity);
    return m_data + m_size;
}

bool ByteBuffer::append(const char* bytes, std::size_t count) noexcept {
    if (count == 0) {
        return true;
    }
    char* to = room(count);
    if (to == nullptr) {
        return false;
    }
    std::memcpy(to, bytes, count);
    commit(count);
    return true;
}

void ByteBuffer::clear() noexcept {
    if (m_data != nullptr) {
        ::munmap(m_data, m_capacity);
    }
    m_data = nullptr;
    m_size = 0;
    m_capacity = 0;
}
