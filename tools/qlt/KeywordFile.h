// The keyword file of `qlt create --from DIR --keywords FILE`: one line per
// picture, `NAME: WORD WORD ...`, described in docs/qlt.md. Portable.
#pragma once

#include <string>
#include <vector>

namespace qlt {

struct KeywordLine {
    int line = 0;      // counted from 1
    std::string name;  // a picture's file name, without folder
    std::vector<std::string> words;
};

struct KeywordFile {
    std::vector<KeywordLine> lines;
    std::vector<std::string> messages;  // "FILE:LINE: what is wrong", one per problem
    bool Ok() const { return messages.empty(); }
};

// Parses the file's text; `label` names it in messages. Lines that are empty
// or begin with '#' are skipped; words are separated by blanks or commas.
KeywordFile ParseKeywordFile(const std::string& text, const std::string& label);

// The keywords of each item, in the order of `itemFiles` (the file names the
// items were made from). A line's name matches a file name without regard to
// case, as the names of one folder on Windows do (so a folder that holds two
// names differing only in case gives the words to both); every line must
// match an item. `skippedFiles` are files of the folder that became no item, named in
// the message of a line that points at one. Problems are added to
// `messages` as "FILE:LINE: what is wrong".
std::vector<std::vector<std::string>> AssignKeywords(const KeywordFile& file,
                                                     const std::vector<std::string>& itemFiles,
                                                     const std::vector<std::string>& skippedFiles,
                                                     const std::string& label,
                                                     std::vector<std::string>& messages);

}  // namespace qlt
