#include "cross/rpm/MemoryBuffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace RegPlugin {

namespace {

// Maps in the whole pages of a large region at once, before it is written: one
// call instead of one page fault per page, which matters where faults are dear
// (virtual machines). Only an optimisation: failures are ignored.
void prefault(unsigned char* start, std::size_t length) {
#ifdef MADV_POPULATE_WRITE
    const std::size_t kWorthIt = 256 * 1024;
    if (length < kWorthIt) {
        return;
    }
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pageSize <= 0) {
        return;
    }
    const std::uintptr_t page = static_cast<std::uintptr_t>(pageSize);
    const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(start) + page - 1) / page * page;
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(start) + length) / page * page;
    if (begin < end) {
        ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
    }
#else
    (void)start;
    (void)length;
#endif
}

}  // namespace

MemoryBuffer::MemoryBuffer(unsigned int size, unsigned int step)
    : data(nullptr), size(0), step(step == 0 ? 1 : step), m_allocated(0) {
    resize(size);
}

MemoryBuffer::~MemoryBuffer() {
    resize(0);
}

unsigned char* MemoryBuffer::resize(unsigned int newSize) {
    if (newSize == 0) {
        std::free(data);
        data = nullptr;
        size = 0;
        m_allocated = 0;
        return nullptr;
    }
    const std::uint64_t rounded =
        (static_cast<std::uint64_t>(newSize) + step - 1) / step * static_cast<std::uint64_t>(step);
    if (rounded > UINT32_MAX) {
        return nullptr;
    }
    const unsigned int capacity = static_cast<unsigned int>(rounded);
    if (size == 0) {
        unsigned char* fresh = static_cast<unsigned char*>(std::calloc(capacity, 1));
        if (fresh == nullptr) {
            return nullptr;
        }
        std::free(data);  // null unless a caller broke the size/data pairing
        data = fresh;
        size = capacity;
        m_allocated = capacity;
        return data;
    }
    if (capacity <= size) {
        // Shrinking: clear what is given up and what lies beyond the request, and
        // hand the rest of the storage back.
        std::memset(data + newSize, 0, size - newSize);
        unsigned char* moved = static_cast<unsigned char*>(std::realloc(data, capacity));
        if (moved != nullptr) {
            data = moved;
            m_allocated = capacity;
        }
        size = capacity;
        return data;
    }
    if (capacity > m_allocated) {
        // Double the storage (at least to `capacity`) so that a buffer grown one
        // step at a time is not copied once per step.
        std::uint64_t target = static_cast<std::uint64_t>(m_allocated) * 2;
        if (target < capacity) {
            target = capacity;
        }
        if (target > UINT32_MAX) {
            target = UINT32_MAX;
        }
        unsigned char* moved =
            static_cast<unsigned char*>(std::realloc(data, static_cast<std::size_t>(target)));
        if (moved == nullptr) {
            return nullptr;
        }
        data = moved;
        prefault(data + m_allocated, static_cast<std::size_t>(target) - m_allocated);
        std::memset(data + m_allocated, 0, static_cast<std::size_t>(target) - m_allocated);
        m_allocated = static_cast<unsigned int>(target);
    }
    // The bytes from the old size on are zero already.
    size = capacity;
    return data;
}

unsigned char* MemoryBuffer::zero() {
    if (size != 0 && data != nullptr) {
        std::memset(data, 0, size);
    }
    return data;
}

int MemoryBuffer::dump() {
    int result = std::fprintf(stdout, "size: %d (step %d)\n", static_cast<int>(size),
                              static_cast<int>(step));
    for (unsigned int i = 0; i < size; ++i) {
        result = std::fprintf(stdout, "%02x (%c) ", data[i], data[i]);
        if (i != 0 && i % 8 == 0) {
            result = std::fprintf(stdout, "\n");
        }
    }
    result = std::fprintf(stdout, "\n");
    return result;
}

}  // namespace RegPlugin
