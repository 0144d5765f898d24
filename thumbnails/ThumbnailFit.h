// The size a picture loaded from a file gets as a thumbnail: scaled to touch
// the 85 by 64 box, small pictures enlarged as well. Portable.
#pragma once

#include <cstdint>

namespace thumbnails {

constexpr int32_t kThumbnailBoxWidth = 85;
constexpr int32_t kThumbnailBoxHeight = 64;

struct ThumbnailSize {
    int32_t width = 0;
    int32_t height = 0;
};

// A picture with w x 64 > h x 85 is wider than the box: 85 wide and
// (h x 85) / w high. Any other, also one of exactly the box's proportions,
// becomes 64 high and (w x 64) / h wide. Divisions truncate, so a very
// narrow picture gets the width 0, which the resize then refuses.
//
// The products cannot overflow, and a divisor of 0 (only possible for sizes
// no loaded bitmap has) gives 0 for that side; results outside the 32-bit
// range are clamped to it.
ThumbnailSize FitIntoThumbnailBox(int32_t width, int32_t height);

}  // namespace thumbnails
