// The record that tells the host what is selected. It crosses the control's
// boundary by pointer, so its layout is binding on every build: 532 bytes,
// little-endian, no padding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace browser {

constexpr size_t kItemPathSize = 260;
constexpr size_t kItemNameSize = 264;

struct GraphicItemInfo {
    int32_t valid;             // 1: something is selected; 0: nothing, and every other field is zero
    int32_t itemNumber;        // 1-based number of the entry within its container
    char path[kItemPathSize];  // container path with ".QLT", or the picture's full path
    char name[kItemNameSize];  // file-name part of a picture, on the double-click road only
};

static_assert(sizeof(GraphicItemInfo) == 532, "the host reads exactly 532 bytes");
static_assert(offsetof(GraphicItemInfo, valid) == 0, "layout is binding");
static_assert(offsetof(GraphicItemInfo, itemNumber) == 4, "layout is binding");
static_assert(offsetof(GraphicItemInfo, path) == 8, "layout is binding");
static_assert(offsetof(GraphicItemInfo, name) == 268, "layout is binding");
static_assert(alignof(GraphicItemInfo) == 4, "no padding may appear between records");

// A zero-filled record: what "nothing is selected" looks like.
GraphicItemInfo EmptyItemInfo();

// A record for `itemNumber` of `path`, with `name` (empty off the double-click
// road). Texts longer than their fields are cut so that the terminating NUL
// always fits; the rest of each field stays zero.
GraphicItemInfo MakeItemInfo(int32_t valid, int32_t itemNumber, const std::string& path,
                             const std::string& name = std::string());

// Copies `text` into a field of `size` bytes, cut to size - 1 characters,
// zero-filling the rest.
void CopyToField(char* field, size_t size, const std::string& text);

}  // namespace browser
