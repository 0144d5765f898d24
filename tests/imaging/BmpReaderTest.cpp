// Our reader of plain BMP files, on its own: what it takes, what it gives,
// and a table of hostile files it must decline without reading past their
// end or allocating by their word. (Its equality with WIC is tested under
// Wine, in PlainBmpTest.)
#include "thumbnails/BmpReader.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "support/LittleEndian.h"
#include "thumbnails/BitmapKernel.h"

using namespace imaging;

namespace {

using Bytes = std::vector<uint8_t>;
using testsupport::Set16;
using testsupport::Set32;

// A well-formed file: `bits` deep, with a full palette for palette depths,
// rows filled with `fill`.
Bytes Plain(int32_t width, int32_t height, uint32_t bits, uint8_t fill = 0x5A) {
    const uint32_t entries = bits <= 8 ? 1u << bits : 0;
    const uint32_t stride = (static_cast<uint32_t>(width < 0 ? -width : width) * bits + 31) / 32 * 4;
    const uint32_t rows = static_cast<uint32_t>(height < 0 ? -height : height);
    Bytes b(54 + 4 * entries + stride * rows, fill);
    std::memset(b.data(), 0, 54 + 4 * entries);
    b[0] = 'B';
    b[1] = 'M';
    Set32(b, 10, 54 + 4 * entries);
    Set32(b, 14, 40);
    Set32(b, 18, static_cast<uint32_t>(width));
    Set32(b, 22, static_cast<uint32_t>(height));
    Set16(b, 26, 1);
    Set16(b, 28, bits);
    for (uint32_t i = 0; i < entries; ++i) b[54 + 4 * i] = static_cast<uint8_t>(i);
    return b;
}

class BmpReader : public ::testing::Test {
protected:
    void SetUp() override { live_ = kernel::LiveStorageCount(); }
    void TearDown() override { EXPECT_EQ(kernel::LiveStorageCount(), live_) << "storage left behind"; }

private:
    size_t live_ = 0;
};

}  // namespace

TEST_F(BmpReader, TakesThePlainDepthsInBothRowOrders) {
    for (uint32_t bits : {1u, 4u, 8u, 16u, 24u, 32u}) {
        for (int32_t height : {3, -3}) {
            const Bytes file = Plain(5, height, bits);
            BmpLayout layout;
            ASSERT_TRUE(ReadBmpLayout(file.data(), file.size(), &layout)) << bits << " " << height;
            EXPECT_EQ(layout.width, 5);
            EXPECT_EQ(layout.height, 3);
            EXPECT_EQ(layout.topDown, height < 0);
            EXPECT_EQ(layout.bitsPerPixel, static_cast<int32_t>(bits));
            EXPECT_EQ(layout.paletteCount, bits <= 8 ? 1u << bits : 0u);
            BitmapDescriptor bitmap{};
            ASSERT_EQ(DecodeBmp(file.data(), file.size(), layout, false, &bitmap), kSuccess);
            EXPECT_EQ(bitmap.bitsPerPixel, bits <= 8 ? static_cast<int32_t>(bits) : 24);
            FreeBitmap(&bitmap);
        }
    }
}

TEST_F(BmpReader, RowsComeTopFirstWhateverTheStoredOrder) {
    // Two rows of one 24-bit pixel: stored bottom-up, the first stored row
    // is the bottom one.
    Bytes file = Plain(1, 2, 24);
    const uint8_t bottom[3] = {1, 2, 3}, top[3] = {4, 5, 6};
    std::memcpy(file.data() + 54, bottom, 3);
    std::memcpy(file.data() + 58, top, 3);
    BmpLayout layout;
    ASSERT_TRUE(ReadBmpLayout(file.data(), file.size(), &layout));
    BitmapDescriptor bitmap{};
    ASSERT_EQ(DecodeBmp(file.data(), file.size(), layout, false, &bitmap), kSuccess);
    EXPECT_EQ(std::memcmp(kernel::Row(bitmap, 0), top, 3), 0);
    EXPECT_EQ(std::memcmp(kernel::Row(bitmap, 1), bottom, 3), 0);
    FreeBitmap(&bitmap);

    Set32(file, 22, static_cast<uint32_t>(-2));
    ASSERT_TRUE(ReadBmpLayout(file.data(), file.size(), &layout));
    ASSERT_EQ(DecodeBmp(file.data(), file.size(), layout, false, &bitmap), kSuccess);
    EXPECT_EQ(std::memcmp(kernel::Row(bitmap, 0), bottom, 3), 0);
    FreeBitmap(&bitmap);
}

TEST_F(BmpReader, SixteenBitChannelsWidenAndThirtyTwoBitsGetFullAlpha) {
    Bytes file = Plain(2, 1, 16);
    // 0x7FFF is white; 0x0421 is 1 in every channel: 1 << 3 | 1 >> 2 = 8.
    Set16(file, 54, 0x7FFF);
    Set16(file, 56, 0x8421);  // the top bit is not looked at
    BmpLayout layout;
    ASSERT_TRUE(ReadBmpLayout(file.data(), file.size(), &layout));
    BitmapDescriptor bitmap{};
    ASSERT_EQ(DecodeBmp(file.data(), file.size(), layout, true, &bitmap), kSuccess);
    const uint8_t expected[8] = {255, 255, 255, 255, 8, 8, 8, 255};
    EXPECT_EQ(std::memcmp(kernel::Row(bitmap, 0), expected, 8), 0);
    FreeBitmap(&bitmap);

    Bytes wide = Plain(1, 1, 32);
    const uint8_t pixel[4] = {10, 20, 30, 0};
    std::memcpy(wide.data() + 54, pixel, 4);
    ASSERT_TRUE(ReadBmpLayout(wide.data(), wide.size(), &layout));
    ASSERT_EQ(DecodeBmp(wide.data(), wide.size(), layout, true, &bitmap), kSuccess);
    const uint8_t opaque[4] = {10, 20, 30, 255};
    EXPECT_EQ(std::memcmp(kernel::Row(bitmap, 0), opaque, 4), 0);
    FreeBitmap(&bitmap);
}

// Hostile and unusual files: each is declined, so that it never reaches the
// pixel copy; none is read past its end (the sanitizer build checks).
TEST_F(BmpReader, DeclinesHostileAndUnusualFiles) {
    struct Case {
        const char* what;
        std::function<void(Bytes&)> spoil;
    };
    const Case cases[] = {
        {"empty", [](Bytes& b) { b.clear(); }},
        {"headers cut short", [](Bytes& b) { b.resize(53); }},
        {"not BM", [](Bytes& b) { b[1] = 'A'; }},
        {"core header", [](Bytes& b) { Set32(b, 14, 12); }},
        {"version 5 header", [](Bytes& b) { Set32(b, 14, 124); }},
        {"header size huge", [](Bytes& b) { Set32(b, 14, 0xFFFFFFFF); }},
        {"zero width", [](Bytes& b) { Set32(b, 18, 0); }},
        {"negative width", [](Bytes& b) { Set32(b, 18, static_cast<uint32_t>(-8)); }},
        {"zero height", [](Bytes& b) { Set32(b, 22, 0); }},
        {"most negative height", [](Bytes& b) { Set32(b, 22, 0x80000000u); }},
        {"width beyond the limit", [](Bytes& b) { Set32(b, 18, 16385); }},
        {"height beyond the limit", [](Bytes& b) { Set32(b, 22, 16385); }},
        {"pixels beyond the limit",
         [](Bytes& b) {
             Set32(b, 18, 16384);
             Set32(b, 22, 16384);
         }},
        {"two planes", [](Bytes& b) { Set16(b, 26, 2); }},
        {"two bits a pixel", [](Bytes& b) { Set16(b, 28, 2); }},
        {"zero bits", [](Bytes& b) { Set16(b, 28, 0); }},
        {"48 bits", [](Bytes& b) { Set16(b, 28, 48); }},
        {"run-length compressed", [](Bytes& b) { Set32(b, 30, 1); }},
        {"bit fields", [](Bytes& b) { Set32(b, 30, 3); }},
        {"JPEG inside", [](Bytes& b) { Set32(b, 30, 4); }},
        {"rows before the headers end", [](Bytes& b) { Set32(b, 10, 20); }},
        {"rows beyond the end", [](Bytes& b) { Set32(b, 10, static_cast<uint32_t>(b.size()) + 1); }},
        {"rows offset huge", [](Bytes& b) { Set32(b, 10, 0xFFFFFFF0u); }},
        {"last row cut short", [](Bytes& b) { b.pop_back(); }},
        {"height claims more rows than there are", [](Bytes& b) { Set32(b, 22, 9); }},
        {"width claims more than a row holds", [](Bytes& b) { Set32(b, 18, 64); }},
    };
    for (uint32_t bits : {8u, 24u}) {
        for (const Case& c : cases) {
            Bytes file = Plain(4, 3, bits);
            c.spoil(file);
            BmpLayout layout;
            EXPECT_FALSE(ReadBmpLayout(file.data(), file.size(), &layout)) << c.what << " at " << bits;
        }
    }
    // A palette the file does not hold.
    Bytes file = Plain(4, 3, 8);
    file.resize(54 + 100);
    Set32(file, 10, 54);
    BmpLayout layout;
    EXPECT_FALSE(ReadBmpLayout(file.data(), file.size(), &layout));
    // A colour count beyond the depth is cut to the depth's 2^bits.
    Bytes claimed = Plain(4, 3, 1);
    Set32(claimed, 46, 0xFFFFFFFF);
    ASSERT_TRUE(ReadBmpLayout(claimed.data(), claimed.size(), &layout));
    EXPECT_EQ(layout.paletteCount, 2u);
    EXPECT_FALSE(ReadBmpLayout(nullptr, 100, &layout));
}

// A layout that does not fit the bytes handed to the decoder is refused
// instead of trusted.
TEST_F(BmpReader, DecodeRefusesALayoutThatDoesNotFitTheBytes) {
    const Bytes file = Plain(4, 3, 8);
    BmpLayout layout;
    ASSERT_TRUE(ReadBmpLayout(file.data(), file.size(), &layout));
    BitmapDescriptor bitmap{};
    EXPECT_EQ(DecodeBmp(file.data(), file.size() - 1, layout, false, &bitmap), kErrorCorrupt);
    BmpLayout taller = layout;
    taller.height = 1000;
    EXPECT_EQ(DecodeBmp(file.data(), file.size(), taller, false, &bitmap), kErrorCorrupt);
    BmpLayout narrow = layout;
    narrow.stride = 0;
    EXPECT_EQ(DecodeBmp(file.data(), file.size(), narrow, false, &bitmap), kErrorCorrupt);
    BmpLayout palette = layout;
    palette.paletteCount = 257;
    EXPECT_EQ(DecodeBmp(file.data(), file.size(), palette, false, &bitmap), kErrorCorrupt);
    EXPECT_EQ(bitmap.storage, nullptr);
}

// Rows are written whole, the padding at their ends included, whatever the
// memory held before: the storage is not cleared first.
TEST_F(BmpReader, RowPaddingIsZeroWhateverTheMemoryHeld) {
    for (uint32_t bits : {1u, 8u, 16u, 24u, 32u}) {
        for (int32_t width : {1, 3, 5}) {
            const Bytes file = Plain(width, 4, bits, 0xFF);
            BmpLayout layout;
            ASSERT_TRUE(ReadBmpLayout(file.data(), file.size(), &layout));
            for (bool wide : {false, true}) {
                // The block the picture is likely to get, dirtied first.
                const size_t block = 4096;
                void* dirty = std::malloc(block);
                ASSERT_NE(dirty, nullptr);
                std::memset(dirty, 0xAB, block);
                std::free(dirty);
                BitmapDescriptor bitmap{};
                ASSERT_EQ(DecodeBmp(file.data(), file.size(), layout, wide, &bitmap), kSuccess);
                const size_t written = bits <= 8 ? (static_cast<size_t>(width) * bits + 7) / 8
                                                 : static_cast<size_t>(width) * (wide ? 4 : 3);
                for (int32_t y = 0; y < bitmap.height; ++y) {
                    const uint8_t* row = kernel::Row(bitmap, y);
                    for (size_t i = written; i < static_cast<size_t>(bitmap.bytesPerLine); ++i)
                        EXPECT_EQ(row[i], 0)
                            << bits << " bits, width " << width << ", row " << y << ", byte " << i;
                }
                const uint8_t* storage = static_cast<const uint8_t*>(bitmap.storage);
                for (size_t i = bitmap.storageSize; i < kMinimumStorageBytes; ++i)
                    EXPECT_EQ(storage[i], 0) << "beyond the rows, byte " << i;
                if (bits <= 8) {
                    for (uint32_t i = layout.paletteCount; i < (1u << bits); ++i)
                        EXPECT_EQ(bitmap.palette[i].blue, 0) << "palette entry " << i;
                }
                FreeBitmap(&bitmap);
            }
        }
    }
}
