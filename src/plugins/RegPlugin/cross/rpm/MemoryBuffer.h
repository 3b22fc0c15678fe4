// A growable byte buffer whose unwritten bytes are always zero.
//
// The capacity (`size`) is 0 or a whole multiple of `step`. There is no count of
// used bytes: the content ends at its first zero byte, and since every byte that
// has not been written is zero, text written short of the capacity is always
// NUL-terminated.
//
// `data` and `size` are read directly by users (the pointer is handed to read()
// and to line parsers); they change only through resize(). `data` stays valid
// until the next resize() or the buffer's destruction. A buffer owns its storage
// and cannot be copied.
#ifndef REGPLUGIN_CROSS_RPM_MEMORYBUFFER_H
#define REGPLUGIN_CROSS_RPM_MEMORYBUFFER_H

namespace RegPlugin {

class MemoryBuffer {
  public:
    // Starts empty with granule `step` (a step of 0 is taken as 1), then calls
    // resize(size).
    MemoryBuffer(unsigned int size, unsigned int step);
    // Frees the storage (resize(0)).
    virtual ~MemoryBuffer();
    MemoryBuffer(const MemoryBuffer&) = delete;
    MemoryBuffer& operator=(const MemoryBuffer&) = delete;

    // Sets the capacity to `newSize` rounded up to a multiple of the step and
    // returns the (possibly moved) storage. Bytes gained are zero, and so are the
    // bytes between `newSize` and the new capacity, also when shrinking. 0 frees the
    // storage and returns null. When the rounded size does not fit in 32 bits or
    // memory runs out, returns null and leaves storage, content and size untouched.
    //
    // Growing one step at a time costs amortised constant time per step: the
    // storage behind `data` grows geometrically and may be larger than `size`.
    unsigned char* resize(unsigned int newSize);

    // Sets every byte of the storage to 0; returns `data` (null when it has none).
    unsigned char* zero();

    // Debugging aid: writes "size: S (step T)", then every byte as "%02x (%c) ",
    // with a line end after the bytes at the indexes 8, 16, 24 and so on (the first
    // line thus holds nine bytes), and one final line end, to standard output.
    // Returns the result of the last fprintf.
    int dump();

    unsigned char* data;  // null while size is 0
    unsigned int size;    // bytes usable
    unsigned int step;    // granule of growth, never 0

  private:
    // Bytes allocated at `data`, at least `size`; those beyond `size` are zero.
    unsigned int m_allocated;
};

}  // namespace RegPlugin

#endif
