// Fuzzes the picture probe and the metafile filter with arbitrary bytes: no
// read outside the input (ASan); a recognised raster picture always has a
// size within the limits; the filter's output is a whole metafile that the
// filter keeps exactly as it is (everything in it has passed the checks).
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "thumbnails/BitmapDescriptor.h"
#include "thumbnails/MetafileFilter.h"
#include "thumbnails/PictureProbe.h"

namespace {

template <class Filter>
void CheckFilter(Filter filter, const uint8_t* data, size_t size) {
    std::vector<uint8_t> once;
    if (!filter(data, size, &once).valid) return;
    std::vector<uint8_t> twice;
    const imaging::MetafileFilterResult again = filter(once.data(), once.size(), &twice);
    if (!again.valid || again.dropped != 0 || twice != once) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // A copy of exactly the input's size, so that any overrun is seen.
    const std::vector<uint8_t> bytes(data, data + size);
    const uint8_t* start = bytes.empty() ? nullptr : bytes.data();
    const imaging::PictureProbe probe = imaging::ProbePicture(start, bytes.size());

    // The filters take any bytes, recognised or not.
    CheckFilter(imaging::FilterEnhancedMetafile, start, bytes.size());
    CheckFilter(imaging::FilterWindowsMetafile, start, bytes.size());
    if (bytes.size() > 22) CheckFilter(imaging::FilterWindowsMetafile, start + 22, bytes.size() - 22);

    if (probe.status != imaging::ProbeStatus::kRecognised) return 0;
    switch (probe.kind) {
        case imaging::PictureKind::kEmf:
        case imaging::PictureKind::kWmf:
        case imaging::PictureKind::kWmfPlaceable: return 0;
        default: break;
    }
    if (probe.width < 1 || probe.height < 1 || probe.width > imaging::kMaxSide ||
        probe.height > imaging::kMaxSide)
        std::abort();
    if (static_cast<uint64_t>(probe.width) * static_cast<uint64_t>(probe.height) > imaging::kMaxDecodedPixels)
        std::abort();
    return 0;
}
