#include "tools/qlt/RenditionFit.h"

namespace qlt {

int32_t RenditionBoxEdge(int32_t kind) {
    switch (kind) {
        case 0x10:
        case 0x20:
        case 0x30:
        case 0x40:
        case 0x80: return kind;
        default: return 0;
    }
}

RenditionSize FitIntoBox(int32_t width, int32_t height, int32_t box) {
    if (width < 1 || height < 1 || box < 1) return {};
    const bool wide = width >= height;
    const uint64_t longer = static_cast<uint64_t>(wide ? width : height);
    const uint64_t shorter = static_cast<uint64_t>(wide ? height : width);
    // Unsigned 64-bit products: below 2^31 x 2^31 x 2 + 2^31, so exact for
    // every side and box.
    uint64_t scaled = (shorter * static_cast<uint64_t>(box) * 2 + longer) / (longer * 2);
    if (scaled < 1) scaled = 1;
    const int32_t other = static_cast<int32_t>(scaled);
    return wide ? RenditionSize{box, other} : RenditionSize{other, box};
}

}  // namespace qlt
