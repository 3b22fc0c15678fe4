// A growing block of bytes for large outputs (a child's standard output): kept in
// its own memory mapping, which grows in place or is moved by the kernel without
// copying, and which uses huge pages once it is large, so that collecting tens of
// megabytes neither copies them again nor faults them in 4 KiB at a time.
#ifndef HOSTSDK_BASE_BYTEBUFFER_H
#define HOSTSDK_BASE_BYTEBUFFER_H

#include <cstddef>

#include "base/Export.h"

class HOSTSDK_API ByteBuffer {
  public:
    ByteBuffer() noexcept : m_data(nullptr), m_size(0), m_capacity(0) {}
    ~ByteBuffer();
    ByteBuffer(ByteBuffer&& other) noexcept;
    ByteBuffer& operator=(ByteBuffer&& other) noexcept;
    ByteBuffer(const ByteBuffer&) = delete;
    ByteBuffer& operator=(const ByteBuffer&) = delete;

    // The bytes (null while empty and never grown) and their count.
    const char* data() const noexcept { return m_data; }
    std::size_t size() const noexcept { return m_size; }
    bool empty() const noexcept { return m_size == 0; }

    // Room for at least `count` more bytes after the data: where they go, or null
    // when no memory can be had (the data is kept then). Earlier pointers into the
    // buffer are no longer valid afterwards.
    char* room(std::size_t count) noexcept;
    // The first `count` bytes of the room are now data.
    void commit(std::size_t count) noexcept { m_size += count; }
    // Appends a copy of `count` bytes; false when no memory can be had.
    bool append(const char* bytes, std::size_t count) noexcept;
    // Empties the buffer and gives its memory back.
    void clear() noexcept;

  private:
    char* m_data;
    std::size_t m_size;
    std::size_t m_capacity;
};

#endif
