#include "thumbnails/BmpReader.h"

#include <algorithm>
#include <cstring>

#include "thumbnails/BitmapKernel.h"
#include "thumbnails/LittleEndian.h"
#include "thumbnails/PictureProbe.h"

namespace imaging {

namespace {

constexpr uint32_t kFileHeaderBytes = 14;
constexpr uint32_t kInfoHeaderBytes = 40;

using byteorder::Read16;
using byteorder::Read32;
using byteorder::ReadSigned32;

// 5 bits to 8, the low bits repeating the high ones.
uint8_t Widen5(uint32_t value) {
    const uint32_t c = value & 0x1F;
    return static_cast<uint8_t>(c << 3 | c >> 2);
}

}  // namespace

bool ReadBmpLayout(const uint8_t* data, size_t size, BmpLayout* layout) {
    if (data == nullptr || layout == nullptr || size < kFileHeaderBytes + kInfoHeaderBytes) return false;
    if (data[0] != 'B' || data[1] != 'M') return false;
    const uint8_t* header = data + kFileHeaderBytes;
    if (Read32(header) != kInfoHeaderBytes) return false;
    const int64_t width = ReadSigned32(header + 4);
    const int64_t storedHeight = ReadSigned32(header + 8);
    const uint32_t planes = Read16(header + 12);
    const uint32_t bits = Read16(header + 14);
    const uint32_t compression = Read32(header + 16);
    const uint32_t colorsUsed = Read32(header + 32);
    if (planes != 1 || compression != 0) return false;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32) return false;
    const int64_t height = storedHeight < 0 ? -storedHeight : storedHeight;
    if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide ||
        static_cast<uint64_t>(width) * static_cast<uint64_t>(height) > kMaxDecodedPixels)
        return false;

    BmpLayout result;
    result.width = static_cast<int32_t>(width);
    result.height = static_cast<int32_t>(height);
    result.topDown = storedHeight < 0;
    result.bitsPerPixel = static_cast<int32_t>(bits);
    result.xPelsPerMeter = ReadSigned32(header + 24);
    result.yPelsPerMeter = ReadSigned32(header + 28);
    const uint64_t headersEnd = kFileHeaderBytes + kInfoHeaderBytes;
    if (bits <= 8) {
        const uint32_t entries = 1u << bits;
        result.paletteOffset = static_cast<uint32_t>(headersEnd);
        result.paletteCount = colorsUsed == 0 ? entries : std::min(colorsUsed, entries);
        if (headersEnd + 4ull * result.paletteCount > size) return false;
    }
    const uint64_t pixelOffset = Read32(data + 10);
    const uint64_t stride = (static_cast<uint64_t>(width) * bits + 31) / 32 * 4;
    // Rows may not overlap the headers: the offset is the file's word, and a
    // file that points its rows into its own headers is no plain BMP.
    if (pixelOffset < headersEnd || pixelOffset > size ||
        stride * static_cast<uint64_t>(height) > size - pixelOffset)
        return false;
    result.pixelOffset = static_cast<uint32_t>(pixelOffset);
    result.stride = static_cast<uint32_t>(stride);
    *layout = result;
    return true;
}

RgbQuad BmpPaletteEntry(const uint8_t* data, const BmpLayout& layout, uint32_t index) {
    const uint8_t* entry = data + layout.paletteOffset + 4ull * index;
    return RgbQuad{entry[0], entry[1], entry[2], 0};
}

int DecodeBmp(const uint8_t* data, size_t size, const BmpLayout& layout, bool wide,
              BitmapDescriptor* bitmap) {
    if (data == nullptr || bitmap == nullptr) return kErrorInvalidParameter;
    // The layout is trusted only as far as it still fits these bytes.
    if (layout.width < 1 || layout.height < 1 || layout.pixelOffset > size ||
        static_cast<uint64_t>(layout.stride) * static_cast<uint64_t>(layout.height) >
            size - layout.pixelOffset ||
        layout.stride <
            (static_cast<uint64_t>(layout.width) * static_cast<uint32_t>(layout.bitsPerPixel) + 7) / 8 ||
        (layout.bitsPerPixel <= 8 &&
         (layout.paletteCount > (1u << layout.bitsPerPixel) ||
          static_cast<uint64_t>(layout.paletteOffset) + 4ull * layout.paletteCount > size)))
        return kErrorCorrupt;
    const int32_t bits = layout.bitsPerPixel;
    const bool indexed = bits <= 8;
    const int32_t depth = indexed ? bits : (wide ? 32 : 24);
    BitmapDescriptor made{};
    // Every byte of every row is written below, padding included.
    const int allocated =
        kernel::AllocateBitmapRowsUncleared(&made, layout.width, layout.height, depth, kColorOrderBgr);
    if (allocated != kSuccess) return allocated;
    if (indexed) {
        for (uint32_t i = 0; i < layout.paletteCount; ++i) made.palette[i] = BmpPaletteEntry(data, layout, i);
        made.colorCount = static_cast<int32_t>(layout.paletteCount);
    }
    const size_t rowBytes = (static_cast<size_t>(layout.width) * static_cast<size_t>(bits) + 7) / 8;
    const size_t outBytes = indexed ? rowBytes : static_cast<size_t>(layout.width) * (wide ? 4 : 3);
    const size_t padding = static_cast<size_t>(made.bytesPerLine) - outBytes;
    for (int32_t y = 0; y < layout.height; ++y) {
        const int32_t stored = layout.topDown ? y : layout.height - 1 - y;
        const uint8_t* in = data + layout.pixelOffset + static_cast<size_t>(stored) * layout.stride;
        uint8_t* out = kernel::Row(made, y);
        if (padding != 0) std::memset(out + outBytes, 0, padding);
        if (indexed || (bits == 24 && !wide)) {
            std::memcpy(out, in, rowBytes);
            continue;
        }
        const int32_t outStep = wide ? 4 : 3;
        for (int32_t x = 0; x < layout.width; ++x, out += outStep) {
            if (bits == 16) {
                const uint32_t pixel = Read16(in + 2 * x);
                out[0] = Widen5(pixel);
                out[1] = Widen5(pixel >> 5);
                out[2] = Widen5(pixel >> 10);
            } else {
                const uint8_t* p = in + static_cast<size_t>(x) * (bits / 8);
                out[0] = p[0];
                out[1] = p[1];
                out[2] = p[2];
            }
            if (wide) out[3] = 255;
        }
    }
    *bitmap = made;
    return kSuccess;
}

}  // namespace imaging
