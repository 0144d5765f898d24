// The structure check on metafiles made by GDI itself: accepted as made,
// refused once damaged.
#include <gtest/gtest.h>

#include <cstring>

#include "TestPictures.h"
#include "thumbnails/MetafileCheck.h"

using testpictures::Bytes;
using thumbnails::CheckMetafile;
using thumbnails::MetafileCheckResult;
using thumbnails::MetafileCheckStatus;
using thumbnails::MetafileKind;

namespace {

std::string Describe(const MetafileCheckResult& result) {
    return std::string(thumbnails::DescribeMetafileCheckStatus(result.status)) + " at " +
           std::to_string(result.failingOffset) + ", record " + std::to_string(result.failingRecord);
}

uint32_t Get32(const Bytes& b, size_t at) {
    uint32_t v;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}
void Set32(Bytes& b, size_t at, uint32_t v) {
    std::memcpy(b.data() + at, &v, 4);
}

// Offsets of the records of an enhanced metafile, header first.
std::vector<size_t> EmfRecords(const Bytes& emf) {
    std::vector<size_t> offsets;
    for (size_t at = 0; at + 8 <= emf.size();) {
        offsets.push_back(at);
        const uint32_t size = Get32(emf, at + 4);
        if (size == 0) break;
        at += size;
    }
    return offsets;
}

}  // namespace

TEST(MetafileCheckOnGdiMetafiles, EnhancedMetafilesAsMade) {
    const Bytes emf = testpictures::SampleEnhancedMetafileBits();
    ASSERT_FALSE(emf.empty());
    const MetafileCheckResult result = CheckMetafile(emf.data(), emf.size());
    EXPECT_EQ(result.kind, MetafileKind::kEnhanced);
    EXPECT_TRUE(result.Accepted()) << Describe(result);
    EXPECT_EQ(result.recordCount, Get32(emf, 52));
}

TEST(MetafileCheckOnGdiMetafiles, EnhancedMetafilesWithComments) {
    framework::win32::WindowDc screen(nullptr);
    const HDC dc = ::CreateEnhMetaFileA(screen.Get(), nullptr, nullptr, nullptr);
    ASSERT_NE(dc, nullptr);
    const char comment[] = "made by the thumbnail tests";
    ::GdiComment(dc, sizeof comment, reinterpret_cast<const BYTE*>(comment));
    ::Rectangle(dc, 0, 0, 50, 50);
    framework::win32::UniqueEnhMetaFile metafile(::CloseEnhMetaFile(dc));
    Bytes bits(::GetEnhMetaFileBits(metafile.Get(), 0, nullptr));
    ::GetEnhMetaFileBits(metafile.Get(), static_cast<UINT>(bits.size()), bits.data());
    const MetafileCheckResult result = CheckMetafile(bits.data(), bits.size());
    EXPECT_TRUE(result.Accepted()) << Describe(result);
}

TEST(MetafileCheckOnGdiMetafiles, DamagedEnhancedMetafilesAreRefused) {
    const Bytes emf = testpictures::SampleEnhancedMetafileBits();
    const std::vector<size_t> records = EmfRecords(emf);
    ASSERT_GT(records.size(), 4u);

    Bytes moreRecords = emf;
    Set32(moreRecords, 52, Get32(emf, 52) + 1);
    EXPECT_EQ(CheckMetafile(moreRecords.data(), moreRecords.size()).status,
              MetafileCheckStatus::kRecordCountMismatch);

    Bytes cut = emf;
    cut.resize(emf.size() - 4);
    EXPECT_FALSE(CheckMetafile(cut.data(), cut.size()).Accepted());

    // Every record made a word longer or shorter than it is.
    for (size_t i = 1; i < records.size(); ++i) {
        for (int delta : {-4, 4}) {
            Bytes damaged = emf;
            Set32(damaged, records[i] + 4, Get32(emf, records[i] + 4) + static_cast<uint32_t>(delta));
            EXPECT_FALSE(CheckMetafile(damaged.data(), damaged.size()).Accepted())
                << "record " << i << " of type " << Get32(emf, records[i]) << " by " << delta;
        }
    }

    // Every object index pointed past the table.
    const uint32_t handles = Get32(emf, 56) & 0xFFFF;
    int indexed = 0;
    for (size_t at : records) {
        const uint32_t type = Get32(emf, at);
        if (type == 37 /* SELECTOBJECT */ && (Get32(emf, at + 8) & 0x80000000u) != 0) continue;
        if (type != 37 && type != 38 && type != 39 && type != 40) continue;
        Bytes damaged = emf;
        Set32(damaged, at + 8, handles);
        EXPECT_EQ(CheckMetafile(damaged.data(), damaged.size()).status,
                  MetafileCheckStatus::kBadRecordContent)
            << "type " << type;
        ++indexed;
    }
    EXPECT_GE(indexed, 4) << "the sample makes, selects and deletes objects";
}

TEST(MetafileCheckOnGdiMetafiles, WindowsMetafilesAsMade) {
    const Bytes wmf = testpictures::SampleWindowsMetafileBits();
    ASSERT_FALSE(wmf.empty());
    const MetafileCheckResult result = CheckMetafile(wmf.data(), wmf.size());
    EXPECT_EQ(result.kind, MetafileKind::kWindows);
    EXPECT_TRUE(result.Accepted()) << Describe(result);

    const Bytes placeable = testpictures::WithPlaceableHeader(wmf, 400, 300, 96);
    const MetafileCheckResult placed = CheckMetafile(placeable.data(), placeable.size());
    EXPECT_EQ(placed.kind, MetafileKind::kPlaceable);
    EXPECT_TRUE(placed.Accepted()) << Describe(placed);
}

TEST(MetafileCheckOnGdiMetafiles, DamagedWindowsMetafilesAreRefused) {
    const Bytes wmf = testpictures::SampleWindowsMetafileBits();
    Bytes placeable = testpictures::WithPlaceableHeader(wmf, 400, 300, 96);
    placeable[14] ^= 0x40;  // the inch, under the checksum
    EXPECT_EQ(CheckMetafile(placeable.data(), placeable.size()).status, MetafileCheckStatus::kBadChecksum);

    // Every record made a word longer or shorter.
    size_t records = 0;
    for (size_t at = 18; at + 6 <= wmf.size(); ++records) {
        const uint32_t words = Get32(wmf, at);
        const uint32_t function = static_cast<uint32_t>(wmf[at + 4] | wmf[at + 5] << 8);
        for (int delta : {-1, 1}) {
            Bytes damaged = wmf;
            Set32(damaged, at, words + static_cast<uint32_t>(delta));
            EXPECT_FALSE(CheckMetafile(damaged.data(), damaged.size()).Accepted())
                << "record at " << at << ", function " << function << ", by " << delta;
        }
        if (words == 0) break;
        at += words * 2;
    }
    EXPECT_GT(records, 8u);
}

TEST(MetafileCheckOnGdiMetafiles, EscapesRecordedByGdiAreRefused) {
    const Bytes wmf = testpictures::SampleWindowsMetafileBits([](HDC dc) {
        const char data[2] = {0, 0};
        ::Escape(dc, 0x1234, sizeof data, data, nullptr);
    });
    ASSERT_FALSE(wmf.empty());
    EXPECT_EQ(CheckMetafile(wmf.data(), wmf.size()).status, MetafileCheckStatus::kEscapeRecord);
}
