// How many slots a Windows metafile's object table needs. Portable.
//
// A Windows metafile names its objects by their slot in the player's table,
// and the player gives each new object the first free slot, freeing a slot
// when its object is deleted. Writers count that table for the header, and
// some count it wrong; replaying the slot assignment gives the size that
// holds every index the writer meant.
#pragma once

#include <cstdint>
#include <functional>
#include <queue>
#include <vector>

namespace thumbnails {

// The functions of records that make an object: palette, pattern brush, DIB
// pattern brush, pen, font, brush, region.
inline bool IsWmfObjectMaker(uint32_t function) {
    switch (function) {
        case 0x00F7:
        case 0x01F9:
        case 0x0142:
        case 0x02FA:
        case 0x02FB:
        case 0x02FC:
        case 0x06FF: return true;
        default: return false;
    }
}

constexpr uint32_t kWmfDeleteObject = 0x01F0;

class WmfObjectSlots {
public:
    // One record's effect on the table: `index` is its first parameter.
    void Apply(uint32_t function, uint32_t index) {
        if (IsWmfObjectMaker(function)) {
            if (free_.empty()) {
                used_.push_back(true);
            } else {
                used_[free_.top()] = true;
                free_.pop();
            }
        } else if (function == kWmfDeleteObject && index < used_.size() && used_[index]) {
            used_[index] = false;
            free_.push(index);
        }
    }
    // The most slots in use at once, at most 0xFFFF (the header's field).
    uint32_t Needed() const { return used_.size() > 0xFFFF ? 0xFFFF : static_cast<uint32_t>(used_.size()); }

private:
    // Grows by one slot for each object made while all are taken, so its size
    // is bounded by the number of object records; the free slots are kept
    // smallest first, so that a file of many objects costs n log n.
    std::vector<bool> used_;
    std::priority_queue<uint32_t, std::vector<uint32_t>, std::greater<uint32_t>> free_;
};

}  // namespace thumbnails
