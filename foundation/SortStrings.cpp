#include "foundation/SortStrings.h"

#include <utility>

namespace foundation {

namespace {

int Lowered(char c) {
    const int value = static_cast<unsigned char>(c);
    return value >= 'A' && value <= 'Z' ? value - 'A' + 'a' : value;
}

}  // namespace

int CompareNoCase(const char* left, const char* right, std::size_t count) noexcept {
    if (left == nullptr) left = "";
    if (right == nullptr) right = "";
    for (std::size_t i = 0; i < count; ++i) {
        const int l = Lowered(left[i]);
        const int r = Lowered(right[i]);
        if (l != r) return l - r;
        if (l == 0) return 0;
    }
    return 0;
}

int CompareNoCase(const char* left, const char* right) noexcept {
    return CompareNoCase(left, right, static_cast<std::size_t>(-1));
}

void SortStrings(std::vector<std::string>& strings) {
    // Insertion sort: the lists are short, often nearly sorted, and it must
    // be stable.
    for (std::size_t i = 1; i < strings.size(); ++i) {
        if (CompareNoCase(strings[i].c_str(), strings[i - 1].c_str()) >= 0) continue;
        std::string moving = std::move(strings[i]);
        std::size_t gap = i;
        while (gap > 0 && CompareNoCase(strings[gap - 1].c_str(), moving.c_str()) > 0) {
            strings[gap] = std::move(strings[gap - 1]);
            --gap;
        }
        strings[gap] = std::move(moving);
    }
}

}  // namespace foundation
