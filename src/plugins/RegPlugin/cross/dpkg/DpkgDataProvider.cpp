#include "cross/dpkg/DpkgDataProvider.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>

#include "RegPluginConstants.h"
#include "base/Utf8.h"
#include "common/PluginTrace.h"
#include "cross/dpkg/DpkgPackage.h"

namespace RegPlugin {

const char* const DPKG_STATUS_FILE = "/var/lib/dpkg/status";

namespace {

// Closes a file descriptor when it goes out of scope.
class FileCloser {
  public:
    explicit FileCloser(int fd) : m_fd(fd) {}
    ~FileCloser() { ::close(m_fd); }
    FileCloser(const FileCloser&) = delete;
    FileCloser& operator=(const FileCloser&) = delete;

  private:
    int m_fd;
};

// Streams a file through one fixed buffer and hands out its lines in place, without
// copying them. Lines may have any length: a line longer than the buffer comes in
// several pieces, so memory stays bounded by the buffer whatever the input. A read
// error ends the input like the end of the file; error() then holds its errno.
class LineReader {
  public:
    struct Piece {
        const char* data;  // valid until the next call of next()
        std::size_t size;  // the bytes of the line in this piece, without the "\n"
        bool first;        // the line starts with this piece
        bool last;         // the line ends with this piece
        bool newline;      // (last pieces) the line ended with "\n", not with the input
    };

    // Large enough that a status line practically never needs two pieces, small
    // enough not to matter next to the packages kept.
    static constexpr std::size_t kBufferSize = 128 * 1024;

    explicit LineReader(int fd)
        : m_fd(fd),
          m_buffer(new char[kBufferSize]),
          m_begin(0),
          m_end(0),
          m_atEnd(false),
          m_inLine(false),
          m_error(0) {}

    // The next piece; false once the input is exhausted.
    bool next(Piece& piece) {
        for (;;) {
            char* const buffer = m_buffer.get();
            if (m_begin < m_end) {
                const char* start = buffer + m_begin;
                const std::size_t available = m_end - m_begin;
                const char* newline = static_cast<const char*>(std::memchr(start, '\n', available));
                if (newline != nullptr) {
                    const std::size_t size = static_cast<std::size_t>(newline - start);
                    piece = Piece{start, size, !m_inLine, true, true};
                    m_begin += size + 1;
                    m_inLine = false;
                    return true;
                }
                if (m_atEnd) {
                    piece = Piece{start, available, !m_inLine, true, false};
                    m_begin = m_end;
                    m_inLine = false;
                    return true;
                }
                if (m_begin == 0 && m_end == kBufferSize) {
                    // The buffer holds part of one line only: hand it out and go on.
                    piece = Piece{start, available, !m_inLine, false, false};
                    m_begin = m_end = 0;
                    m_inLine = true;
                    return true;
                }
                // Move the unfinished line to the front and read the rest behind it.
                std::memmove(buffer, start, available);
                m_begin = 0;
                m_end = available;
            } else {
                if (m_atEnd) {
                    return false;
                }
                m_begin = m_end = 0;
            }
            fill();
        }
    }

    int error() const { return m_error; }

  private:
    // Reads behind m_end, up to the end of the buffer; sets m_atEnd at the end of the
    // file or on a read error.
    void fill() {
        ssize_t count;
        do {
            count = ::read(m_fd, m_buffer.get() + m_end, kBufferSize - m_end);
        } while (count < 0 && errno == EINTR);
        if (count > 0) {
            m_end += static_cast<std::size_t>(count);
        } else {
            m_atEnd = true;
            if (count < 0) {
                m_error = errno;
            }
        }
    }

    int m_fd;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_begin;  // the unread bytes are [m_begin, m_end)
    std::size_t m_end;
    bool m_atEnd;
    bool m_inLine;  // the last piece handed out did not end its line
    int m_error;
};

// Turns the lines of a status file into packages, one paragraph at a time, and hands
// each installed one to `keep`, a callable bool(DpkgPackage*) that returns whether it
// took ownership; a package it did not take is destroyed here.
//
// The rules, in terms of lines:
// - an empty line ends the paragraph (a "\r" before the "\n" belongs to the line end,
//   so CRLF files read like LF files);
// - a line starting with a space (continuation lines, " .") or with a NUL byte is
//   ignored, so a multi-line value keeps its first line only;
// - any other line is a field "name: value". The name is what lies between the
//   line's leading colons and the next colon; spaces at the start of the value are
//   skipped. A line without a colon there is a field that stores nothing. A NUL byte
//   ends the line's text (what follows it up to the "\n" is dropped). A value that
//   is empty although the line had its "\n" is the one-character text "\n" (the
//   line end is kept when nothing else is there).
// - The first "Package" line of a paragraph makes the package and its key; fields
//   before it are dropped; a later "Package" line only replaces the name. Version,
//   Description and Status are taken from every line of that name after the first
//   "Package", the last one winning (Status: any value with " installed").
// - At the end of a paragraph, or of the input, a package that is installed is
//   added to the cache; others are dropped before any string is made for them.
//
// Values are UTF-8; bytes that are not stay in the strings as escape characters
// (the host's conversion), so they read back unchanged.
//
// Values are copied into reused buffers while the paragraph lasts, since the reader
// reuses its buffer. Only installed packages get strings: the key, and the name
// sharing the key's string when the two are equal; version and description are
// handed over as text, made into strings when first asked for.
template <class Keep>
class StatusParser {
  public:
    explicit StatusParser(Keep& keep)
        : m_keep(keep),
          m_field(NONE),
          m_cut(false),
          m_skippingSpaces(false),
          m_hasPackage(false),
          m_installed(false),
          m_hasVersion(false),
          m_hasDescription(false) {}

    void consume(const LineReader::Piece& piece) {
        if (piece.first) {
            startLine(piece);
        } else {
            collect(piece.data, piece.size);
        }
        if (piece.last) {
            finishLine(piece.newline);
        }
    }

    // The end of the input ends the last paragraph, with or without an empty line.
    void finish() { endParagraph(); }

  private:
    enum Field { NONE, OTHER, PACKAGE, VERSION, DESCRIPTION, STATUS };

    // The field named at `name` (a line's text after its leading colons, `end` its
    // end): one of the four kept when the text starts with that name and a colon,
    // OTHER otherwise. Sets `value` to the byte after the colon of a kept field.
    static Field fieldAt(const char* name, const char* end, const char*& value) {
        struct Known {
            const char* text;  // with its colon
            std::size_t length;
            Field field;
        };
        static const Known kPackage = {"Package:", 8, PACKAGE};
        static const Known kVersion = {"Version:", 8, VERSION};
        static const Known kDescription = {"Description:", 12, DESCRIPTION};
        static const Known kStatus = {"Status:", 7, STATUS};
        const Known* known = nullptr;
        switch (*name) {
            case 'P':
                known = &kPackage;
                break;
            case 'V':
                known = &kVersion;
                break;
            case 'D':
                known = &kDescription;
                break;
            case 'S':
                known = &kStatus;
                break;
            default:
                return OTHER;
        }
        if (static_cast<std::size_t>(end - name) < known->length ||
            std::memcmp(name, known->text, known->length) != 0) {
            return OTHER;
        }
        value = name + known->length;
        return known->field;
    }

    void startLine(const LineReader::Piece& piece) {
        m_field = NONE;
        if (piece.last &&
            (piece.size == 0 || (piece.newline && piece.size == 1 && piece.data[0] == '\r'))) {
            endParagraph();
            return;
        }
        // Not empty: a line of size 0 always ends in the same piece.
        if (piece.data[0] == ' ' || piece.data[0] == '\0') {
            return;
        }
        const char* p = piece.data;
        const char* end = p + piece.size;
        while (p < end && *p == ':') {
            ++p;
        }
        // The name runs up to the next colon. One that has not ended within the first
        // piece (over 128 KiB of colons and name) is none of the four that are kept,
        // and neither is one with a NUL byte in it, so only a kept field's value needs
        // looking at for NULs.
        const char* value = nullptr;
        const Field field = p < end ? fieldAt(p, end, value) : OTHER;
        if (field == OTHER || (field != PACKAGE && !m_hasPackage)) {
            return;
        }
        const char* nul = static_cast<const char*>(
            std::memchr(value, '\0', static_cast<std::size_t>(end - value)));
        if (nul != nullptr) {
            end = nul;
        }
        m_field = field;
        m_cut = nul != nullptr;
        m_value.clear();
        m_skippingSpaces = true;
        append(value, end);
    }

    // The rest of a line that did not fit into one piece.
    void collect(const char* data, std::size_t size) {
        if (m_field == NONE || m_cut) {
            return;
        }
        const char* end = data + size;
        const char* nul = static_cast<const char*>(std::memchr(data, '\0', size));
        if (nul != nullptr) {
            end = nul;
            m_cut = true;
        }
        append(data, end);
    }

    void append(const char* p, const char* end) {
        if (m_skippingSpaces) {
            while (p < end && *p == ' ') {
                ++p;
            }
            m_skippingSpaces = p == end;
        }
        m_value.append(p, static_cast<std::size_t>(end - p));
    }

    void finishLine(bool newline) {
        if (m_field == NONE) {
            return;
        }
        if (newline && !m_cut) {
            if (!m_value.empty() && m_value.back() == '\r') {
                m_value.pop_back();
            }
            if (m_value.empty()) {
                m_value.assign(1, '\n');
            }
        }
        switch (m_field) {
            case PACKAGE:
                if (!m_hasPackage) {
                    m_hasPackage = true;
                    m_key = m_value;
                }
                m_name.swap(m_value);
                break;
            case VERSION:
                m_version.swap(m_value);
                m_hasVersion = true;
                break;
            case DESCRIPTION:
                m_description.swap(m_value);
                m_hasDescription = true;
                break;
            case STATUS:
                if (DpkgPackage::statusIsInstalled(m_value.data(), m_value.size())) {
                    m_installed = true;
                }
                break;
            case NONE:
            case OTHER:
                break;
        }
        m_field = NONE;
    }

    void endParagraph() {
        if (m_hasPackage && m_installed) {
            storePackage();
        }
        m_hasPackage = false;
        m_installed = false;
        m_hasVersion = false;
        m_hasDescription = false;
    }

    void storePackage() {
        const PluginSDK::String key = makeString(m_key);
        std::unique_ptr<DpkgPackage> package(new DpkgPackage(key));
        package->setInstalled();
        package->deferText(m_hasVersion ? &m_version : nullptr,
                           m_hasDescription ? &m_description : nullptr);
        package->setName(m_name == m_key ? key : makeString(m_name));
        if (m_keep(package.get())) {
            package.release();
        }
    }

    // The same conversion as PluginSDK::String's UTF-8 constructor, through one
    // reused buffer instead of a temporary per string; ASCII text (nearly all of a
    // status file) is widened directly.
    PluginSDK::String makeString(const std::string& text) {
        const std::size_t size = text.size();
        if (m_wide.size() < size) {
            m_wide.resize(size);
        }
        wchar_t* const out = &m_wide[0];
        const auto* in = reinterpret_cast<const unsigned char*>(text.data());
        std::size_t ascii = 0;
        while (ascii < size && in[ascii] < 0x80) {
            out[ascii] = static_cast<wchar_t>(in[ascii]);
            ++ascii;
        }
        if (ascii == size) {
            return PluginSDK::String(out, size);
        }
        m_wide.clear();
        Utf8::decode(text.data(), size, m_wide);
        return PluginSDK::String(m_wide.data(), m_wide.size());
    }

    Keep& m_keep;
    std::wstring m_wide;

    // The field line being read.
    Field m_field;  // NONE when the line stores nothing
    bool m_cut;     // a NUL byte ended the line's text
    bool m_skippingSpaces;
    std::string m_value;

    // The paragraph being read.
    bool m_hasPackage;
    bool m_installed;
    bool m_hasVersion;
    bool m_hasDescription;
    std::string m_key;
    std::string m_name;
    std::string m_version;
    std::string m_description;
};

}  // namespace

DpkgDataProvider::DpkgDataProvider(const char* statusFile)
    : m_statusFile(statusFile != nullptr ? statusFile : DPKG_STATUS_FILE) {}

DpkgDataProvider::~DpkgDataProvider() = default;

TErrorCode DpkgDataProvider::load() {
    REG_TRACE_SCOPE("DpkgDataProvider::load()");
    int fd;
    do {
        // Without O_NONBLOCK, opening a FIFO would wait for a writer forever.
        fd = ::open(m_statusFile.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) {
        // The caller only learns the code; the path and the reason are for people.
        const int error = errno;
        REG_TRACE(1, "cannot open ", m_statusFile.c_str(), " ( errno = ", error, " )");
        return REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
    }
    FileCloser closer(fd);
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        // A FIFO, device or directory is no status file (a FIFO could block reads).
        REG_TRACE(1, "cannot read ", m_statusFile.c_str(), ": not a regular file");
        return REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
    }
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);

    LineReader reader(fd);
    // The first package of a name wins: add() keeps the one it has and leaves the new
    // one ours; what it takes it appends to the list.
    auto keep = [this](DpkgPackage* package) {
        add(package);
        return !packages.empty() && packages.back() == package;
    };
    StatusParser<decltype(keep)> parser(keep);
    LineReader::Piece piece;
    while (reader.next(piece)) {
        parser.consume(piece);
    }
    parser.finish();

    if (reader.error() != 0) {
        REG_TRACE(2, "reading ", m_statusFile.c_str(), " stopped ( errno = ", reader.error(),
                  " ); the packages read before are kept");
    }
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin
