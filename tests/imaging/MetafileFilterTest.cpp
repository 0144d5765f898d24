#include "thumbnails/MetafileFilter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <vector>

using imaging::FilterEnhancedMetafile;
using imaging::FilterWindowsMetafile;
using imaging::MetafileFilterResult;

namespace {

using Bytes = std::vector<uint8_t>;

uint32_t Get32(const Bytes& b, size_t at) {
    return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | uint32_t{b[at + 3]} << 24;
}
uint32_t Get16(const Bytes& b, size_t at) {
    return b[at] | b[at + 1] << 8;
}

// Builds an enhanced metafile record by record.
class Emf {
public:
    explicit Emf(uint16_t handles = 4) {
        bytes_.resize(108, 0);
        Set32(0, 1);
        Set32(4, 108);
        Set32(40, 0x464D4520);
        bytes_[56] = static_cast<uint8_t>(handles);
        bytes_[57] = static_cast<uint8_t>(handles >> 8);
        records_ = 1;
    }
    // A record of the given type whose body is the given 32-bit words.
    Emf& Add(uint32_t type, std::initializer_list<uint32_t> body) {
        Put32(type);
        Put32(static_cast<uint32_t>(8 + 4 * body.size()));
        for (uint32_t word : body) Put32(word);
        ++records_;
        return *this;
    }
    Emf& AddRaw(const Bytes& record) {
        bytes_.insert(bytes_.end(), record.begin(), record.end());
        ++records_;
        return *this;
    }
    Bytes Finish(bool withEnd = true) {
        if (withEnd) Add(14, {0, 16, 20});
        Set32(48, static_cast<uint32_t>(bytes_.size()));
        Set32(52, records_);
        return bytes_;
    }

private:
    void Put32(uint32_t v) {
        for (int i = 0; i < 4; ++i) bytes_.push_back(static_cast<uint8_t>(v >> (8 * i)));
    }
    void Set32(size_t at, uint32_t v) {
        for (int i = 0; i < 4; ++i) bytes_[at + i] = static_cast<uint8_t>(v >> (8 * i));
    }
    Bytes bytes_;
    uint32_t records_ = 0;
};

// The record types of the filtered metafile, in order.
std::vector<uint32_t> EmfTypes(const Bytes& emf) {
    std::vector<uint32_t> types;
    for (size_t at = 0; at + 8 <= emf.size();) {
        types.push_back(Get32(emf, at));
        const uint32_t length = Get32(emf, at + 4);
        if (length < 8) break;
        at += length;
    }
    return types;
}

Bytes Filtered(const Bytes& emf, MetafileFilterResult* result = nullptr) {
    Bytes out;
    const MetafileFilterResult r = FilterEnhancedMetafile(emf.data(), emf.size(), &out);
    if (result != nullptr) *result = r;
    return out;
}

// A STRETCHDIBITS record with a 2x2 24-bit bitmap; `bitsSize` may lie.
Bytes StretchDiBits(uint32_t bitsSize) {
    Bytes r(80 + 40 + 16, 0);
    auto put = [&](size_t at, uint32_t v) {
        for (int i = 0; i < 4; ++i) r[at + i] = static_cast<uint8_t>(v >> (8 * i));
    };
    put(0, 81);
    put(4, static_cast<uint32_t>(r.size()));
    put(48, 80);        // header offset
    put(52, 40);        // header size
    put(56, 120);       // bits offset
    put(60, bitsSize);  // bits size
    put(80, 40);        // BITMAPINFOHEADER
    put(84, 2);
    put(88, 2);
    r[92] = 1;
    r[94] = 24;
    return r;
}

// Builds a Windows metafile record by record.
class Wmf {
public:
    explicit Wmf(uint16_t objects = 2) {
        bytes_ = {1, 0, 9, 0, 0, 3, 0, 0, 0, 0, static_cast<uint8_t>(objects), 0, 0, 0, 0, 0, 0, 0};
    }
    Wmf& Add(uint16_t function, std::initializer_list<uint16_t> parameters) {
        const uint32_t words = static_cast<uint32_t>(3 + parameters.size());
        for (int i = 0; i < 4; ++i) bytes_.push_back(static_cast<uint8_t>(words >> (8 * i)));
        bytes_.push_back(static_cast<uint8_t>(function));
        bytes_.push_back(static_cast<uint8_t>(function >> 8));
        for (uint16_t p : parameters) {
            bytes_.push_back(static_cast<uint8_t>(p));
            bytes_.push_back(static_cast<uint8_t>(p >> 8));
        }
        return *this;
    }
    Bytes Finish() {
        Add(0, {});
        return bytes_;
    }

private:
    Bytes bytes_;
};

std::vector<uint32_t> WmfFunctions(const Bytes& wmf) {
    std::vector<uint32_t> functions;
    for (size_t at = 18; at + 6 <= wmf.size();) {
        functions.push_back(Get16(wmf, at + 4));
        const uint32_t words = Get32(wmf, at);
        if (words < 3) break;
        at += 2 * words;
    }
    return functions;
}

Bytes FilteredWmf(const Bytes& wmf, MetafileFilterResult* result = nullptr) {
    Bytes out;
    const MetafileFilterResult r = FilterWindowsMetafile(wmf.data(), wmf.size(), &out);
    if (result != nullptr) *result = r;
    return out;
}

}  // namespace

TEST(EnhancedMetafileFilter, KeepsWellFormedDrawingAndRewritesTheHeader) {
    const Bytes emf = Emf(3)
                          .Add(39, {1, 0, 0x0000FF, 0})                      // solid red brush into slot 1
                          .Add(37, {1})                                      // select it
                          .Add(37, {0x80000000u | 5})                        // a stock object
                          .Add(43, {0, 0, 10, 10})                           // rectangle
                          .Add(86, {0, 0, 4, 4, 2, 0x00010001, 0x00040002})  // polygon16, 2 points
                          .Add(40, {1})                                      // delete it
                          .Finish();
    MetafileFilterResult result;
    const Bytes out = Filtered(emf, &result);
    ASSERT_TRUE(result.valid);
    EXPECT_EQ(result.dropped, 0u);
    EXPECT_EQ(result.kept, 8u);
    EXPECT_EQ(out, emf) << "a clean metafile passes unchanged";
    EXPECT_EQ(Get32(out, 48), out.size());
}

TEST(EnhancedMetafileFilter, DropsRecordsThatLie) {
    const Bytes emf = Emf(3)
                          .Add(37, {7})                    // select from beyond the object table
                          .Add(39, {0, 0, 0, 0})           // a brush into slot 0, the metafile's own
                          .Add(39, {2, 3, 0, 0x12345678})  // a pattern brush: its hatch is a pointer
                          .Add(40, {0x80000001u})          // delete a stock object
                          .Add(86, {0, 0, 4, 4, 1000, 0})  // polygon16 claiming 1000 points
                          .Add(91, {0, 0, 4, 4, 2, 3, 2, 2, 1, 2, 3})  // counts 2 + 2 > 3 points
                          .Add(43, {0, 0})                             // a rectangle that ends early
                          .Add(71, {0, 0, 0, 0, 0, 0})                 // a region fill: never played
                          .Add(5000, {})                               // unknown
                          .AddRaw(StretchDiBits(8))                    // rows shorter than the header says
                          .Add(42, {1, 1, 5, 5})                       // an ellipse, which stays
                          .Finish();
    MetafileFilterResult result;
    const Bytes out = Filtered(emf, &result);
    ASSERT_TRUE(result.valid);
    EXPECT_EQ(result.dropped, 10u);
    EXPECT_EQ(EmfTypes(out), (std::vector<uint32_t>{1, 42, 14}));
    EXPECT_EQ(Get32(out, 52), 3u) << "the record count is rewritten";
}

TEST(EnhancedMetafileFilter, ChecksBitmapsAndText) {
    Bytes text(76 + 8, 0);
    auto put = [&](size_t at, uint32_t v) {
        for (int i = 0; i < 4; ++i) text[at + i] = static_cast<uint8_t>(v >> (8 * i));
    };
    put(0, 84);
    put(4, static_cast<uint32_t>(text.size()));
    put(44, 4);   // characters
    put(48, 76);  // text offset: 4 wide characters fill the rest
    Bytes longText = text;
    longText[44] = 5;  // one more character than the record holds
    const Bytes emf = Emf().AddRaw(StretchDiBits(16)).AddRaw(text).AddRaw(longText).Finish();
    const Bytes out = Filtered(emf);
    EXPECT_EQ(EmfTypes(out), (std::vector<uint32_t>{1, 81, 84, 14}));
}

TEST(EnhancedMetafileFilter, HoldsPensFontsAndTransformsToDrawableSizes) {
    Bytes font(104, 0);
    font[0] = 82;
    font[4] = 104;
    font[8] = 1;                                        // slot 1
    font[12] = 0x00, font[13] = 0x00, font[14] = 0x01;  // height 65536
    for (size_t i = 40; i < 104; ++i) font[i] = 'A';    // a face name without its end
    const uint32_t hugeScale = 0x4F000000u;             // 2^31 as a float
    const uint32_t notANumber = 0x7FC00000u;
    const Bytes emf = Emf(3)
                          .Add(38, {2, 0, 0x007FFFFF, 0, 0})  // a pen 8 million units wide
                          .AddRaw(font)
                          .Add(35, {0x3F800000u, 0, 0, hugeScale, 0, 0})  // scaled beyond reason
                          .Add(35, {notANumber, 0, 0, 0x3F800000u, 0, 0})
                          .Add(35, {0x3F800000u, 0, 0, 0x3F800000u, 0, 0})  // the identity stays
                          .Add(31, {1, 0, 1, 1})                            // a scaling by 1/0
                          .Add(34, {0x80000000u})                           // restore to level INT_MIN
                          .Add(34, {1})                                     // levels are relative: negative
                          .Add(33, {})                                      // save
                          .Add(34, {0xFFFFFFFFu})                           // restore -1 stays
                          .Finish();
    MetafileFilterResult result;
    const Bytes out = Filtered(emf, &result);
    EXPECT_EQ(EmfTypes(out), (std::vector<uint32_t>{1, 38, 82, 35, 33, 34, 14}));
    EXPECT_EQ(Get32(out, 108 + 16), 1024u) << "the pen's width";
    EXPECT_EQ(Get32(out, 108 + 28 + 12), 4096u) << "the font's height";
    EXPECT_EQ(Get16(out, 108 + 28 + 102), 0u) << "the face name ends inside the record";
}

TEST(EnhancedMetafileFilter, BrokenChainsAreInvalid) {
    MetafileFilterResult result;
    Bytes cut = Emf().Add(43, {0, 0, 1, 1}).Finish();
    cut[108 + 4] = 0x7C;  // the rectangle claims to run past the end
    Filtered(cut, &result);
    EXPECT_FALSE(result.valid);
    const Bytes tooShort(50, 0);
    Filtered(tooShort, &result);
    EXPECT_FALSE(result.valid);
    Bytes out;
    EXPECT_FALSE(FilterEnhancedMetafile(nullptr, 200, &out).valid);
}

TEST(EnhancedMetafileFilter, AnEmptyObjectTableBecomesOneSlot) {
    // Players write the metafile itself into slot 0.
    const Bytes out = Filtered(Emf(0).Add(37, {0}).Finish());
    EXPECT_EQ(Get16(out, 56), 1u);
    EXPECT_EQ(EmfTypes(out), (std::vector<uint32_t>{1, 37, 14}));
}

TEST(EnhancedMetafileFilter, IsIdempotent) {
    const Bytes emf = Emf(2).Add(37, {9}).Add(43, {0, 0, 3, 3}).Add(71, {1}).Finish();
    const Bytes once = Filtered(emf);
    EXPECT_EQ(Filtered(once), once);
}

TEST(WindowsMetafileFilter, KeepsWellFormedDrawing) {
    const Bytes wmf = Wmf(2)
                          .Add(0x02FC, {0, 0x00FF, 0, 0})  // solid brush
                          .Add(0x012D, {0})                // select object 0
                          .Add(0x041B, {10, 10, 0, 0})     // rectangle
                          .Add(0x0324, {2, 0, 0, 5, 5})    // polygon of 2 points
                          .Add(0x0521, {2, 0x6968, 3, 4})  // text out "hi" at 4, 3
                          .Add(0x01F0, {0})                // delete it
                          .Finish();
    MetafileFilterResult result;
    const Bytes out = FilteredWmf(wmf, &result);
    ASSERT_TRUE(result.valid);
    EXPECT_EQ(result.dropped, 0u);
    EXPECT_EQ(Bytes(out.begin() + 18, out.end()), Bytes(wmf.begin() + 18, wmf.end()))
        << "every record kept as it was";
    EXPECT_EQ(Get32(out, 6), out.size() / 2) << "the size in words";
    EXPECT_EQ(Get32(out, 12), 8u) << "the largest record, the polygon, in words";
}

TEST(WindowsMetafileFilter, DropsRecordsThatLieAndKeepsObjectNumbers) {
    const Bytes wmf = Wmf(2)
                          .Add(0x00F7, {0x300, 1, 0, 0})      // a palette takes slot 0: dropped, replaced
                          .Add(0x02FC, {0, 0x00FF, 0, 0})     // this brush then still takes slot 1
                          .Add(0x012D, {1})                   // select the brush
                          .Add(0x012D, {3})                   // beyond the table the objects need
                          .Add(0x0324, {400, 0, 0})           // a polygon claiming 400 points
                          .Add(0x0538, {2, 1, 0x8000, 0, 0})  // a negative count
                          .Add(0x0521, {40, 0x6968})          // text longer than the record
                          .Add(0x02FC, {3, 0, 0, 0x1234})     // a pattern brush
                          .Add(0x0626, {15, 0})               // an escape
                          .Finish();
    MetafileFilterResult result;
    const Bytes out = FilteredWmf(wmf, &result);
    ASSERT_TRUE(result.valid);
    EXPECT_EQ(result.dropped, 7u);
    // The palette and the pattern brush became null brushes, in place.
    EXPECT_EQ(WmfFunctions(out), (std::vector<uint32_t>{0x02FC, 0x02FC, 0x012D, 0x02FC, 0}));
    EXPECT_EQ(Get16(out, 18 + 6), 1u) << "BS_NULL";
    EXPECT_EQ(Get32(out, 6), out.size() / 2) << "the size in the header is rewritten";
}

TEST(WindowsMetafileFilter, HoldsPensAndFontsToDrawableSizes) {
    const Bytes wmf = Wmf(2)
                          .Add(0x02FA, {0, 30000, 0, 0, 0})                           // pen
                          .Add(0x02FB, {0x8001, 20000, 0, 0, 400, 0, 0, 0, 0, 0x41})  // font
                          .Add(0x0410, {1, 0, 1, 1})                                  // scale by 1/0
                          .Finish();
    const Bytes out = FilteredWmf(wmf);
    ASSERT_EQ(WmfFunctions(out), (std::vector<uint32_t>{0x02FA, 0x02FB, 0}));
    EXPECT_EQ(Get16(out, 18 + 6 + 2), 1024u);
    EXPECT_EQ(static_cast<int16_t>(Get16(out, 18 + 16 + 6)), -4096) << "a height of -32767";
    EXPECT_EQ(Get16(out, 18 + 16 + 6 + 2), 4096u);
}

TEST(WindowsMetafileFilter, ShortFontRecordsAreMadeWhole) {
    // A font record whose face name, "Ab", is cut short after its terminator.
    const Bytes wmf = Wmf(1).Add(0x02FB, {12, 0, 0, 0, 400, 0, 0, 0, 0, 0x6241, 0}).Finish();
    const Bytes out = FilteredWmf(wmf);
    ASSERT_EQ(WmfFunctions(out), (std::vector<uint32_t>{0x02FB, 0}));
    EXPECT_EQ(Get32(out, 18), 28u) << "3 + 9 + 16 words: a whole 32-byte face name";
    EXPECT_EQ(out[18 + 6 + 18], 'A');
    EXPECT_EQ(out[18 + 6 + 18 + 31], 0);
}

TEST(WindowsMetafileFilter, ChecksBitmapsAndBrokenChains) {
    // A stretch DIB record of a 1x1 24-bit bitmap: 11 parameter words, the
    // header, then `rowBytes` of pixels where one padded row needs 4.
    auto stretchDib = [](size_t rowBytes) {
        std::vector<uint16_t> parameters(11, 0);
        parameters[0] = 0x0020;
        parameters[1] = 0x00CC;  // SRCCOPY
        const uint32_t info[10] = {40, 1, 1, 0x00180001u, 0, 0, 0, 0, 0, 0};
        for (uint32_t v : info) {
            parameters.push_back(static_cast<uint16_t>(v));
            parameters.push_back(static_cast<uint16_t>(v >> 16));
        }
        for (size_t i = 0; i < rowBytes / 2; ++i) parameters.push_back(0xFFFF);
        Bytes r;
        const uint32_t words = static_cast<uint32_t>(3 + parameters.size());
        for (int i = 0; i < 4; ++i) r.push_back(static_cast<uint8_t>(words >> (8 * i)));
        r.push_back(0x43);
        r.push_back(0x0F);
        for (uint16_t p : parameters) {
            r.push_back(static_cast<uint8_t>(p));
            r.push_back(static_cast<uint8_t>(p >> 8));
        }
        return r;
    };
    Bytes wmf = Wmf(0).Finish();
    wmf.resize(wmf.size() - 6);  // without its end record
    const Bytes whole = stretchDib(4);
    const Bytes cut = stretchDib(2);
    wmf.insert(wmf.end(), whole.begin(), whole.end());
    wmf.insert(wmf.end(), cut.begin(), cut.end());
    const uint8_t end[6] = {3, 0, 0, 0, 0, 0};
    wmf.insert(wmf.end(), end, end + 6);
    EXPECT_EQ(WmfFunctions(FilteredWmf(wmf)), (std::vector<uint32_t>{0x0F43, 0}));

    MetafileFilterResult result;
    Bytes endsInARecord = Wmf(0).Add(0x041B, {1, 1, 0, 0}).Finish();
    endsInARecord.resize(endsInARecord.size() - 6 - 2);
    FilteredWmf(endsInARecord, &result);
    EXPECT_FALSE(result.valid);
    Bytes badHeader = Wmf(0).Finish();
    badHeader[2] = 8;
    FilteredWmf(badHeader, &result);
    EXPECT_FALSE(result.valid);
}

// ---- Headers and chains as writers leave them -----------------------------------------------

namespace {

void Poke32(Bytes& b, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<uint8_t>(v >> (8 * i));
}

}  // namespace

TEST(EnhancedMetafileFilter, TakesTheSmallerOfTheByteCountAndTheData) {
    const Bytes emf = Emf().Add(43, {0, 0, 5, 5}).Finish();
    const Bytes clean = Filtered(emf);
    ASSERT_FALSE(clean.empty());
    Bytes larger = emf;
    Poke32(larger, 48, static_cast<uint32_t>(emf.size() + 22));
    MetafileFilterResult result;
    EXPECT_EQ(Filtered(larger, &result), clean);
    EXPECT_TRUE(result.valid);
    Bytes trailing = emf;
    trailing.insert(trailing.end(), 24, 0xAB);
    EXPECT_EQ(Filtered(trailing), clean) << "bytes behind the end record";
    Poke32(trailing, 48, static_cast<uint32_t>(trailing.size()));
    EXPECT_EQ(Filtered(trailing), clean) << "and counted";
}

TEST(EnhancedMetafileFilter, DataEndingOnARecordsEndNeedsNoEndRecord) {
    const Bytes clean = Filtered(Emf().Add(43, {0, 0, 5, 5}).Finish());
    MetafileFilterResult result;
    EXPECT_EQ(Filtered(Emf().Add(43, {0, 0, 5, 5}).Finish(false), &result), clean);
    EXPECT_TRUE(result.valid);
    Bytes counted = Emf().Add(43, {0, 0, 5, 5}).Finish(false);
    Poke32(counted, 48, static_cast<uint32_t>(counted.size() + 20));
    EXPECT_EQ(Filtered(counted), clean) << "the byte count still counting the end record";
    Bytes inside = Emf().Add(43, {0, 0, 5, 5}).Finish();
    inside.resize(inside.size() - 8);
    Filtered(inside, &result);
    EXPECT_FALSE(result.valid) << "data ending inside a record";
}

TEST(EnhancedMetafileFilter, TheObjectTableHoldsEveryIndexMade) {
    // A header counting one slot, with a pen made at index 3 and selected.
    const Bytes emf = Emf(1).Add(38, {3, 0, 1, 0, 0}).Add(37, {3}).Add(43, {0, 0, 5, 5}).Finish();
    MetafileFilterResult result;
    const Bytes out = Filtered(emf, &result);
    ASSERT_TRUE(result.valid);
    EXPECT_EQ(Get16(out, 56), 4u);
    EXPECT_EQ(EmfTypes(out), (std::vector<uint32_t>{1, 38, 37, 43, 14}));
}

TEST(EnhancedMetafileFilter, CommentsAndEscapesAreDropped) {
    const Bytes emf = Emf()
                          .Add(70, {8, 0x2B464D45, 0x00014001})  // a comment: "EMF+" and a record's start
                          .Add(106, {0x1234, 4, 0x01020304})     // an escape
                          .Add(43, {0, 0, 5, 5})
                          .Finish();
    MetafileFilterResult result;
    const Bytes out = Filtered(emf, &result);
    ASSERT_TRUE(result.valid);
    EXPECT_EQ(result.dropped, 2u);
    EXPECT_EQ(EmfTypes(out), (std::vector<uint32_t>{1, 43, 14}));
}

TEST(WindowsMetafileFilter, TakesWhatThePlayerTakes) {
    const Bytes wmf = Wmf(2).Add(0x041B, {10, 10, 0, 0}).Finish();
    const Bytes clean = FilteredWmf(wmf);
    ASSERT_FALSE(clean.empty());
    // The size field as the whole file's, placeable header included.
    Bytes larger = wmf;
    Poke32(larger, 6, static_cast<uint32_t>(wmf.size() / 2 + 11));
    MetafileFilterResult result;
    EXPECT_EQ(FilteredWmf(larger, &result), clean);
    EXPECT_TRUE(result.valid);
    // Bytes behind the end record, and the size counting only up to it.
    Bytes trailing = wmf;
    Poke32(trailing, 6, static_cast<uint32_t>(wmf.size() / 2));
    trailing.insert(trailing.end(), 10, 0xAB);
    EXPECT_EQ(FilteredWmf(trailing), clean);
    // No end record, the data ending on a record's end.
    EXPECT_EQ(FilteredWmf(Bytes(wmf.begin(), wmf.end() - 6)), clean);
    // The header's size ending inside a record.
    Bytes inside = wmf;
    Poke32(inside, 6, 9 + 4);
    FilteredWmf(inside, &result);
    EXPECT_FALSE(result.valid);
}

TEST(WindowsMetafileFilter, TheObjectTableHoldsEveryObjectMade) {
    // Counted as no objects: a pen and a brush, each selected.
    const Bytes wmf = Wmf(0)
                          .Add(0x02FA, {0, 1, 0, 0, 0})
                          .Add(0x012D, {0})
                          .Add(0x02FC, {0, 0x00FF, 0, 0})
                          .Add(0x012D, {1})
                          .Add(0x041B, {10, 10, 0, 0})
                          .Finish();
    MetafileFilterResult result;
    const Bytes out = FilteredWmf(wmf, &result);
    ASSERT_TRUE(result.valid);
    EXPECT_EQ(result.dropped, 0u);
    EXPECT_EQ(Get16(out, 10), 2u);
    EXPECT_EQ(WmfFunctions(out), (std::vector<uint32_t>{0x02FA, 0x012D, 0x02FC, 0x012D, 0x041B, 0}));
}
