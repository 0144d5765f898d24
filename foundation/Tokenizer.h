// Walks over a text of tokens separated by delimiters, as the toolkit's
// settings and resource texts are written ("10, 20, \"a name\""). The text is
// the caller's and must outlive the tokenizer.
#pragma once

#include <string>

namespace foundation {

class CTokenizer {
public:
    static constexpr char kDefaultDelimiters[] = ", \t\n\r";

    // Skips the delimiters at the start. Null delimiters mean
    // kDefaultDelimiters; a null text is the empty text.
    explicit CTokenizer(const char* text, const char* delimiters = nullptr);
    virtual ~CTokenizer() = default;

    CTokenizer(const CTokenizer&) = default;
    CTokenizer& operator=(const CTokenizer&) = default;

    // The current character, after which the cursor moves over any
    // delimiters that follow it; 0 at the end.
    char NextChar();

    // Characters up to the next delimiter. A double quote opens a stretch
    // that is copied, delimiters included, without its quotes, up to the
    // closing quote or the end; the token then goes on. The delimiters after
    // the token are skipped. The empty text at the end.
    std::string NextToken();

    // The next token as a number. A token that does not begin with a digit,
    // or with a minus and a digit, and a number below `low` or above `high`,
    // give `fallback`. What follows the digits is ignored ("12px" is 12); a
    // number too large for a long is held at the long's bound.
    long NextLong(long low, long high, long fallback);

    // What is left of the text.
    const char* Remaining() const { return cursor_; }

private:
    bool IsDelimiter(char c) const;
    void SkipDelimiters();

    const char* cursor_;
    const char* delimiters_;
};

}  // namespace foundation
