#include "foundation/TextInserts.h"

#include <cstddef>

namespace foundation {

std::string FormatInserts(const std::string& pattern, std::initializer_list<const char*> inserts) {
    std::string result;
    result.reserve(pattern.size());
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        if (c == '%' && i + 1 < pattern.size() && pattern[i + 1] >= '1' && pattern[i + 1] <= '9') {
            const std::size_t number = static_cast<std::size_t>(pattern[i + 1] - '1');
            if (number < inserts.size()) {
                const char* insert = inserts.begin()[number];
                if (insert != nullptr) result += insert;
            }
            ++i;
        } else {
            result += c;
        }
    }
    return result;
}

}  // namespace foundation
