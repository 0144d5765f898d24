#include "thumbnails/MetafileFilter.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "thumbnails/BitmapDescriptor.h"
#include "thumbnails/LittleEndian.h"
#include "thumbnails/WmfObjectSlots.h"

namespace imaging {

namespace {

using byteorder::Read16;
using byteorder::Read32;
using byteorder::Signed32;
using byteorder::Write16;
using byteorder::Write32;

// Sizes GDI takes for granted: a pen or a font millions of units large makes
// a player widen or rasterise for minutes. Real drawings stay far below.
constexpr int32_t kMaxPenWidth = 1024;
constexpr int32_t kMaxFontSize = 4096;
constexpr float kMaxTransformScale = 1e4f;

int32_t Clamp(int32_t value, int32_t limit) {
    return value > limit ? limit : (value < -limit ? -limit : value);
}

void Clamp32(uint8_t* p, int32_t limit) {
    Write32(p, static_cast<uint32_t>(Clamp(Signed32(Read32(p)), limit)));
}

void Clamp16(uint8_t* p, int32_t limit) {
    const int32_t value = static_cast<int16_t>(static_cast<uint16_t>(Read16(p)));
    Write16(p, static_cast<uint32_t>(static_cast<uint16_t>(static_cast<int16_t>(Clamp(value, limit)))));
}

float ReadFloat(const uint8_t* p) {
    const uint32_t bits = Read32(p);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// A world transform whose six numbers are finite and of a sane size.
bool TransformIsSane(const uint8_t* transform) {
    for (int i = 0; i < 6; ++i) {
        const float value = ReadFloat(transform + 4 * i);
        if (!(value > -1e9f && value < 1e9f)) return false;  // also refuses NaN
        if (i < 4 && (value > kMaxTransformScale || value < -kMaxTransformScale)) return false;
    }
    return true;
}

// The layout of a device-independent bitmap header at `info`, of which
// `available` bytes may be read: the bytes of the header with its colour
// table and of the pixel rows, as GDI derives them from the header, so that
// no count in it can make GDI read further than the caller then allows.
bool DibLayout(const uint8_t* info, uint64_t available, uint64_t* tableBytes, uint64_t* imageBytes) {
    if (available < 40) return false;
    const uint32_t headerSize = Read32(info);
    const int64_t width = Signed32(Read32(info + 4));
    int64_t height = Signed32(Read32(info + 8));
    const uint32_t planes = Read16(info + 12);
    const uint32_t bits = Read16(info + 14);
    const uint32_t compression = Read32(info + 16);
    const uint32_t used = Read32(info + 32);
    if (height < 0) height = -height;
    if (headerSize < 40 || headerSize > available || planes != 1) return false;
    if (width < 1 || width > kMaxSide || height < 1 || height > kMaxSide) return false;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32) return false;
    const bool fields = compression == 3;
    if (compression != 0 && !(fields && (bits == 16 || bits == 32))) return false;
    const uint64_t colours = used != 0 ? std::min<uint32_t>(used, 256) : (bits <= 8 ? 1u << bits : 0);
    *tableBytes = std::max<uint64_t>(headerSize, 40 + (fields ? 12 : 0)) + 4 * colours;
    *imageBytes = (static_cast<uint64_t>(width) * bits + 31) / 32 * 4 * static_cast<uint64_t>(height);
    return true;
}

// A bitmap whose header and rows lie in separate stretches of a record.
bool DibFits(const uint8_t* info, uint64_t infoSize, uint64_t bitsSize) {
    uint64_t table = 0, image = 0;
    return DibLayout(info, infoSize, &table, &image) && table <= infoSize && image <= bitsSize;
}

// A bitmap whose rows follow its header directly, in `available` bytes.
bool PackedDibFits(const uint8_t* info, uint64_t available) {
    uint64_t table = 0, image = 0;
    return DibLayout(info, available, &table, &image) && table + image <= available;
}

// ---- Enhanced metafiles ------------------------------------------------------

enum EmrType : uint32_t {
    kEmrHeader = 1,
    kEmrEof = 14,
    kEmrSelectObject = 37,
    kEmrCreatePen = 38,
    kEmrCreateBrushIndirect = 39,
    kEmrDeleteObject = 40,
    kEmrBitBlt = 76,
    kEmrStretchBlt = 77,
    kEmrStretchDiBits = 81,
    kEmrExtCreateFontIndirectW = 82,
    kEmrExtTextOutA = 83,
    kEmrExtTextOutW = 84,
    kEmrExtCreatePen = 95,
};

// Records of a fixed layout: their type and least size.
uint32_t FixedEmrSize(uint32_t type) {
    switch (type) {
        case 9:
        case 10:
        case 11:
        case 12:
        case 13:  // window and viewport extents and origins, brush origin
        case 26:
        case 27:
        case 54:  // offset clip, move to, line to
            return 16;
        case 15: return 20;  // set pixel
        case 16:
        case 17:
        case 18:
        case 19:
        case 20:
        case 21:
        case 22:
        case 24:
        case 25:  // modes and colours
        case 57:
        case 58:
        case 67:  // arc direction, miter limit, select clip path
            return 12;
        case 28:
        case 33:
        case 59:
        case 60:
        case 61:
        case 65:
        case 66:
        case 68:  // paths, save
            return 8;
        case 29:
        case 30:
        case 42:
        case 43:
        case 53:
        case 62:
        case 63:
        case 64: return 24;  // clip rectangles, ellipse, rectangle, flood fill, path filling
        case 41: return 28;  // angle arc
        case 44: return 32;  // round rectangle
        case 45:
        case 46:
        case 47:
        case 55: return 40;  // arc, chord, pie, arc to
        default: return 0;
    }
}

bool EmrObjectIndex(uint32_t index, uint32_t handles, bool creating) {
    if (creating) return index >= 1 && index < handles;    // slot 0 is the metafile itself
    return (index & 0x80000000u) != 0 || index < handles;  // stock objects have the high bit
}

// Whether an enhanced metafile record may be played. `r` holds `size` bytes.
bool EmrIsSafe(const uint8_t* r, uint32_t size, uint32_t handles) {
    const uint32_t type = Read32(r);
    const uint32_t fixed = FixedEmrSize(type);
    if (fixed != 0) return size >= fixed;
    switch (type) {
        case 34: {  // restore: the format wants a negative (relative) level; players negate it
            if (size < 12) return false;
            const int32_t level = Signed32(Read32(r + 8));
            return level < 0 && level >= -65536;
        }
        case 35: return size >= 32 && TransformIsSane(r + 8);  // set world transform
        case 36: return size >= 36 && TransformIsSane(r + 8);  // modify world transform
        case 31:
        case 32: {  // scale viewport or window extent: numerators and denominators
            if (size < 24) return false;
            for (int i = 0; i < 4; ++i) {
                const int32_t v = Signed32(Read32(r + 8 + 4 * i));
                if (v == 0 || v > 1000000 || v < -1000000) return false;
            }
            return true;
        }
        case 2:
        case 3:
        case 4:
        case 5:
        case 6:  // polylines and polygons, 32-bit points
        case 85:
        case 86:
        case 87:
        case 88:
        case 89: {  // the same with 16-bit points
            if (size < 28) return false;
            const uint64_t points = Read32(r + 24);
            return 28 + points * (type <= 6 ? 8 : 4) <= size;
        }
        case 7:
        case 8:
        case 90:
        case 91: {  // poly-polylines and poly-polygons
            if (size < 32) return false;
            const uint64_t polygons = Read32(r + 24);
            const uint64_t points = Read32(r + 28);
            const uint64_t pointSize = type <= 8 ? 8 : 4;
            if (32 + 4 * polygons + pointSize * points > size) return false;
            uint64_t counted = 0;
            for (uint64_t i = 0; i < polygons; ++i) counted += Read32(r + 32 + 4 * i);
            return counted <= points;
        }
        case kEmrSelectObject:
        case kEmrDeleteObject:
            return size >= 12 && EmrObjectIndex(Read32(r + 8), handles, type == kEmrDeleteObject);
        case kEmrCreatePen: return size >= 28 && EmrObjectIndex(Read32(r + 8), handles, true);
        case kEmrCreateBrushIndirect:
            // Pattern styles take their hatch field for a pointer: solid, null and hatched only.
            return size >= 24 && EmrObjectIndex(Read32(r + 8), handles, true) && Read32(r + 12) <= 2;
        case kEmrExtCreateFontIndirectW: return size >= 104 && EmrObjectIndex(Read32(r + 8), handles, true);
        case kEmrExtCreatePen: {
            if (size < 56 || !EmrObjectIndex(Read32(r + 8), handles, true) || Read32(r + 36) > 2)
                return false;
            const uint64_t styles = Read32(r + 48);
            return styles <= 16 && 52 + 4 * styles <= size;
        }
        case kEmrExtTextOutA:
        case kEmrExtTextOutW: {
            if (size < 76) return false;
            const uint64_t characters = Read32(r + 44);
            const uint64_t text = Read32(r + 48);
            const uint64_t options = Read32(r + 52);
            const uint64_t advances = Read32(r + 72);
            if (characters > 65536 || text < 8) return false;
            if (text + characters * (type == kEmrExtTextOutW ? 2 : 1) > size) return false;
            // Advances come in pairs with ETO_PDY.
            return advances == 0 ||
                   (advances >= 8 && advances + characters * ((options & 0x2000) ? 8 : 4) <= size);
        }
        case kEmrBitBlt:
        case kEmrStretchBlt: {
            if (size < (type == kEmrBitBlt ? 100u : 108u) || Read32(r + 80) != 0) return false;
            const uint64_t info = Read32(r + 84), infoSize = Read32(r + 88);
            const uint64_t bits = Read32(r + 92), bitsSize = Read32(r + 96);
            if (info == 0 && infoSize == 0) return true;  // a pattern fill, no bitmap
            return info >= 8 && info + infoSize <= size && bits >= 8 && bits + bitsSize <= size &&
                   DibFits(r + info, infoSize, bitsSize);
        }
        case kEmrStretchDiBits: {
            if (size < 80 || Read32(r + 64) != 0) return false;
            const uint64_t info = Read32(r + 48), infoSize = Read32(r + 52);
            const uint64_t bits = Read32(r + 56), bitsSize = Read32(r + 60);
            return info >= 8 && info + infoSize <= size && bits >= 8 && bits + bitsSize <= size &&
                   DibFits(r + info, infoSize, bitsSize);
        }
        default: return false;
    }
}

// ---- Windows metafiles ---------------------------------------------------------

// Records of a fixed layout: their function and least size in words.
uint32_t FixedWmfWords(uint32_t function) {
    switch (function) {
        case 0x001E: return 3;  // save
        case 0x0102:
        case 0x0103:
        case 0x0104:
        case 0x0105:
        case 0x0106:
        case 0x0107:
        case 0x0108:
        case 0x012E:
        case 0x0127: return 4;  // modes, text alignment, restore
        case 0x0201:
        case 0x0209:
        case 0x020A:
        case 0x020B:
        case 0x020C:
        case 0x020D:
        case 0x020E:
        case 0x020F:
        case 0x0211:
        case 0x0213:
        case 0x0214:
        case 0x0220:
        case 0x0231: return 5;  // colours, origins, extents, line to, move to, offset clip, mapper flags
        case 0x0415:
        case 0x0416:
        case 0x0418:
        case 0x0419:
        case 0x041B:
        case 0x041F: return 7;  // clip rectangles, ellipse, flood fill, rectangle, set pixel
        case 0x061C:
        case 0x061D: return 9;  // round rectangle, pattern fill
        case 0x0817:
        case 0x0830:
        case 0x081A: return 11;  // arc, chord, pie
        default: return 0;
    }
}

// Whether a Windows metafile record may be played. `r` holds `words` words.
bool WmfIsSafe(const uint8_t* r, uint64_t words, uint32_t objects) {
    const uint32_t function = Read16(r + 4);
    const uint8_t* parameters = r + 6;
    const uint64_t count = words - 3;  // parameter words
    auto parameter = [&](uint64_t i) { return Read16(parameters + 2 * i); };
    const uint32_t fixed = FixedWmfWords(function);
    if (fixed != 0) return words >= fixed;
    switch (function) {
        case 0x012D:
        case 0x01F0:  // select, delete
            return count >= 1 && parameter(0) < objects;
        case 0x02FA: return count >= 5;                       // pen
        case 0x02FC: return count >= 4 && parameter(0) <= 2;  // brush: solid, null, hatched
        case 0x02FB: return count >= 9;                       // font; its face name is made whole on copying
        case 0x0324:
        case 0x0325:  // polygon, polyline
            return count >= 1 && 1 + 2ull * parameter(0) <= count;
        case 0x0538: {  // poly-polygon: counts (signed), then the points
            if (count < 1) return false;
            const uint64_t polygons = parameter(0);
            if (1 + polygons > count) return false;
            uint64_t points = 0;
            for (uint64_t i = 0; i < polygons; ++i) {
                const uint32_t n = parameter(1 + i);
                if (n > 0x7FFF) return false;
                points += n;
            }
            return 1 + polygons + 2 * points <= count;
        }
        case 0x0521: {  // text out: length, text, y, x
            if (count < 1 || parameter(0) > 0x7FFF) return false;
            return 1 + (parameter(0) + 1ull) / 2 + 2 <= count;
        }
        case 0x0A32: {  // extended text out: y, x, length, options, [rectangle], text, [advances]
            if (count < 4 || parameter(2) > 0x7FFF) return false;
            const uint64_t length = parameter(2);
            const uint64_t base = 4 + ((parameter(3) & 0x6) != 0 ? 4 : 0) + (length + 1) / 2;
            return count == base || count >= base + length;
        }
        case 0x0F43: {  // stretch DIB: 11 words, then the bitmap; colours by value only
            if (count < 11 || parameter(2) != 0) return false;
            return PackedDibFits(parameters + 22, 2 * (count - 11));
        }
        case 0x0B41: {  // DIB stretch blt: 10 words, then the bitmap
            if (count < 10) return false;
            return PackedDibFits(parameters + 20, 2 * (count - 10));
        }
        case 0x0940: {  // DIB bit blt: 8 words and the bitmap, or 9 words and none
            if (count == 9) return true;
            if (count < 8) return false;
            return PackedDibFits(parameters + 16, 2 * (count - 8));
        }
        default: return false;
    }
}

void AppendNullBrush(std::vector<uint8_t>* out) {
    const uint8_t record[14] = {7, 0, 0, 0, 0xFC, 0x02, 1, 0, 0, 0, 0, 0, 0, 0};  // BS_NULL
    out->insert(out->end(), record, record + sizeof record);
}

// The records of a Windows metafile up to its end record, or to `limit` when
// that ends on a record's end; false when a record is short or reaches past
// `limit`, or there is no record.
template <class Visit>
bool WalkWindowsRecords(const uint8_t* data, uint64_t limit, Visit visit) {
    uint64_t position = 18;
    bool any = false;
    for (;;) {
        if (position == limit && any) return true;
        if (limit - position < 6) return false;
        const uint8_t* record = data + position;
        const uint64_t words = Read32(record);
        if (words < 3 || words > (limit - position) / 2) return false;
        any = true;
        if (Read16(record + 4) == 0) return true;
        visit(record, words);
        position += 2 * words;
    }
}

// The size of the object table an enhanced metafile's records need: one past
// the largest index that a record makes an object at, at most 0xFFFF.
uint32_t EnhancedObjectsNeeded(const uint8_t* data, uint64_t headerSize, uint64_t limit) {
    uint32_t needed = 0;
    for (uint64_t position = headerSize; limit - position >= 8;) {
        const uint32_t type = Read32(data + position);
        const uint32_t length = Read32(data + position + 4);
        if (length < 8 || length % 4 != 0 || length > limit - position || type == kEmrEof) break;
        switch (type) {
            case 38:
            case 39:
            case 49:
            case 82:
            case 93:
            case 94:
            case 95:  // pens, brushes, palettes, fonts: the index is the first field
                if (length >= 12 && Read32(data + position + 8) < 0xFFFF)
                    needed = std::max(needed, Read32(data + position + 8) + 1);
                break;
            default: break;
        }
        position += length;
    }
    return needed;
}

}  // namespace

MetafileFilterResult FilterEnhancedMetafile(const uint8_t* data, size_t size, std::vector<uint8_t>* out) {
    MetafileFilterResult result;
    out->clear();
    if (data == nullptr || size < 88 || Read32(data) != kEmrHeader) return result;
    const uint32_t headerSize = Read32(data + 4);
    if (headerSize < 88 || headerSize % 4 != 0 || headerSize > size || Read32(data + 40) != 0x464D4520 ||
        size > 0xFFFFFFFFu)
        return result;
    // The smaller of the header's byte count and the data, when the count
    // leaves room for a record at all: writers get it wrong both ways.
    uint64_t limit = size & ~uint64_t{3};
    const uint64_t declared = Read32(data + 48);
    if (declared >= uint64_t{headerSize} + 8) limit = std::min(limit, declared & ~uint64_t{3});
    // Every index the records make an object at, even where the header
    // counted the table short.
    const uint32_t handles =
        std::max({Read16(data + 56), EnhancedObjectsNeeded(data, headerSize, limit), uint32_t{1}});
    try {
        out->reserve(static_cast<size_t>(limit));
        out->insert(out->end(), data, data + headerSize);
        uint64_t position = headerSize;
        for (;;) {
            // Data that ends on a record's end plays as if an end record came.
            if (position == limit) break;
            if (limit - position < 8) return MetafileFilterResult{};
            const uint8_t* record = data + position;
            const uint32_t type = Read32(record);
            const uint32_t length = Read32(record + 4);
            if (length < 8 || length % 4 != 0 || length > limit - position) return MetafileFilterResult{};
            if (type == kEmrEof) break;
            if (type != kEmrHeader && EmrIsSafe(record, length, handles)) {
                const size_t at = out->size();
                out->insert(out->end(), record, record + length);
                uint8_t* copy = out->data() + at;
                if (type == kEmrCreatePen) Clamp32(copy + 16, kMaxPenWidth);
                if (type == kEmrExtCreatePen) Clamp32(copy + 32, kMaxPenWidth);
                if (type == kEmrExtCreateFontIndirectW) {
                    Clamp32(copy + 12, kMaxFontSize);  // height
                    Clamp32(copy + 16, kMaxFontSize);  // width
                    Write16(copy + 12 + 28 + 62, 0);   // the face name ends
                }
                ++result.kept;
            } else {
                ++result.dropped;
            }
            position += length;
        }
        // A fresh end record: no palette.
        const uint8_t end[20] = {14, 0, 0, 0, 20, 0, 0, 0, 0, 0, 0, 0, 16, 0, 0, 0, 20, 0, 0, 0};
        out->insert(out->end(), end, end + sizeof end);
        result.kept += 2;
        uint8_t* header = out->data();
        Write32(header + 48, static_cast<uint32_t>(out->size()));  // bytes
        Write32(header + 52, result.kept);                         // records
        Write16(header + 56, handles);
        Write32(header + 60, 0);  // no description
        Write32(header + 64, 0);
        Write32(header + 68, 0);  // no palette
        if (headerSize >= 100) {
            Write32(header + 88, 0);  // no pixel format
            Write32(header + 92, 0);
        }
        result.valid = true;
        return result;
    } catch (const std::bad_alloc&) {
        out->clear();
        return MetafileFilterResult{};
    }
}

MetafileFilterResult FilterWindowsMetafile(const uint8_t* data, size_t size, std::vector<uint8_t>* out) {
    MetafileFilterResult result;
    out->clear();
    if (data == nullptr || size < 18 || size > 0xFFFFFFFFu) return result;
    const uint32_t type = Read16(data), headerWords = Read16(data + 2), version = Read16(data + 4);
    if ((type != 1 && type != 2) || headerWords != 9 || (version != 0x100 && version != 0x300)) return result;
    // Writers get the header's size wrong both ways (the whole file's, or the
    // metafile's with bytes behind it): the smaller of it and the data, when
    // it leaves room for a record at all.
    uint64_t limit = size & ~uint64_t{1};
    const uint64_t declared = 2ull * Read32(data + 6);
    if (declared >= 18 + 6) limit = std::min(limit, declared);
    try {
        // Every index the writer meant, even where it counted the table short.
        thumbnails::WmfObjectSlots slots;
        if (!WalkWindowsRecords(data, limit, [&slots](const uint8_t* record, uint64_t words) {
                slots.Apply(Read16(record + 4), words > 3 ? Read16(record + 6) : 0);
            }))
            return result;
        const uint32_t objects = std::max(Read16(data + 10), slots.Needed());
        out->reserve(static_cast<size_t>(limit) + 64);
        out->insert(out->end(), data, data + 18);
        uint32_t largest = 3;
        WalkWindowsRecords(data, limit, [&](const uint8_t* record, uint64_t words) {
            const uint32_t function = Read16(record + 4);
            const size_t at = out->size();
            if (WmfIsSafe(record, words, objects)) {
                if (function == 0x02FB && words < 3 + 9 + 16) {
                    // A short font record: GDI copies a whole 32-byte face name.
                    out->insert(out->end(), record, record + 2 * words);
                    out->resize(at + 2 * (3 + 9 + 16), 0);
                    Write32(out->data() + at, 3 + 9 + 16);
                } else {
                    out->insert(out->end(), record, record + 2 * words);
                }
                uint8_t* copy = out->data() + at;
                if (function == 0x02FA) Clamp16(copy + 6 + 2, kMaxPenWidth);
                if (function == 0x02FB) {
                    Clamp16(copy + 6, kMaxFontSize);      // height
                    Clamp16(copy + 6 + 2, kMaxFontSize);  // width
                    copy[6 + 18 + 31] = 0;                // the face name ends
                }
                ++result.kept;
            } else {
                if (thumbnails::IsWmfObjectMaker(function)) AppendNullBrush(out);
                ++result.dropped;
            }
            largest = std::max<uint32_t>(largest, static_cast<uint32_t>((out->size() - at) / 2));
        });
        const uint8_t end[6] = {3, 0, 0, 0, 0, 0};
        out->insert(out->end(), end, end + sizeof end);
        result.kept += 2;
        uint8_t* header = out->data();
        Write16(header, 1);                                           // in memory
        Write16(header + 4, 0x300);                                   // the version the player takes
        Write32(header + 6, static_cast<uint32_t>(out->size() / 2));  // size in words
        Write16(header + 10, objects);
        Write32(header + 12, largest);  // largest record
        result.valid = true;
        return result;
    } catch (const std::bad_alloc&) {
        out->clear();
        return MetafileFilterResult{};
    }
}

namespace {

class BoxBuilder {
public:
    void Add(int64_t x, int64_t y) {
        if (empty_) {
            box_ = LogicalBox{x, y, x, y};
            empty_ = false;
            return;
        }
        box_.left = std::min(box_.left, x);
        box_.top = std::min(box_.top, y);
        box_.right = std::max(box_.right, x);
        box_.bottom = std::max(box_.bottom, y);
    }
    RecordGeometry Done(RecordGeometry kind, LogicalBox* out) const {
        if (empty_) return RecordGeometry::kNone;
        *out = box_;
        return kind;
    }

private:
    LogicalBox box_{};
    bool empty_ = true;
};

int64_t At32(const uint8_t* r, uint64_t offset) {
    return Signed32(Read32(r + offset));
}
int64_t At16(const uint8_t* r, uint64_t offset) {
    return static_cast<int16_t>(static_cast<uint16_t>(Read16(r + offset)));
}

}  // namespace

RecordGeometry EnhancedRecordGeometry(const uint8_t* r, uint32_t size, LogicalBox* box) {
    BoxBuilder points;
    const uint32_t type = size >= 8 ? Read32(r) : 0;
    auto rectangle = [&](uint64_t offset) {
        points.Add(At32(r, offset), At32(r, offset + 4));
        points.Add(At32(r, offset + 8), At32(r, offset + 12));
    };
    switch (type) {
        case 15:  // set pixel
        case 27:  // move to
        case 53:  // flood fill
        case 54:  // line to
            if (size >= 16) points.Add(At32(r, 8), At32(r, 12));
            return points.Done(RecordGeometry::kArea, box);
        case 41:  // angle arc: centre and radius
            if (size >= 20) {
                const int64_t radius = Read32(r + 16);
                points.Add(At32(r, 8) - radius, At32(r, 12) - radius);
                points.Add(At32(r, 8) + radius, At32(r, 12) + radius);
            }
            return points.Done(RecordGeometry::kArea, box);
        case 42:
        case 43:
        case 44:
        case 45:
        case 46:
        case 47:
        case 55:  // boxed shapes and arcs
            if (size >= 24) rectangle(8);
            return points.Done(RecordGeometry::kArea, box);
        case 2:
        case 3:
        case 4:
        case 5:
        case 6:
        case 85:
        case 86:
        case 87:
        case 88:
        case 89: {
            const bool wide = type <= 6;
            const uint64_t count = size >= 28 ? Read32(r + 24) : 0;
            for (uint64_t i = 0; i < count && 28 + (i + 1) * (wide ? 8 : 4) <= size; ++i)
                points.Add(wide ? At32(r, 28 + 8 * i) : At16(r, 28 + 4 * i),
                           wide ? At32(r, 32 + 8 * i) : At16(r, 30 + 4 * i));
            return points.Done(RecordGeometry::kArea, box);
        }
        case 7:
        case 8:
        case 90:
        case 91: {
            const bool wide = type <= 8;
            if (size < 32) return RecordGeometry::kNone;
            const uint64_t start = 32 + 4ull * Read32(r + 24);
            const uint64_t count = Read32(r + 28);
            for (uint64_t i = 0; i < count && start + (i + 1) * (wide ? 8 : 4) <= size; ++i)
                points.Add(wide ? At32(r, start + 8 * i) : At16(r, start + 4 * i),
                           wide ? At32(r, start + 8 * i + 4) : At16(r, start + 4 * i + 2));
            return points.Done(RecordGeometry::kArea, box);
        }
        case 83:
        case 84:  // text: the reference point
            if (size >= 44) points.Add(At32(r, 36), At32(r, 40));
            return points.Done(RecordGeometry::kText, box);
        case 76:
        case 77:  // bit blt, stretch blt: the target rectangle
            if (size >= 40) {
                points.Add(At32(r, 24), At32(r, 28));
                points.Add(At32(r, 24) + At32(r, 32), At32(r, 28) + At32(r, 36));
            }
            return points.Done(RecordGeometry::kArea, box);
        case 81:  // stretch DIB bits
            if (size >= 80) {
                points.Add(At32(r, 24), At32(r, 28));
                points.Add(At32(r, 24) + At32(r, 72), At32(r, 28) + At32(r, 76));
            }
            return points.Done(RecordGeometry::kArea, box);
        default: return RecordGeometry::kNone;
    }
}

}  // namespace imaging
