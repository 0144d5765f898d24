#include "thumbnails/ThumbnailFit.h"

#include <algorithm>
#include <limits>

namespace thumbnails {

namespace {

int32_t Quotient(int64_t dividend, int64_t divisor) {
    if (divisor == 0) return 0;
    const int64_t quotient = dividend / divisor;
    return static_cast<int32_t>(std::clamp<int64_t>(quotient, std::numeric_limits<int32_t>::min(),
                                                    std::numeric_limits<int32_t>::max()));
}

}  // namespace

ThumbnailSize FitIntoThumbnailBox(int32_t width, int32_t height) {
    // 64-bit products give the same answers as 32-bit ones wherever those do
    // not overflow, and sensible ones where they would.
    const int64_t w = width;
    const int64_t h = height;
    ThumbnailSize size;
    if (w * kThumbnailBoxHeight > h * kThumbnailBoxWidth) {
        size.width = kThumbnailBoxWidth;
        size.height = Quotient(h * kThumbnailBoxWidth, w);
    } else {
        size.height = kThumbnailBoxHeight;
        size.width = Quotient(w * kThumbnailBoxHeight, h);
    }
    return size;
}

}  // namespace thumbnails
