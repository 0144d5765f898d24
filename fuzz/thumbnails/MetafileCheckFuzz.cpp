// Fuzzes the metafile structure check and the repair of Windows metafiles
// with arbitrary bytes: no read outside the input (ASan); what the check
// accepts has a record chain that a separate, plain walk finds whole inside
// the data, ending in its end record; what the repair gives, the check
// accepts, holds no escape and comes back unchanged from a second repair.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "thumbnails/MetafileCheck.h"
#include "thumbnails/MetafileRepair.h"

namespace {

uint32_t U16(const std::vector<uint8_t>& b, size_t at) {
    return b[at] | static_cast<uint32_t>(b[at + 1]) << 8;
}
uint32_t U32(const std::vector<uint8_t>& b, size_t at) {
    return U16(b, at) | U16(b, at + 2) << 16;
}

void WalkEnhanced(const std::vector<uint8_t>& b) {
    if (b.size() < 88) std::abort();
    const size_t bytes = U32(b, 48);
    if (bytes > b.size()) std::abort();
    size_t at = 0, records = 0;
    for (;;) {
        if (at + 8 > bytes) std::abort();
        const uint32_t type = U32(b, at);
        const uint32_t size = U32(b, at + 4);
        if (size < 8 || size % 4 != 0 || size > bytes - at) std::abort();
        if (type == 105 || type == 106 || type == 110) std::abort();
        ++records;
        at += size;
        if (type == 14) break;
    }
    if (at != bytes || records != U32(b, 52)) std::abort();
}

void WalkWindows(const std::vector<uint8_t>& b, size_t start) {
    if (b.size() < start + 18) std::abort();
    const size_t end = start + static_cast<size_t>(U32(b, start + 6)) * 2;
    if (end > b.size()) std::abort();
    size_t at = start + 18;
    for (;;) {
        if (at + 6 > end) std::abort();
        const size_t words = U32(b, at);
        const uint32_t function = U16(b, at + 4);
        if (words < 3 || words > (end - at) / 2) std::abort();
        if (function == 0x0626) std::abort();
        at += words * 2;
        if (function == 0) break;
    }
    if (at != end) std::abort();
}

void CheckRepair(const uint8_t* data, size_t size) {
    std::vector<uint8_t> once;
    if (!thumbnails::RepairWindowsMetafile(data, size, &once).Accepted()) {
        if (!once.empty()) std::abort();
        return;
    }
    if (!thumbnails::CheckWindowsMetafile(once.data(), once.size()).Accepted()) std::abort();
    WalkWindows(once, 0);
    std::vector<uint8_t> twice;
    if (!thumbnails::RepairWindowsMetafile(once.data(), once.size(), &twice).Accepted() || twice != once)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<uint8_t> bytes(data, data + size);
    const uint8_t* begin = bytes.empty() ? nullptr : bytes.data();
    const thumbnails::MetafileCheckResult result = thumbnails::CheckMetafile(begin, bytes.size());

    // The kind-specific checks never read outside the input either.
    const thumbnails::MetafileCheckResult enhanced = thumbnails::CheckEnhancedMetafile(begin, bytes.size());
    const thumbnails::MetafileCheckResult windows = thumbnails::CheckWindowsMetafile(begin, bytes.size());
    const thumbnails::MetafileCheckResult placeable = thumbnails::CheckPlaceableMetafile(begin, bytes.size());

    CheckRepair(begin, bytes.size());
    if (bytes.size() > thumbnails::kPlaceableHeaderBytes)
        CheckRepair(begin + thumbnails::kPlaceableHeaderBytes,
                    bytes.size() - thumbnails::kPlaceableHeaderBytes);

    if (!result.Accepted()) return 0;
    switch (result.kind) {
        case thumbnails::MetafileKind::kEnhanced:
            if (!enhanced.Accepted()) std::abort();
            WalkEnhanced(bytes);
            break;
        case thumbnails::MetafileKind::kWindows:
            if (!windows.Accepted()) std::abort();
            WalkWindows(bytes, 0);
            break;
        case thumbnails::MetafileKind::kPlaceable:
            if (!placeable.Accepted()) std::abort();
            WalkWindows(bytes, thumbnails::kPlaceableHeaderBytes);
            break;
        case thumbnails::MetafileKind::kUnknown: std::abort();
    }
    return 0;
}
