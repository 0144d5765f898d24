// The structure check of metafiles, on metafiles assembled byte by byte.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <utility>

#include "MetafileBuilder.h"
#include "thumbnails/MetafileCheck.h"

using namespace metafilebuilder;
using thumbnails::CheckEnhancedMetafile;
using thumbnails::CheckMetafile;
using thumbnails::CheckPlaceableMetafile;
using thumbnails::CheckWindowsMetafile;
using thumbnails::MetafileCheckResult;
using thumbnails::MetafileCheckStatus;
using thumbnails::MetafileKind;

namespace {

MetafileCheckStatus Status(const Bytes& bytes) {
    return CheckMetafile(bytes.data(), bytes.size()).status;
}

MetafileCheckStatus EmfWith(uint32_t type, const Bytes& body, uint32_t handles = 4) {
    return Status(EmfBuilder(handles).Record(type, body).Finish());
}

MetafileCheckStatus WmfWith(uint32_t function, std::initializer_list<uint32_t> params, uint32_t objects = 4) {
    return Status(WmfBuilder(objects).Record(function, params).Finish());
}

MetafileCheckStatus WmfWithBytes(uint32_t function, const Bytes& params, uint32_t objects = 4) {
    return Status(WmfBuilder(objects).RecordBytes(function, params).Finish());
}

Bytes WmfDibParams(std::initializer_list<uint32_t> leading, const Dib& dib, size_t cutBits = 0) {
    Bytes out;
    for (uint32_t p : leading) Put16(out, p);
    out.insert(out.end(), dib.info.begin(), dib.info.end());
    out.insert(out.end(), dib.bits.begin(), dib.bits.end() - static_cast<std::ptrdiff_t>(cutBits));
    return out;
}

constexpr auto kAccepted = MetafileCheckStatus::kAccepted;
constexpr auto kContent = MetafileCheckStatus::kBadRecordContent;
constexpr auto kRecordSize = MetafileCheckStatus::kBadRecordSize;

}  // namespace

// ---- Enhanced metafiles -------------------------------------------------------

TEST(EnhancedMetafileCheck, HeaderAndEndRecordAlone) {
    const Bytes emf = EmfBuilder().Finish();
    const MetafileCheckResult result = CheckMetafile(emf.data(), emf.size());
    EXPECT_EQ(result.status, kAccepted);
    EXPECT_EQ(result.kind, MetafileKind::kEnhanced);
    EXPECT_EQ(result.recordCount, 2u);
}

TEST(EnhancedMetafileCheck, TypicalDrawingIsAccepted) {
    const Bytes emf = SampleEmf();
    const MetafileCheckResult result = CheckEnhancedMetafile(emf.data(), emf.size());
    EXPECT_EQ(result.status, kAccepted) << thumbnails::DescribeMetafileCheckStatus(result.status) << " at "
                                        << result.failingOffset << " record " << result.failingRecord;
    EXPECT_EQ(result.recordCount, 14u);
}

TEST(EnhancedMetafileCheck, BytesBehindTheMetafileAreIgnored) {
    Bytes emf = SampleEmf();
    emf.insert(emf.end(), 64, 0xEE);
    EXPECT_EQ(Status(emf), kAccepted);
}

TEST(EnhancedMetafileCheck, HeaderFaults) {
    const Bytes good = EmfBuilder().Finish();
    auto with = [&](size_t at, uint32_t value) {
        Bytes b = good;
        Set32(b, at, value);
        return CheckEnhancedMetafile(b.data(), b.size()).status;
    };
    EXPECT_EQ(with(40, 0x464D4521), MetafileCheckStatus::kBadHeader) << "signature";
    EXPECT_EQ(with(0, 2), MetafileCheckStatus::kBadHeader) << "type";
    EXPECT_EQ(with(4, 84), MetafileCheckStatus::kBadHeader) << "header below 88 bytes";
    EXPECT_EQ(with(4, 90), MetafileCheckStatus::kBadHeader) << "header size not a multiple of 4";
    EXPECT_EQ(with(48, static_cast<uint32_t>(good.size()) + 4), MetafileCheckStatus::kBadHeader)
        << "byte count beyond the data";
    EXPECT_EQ(with(48, static_cast<uint32_t>(good.size()) - 2), MetafileCheckStatus::kBadHeader)
        << "byte count not a multiple of 4";
    EXPECT_EQ(with(56, 0), MetafileCheckStatus::kBadHeader) << "no object slot";
    EXPECT_EQ(with(60, 4), MetafileCheckStatus::kBadHeader) << "description with its offset 0";
    Bytes description = good;
    Set32(description, 60, 2);
    Set32(description, 64, 88);
    EXPECT_EQ(CheckEnhancedMetafile(description.data(), description.size()).status,
              MetafileCheckStatus::kBadHeader)
        << "description reaching out of the header";
    EXPECT_EQ(Status(Bytes(good.begin(), good.begin() + 60)), MetafileCheckStatus::kBadHeader)
        << "cut header";
}

TEST(EnhancedMetafileCheck, TheHeadersScaleMustBePlausible) {
    const Bytes good = EmfBuilder().Finish();
    auto with = [&](std::initializer_list<std::pair<size_t, uint32_t>> changes) {
        Bytes b = good;
        for (const auto& change : changes) Set32(b, change.first, change.second);
        return CheckEnhancedMetafile(b.data(), b.size()).status;
    };
    constexpr auto kBadHeader = MetafileCheckStatus::kBadHeader;
    // The reference device: 1024 x 768 pixels, 320 x 240 mm.
    EXPECT_EQ(with({{80, 536871183}}), kBadHeader) << "millimetres with a flipped high bit";
    EXPECT_EQ(with({{72, 0}}), kBadHeader) << "no pixels";
    EXPECT_EQ(with({{84, 0}}), kBadHeader) << "no millimetres";
    EXPECT_EQ(with({{72, 70000}}), kBadHeader);
    EXPECT_EQ(with({{72, 4}}), kBadHeader) << "a pixel of 80 mm";
    EXPECT_EQ(with({{72, 5}, {16, 0}, {20, 0}}), kAccepted) << "one of 64 mm, for a drawing of a pixel";
    EXPECT_EQ(with({{72, 65536}, {80, 64}}), kAccepted) << "1024 pixels a millimetre";
    EXPECT_EQ(with({{72, 65536}, {80, 63}}), kBadHeader);
    // The frame (0.01 mm): 2540 x 2540, about 81 x 81 pixels for bounds of 100 x 100.
    EXPECT_EQ(with({{32, 1}}), kBadHeader) << "a frame far smaller than the drawing";
    EXPECT_EQ(with({{32, 196}}), kAccepted) << "bounds up to 16 times the frame";
    EXPECT_EQ(with({{32, 195}}), kBadHeader);
    EXPECT_EQ(with({{32, 0}}), kAccepted) << "a frame of no width is not used for scaling";
    EXPECT_EQ(with({{32, 1}, {16, 0xFFFFFFFF}}), kBadHeader)
        << "an empty drawing still needs a frame of a pixel's 16th";
    EXPECT_EQ(with({{32, 2}, {16, 0xFFFFFFFF}}), kAccepted);
    EXPECT_EQ(with({{24, 2540}, {32, 0}}), kAccepted) << "a mirrored frame";
}

TEST(EnhancedMetafileCheck, MappingStepsStayWithinBounds) {
    const uint32_t extent = 1u << 24;
    EXPECT_EQ(EmfWith(9, Words32({extent, 1})), kAccepted);
    EXPECT_EQ(EmfWith(9, Words32({extent + 1, 1})), kContent);
    EXPECT_EQ(EmfWith(11, Words32({1, static_cast<uint32_t>(-static_cast<int32_t>(extent) - 1)})), kContent);
    EXPECT_EQ(EmfWith(12, Words32({0x7FFFFFFF, 0})), kContent) << "a viewport origin";
    EXPECT_EQ(EmfWith(31, Words32({1024, 1, 1, 1})), kAccepted);
    EXPECT_EQ(EmfWith(32, Words32({1025, 1, 1, 1})), kContent) << "a scale factor";
    auto transform = [](float m11, float dx) {
        Bytes body;
        for (float f : {m11, 0.0f, 0.0f, 1.0f, dx, 0.0f}) {
            uint32_t bits;
            std::memcpy(&bits, &f, sizeof bits);
            Put32(body, bits);
        }
        return body;
    };
    EXPECT_EQ(EmfWith(35, transform(2.5f, 100.0f)), kAccepted);
    EXPECT_EQ(EmfWith(35, transform(5000.0f, 100.0f)), kContent);
    EXPECT_EQ(EmfWith(35, transform(1.0f, 1e9f)), kContent);
    EXPECT_EQ(EmfWith(35, transform(std::nanf(""), 0.0f)), kContent);
    EXPECT_EQ(EmfWith(35, transform(1.0f, INFINITY)), kContent);
    EXPECT_EQ(EmfWith(36, Concat({transform(1.0f, 0.0f), Words32({2})})), kAccepted);
    EXPECT_EQ(EmfWith(36, Concat({transform(1.0f, 0.0f), Words32({5})})), kContent) << "no such mode";
}

TEST(EnhancedMetafileCheck, WrongSignatureIsNoMetafileAtAll) {
    Bytes emf = EmfBuilder().Finish();
    Set32(emf, 40, 0);
    EXPECT_EQ(Status(emf), MetafileCheckStatus::kUnknownFormat);
}

TEST(EnhancedMetafileCheck, RecordSizes) {
    Bytes tooSmall = EmfBuilder().Raw(Words32({43, 4})).Finish();
    EXPECT_EQ(Status(tooSmall), kRecordSize);
    Bytes misaligned = EmfBuilder().Raw(Concat({Words32({43, 26}), Bytes(20, 0)})).Finish();
    EXPECT_EQ(Status(misaligned), kRecordSize);
    Bytes beyond = EmfBuilder().Raw(Concat({Words32({43, 4000}), Bytes(16, 0)})).Finish();
    EXPECT_EQ(Status(beyond), kRecordSize);
    // A rectangle record too short for its rectangle.
    EXPECT_EQ(Status(EmfBuilder().Raw(Concat({Words32({43, 16}), Bytes(8, 0)})).Finish()), kRecordSize);
}

TEST(EnhancedMetafileCheck, RecordCountMustMatch) {
    Bytes emf = SampleEmf();
    Set32(emf, 52, Get32(emf, 52) + 1);
    EXPECT_EQ(Status(emf), MetafileCheckStatus::kRecordCountMismatch);
    Set32(emf, 52, 0);
    EXPECT_EQ(Status(emf), MetafileCheckStatus::kRecordCountMismatch);
}

TEST(EnhancedMetafileCheck, EndRecordMustBeLast) {
    EXPECT_EQ(Status(EmfBuilder().Record(43, EmrRectangle(0, 0, 5, 5)).Finish(false)),
              MetafileCheckStatus::kMissingEndRecord);
    // Something behind the end record, inside the byte count.
    Bytes emf = EmfBuilder().Finish();
    const Bytes extra = Concat({Words32({43, 24}), EmrRectangle(0, 0, 1, 1)});
    emf.insert(emf.end(), extra.begin(), extra.end());
    Set32(emf, 48, static_cast<uint32_t>(emf.size()));
    EXPECT_EQ(Status(emf), MetafileCheckStatus::kMissingEndRecord);
    // A second header.
    EXPECT_EQ(Status(EmfBuilder().Raw(Concat({Words32({1, 88}), Bytes(80, 0)})).Finish()), kContent);
    // An end record too short for its fields, and one whose palette leaves it.
    EXPECT_EQ(Status(EmfBuilder().Raw(Words32({14, 12, 0})).Finish(false)), kRecordSize);
    EXPECT_EQ(Status(EmfBuilder().Raw(Words32({14, 20, 2, 16, 20})).Finish(false)), kContent);
}

TEST(EnhancedMetafileCheck, EscapesAreRefusedCommentsAreNot) {
    for (uint32_t escape : {105u, 106u, 110u}) {
        EXPECT_EQ(EmfWith(escape, Words32({0, 0, 0})), MetafileCheckStatus::kEscapeRecord) << escape;
    }
    EXPECT_EQ(EmfWith(70, Concat({Words32({4}), Words32({0x2B464D45})})), kAccepted);
    EXPECT_EQ(EmfWith(70, Words32({400})), kContent) << "comment longer than its record";
}

TEST(EnhancedMetafileCheck, RecordsNotPlayedHereAreRefused) {
    for (uint32_t type : {69u, 78u, 79u, 96u, 99u, 104u, 108u, 112u, 122u, 123u, 5000u}) {
        EXPECT_EQ(EmfWith(type, Bytes(120, 0)), MetafileCheckStatus::kUnsupportedRecord) << type;
    }
}

TEST(EnhancedMetafileCheck, PointCountsStayInsideTheRecord) {
    EXPECT_EQ(EmfWith(3, EmrPolygon(3, 3)), kAccepted);
    EXPECT_EQ(EmfWith(3, EmrPolygon(4, 3)), kContent);
    EXPECT_EQ(EmfWith(3, EmrPolygon(0x20000000, 3)), kContent) << "a count whose byte size wraps in 32 bits";
    Bytes poly16 = Words32({0, 0, 10, 10, 3});
    for (int i = 0; i < 6; ++i) Put16(poly16, static_cast<uint32_t>(i));
    EXPECT_EQ(EmfWith(86, poly16), kAccepted);
    Set32(poly16, 16, 4);
    EXPECT_EQ(EmfWith(86, poly16), kContent);
    // POLYDRAW: points and one type byte for each.
    Bytes draw = Concat({Words32({0, 0, 10, 10, 2, 1, 1, 2, 2}), Bytes{6, 2, 0, 0}});
    EXPECT_EQ(EmfWith(56, draw), kAccepted);
    Set32(draw, 16, 3);
    EXPECT_EQ(EmfWith(56, draw), kContent);
}

TEST(EnhancedMetafileCheck, PolyPolygonCountsMustAddUp) {
    const Bytes good = Words32({0, 0, 10, 10, 2, 5, 3, 2, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4});
    EXPECT_EQ(EmfWith(8, good), kAccepted);
    Bytes sumTooLarge = good;
    Set32(sumTooLarge, 28, 3);
    EXPECT_EQ(EmfWith(8, sumTooLarge), kContent);
    Bytes polygonsBeyond = good;
    Set32(polygonsBeyond, 16, 1000);
    EXPECT_EQ(EmfWith(8, polygonsBeyond), kContent);
}

TEST(EnhancedMetafileCheck, ObjectIndicesStayInsideTheTable) {
    EXPECT_EQ(EmfWith(38, EmrCreatePen(3), 4), kAccepted);
    EXPECT_EQ(EmfWith(38, EmrCreatePen(4), 4), kContent) << "past the table";
    EXPECT_EQ(EmfWith(38, EmrCreatePen(0), 4), kContent) << "slot 0 is the metafile's own";
    EXPECT_EQ(EmfWith(37, EmrObject(2), 4), kAccepted);
    EXPECT_EQ(EmfWith(37, EmrObject(9), 4), kContent);
    EXPECT_EQ(EmfWith(37, EmrObject(0x80000000u | 7), 4), kAccepted) << "stock objects need no slot";
    EXPECT_EQ(EmfWith(40, EmrObject(0x80000000u | 7), 4), kContent) << "a stock object is never deleted";
    EXPECT_EQ(EmfWith(40, EmrObject(65535), 4), kContent);
    EXPECT_EQ(EmfWith(48, EmrObject(0x80000000u | 15), 4), kAccepted) << "the stock palette";
    EXPECT_EQ(EmfWith(82, Concat({Words32({2}), Bytes(92, 0)}), 4), kAccepted);
    EXPECT_EQ(EmfWith(82, Concat({Words32({2}), Bytes(60, 0)}), 4), kRecordSize) << "font record too short";
}

TEST(EnhancedMetafileCheck, BrushesMayNotCarryPointers) {
    EXPECT_EQ(EmfWith(39, EmrCreateBrush(1, 0)), kAccepted);
    EXPECT_EQ(EmfWith(39, EmrCreateBrush(1, 1)), kAccepted);
    EXPECT_EQ(EmfWith(39, EmrCreateBrush(1, 2, 5)), kAccepted);
    EXPECT_EQ(EmfWith(39, EmrCreateBrush(1, 2, 6)), kContent) << "no such hatch";
    EXPECT_EQ(EmfWith(39, EmrCreateBrush(1, 3, 0x1234)), kContent) << "BS_PATTERN names a bitmap handle";
    EXPECT_EQ(EmfWith(39, EmrCreateBrush(1, 6, 0x1234)), kContent) << "BS_DIBPATTERNPT holds a pointer";
    // EXTCREATEPEN: style, width, brush style, colour, hatch, entries.
    const Bytes pen = Words32({1, 0, 0, 0, 0, 0x10000, 3, 0, 0, 0, 2, 4, 4});
    EXPECT_EQ(EmfWith(95, pen), kAccepted);
    Bytes patternPen = pen;
    Set32(patternPen, 28, 6);
    EXPECT_EQ(EmfWith(95, patternPen), kContent);
    Bytes manyEntries = pen;
    Set32(manyEntries, 40, 50);
    EXPECT_EQ(EmfWith(95, manyEntries), kContent);
}

TEST(EnhancedMetafileCheck, SizesThatKeepPlayersBusyAreRefused) {
    // Pen widths, font sizes and the boxes of curves up to their limits.
    EXPECT_EQ(EmfWith(38, Words32({1, 0, 32767, 0, 0})), kAccepted);
    EXPECT_EQ(EmfWith(38, Words32({1, 0, 32768, 0, 0})), kContent);
    EXPECT_EQ(EmfWith(38, Words32({1, 0, static_cast<uint32_t>(-40000), 0, 0})), kContent);
    EXPECT_EQ(EmfWith(38, Words32({1, 0, 0x00800003, 0, 0})), kContent) << "one flipped bit in the width";
    const Bytes pen = Words32({1, 0, 0, 0, 0, 0x10000, 32767, 0, 0, 0, 0});
    EXPECT_EQ(EmfWith(95, pen), kAccepted);
    Bytes widePen = pen;
    Set32(widePen, 24, 32768);
    EXPECT_EQ(EmfWith(95, widePen), kContent);
    Bytes font = Concat({Words32({1, static_cast<uint32_t>(-32767), 20}), Bytes(84, 0)});
    EXPECT_EQ(EmfWith(82, font), kAccepted);
    Set32(font, 4, static_cast<uint32_t>(-32768));
    EXPECT_EQ(EmfWith(82, font), kContent);
    Set32(font, 4, 12);
    Set32(font, 8, 1 << 20);
    EXPECT_EQ(EmfWith(82, font), kContent) << "the width too";

    const uint32_t limit = 1u << 21;
    EXPECT_EQ(EmfWith(42, EmrRectangle(-static_cast<int32_t>(limit), 0, static_cast<int32_t>(limit), 5)),
              kAccepted);
    EXPECT_EQ(EmfWith(42, EmrRectangle(0, 0, static_cast<int32_t>(limit) + 1, 5)), kContent);
    EXPECT_EQ(EmfWith(43, EmrRectangle(0, 0, static_cast<int32_t>(limit) * 100, 5)), kAccepted)
        << "rectangles are clipped, not traced";
    EXPECT_EQ(EmfWith(44, Words32({0, 0, 10, 10, 5, limit + 1})), kContent) << "a rounded corner";
    EXPECT_EQ(EmfWith(45, Words32({0, 0, 10, 10, 0, 0, 0x7FFFFFFF, 0})), kContent) << "an arc's end point";
    EXPECT_EQ(EmfWith(41, Words32({5, 5, limit, 0, 0})), kAccepted);
    EXPECT_EQ(EmfWith(41, Words32({5, 5, limit + 1, 0, 0})), kContent) << "an angle arc's radius";
}

TEST(EnhancedMetafileCheck, PalettesStayInsideTheRecord) {
    Bytes palette = Words32({1});
    Put16(palette, 0x300);
    Put16(palette, 2);
    Put32(palette, 0x00112233);
    Put32(palette, 0x00445566);
    EXPECT_EQ(EmfWith(49, palette), kAccepted);
    Set16(palette, 6, 3);
    EXPECT_EQ(EmfWith(49, palette), kContent);
    EXPECT_EQ(EmfWith(50, Words32({1, 0, 2, 1, 2})), kAccepted);
    EXPECT_EQ(EmfWith(50, Words32({1, 0, 3, 1, 2})), kContent);
    EXPECT_EQ(EmfWith(51, Words32({1, 16})), kAccepted);
    EXPECT_EQ(EmfWith(51, Words32({1, 0x7FFFFFFF})), kContent);
}

TEST(EnhancedMetafileCheck, BitmapsMustBeWholeInsideTheRecord) {
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(MakeDib(4, 3, 24))), kAccepted);
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(MakeDib(4, -3, 32))), kAccepted) << "top-down";
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(MakeDib(5, 5, 1))), kAccepted);
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(MakeDib(3, 3, 4, 2), 1)), kAccepted) << "palette indices";
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(MakeDib(3, 3, 8, 3, 0, 0, true))), kAccepted) << "core header";

    // Fewer bits than the header implies: cbBits is believed, the bits are not.
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(MakeDib(4, 3, 24), 0, 8)), kContent);
    Dib shortTable = MakeDib(4, 3, 8);
    shortTable.info.resize(40 + 100);
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(shortTable)), kContent) << "colour table cut";
    Dib badHeader = MakeDib(4, 3, 24);
    Set32(badHeader.info, 0, 41);
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(badHeader)), kContent);
    Dib badDepth = MakeDib(4, 3, 24);
    Set16(badDepth.info, 14, 7);
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(badDepth)), kContent);
    Dib jpeg = MakeDib(4, 3, 24, 4, 4, 16);
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(jpeg)), kContent) << "compressed formats are not played";
    Dib huge = MakeDib(4, 3, 24);
    Set32(huge.info, 4, 100000);
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(huge)), kContent) << "a bitmap GDI would allocate whole";
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(MakeDib(4, 3, 8), 2)), kContent) << "no such colour use";

    // Run-length bitmaps carry their size, which must be inside cbBits.
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(MakeDib(8, 8, 8, 4, 1, 12))), kAccepted);
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(MakeDib(8, 8, 8, 4, 1, 12), 0, 10)), kContent);
    EXPECT_EQ(EmfWith(81, EmrStretchDiBits(MakeDib(8, -8, 8, 4, 1, 12))), kContent) << "top-down RLE";
}

TEST(EnhancedMetafileCheck, TransferRectanglesStayWithinBounds) {
    Bytes source = EmrStretchDiBits(MakeDib(4, 3, 24));
    EXPECT_EQ(EmfWith(81, source), kAccepted);
    Set32(source, 32, 0x7FFFFFFF);  // cxSrc
    EXPECT_EQ(EmfWith(81, source), kContent) << "a source far wider than any bitmap";
    Bytes target = EmrStretchDiBits(MakeDib(4, 3, 24));
    Set32(target, 64, (1u << 20) + 1);  // cxDest
    EXPECT_EQ(EmfWith(81, target), kContent);
    Set32(target, 64, 1u << 20);
    EXPECT_EQ(EmfWith(81, target), kAccepted);
    const Bytes patBlt = Concat(
        {Words32({0, 0, 10, 10, 0, 0, 10, 10, 0x00F00021, 0, 0}), Bytes(24, 0), Words32({0, 0, 0, 0, 0, 0})});
    Bytes farTarget = patBlt;
    Set32(farTarget, 16, static_cast<uint32_t>(-(1 << 21)));  // xDest
    EXPECT_EQ(EmfWith(76, farTarget), kContent);
    Bytes farSource = patBlt;
    Set32(farSource, 40, 20000);  // ySrc
    EXPECT_EQ(EmfWith(76, farSource), kContent);
}

TEST(EnhancedMetafileCheck, BitBlockTransfersMayGoWithoutABitmap) {
    // BITBLT as a pattern fill: no bitmap offsets at all.
    const Bytes patBlt = Concat(
        {Words32({0, 0, 10, 10, 0, 0, 10, 10, 0x00F00021, 0, 0}), Bytes(24, 0), Words32({0, 0, 0, 0, 0, 0})});
    EXPECT_EQ(EmfWith(76, patBlt), kAccepted);
    Bytes halfBitmap = patBlt;
    Set32(halfBitmap, 76, 100);  // offBmiSrc without a size
    EXPECT_EQ(EmfWith(76, halfBitmap), kContent);
}

TEST(EnhancedMetafileCheck, AlphaBlendBitsMustMatchTheirBitmap) {
    const Dib dib = MakeDib(2, 2, 32);
    auto record = [&](uint32_t cbBits) {
        const uint32_t offBmi = 108;
        const uint32_t offBits = offBmi + static_cast<uint32_t>(dib.info.size());
        Bytes body =
            Concat({Words32({0, 0, 10, 10, 0, 0, 2, 2, 0x00FF0000, 0, 0}), Bytes(24, 0),
                    Words32({0, 0, offBmi, static_cast<uint32_t>(dib.info.size()), offBits, cbBits, 2, 2}),
                    dib.info, dib.bits, Bytes(16, 0)});
        return body;
    };
    EXPECT_EQ(EmfWith(114, record(16)), kAccepted);
    EXPECT_EQ(EmfWith(114, record(32)), kContent) << "more bits than the section holds";
}

TEST(EnhancedMetafileCheck, TextAndSpacingStayInsideTheRecord) {
    EXPECT_EQ(EmfWith(84, EmrExtTextOutW("Hello", true)), kAccepted);
    EXPECT_EQ(EmfWith(84, EmrExtTextOutW("Hello", false)), kAccepted);
    EXPECT_EQ(EmfWith(84, EmrExtTextOutW("Hello", false, 40)), kContent);
    EXPECT_EQ(EmfWith(84, EmrExtTextOutW("Hello", true, 7)), kContent) << "spacing for more characters";
    Bytes pdy = EmrExtTextOutW("Hello", true);
    Set32(pdy, 44, 0x2000);  // ETO_PDY: two values a character
    EXPECT_EQ(EmfWith(84, pdy), kContent);
    Bytes ansi = EmrExtTextOutW("Hello", false);
    EXPECT_EQ(EmfWith(83, ansi), kAccepted);
}

TEST(EnhancedMetafileCheck, RegionsStayInsideTheRecord) {
    const Bytes region = Concat(
        {Words32({32, 1, 2, 32}), Words32({0, 0, 10, 10}), Words32({0, 0, 5, 5}), Words32({5, 5, 10, 10})});
    EXPECT_EQ(EmfWith(75, Concat({Words32({static_cast<uint32_t>(region.size()), 1}), region})), kAccepted);
    EXPECT_EQ(EmfWith(75, Words32({0, 5})), kAccepted) << "RGN_COPY with no region resets the clip";
    EXPECT_EQ(EmfWith(75, Words32({0, 1})), kContent) << "RGN_AND needs a region";
    Bytes tooMany = region;
    Set32(tooMany, 8, 3);
    EXPECT_EQ(EmfWith(75, Concat({Words32({static_cast<uint32_t>(region.size()), 1}), tooMany})), kContent);
    Bytes notRectangles = region;
    Set32(notRectangles, 4, 2);
    EXPECT_EQ(EmfWith(75, Concat({Words32({static_cast<uint32_t>(region.size()), 1}), notRectangles})),
              kContent);
    EXPECT_EQ(EmfWith(75, Concat({Words32({500, 1}), region})), kContent)
        << "declared size beyond the record";
    // FILLRGN: bounds, size, brush, region.
    const Bytes fill = Concat({Words32({0, 0, 10, 10, static_cast<uint32_t>(region.size()), 2}), region});
    EXPECT_EQ(EmfWith(71, fill), kAccepted);
    Bytes badBrush = fill;
    Set32(badBrush, 20, 9);
    EXPECT_EQ(EmfWith(71, badBrush), kContent);
}

TEST(EnhancedMetafileCheck, GradientMeshIndicesNameVertices) {
    Bytes gradient = Words32({0, 0, 10, 10, 2, 1, 0});  // two vertices, one rectangle, horizontal
    for (int i = 0; i < 2; ++i) gradient = Concat({gradient, Words32({0, 0, 0, 0})});
    gradient = Concat({gradient, Words32({0, 1})});
    EXPECT_EQ(EmfWith(118, gradient), kAccepted);
    Bytes badIndex = gradient;
    Set32(badIndex, static_cast<size_t>(28 + 32 + 4), 2);
    EXPECT_EQ(EmfWith(118, badIndex), kContent);
    Bytes badMode = gradient;
    Set32(badMode, 24, 3);
    EXPECT_EQ(EmfWith(118, badMode), kContent);
}

TEST(EnhancedMetafileCheck, EveryCutOfAMetafileIsRefused) {
    const Bytes emf = SampleEmf();
    for (size_t size = 0; size < emf.size(); ++size) {
        const Bytes cut(emf.begin(), emf.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(CheckEnhancedMetafile(cut.data(), cut.size()).Accepted()) << size;
    }
}

// ---- Windows metafiles ----------------------------------------------------------

TEST(WindowsMetafileCheck, HeaderAndEndRecordAlone) {
    const Bytes wmf = WmfBuilder().Finish();
    const MetafileCheckResult result = CheckMetafile(wmf.data(), wmf.size());
    EXPECT_EQ(result.status, kAccepted);
    EXPECT_EQ(result.kind, MetafileKind::kWindows);
    EXPECT_EQ(result.recordCount, 1u);
}

TEST(WindowsMetafileCheck, TypicalDrawingIsAccepted) {
    const Bytes wmf = SampleWmf();
    const MetafileCheckResult result = CheckWindowsMetafile(wmf.data(), wmf.size());
    EXPECT_EQ(result.status, kAccepted) << thumbnails::DescribeMetafileCheckStatus(result.status) << " at "
                                        << result.failingOffset << " function " << result.failingRecord;
    EXPECT_EQ(result.recordCount, 14u);
}

TEST(WindowsMetafileCheck, HeaderFaults) {
    const Bytes good = SampleWmf();
    auto with16 = [&](size_t at, uint32_t value) {
        Bytes b = good;
        Set16(b, at, value);
        return CheckWindowsMetafile(b.data(), b.size()).status;
    };
    EXPECT_EQ(with16(0, 2), MetafileCheckStatus::kBadHeader) << "a disk metafile names another file";
    EXPECT_EQ(with16(0, 3), MetafileCheckStatus::kBadHeader);
    EXPECT_EQ(with16(2, 10), MetafileCheckStatus::kBadHeader) << "header size";
    EXPECT_EQ(with16(4, 0x0200), MetafileCheckStatus::kBadHeader) << "version";
    EXPECT_EQ(with16(4, 0x0100), kAccepted) << "the old version";
    Bytes sizeBeyond = good;
    Set32(sizeBeyond, 6, static_cast<uint32_t>(good.size() / 2 + 1));
    EXPECT_EQ(Status(sizeBeyond), MetafileCheckStatus::kBadHeader);
    Bytes smallLargest = good;
    Set32(smallLargest, 12, 8);
    EXPECT_EQ(Status(smallLargest), kRecordSize) << "a record above the header's largest";
    EXPECT_EQ(Status(Bytes(good.begin(), good.begin() + 17)), MetafileCheckStatus::kBadHeader);
}

TEST(WindowsMetafileCheck, RecordSizesInWords) {
    WmfBuilder tooSmall;
    tooSmall.Raw(Concat({Words32({2}), Bytes{0x1E, 0}}));
    EXPECT_EQ(Status(tooSmall.Finish()), kRecordSize);
    WmfBuilder beyond;
    beyond.Raw(Concat({Words32({400}), Bytes{0x1B, 0x04, 1, 0, 2, 0, 3, 0, 4, 0}}));
    EXPECT_EQ(Status(beyond.Finish()), kRecordSize);
    EXPECT_EQ(WmfWith(0x041B, {1, 2, 3}), kRecordSize) << "RECTANGLE with three coordinates";
}

TEST(WindowsMetafileCheck, EndRecordMustBeLastAndWhole) {
    EXPECT_EQ(Status(WmfBuilder().Record(0x041B, {1, 2, 3, 4}).Finish(false)),
              MetafileCheckStatus::kMissingEndRecord);
    Bytes after = WmfBuilder().Finish();
    const Bytes extra = Concat({Words32({7}), Bytes{0x1B, 0x04, 1, 0, 2, 0, 3, 0, 4, 0}});
    after.insert(after.end(), extra.begin(), extra.end());
    Set32(after, 6, static_cast<uint32_t>(after.size() / 2));
    EXPECT_EQ(Status(after), MetafileCheckStatus::kMissingEndRecord);
    WmfBuilder longEnd;
    longEnd.Raw(Concat({Words32({4}), Bytes{0, 0, 0, 0}}));
    EXPECT_EQ(Status(longEnd.Finish(false)), kRecordSize);
}

TEST(WindowsMetafileCheck, EscapeIsRefused) {
    EXPECT_EQ(WmfWith(0x0626, {15, 4, 0, 0}), MetafileCheckStatus::kEscapeRecord);
}

TEST(WindowsMetafileCheck, RecordsNotPlayedHereAreRefused) {
    for (uint32_t function : {0x0922u, 0x0B23u, 0x01F9u, 0x062Fu, 0x014Du, 0x06FEu, 0x0777u}) {
        EXPECT_EQ(WmfWith(function, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
                  MetafileCheckStatus::kUnsupportedRecord)
            << function;
    }
}

TEST(WindowsMetafileCheck, ObjectIndicesStayInsideTheTable) {
    EXPECT_EQ(WmfWith(0x012D, {2}, 3), kAccepted);
    EXPECT_EQ(WmfWith(0x012D, {3}, 3), kContent);
    EXPECT_EQ(WmfWith(0x01F0, {3}, 3), kContent);
    EXPECT_EQ(WmfWith(0x012D, {0}, 0), kContent) << "no table at all";
    EXPECT_EQ(WmfWith(0x012C, {0}, 0), kAccepted) << "clip region 0 is none";
    EXPECT_EQ(WmfWith(0x0228, {1, 2}, 3), kAccepted);
    EXPECT_EQ(WmfWith(0x0228, {1, 3}, 3), kContent);
    EXPECT_EQ(WmfWith(0x0429, {4, 4, 1, 2}, 3), kAccepted) << "FRAMEREGION: sizes are no indices";
    EXPECT_EQ(WmfWith(0x0429, {1, 1, 1, 9}, 3), kContent);
    // SELECTPALETTE: the word behind a one-parameter record is the end
    // record's size, 3, which a player may take for the index.
    EXPECT_EQ(WmfWith(0x0234, {1}, 4), kAccepted);
    EXPECT_EQ(WmfWith(0x0234, {1}, 3), kContent);
}

TEST(WindowsMetafileCheck, ScaleFactorsStayWithinBounds) {
    EXPECT_EQ(WmfWith(0x0412, {1, 1024, 1, 1024}), kAccepted);
    EXPECT_EQ(WmfWith(0x0412, {1, 1025, 1, 1}), kContent);
    EXPECT_EQ(WmfWith(0x0410, {1, 1, static_cast<uint32_t>(-2000) & 0xFFFF, 1}), kContent);
    EXPECT_EQ(WmfWith(0x0410, {1, 2, 3}), kRecordSize);
}

TEST(WindowsMetafileCheck, BrushesMayNotCarryPointers) {
    EXPECT_EQ(WmfWith(0x02FC, {0, 0xFF, 0, 0}), kAccepted);
    EXPECT_EQ(WmfWith(0x02FC, {2, 0xFF, 0, 3}), kAccepted);
    EXPECT_EQ(WmfWith(0x02FC, {2, 0xFF, 0, 6}), kContent);
    EXPECT_EQ(WmfWith(0x02FC, {5, 0xFF, 0, 0x1234}), kContent);
    EXPECT_EQ(WmfWith(0x02FC, {6, 0xFF, 0, 0x1234}), kContent);
}

TEST(WindowsMetafileCheck, CountsStayInsideTheRecord) {
    EXPECT_EQ(WmfWith(0x0324, {2, 0, 0, 5, 5}), kAccepted);
    EXPECT_EQ(WmfWith(0x0324, {3, 0, 0, 5, 5}), kContent);
    EXPECT_EQ(WmfWith(0x0325, {0xFFFF, 0, 0}), kContent);
    EXPECT_EQ(WmfWith(0x0538, {2, 2, 1, 0, 0, 1, 1, 2, 2}), kAccepted);
    EXPECT_EQ(WmfWith(0x0538, {2, 2, 2, 0, 0, 1, 1, 2, 2}), kContent);
    EXPECT_EQ(WmfWith(0x0538, {1, 0x8001, 0, 0}), kContent) << "a count read as negative";
    EXPECT_EQ(WmfWith(0x00F7, {0x300, 2, 1, 2, 3, 4}), kAccepted);
    EXPECT_EQ(WmfWith(0x00F7, {0x300, 3, 1, 2, 3, 4}), kContent);
    EXPECT_EQ(WmfWith(0x0037, {0, 1, 1, 2}), kAccepted);
    EXPECT_EQ(WmfWith(0x0037, {0, 2, 1, 2}), kContent);
}

TEST(WindowsMetafileCheck, TextStaysInsideTheRecord) {
    EXPECT_EQ(WmfWith(0x0521, {3, 0x4241, 0x43, 10, 20}), kAccepted);
    EXPECT_EQ(WmfWith(0x0521, {4, 0x4241, 0x43, 10}), kContent);
    EXPECT_EQ(WmfWith(0x0521, {0x8000, 0, 0, 0}), kContent) << "a length read as negative";
    // EXTTEXTOUT: y, x, length, options, [rectangle], text, [spacing].
    EXPECT_EQ(WmfWith(0x0A32, {10, 20, 2, 0, 0x4241}), kAccepted);
    EXPECT_EQ(WmfWith(0x0A32, {10, 20, 2, 0, 0x4241, 5, 5}), kAccepted) << "with spacing";
    EXPECT_EQ(WmfWith(0x0A32, {10, 20, 2, 4, 0x4241}), kContent) << "ETO_CLIPPED needs a rectangle";
    EXPECT_EQ(WmfWith(0x0A32, {10, 20, 2, 4, 0, 0, 9, 9, 0x4241}), kAccepted);
    EXPECT_EQ(WmfWith(0x0A32, {10, 20, 9, 0, 0x4241}), kContent);
}

TEST(WindowsMetafileCheck, FontFaceNameIsReadWhole) {
    Bytes font;
    for (int i = 0; i < 9; ++i) Put16(font, 0);
    for (char c : std::string("Arial")) font.push_back(static_cast<uint8_t>(c));
    font.push_back(0);
    // A short face name is fine where 32 bytes follow it anyway...
    EXPECT_EQ(Status(WmfBuilder()
                         .RecordBytes(0x02FB, font)
                         .Record(0x041B, {1, 2, 3, 4})
                         .Record(0x041B, {1, 2, 3, 4})
                         .Record(0x041B, {1, 2, 3, 4})
                         .Finish()),
              kAccepted);
    // ...but not as the last record, where they would run past the data.
    EXPECT_EQ(WmfWithBytes(0x02FB, font), kContent);
    font.resize(18 + 32, 0);
    EXPECT_EQ(WmfWithBytes(0x02FB, font), kAccepted);
}

TEST(WindowsMetafileCheck, RegionBandsStayInsideTheRecord) {
    // Region: 11 words of header (band count at 5), then bands of
    // count, top, bottom, count x values, count.
    const std::initializer_list<uint32_t> good = {0, 6, 0, 0, 0, 1, 2, 0, 0, 10, 10, 2, 0, 10, 0, 10, 2};
    EXPECT_EQ(WmfWith(0x06FF, good), kAccepted);
    EXPECT_EQ(WmfWith(0x06FF, {0, 6, 0, 0, 0, 2, 2, 0, 0, 10, 10, 2, 0, 10, 0, 10, 2}), kContent)
        << "two bands";
    EXPECT_EQ(WmfWith(0x06FF, {0, 6, 0, 0, 0, 1, 2, 0, 0, 10, 10, 2, 0, 10, 0, 10, 4}), kContent)
        << "closing count differs";
    EXPECT_EQ(WmfWith(0x06FF, {0, 6, 0, 0, 0, 1, 2, 0, 0, 10, 10, 3, 0, 10, 0, 10, 3}), kContent)
        << "odd count";
    EXPECT_EQ(WmfWith(0x06FF, {0, 6, 0, 0, 0, 1, 2, 0, 0, 10}), kRecordSize);
}

TEST(WindowsMetafileCheck, BitmapsMustBeWholeInsideTheRecord) {
    const Dib dib = MakeDib(4, 3, 24);
    EXPECT_EQ(WmfWithBytes(0x0B41, WmfDibParams({0x20, 0xCC, 3, 4, 0, 0, 3, 4, 0, 0}, dib)), kAccepted);
    EXPECT_EQ(WmfWithBytes(0x0B41, WmfDibParams({0x20, 0xCC, 3, 4, 0, 0, 3, 4, 0, 0}, dib, 2)), kContent);
    EXPECT_EQ(WmfWith(0x0B41, {0x20, 0xCC, 3, 4, 0, 0, 3, 4, 0, 0, 0}), kRecordSize)
        << "the form without a bitmap is read as one by players";
    EXPECT_EQ(WmfWithBytes(0x0940, WmfDibParams({0x20, 0xCC, 0, 0, 3, 4, 0, 0}, dib)), kAccepted);
    EXPECT_EQ(WmfWith(0x0940, {0x21, 0xF0, 0, 0, 0, 3, 4, 0, 0}), kAccepted) << "DIBBITBLT as a pattern fill";
    EXPECT_EQ(WmfWithBytes(0x0F43, WmfDibParams({0x20, 0xCC, 0, 3, 4, 0, 0, 3, 4, 0, 0}, dib)), kAccepted);
    EXPECT_EQ(WmfWithBytes(0x0F43, WmfDibParams({0x20, 0xCC, 7, 3, 4, 0, 0, 3, 4, 0, 0}, dib)), kContent)
        << "no such colour use";
    const Dib indices = MakeDib(4, 3, 8, 2);
    EXPECT_EQ(WmfWithBytes(0x0D33, WmfDibParams({1, 3, 0, 0, 0, 3, 4, 0, 0}, indices)), kAccepted);
    EXPECT_EQ(WmfWithBytes(0x0D33, WmfDibParams({0, 3, 0, 0, 0, 3, 4, 0, 0}, indices)), kContent)
        << "RGB entries make the table longer than the record";
    EXPECT_EQ(WmfWithBytes(0x0142, WmfDibParams({5, 0}, MakeDib(8, 8, 1))), kAccepted);
    Dib badPlanes = MakeDib(8, 8, 1);
    Set16(badPlanes.info, 12, 2);
    EXPECT_EQ(WmfWithBytes(0x0142, WmfDibParams({5, 0}, badPlanes)), kContent);
}

TEST(WindowsMetafileCheck, EveryCutOfAMetafileIsRefused) {
    const Bytes wmf = SampleWmf();
    for (size_t size = 0; size < wmf.size(); ++size) {
        Bytes cut(wmf.begin(), wmf.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(CheckWindowsMetafile(cut.data(), cut.size()).Accepted()) << size;
        // Also with the header's size made to agree with the cut.
        if (cut.size() >= 18) {
            Set32(cut, 6, static_cast<uint32_t>(cut.size() / 2));
            EXPECT_FALSE(CheckWindowsMetafile(cut.data(), cut.size()).Accepted()) << size;
        }
    }
}

// ---- Placeable metafiles -----------------------------------------------------------

TEST(PlaceableMetafileCheck, HeaderKeyAndChecksum) {
    const Bytes placeable = Placeable(SampleWmf());
    const MetafileCheckResult result = CheckMetafile(placeable.data(), placeable.size());
    EXPECT_EQ(result.status, kAccepted);
    EXPECT_EQ(result.kind, MetafileKind::kPlaceable);

    Bytes wrongChecksum = placeable;
    wrongChecksum[20] ^= 1;
    EXPECT_EQ(Status(wrongChecksum), MetafileCheckStatus::kBadChecksum);
    Bytes changedBox = placeable;
    changedBox[10] ^= 1;
    EXPECT_EQ(Status(changedBox), MetafileCheckStatus::kBadChecksum) << "the checksum covers the box";
    Bytes wrongKey = placeable;
    wrongKey[0] ^= 1;
    EXPECT_EQ(Status(wrongKey), MetafileCheckStatus::kUnknownFormat);
    EXPECT_EQ(CheckPlaceableMetafile(wrongKey.data(), wrongKey.size()).status,
              MetafileCheckStatus::kBadHeader);
}

TEST(PlaceableMetafileCheck, TheMetafileBehindIsCheckedToo) {
    const Bytes headerOnly = Placeable(Bytes());
    EXPECT_EQ(headerOnly.size(), thumbnails::kPlaceableHeaderBytes);
    EXPECT_EQ(Status(headerOnly), MetafileCheckStatus::kBadHeader);
    Bytes escape = Placeable(WmfBuilder().Record(0x0626, {15, 0}).Finish());
    EXPECT_EQ(Status(escape), MetafileCheckStatus::kEscapeRecord);
    const Bytes wmf = SampleWmf();
    const Bytes cut = Placeable(Bytes(wmf.begin(), wmf.begin() + 40));
    EXPECT_FALSE(CheckMetafile(cut.data(), cut.size()).Accepted());
}

// ---- Anything ---------------------------------------------------------------------

TEST(MetafileCheck, NothingAndNonsenseAreUnknown) {
    EXPECT_EQ(CheckMetafile(nullptr, 0).status, MetafileCheckStatus::kUnknownFormat);
    EXPECT_EQ(CheckMetafile(nullptr, 100).status, MetafileCheckStatus::kUnknownFormat) << "null with a size";
    const Bytes text = {'h', 'e', 'l', 'l', 'o', ' ', 'w', 'o', 'r', 'l', 'd'};
    EXPECT_EQ(Status(text), MetafileCheckStatus::kUnknownFormat);
    EXPECT_EQ(CheckEnhancedMetafile(nullptr, 0).status, MetafileCheckStatus::kBadHeader);
    EXPECT_EQ(CheckWindowsMetafile(nullptr, 0).status, MetafileCheckStatus::kBadHeader);
    EXPECT_EQ(CheckPlaceableMetafile(nullptr, 0).status, MetafileCheckStatus::kBadHeader);
}

TEST(MetafileCheck, FailuresTellWhereAndWhat) {
    const Bytes emf = EmfBuilder().Record(43, EmrRectangle(0, 0, 1, 1)).Record(106, Words32({0, 0})).Finish();
    const MetafileCheckResult result = CheckMetafile(emf.data(), emf.size());
    EXPECT_EQ(result.status, MetafileCheckStatus::kEscapeRecord);
    EXPECT_EQ(result.failingRecord, 106u);
    EXPECT_EQ(result.failingOffset, 88u + 24u);
    EXPECT_STREQ(thumbnails::DescribeMetafileCheckStatus(result.status), "escape record");
}
