// The .thm byte layout: writing, reading, and reading files of any length.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "thumbnails/ThmFile.h"

using thumbnails::EncodeThm;
using thumbnails::EncodeThmHeader;
using thumbnails::ReadThmContents;
using thumbnails::ThmContents;
using thumbnails::ThmMemorySource;
using thumbnails::ThmReadStatus;

namespace {

using Bytes = std::vector<uint8_t>;

ThmReadStatus Read(const Bytes& bytes, ThmContents& contents) {
    ThmMemorySource source(bytes.data(), bytes.size());
    return ReadThmContents(source, contents);
}

Bytes Length(uint32_t value) {
    return Bytes{static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8),
                 static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 24)};
}

Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

Bytes Text(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

// A source that claims more bytes than it has, like a file of gigabytes.
class ClaimingSource : public thumbnails::ThmByteSource {
public:
    ClaimingSource(Bytes bytes, uint64_t claimed) : bytes_(std::move(bytes)), claimed_(claimed) {}
    size_t Read(void* buffer, size_t count) override {
        const size_t n = std::min(count, bytes_.size() - position_);
        if (n != 0) std::memcpy(buffer, bytes_.data() + position_, n);
        position_ += n;
        reads_ += count;
        return n;
    }
    uint64_t Remaining() const override { return claimed_ - position_; }
    uint64_t reads_ = 0;

private:
    Bytes bytes_;
    uint64_t claimed_;
    size_t position_ = 0;
};

}  // namespace

TEST(ThmFile, LayoutByteForByte) {
    const Bytes image = {'B', 'M', 1, 2, 3};
    const Bytes thm = EncodeThm("c:\\pics\\a.bmp", "pics\\a.bmp", image.data(), image.size());
    const Bytes expected =
        Join({Length(13), Text("c:\\pics\\a.bmp"), Length(10), Text("pics\\a.bmp"), Length(5), image});
    EXPECT_EQ(thm, expected);
    EXPECT_EQ(EncodeThmHeader("c:\\pics\\a.bmp", "pics\\a.bmp", 5),
              Bytes(expected.begin(), expected.end() - 5));
}

TEST(ThmFile, EmptyTextsHaveZeroLengthsAndNoBytes) {
    const Bytes image = {9};
    EXPECT_EQ(EncodeThm("", "", image.data(), 1), Join({Length(0), Length(0), Length(1), image}));
    EXPECT_EQ(EncodeThm("", "", nullptr, 7), Join({Length(0), Length(0), Length(0)})) << "no image at all";
}

TEST(ThmFile, RoundTrip) {
    Bytes image(3000);
    for (size_t i = 0; i < image.size(); ++i) image[i] = static_cast<uint8_t>(i * 31);
    const Bytes thm = EncodeThm("C:\\Art\\Sea shore.jpg", "", image.data(), image.size());
    ThmContents contents;
    EXPECT_EQ(Read(thm, contents), ThmReadStatus::kComplete);
    EXPECT_TRUE(contents.pathRead);
    EXPECT_TRUE(contents.nameRead);
    EXPECT_EQ(contents.path, "C:\\Art\\Sea shore.jpg");
    EXPECT_EQ(contents.name, "");
    EXPECT_EQ(contents.image, image);
}

TEST(ThmFile, EmptyFileFailsAtThePathLength) {
    ThmContents contents;
    contents.path = "kept";
    EXPECT_EQ(Read(Bytes(), contents), ThmReadStatus::kShortPathLength);
    EXPECT_FALSE(contents.pathRead);
    EXPECT_EQ(contents.path, "kept");
    EXPECT_EQ(Read(Bytes{0, 0, 0}, contents), ThmReadStatus::kShortPathLength);
    ThmMemorySource nothing(nullptr, 12);
    EXPECT_EQ(ReadThmContents(nothing, contents), ThmReadStatus::kShortPathLength)
        << "null data has no bytes";
}

TEST(ThmFile, TwoZeroLengthsFailAtTheImageSizeWithBothTextsEmptied) {
    ThmContents contents;
    contents.path = "old path";
    contents.name = "old name";
    EXPECT_EQ(Read(Bytes(8, 0), contents), ThmReadStatus::kShortImageSize);
    EXPECT_TRUE(contents.pathRead);
    EXPECT_TRUE(contents.nameRead);
    EXPECT_EQ(contents.path, "");
    EXPECT_EQ(contents.name, "");
}

TEST(ThmFile, ShortFieldsStopTheReadWhereTheyAre) {
    const Bytes image = {1, 2, 3, 4};
    const Bytes thm = EncodeThm("path", "name", image.data(), image.size());
    const ThmReadStatus expected[] = {
        ThmReadStatus::kShortPathLength, ThmReadStatus::kShortPathLength, ThmReadStatus::kShortPathLength,
        ThmReadStatus::kShortPathLength, ThmReadStatus::kShortPath,       ThmReadStatus::kShortPath,
        ThmReadStatus::kShortPath,       ThmReadStatus::kShortPath,       ThmReadStatus::kShortNameLength,
        ThmReadStatus::kShortNameLength, ThmReadStatus::kShortNameLength, ThmReadStatus::kShortNameLength,
        ThmReadStatus::kShortName,       ThmReadStatus::kShortName,       ThmReadStatus::kShortName,
        ThmReadStatus::kShortName,       ThmReadStatus::kShortImageSize,  ThmReadStatus::kShortImageSize,
        ThmReadStatus::kShortImageSize,  ThmReadStatus::kShortImageSize,  ThmReadStatus::kShortImage,
        ThmReadStatus::kShortImage,      ThmReadStatus::kShortImage,      ThmReadStatus::kShortImage,
        ThmReadStatus::kComplete,
    };
    ASSERT_EQ(thm.size() + 1, sizeof expected / sizeof expected[0]);
    for (size_t size = 0; size <= thm.size(); ++size) {
        ThmContents contents;
        EXPECT_EQ(Read(Bytes(thm.begin(), thm.begin() + static_cast<std::ptrdiff_t>(size)), contents),
                  expected[size])
            << size;
        EXPECT_EQ(contents.pathRead, size >= 8) << size;
        EXPECT_EQ(contents.nameRead, size >= 16) << size;
        if (contents.pathRead) {
            EXPECT_EQ(contents.path, "path");
        }
        if (contents.nameRead) {
            EXPECT_EQ(contents.name, "name");
        }
    }
}

TEST(ThmFile, HugeLengthsFailWithoutAllocating) {
    ThmContents contents;
    EXPECT_EQ(Read(Join({Length(0xFFFFFFFF), Text("abc")}), contents), ThmReadStatus::kShortPath);
    EXPECT_FALSE(contents.pathRead);
    EXPECT_EQ(Read(Join({Length(1), Text("a"), Length(0x7FFFFFFF)}), contents), ThmReadStatus::kShortName);
    EXPECT_EQ(contents.path, "a") << "the path read before stays";
    EXPECT_EQ(Read(Join({Length(0), Length(0), Length(0xFFFFFFFF), Bytes(16, 1)}), contents),
              ThmReadStatus::kShortImage);
    EXPECT_TRUE(contents.image.empty());
}

TEST(ThmFile, ImagesBeyondTheImagingLimitAreNotRead) {
    const uint32_t size = static_cast<uint32_t>(thumbnails::kMaxThmImageBytes + 1);
    ClaimingSource source(Join({Length(0), Length(0), Length(size)}), 12ull + size);
    ThmContents contents;
    EXPECT_EQ(ReadThmContents(source, contents), ThmReadStatus::kImageTooLarge);
    EXPECT_EQ(source.reads_, 12u) << "nothing asked for beyond the three lengths";
    EXPECT_TRUE(contents.image.empty());
}

TEST(ThmFile, TextsEndAtTheirFirstNul) {
    ThmContents contents;
    const Bytes thm =
        Join({Length(5), Bytes{'a', 'b', 0, 'c', 'd'}, Length(2), Bytes{0, 'x'}, Length(1), Bytes{7}});
    EXPECT_EQ(Read(thm, contents), ThmReadStatus::kComplete);
    EXPECT_EQ(contents.path, "ab");
    EXPECT_EQ(contents.name, "");
    EXPECT_EQ(contents.image, Bytes{7}) << "the lengths, not the texts, say where the next field is";
}

TEST(ThmFile, TheImageEndsTheFile) {
    ThmContents contents;
    const Bytes thm = Join({Length(0), Length(0), Length(2), Bytes{5, 6, 7, 8, 9}});
    EXPECT_EQ(Read(thm, contents), ThmReadStatus::kComplete);
    EXPECT_EQ(contents.image, (Bytes{5, 6}));
    EXPECT_EQ(Read(Join({Length(0), Length(0), Length(0)}), contents), ThmReadStatus::kComplete)
        << "an empty image is read; whether it loads is not this layer's business";
    EXPECT_TRUE(contents.image.empty());
}
