// Shell-style wild-card patterns.
//
// Pattern language: "*" matches any run of characters (also none), "?" one
// character, "[...]" one character of a class: single characters and ranges
// "a-z", negated by a leading "!" or "^"; a "]" right after the opening bracket
// (or after the negation) is a member, as is a "-" first or last. "\" makes the
// next character literal, outside and inside a class. Everything else matches
// itself. A pattern matches the whole text, not a part of it.
#ifndef HOSTSDK_BASE_GLOBFILTER_H
#define HOSTSDK_BASE_GLOBFILTER_H

#include <string>
#include <vector>

#include "base/Export.h"

class HOSTSDK_API GlobFilter {
  public:
    enum Result {
        GLOB_OK = 0,
        GLOB_NO_MATCH = 1,
        GLOB_NULL_PATTERN = 2,        // compile: null pattern
        GLOB_UNTERMINATED_CLASS = 3,  // compile: "[" without its "]"
        GLOB_TRAILING_ESCAPE = 4,     // compile: "\" at the end of the pattern
        GLOB_NOT_COMPILED = 5,        // match: no pattern compiled successfully
    };

    GlobFilter();
    ~GlobFilter();
    GlobFilter(const GlobFilter&) = delete;
    GlobFilter& operator=(const GlobFilter&) = delete;

    // Compiles `pattern`; with `ignoreCase` letters match regardless of case
    // (simple case folding, independent of the process locale). Returns GLOB_OK, or
    // one of the compile errors above, which leaves the filter matching nothing.
    int compile(const wchar_t* pattern, bool ignoreCase);
    // Returns GLOB_OK (0) when `text` matches the compiled pattern, GLOB_NO_MATCH
    // when it does not, GLOB_NOT_COMPILED without a compiled pattern. A null text
    // matches like the empty text. Runs in time proportional to the product of the
    // text's and the pattern's lengths at worst.
    int match(const wchar_t* text) const;

    struct Token;

  private:
    // The common shapes are matched without the general walk.
    enum Shape { GENERAL, ANYTHING, EXACT, PREFIX };
    std::vector<Token>* m_tokens;
    bool m_ignoreCase;
    Shape m_shape;
    std::size_t m_literals;  // EXACT, PREFIX: the literal characters that lead
};

#endif
