#include "thumbnails/PaintRows.h"

#include <cstring>

#if (defined(__x86_64__) || defined(__i386__)) && (defined(__GNUC__) || defined(__clang__))
#define LUMBREL_PAINT_ROWS_SSSE3 1
#include <tmmintrin.h>
#else
#define LUMBREL_PAINT_ROWS_SSSE3 0
#endif

namespace imaging::kernel {

namespace {

uint32_t Load32(const uint8_t* p) {
    uint32_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

// Red and blue change places; green and the fourth byte stay.
uint32_t SwapRedBlue(uint32_t pixel) {
    return (pixel & 0xFF00FF00u) | (pixel & 0xFFu) << 16 | (pixel >> 16 & 0xFFu);
}

#if LUMBREL_PAINT_ROWS_SSSE3
// Byte shuffles do a row at the speed of copying it. They are chosen at run
// time: the 32-bit build's baseline processor does not have them.
bool HasShuffles() {
    static const bool has = __builtin_cpu_supports("ssse3") != 0;
    return has;
}

// Sixteen pixels a step: three 16-byte loads are exactly sixteen 3-byte
// pixels, so nothing past them is read. Returns the pixels done.
__attribute__((target("ssse3"))) int32_t WidenPixels24(const uint8_t* in, uint32_t* out, int32_t width,
                                                       bool swap) {
    const __m128i order = swap ? _mm_setr_epi8(2, 1, 0, -128, 5, 4, 3, -128, 8, 7, 6, -128, 11, 10, 9, -128)
                               : _mm_setr_epi8(0, 1, 2, -128, 3, 4, 5, -128, 6, 7, 8, -128, 9, 10, 11, -128);
    int32_t x = 0;
    for (; x + 16 <= width; x += 16, in += 48, out += 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 16));
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 32));
        __m128i* to = reinterpret_cast<__m128i*>(out);
        _mm_storeu_si128(to, _mm_shuffle_epi8(a, order));
        _mm_storeu_si128(to + 1, _mm_shuffle_epi8(_mm_alignr_epi8(b, a, 12), order));
        _mm_storeu_si128(to + 2, _mm_shuffle_epi8(_mm_alignr_epi8(c, b, 8), order));
        _mm_storeu_si128(to + 3, _mm_shuffle_epi8(_mm_srli_si128(c, 4), order));
    }
    return x;
}

__attribute__((target("ssse3"))) int32_t SwapPixels32(const uint8_t* in, uint32_t* out, int32_t width) {
    const __m128i order = _mm_setr_epi8(2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15);
    int32_t x = 0;
    for (; x + 4 <= width; x += 4, in += 16, out += 4)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                         _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in)), order));
    return x;
}
#else
bool HasShuffles() {
    return false;
}
int32_t WidenPixels24(const uint8_t*, uint32_t*, int32_t, bool) {
    return 0;
}
int32_t SwapPixels32(const uint8_t*, uint32_t*, int32_t) {
    return 0;
}
#endif

// Four 3-byte pixels are three little-endian words: b0 g0 r0 b1 | g1 r1 b2 g2
// | r2 b3 g3 r3. Taking them apart by shifts is a few operations for four
// pixels instead of three loads and two shifts for each.
void WidenRow24(const uint8_t* in, uint32_t* out, int32_t width, bool swap, bool shuffles) {
    int32_t x = shuffles ? WidenPixels24(in, out, width, swap) : 0;
    in += 3 * static_cast<size_t>(x);
    out += x;
    for (; x + 4 <= width; x += 4, in += 12, out += 4) {
        const uint32_t w0 = Load32(in);
        const uint32_t w1 = Load32(in + 4);
        const uint32_t w2 = Load32(in + 8);
        uint32_t p[4] = {w0 & 0xFFFFFFu, (w0 >> 24) | (w1 & 0xFFFFu) << 8, (w1 >> 16) | (w2 & 0xFFu) << 16,
                         w2 >> 8};
        if (swap)
            for (uint32_t& pixel : p) pixel = SwapRedBlue(pixel);
        std::memcpy(out, p, sizeof p);
    }
    // The rest, fewer than four, one by one: a word load would reach past
    // them, beyond the end of the last row.
    for (; x < width; ++x, in += 3, ++out) {
        const uint32_t pixel = in[0] | static_cast<uint32_t>(in[1]) << 8 | static_cast<uint32_t>(in[2]) << 16;
        *out = swap ? SwapRedBlue(pixel) : pixel;
    }
}

void CopyRow32(const uint8_t* in, uint32_t* out, int32_t width, bool swap, bool shuffles) {
    if (!swap) {
        std::memcpy(out, in, static_cast<size_t>(width) * 4);
        return;
    }
    int32_t x = shuffles ? SwapPixels32(in, out, width) : 0;
    for (; x < width; ++x) out[x] = SwapRedBlue(Load32(in + 4 * static_cast<size_t>(x)));
}

}  // namespace

bool HasPaintRows(const BitmapDescriptor& bitmap) {
    return (bitmap.bitsPerPixel == 24 || bitmap.bitsPerPixel == 32) &&
           (bitmap.colorOrder == kColorOrderBgr || bitmap.colorOrder == kColorOrderRgb);
}

bool ToPaintRows(const BitmapDescriptor& bitmap, uint32_t* out, size_t capacity) {
    return ToPaintRows(bitmap, out, capacity, HasShuffles());
}

bool ToPaintRows(const BitmapDescriptor& bitmap, uint32_t* out, size_t capacity, bool shuffles) {
    if (!HasPaintRows(bitmap) || out == nullptr || bitmap.storage == nullptr || bitmap.width < 1 ||
        bitmap.height < 1 || bitmap.bytesPerLine < int64_t{bitmap.width} * (bitmap.bitsPerPixel / 8))
        return false;
    const size_t width = static_cast<size_t>(bitmap.width);
    if (capacity / width < static_cast<size_t>(bitmap.height)) return false;
    const bool swap = bitmap.colorOrder == kColorOrderRgb;
    shuffles = shuffles && HasShuffles();
    const uint8_t* in = static_cast<const uint8_t*>(bitmap.storage);
    for (int32_t y = 0; y < bitmap.height; ++y, in += bitmap.bytesPerLine, out += width) {
        if (bitmap.bitsPerPixel == 24)
            WidenRow24(in, out, bitmap.width, swap, shuffles);
        else
            CopyRow32(in, out, bitmap.width, swap, shuffles);
    }
    return true;
}

}  // namespace imaging::kernel
