#include "thumbnails/Resampler.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

namespace imaging {

namespace {

// Both axes' weights sum to 2^12. A target pixel is the sum over its source
// pixels of (vertical weight x horizontal weight x value), at most
// 255 x 2^24, which still fits 32 bits with the rounding term added.
constexpr int kWeightShift = 12;
constexpr uint32_t kWeightOne = 1u << kWeightShift;
constexpr int kFinalShift = 2 * kWeightShift;

// Which source pixels one target pixel reads, with their weights.
struct AxisFilter {
    std::vector<int32_t> first;   // per target pixel: first source pixel
    std::vector<int32_t> count;   // per target pixel: number of taps
    std::vector<int32_t> offset;  // per target pixel: index of its first weight
    std::vector<uint32_t> weights;
};

bool ValidPlaneSize(int32_t width, int32_t height) {
    return width >= 1 && height >= 1;
}

bool TooLarge(int32_t width, int32_t height) {
    return width > kResampleMaxSide || height > kResampleMaxSide;
}

// Every source pixel wholly inside the footprint gets the same weight,
// floor(one * D / S), so that runs of whole rows can be added first and
// weighed once (see Resample). What that leaves of `one` goes to the pixels
// that are only partly covered, by their overlap, or, when there are none,
// one unit each to the first pixels: the weights always sum to exactly `one`.
void BuildAreaFilter(int32_t source, int32_t target, uint32_t one, AxisFilter* filter) {
    const int64_t s = source;
    const int64_t d = target;
    const uint32_t whole = static_cast<uint32_t>(one * d / s);
    for (int64_t i = 0; i < d; ++i) {
        // Footprint [i*S, (i+1)*S) in units of 1/D source pixel.
        const int64_t low = i * s;
        const int64_t high = (i + 1) * s;
        const int64_t firstPixel = low / d;
        const int64_t lastPixel = (high - 1) / d;
        filter->first.push_back(static_cast<int32_t>(firstPixel));
        filter->count.push_back(static_cast<int32_t>(lastPixel - firstPixel + 1));
        const size_t start = filter->weights.size();
        filter->offset.push_back(static_cast<int32_t>(start));
        int64_t partialOverlap = 0;
        uint32_t given = 0;
        for (int64_t k = firstPixel; k <= lastPixel; ++k) {
            const int64_t overlap = std::min(high, (k + 1) * d) - std::max(low, k * d);
            if (overlap == d) {
                filter->weights.push_back(whole);
                given += whole;
            } else {
                filter->weights.push_back(0);
                partialOverlap += overlap;
            }
        }
        uint32_t rest = one - given;
        if (partialOverlap > 0) {
            int64_t sharedOverlap = 0;
            uint32_t shared = 0;
            for (int64_t k = firstPixel; k <= lastPixel; ++k) {
                const int64_t overlap = std::min(high, (k + 1) * d) - std::max(low, k * d);
                if (overlap == d) continue;
                sharedOverlap += overlap;
                const uint32_t upTo =
                    static_cast<uint32_t>((sharedOverlap * rest + partialOverlap / 2) / partialOverlap);
                filter->weights[start + static_cast<size_t>(k - firstPixel)] = upTo - shared;
                shared = upTo;
            }
        } else {
            for (size_t k = start; rest > 0 && k < filter->weights.size(); ++k, --rest) ++filter->weights[k];
        }
    }
}

void BuildBilinearFilter(int32_t source, int32_t target, uint32_t one, AxisFilter* filter) {
    const int64_t s = source;
    const int64_t d = target;
    for (int64_t i = 0; i < d; ++i) {
        // Centre of target pixel i in source pixels: ((2i+1)*S - D) / (2D).
        const int64_t numerator = (2 * i + 1) * s - d;
        int64_t pixel = 0;
        int64_t fraction = 0;  // in units of 1/(2D)
        if (numerator > 0) {
            pixel = numerator / (2 * d);
            fraction = numerator - pixel * 2 * d;
        }
        filter->first.push_back(static_cast<int32_t>(pixel));
        filter->offset.push_back(static_cast<int32_t>(filter->weights.size()));
        const uint32_t second = static_cast<uint32_t>((fraction * one + d) / (2 * d));
        if (pixel + 1 >= s || second == 0) {
            filter->count.push_back(1);
            filter->weights.push_back(one);
        } else {
            filter->count.push_back(2);
            filter->weights.push_back(one - second);
            filter->weights.push_back(second);
        }
    }
}

bool BuildFilter(int32_t source, int32_t target, AxisFilter* filter) {
    try {
        const size_t n = static_cast<size_t>(target);
        filter->first.reserve(n);
        filter->count.reserve(n);
        filter->offset.reserve(n);
        filter->weights.reserve(target > source ? 2 * n : static_cast<size_t>(source) + n);
        if (target > source) {
            BuildBilinearFilter(source, target, kWeightOne, filter);
        } else {
            BuildAreaFilter(source, target, kWeightOne, filter);
        }
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// The vertical step works on whole source rows: plain loops over contiguous
// bytes, with 16-bit operands, which compilers vectorise even for the
// baseline instruction set (the pointers are marked unaliased, so that no
// run-time overlap check is needed). sums[i] (+)= weight * row[i]:
void WeighRow(const uint8_t* __restrict row, size_t count, uint16_t weight, bool first,
              uint32_t* __restrict sums) {
    if (first) {
        for (size_t i = 0; i < count; ++i)
            sums[i] = static_cast<uint32_t>(weight) * static_cast<uint16_t>(row[i]);
    } else {
        for (size_t i = 0; i < count; ++i)
            sums[i] += static_cast<uint32_t>(weight) * static_cast<uint16_t>(row[i]);
    }
}

// Rows of equal weight are added before they are weighed: 257 rows of bytes
// still fit 16 bits.
constexpr int32_t kMaxRowsAdded = 257;

void AddRows(const uint8_t* const* rows, int32_t rowCount, size_t count, uint16_t* __restrict added) {
    const uint8_t* __restrict firstRow = rows[0];
    for (size_t i = 0; i < count; ++i) added[i] = firstRow[i];
    for (int32_t r = 1; r < rowCount; ++r) {
        const uint8_t* __restrict row = rows[r];
        for (size_t i = 0; i < count; ++i) added[i] = static_cast<uint16_t>(added[i] + row[i]);
    }
}

void WeighAdded(const uint16_t* __restrict added, size_t count, uint16_t weight, bool first,
                uint32_t* __restrict sums) {
    if (first) {
        for (size_t i = 0; i < count; ++i) sums[i] = static_cast<uint32_t>(weight) * added[i];
    } else {
        for (size_t i = 0; i < count; ++i) sums[i] += static_cast<uint32_t>(weight) * added[i];
    }
}

// The horizontal step, once per target row, over the vertically weighed sums.
template <int Channels>
void FilterAcross(const uint32_t* sums, const AxisFilter& filter, int32_t width, uint8_t* out) {
    constexpr uint32_t round = 1u << (kFinalShift - 1);
    for (int32_t x = 0; x < width; ++x) {
        const uint32_t* pixel = sums + static_cast<size_t>(filter.first[x]) * Channels;
        const uint32_t* weight = filter.weights.data() + filter.offset[x];
        const int32_t taps = filter.count[x];
        uint32_t total[Channels];
        for (int c = 0; c < Channels; ++c) total[c] = round;
        for (int32_t k = 0; k < taps; ++k) {
            const uint32_t w = weight[k];
            for (int c = 0; c < Channels; ++c) total[c] += w * pixel[c];
            pixel += Channels;
        }
        for (int c = 0; c < Channels; ++c) out[c] = static_cast<uint8_t>(total[c] >> kFinalShift);
        out += Channels;
    }
}

void FilterAcrossAnyChannels(const uint32_t* sums, const AxisFilter& filter, int32_t width, int channels,
                             uint8_t* out) {
    switch (channels) {
        case 1: FilterAcross<1>(sums, filter, width, out); break;
        case 2: FilterAcross<2>(sums, filter, width, out); break;
        case 3: FilterAcross<3>(sums, filter, width, out); break;
        default: FilterAcross<4>(sums, filter, width, out); break;
    }
}

}  // namespace

ResampleStatus Resample(const ConstPixelPlane& source, const PixelPlane& target, int channels) {
    if (source.pixels == nullptr || target.pixels == nullptr || channels < 1 || channels > 4)
        return ResampleStatus::kInvalidArgument;
    if (!ValidPlaneSize(source.width, source.height) || !ValidPlaneSize(target.width, target.height))
        return ResampleStatus::kInvalidArgument;
    if (TooLarge(source.width, source.height) || TooLarge(target.width, target.height))
        return ResampleStatus::kTooLarge;
    const size_t sourceRow = static_cast<size_t>(source.width) * static_cast<size_t>(channels);
    const size_t targetRow = static_cast<size_t>(target.width) * static_cast<size_t>(channels);
    if (source.stride < sourceRow || target.stride < targetRow) return ResampleStatus::kInvalidArgument;

    AxisFilter across;
    AxisFilter down;
    if (!BuildFilter(source.width, target.width, &across) ||
        !BuildFilter(source.height, target.height, &down))
        return ResampleStatus::kNoMemory;

    // Vertical first: each target row weighs the whole source rows under it
    // (streaming through memory once), then filters that one row across.
    std::vector<uint32_t> sums;
    std::vector<uint16_t> added;
    std::vector<const uint8_t*> run;
    try {
        sums.resize(sourceRow);
        added.resize(sourceRow);
        run.resize(kMaxRowsAdded);
    } catch (const std::bad_alloc&) {
        return ResampleStatus::kNoMemory;
    }
    for (int32_t y = 0; y < target.height; ++y) {
        const int32_t first = down.first[y];
        const int32_t taps = down.count[y];
        const uint32_t* weight = down.weights.data() + down.offset[y];
        for (int32_t k = 0; k < taps;) {
            int32_t length = 1;
            while (k + length < taps && length < kMaxRowsAdded && weight[k + length] == weight[k]) ++length;
            const uint16_t w = static_cast<uint16_t>(weight[k]);
            if (length == 1) {
                WeighRow(source.pixels + static_cast<size_t>(first + k) * source.stride, sourceRow, w, k == 0,
                         sums.data());
            } else {
                for (int32_t r = 0; r < length; ++r)
                    run[r] = source.pixels + static_cast<size_t>(first + k + r) * source.stride;
                AddRows(run.data(), length, sourceRow, added.data());
                WeighAdded(added.data(), sourceRow, w, k == 0, sums.data());
            }
            k += length;
        }
        FilterAcrossAnyChannels(sums.data(), across, target.width, channels,
                                target.pixels + static_cast<size_t>(y) * target.stride);
    }
    return ResampleStatus::kOk;
}

SourceSpan FootprintSpan(int32_t index, int32_t source, int32_t target) {
    if (source < 1 || target < 1 || index < 0 || index >= target) return SourceSpan{0, -1};
    const int64_t s = source;
    const int64_t d = target;
    const int64_t first = index * s / d;
    const int64_t last = ((index + 1) * s + d - 1) / d - 1;
    return SourceSpan{static_cast<int32_t>(first), static_cast<int32_t>(std::min(last, s - 1))};
}

ResampleStatus ResampleFavourDark(const ConstPixelPlane& source, const PixelPlane& target, int darkBit) {
    if (source.pixels == nullptr || target.pixels == nullptr || (darkBit != 0 && darkBit != 1))
        return ResampleStatus::kInvalidArgument;
    if (!ValidPlaneSize(source.width, source.height) || !ValidPlaneSize(target.width, target.height))
        return ResampleStatus::kInvalidArgument;
    if (TooLarge(source.width, source.height) || TooLarge(target.width, target.height))
        return ResampleStatus::kTooLarge;
    const size_t sourceRow = (static_cast<size_t>(source.width) + 7) / 8;
    const size_t targetRow = (static_cast<size_t>(target.width) + 7) / 8;
    if (source.stride < sourceRow || target.stride < targetRow) return ResampleStatus::kInvalidArgument;

    std::vector<uint8_t> anyDark;
    std::vector<int32_t> darkBefore;  // darkBefore[x]: dark columns among 0..x-1
    std::vector<SourceSpan> columns;
    try {
        anyDark.resize(static_cast<size_t>(source.width));
        darkBefore.resize(static_cast<size_t>(source.width) + 1);
        columns.resize(static_cast<size_t>(target.width));
    } catch (const std::bad_alloc&) {
        return ResampleStatus::kNoMemory;
    }
    for (int32_t x = 0; x < target.width; ++x) columns[x] = FootprintSpan(x, source.width, target.width);

    const uint8_t darkMask = darkBit != 0 ? 0xFF : 0x00;
    for (int32_t y = 0; y < target.height; ++y) {
        const SourceSpan rows = FootprintSpan(y, source.height, target.height);
        std::fill(anyDark.begin(), anyDark.end(), 0);
        for (int32_t row = rows.first; row <= rows.last; ++row) {
            const uint8_t* bits = source.pixels + static_cast<size_t>(row) * source.stride;
            for (int32_t x = 0; x < source.width; ++x) {
                // A bit equal to darkBit gives 1 after the XOR with the inverted mask.
                const uint8_t value = static_cast<uint8_t>(bits[x >> 3] ^ static_cast<uint8_t>(~darkMask));
                anyDark[x] |= static_cast<uint8_t>((value >> (7 - (x & 7))) & 1);
            }
        }
        darkBefore[0] = 0;
        for (int32_t x = 0; x < source.width; ++x) darkBefore[x + 1] = darkBefore[x] + anyDark[x];

        uint8_t* out = target.pixels + static_cast<size_t>(y) * target.stride;
        std::memset(out, 0, targetRow);
        for (int32_t x = 0; x < target.width; ++x) {
            const SourceSpan span = columns[x];
            const bool dark = darkBefore[span.last + 1] - darkBefore[span.first] > 0;
            const int bit = dark ? darkBit : 1 - darkBit;
            if (bit != 0) out[x >> 3] = static_cast<uint8_t>(out[x >> 3] | (0x80u >> (x & 7)));
        }
    }
    return ResampleStatus::kOk;
}

}  // namespace imaging
