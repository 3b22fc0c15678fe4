#include "base/GlobFilter.h"

#include <cstdint>
#include <utility>

#include "CaseFold.h"

struct GlobFilter::Token {
    enum Kind { LITERAL, ANY_ONE, ANY_RUN, CLASS };
    Kind kind;
    // LITERAL: the character (already folded when matching ignores case).
    wchar_t ch;
    // CLASS: members as inclusive ranges (a single character is a range of one).
    bool negated;
    std::vector<std::pair<wchar_t, wchar_t>> ranges;
};

namespace {

using Token = GlobFilter::Token;

bool inRanges(const Token& token, wchar_t c) {
    const auto value = static_cast<std::uint32_t>(c);
    for (const auto& range : token.ranges) {
        if (value >= static_cast<std::uint32_t>(range.first) &&
            value <= static_cast<std::uint32_t>(range.second)) {
            return true;
        }
    }
    return false;
}

// Does one character `c` (folded when `ignoreCase`) satisfy the single-character
// token? `original` is the unfolded character, tried against classes too.
bool matchesOne(const Token& token, wchar_t c, wchar_t original, bool ignoreCase) {
    switch (token.kind) {
        case Token::LITERAL:
            return token.ch == c;
        case Token::ANY_ONE:
            return true;
        case Token::CLASS: {
            bool member = inRanges(token, original);
            if (!member && ignoreCase) {
                member = inRanges(token, c) || inRanges(token, hostsdk::upperCase(original));
            }
            return member != token.negated;
        }
        case Token::ANY_RUN:
            break;
    }
    return false;
}

// Parses the class that starts after the "[" at `p`. On success stores the token,
// advances `p` past the closing "]" and returns GLOB_OK.
int parseClass(const wchar_t*& p, Token& token) {
    token.kind = Token::CLASS;
    token.ch = 0;
    token.negated = false;
    if (*p == L'!' || *p == L'^') {
        token.negated = true;
        ++p;
    }
    bool first = true;
    for (;;) {
        if (*p == L'\0') {
            return GlobFilter::GLOB_UNTERMINATED_CLASS;
        }
        if (*p == L']' && !first) {
            ++p;
            return GlobFilter::GLOB_OK;
        }
        first = false;
        wchar_t low = *p++;
        if (low == L'\\') {
            if (*p == L'\0') {
                return GlobFilter::GLOB_TRAILING_ESCAPE;
            }
            low = *p++;
        }
        wchar_t high = low;
        // A "-" between two members makes a range; before the closing "]" it is a
        // member itself.
        if (p[0] == L'-' && p[1] != L'\0' && p[1] != L']') {
            ++p;
            high = *p++;
            if (high == L'\\') {
                if (*p == L'\0') {
                    return GlobFilter::GLOB_TRAILING_ESCAPE;
                }
                high = *p++;
            }
        }
        token.ranges.emplace_back(low, high);
    }
}

}  // namespace

GlobFilter::GlobFilter()
    : m_tokens(nullptr), m_ignoreCase(false), m_shape(GENERAL), m_literals(0) {}

GlobFilter::~GlobFilter() {
    delete m_tokens;
}

int GlobFilter::compile(const wchar_t* pattern, bool ignoreCase) {
    delete m_tokens;
    m_tokens = nullptr;
    m_ignoreCase = ignoreCase;
    if (pattern == nullptr) {
        return GLOB_NULL_PATTERN;
    }
    auto* tokens = new std::vector<Token>();
    const wchar_t* p = pattern;
    while (*p != L'\0') {
        Token token{Token::LITERAL, 0, false, {}};
        const wchar_t c = *p++;
        if (c == L'*') {
            // Consecutive stars are one.
            if (!tokens->empty() && tokens->back().kind == Token::ANY_RUN) {
                continue;
            }
            token.kind = Token::ANY_RUN;
        } else if (c == L'?') {
            token.kind = Token::ANY_ONE;
        } else if (c == L'[') {
            const int rc = parseClass(p, token);
            if (rc != GLOB_OK) {
                delete tokens;
                return rc;
            }
        } else if (c == L'\\') {
            if (*p == L'\0') {
                delete tokens;
                return GLOB_TRAILING_ESCAPE;
            }
            token.ch = *p++;
        } else {
            token.ch = c;
        }
        if (token.kind == Token::LITERAL && ignoreCase) {
            token.ch = hostsdk::foldCase(token.ch);
        }
        tokens->push_back(std::move(token));
    }
    m_tokens = tokens;
    // Literals only ("bash"), literals and one final star ("lib*"), or just a star:
    // most patterns of a rule catalog.
    m_literals = 0;
    while (m_literals < tokens->size() && (*tokens)[m_literals].kind == Token::LITERAL) {
        ++m_literals;
    }
    if (m_literals == tokens->size()) {
        m_shape = EXACT;
    } else if (m_literals + 1 == tokens->size() && tokens->back().kind == Token::ANY_RUN) {
        m_shape = m_literals == 0 ? ANYTHING : PREFIX;
    } else {
        m_shape = GENERAL;
    }
    return GLOB_OK;
}

int GlobFilter::match(const wchar_t* text) const {
    if (m_tokens == nullptr) {
        return GLOB_NOT_COMPILED;
    }
    if (text == nullptr) {
        text = L"";
    }
    const std::vector<Token>& tokens = *m_tokens;
    if (m_shape != GENERAL) {
        if (m_shape == ANYTHING) {
            return GLOB_OK;
        }
        for (std::size_t i = 0; i < m_literals; ++i) {
            const wchar_t c = m_ignoreCase ? hostsdk::foldCase(text[i]) : text[i];
            if (text[i] == L'\0' || c != tokens[i].ch) {
                return GLOB_NO_MATCH;
            }
        }
        return m_shape == PREFIX || text[m_literals] == L'\0' ? GLOB_OK : GLOB_NO_MATCH;
    }
    const std::size_t count = tokens.size();
    std::size_t t = 0;  // next token
    const wchar_t* s = text;
    // The most recent "*": the token after it and the text position it resumes at.
    // Only the latest star needs remembering: whatever an earlier star would
    // absorb in addition, the later one can absorb as well.
    std::size_t starToken = count;
    const wchar_t* starText = nullptr;
    while (*s != L'\0') {
        if (t < count) {
            const Token& token = tokens[t];
            if (token.kind == Token::ANY_RUN) {
                starToken = ++t;
                starText = s;
                continue;
            }
            const wchar_t original = *s;
            const wchar_t c = m_ignoreCase ? hostsdk::foldCase(original) : original;
            if (matchesOne(token, c, original, m_ignoreCase)) {
                ++t;
                ++s;
                continue;
            }
        }
        if (starText == nullptr) {
            return GLOB_NO_MATCH;
        }
        // Let the last star absorb one more character and retry from there.
        t = starToken;
        s = ++starText;
    }
    while (t < count && tokens[t].kind == Token::ANY_RUN) {
        ++t;
    }
    return t == count ? GLOB_OK : GLOB_NO_MATCH;
}
