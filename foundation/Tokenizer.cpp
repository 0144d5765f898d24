#include "foundation/Tokenizer.h"

#include <cstdlib>
#include <cstring>

namespace foundation {

CTokenizer::CTokenizer(const char* text, const char* delimiters)
    : cursor_(text != nullptr ? text : ""),
      delimiters_(delimiters != nullptr ? delimiters : kDefaultDelimiters) {
    SkipDelimiters();
}

bool CTokenizer::IsDelimiter(char c) const {
    // strchr finds the terminator of the set too; the end of the text is
    // never a delimiter to step over.
    return c != '\0' && std::strchr(delimiters_, c) != nullptr;
}

void CTokenizer::SkipDelimiters() {
    while (IsDelimiter(*cursor_)) ++cursor_;
}

char CTokenizer::NextChar() {
    const char c = *cursor_;
    if (c == '\0') return '\0';
    ++cursor_;
    SkipDelimiters();
    return c;
}

std::string CTokenizer::NextToken() {
    std::string token;
    while (*cursor_ != '\0' && !IsDelimiter(*cursor_)) {
        if (*cursor_ == '"') {
            ++cursor_;
            while (*cursor_ != '\0' && *cursor_ != '"') token += *cursor_++;
            if (*cursor_ == '"') ++cursor_;
        } else {
            token += *cursor_++;
        }
    }
    SkipDelimiters();
    return token;
}

long CTokenizer::NextLong(long low, long high, long fallback) {
    const std::string token = NextToken();
    auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const bool numeric = isDigit(token[0]) || (token[0] == '-' && isDigit(token[1]));
    if (!numeric) return fallback;
    // strtol, unlike atol, has a defined answer for a number out of range.
    const long value = std::strtol(token.c_str(), nullptr, 10);
    if (value < low || value > high) return fallback;
    return value;
}

}  // namespace foundation
