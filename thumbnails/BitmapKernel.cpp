#include "thumbnails/BitmapKernel.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "thumbnails/Resampler.h"

namespace imaging {

// ---- Colour match tables ---------------------------------------------------

struct ColorMatchTable {
    static constexpr uint16_t kUnfilled = 0xFFFF;

    std::vector<RgbQuad> colors;
    std::vector<uint16_t> cube;                   // 32x32x32 cells, index or kUnfilled
    std::unordered_map<uint32_t, uint8_t> exact;  // the table's own colours

    static uint32_t Key(uint32_t red, uint32_t green, uint32_t blue) { return red << 16 | green << 8 | blue; }

    uint8_t Nearest(int red, int green, int blue) const {
        uint32_t best = 0;
        int64_t bestDistance = INT64_MAX;
        for (size_t i = 0; i < colors.size(); ++i) {
            const int64_t dr = colors[i].red - red;
            const int64_t dg = colors[i].green - green;
            const int64_t db = colors[i].blue - blue;
            const int64_t distance = dr * dr + dg * dg + db * db;
            if (distance < bestDistance) {
                bestDistance = distance;
                best = static_cast<uint32_t>(i);
            }
        }
        return static_cast<uint8_t>(best);
    }

    uint8_t Match(uint8_t red, uint8_t green, uint8_t blue) {
        const auto found = exact.find(Key(red, green, blue));
        if (found != exact.end()) return found->second;
        const size_t cell =
            static_cast<size_t>(red >> 3) << 10 | static_cast<size_t>(green >> 3) << 5 | (blue >> 3);
        if (cube[cell] == kUnfilled) {
            // The centre of the cell stands for all the colours in it.
            cube[cell] = Nearest((red & 0xF8) | 4, (green & 0xF8) | 4, (blue & 0xF8) | 4);
        }
        return static_cast<uint8_t>(cube[cell]);
    }

    bool SameColors(const RgbQuad* other, int32_t count) const {
        if (static_cast<size_t>(count) != colors.size()) return false;
        for (int32_t i = 0; i < count; ++i) {
            if (colors[i].red != other[i].red || colors[i].green != other[i].green ||
                colors[i].blue != other[i].blue)
                return false;
        }
        return true;
    }
};

namespace {

bool ValidDepth(int32_t bits) {
    return bits == 1 || bits == 4 || bits == 8 || bits == 24 || bits == 32;
}
bool ValidOrder(int32_t order) {
    return order == kColorOrderRgb || order == kColorOrderBgr;
}
int32_t PaletteSize(int32_t bits) {
    return bits <= 8 ? 1 << bits : 0;
}
bool IsGrey(const RgbQuad& c) {
    return c.red == c.green && c.green == c.blue;
}

// ---- Register of storage handed out ------------------------------------------
// Lets every operation refuse a stale descriptor copy instead of reading freed
// memory, and FreeBitmap refuse to free twice.

struct StorageRecord {
    size_t rowBytes;
    RgbQuad* palette;
};

struct StorageRegister {
    std::mutex lock;
    std::unordered_map<const void*, StorageRecord> records;
    std::unordered_set<const ColorMatchTable*> tables;
    ColorMatchTable* currentTable = nullptr;
};

StorageRegister& Register() {
    static StorageRegister instance;
    return instance;
}

std::atomic<kernel::StorageObserver> g_storageObserver{nullptr};

void GiveBackStorage(void* storage) {
    {
        StorageRegister& reg = Register();
        std::lock_guard<std::mutex> hold(reg.lock);
        if (reg.records.erase(storage) == 0) return;
    }
    if (kernel::StorageObserver observer = g_storageObserver.load()) observer(storage);
    std::free(storage);
}

// ---- Pixel access ---------------------------------------------------------------

uint32_t IndexAt(const uint8_t* row, int32_t x, int32_t bits) {
    switch (bits) {
        case 1: return (row[x >> 3] >> (7 - (x & 7))) & 1u;
        case 4: return (x & 1) != 0 ? row[x >> 1] & 0x0Fu : row[x >> 1] >> 4;
        default: return row[x];
    }
}

void SetIndex(uint8_t* row, int32_t x, int32_t bits, uint32_t index) {
    switch (bits) {
        case 1: {
            const uint8_t mask = static_cast<uint8_t>(0x80u >> (x & 7));
            row[x >> 3] = static_cast<uint8_t>(index != 0 ? row[x >> 3] | mask : row[x >> 3] & ~mask);
            break;
        }
        case 4: {
            uint8_t& byte = row[x >> 1];
            byte = (x & 1) != 0 ? static_cast<uint8_t>((byte & 0xF0) | (index & 0x0F))
                                : static_cast<uint8_t>((byte & 0x0F) | ((index & 0x0F) << 4));
            break;
        }
        default: row[x] = static_cast<uint8_t>(index); break;
    }
}

// A buffer for one row of `width` pixels as blue, green, red, alpha; false
// when the memory is not there.
bool MakeBgraRow(std::vector<uint8_t>& row, int32_t width) {
    try {
        row.resize(4 * static_cast<size_t>(width));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// Pixels x0 .. x0+count-1 of row y as blue, green, red, alpha.
void ReadRowBgra(const BitmapDescriptor& bitmap, int32_t y, int32_t x0, int32_t count, uint8_t* out) {
    const uint8_t* row = kernel::Row(bitmap, y);
    const bool rgb = bitmap.colorOrder == kColorOrderRgb;
    switch (bitmap.bitsPerPixel) {
        case 24:
        case 32: {
            const int step = bitmap.bitsPerPixel / 8;
            const uint8_t* p = row + static_cast<size_t>(x0) * step;
            for (int32_t i = 0; i < count; ++i, p += step, out += 4) {
                out[0] = rgb ? p[2] : p[0];
                out[1] = p[1];
                out[2] = rgb ? p[0] : p[2];
                out[3] = step == 4 ? p[3] : 255;
            }
            break;
        }
        default:
            for (int32_t i = 0; i < count; ++i, out += 4) {
                const RgbQuad& c = bitmap.palette[IndexAt(row, x0 + i, bitmap.bitsPerPixel)];
                out[0] = c.blue;
                out[1] = c.green;
                out[2] = c.red;
                out[3] = 255;
            }
            break;
    }
}

void WriteRowTrueColor(const uint8_t* bgra, int32_t count, BitmapDescriptor* bitmap, int32_t y) {
    uint8_t* p = kernel::Row(*bitmap, y);
    const int step = bitmap->bitsPerPixel / 8;
    const bool rgb = bitmap->colorOrder == kColorOrderRgb;
    for (int32_t i = 0; i < count; ++i, p += step, bgra += 4) {
        p[0] = rgb ? bgra[2] : bgra[0];
        p[1] = bgra[1];
        p[2] = rgb ? bgra[0] : bgra[2];
        if (step == 4) p[3] = bgra[3];
    }
}

bool AllPixelsGrey(const BitmapDescriptor& bitmap, std::vector<uint8_t>& rowBuffer) {
    for (int32_t y = 0; y < bitmap.height; ++y) {
        ReadRowBgra(bitmap, y, 0, bitmap.width, rowBuffer.data());
        for (int32_t x = 0; x < bitmap.width; ++x) {
            const uint8_t* p = rowBuffer.data() + 4 * static_cast<size_t>(x);
            if (p[0] != p[1] || p[1] != p[2]) return false;
        }
    }
    return true;
}

bool PaletteIsGrey(const BitmapDescriptor& bitmap) {
    const int32_t count = bitmap.colorCount > 0 ? bitmap.colorCount : PaletteSize(bitmap.bitsPerPixel);
    for (int32_t i = 0; i < count; ++i) {
        if (!IsGrey(bitmap.palette[i])) return false;
    }
    return true;
}

void FillGreyRamp(RgbQuad* palette, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        const uint8_t level = static_cast<uint8_t>(count > 1 ? (i * 255 + (count - 1) / 2) / (count - 1) : 0);
        palette[i] = RgbQuad{level, level, level, 0};
    }
}

// ---- Palettes for fewer colours ------------------------------------------------------

// Median cut over a 5-bit-per-channel histogram: the box with the most
// pixels (among those that can still be split) is cut at the median of its
// longest side, until there are `wanted` boxes; each becomes the mean colour
// of its pixels.
class MedianCut {
public:
    bool Init() {
        try {
            count_.assign(kCells, 0);
            sum_.assign(3 * kCells, 0);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    void Add(const uint8_t* bgra) {
        const size_t cell = CellOf(bgra[2] >> 3, bgra[1] >> 3, bgra[0] >> 3);
        ++count_[cell];
        sum_[3 * cell] += bgra[2];
        sum_[3 * cell + 1] += bgra[1];
        sum_[3 * cell + 2] += bgra[0];
    }

    std::vector<RgbQuad> Palette(size_t wanted) {
        std::vector<Box> boxes;
        Box all{{0, 0, 0}, {31, 31, 31}, 0};
        Shrink(&all);
        if (all.pixels == 0) return {};
        boxes.push_back(all);
        while (boxes.size() < wanted) {
            size_t chosen = boxes.size();
            for (size_t i = 0; i < boxes.size(); ++i) {
                if (!Splittable(boxes[i])) continue;
                if (chosen == boxes.size() || boxes[i].pixels > boxes[chosen].pixels) chosen = i;
            }
            if (chosen == boxes.size()) break;
            Box second;
            Split(&boxes[chosen], &second);
            boxes.push_back(second);
        }
        std::vector<RgbQuad> palette;
        for (const Box& box : boxes) palette.push_back(Mean(box));
        return palette;
    }

private:
    static constexpr size_t kCells = 32 * 32 * 32;
    struct Box {
        int low[3];  // red, green, blue cell coordinates, inclusive
        int high[3];
        uint64_t pixels;
    };

    static size_t CellOf(int r, int g, int b) {
        return static_cast<size_t>(r) << 10 | static_cast<size_t>(g) << 5 | b;
    }

    template <class Visit>
    void ForEachCell(const Box& box, Visit visit) const {
        for (int r = box.low[0]; r <= box.high[0]; ++r)
            for (int g = box.low[1]; g <= box.high[1]; ++g)
                for (int b = box.low[2]; b <= box.high[2]; ++b) visit(r, g, b, CellOf(r, g, b));
    }

    // Tightens a box to the cells that hold pixels, and counts them.
    void Shrink(Box* box) const {
        int low[3] = {31, 31, 31};
        int high[3] = {0, 0, 0};
        uint64_t pixels = 0;
        ForEachCell(*box, [&](int r, int g, int b, size_t cell) {
            if (count_[cell] == 0) return;
            const int c[3] = {r, g, b};
            for (int i = 0; i < 3; ++i) {
                low[i] = std::min(low[i], c[i]);
                high[i] = std::max(high[i], c[i]);
            }
            pixels += count_[cell];
        });
        if (pixels == 0) {
            box->pixels = 0;
            return;
        }
        std::copy(low, low + 3, box->low);
        std::copy(high, high + 3, box->high);
        box->pixels = pixels;
    }

    static bool Splittable(const Box& box) {
        return box.high[0] > box.low[0] || box.high[1] > box.low[1] || box.high[2] > box.low[2];
    }

    void Split(Box* box, Box* second) const {
        int axis = 0;
        for (int i = 1; i < 3; ++i) {
            if (box->high[i] - box->low[i] > box->high[axis] - box->low[axis]) axis = i;
        }
        // Pixels per plane along the axis; cut where half of them lie below.
        uint64_t plane[32] = {};
        ForEachCell(*box, [&](int r, int g, int b, size_t cell) {
            const int c[3] = {r, g, b};
            plane[c[axis]] += count_[cell];
        });
        uint64_t below = 0;
        int cut = box->low[axis];
        for (int v = box->low[axis]; v < box->high[axis]; ++v) {
            below += plane[v];
            cut = v;
            if (below * 2 >= box->pixels) break;
        }
        *second = *box;
        box->high[axis] = cut;
        second->low[axis] = cut + 1;
        Shrink(box);
        Shrink(second);
    }

    RgbQuad Mean(const Box& box) const {
        uint64_t sum[3] = {};
        uint64_t pixels = 0;
        ForEachCell(box, [&](int, int, int, size_t cell) {
            pixels += count_[cell];
            for (int i = 0; i < 3; ++i) sum[i] += sum_[3 * cell + i];
        });
        if (pixels == 0) return RgbQuad{0, 0, 0, 0};
        auto mean = [&](int i) { return static_cast<uint8_t>((sum[i] + pixels / 2) / pixels); };
        return RgbQuad{mean(2), mean(1), mean(0), 0};
    }

    std::vector<uint32_t> count_;
    std::vector<uint64_t> sum_;
};

// Builds the palette for a conversion to `bits` from pixels of any kind.
// Fills `grey` when the result is a grey ramp that maps by level directly.
int ChoosePalette(const BitmapDescriptor& source, int32_t bits, std::vector<RgbQuad>* palette, bool* grey) {
    const size_t wanted = static_cast<size_t>(PaletteSize(bits));
    std::vector<uint8_t> row;
    try {
        row.resize(4 * static_cast<size_t>(source.width));
        // The picture's own colours, when there are few enough of them.
        std::unordered_set<uint32_t> seen;
        bool fits = true;
        for (int32_t y = 0; y < source.height && fits; ++y) {
            ReadRowBgra(source, y, 0, source.width, row.data());
            for (int32_t x = 0; x < source.width; ++x) {
                const uint8_t* p = row.data() + 4 * static_cast<size_t>(x);
                seen.insert(ColorMatchTable::Key(p[2], p[1], p[0]));
                if (seen.size() > wanted) {
                    fits = false;
                    break;
                }
            }
        }
        *grey = false;
        if (fits) {
            std::vector<uint32_t> colors(seen.begin(), seen.end());
            std::sort(colors.begin(), colors.end());
            palette->clear();
            for (uint32_t c : colors)
                palette->push_back(RgbQuad{static_cast<uint8_t>(c), static_cast<uint8_t>(c >> 8),
                                           static_cast<uint8_t>(c >> 16), 0});
            return kSuccess;
        }
        if (AllPixelsGrey(source, row)) {
            palette->assign(wanted, RgbQuad{0, 0, 0, 0});
            FillGreyRamp(palette->data(), static_cast<int32_t>(wanted));
            *grey = true;
            return kSuccess;
        }
        MedianCut cut;
        if (!cut.Init()) return kErrorNoMemory;
        for (int32_t y = 0; y < source.height; ++y) {
            ReadRowBgra(source, y, 0, source.width, row.data());
            for (int32_t x = 0; x < source.width; ++x) cut.Add(row.data() + 4 * static_cast<size_t>(x));
        }
        *palette = cut.Palette(wanted);
        return palette->empty() ? kErrorInvalidBitmap : kSuccess;
    } catch (const std::bad_alloc&) {
        return kErrorNoMemory;
    }
}

bool MakeTable(const RgbQuad* colors, int32_t count, ColorMatchTable* table) {
    try {
        table->colors.assign(colors, colors + count);
        for (RgbQuad& c : table->colors) c.reserved = 0;
        table->cube.assign(32 * 32 * 32, ColorMatchTable::kUnfilled);
        // The first of equal entries wins, as in the nearest search.
        for (int32_t i = count - 1; i >= 0; --i)
            table->exact[ColorMatchTable::Key(colors[i].red, colors[i].green, colors[i].blue)] =
                static_cast<uint8_t>(i);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// Writes `source` into `target` (already allocated, palette set) through `table`.
int MapThroughTable(const BitmapDescriptor& source, ColorMatchTable* table, BitmapDescriptor* target) {
    std::vector<uint8_t> row;
    if (!MakeBgraRow(row, source.width)) return kErrorNoMemory;
    for (int32_t y = 0; y < source.height; ++y) {
        ReadRowBgra(source, y, 0, source.width, row.data());
        uint8_t* out = kernel::Row(*target, y);
        for (int32_t x = 0; x < source.width; ++x) {
            const uint8_t* p = row.data() + 4 * static_cast<size_t>(x);
            SetIndex(out, x, target->bitsPerPixel, table->Match(p[2], p[1], p[0]));
        }
    }
    return kSuccess;
}

void CopyCommonFields(const BitmapDescriptor& source, BitmapDescriptor* target) {
    target->xResolution = source.xResolution;
    target->yResolution = source.yResolution;
}

int ConvertToPalette(const BitmapDescriptor& source, int32_t bits, BitmapDescriptor* target) {
    // Indices that already fit are repacked with the palette as it is.
    if (source.bitsPerPixel <= 8 && source.colorCount <= PaletteSize(bits)) {
        bool fits = true;
        if (source.bitsPerPixel > bits) {
            const uint32_t limit = static_cast<uint32_t>(PaletteSize(bits));
            for (int32_t y = 0; y < source.height && fits; ++y) {
                const uint8_t* row = kernel::Row(source, y);
                for (int32_t x = 0; x < source.width && fits; ++x)
                    fits = IndexAt(row, x, source.bitsPerPixel) < limit;
            }
        }
        if (fits) {
            const int result =
                kernel::AllocateBitmap(target, source.width, source.height, bits, kColorOrderBgr);
            if (result != kSuccess) return result;
            const int32_t entries = std::min(PaletteSize(bits), PaletteSize(source.bitsPerPixel));
            std::copy(source.palette, source.palette + entries, target->palette);
            target->colorCount = source.colorCount;
            for (int32_t y = 0; y < source.height; ++y) {
                const uint8_t* in = kernel::Row(source, y);
                uint8_t* out = kernel::Row(*target, y);
                for (int32_t x = 0; x < source.width; ++x)
                    SetIndex(out, x, bits, IndexAt(in, x, source.bitsPerPixel));
            }
            return kSuccess;
        }
    }

    std::vector<RgbQuad> palette;
    bool grey = false;
    int result = ChoosePalette(source, bits, &palette, &grey);
    if (result != kSuccess) return result;
    result = kernel::AllocateBitmap(target, source.width, source.height, bits, kColorOrderBgr);
    if (result != kSuccess) return result;
    std::copy(palette.begin(), palette.end(), target->palette);
    target->colorCount = static_cast<int32_t>(palette.size());

    if (grey) {
        // A full ramp: the level gives the index, more exactly than the cube.
        const uint32_t levels = static_cast<uint32_t>(palette.size());
        std::vector<uint8_t> row;
        if (!MakeBgraRow(row, source.width)) {
            FreeBitmap(target);
            return kErrorNoMemory;
        }
        for (int32_t y = 0; y < source.height; ++y) {
            ReadRowBgra(source, y, 0, source.width, row.data());
            uint8_t* out = kernel::Row(*target, y);
            for (int32_t x = 0; x < source.width; ++x)
                SetIndex(out, x, bits, (row[4 * static_cast<size_t>(x)] * (levels - 1) + 127) / 255);
        }
        return kSuccess;
    }

    ColorMatchTable table;
    if (!MakeTable(palette.data(), static_cast<int32_t>(palette.size()), &table)) {
        FreeBitmap(target);
        return kErrorNoMemory;
    }
    result = MapThroughTable(source, &table, target);
    if (result != kSuccess) FreeBitmap(target);
    return result;
}

// Pixels of a region as interleaved 8-bit channels for the resampler: grey
// levels (1 channel) or blue-green-red (3 channels).
int ExpandRegion(const BitmapDescriptor& source, int32_t x0, int32_t y0, int32_t width, int32_t height,
                 int channels, std::vector<uint8_t>* plane) {
    const uint64_t bytes = static_cast<uint64_t>(width) * static_cast<uint64_t>(height) * channels;
    if (bytes > kMaxStorageBytes) return kErrorTooLarge;
    std::vector<uint8_t> row;
    try {
        plane->resize(static_cast<size_t>(bytes));
        row.resize(4 * static_cast<size_t>(width));
    } catch (const std::bad_alloc&) {
        return kErrorNoMemory;
    }
    uint8_t* out = plane->data();
    for (int32_t y = 0; y < height; ++y) {
        ReadRowBgra(source, y0 + y, x0, width, row.data());
        for (int32_t x = 0; x < width; ++x) {
            const uint8_t* p = row.data() + 4 * static_cast<size_t>(x);
            for (int c = 0; c < channels; ++c) *out++ = p[c];
        }
    }
    return kSuccess;
}

int FromResampleStatus(ResampleStatus status) {
    switch (status) {
        case ResampleStatus::kOk: return kSuccess;
        case ResampleStatus::kTooLarge: return kErrorTooLarge;
        case ResampleStatus::kNoMemory: return kErrorNoMemory;
        default: return kErrorInvalidParameter;
    }
}

}  // namespace

// ---- Building blocks ----------------------------------------------------------------

namespace kernel {

int32_t BytesPerLine(int32_t width, int32_t bitsPerPixel) {
    if (width < 1 || width > kMaxSide || !ValidDepth(bitsPerPixel)) return 0;
    const int64_t bits = static_cast<int64_t>(width) * bitsPerPixel;
    return static_cast<int32_t>((bits + 31) / 32 * 4);
}

uint8_t* Row(const BitmapDescriptor& bitmap, int32_t y) {
    return static_cast<uint8_t*>(bitmap.storage) +
           static_cast<size_t>(y) * static_cast<size_t>(bitmap.bytesPerLine);
}

int CheckBitmap(const BitmapDescriptor* bitmap) {
    if (bitmap == nullptr) return kErrorInvalidParameter;
    if (bitmap->structSize != sizeof(BitmapDescriptor) || bitmap->storage == nullptr)
        return kErrorInvalidBitmap;
    StorageRecord record{};
    {
        StorageRegister& reg = Register();
        std::lock_guard<std::mutex> hold(reg.lock);
        const auto found = reg.records.find(bitmap->storage);
        if (found == reg.records.end()) return kErrorInvalidBitmap;
        record = found->second;
    }
    const int32_t stride = BytesPerLine(bitmap->width, bitmap->bitsPerPixel);
    if (stride == 0 || bitmap->height < 1 || bitmap->height > kMaxSide || bitmap->bytesPerLine != stride)
        return kErrorInvalidBitmap;
    const uint64_t rows = static_cast<uint64_t>(stride) * static_cast<uint64_t>(bitmap->height);
    if (rows != bitmap->storageSize || rows > record.rowBytes) return kErrorInvalidBitmap;
    if (!ValidOrder(bitmap->colorOrder) || bitmap->viewPerspective != kViewTopLeft)
        return kErrorInvalidBitmap;
    if (bitmap->bitsPerPixel <= 8) {
        if (bitmap->palette != record.palette || bitmap->colorCount < 0 ||
            bitmap->colorCount > PaletteSize(bitmap->bitsPerPixel))
            return kErrorInvalidBitmap;
    } else if (bitmap->colorCount != 0) {
        return kErrorInvalidBitmap;
    }
    return kSuccess;
}

namespace {

int AllocateStorage(BitmapDescriptor* bitmap, int32_t width, int32_t height, int32_t bitsPerPixel,
                    int32_t colorOrder, bool clearRows) {
    if (bitmap == nullptr || !ValidDepth(bitsPerPixel) || !ValidOrder(colorOrder) || width < 1 || height < 1)
        return kErrorInvalidParameter;
    if (width > kMaxSide || height > kMaxSide) return kErrorTooLarge;
    const int32_t stride = BytesPerLine(width, bitsPerPixel);
    const uint64_t rows = static_cast<uint64_t>(stride) * static_cast<uint64_t>(height);
    if (rows > kMaxStorageBytes) return kErrorTooLarge;
    // The palette follows the rows, 16-byte aligned, inside the same block.
    const size_t rowBlock =
        (std::max<size_t>(static_cast<size_t>(rows), kMinimumStorageBytes) + 15) & ~size_t{15};
    const size_t paletteBytes = static_cast<size_t>(PaletteSize(bitsPerPixel)) * sizeof(RgbQuad);
    void* storage =
        clearRows ? std::calloc(rowBlock + paletteBytes, 1) : std::malloc(rowBlock + paletteBytes);
    if (storage == nullptr) return kErrorNoMemory;
    if (!clearRows) {
        std::memset(static_cast<uint8_t*>(storage) + rows, 0,
                    rowBlock + paletteBytes - static_cast<size_t>(rows));
    }
    RgbQuad* palette =
        paletteBytes != 0 ? reinterpret_cast<RgbQuad*>(static_cast<uint8_t*>(storage) + rowBlock) : nullptr;
    try {
        StorageRegister& reg = Register();
        std::lock_guard<std::mutex> hold(reg.lock);
        reg.records[storage] = StorageRecord{rowBlock, palette};
    } catch (...) {
        std::free(storage);
        return kErrorNoMemory;
    }
    *bitmap = BitmapDescriptor{};
    bitmap->structSize = sizeof(BitmapDescriptor);
    bitmap->storage = storage;
    bitmap->width = width;
    bitmap->height = height;
    bitmap->bitsPerPixel = bitsPerPixel;
    bitmap->bytesPerLine = stride;
    bitmap->storageSize = static_cast<uint32_t>(rows);
    bitmap->colorOrder = bitsPerPixel <= 8 ? kColorOrderBgr : colorOrder;
    bitmap->colorCount = 0;
    bitmap->palette = palette;
    bitmap->viewPerspective = kViewTopLeft;
    return kSuccess;
}

}  // namespace

int AllocateBitmap(BitmapDescriptor* bitmap, int32_t width, int32_t height, int32_t bitsPerPixel,
                   int32_t colorOrder) {
    return AllocateStorage(bitmap, width, height, bitsPerPixel, colorOrder, true);
}

int AllocateBitmapRowsUncleared(BitmapDescriptor* bitmap, int32_t width, int32_t height, int32_t bitsPerPixel,
                                int32_t colorOrder) {
    return AllocateStorage(bitmap, width, height, bitsPerPixel, colorOrder, false);
}

void ReplaceBitmap(BitmapDescriptor* bitmap, const BitmapDescriptor& replacement) {
    GiveBackStorage(bitmap->storage);
    *bitmap = replacement;
}

int ConvertBitmap(const BitmapDescriptor& source, int32_t bitsPerPixel, int32_t colorOrder,
                  BitmapDescriptor* target) {
    if (bitsPerPixel == 0) bitsPerPixel = source.bitsPerPixel;
    if (!ValidDepth(bitsPerPixel) || !ValidOrder(colorOrder)) return kErrorInvalidParameter;
    int result = kSuccess;
    if (bitsPerPixel <= 8) {
        result = ConvertToPalette(source, bitsPerPixel, target);
    } else {
        result = AllocateBitmap(target, source.width, source.height, bitsPerPixel, colorOrder);
        if (result != kSuccess) return result;
        std::vector<uint8_t> row;
        if (!MakeBgraRow(row, source.width)) {
            FreeBitmap(target);
            return kErrorNoMemory;
        }
        for (int32_t y = 0; y < source.height; ++y) {
            ReadRowBgra(source, y, 0, source.width, row.data());
            WriteRowTrueColor(row.data(), source.width, target, y);
        }
    }
    if (result == kSuccess) CopyCommonFields(source, target);
    return result;
}

int ResizeRegion(const BitmapDescriptor& source, int32_t x, int32_t y, int32_t sourceWidth,
                 int32_t sourceHeight, int32_t width, int32_t height, uint32_t flags,
                 BitmapDescriptor* target) {
    if (flags != kSizeResample && flags != kSizeResampleFavourBlack) return kErrorInvalidParameter;
    if (width < 1 || height < 1 || sourceWidth < 1 || sourceHeight < 1 || x < 0 || y < 0 ||
        x > source.width - sourceWidth || y > source.height - sourceHeight)
        return kErrorInvalidParameter;
    if (width > kMaxSide || height > kMaxSide) return kErrorTooLarge;

    if (flags == kSizeResampleFavourBlack && source.bitsPerPixel == 1) {
        if (x != 0 || y != 0 || sourceWidth != source.width || sourceHeight != source.height)
            return kErrorInvalidParameter;
        int result = AllocateBitmap(target, width, height, 1, kColorOrderBgr);
        if (result != kSuccess) return result;
        std::copy(source.palette, source.palette + 2, target->palette);
        target->colorCount = source.colorCount;
        const auto level = [](const RgbQuad& c) { return 2 * c.red + 5 * c.green + c.blue; };
        const int darkBit = level(source.palette[1]) < level(source.palette[0]) ? 1 : 0;
        const ConstPixelPlane in{static_cast<const uint8_t*>(source.storage), source.width, source.height,
                                 static_cast<size_t>(source.bytesPerLine)};
        const PixelPlane out{static_cast<uint8_t*>(target->storage), width, height,
                             static_cast<size_t>(target->bytesPerLine)};
        result = FromResampleStatus(ResampleFavourDark(in, out, darkBit));
        if (result != kSuccess) {
            FreeBitmap(target);
            return result;
        }
        CopyCommonFields(source, target);
        return kSuccess;
    }

    if (source.bitsPerPixel >= 24) {
        const int channels = source.bitsPerPixel / 8;
        int result = AllocateBitmap(target, width, height, source.bitsPerPixel, source.colorOrder);
        if (result != kSuccess) return result;
        const ConstPixelPlane in{Row(source, y) + static_cast<size_t>(x) * channels, sourceWidth,
                                 sourceHeight, static_cast<size_t>(source.bytesPerLine)};
        const PixelPlane out{static_cast<uint8_t*>(target->storage), width, height,
                             static_cast<size_t>(target->bytesPerLine)};
        result = FromResampleStatus(Resample(in, out, channels));
        if (result != kSuccess) {
            FreeBitmap(target);
            return result;
        }
        CopyCommonFields(source, target);
        return kSuccess;
    }

    // Palette pictures are resampled as grey levels or as colours: averaging
    // palette indices would mean nothing.
    const bool grey = PaletteIsGrey(source);
    const int channels = grey ? 1 : 3;
    std::vector<uint8_t> plane;
    int result = ExpandRegion(source, x, y, sourceWidth, sourceHeight, channels, &plane);
    if (result != kSuccess) return result;
    result = AllocateBitmap(target, width, height, grey ? 8 : 24, kColorOrderBgr);
    if (result != kSuccess) return result;
    if (grey) {
        FillGreyRamp(target->palette, 256);
        target->colorCount = 256;
    }
    const ConstPixelPlane in{plane.data(), sourceWidth, sourceHeight,
                             static_cast<size_t>(sourceWidth) * static_cast<size_t>(channels)};
    const PixelPlane out{static_cast<uint8_t*>(target->storage), width, height,
                         static_cast<size_t>(target->bytesPerLine)};
    result = FromResampleStatus(Resample(in, out, channels));
    if (result != kSuccess) {
        FreeBitmap(target);
        return result;
    }
    CopyCommonFields(source, target);
    return kSuccess;
}

void CompositeOnWhite(BitmapDescriptor* bitmap) {
    if (CheckBitmap(bitmap) != kSuccess || bitmap->bitsPerPixel != 32) return;
    for (int32_t y = 0; y < bitmap->height; ++y) {
        uint8_t* p = Row(*bitmap, y);
        for (int32_t x = 0; x < bitmap->width; ++x, p += 4) {
            const uint32_t alpha = p[3];
            if (alpha == 255) continue;
            for (int c = 0; c < 3; ++c)
                p[c] = static_cast<uint8_t>((p[c] * alpha + 255 * (255 - alpha) + 127) / 255);
            p[3] = 255;
        }
    }
}

uint64_t Bmp24FileSize(const BitmapDescriptor& bitmap) {
    if (CheckBitmap(&bitmap) != kSuccess) return 0;
    return 54 + static_cast<uint64_t>(BytesPerLine(bitmap.width, 24)) * static_cast<uint64_t>(bitmap.height);
}

int EncodeBmp24(const BitmapDescriptor& bitmap, uint8_t* out, size_t size) {
    const int check = CheckBitmap(&bitmap);
    if (check != kSuccess) return check;
    const uint64_t total = Bmp24FileSize(bitmap);
    if (out == nullptr || size < total || total > 0xFFFFFFFFu) return kErrorInvalidParameter;
    std::vector<uint8_t> row;
    if (!MakeBgraRow(row, bitmap.width)) return kErrorNoMemory;
    auto put16 = [&](size_t offset, uint32_t value) {
        out[offset] = static_cast<uint8_t>(value);
        out[offset + 1] = static_cast<uint8_t>(value >> 8);
    };
    auto put32 = [&](size_t offset, uint32_t value) {
        put16(offset, value & 0xFFFF);
        put16(offset + 2, value >> 16);
    };
    const uint32_t stride = static_cast<uint32_t>(BytesPerLine(bitmap.width, 24));
    std::memset(out, 0, static_cast<size_t>(total));
    out[0] = 'B';
    out[1] = 'M';
    put32(2, static_cast<uint32_t>(total));
    put32(10, 54);
    put32(14, 40);
    put32(18, static_cast<uint32_t>(bitmap.width));
    put32(22, static_cast<uint32_t>(bitmap.height));  // positive: bottom-up rows
    put16(26, 1);
    put16(28, 24);
    put32(34, static_cast<uint32_t>(total - 54));
    // Dots per inch to pixels per metre.
    put32(38, static_cast<uint32_t>(std::max(bitmap.xResolution, 0) * 10000LL / 254));
    put32(42, static_cast<uint32_t>(std::max(bitmap.yResolution, 0) * 10000LL / 254));
    for (int32_t y = 0; y < bitmap.height; ++y) {
        ReadRowBgra(bitmap, y, 0, bitmap.width, row.data());
        uint8_t* p = out + 54 + static_cast<size_t>(bitmap.height - 1 - y) * stride;
        for (int32_t x = 0; x < bitmap.width; ++x, p += 3) {
            const uint8_t* q = row.data() + 4 * static_cast<size_t>(x);
            p[0] = q[0];
            p[1] = q[1];
            p[2] = q[2];
        }
    }
    return kSuccess;
}

void SetStorageObserver(StorageObserver observer) {
    g_storageObserver.store(observer);
}

size_t LiveStorageCount() {
    StorageRegister& reg = Register();
    std::lock_guard<std::mutex> hold(reg.lock);
    return reg.records.size();
}

}  // namespace kernel

// ---- Operations --------------------------------------------------------------------

int CreateBitmap(BitmapDescriptor* bitmap, int32_t memoryKind, int32_t width, int32_t height,
                 int32_t bitsPerPixel, int32_t colorOrder, const RgbQuad* palette, int32_t viewPerspective,
                 const void* data, uint32_t dataSize) {
    if (bitmap == nullptr || memoryKind != kMemoryConventional) return kErrorInvalidParameter;
    if (data != nullptr || dataSize != 0) return kErrorUnsupported;
    if (viewPerspective != 0 && viewPerspective != kViewTopLeft) return kErrorUnsupported;
    if (palette != nullptr && bitsPerPixel > 8) return kErrorInvalidParameter;
    const int result = kernel::AllocateBitmap(bitmap, width, height, bitsPerPixel, colorOrder);
    if (result != kSuccess) return result;
    if (bitsPerPixel <= 8) {
        const int32_t entries = PaletteSize(bitsPerPixel);
        if (palette != nullptr) {
            std::copy(palette, palette + entries, bitmap->palette);
        } else {
            FillGreyRamp(bitmap->palette, entries);
        }
        bitmap->colorCount = entries;
    }
    return kSuccess;
}

int FillBitmap(BitmapDescriptor* bitmap, uint32_t color) {
    const int check = kernel::CheckBitmap(bitmap);
    if (check != kSuccess) return check;
    const uint8_t red = static_cast<uint8_t>(color);
    const uint8_t green = static_cast<uint8_t>(color >> 8);
    const uint8_t blue = static_cast<uint8_t>(color >> 16);
    uint8_t* first = kernel::Row(*bitmap, 0);
    if (bitmap->bitsPerPixel >= 24) {
        const int step = bitmap->bitsPerPixel / 8;
        const bool rgb = bitmap->colorOrder == kColorOrderRgb;
        for (int32_t x = 0; x < bitmap->width; ++x) {
            uint8_t* p = first + static_cast<size_t>(x) * step;
            p[0] = rgb ? red : blue;
            p[1] = green;
            p[2] = rgb ? blue : red;
            if (step == 4) p[3] = 255;
        }
    } else {
        const int32_t count = bitmap->colorCount > 0 ? bitmap->colorCount : PaletteSize(bitmap->bitsPerPixel);
        ColorMatchTable table;
        if (!MakeTable(bitmap->palette, count, &table)) return kErrorNoMemory;
        const uint8_t index = table.Match(red, green, blue);
        for (int32_t x = 0; x < bitmap->width; ++x) SetIndex(first, x, bitmap->bitsPerPixel, index);
    }
    for (int32_t y = 1; y < bitmap->height; ++y)
        std::memcpy(kernel::Row(*bitmap, y), first, static_cast<size_t>(bitmap->bytesPerLine));
    return kSuccess;
}

int CopyBitmap(BitmapDescriptor* target, const BitmapDescriptor* source) {
    if (target == nullptr || target == source) return kErrorInvalidParameter;
    const int check = kernel::CheckBitmap(source);
    if (check != kSuccess) return check;
    BitmapDescriptor copy{};
    const int result = kernel::AllocateBitmap(&copy, source->width, source->height, source->bitsPerPixel,
                                              source->colorOrder);
    if (result != kSuccess) return result;
    std::memcpy(copy.storage, source->storage, source->storageSize);
    if (source->bitsPerPixel <= 8) {
        std::copy(source->palette, source->palette + PaletteSize(source->bitsPerPixel), copy.palette);
        copy.colorCount = source->colorCount;
    }
    CopyCommonFields(*source, &copy);
    *target = copy;
    return kSuccess;
}

int FreeBitmap(BitmapDescriptor* bitmap) {
    if (bitmap == nullptr) return kErrorInvalidParameter;
    if (bitmap->storage == nullptr) {
        *bitmap = BitmapDescriptor{};
        return kSuccess;
    }
    bool live = false;
    {
        StorageRegister& reg = Register();
        std::lock_guard<std::mutex> hold(reg.lock);
        live = reg.records.count(bitmap->storage) != 0;
    }
    if (live) GiveBackStorage(bitmap->storage);
    *bitmap = BitmapDescriptor{};
    return live ? kSuccess : kErrorInvalidBitmap;
}

int SizeBitmap(BitmapDescriptor* bitmap, int32_t width, int32_t height, uint32_t flags) {
    const int check = kernel::CheckBitmap(bitmap);
    if (check != kSuccess) return check;
    BitmapDescriptor resized{};
    const int result =
        kernel::ResizeRegion(*bitmap, 0, 0, bitmap->width, bitmap->height, width, height, flags, &resized);
    if (result != kSuccess) return result;
    kernel::ReplaceBitmap(bitmap, resized);
    return kSuccess;
}

int ReduceBitmapDepth(BitmapDescriptor* bitmap, int32_t bitsPerPixel) {
    const int check = kernel::CheckBitmap(bitmap);
    if (check != kSuccess) return check;
    if (!ValidDepth(bitsPerPixel)) return kErrorInvalidParameter;
    if (bitsPerPixel == bitmap->bitsPerPixel) return kSuccess;
    BitmapDescriptor converted{};
    const int32_t order = bitmap->bitsPerPixel >= 24 ? bitmap->colorOrder : kColorOrderBgr;
    const int result = kernel::ConvertBitmap(*bitmap, bitsPerPixel, order, &converted);
    if (result != kSuccess) return result;
    kernel::ReplaceBitmap(bitmap, converted);
    return kSuccess;
}

int IsGrayScaleBitmap(const BitmapDescriptor* bitmap) {
    if (kernel::CheckBitmap(bitmap) != kSuccess) return 0;
    if (bitmap->bitsPerPixel <= 8) return PaletteIsGrey(*bitmap) ? 1 : 0;
    try {
        std::vector<uint8_t> row(4 * static_cast<size_t>(bitmap->width));
        return AllPixelsGrey(*bitmap, row) ? 1 : 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int ReduceBitmapColors(const BitmapDescriptor* source, BitmapDescriptor* target, int32_t bitsPerPixel,
                       uint32_t flags, const RgbQuad* colors, const void* paletteHandle, int32_t colorCount,
                       const void* callback, const void* userData) {
    if (target == nullptr || colors == nullptr) return kErrorInvalidParameter;
    if (flags != kColorReductionUserPalette || paletteHandle != nullptr || callback != nullptr ||
        userData != nullptr)
        return kErrorUnsupported;
    if ((bitsPerPixel != 1 && bitsPerPixel != 4 && bitsPerPixel != 8) || colorCount < 1 ||
        colorCount > PaletteSize(bitsPerPixel))
        return kErrorInvalidParameter;
    const int check = kernel::CheckBitmap(source);
    if (check != kSuccess) return check;

    BitmapDescriptor reduced{};
    int result =
        kernel::AllocateBitmap(&reduced, source->width, source->height, bitsPerPixel, kColorOrderBgr);
    if (result != kSuccess) return result;
    std::copy(colors, colors + colorCount, reduced.palette);
    for (int32_t i = 0; i < colorCount; ++i) reduced.palette[i].reserved = 0;
    reduced.colorCount = colorCount;
    CopyCommonFields(*source, &reduced);

    bool mapped = false;
    {
        StorageRegister& reg = Register();
        std::lock_guard<std::mutex> hold(reg.lock);
        ColorMatchTable* current = reg.currentTable;
        if (current != nullptr && current->SameColors(colors, colorCount)) {
            result = MapThroughTable(*source, current, &reduced);
            mapped = true;
        }
    }
    if (!mapped) {
        ColorMatchTable table;
        result = MakeTable(colors, colorCount, &table) ? MapThroughTable(*source, &table, &reduced)
                                                       : kErrorNoMemory;
    }
    if (result != kSuccess) {
        FreeBitmap(&reduced);
        return result;
    }
    if (target == source) {
        kernel::ReplaceBitmap(target, reduced);
    } else {
        *target = reduced;
    }
    return kSuccess;
}

ColorMatchTable* CreateColorMatchTable(const RgbQuad* colors, int32_t colorCount) {
    if (colors == nullptr || colorCount < 1 || colorCount > 256) return nullptr;
    ColorMatchTable* table = new (std::nothrow) ColorMatchTable;
    if (table == nullptr) return nullptr;
    if (!MakeTable(colors, colorCount, table)) {
        delete table;
        return nullptr;
    }
    try {
        StorageRegister& reg = Register();
        std::lock_guard<std::mutex> hold(reg.lock);
        reg.tables.insert(table);
    } catch (...) {
        delete table;
        return nullptr;
    }
    return table;
}

int SetColorMatchTable(ColorMatchTable* table) {
    StorageRegister& reg = Register();
    std::lock_guard<std::mutex> hold(reg.lock);
    if (table != nullptr && reg.tables.count(table) == 0) return kErrorInvalidParameter;
    reg.currentTable = table;
    return kSuccess;
}

int FreeColorMatchTable(ColorMatchTable* table) {
    {
        StorageRegister& reg = Register();
        std::lock_guard<std::mutex> hold(reg.lock);
        if (table == nullptr || reg.tables.erase(table) == 0) return kErrorInvalidParameter;
        if (reg.currentTable == table) reg.currentTable = nullptr;
    }
    delete table;
    return kSuccess;
}

}  // namespace imaging
