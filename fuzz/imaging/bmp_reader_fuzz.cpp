// Fuzzes our reader of plain BMP files with arbitrary bytes: no read outside
// the input (ASan); a layout it takes describes rows and a palette inside the
// input, within the limits, and decodes into a bitmap of its size, which is
// given back.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "thumbnails/BitmapKernel.h"
#include "thumbnails/BmpReader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // A copy of exactly the input's size, so that any overrun is seen.
    const std::vector<uint8_t> bytes(data, data + size);
    const uint8_t* start = bytes.empty() ? nullptr : bytes.data();
    imaging::BmpLayout layout;
    if (!imaging::ReadBmpLayout(start, bytes.size(), &layout)) return 0;
    if (layout.width < 1 || layout.height < 1 || layout.width > imaging::kMaxSide ||
        layout.height > imaging::kMaxSide ||
        static_cast<uint64_t>(layout.pixelOffset) + static_cast<uint64_t>(layout.stride) * layout.height >
            bytes.size())
        std::abort();
    for (bool wide : {false, true}) {
        imaging::BitmapDescriptor bitmap{};
        const int result = imaging::DecodeBmp(start, bytes.size(), layout, wide, &bitmap);
        if (result == imaging::kSuccess) {
            if (bitmap.width != layout.width || bitmap.height != layout.height) std::abort();
            imaging::FreeBitmap(&bitmap);
        } else if (result != imaging::kErrorTooLarge && result != imaging::kErrorNoMemory) {
            std::abort();  // a layout the reader took always decodes
        }
    }
    return 0;
}
