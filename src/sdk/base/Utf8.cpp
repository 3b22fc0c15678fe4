#include "base/Utf8.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr std::uint32_t kEscapeBase = 0xDC00;
constexpr std::uint32_t kReplacement = 0xFFFD;

inline bool isContinuation(unsigned char b) {
    return (b & 0xC0) == 0x80;
}

// Number of leading bytes of [p, end) that are all ASCII.
inline std::size_t asciiRun(const unsigned char* p, const unsigned char* end) {
    const unsigned char* start = p;
    while (end - p >= 8) {
        std::uint64_t word;
        std::memcpy(&word, p, sizeof word);
        if ((word & 0x8080808080808080ULL) != 0) {
            break;
        }
        p += 8;
    }
    while (p < end && *p < 0x80) {
        ++p;
    }
    return static_cast<std::size_t>(p - start);
}

// Decodes one multi-byte sequence starting at `p` (whose first byte is >= 0x80).
// Returns the number of bytes used and stores the character in `out`; an invalid
// lead byte or a malformed sequence uses one byte and yields its escape.
inline std::size_t decodeOne(const unsigned char* p, const unsigned char* end, wchar_t& out) {
    const unsigned char b0 = p[0];
    const std::size_t avail = static_cast<std::size_t>(end - p);
    if (b0 >= 0xC2 && b0 <= 0xDF) {
        if (avail >= 2 && isContinuation(p[1])) {
            out = static_cast<wchar_t>(((b0 & 0x1Fu) << 6) | (p[1] & 0x3Fu));
            return 2;
        }
    } else if (b0 >= 0xE0 && b0 <= 0xEF) {
        if (avail >= 3 && isContinuation(p[2])) {
            const unsigned char b1 = p[1];
            // Second-byte ranges exclude overlong forms (E0) and surrogates (ED).
            const unsigned char lo = b0 == 0xE0 ? 0xA0 : 0x80;
            const unsigned char hi = b0 == 0xED ? 0x9F : 0xBF;
            if (b1 >= lo && b1 <= hi) {
                out = static_cast<wchar_t>(((b0 & 0x0Fu) << 12) | ((b1 & 0x3Fu) << 6) |
                                           (p[2] & 0x3Fu));
                return 3;
            }
        }
    } else if (b0 >= 0xF0 && b0 <= 0xF4) {
        if (avail >= 4 && isContinuation(p[2]) && isContinuation(p[3])) {
            const unsigned char b1 = p[1];
            // Excludes overlong forms (F0) and code points above U+10FFFF (F4).
            const unsigned char lo = b0 == 0xF0 ? 0x90 : 0x80;
            const unsigned char hi = b0 == 0xF4 ? 0x8F : 0xBF;
            if (b1 >= lo && b1 <= hi) {
                out = static_cast<wchar_t>(((b0 & 0x07u) << 18) | ((b1 & 0x3Fu) << 12) |
                                           ((p[2] & 0x3Fu) << 6) | (p[3] & 0x3Fu));
                return 4;
            }
        }
    }
    out = static_cast<wchar_t>(kEscapeBase + b0);
    return 1;
}

}  // namespace

void Utf8::decode(const char* text, std::size_t length, std::wstring& out) {
    if (text == nullptr || length == 0) {
        return;
    }
    const auto* p = reinterpret_cast<const unsigned char*>(text);
    const unsigned char* end = p + length;
    // Never more characters than bytes: write into room made up front, then trim.
    const std::size_t base = out.size();
    out.resize(base + length);
    wchar_t* const first = &out[base];
    wchar_t* dst = first;
    while (p < end) {
        const std::size_t run = asciiRun(p, end);
        for (const unsigned char* stop = p + run; p < stop; ++p) {
            *dst++ = static_cast<wchar_t>(*p);
        }
        if (p == end) {
            break;
        }
        p += decodeOne(p, end, *dst);
        ++dst;
    }
    out.resize(base + static_cast<std::size_t>(dst - first));
}

std::size_t Utf8::decodeChar(const char* text, std::size_t length, wchar_t& out) {
    const auto* p = reinterpret_cast<const unsigned char*>(text);
    if (p[0] < 0x80) {
        out = static_cast<wchar_t>(p[0]);
        return 1;
    }
    return decodeOne(p, p + length, out);
}

std::wstring Utf8::decode(const char* text, std::size_t length) {
    std::wstring out;
    decode(text, length, out);
    return out;
}

std::wstring Utf8::decode(const char* text) {
    if (text == nullptr) {
        return std::wstring();
    }
    return decode(text, std::strlen(text));
}

void Utf8::encode(const wchar_t* text, std::size_t length, std::string& out) {
    if (text == nullptr || length == 0) {
        return;
    }
    out.reserve(out.size() + length);
    const wchar_t* end = text + length;
    const wchar_t* p = text;
    while (p < end) {
        // ASCII fast path.
        const wchar_t* run = p;
        while (run < end && static_cast<std::uint32_t>(*run) < 0x80) {
            ++run;
        }
        if (run != p) {
            const std::size_t base = out.size();
            out.resize(base + static_cast<std::size_t>(run - p));
            char* dst = &out[base];
            for (; p < run; ++p) {
                *dst++ = static_cast<char>(*p);
            }
            if (p == end) {
                break;
            }
        }
        std::uint32_t c = static_cast<std::uint32_t>(*p++);
        if (c < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (c >> 6)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
            continue;
        }
        if (c >= 0xD800 && c <= 0xDFFF) {
            if (c >= 0xDC80 && c <= 0xDCFF) {
                out.push_back(static_cast<char>(c - kEscapeBase));
                continue;
            }
            c = kReplacement;
        } else if (c > 0x10FFFF) {
            c = kReplacement;
        }
        if (c < 0x10000) {
            out.push_back(static_cast<char>(0xE0 | (c >> 12)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xF0 | (c >> 18)));
            out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
}

std::string Utf8::encode(const wchar_t* text, std::size_t length) {
    std::string out;
    encode(text, length, out);
    return out;
}

std::string Utf8::encode(const wchar_t* text) {
    if (text == nullptr) {
        return std::string();
    }
    return encode(text, std::wcslen(text));
}
