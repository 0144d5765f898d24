// Comparison of names without case, and the sort of name lists that the
// thumbnail library's categories and the tree's entries use.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace foundation {

// Compares as the C runtime's case-blind comparison does in the "C" locale:
// byte by byte as unsigned values, with 'A' to 'Z' taken as lower case. So
// "_" (0x5F) comes before "a", and bytes above 0x7F after every letter.
// Negative, zero or positive. Null compares as the empty text.
int CompareNoCase(const char* left, const char* right) noexcept;
// The same over at most `count` characters.
int CompareNoCase(const char* left, const char* right, std::size_t count) noexcept;

// Sorts in place by CompareNoCase. Stable: names that differ only in case
// keep their order ("b" stays before "B").
void SortStrings(std::vector<std::string>& strings);

}  // namespace foundation
