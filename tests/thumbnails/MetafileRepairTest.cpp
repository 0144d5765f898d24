// The repair of Windows metafiles as writers leave them: the walk up to the
// smaller of the header's size and the data, escapes dropped, the header
// rewritten, an end record added; and what stays refused. Also over the
// metafiles libuemf writes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MetafileBuilder.h"
#include "thumbnails/MetafileCheck.h"
#include "thumbnails/MetafileRepair.h"

namespace {

using metafilebuilder::Bytes;
using metafilebuilder::Get16;
using metafilebuilder::Get32;
using metafilebuilder::Set16;
using metafilebuilder::Set32;
using metafilebuilder::WmfBuilder;
using thumbnails::MetafileCheckResult;
using thumbnails::MetafileCheckStatus;
using thumbnails::RepairWindowsMetafile;

struct Repaired {
    MetafileCheckResult result;
    Bytes bytes;
};

Repaired Repair(const Bytes& in) {
    Repaired r;
    r.result = RepairWindowsMetafile(in.empty() ? nullptr : in.data(), in.size(), &r.bytes);
    return r;
}

std::vector<uint32_t> Functions(const Bytes& wmf) {
    std::vector<uint32_t> functions;
    for (size_t at = 18; at + 6 <= wmf.size();) {
        functions.push_back(Get16(wmf, at + 4));
        const uint32_t words = Get32(wmf, at);
        if (words < 3) break;
        at += 2 * words;
    }
    return functions;
}

// A drawing with two objects: a pen and a brush, selected, then a rectangle.
WmfBuilder Drawing(uint32_t objects = 2) {
    WmfBuilder b(objects);
    b.Record(0x02FA, {0, 1, 0, 0, 0})  // pen
        .Record(0x012D, {0})           // select it
        .Record(0x02FC, {0, 0x00FF, 0, 0})
        .Record(0x012D, {1})
        .Record(0x041B, {50, 60, 10, 20});  // rectangle
    return b;
}

const std::vector<uint32_t> kDrawing = {0x02FA, 0x012D, 0x02FC, 0x012D, 0x041B, 0};

TEST(MetafileRepair, AWellFormedMetafileComesBackAsItWas) {
    const Bytes wmf = Drawing().Finish();
    const Repaired r = Repair(wmf);
    ASSERT_TRUE(r.result.Accepted()) << thumbnails::DescribeMetafileCheckStatus(r.result.status);
    EXPECT_EQ(r.bytes, wmf);
    EXPECT_EQ(r.result.recordCount, 6u);
}

TEST(MetafileRepair, EscapesAreDropped) {
    const Bytes wmf = Drawing().Record(0x0626, {15, 4, 0x6968, 0x2121}).Record(0x0213, {5, 5}).Finish();
    ASSERT_EQ(thumbnails::CheckWindowsMetafile(wmf.data(), wmf.size()).status,
              MetafileCheckStatus::kEscapeRecord);
    const Repaired r = Repair(wmf);
    ASSERT_TRUE(r.result.Accepted());
    EXPECT_EQ(Functions(r.bytes), (std::vector<uint32_t>{0x02FA, 0x012D, 0x02FC, 0x012D, 0x041B, 0x0213, 0}));
    EXPECT_EQ(Get32(r.bytes, 6), r.bytes.size() / 2) << "the size without the escape";
}

TEST(MetafileRepair, TheSmallerOfTheHeaderSizeAndTheDataIsWalked) {
    const Bytes wmf = Drawing().Finish();
    // The whole file's size, a placeable header included.
    Bytes larger = wmf;
    Set32(larger, 6, Get32(wmf, 6) + 11);
    Repaired r = Repair(larger);
    ASSERT_TRUE(r.result.Accepted());
    EXPECT_EQ(r.bytes, wmf);
    // Bytes behind the end record, outside the header's size.
    Bytes trailing = wmf;
    trailing.insert(trailing.end(), 30, 0xAB);
    r = Repair(trailing);
    ASSERT_TRUE(r.result.Accepted());
    EXPECT_EQ(r.bytes, wmf);
    // The header's size ends on a record's end before the end record: the
    // records behind it are not played.
    Bytes shorter = wmf;
    Set32(shorter, 6, static_cast<uint32_t>((wmf.size() - 6 - 14) / 2));  // without rectangle and end
    r = Repair(shorter);
    ASSERT_TRUE(r.result.Accepted());
    EXPECT_EQ(Functions(r.bytes), (std::vector<uint32_t>{0x02FA, 0x012D, 0x02FC, 0x012D, 0}));
    // A size that leaves no room for one record is no size.
    Bytes nonsense = wmf;
    Set32(nonsense, 6, 2);
    r = Repair(nonsense);
    ASSERT_TRUE(r.result.Accepted());
    EXPECT_EQ(r.bytes, wmf);
}

TEST(MetafileRepair, DataEndingOnARecordsEndGetsItsEndRecord) {
    const Bytes wmf = Drawing().Finish();
    Bytes noEnd = Drawing().Finish(false);
    Repaired r = Repair(noEnd);
    ASSERT_TRUE(r.result.Accepted());
    EXPECT_EQ(r.bytes, wmf);
    // The header still counting the end record.
    Bytes counted = Bytes(wmf.begin(), wmf.end() - 6);
    r = Repair(counted);
    ASSERT_TRUE(r.result.Accepted());
    EXPECT_EQ(r.bytes, wmf);
    // A header and nothing else is not a metafile.
    EXPECT_EQ(Repair(Bytes(wmf.begin(), wmf.begin() + 18)).result.status,
              MetafileCheckStatus::kBadRecordSize);
}

TEST(MetafileRepair, TheHeaderIsWrittenAnew) {
    Bytes wmf = Drawing(0).Finish();  // an object table counted as empty
    Set32(wmf, 12, 3);                // a largest record too small
    Set16(wmf, 0, 2);                 // the disk kind
    Set16(wmf, 4, 0x100);
    const Repaired r = Repair(wmf);
    ASSERT_TRUE(r.result.Accepted()) << thumbnails::DescribeMetafileCheckStatus(r.result.status);
    EXPECT_EQ(Get16(r.bytes, 0), 1u) << "in memory";
    EXPECT_EQ(Get16(r.bytes, 4), 0x300u);
    EXPECT_EQ(Get16(r.bytes, 10), 2u) << "room for both objects";
    EXPECT_EQ(Get32(r.bytes, 12), 8u) << "the pen record's words";
    EXPECT_EQ(Functions(r.bytes), kDrawing);
    // A larger count stays.
    const Repaired larger = Repair(Drawing(9).Finish());
    EXPECT_EQ(Get16(larger.bytes, 10), 9u);
}

TEST(MetafileRepair, ObjectsTakeTheFirstFreeSlot) {
    // Pen in 0, brush in 1; the pen is deleted and a font takes slot 0 again,
    // a brush then slot 2: three slots, not four.
    const Bytes wmf = WmfBuilder(1)
                          .Record(0x02FA, {0, 1, 0, 0, 0})
                          .Record(0x02FC, {0, 0, 0, 0})
                          .Record(0x01F0, {0})
                          .RecordBytes(0x02FB, Bytes(18 + 32, 0))
                          .Record(0x02FC, {1, 0, 0, 0})
                          .Record(0x012D, {2})
                          .Finish();
    const Repaired r = Repair(wmf);
    ASSERT_TRUE(r.result.Accepted()) << thumbnails::DescribeMetafileCheckStatus(r.result.status);
    EXPECT_EQ(Get16(r.bytes, 10), 3u);
}

TEST(MetafileRepair, WhatCannotBePlayedSafelyStaysRefused) {
    const Bytes wmf = Drawing().Finish();
    auto status = [](const Bytes& b) { return Repair(b).result.status; };
    EXPECT_EQ(status(Bytes(wmf.begin(), wmf.end() - 4)), MetafileCheckStatus::kBadRecordSize)
        << "ends inside a record";
    Bytes shortRecord = wmf;
    Set32(shortRecord, 18, 2);
    EXPECT_EQ(status(shortRecord), MetafileCheckStatus::kBadRecordSize);
    Bytes longRecord = wmf;
    Set32(longRecord, 18, 0x10000);
    EXPECT_EQ(status(longRecord), MetafileCheckStatus::kBadRecordSize);
    Bytes sizeInARecord = wmf;
    Set32(sizeInARecord, 6, 9 + 4);
    EXPECT_EQ(status(sizeInARecord), MetafileCheckStatus::kBadRecordSize);
    // The content of a record is the check's to judge.
    const Bytes badPolygon = WmfBuilder(0).Record(0x0324, {40, 0, 0}).Finish();
    EXPECT_EQ(status(badPolygon), MetafileCheckStatus::kBadRecordContent);
    Bytes badHeader = wmf;
    Set16(badHeader, 2, 8);
    EXPECT_EQ(status(badHeader), MetafileCheckStatus::kBadHeader);
    EXPECT_EQ(status(Bytes()), MetafileCheckStatus::kBadHeader);
    Bytes out(5, 1);
    EXPECT_FALSE(RepairWindowsMetafile(wmf.data(), 0, &out).Accepted());
    EXPECT_TRUE(out.empty()) << "nothing is left behind on refusal";
}

// ---- libuemf's metafiles ------------------------------------------------------------

struct CorpusFile {
    const char* name;
    Bytes bytes;
};

const std::vector<CorpusFile> kUemf = {
#include "uemf_corpus.inc"
};

Bytes UemfBits(const std::string& name) {
    for (const CorpusFile& file : kUemf)
        if (name == file.name) return Bytes(file.bytes.begin() + 22, file.bytes.end());
    ADD_FAILURE() << name;
    return Bytes(18, 0);
}

TEST(MetafileRepair, LibuemfMetafilesPassAndKeepTheirDrawing) {
    const Bytes plain = UemfBits("uemf-wmf");
    const Bytes escaped = UemfBits("uemf-wmf-escape");
    const Repaired r = Repair(plain);
    ASSERT_TRUE(r.result.Accepted()) << thumbnails::DescribeMetafileCheckStatus(r.result.status);
    EXPECT_EQ(Functions(r.bytes), Functions(plain));
    const Repaired e = Repair(escaped);
    ASSERT_TRUE(e.result.Accepted()) << thumbnails::DescribeMetafileCheckStatus(e.result.status);
    EXPECT_EQ(e.bytes, r.bytes) << "the escape was all that differed";
    // As a writer that counts the placeable header in the size leaves it.
    Bytes larger = escaped;
    Set32(larger, 6, Get32(larger, 6) + 11);
    EXPECT_EQ(Repair(larger).bytes, r.bytes);
}

}  // namespace
