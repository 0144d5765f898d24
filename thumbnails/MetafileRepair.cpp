#include "thumbnails/MetafileRepair.h"

#include <algorithm>
#include <new>

#include "thumbnails/LittleEndian.h"
#include "thumbnails/WmfObjectSlots.h"

namespace thumbnails {

namespace {

constexpr uint64_t kHeaderBytes = 18;
constexpr uint64_t kRecordHeaderBytes = 6;

using byteorder::Read16;
using byteorder::Read32;
using byteorder::Write16;
using byteorder::Write32;

MetafileCheckResult Refused(MetafileCheckStatus status, size_t records = 0, uint64_t at = 0,
                            uint32_t function = 0) {
    MetafileCheckResult result;
    result.status = status;
    result.kind = MetafileKind::kWindows;
    result.recordCount = records;
    result.failingOffset = static_cast<size_t>(at);
    result.failingRecord = function;
    return result;
}

}  // namespace

MetafileCheckResult RepairWindowsMetafile(const uint8_t* data, size_t size, std::vector<uint8_t>* out) {
    out->clear();
    // The player takes sizes of 32 bits.
    if (data == nullptr || size < kHeaderBytes || size > 0xFFFFFFFFu)
        return Refused(MetafileCheckStatus::kBadHeader);
    const uint32_t type = Read16(data), headerWords = Read16(data + 2), version = Read16(data + 4);
    if ((type != 1 && type != 2) || headerWords != kHeaderBytes / 2 ||
        (version != 0x0100 && version != 0x0300))
        return Refused(MetafileCheckStatus::kBadHeader);

    // The smaller of the header's size and the data, in whole words.
    uint64_t limit = size & ~uint64_t{1};
    const uint64_t declared = 2ull * Read32(data + 6);
    if (declared >= kHeaderBytes + kRecordHeaderBytes) limit = std::min(limit, declared);

    try {
        out->reserve(static_cast<size_t>(limit) + kRecordHeaderBytes);
        out->insert(out->end(), data, data + kHeaderBytes);
        WmfObjectSlots slots;
        uint64_t largest = 3;
        size_t kept = 0, walked = 0;
        uint64_t at = kHeaderBytes;
        for (;;) {
            // The data ends on a record's end: as good as an end record, once
            // there has been a record at all.
            if (at == limit && walked > 0) break;
            if (limit - at < kRecordHeaderBytes) {
                out->clear();
                return Refused(MetafileCheckStatus::kBadRecordSize, kept, at);
            }
            const uint8_t* record = data + at;
            const uint64_t words = Read32(record);
            const uint32_t function = Read16(record + 4);
            if (words < 3 || words > (limit - at) / 2) {
                out->clear();
                return Refused(MetafileCheckStatus::kBadRecordSize, kept, at, function);
            }
            ++walked;
            if (function == 0) break;  // the end record; what follows is not played
            if (function != kWindowsMetafileEscape) {
                slots.Apply(function, words > 3 ? Read16(record + 6) : 0);
                out->insert(out->end(), record, record + 2 * words);
                largest = std::max(largest, words);
                ++kept;
            }
            at += 2 * words;
        }
        const uint8_t end[kRecordHeaderBytes] = {3, 0, 0, 0, 0, 0};
        out->insert(out->end(), end, end + sizeof end);
        ++kept;

        uint8_t* header = out->data();
        Write16(header, 1);          // in memory
        Write16(header + 4, 0x300);  // the version the player takes
        Write32(header + 6, static_cast<uint32_t>(out->size() / 2));
        Write16(header + 10, std::max(Read16(header + 10), slots.Needed()));
        Write32(header + 12, static_cast<uint32_t>(largest));

        MetafileCheckResult result = CheckWindowsMetafile(out->data(), out->size());
        if (!result.Accepted()) {
            out->clear();
        } else {
            result.recordCount = kept;
        }
        return result;
    } catch (const std::bad_alloc&) {
        out->clear();
        return Refused(MetafileCheckStatus::kBadHeader);
    }
}

}  // namespace thumbnails
