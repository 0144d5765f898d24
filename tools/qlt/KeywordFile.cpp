#include "tools/qlt/KeywordFile.h"

#include "foundation/SortStrings.h"
#include "tools/qlt/TextLines.h"

namespace qlt {

namespace {

std::string Where(const std::string& label, int line) {
    return label + ":" + std::to_string(line) + ": ";
}

bool SameName(const std::string& left, const std::string& right) {
    return left.size() == right.size() && foundation::CompareNoCase(left.c_str(), right.c_str()) == 0;
}

}  // namespace

KeywordFile ParseKeywordFile(const std::string& text, const std::string& label) {
    KeywordFile file;
    int number = 0;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        ++number;
        const std::string line = Trim(text.substr(start, end - start));
        start = end + 1;
        if (line.empty() || line[0] == '#') continue;
        // Windows file names cannot hold a colon, so the first one ends the name.
        const size_t colon = line.find(':');
        if (colon == std::string::npos) {
            file.messages.push_back(Where(label, number) + "expected 'NAME: WORD WORD ...'");
            continue;
        }
        KeywordLine entry;
        entry.line = number;
        entry.name = Trim(line.substr(0, colon));
        if (entry.name.empty()) {
            file.messages.push_back(Where(label, number) + "the line names no picture before its ':'");
            continue;
        }
        const std::string words = line.substr(colon + 1);
        size_t at = 0;
        while (at < words.size()) {
            const size_t first = words.find_first_not_of(std::string(kBlanks) + ",", at);
            if (first == std::string::npos) break;
            size_t last = words.find_first_of(std::string(kBlanks) + ",", first);
            if (last == std::string::npos) last = words.size();
            entry.words.push_back(words.substr(first, last - first));
            at = last;
        }
        file.lines.push_back(std::move(entry));
    }
    return file;
}

std::vector<std::vector<std::string>> AssignKeywords(const KeywordFile& file,
                                                     const std::vector<std::string>& itemFiles,
                                                     const std::vector<std::string>& skippedFiles,
                                                     const std::string& label,
                                                     std::vector<std::string>& messages) {
    std::vector<std::vector<std::string>> keywords(itemFiles.size());
    for (const KeywordLine& line : file.lines) {
        bool found = false;
        for (size_t item = 0; item < itemFiles.size(); ++item) {
            if (!SameName(line.name, itemFiles[item])) continue;
            keywords[item].insert(keywords[item].end(), line.words.begin(), line.words.end());
            found = true;
        }
        if (found) continue;
        bool skipped = false;
        for (const std::string& name : skippedFiles) skipped = skipped || SameName(line.name, name);
        messages.push_back(Where(label, line.line) + "'" + line.name + "' " +
                           (skipped ? "is not a picture, so it has no item" : "is no picture in the folder"));
    }
    return keywords;
}

}  // namespace qlt
