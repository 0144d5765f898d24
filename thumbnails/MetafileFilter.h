// Rebuilds a metafile from the records whose layout has been checked, before
// GDI plays it. Portable.
//
// A metafile player takes each record's counts, offsets and object indices
// as they stand; Wine's, for one, reads past a record or outside its object
// table when they lie. So only records of known types whose every count,
// offset and index is consistent with the record's size and the metafile's
// object table are kept; the others are dropped (a damaged file then draws
// what is left of it). Kept records are copied unchanged, except that
// strings GDI copies with a fixed length are terminated, pen widths and font
// sizes are held to sizes a player draws in reasonable time, and the header
// is rewritten for the new length. World transforms that are not finite or
// scale by more than 10^4 are dropped, as are scalings by zero.
//
// The record chain is taken as the platform's players take it: up to the
// smaller of the header's size and the data, ending at the end record or
// where that stretch ends on a record's end (bytes behind are ignored); only
// a record that is short or reaches past the stretch spoils the whole. The
// object table is made as large as the records' indices need, since writers
// count it short.
//
// Dropped in every case: palettes, regions, escapes and comments (EMF+
// records of dual-mode files among them), old device-bitmap records and the
// rarer drawing records (polydraw, masks, alpha and gradient fills). In Windows metafiles, where objects take
// the first free slot, a dropped object-making record is replaced by a null brush, so that the numbers of the
// objects after it stay right.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace imaging {

struct MetafileFilterResult {
    bool valid = false;  // the header and the record chain were sound
    uint32_t kept = 0;   // records written, the header and the end included
    uint32_t dropped = 0;
};

// An enhanced metafile (EMR_HEADER first).
MetafileFilterResult FilterEnhancedMetafile(const uint8_t* data, size_t size, std::vector<uint8_t>* out);

// A Windows metafile from its standard header on (the 22-byte placeable
// header, if any, removed by the caller).
MetafileFilterResult FilterWindowsMetafile(const uint8_t* data, size_t size, std::vector<uint8_t>* out);

// Where an enhanced metafile record draws, in its logical coordinates, so
// that a player can skip a record that would reach absurdly far once mapped
// to the device (players rasterise whole shapes before clipping them).
// For records that FilterEnhancedMetafile kept.
struct LogicalBox {
    int64_t left, top, right, bottom;
};
enum class RecordGeometry {
    kNone,  // draws nothing by itself (state, objects, clipping, path fills of checked paths)
    kArea,  // draws within the box, widened by the current pen
    kText,  // draws text from the box's corner, as large as the current font
};
RecordGeometry EnhancedRecordGeometry(const uint8_t* record, uint32_t size, LogicalBox* box);

}  // namespace imaging
