// The structure check that a metafile passes before its bytes reach GDI.
// Portable.
//
// GDI plays a metafile record by record and believes what each record says
// of itself: a record's counts, offsets, object indices and bitmap headers
// are used to read (and, for object indices, to write) memory without being
// compared with the record's size. A damaged file can make the player read or
// write outside the metafile. So before any bytes go to the platform they are
// walked here in full, and a metafile that fails is treated like a picture
// that cannot be decoded. Windows metafiles as writers leave them reach it
// through MetafileRepair.h, which drops their escapes and makes their header
// agree with their records first, so that only the content of records can
// refuse one that the platform plays.
//
// What is checked:
//  - Enhanced metafiles: the header record (type, size, " EMF" signature,
//    the byte count within the data, at least one object slot, description
//    and pixel format inside the header); every record at least 8 bytes, a
//    multiple of 4 and inside the byte count; the record count of the header
//    equal to the records found; one end record (EMR_EOF), last.
//  - Windows metafiles: the 18-byte header (memory type, header size 9,
//    version 0x0100 or 0x0300, the size in words within the data, the largest
//    record); every record's size in words at least 3, inside the data and
//    not above the header's largest record; one end record (0x0000, 3 words),
//    last. Placeable ones also: the 22-byte header with the key 0x9AC6CDD7
//    and the XOR checksum of its first ten words.
//  - In both, each record kind that is played is checked for its fixed size
//    and for everything it points at: point and polygon counts, texts and
//    their spacing arrays, palettes, regions, gradient meshes, bitmaps (the
//    header, the colour table and the bits the header implies, inside the
//    record), object indices within the object table, and brush styles
//    that carry no pointer.
//  - Sizes at which players work without end or overrun their own buffers
//    (Wine's spends minutes on a pen a million pixels wide, and corrupts its
//    heap when a damaged header scales the drawing 300 000 times): pen
//    widths and font sizes beyond 32767, ellipse and arc coordinates beyond
//    2^21, window and viewport extents and origins beyond 2^24, scale
//    factors beyond 1024, transforms that are not finite or scale by more
//    than 1024, bitmap source rectangles larger than any bitmap accepted,
//    and an enhanced metafile header whose reference device is no real one
//    or whose frame is more than 16 times smaller than the drawing's bounds.
//    Drawings stay far inside these.
//  - Escapes are refused (EMR_EXTESCAPE, EMR_NAMEDESCAPE, EMR_DRAWESCAPE,
//    META_ESCAPE); EMR_GDICOMMENT is fine. So are record kinds that are not
//    played here: obsolete device bitmaps, masks and parallelograms, colour
//    spaces and profiles (which name files), OpenGL, printer and spooler
//    records, and any kind this check does not know.
#pragma once

#include <cstddef>
#include <cstdint>

namespace thumbnails {

enum class MetafileKind {
    kUnknown,
    kEnhanced,   // EMF
    kWindows,    // Windows metafile, starting with its own 18-byte header
    kPlaceable,  // Windows metafile behind the 22-byte placeable header
};

enum class MetafileCheckStatus {
    kAccepted,
    kUnknownFormat,        // none of the three beginnings
    kBadHeader,            // a header that is short or contradicts itself or the data
    kBadChecksum,          // the placeable header's checksum
    kBadRecordSize,        // a record too small, misaligned or reaching past the data
    kBadRecordContent,     // a count, offset, index or bitmap that does not fit its record
    kEscapeRecord,         // a printer escape
    kUnsupportedRecord,    // a record kind that is not played here
    kMissingEndRecord,     // no end record, or something behind it
    kRecordCountMismatch,  // an enhanced metafile's header counts other records than it has
};

struct MetafileCheckResult {
    MetafileCheckStatus status = MetafileCheckStatus::kUnknownFormat;
    MetafileKind kind = MetafileKind::kUnknown;
    size_t recordCount = 0;      // records walked, header and end record included
    size_t failingOffset = 0;    // where the failing record or header starts
    uint32_t failingRecord = 0;  // its type (EMF) or function (WMF)

    bool Accepted() const { return status == MetafileCheckStatus::kAccepted; }
};

// Any of the three, told apart by their first bytes.
MetafileCheckResult CheckMetafile(const uint8_t* data, size_t size);
// An enhanced metafile; the data may run on behind its byte count.
MetafileCheckResult CheckEnhancedMetafile(const uint8_t* data, size_t size);
// A Windows metafile from its own header, as GetMetaFileBitsEx gives it and
// SetMetaFileBitsEx and SetWinMetaFileBits take it; the data may run on
// behind its size.
MetafileCheckResult CheckWindowsMetafile(const uint8_t* data, size_t size);
// A placeable header followed by a Windows metafile.
MetafileCheckResult CheckPlaceableMetafile(const uint8_t* data, size_t size);

// The placeable header's key and its size in bytes.
constexpr uint32_t kPlaceableMetafileKey = 0x9AC6CDD7u;
constexpr size_t kPlaceableHeaderBytes = 22;

// For test messages and traces.
const char* DescribeMetafileCheckStatus(MetafileCheckStatus status);

}  // namespace thumbnails
