// Fuzzes the resampler: sizes, channel count, filter and pixels come from the
// input. Checks the limits (nothing is read or written outside the planes,
// which ASan sees) and two properties of the filters: results stay within
// the source's range of values, and the dark-favouring form keeps a picture
// without dark pixels light.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "thumbnails/Resampler.h"

namespace {

struct Input {
    const uint8_t* data;
    size_t size;
    uint8_t Byte() {
        if (size == 0) return 0;
        --size;
        return *data++;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input in{data, size};
    const uint8_t mode = in.Byte();
    // Sizes up to 64 keep each run fast; 0 is kept to exercise the refusals.
    const int32_t sourceWidth = in.Byte() % 65;
    const int32_t sourceHeight = in.Byte() % 65;
    const int32_t targetWidth = in.Byte() % 65;
    const int32_t targetHeight = in.Byte() % 65;
    const int channels = 1 + (mode >> 1) % 4;
    const bool favourDark = (mode & 1) != 0;

    const size_t sourceRow =
        favourDark ? (static_cast<size_t>(sourceWidth) + 7) / 8 : static_cast<size_t>(sourceWidth) * channels;
    const size_t targetRow =
        favourDark ? (static_cast<size_t>(targetWidth) + 7) / 8 : static_cast<size_t>(targetWidth) * channels;
    // Exact-size buffers, so that any overrun reaches ASan's red zone.
    std::vector<uint8_t> source(std::max<size_t>(sourceRow * sourceHeight, 1));
    for (uint8_t& p : source) p = in.Byte();
    std::vector<uint8_t> target(std::max<size_t>(targetRow * targetHeight, 1), 0xA5);

    const imaging::ConstPixelPlane from{source.data(), sourceWidth, sourceHeight, sourceRow};
    const imaging::PixelPlane to{target.data(), targetWidth, targetHeight, targetRow};
    const bool valid = sourceWidth > 0 && sourceHeight > 0 && targetWidth > 0 && targetHeight > 0;

    if (favourDark) {
        const int darkBit = mode >> 7;
        const imaging::ResampleStatus status = imaging::ResampleFavourDark(from, to, darkBit);
        if (valid != (status == imaging::ResampleStatus::kOk)) std::abort();
        if (!valid) return 0;
        bool anyDark = false;
        for (int32_t y = 0; y < sourceHeight && !anyDark; ++y)
            for (int32_t x = 0; x < sourceWidth && !anyDark; ++x)
                anyDark = ((source[y * sourceRow + x / 8] >> (7 - x % 8)) & 1) == darkBit;
        for (int32_t y = 0; y < targetHeight; ++y)
            for (int32_t x = 0; x < targetWidth; ++x) {
                const bool dark = ((target[y * targetRow + x / 8] >> (7 - x % 8)) & 1) == darkBit;
                if (dark && !anyDark) std::abort();
            }
        return 0;
    }

    const imaging::ResampleStatus status = imaging::Resample(from, to, channels);
    if (valid != (status == imaging::ResampleStatus::kOk)) std::abort();
    if (!valid) return 0;
    for (int c = 0; c < channels; ++c) {
        int low = 255, high = 0;
        for (size_t i = static_cast<size_t>(c); i < source.size(); i += static_cast<size_t>(channels)) {
            low = std::min<int>(low, source[i]);
            high = std::max<int>(high, source[i]);
        }
        for (size_t i = static_cast<size_t>(c); i < target.size(); i += static_cast<size_t>(channels))
            if (target[i] < low || target[i] > high) std::abort();
    }
    return 0;
}
