// Resampling of pixel planes to another size. Portable: it knows nothing of
// descriptors or Windows, only of rows of bytes.
//
// Resample (interleaved 8-bit channels, 1 to 4 of them) works one axis at a
// time with a filter chosen per axis:
//   - shrinking (or keeping) an axis: area averaging. Each target pixel covers
//     exactly S/D source pixels, and every source pixel counts by the length of
//     its overlap with that footprint, fractions included. Nothing is skipped,
//     so fine patterns average out instead of aliasing;
//   - enlarging an axis: bilinear interpolation between the two nearest source
//     pixel centres, with the centres of both grids aligned and the edge pixels
//     held beyond the last centre.
// Results are rounded to nearest, halves up. Weights are exact integers, so the
// output is the same on every build.
//
// ResampleFavourDark (1 bit per pixel) makes a target pixel dark exactly when
// its footprint overlaps a dark source pixel, that is when any source pixel
// with index k in [floor(i*S/D), ceil((i+1)*S/D) - 1] on both axes is dark.
// Shrinking keeps every thin dark line; enlarging repeats pixels, and a pixel
// that straddles a dark and a light source pixel is dark.
//
// Sizes: 1 to kResampleMaxSide on each side, for source and target. Source and
// target must not overlap.
#pragma once

#include <cstddef>
#include <cstdint>

namespace imaging {

constexpr int32_t kResampleMaxSide = 16384;

enum class ResampleStatus {
    kOk,
    kInvalidArgument,  // null pixels, a side below 1, a stride too small, channels outside 1..4
    kTooLarge,         // a side above kResampleMaxSide
    kNoMemory,         // working memory could not be had
};

struct ConstPixelPlane {
    const uint8_t* pixels;
    int32_t width;
    int32_t height;
    size_t stride;  // bytes from the start of one row to the next
};

struct PixelPlane {
    uint8_t* pixels;
    int32_t width;
    int32_t height;
    size_t stride;
};

ResampleStatus Resample(const ConstPixelPlane& source, const PixelPlane& target, int channels);

// darkBit is the bit value (0 or 1) of a dark pixel. Padding bits at the end of
// each target row are cleared.
ResampleStatus ResampleFavourDark(const ConstPixelPlane& source, const PixelPlane& target, int darkBit);

// The source range [first, last] that target pixel `index` covers when `source`
// pixels map onto `target` pixels; the rule ResampleFavourDark applies.
struct SourceSpan {
    int32_t first;
    int32_t last;
};
SourceSpan FootprintSpan(int32_t index, int32_t source, int32_t target);

}  // namespace imaging
