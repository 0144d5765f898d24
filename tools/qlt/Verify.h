// The checks of `qlt verify`: every offset, size and block bound against the
// file's length, every item's data decompressed by its method, the keyword
// map parsed pair by pair and every item list it points to. The file is
// checked on its own bytes, independently of the reader, so that what the
// reader would quietly make of a damaged file is reported instead.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qlt {

struct Finding {
    bool problem = true;  // false: a warning, something odd that the reader copes with
    std::string where;    // "header", "item 3", "item 3 rendition 0x40", "keyword map", ...
    std::string message;
};

struct VerifyReport {
    bool readable = false;  // false: the file couldn't be read at all; see `error`
    std::string error;
    int64_t fileSize = 0;
    int32_t itemCount = 0;
    std::vector<Finding> findings;

    int Problems() const;
    int Warnings() const;
};

VerifyReport VerifyContainer(const std::string& path);
VerifyReport VerifyContainerBytes(const std::vector<uint8_t>& bytes);

}  // namespace qlt
