#include "PluginSDK/String.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>
#include <new>
#include <string>

#include "base/Utf8.h"

namespace PluginSDK {

// One heap block: the header below, directly followed by capacity + 1 characters
// of which the first `length` are the text and the next one is NUL. A rep exists
// only for non-empty text and is shared by every copy of the string; it is changed
// in place only while its count is 1.
struct String::Rep {
    std::atomic<std::size_t> refs;
    std::size_t length;
    std::size_t capacity;

    wchar_t* data() noexcept { return reinterpret_cast<wchar_t*>(this + 1); }

    // A rep with count 1 and room for `capacity` characters; its text is unset.
    static Rep* create(std::size_t capacity) {
        const std::size_t maxChars =
            (std::numeric_limits<std::size_t>::max() - sizeof(Rep)) / sizeof(wchar_t) - 1;
        if (capacity > maxChars ||
            capacity > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
            throw std::bad_alloc();
        }
        void* block = ::operator new(sizeof(Rep) + (capacity + 1) * sizeof(wchar_t));
        Rep* rep = new (block) Rep;
        rep->refs.store(1, std::memory_order_relaxed);
        rep->length = 0;
        rep->capacity = capacity;
        return rep;
    }

    // A rep holding a copy of `length` characters of `text`.
    static Rep* copyOf(const wchar_t* text, std::size_t length) {
        Rep* rep = create(length);
        std::wmemcpy(rep->data(), text, length);
        rep->data()[length] = L'\0';
        rep->length = length;
        return rep;
    }

    static void acquire(Rep* rep) noexcept {
        if (rep != nullptr) {
            rep->refs.fetch_add(1, std::memory_order_relaxed);
        }
    }

    static void release(Rep* rep) noexcept {
        if (rep != nullptr && rep->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            rep->~Rep();
            ::operator delete(static_cast<void*>(rep));
        }
    }

    bool unique() const noexcept { return refs.load(std::memory_order_acquire) == 1; }
};

namespace {

const wchar_t kEmpty[1] = {L'\0'};

bool isSpace(wchar_t c) {
    return c == L' ' || c == L'\t' || c == L'\n' || c == L'\v' || c == L'\f' || c == L'\r';
}

}  // namespace

String::String(const String& other) noexcept : m_rep(other.m_rep) {
    Rep::acquire(m_rep);
}

String::String(const char* text) : m_rep(nullptr) {
    if (text != nullptr && *text != '\0') {
        const std::wstring wide = Utf8::decode(text);
        assign(wide.data(), wide.size());
    }
}

String::String(const char* text, std::size_t length) : m_rep(nullptr) {
    if (text != nullptr && length != 0) {
        const std::wstring wide = Utf8::decode(text, length);
        assign(wide.data(), wide.size());
    }
}

String::String(const wchar_t* text) : m_rep(nullptr) {
    if (text != nullptr) {
        assign(text, std::wcslen(text));
    }
}

String::String(const wchar_t* text, std::size_t length) : m_rep(nullptr) {
    if (text != nullptr) {
        assign(text, length);
    }
}

String::String(const std::wstring& text) : m_rep(nullptr) {
    assign(text.data(), text.size());
}

String::~String() {
    Rep::release(m_rep);
}

String& String::operator=(const String& other) noexcept {
    Rep::acquire(other.m_rep);
    Rep::release(m_rep);
    m_rep = other.m_rep;
    return *this;
}

String& String::operator=(String&& other) noexcept {
    if (this != &other) {
        Rep::release(m_rep);
        m_rep = other.m_rep;
        other.m_rep = nullptr;
    }
    return *this;
}

String& String::operator=(const char* text) {
    if (text == nullptr || *text == '\0') {
        assign(nullptr, 0);
    } else {
        const std::wstring wide = Utf8::decode(text);
        assign(wide.data(), wide.size());
    }
    return *this;
}

String& String::operator=(const wchar_t* text) {
    assign(text, text == nullptr ? 0 : std::wcslen(text));
    return *this;
}

String::operator const wchar_t*() const noexcept {
    return m_rep == nullptr ? kEmpty : m_rep->data();
}

int String::length() const noexcept {
    return m_rep == nullptr ? 0 : static_cast<int>(m_rep->length);
}

bool String::operator==(const String& other) const noexcept {
    if (m_rep == other.m_rep) {
        return true;
    }
    if (m_rep == nullptr || other.m_rep == nullptr || m_rep->length != other.m_rep->length) {
        return false;
    }
    return std::wmemcmp(m_rep->data(), other.m_rep->data(), m_rep->length) == 0;
}

bool String::operator==(const wchar_t* other) const noexcept {
    if (other == nullptr) {
        return m_rep == nullptr;
    }
    const std::size_t length = m_rep == nullptr ? 0 : m_rep->length;
    const wchar_t* mine = *this;
    // Equal when the first `length` characters match and `other` ends right there.
    for (std::size_t i = 0; i < length; ++i) {
        if (other[i] == L'\0' || mine[i] != other[i]) {
            return false;
        }
    }
    return other[length] == L'\0';
}

bool String::operator<(const String& other) const noexcept {
    if (m_rep == other.m_rep || other.m_rep == nullptr) {
        return false;
    }
    if (m_rep == nullptr) {
        return true;
    }
    const std::size_t common =
        m_rep->length < other.m_rep->length ? m_rep->length : other.m_rep->length;
    // Most keys of a map differ in their first character: decide those inline.
    if (common > 0 && m_rep->data()[0] != other.m_rep->data()[0]) {
        return std::char_traits<wchar_t>::lt(m_rep->data()[0], other.m_rep->data()[0]);
    }
    const int order =
        std::char_traits<wchar_t>::compare(m_rep->data(), other.m_rep->data(), common);
    return order != 0 ? order < 0 : m_rep->length < other.m_rep->length;
}

String String::operator+(const String& other) const {
    if (other.m_rep == nullptr) {
        return *this;
    }
    if (m_rep == nullptr) {
        return other;
    }
    String result;
    result.m_rep = Rep::create(m_rep->length + other.m_rep->length);
    std::wmemcpy(result.m_rep->data(), m_rep->data(), m_rep->length);
    std::wmemcpy(result.m_rep->data() + m_rep->length, other.m_rep->data(),
                 other.m_rep->length + 1);
    result.m_rep->length = m_rep->length + other.m_rep->length;
    return result;
}

String String::operator+(const wchar_t* other) const {
    if (other == nullptr || *other == L'\0') {
        return *this;
    }
    const std::size_t otherLength = std::wcslen(other);
    const std::size_t length = m_rep == nullptr ? 0 : m_rep->length;
    String result;
    result.m_rep = Rep::create(length + otherLength);
    std::wmemcpy(result.m_rep->data(), c_str(), length);
    std::wmemcpy(result.m_rep->data() + length, other, otherLength + 1);
    result.m_rep->length = length + otherLength;
    return result;
}

String& String::operator+=(const String& other) {
    if (other.m_rep != nullptr) {
        if (m_rep == nullptr) {
            *this = other;  // share instead of copying
        } else {
            // `other` may be this string: keep its rep alive while appending.
            String keep(other);
            append(keep.m_rep->data(), keep.m_rep->length);
        }
    }
    return *this;
}

String& String::operator+=(const wchar_t* other) {
    if (other != nullptr) {
        append(other, std::wcslen(other));
    }
    return *this;
}

String& String::operator+=(wchar_t c) {
    append(&c, 1);
    return *this;
}

String& String::trim() {
    if (m_rep == nullptr) {
        return *this;
    }
    const wchar_t* text = m_rep->data();
    std::size_t begin = 0;
    std::size_t end = m_rep->length;
    while (begin < end && isSpace(text[begin])) {
        ++begin;
    }
    while (end > begin && isSpace(text[end - 1])) {
        --end;
    }
    if (begin == 0 && end == m_rep->length) {
        return *this;
    }
    if (begin == end) {
        assign(nullptr, 0);
    } else if (m_rep->unique()) {
        std::wmemmove(m_rep->data(), text + begin, end - begin);
        m_rep->length = end - begin;
        m_rep->data()[m_rep->length] = L'\0';
    } else {
        Rep* fresh = Rep::copyOf(text + begin, end - begin);
        Rep::release(m_rep);
        m_rep = fresh;
    }
    return *this;
}

std::string String::toUtf8() const {
    return m_rep == nullptr ? std::string() : Utf8::encode(m_rep->data(), m_rep->length);
}

char* String::getMultibyteString(const wchar_t* text) {
    if (text == nullptr) {
        return nullptr;
    }
    try {
        const std::string narrow = Utf8::encode(text);
        char* copy = static_cast<char*>(std::malloc(narrow.size() + 1));
        if (copy != nullptr) {
            std::memcpy(copy, narrow.c_str(), narrow.size() + 1);
        }
        return copy;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void String::assign(const wchar_t* text, std::size_t length) {
    if (text == nullptr || length == 0) {
        Rep::release(m_rep);
        m_rep = nullptr;
        return;
    }
    if (m_rep != nullptr && m_rep->unique() && m_rep->capacity >= length) {
        // `text` may lie inside this rep.
        std::wmemmove(m_rep->data(), text, length);
        m_rep->data()[length] = L'\0';
        m_rep->length = length;
        return;
    }
    Rep* fresh = Rep::copyOf(text, length);
    Rep::release(m_rep);
    m_rep = fresh;
}

void String::append(const wchar_t* text, std::size_t length) {
    if (length == 0) {
        return;
    }
    if (m_rep == nullptr) {
        assign(text, length);
        return;
    }
    const std::size_t oldLength = m_rep->length;
    if (length > std::numeric_limits<std::size_t>::max() - oldLength) {
        throw std::bad_alloc();
    }
    const std::size_t newLength = oldLength + length;
    if (m_rep->unique() && m_rep->capacity >= newLength) {
        // The source ends at or before the old end, so it cannot overlap the target.
        std::wmemmove(m_rep->data() + oldLength, text, length);
        m_rep->data()[newLength] = L'\0';
        m_rep->length = newLength;
        return;
    }
    // A shared rep is copied at the exact size; a private one that ran out of room
    // grows by half, so that repeated appends stay linear.
    std::size_t capacity = newLength;
    if (m_rep->unique()) {
        const std::size_t grown = m_rep->capacity + m_rep->capacity / 2;
        if (grown > capacity &&
            grown <= static_cast<std::size_t>(std::numeric_limits<int>::max())) {
            capacity = grown;
        }
    }
    Rep* fresh = Rep::create(capacity);
    std::wmemcpy(fresh->data(), m_rep->data(), oldLength);
    std::wmemcpy(fresh->data() + oldLength, text, length);
    fresh->data()[newLength] = L'\0';
    fresh->length = newLength;
    Rep::release(m_rep);
    m_rep = fresh;
}

bool operator==(const wchar_t* left, const String& right) noexcept {
    return right == left;
}

bool operator!=(const wchar_t* left, const String& right) noexcept {
    return !(right == left);
}

String operator+(const wchar_t* left, const String& right) {
    return String(left) + right;
}

}  // namespace PluginSDK
