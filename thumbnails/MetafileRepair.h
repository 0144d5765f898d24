// Makes a Windows metafile as writers leave it into one the structure check
// (MetafileCheck.h) can judge record by record. Portable.
//
// The platform's player takes the data it is given and stops at the end
// record; it reads neither the header's size, nor its largest record, nor
// (beyond the size of its object table) its object count. Writers in common
// use get those wrong: the size of the whole file, placeable header
// included, in the size field; a largest record or an object count that is
// off; bytes behind the end record; no end record at all. Such files play,
// and so they are previewed, as long as nothing in them makes the player
// leave the data:
//  - The records are walked up to the smaller of the header's size and the
//    data (a size that leaves no room for one record is taken as no size);
//    each must be at least three words and lie whole inside that stretch.
//    The walk ends at the end record, or where the stretch ends exactly on a
//    record's end after at least one record; bytes behind are not looked at.
//  - Escapes (META_ESCAPE: comments, printer data, the embedded data of
//    office programs) are dropped: the player would hand them to the
//    device, and they draw nothing.
//  - The header is written anew: a memory metafile of version 0x300, its
//    size and largest record those of the rebuilt data, and an object table
//    large enough for every object the records make (objects take the first
//    free slot, as the player gives them out), so that the indices the
//    writer meant are in it.
//  - One end record closes the data.
// The rebuilt data then goes through CheckWindowsMetafile, whose verdict on
// each record's content stands.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "thumbnails/MetafileCheck.h"

namespace thumbnails {

// `data` starts with the metafile's own 18-byte header (a placeable header
// removed). On acceptance `out` holds the rebuilt metafile, which
// CheckWindowsMetafile accepts; otherwise it is empty. The result is the
// check's on the rebuilt data (offsets in it), or the reason the walk
// failed (offsets in `data`). recordCount counts the records kept.
MetafileCheckResult RepairWindowsMetafile(const uint8_t* data, size_t size, std::vector<uint8_t>* out);

// The function of META_ESCAPE records.
constexpr uint32_t kWindowsMetafileEscape = 0x0626;

}  // namespace thumbnails
