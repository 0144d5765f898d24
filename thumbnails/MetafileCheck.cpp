#include "thumbnails/MetafileCheck.h"

#include <cmath>
#include <cstring>
#include <initializer_list>

namespace thumbnails {

namespace {

// ---- Reading ---------------------------------------------------------------

// Little-endian reads that give 0 outside the data, so that no read can leave
// it even where a test before it were missing.
class View {
public:
    View(const uint8_t* data, size_t size) : data_(data), size_(data != nullptr ? size : 0) {}

    uint64_t Size() const { return size_; }
    bool Has(uint64_t offset, uint64_t count) const { return offset <= size_ && count <= size_ - offset; }

    uint32_t U8(uint64_t offset) const { return Has(offset, 1) ? data_[offset] : 0; }
    uint32_t U16(uint64_t offset) const {
        if (!Has(offset, 2)) return 0;
        return static_cast<uint32_t>(data_[offset]) | static_cast<uint32_t>(data_[offset + 1]) << 8;
    }
    uint32_t U32(uint64_t offset) const {
        if (!Has(offset, 4)) return 0;
        return U16(offset) | U16(offset + 2) << 16;
    }
    int32_t I32(uint64_t offset) const {
        const uint32_t value = U32(offset);
        int32_t result;
        std::memcpy(&result, &value, sizeof result);
        return result;
    }
    int32_t I16(uint64_t offset) const {
        const uint16_t value = static_cast<uint16_t>(U16(offset));
        int16_t result;
        std::memcpy(&result, &value, sizeof result);
        return result;
    }

private:
    const uint8_t* data_;
    uint64_t size_;
};

MetafileCheckResult Result(MetafileCheckStatus status, MetafileKind kind, size_t records = 0,
                           uint64_t offset = 0, uint32_t record = 0) {
    MetafileCheckResult result;
    result.status = status;
    result.kind = kind;
    result.recordCount = records;
    result.failingOffset = static_cast<size_t>(offset);
    result.failingRecord = record;
    return result;
}

// ---- Bitmaps inside records ---------------------------------------------------

// A bitmap bigger than the imaging layer takes is refused, since GDI would
// allocate it whole, whatever little data the record holds.
constexpr int64_t kMaxBitmapSide = 16384;
constexpr uint64_t kMaxBitmapPixels = 64ull * 1024 * 1024;

// How a record's colour table is made: RGB entries (four bytes, three for the
// old core header), palette indices (two bytes), or none (a monochrome brush
// of the DIB_PAL_MONO kind).
enum class ColorTable { kRgb, kPaletteIndices, kNone };

bool ColorTableOfUsage(uint32_t usage, bool monoAllowed, ColorTable* table) {
    switch (usage) {
        case 0: *table = ColorTable::kRgb; return true;
        case 1: *table = ColorTable::kPaletteIndices; return true;
        case 2:
            if (!monoAllowed) return false;
            *table = ColorTable::kNone;
            return true;
        default: return false;
    }
}

struct DibLayout {
    uint64_t infoBytes = 0;  // header, masks and colour table
    uint64_t bitsBytes = 0;  // what the header says the bits take
    uint32_t bitCount = 0;
    bool compressed = false;
};

// The bitmap header at `at`, of which `available` bytes are in the record.
bool ParseDib(const View& v, uint64_t at, uint64_t available, ColorTable table, DibLayout* layout) {
    if (available < 4 || !v.Has(at, available)) return false;
    const uint32_t headerSize = v.U32(at);
    int64_t width = 0, height = 0;
    uint32_t planes = 0, bitCount = 0, compression = 0, sizeImage = 0, colorsUsed = 0;
    bool core = false;
    if (headerSize == 12) {
        core = true;
        if (available < 12) return false;
        width = v.U16(at + 4);
        height = v.U16(at + 6);
        planes = v.U16(at + 8);
        bitCount = v.U16(at + 10);
    } else if (headerSize == 40 || headerSize == 52 || headerSize == 56 || headerSize == 108 ||
               headerSize == 124) {
        if (available < headerSize) return false;
        width = v.I32(at + 4);
        height = v.I32(at + 8);
        planes = v.U16(at + 12);
        bitCount = v.U16(at + 14);
        compression = v.U32(at + 16);
        sizeImage = v.U32(at + 20);
        colorsUsed = v.U32(at + 32);
    } else {
        return false;
    }
    if (planes != 1) return false;
    if (bitCount != 1 && bitCount != 4 && bitCount != 8 && bitCount != 16 && bitCount != 24 && bitCount != 32)
        return false;
    const int64_t rows = height < 0 ? -height : height;
    if (width < 1 || rows < 1 || width > kMaxBitmapSide || rows > kMaxBitmapSide) return false;
    if (static_cast<uint64_t>(width) * static_cast<uint64_t>(rows) > kMaxBitmapPixels) return false;

    uint64_t masks = 0;
    switch (compression) {
        case 0: break;  // BI_RGB
        case 1:         // BI_RLE8
            if (bitCount != 8 || height < 0) return false;
            break;
        case 2:  // BI_RLE4
            if (bitCount != 4 || height < 0) return false;
            break;
        case 3:  // BI_BITFIELDS: the masks follow a 40-byte header and are part of the larger ones
            if (bitCount != 16 && bitCount != 32) return false;
            if (headerSize == 40)
                masks = 12;
            else if (headerSize != 108 && headerSize != 124)
                return false;
            break;
        default: return false;  // JPEG, PNG and the rest are not played
    }

    const uint64_t maxColors = bitCount <= 8 ? (1u << bitCount) : 256;
    if (colorsUsed > maxColors) return false;
    const uint64_t colors = colorsUsed != 0 ? colorsUsed : (bitCount <= 8 ? (1u << bitCount) : 0);
    uint64_t entryBytes = 0;
    switch (table) {
        case ColorTable::kRgb: entryBytes = core ? 3 : 4; break;
        case ColorTable::kPaletteIndices: entryBytes = 2; break;
        case ColorTable::kNone: entryBytes = 0; break;
    }
    layout->infoBytes = headerSize + masks + colors * entryBytes;
    if (layout->infoBytes > available) return false;

    layout->bitCount = bitCount;
    layout->compressed = compression == 1 || compression == 2;
    if (layout->compressed) {
        if (sizeImage == 0) return false;
        layout->bitsBytes = sizeImage;
    } else {
        const uint64_t stride = (static_cast<uint64_t>(width) * bitCount + 31) / 32 * 4;
        layout->bitsBytes = stride * static_cast<uint64_t>(rows);
    }
    return true;
}

// A bitmap given by offsets and sizes inside an enhanced metafile record.
bool EmfDibFits(const View& v, uint64_t record, uint64_t recordSize, uint32_t offBmi, uint32_t cbBmi,
                uint32_t offBits, uint32_t cbBits, ColorTable table, DibLayout* layout) {
    if (static_cast<uint64_t>(offBmi) + cbBmi > recordSize) return false;
    if (static_cast<uint64_t>(offBits) + cbBits > recordSize) return false;
    if (offBmi < 8 || offBits < 8) return false;
    if (!ParseDib(v, record + offBmi, cbBmi, table, layout)) return false;
    return layout->bitsBytes <= cbBits;
}

// ---- Enhanced metafiles ------------------------------------------------------

enum EmfRecord : uint32_t {
    kEmrHeader = 1,
    kEmrPolyBezier = 2,
    kEmrPolygon = 3,
    kEmrPolyline = 4,
    kEmrPolyBezierTo = 5,
    kEmrPolylineTo = 6,
    kEmrPolyPolyline = 7,
    kEmrPolyPolygon = 8,
    kEmrSetWindowExtEx = 9,
    kEmrSetWindowOrgEx = 10,
    kEmrSetViewportExtEx = 11,
    kEmrSetViewportOrgEx = 12,
    kEmrSetBrushOrgEx = 13,
    kEmrEof = 14,
    kEmrSetPixelV = 15,
    kEmrSetMapperFlags = 16,
    kEmrSetMapMode = 17,
    kEmrSetBkMode = 18,
    kEmrSetPolyFillMode = 19,
    kEmrSetRop2 = 20,
    kEmrSetStretchBltMode = 21,
    kEmrSetTextAlign = 22,
    kEmrSetColorAdjustment = 23,
    kEmrSetTextColor = 24,
    kEmrSetBkColor = 25,
    kEmrOffsetClipRgn = 26,
    kEmrMoveToEx = 27,
    kEmrSetMetaRgn = 28,
    kEmrExcludeClipRect = 29,
    kEmrIntersectClipRect = 30,
    kEmrScaleViewportExtEx = 31,
    kEmrScaleWindowExtEx = 32,
    kEmrSaveDc = 33,
    kEmrRestoreDc = 34,
    kEmrSetWorldTransform = 35,
    kEmrModifyWorldTransform = 36,
    kEmrSelectObject = 37,
    kEmrCreatePen = 38,
    kEmrCreateBrushIndirect = 39,
    kEmrDeleteObject = 40,
    kEmrAngleArc = 41,
    kEmrEllipse = 42,
    kEmrRectangle = 43,
    kEmrRoundRect = 44,
    kEmrArc = 45,
    kEmrChord = 46,
    kEmrPie = 47,
    kEmrSelectPalette = 48,
    kEmrCreatePalette = 49,
    kEmrSetPaletteEntries = 50,
    kEmrResizePalette = 51,
    kEmrRealizePalette = 52,
    kEmrExtFloodFill = 53,
    kEmrLineTo = 54,
    kEmrArcTo = 55,
    kEmrPolyDraw = 56,
    kEmrSetArcDirection = 57,
    kEmrSetMiterLimit = 58,
    kEmrBeginPath = 59,
    kEmrEndPath = 60,
    kEmrCloseFigure = 61,
    kEmrFillPath = 62,
    kEmrStrokeAndFillPath = 63,
    kEmrStrokePath = 64,
    kEmrFlattenPath = 65,
    kEmrWidenPath = 66,
    kEmrSelectClipPath = 67,
    kEmrAbortPath = 68,
    kEmrGdiComment = 70,
    kEmrFillRgn = 71,
    kEmrFrameRgn = 72,
    kEmrInvertRgn = 73,
    kEmrPaintRgn = 74,
    kEmrExtSelectClipRgn = 75,
    kEmrBitBlt = 76,
    kEmrStretchBlt = 77,
    kEmrSetDiBitsToDevice = 80,
    kEmrStretchDiBits = 81,
    kEmrExtCreateFontIndirectW = 82,
    kEmrExtTextOutA = 83,
    kEmrExtTextOutW = 84,
    kEmrPolyBezier16 = 85,
    kEmrPolygon16 = 86,
    kEmrPolyline16 = 87,
    kEmrPolyBezierTo16 = 88,
    kEmrPolylineTo16 = 89,
    kEmrPolyPolyline16 = 90,
    kEmrPolyPolygon16 = 91,
    kEmrPolyDraw16 = 92,
    kEmrCreateMonoBrush = 93,
    kEmrCreateDibPatternBrushPt = 94,
    kEmrExtCreatePen = 95,
    kEmrSetIcmMode = 98,
    kEmrDrawEscape = 105,
    kEmrExtEscape = 106,
    kEmrNamedEscape = 110,
    kEmrAlphaBlend = 114,
    kEmrSetLayout = 115,
    kEmrTransparentBlt = 116,
    kEmrGradientFill = 118,
};

// Sizes that no drawing needs, and that make players work in proportion to
// them (a pen's outline, a glyph, the points of an ellipse): a damaged high
// byte in one of them is enough to keep GDI busy for minutes.
constexpr int64_t kMaxPenWidth = 32767;
constexpr int64_t kMaxFontSize = 32767;
constexpr int64_t kMaxCurveCoordinate = 1 << 21;

// The mapping a player sets up from the header and the mapping records. A
// damaged extent, origin or transform makes scales of millions, at which
// players spend minutes on one shape or overrun their own buffers; these
// bound every step, far beyond what drawings use.
constexpr int64_t kMaxExtent = 1 << 24;
constexpr int64_t kMaxScaleFactor = 1 << 10;
constexpr double kMaxTransformScale = 1 << 10;
constexpr double kMaxTransformOffset = 1 << 24;
// Places and sizes of bitmap transfers: a source rectangle bigger than any
// bitmap accepted here, or a target beyond this, makes players overflow
// their stretching arithmetic.
constexpr int64_t kMaxBltTarget = 1 << 20;

// The reference device of an enhanced metafile: a size in pixels and in
// millimetres that a screen or printer has, and a resolution between 1/64
// and 1024 pixels a millimetre.
constexpr int64_t kMaxReferenceSize = 1 << 16;
constexpr int64_t kMinPixelsPerMillimetreFraction = 64;
constexpr int64_t kMaxPixelsPerMillimetre = 1024;
// The drawing's bounds may exceed its frame, but not by more than this.
constexpr int64_t kMaxBoundsToFrame = 16;

constexpr uint32_t kEmfSignature = 0x464D4520u;  // " EMF"
constexpr uint32_t kEmfHeaderMinimum = 88;
constexpr uint32_t kStockObject = 0x80000000u;

// Brush styles whose third field is a hatch index, not a pointer or handle.
bool PlainBrushStyle(uint32_t style, uint32_t hatch) {
    if (style == 0 || style == 1) return true;  // BS_SOLID, BS_NULL
    return style == 2 && hatch <= 5;            // BS_HATCHED, HS_HORIZONTAL..HS_DIAGCROSS
}

class EmfRecordCheck {
public:
    EmfRecordCheck(const View& v, uint64_t at, uint32_t size, uint32_t handles)
        : v_(v), at_(at), size_(size), handles_(handles) {}

    MetafileCheckStatus Check(uint32_t type) const {
        switch (type) {
            case kEmrPolyBezier:
            case kEmrPolygon:
            case kEmrPolyline:
            case kEmrPolyBezierTo:
            case kEmrPolylineTo: return Points(8);
            case kEmrPolyBezier16:
            case kEmrPolygon16:
            case kEmrPolyline16:
            case kEmrPolyBezierTo16:
            case kEmrPolylineTo16: return Points(4);
            case kEmrPolyPolyline:
            case kEmrPolyPolygon: return PolyPolygon(8);
            case kEmrPolyPolyline16:
            case kEmrPolyPolygon16: return PolyPolygon(4);
            case kEmrPolyDraw: return PolyDraw(8);
            case kEmrPolyDraw16: return PolyDraw(4);

            case kEmrSetWindowExtEx:
            case kEmrSetWindowOrgEx:
            case kEmrSetViewportExtEx:
            case kEmrSetViewportOrgEx: return Mapping(16, 2, kMaxExtent);
            case kEmrSetBrushOrgEx:
            case kEmrOffsetClipRgn:
            case kEmrMoveToEx:
            case kEmrLineTo: return Fixed(16);
            case kEmrSetPixelV: return Fixed(20);
            case kEmrSetMapperFlags:
            case kEmrSetMapMode:
            case kEmrSetBkMode:
            case kEmrSetPolyFillMode:
            case kEmrSetRop2:
            case kEmrSetStretchBltMode:
            case kEmrSetTextAlign:
            case kEmrSetTextColor:
            case kEmrSetBkColor:
            case kEmrRestoreDc:
            case kEmrSetArcDirection:
            case kEmrSetMiterLimit:
            case kEmrSelectClipPath:
            case kEmrSetIcmMode:
            case kEmrSetLayout: return Fixed(12);
            case kEmrSetColorAdjustment: return Fixed(32);
            case kEmrSetWorldTransform: return Transform(32, false);
            case kEmrModifyWorldTransform: return Transform(36, true);
            case kEmrSetMetaRgn:
            case kEmrSaveDc:
            case kEmrRealizePalette:
            case kEmrBeginPath:
            case kEmrEndPath:
            case kEmrCloseFigure:
            case kEmrFlattenPath:
            case kEmrWidenPath:
            case kEmrAbortPath: return Fixed(8);
            case kEmrScaleViewportExtEx:
            case kEmrScaleWindowExtEx: return Mapping(24, 4, kMaxScaleFactor);
            case kEmrExcludeClipRect:
            case kEmrIntersectClipRect:
            case kEmrRectangle:
            case kEmrExtFloodFill:
            case kEmrFillPath:
            case kEmrStrokeAndFillPath:
            case kEmrStrokePath: return Fixed(24);
            case kEmrEllipse: return Curve(24, 4);
            case kEmrAngleArc: return AngleArc();
            case kEmrRoundRect: return Curve(32, 6);
            case kEmrArc:
            case kEmrChord:
            case kEmrPie:
            case kEmrArcTo: return Curve(40, 8);

            case kEmrSelectObject:
            case kEmrSelectPalette: return Object(12, 8, true);
            case kEmrDeleteObject: return Object(12, 8, false);
            case kEmrCreatePen: return CreatePen();
            case kEmrCreateBrushIndirect: return CreateBrush();
            case kEmrExtCreateFontIndirectW: return CreateFont();
            case kEmrCreatePalette: return CreatePalette();
            case kEmrSetPaletteEntries: return SetPaletteEntries();
            case kEmrResizePalette: return ResizePalette();
            case kEmrExtCreatePen: return ExtCreatePen();
            case kEmrCreateMonoBrush: return DibBrush(true);
            case kEmrCreateDibPatternBrushPt: return DibBrush(false);

            case kEmrGdiComment: return GdiComment();
            case kEmrFillRgn: return RegionRecord(32, 24, 28, true);
            case kEmrFrameRgn: return RegionRecord(40, 24, 28, true);
            case kEmrInvertRgn:
            case kEmrPaintRgn: return RegionRecord(28, 24, 0, false);
            case kEmrExtSelectClipRgn: return SelectClipRegion();

            case kEmrBitBlt: return Blt(100, false);
            case kEmrStretchBlt: return Blt(108, false);
            case kEmrAlphaBlend: return Blt(108, true);
            case kEmrTransparentBlt: return Blt(108, false);
            case kEmrSetDiBitsToDevice: return DibBits(76);
            case kEmrStretchDiBits: return DibBits(80);

            case kEmrExtTextOutA: return ExtTextOut(1);
            case kEmrExtTextOutW: return ExtTextOut(2);
            case kEmrGradientFill: return GradientFill();

            case kEmrDrawEscape:
            case kEmrExtEscape:
            case kEmrNamedEscape: return MetafileCheckStatus::kEscapeRecord;
            default: return MetafileCheckStatus::kUnsupportedRecord;
        }
    }

private:
    static constexpr MetafileCheckStatus kOk = MetafileCheckStatus::kAccepted;
    static constexpr MetafileCheckStatus kContent = MetafileCheckStatus::kBadRecordContent;
    static constexpr MetafileCheckStatus kSize = MetafileCheckStatus::kBadRecordSize;

    uint32_t U32(uint32_t offset) const { return v_.U32(at_ + offset); }
    bool Fits(uint64_t bytes) const { return bytes <= size_; }

    MetafileCheckStatus Fixed(uint32_t minimum) const { return Fits(minimum) ? kOk : kSize; }

    // Index 0 of the object table is the metafile itself, so objects live
    // from 1 to the header's count - 1.
    bool IsObject(uint32_t index) const { return index >= 1 && index < handles_; }
    bool IsObjectOrStock(uint32_t index) const { return (index & kStockObject) != 0 || IsObject(index); }

    MetafileCheckStatus Object(uint32_t minimum, uint32_t indexAt, bool stockAllowed) const {
        if (!Fits(minimum)) return kSize;
        const uint32_t index = U32(indexAt);
        return (stockAllowed ? IsObjectOrStock(index) : IsObject(index)) ? kOk : kContent;
    }

    static bool Within(int64_t value, int64_t limit) { return value >= -limit && value <= limit; }

    // Extents, origins and scale factors: `values` of them from offset 8.
    MetafileCheckStatus Mapping(uint32_t minimum, uint32_t values, int64_t limit) const {
        if (!Fits(minimum)) return kSize;
        for (uint32_t i = 0; i < values; ++i)
            if (!Within(v_.I32(at_ + 8 + i * 4), limit)) return kContent;
        return kOk;
    }

    float Float(uint32_t offset) const {
        const uint32_t bits = U32(offset);
        float value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    // An XFORM from offset 8: four scale and shear factors, two offsets.
    MetafileCheckStatus Transform(uint32_t minimum, bool withMode) const {
        if (!Fits(minimum)) return kSize;
        for (uint32_t i = 0; i < 6; ++i) {
            const double value = Float(8 + i * 4);
            const double limit = i < 4 ? kMaxTransformScale : kMaxTransformOffset;
            if (!std::isfinite(value) || std::fabs(value) > limit) return kContent;
        }
        if (withMode && (U32(32) < 1 || U32(32) > 4)) return kContent;  // MWT_IDENTITY .. MWT_SET
        return kOk;
    }

    // Ellipses, arcs and rounded corners: `values` coordinates from offset 8.
    MetafileCheckStatus Curve(uint32_t minimum, uint32_t values) const {
        if (!Fits(minimum)) return kSize;
        for (uint32_t i = 0; i < values; ++i)
            if (!Within(v_.I32(at_ + 8 + i * 4), kMaxCurveCoordinate)) return kContent;
        return kOk;
    }

    MetafileCheckStatus AngleArc() const {
        if (!Fits(28)) return kSize;
        const bool fits = Within(v_.I32(at_ + 8), kMaxCurveCoordinate) &&
                          Within(v_.I32(at_ + 12), kMaxCurveCoordinate) && U32(16) <= kMaxCurveCoordinate;
        return fits ? kOk : kContent;
    }

    MetafileCheckStatus CreatePen() const {
        const MetafileCheckStatus object = Object(28, 8, false);
        if (object != kOk) return object;
        return Within(v_.I32(at_ + 16), kMaxPenWidth) ? kOk : kContent;
    }

    MetafileCheckStatus CreateFont() const {
        const MetafileCheckStatus object = Object(104, 8, false);
        if (object != kOk) return object;
        return Within(v_.I32(at_ + 12), kMaxFontSize) && Within(v_.I32(at_ + 16), kMaxFontSize) ? kOk
                                                                                                : kContent;
    }

    MetafileCheckStatus Points(uint64_t pointBytes) const {
        if (!Fits(28)) return kSize;
        return Fits(28 + U32(24) * pointBytes) ? kOk : kContent;
    }

    MetafileCheckStatus PolyDraw(uint64_t pointBytes) const {
        if (!Fits(28)) return kSize;
        return Fits(28 + U32(24) * (pointBytes + 1)) ? kOk : kContent;
    }

    // The players take as many points as the counts add up to, whatever the
    // point count says, so the two must agree.
    MetafileCheckStatus PolyPolygon(uint64_t pointBytes) const {
        if (!Fits(32)) return kSize;
        const uint64_t polygons = U32(24);
        const uint64_t points = U32(28);
        if (!Fits(32 + polygons * 4 + points * pointBytes)) return kContent;
        uint64_t sum = 0;
        for (uint64_t i = 0; i < polygons; ++i) sum += U32(static_cast<uint32_t>(32 + i * 4));
        return sum == points ? kOk : kContent;
    }

    MetafileCheckStatus CreateBrush() const {
        if (!Fits(24)) return kSize;
        if (!IsObject(U32(8))) return kContent;
        return PlainBrushStyle(U32(12), U32(20)) ? kOk : kContent;
    }

    MetafileCheckStatus CreatePalette() const {
        if (!Fits(16)) return kSize;
        if (!IsObject(U32(8))) return kContent;
        return Fits(16 + static_cast<uint64_t>(v_.U16(at_ + 14)) * 4) ? kOk : kContent;
    }

    MetafileCheckStatus SetPaletteEntries() const {
        if (!Fits(20)) return kSize;
        if (!IsObject(U32(8))) return kContent;
        return Fits(20 + static_cast<uint64_t>(U32(16)) * 4) ? kOk : kContent;
    }

    MetafileCheckStatus ResizePalette() const {
        if (!Fits(16)) return kSize;
        return IsObject(U32(8)) && U32(12) <= 1024 ? kOk : kContent;
    }

    MetafileCheckStatus ExtCreatePen() const {
        if (!Fits(52)) return kSize;
        if (!IsObject(U32(8))) return kContent;
        if (!PlainBrushStyle(U32(36), U32(44))) return kContent;
        if (U32(32) > kMaxPenWidth) return kContent;
        if (!Fits(52 + static_cast<uint64_t>(U32(48)) * 4)) return kContent;
        const uint32_t offBmi = U32(12), cbBmi = U32(16), offBits = U32(20), cbBits = U32(24);
        if (offBmi == 0 && cbBmi == 0 && offBits == 0 && cbBits == 0) return kOk;
        DibLayout layout;
        return EmfDibFits(v_, at_, size_, offBmi, cbBmi, offBits, cbBits, ColorTable::kRgb, &layout)
                   ? kOk
                   : kContent;
    }

    MetafileCheckStatus DibBrush(bool mono) const {
        if (!Fits(32)) return kSize;
        if (!IsObject(U32(8))) return kContent;
        ColorTable table;
        if (!ColorTableOfUsage(U32(12), mono, &table)) return kContent;
        DibLayout layout;
        if (!EmfDibFits(v_, at_, size_, U32(16), U32(20), U32(24), U32(28), table, &layout)) return kContent;
        // A monochrome brush is made as a one-bit device bitmap from the bits.
        return !mono || layout.bitCount == 1 ? kOk : kContent;
    }

    MetafileCheckStatus GdiComment() const {
        if (!Fits(12)) return kSize;
        return Fits(12 + static_cast<uint64_t>(U32(8))) ? kOk : kContent;
    }

    // Region data: a 32-byte header (size 32, type RDH_RECTANGLES) and its
    // rectangles, inside both the declared size and the record.
    bool RegionFits(uint64_t dataAt, uint64_t declared) const {
        if (dataAt > size_) return false;
        const uint64_t area = size_ - dataAt;
        if (declared > area || declared < 32) return false;
        const uint64_t at = at_ + dataAt;
        if (v_.U32(at) != 32 || v_.U32(at + 4) != 1) return false;
        const uint64_t rectangles = v_.U32(at + 8);
        return 32 + rectangles * 16 <= declared;
    }

    MetafileCheckStatus RegionRecord(uint32_t dataAt, uint32_t sizeAt, uint32_t brushAt,
                                     bool hasBrush) const {
        if (!Fits(dataAt)) return kSize;
        if (hasBrush && !IsObject(U32(brushAt))) return kContent;
        return RegionFits(dataAt, U32(sizeAt)) ? kOk : kContent;
    }

    MetafileCheckStatus SelectClipRegion() const {
        if (!Fits(16)) return kSize;
        const uint32_t declared = U32(8);
        const uint32_t mode = U32(12);
        if (mode < 1 || mode > 5) return kContent;
        // A player may look for a region wherever the record has room for one,
        // so room for a header means a valid region in it.
        const uint64_t area = size_ - 16;
        if (declared > area) return kContent;
        if (declared == 0 && area < 32) return mode == 5 ? kOk : kContent;  // RGN_COPY with no region: reset
        return RegionFits(16, declared == 0 ? area : declared) && (declared != 0 || mode == 5) ? kOk
                                                                                               : kContent;
    }

    // Bit-block transfers: a bitmap is optional (its absence makes the record
    // a pattern fill), but any sign of one must be a whole bitmap.
    // Signed 32-bit values at the given offsets within `limit`.
    bool AllWithin(std::initializer_list<uint32_t> offsets, int64_t limit) const {
        for (uint32_t offset : offsets)
            if (!Within(v_.I32(at_ + offset), limit)) return false;
        return true;
    }

    MetafileCheckStatus Blt(uint32_t minimum, bool alpha) const {
        if (!Fits(minimum)) return kSize;
        if (!AllWithin({24, 28, 32, 36}, kMaxBltTarget) || !AllWithin({44, 48}, kMaxBitmapSide))
            return kContent;
        if (minimum >= 108 && !AllWithin({100, 104}, kMaxBitmapSide)) return kContent;
        const uint32_t offBmi = U32(84), cbBmi = U32(88), offBits = U32(92), cbBits = U32(96);
        if (offBmi == 0 && cbBmi == 0) return alpha && (offBits != 0 || cbBits != 0) ? kContent : kOk;
        ColorTable table;
        if (!ColorTableOfUsage(U32(80), false, &table)) return kContent;
        DibLayout layout;
        if (!EmfDibFits(v_, at_, size_, offBmi, cbBmi, offBits, cbBits, table, &layout)) return kContent;
        // An alpha blend copies all the bits into a section of the header's
        // size: they must be uncompressed and no more than it holds.
        if (alpha && (layout.compressed || cbBits > layout.bitsBytes)) return kContent;
        return kOk;
    }

    // STRETCHDIBITS (80 bytes) and SETDIBITSTODEVICE (76): the target's
    // place at 24, the source rectangle at 32; then the target's size, or
    // the first scan line and their count.
    MetafileCheckStatus DibBits(uint32_t minimum) const {
        if (!Fits(minimum)) return kSize;
        if (!AllWithin({24, 28}, kMaxBltTarget) || !AllWithin({32, 36, 40, 44}, kMaxBitmapSide))
            return kContent;
        const bool stretch = minimum == 80;
        if (stretch ? !AllWithin({72, 76}, kMaxBltTarget) : !AllWithin({68, 72}, kMaxBitmapSide))
            return kContent;
        ColorTable table;
        if (!ColorTableOfUsage(U32(64), false, &table)) return kContent;
        DibLayout layout;
        return EmfDibFits(v_, at_, size_, U32(48), U32(52), U32(56), U32(60), table, &layout) ? kOk
                                                                                              : kContent;
    }

    MetafileCheckStatus ExtTextOut(uint64_t charBytes) const {
        if (!Fits(76)) return kSize;
        const uint64_t chars = U32(44);
        const uint64_t offString = U32(48);
        const uint32_t options = U32(52);
        const uint64_t offDx = U32(72);
        if (chars == 0) return kOk;
        if (offString < 8 || !Fits(offString + chars * charBytes)) return kContent;
        if (offDx == 0) return kOk;
        const uint64_t dxBytes = (options & 0x2000) != 0 ? 8 : 4;  // ETO_PDY: x and y for each character
        return offDx >= 8 && Fits(offDx + chars * dxBytes) ? kOk : kContent;
    }

    MetafileCheckStatus GradientFill() const {
        if (!Fits(36)) return kSize;
        const uint64_t vertices = U32(24);
        const uint64_t elements = U32(28);
        const uint32_t mode = U32(32);
        if (mode > 2) return kContent;
        const uint64_t elementBytes = mode == 2 ? 12 : 8;
        const uint64_t meshAt = 36 + vertices * 16;
        if (!Fits(meshAt + elements * elementBytes)) return kContent;
        for (uint64_t i = 0; i < elements * (elementBytes / 4); ++i)
            if (U32(static_cast<uint32_t>(meshAt + i * 4)) >= vertices) return kContent;
        return kOk;
    }

    const View& v_;
    uint64_t at_;
    uint64_t size_;
    uint32_t handles_;
};

int64_t Magnitude(int64_t value) {
    return value < 0 ? -value : value;
}

// The player scales the drawing by the header: its frame (hundredths of a
// millimetre) over its reference device (pixels and millimetres) gives the
// drawing's size in pixels, which is mapped onto the target.
bool PlausibleScale(const View& v) {
    const int64_t deviceX = v.I32(72), deviceY = v.I32(76);
    const int64_t millimetresX = v.I32(80), millimetresY = v.I32(84);
    for (int64_t size : {deviceX, deviceY, millimetresX, millimetresY})
        if (size < 1 || size > kMaxReferenceSize) return false;
    if (deviceX * kMinPixelsPerMillimetreFraction < millimetresX ||
        deviceY * kMinPixelsPerMillimetreFraction < millimetresY)
        return false;
    if (deviceX > millimetresX * kMaxPixelsPerMillimetre || deviceY > millimetresY * kMaxPixelsPerMillimetre)
        return false;

    // A frame of no width or height is not used for scaling at all.
    const int64_t frameWidth = Magnitude(static_cast<int64_t>(v.I32(32)) - v.I32(24));
    const int64_t frameHeight = Magnitude(static_cast<int64_t>(v.I32(36)) - v.I32(28));
    if (frameWidth == 0 || frameHeight == 0) return true;
    // At least a sixteenth of a pixel, so that nothing is blown up by more
    // than the target's size sixteen times over.
    if (frameWidth * deviceX * 16 < 100 * millimetresX || frameHeight * deviceY * 16 < 100 * millimetresY)
        return false;
    // Bounds (pixels, inclusive) of an empty drawing are right < left.
    const int64_t boundsWidth = static_cast<int64_t>(v.I32(16)) - v.I32(8) + 1;
    const int64_t boundsHeight = static_cast<int64_t>(v.I32(20)) - v.I32(12) + 1;
    if (boundsWidth <= 0 || boundsHeight <= 0) return true;
    return boundsWidth * 100 * millimetresX <= kMaxBoundsToFrame * frameWidth * deviceX &&
           boundsHeight * 100 * millimetresY <= kMaxBoundsToFrame * frameHeight * deviceY;
}

MetafileCheckResult CheckEmf(const View& v) {
    const MetafileKind kind = MetafileKind::kEnhanced;
    if (!v.Has(0, kEmfHeaderMinimum) || v.U32(0) != kEmrHeader || v.U32(40) != kEmfSignature)
        return Result(MetafileCheckStatus::kBadHeader, kind);
    const uint32_t headerSize = v.U32(4);
    const uint32_t bytes = v.U32(48);
    const uint32_t records = v.U32(52);
    const uint32_t handles = v.U16(56);
    if (headerSize < kEmfHeaderMinimum || headerSize % 4 != 0 || bytes % 4 != 0 || headerSize > bytes ||
        bytes > v.Size() || handles < 1)
        return Result(MetafileCheckStatus::kBadHeader, kind, 0, 0, kEmrHeader);
    const uint64_t descriptionChars = v.U32(60);
    const uint64_t descriptionAt = v.U32(64);
    if (descriptionChars != 0 &&
        (descriptionAt < kEmfHeaderMinimum || descriptionAt + descriptionChars * 2 > headerSize))
        return Result(MetafileCheckStatus::kBadHeader, kind, 0, 0, kEmrHeader);
    if (!PlausibleScale(v)) return Result(MetafileCheckStatus::kBadHeader, kind, 0, 0, kEmrHeader);
    if (headerSize >= 100) {
        const uint64_t pixelFormatBytes = v.U32(88);
        const uint64_t pixelFormatAt = v.U32(92);
        if (pixelFormatBytes != 0 &&
            (pixelFormatAt < kEmfHeaderMinimum || pixelFormatAt + pixelFormatBytes > headerSize))
            return Result(MetafileCheckStatus::kBadHeader, kind, 0, 0, kEmrHeader);
    }

    size_t count = 1;
    uint64_t at = headerSize;
    while (at < bytes) {
        const uint32_t type = v.U32(at);
        if (bytes - at < 8) return Result(MetafileCheckStatus::kBadRecordSize, kind, count, at, type);
        const uint32_t size = v.U32(at + 4);
        if (size < 8 || size % 4 != 0 || size > bytes - at)
            return Result(MetafileCheckStatus::kBadRecordSize, kind, count, at, type);
        ++count;
        if (type == kEmrEof) {
            if (size < 20) return Result(MetafileCheckStatus::kBadRecordSize, kind, count, at, type);
            const uint64_t paletteEntries = v.U32(at + 8);
            const uint64_t paletteAt = v.U32(at + 12);
            if (paletteEntries != 0 && (paletteAt < 16 || paletteAt + paletteEntries * 4 > size))
                return Result(MetafileCheckStatus::kBadRecordContent, kind, count, at, type);
            if (at + size != bytes)
                return Result(MetafileCheckStatus::kMissingEndRecord, kind, count, at, type);
            if (count != records)
                return Result(MetafileCheckStatus::kRecordCountMismatch, kind, count, at, type);
            return Result(MetafileCheckStatus::kAccepted, kind, count);
        }
        if (type == kEmrHeader) return Result(MetafileCheckStatus::kBadRecordContent, kind, count, at, type);
        const MetafileCheckStatus status = EmfRecordCheck(v, at, size, handles).Check(type);
        if (status != MetafileCheckStatus::kAccepted) return Result(status, kind, count, at, type);
        at += size;
    }
    return Result(MetafileCheckStatus::kMissingEndRecord, kind, count, at);
}

// ---- Windows metafiles -------------------------------------------------------

enum WmfFunction : uint32_t {
    kMetaEof = 0x0000,
    kMetaSaveDc = 0x001E,
    kMetaRealizePalette = 0x0035,
    kMetaSetPalEntries = 0x0037,
    kMetaCreatePalette = 0x00F7,
    kMetaSetBkMode = 0x0102,
    kMetaSetMapMode = 0x0103,
    kMetaSetRop2 = 0x0104,
    kMetaSetRelAbs = 0x0105,
    kMetaSetPolyFillMode = 0x0106,
    kMetaSetStretchBltMode = 0x0107,
    kMetaSetTextCharExtra = 0x0108,
    kMetaRestoreDc = 0x0127,
    kMetaInvertRegion = 0x012A,
    kMetaPaintRegion = 0x012B,
    kMetaSelectClipRegion = 0x012C,
    kMetaSelectObject = 0x012D,
    kMetaSetTextAlign = 0x012E,
    kMetaResizePalette = 0x0139,
    kMetaDibCreatePatternBrush = 0x0142,
    kMetaSetLayout = 0x0149,
    kMetaDeleteObject = 0x01F0,
    kMetaSetBkColor = 0x0201,
    kMetaSetTextColor = 0x0209,
    kMetaSetTextJustification = 0x020A,
    kMetaSetWindowOrg = 0x020B,
    kMetaSetWindowExt = 0x020C,
    kMetaSetViewportOrg = 0x020D,
    kMetaSetViewportExt = 0x020E,
    kMetaOffsetWindowOrg = 0x020F,
    kMetaOffsetViewportOrg = 0x0211,
    kMetaLineTo = 0x0213,
    kMetaMoveTo = 0x0214,
    kMetaOffsetClipRgn = 0x0220,
    kMetaFillRegion = 0x0228,
    kMetaSetMapperFlags = 0x0231,
    kMetaSelectPalette = 0x0234,
    kMetaCreatePenIndirect = 0x02FA,
    kMetaCreateFontIndirect = 0x02FB,
    kMetaCreateBrushIndirect = 0x02FC,
    kMetaPolygon = 0x0324,
    kMetaPolyline = 0x0325,
    kMetaScaleWindowExt = 0x0410,
    kMetaScaleViewportExt = 0x0412,
    kMetaExcludeClipRect = 0x0415,
    kMetaIntersectClipRect = 0x0416,
    kMetaEllipse = 0x0418,
    kMetaFloodFill = 0x0419,
    kMetaRectangle = 0x041B,
    kMetaSetPixel = 0x041F,
    kMetaFrameRegion = 0x0429,
    kMetaAnimatePalette = 0x0436,
    kMetaTextOut = 0x0521,
    kMetaPolyPolygon = 0x0538,
    kMetaExtFloodFill = 0x0548,
    kMetaRoundRect = 0x061C,
    kMetaPatBlt = 0x061D,
    kMetaEscape = 0x0626,
    kMetaCreateRegion = 0x06FF,
    kMetaArc = 0x0817,
    kMetaPie = 0x081A,
    kMetaChord = 0x0830,
    kMetaDibBitBlt = 0x0940,
    kMetaExtTextOut = 0x0A32,
    kMetaDibStretchBlt = 0x0B41,
    kMetaSetDibToDev = 0x0D33,
    kMetaStretchDib = 0x0F43,
};

constexpr uint64_t kWmfHeaderBytes = 18;
constexpr uint32_t kWmfRecordHeaderWords = 3;
// CreateFontIndirect reads a whole 32-byte face name, however short the
// record's own is.
constexpr uint64_t kFaceNameBytes = 32;

class WmfRecordCheck {
public:
    WmfRecordCheck(const View& v, uint64_t at, uint64_t words, uint32_t objects)
        : v_(v), at_(at), words_(words), objects_(objects) {}

    MetafileCheckStatus Check(uint32_t function) const {
        switch (function) {
            case kMetaSaveDc:
            case kMetaRealizePalette: return Params(0);
            case kMetaSetBkMode:
            case kMetaSetMapMode:
            case kMetaSetRop2:
            case kMetaSetRelAbs:
            case kMetaSetPolyFillMode:
            case kMetaSetStretchBltMode:
            case kMetaSetTextCharExtra:
            case kMetaRestoreDc:
            case kMetaSetTextAlign:
            case kMetaResizePalette: return Params(1);
            case kMetaSetLayout:
            case kMetaSetBkColor:
            case kMetaSetTextColor:
            case kMetaSetTextJustification:
            case kMetaSetWindowOrg:
            case kMetaSetWindowExt:
            case kMetaSetViewportOrg:
            case kMetaSetViewportExt:
            case kMetaOffsetWindowOrg:
            case kMetaOffsetViewportOrg:
            case kMetaLineTo:
            case kMetaMoveTo:
            case kMetaOffsetClipRgn:
            case kMetaSetMapperFlags: return Params(2);
            case kMetaScaleWindowExt:
            case kMetaScaleViewportExt: return ScaleFactors();
            case kMetaExcludeClipRect:
            case kMetaIntersectClipRect:
            case kMetaEllipse:
            case kMetaFloodFill:
            case kMetaRectangle:
            case kMetaSetPixel: return Params(4);
            case kMetaExtFloodFill:
            case kMetaCreatePenIndirect: return Params(5);
            case kMetaRoundRect:
            case kMetaPatBlt: return Params(6);
            case kMetaArc:
            case kMetaPie:
            case kMetaChord: return Params(8);

            case kMetaSelectObject:
            case kMetaDeleteObject:
            case kMetaInvertRegion:
            case kMetaPaintRegion: return Objects(1, {0});
            case kMetaSelectClipRegion: return SelectClipRegion();
            case kMetaFillRegion: return Objects(2, {0, 1});
            case kMetaFrameRegion: return Objects(4, {2, 3});
            case kMetaSelectPalette: return SelectPalette();

            case kMetaCreateBrushIndirect: return CreateBrush();
            case kMetaCreateFontIndirect: return CreateFont();
            case kMetaCreatePalette:
            case kMetaSetPalEntries:
            case kMetaAnimatePalette: return PaletteEntries();
            case kMetaCreateRegion: return CreateRegion();

            case kMetaPolygon:
            case kMetaPolyline: return Points();
            case kMetaPolyPolygon: return PolyPolygon();
            case kMetaTextOut: return TextOut();
            case kMetaExtTextOut: return ExtTextOut();

            case kMetaDibCreatePatternBrush: return Dib(2, Param(1));
            case kMetaDibBitBlt:
                // Without a source it is a pattern fill of nine parameters.
                if (words_ == kWmfRecordHeaderWords + 9) return kOk;
                return Dib(8, 0);
            case kMetaDibStretchBlt: return Dib(10, 0);
            case kMetaStretchDib: return Dib(11, Param(2));
            case kMetaSetDibToDev: return Dib(9, Param(0));

            case kMetaEscape: return MetafileCheckStatus::kEscapeRecord;
            default: return MetafileCheckStatus::kUnsupportedRecord;
        }
    }

private:
    static constexpr MetafileCheckStatus kOk = MetafileCheckStatus::kAccepted;
    static constexpr MetafileCheckStatus kContent = MetafileCheckStatus::kBadRecordContent;
    static constexpr MetafileCheckStatus kSize = MetafileCheckStatus::kBadRecordSize;

    uint64_t ParamCount() const { return words_ - kWmfRecordHeaderWords; }
    uint64_t ParamAt(uint64_t index) const { return at_ + (kWmfRecordHeaderWords + index) * 2; }
    uint32_t Param(uint64_t index) const { return index < ParamCount() ? v_.U16(ParamAt(index)) : 0; }

    MetafileCheckStatus Params(uint64_t minimum) const { return ParamCount() >= minimum ? kOk : kSize; }

    // yDenom, yNum, xDenom, xNum.
    MetafileCheckStatus ScaleFactors() const {
        if (ParamCount() < 4) return kSize;
        for (uint64_t i = 0; i < 4; ++i) {
            const int32_t factor = v_.I16(ParamAt(i));
            if (factor > kMaxScaleFactor || factor < -kMaxScaleFactor) return kContent;
        }
        return kOk;
    }

    MetafileCheckStatus Objects(uint64_t minimum, std::initializer_list<uint64_t> indices) const {
        if (ParamCount() < minimum) return kSize;
        for (uint64_t index : indices)
            if (Param(index) >= objects_) return kContent;
        return kOk;
    }

    MetafileCheckStatus SelectClipRegion() const {
        if (ParamCount() < 1) return kSize;
        // 0 selects no region at all.
        return Param(0) == 0 || Param(0) < objects_ ? kOk : kContent;
    }

    // Players disagree on which word is the palette's index: the first
    // parameter, or the word after it, which in a record of one parameter is
    // the first word of the next record. Both must be an index. The word
    // after is always inside the data, since the end record follows.
    MetafileCheckStatus SelectPalette() const {
        if (ParamCount() < 1) return kSize;
        return Param(0) < objects_ && v_.U16(ParamAt(1)) < objects_ ? kOk : kContent;
    }

    MetafileCheckStatus CreateBrush() const {
        if (ParamCount() < 4) return kSize;
        return PlainBrushStyle(Param(0), Param(3)) ? kOk : kContent;
    }

    MetafileCheckStatus CreateFont() const {
        if (ParamCount() < 9) return kSize;
        return v_.Has(ParamAt(9), kFaceNameBytes) ? kOk : kContent;
    }

    // A start or version word, a count, and four bytes for each entry.
    MetafileCheckStatus PaletteEntries() const {
        if (ParamCount() < 2) return kSize;
        return ParamCount() >= 2 + static_cast<uint64_t>(Param(1)) * 2 ? kOk : kContent;
    }

    MetafileCheckStatus Points() const {
        if (ParamCount() < 1) return kSize;
        return ParamCount() >= 1 + static_cast<uint64_t>(Param(0)) * 2 ? kOk : kContent;
    }

    // Counts are taken as signed by players; a negative one is refused.
    MetafileCheckStatus PolyPolygon() const {
        if (ParamCount() < 1) return kSize;
        const uint64_t polygons = Param(0);
        if (ParamCount() < 1 + polygons) return kContent;
        uint64_t points = 0;
        for (uint64_t i = 0; i < polygons; ++i) {
            const uint32_t count = Param(1 + i);
            if (count > 0x7FFF) return kContent;
            points += count;
        }
        return ParamCount() >= 1 + polygons + points * 2 ? kOk : kContent;
    }

    MetafileCheckStatus TextOut() const {
        if (ParamCount() < 1) return kSize;
        const uint64_t length = Param(0);
        if (length > 0x7FFF) return kContent;
        return ParamCount() >= 1 + (length + 1) / 2 + 2 ? kOk : kContent;
    }

    MetafileCheckStatus ExtTextOut() const {
        if (ParamCount() < 4) return kSize;
        const uint64_t length = Param(2);
        const bool hasRectangle = (Param(3) & 0x0006) != 0;  // ETO_OPAQUE, ETO_CLIPPED
        return ParamCount() >= 4 + (hasRectangle ? 4 : 0) + (length + 1) / 2 ? kOk : kContent;
    }

    // Bands of: count, top, bottom, count x-coordinates, count again.
    MetafileCheckStatus CreateRegion() const {
        if (ParamCount() < 11) return kSize;
        const uint64_t bands = Param(5);
        uint64_t start = kWmfRecordHeaderWords + 11;
        for (uint64_t band = 0; band < bands; ++band) {
            if (start >= words_) return kContent;
            const uint64_t count = v_.U16(at_ + start * 2);
            if (count % 2 != 0) return kContent;
            const uint64_t end = start + count + 3;
            if (end >= words_ || v_.U16(at_ + end * 2) != count) return kContent;
            start = end + 1;
        }
        return kOk;
    }

    // A bitmap from parameter `first` on, its bits right behind its colour
    // table and within the record.
    MetafileCheckStatus Dib(uint64_t first, uint32_t usage) const {
        if (ParamCount() < first + 2) return kSize;
        ColorTable table;
        if (!ColorTableOfUsage(usage, false, &table)) return kContent;
        const uint64_t available = (ParamCount() - first) * 2;
        DibLayout layout;
        if (!ParseDib(v_, ParamAt(first), available, table, &layout)) return kContent;
        return layout.infoBytes + layout.bitsBytes <= available ? kOk : kContent;
    }

    const View& v_;
    uint64_t at_;
    uint64_t words_;
    uint32_t objects_;
};

MetafileCheckResult CheckWmf(const View& v, uint64_t start, MetafileKind kind) {
    if (!v.Has(start, kWmfHeaderBytes)) return Result(MetafileCheckStatus::kBadHeader, kind, 0, start);
    const uint32_t type = v.U16(start);
    const uint32_t headerWords = v.U16(start + 2);
    const uint32_t version = v.U16(start + 4);
    const uint64_t sizeWords = v.U32(start + 6);
    const uint32_t objects = v.U16(start + 10);
    const uint64_t maxRecordWords = v.U32(start + 12);
    // A disk-type header names a file to play instead; that is never followed.
    if (type != 1 || headerWords != kWmfHeaderBytes / 2 || (version != 0x0100 && version != 0x0300))
        return Result(MetafileCheckStatus::kBadHeader, kind, 0, start);
    if (sizeWords * 2 < kWmfHeaderBytes + kWmfRecordHeaderWords * 2 || !v.Has(start, sizeWords * 2) ||
        maxRecordWords < kWmfRecordHeaderWords)
        return Result(MetafileCheckStatus::kBadHeader, kind, 0, start);

    const uint64_t end = start + sizeWords * 2;
    size_t count = 0;
    uint64_t at = start + kWmfHeaderBytes;
    while (at < end) {
        const uint32_t function = v.U16(at + 4);
        if (end - at < kWmfRecordHeaderWords * 2)
            return Result(MetafileCheckStatus::kBadRecordSize, kind, count, at, function);
        const uint64_t words = v.U32(at);
        if (words < kWmfRecordHeaderWords || words > (end - at) / 2 || words > maxRecordWords)
            return Result(MetafileCheckStatus::kBadRecordSize, kind, count, at, function);
        ++count;
        if (function == kMetaEof) {
            if (words != kWmfRecordHeaderWords)
                return Result(MetafileCheckStatus::kBadRecordSize, kind, count, at, function);
            if (at + words * 2 != end)
                return Result(MetafileCheckStatus::kMissingEndRecord, kind, count, at, function);
            return Result(MetafileCheckStatus::kAccepted, kind, count);
        }
        const MetafileCheckStatus status = WmfRecordCheck(v, at, words, objects).Check(function);
        if (status != MetafileCheckStatus::kAccepted) return Result(status, kind, count, at, function);
        at += words * 2;
    }
    return Result(MetafileCheckStatus::kMissingEndRecord, kind, count, at);
}

}  // namespace

MetafileCheckResult CheckEnhancedMetafile(const uint8_t* data, size_t size) {
    return CheckEmf(View(data, size));
}

MetafileCheckResult CheckWindowsMetafile(const uint8_t* data, size_t size) {
    return CheckWmf(View(data, size), 0, MetafileKind::kWindows);
}

MetafileCheckResult CheckPlaceableMetafile(const uint8_t* data, size_t size) {
    const View v(data, size);
    const MetafileKind kind = MetafileKind::kPlaceable;
    if (!v.Has(0, kPlaceableHeaderBytes) || v.U32(0) != kPlaceableMetafileKey)
        return Result(MetafileCheckStatus::kBadHeader, kind);
    uint32_t checksum = 0;
    for (uint64_t word = 0; word < 10; ++word) checksum ^= v.U16(word * 2);
    if (checksum != v.U16(20)) return Result(MetafileCheckStatus::kBadChecksum, kind);
    return CheckWmf(v, kPlaceableHeaderBytes, kind);
}

MetafileCheckResult CheckMetafile(const uint8_t* data, size_t size) {
    const View v(data, size);
    if (v.Has(0, 44) && v.U32(0) == kEmrHeader && v.U32(40) == kEmfSignature)
        return CheckEnhancedMetafile(data, size);
    if (v.Has(0, 4) && v.U32(0) == kPlaceableMetafileKey) return CheckPlaceableMetafile(data, size);
    if (v.Has(0, 4) && (v.U16(0) == 1 || v.U16(0) == 2) && v.U16(2) == kWmfHeaderBytes / 2)
        return CheckWindowsMetafile(data, size);
    return Result(MetafileCheckStatus::kUnknownFormat, MetafileKind::kUnknown);
}

const char* DescribeMetafileCheckStatus(MetafileCheckStatus status) {
    switch (status) {
        case MetafileCheckStatus::kAccepted: return "accepted";
        case MetafileCheckStatus::kUnknownFormat: return "unknown format";
        case MetafileCheckStatus::kBadHeader: return "bad header";
        case MetafileCheckStatus::kBadChecksum: return "bad checksum";
        case MetafileCheckStatus::kBadRecordSize: return "bad record size";
        case MetafileCheckStatus::kBadRecordContent: return "bad record content";
        case MetafileCheckStatus::kEscapeRecord: return "escape record";
        case MetafileCheckStatus::kUnsupportedRecord: return "unsupported record";
        case MetafileCheckStatus::kMissingEndRecord: return "missing end record";
        case MetafileCheckStatus::kRecordCountMismatch: return "record count mismatch";
    }
    return "?";
}

}  // namespace thumbnails
