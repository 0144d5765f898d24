// Small text helpers of the qlt tool's line-based input files (manifests and
// keyword files).
#pragma once

#include <string>

namespace qlt {

// What separates words and pads lines.
inline constexpr char kBlanks[] = " \t\r\n\v\f";

// `text` without the blanks at either end.
inline std::string Trim(const std::string& text) {
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos) return std::string();
    const size_t last = text.find_last_not_of(kBlanks);
    return text.substr(first, last - first + 1);
}

}  // namespace qlt
