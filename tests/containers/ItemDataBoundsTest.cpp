// The sizes that an item's data may claim: each codec's densest real stream
// is accepted at every dictionary size, what lies beyond the derived bound is
// refused before allocation, and the method-2 reversal hands out the buffer
// of a stream that fails to explode.
#include "containers/ItemDataBounds.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>
#include <vector>

#include "ContainerImage.h"
#include "containers/ArtContainer.h"
#include "containers/ImplodeAdapters.h"
#include "containers/dcl/Dcl.h"
#include "containers/writer/ChunkCodec.h"
#include "support/TempDir.h"

using containers::CArtContainer;
using containers::kMaxItemDataSize;
using containers::MaxItemDataSize;
using testsupport::ContainerImage;
using testsupport::MakeEntry;

namespace {

std::vector<uint8_t> Imploded(const std::vector<uint8_t>& data, unsigned dictionarySize,
                              unsigned type = dcl::kCompressionAscii) {
    std::vector<uint8_t> payload;
    std::string error;
    containers::ImplodeSettings settings;
    settings.type = type;
    settings.dictionarySize = dictionarySize;
    EXPECT_TRUE(containers::CompressChunk(containers::kMethodImplode, data, settings, payload, error))
        << error;
    return payload;
}

std::vector<uint8_t> Deflated(const std::vector<uint8_t>& data) {
    uLongf size = compressBound(static_cast<uLong>(data.size()));
    std::vector<uint8_t> out(size);
    EXPECT_EQ(compress2(out.data(), &size, data.data(), static_cast<uLong>(data.size()), Z_BEST_COMPRESSION),
              Z_OK);
    out.resize(size);
    return out;
}

class ItemDataBoundsTest : public ::testing::Test {
protected:
    // Reads item 1 of a container whose only data chunk is `payload` of
    // `method`, claiming `claimed` bytes.
    std::unique_ptr<uint8_t[]> Read(int32_t method, const std::vector<uint8_t>& payload, int64_t claimed,
                                    int32_t& size) {
        ContainerImage image;
        auto entry = MakeEntry(1, "a", "a.bmp");
        entry.dataOffset = image.AppendData(method, payload, static_cast<int32_t>(claimed));
        image.AppendEntryTable({entry});
        CArtContainer container;
        EXPECT_TRUE(container.Open(dir.Write("data.qlt", image.Bytes())));
        size = -7;
        return container.ReadItemData(1, &size);
    }

    testsupport::TempDir dir;
};

}  // namespace

TEST(ItemDataBounds, TheDensestTokensAreTheLongestMatchesAtTheShortestCodes) {
    const auto implode = containers::DensestImplodeToken();
    EXPECT_EQ(implode.bytes, 518);
    EXPECT_EQ(implode.bits, 22) << "flag 1, length code 7 and extra 8, distance code 2, low bits 4";
    const auto deflate = containers::DensestDeflateToken();
    EXPECT_EQ(deflate.bytes * 8 / deflate.bits, 1032);
}

TEST_F(ItemDataBoundsTest, ZerosImplodedAtEveryDictionarySizeAreAccepted) {
    // Zeros implode to matches of 518 bytes at distance 1: the densest stream
    // there is. 2,000,000 of them take about 10,625 bytes with a 1024-byte
    // dictionary: more than 188 to 1.
    const std::vector<uint8_t> zeros(2000000, 0);
    for (unsigned dictionary : {1024u, 2048u, 4096u}) {
        for (unsigned type : {dcl::kCompressionAscii, dcl::kCompressionBinary}) {
            SCOPED_TRACE("dictionary " + std::to_string(dictionary) + ", type " + std::to_string(type));
            const std::vector<uint8_t> payload = Imploded(zeros, dictionary, type);
            const int64_t bound =
                MaxItemDataSize(containers::kMethodImplode, static_cast<int64_t>(payload.size()));
            EXPECT_GE(bound, static_cast<int64_t>(zeros.size()));
            if (dictionary == 1024) {
                EXPECT_GT(zeros.size(), payload.size() * 188) << payload.size();
                EXPECT_LT(bound, static_cast<int64_t>(zeros.size()) * 103 / 100) << "the margin is small";
            }

            // A claim one byte short makes the explode adapter fail, and so
            // the reader hand out the buffer, as the method-2 reversal has it.
            int32_t size = 0;
            auto data =
                Read(containers::kMethodImplode, payload, static_cast<int64_t>(zeros.size()) - 1, size);
            ASSERT_NE(data, nullptr);
            EXPECT_EQ(size, static_cast<int32_t>(zeros.size()) - 1);

            // The exact claim explodes well, and so gives null.
            data = Read(containers::kMethodImplode, payload, static_cast<int64_t>(zeros.size()), size);
            EXPECT_EQ(data, nullptr);
            EXPECT_EQ(size, 0);
        }
    }
}

TEST_F(ItemDataBoundsTest, ImplodedClaimsUpToTheBoundAreTakenAndOneMoreIsNot) {
    // A stream with a dictionary size the codec doesn't know fails to
    // explode, so a claim the bound admits comes back as its buffer.
    std::vector<uint8_t> payload = Imploded(std::vector<uint8_t>(100000, 0), 1024);
    payload[1] = 7;
    const int64_t bound = MaxItemDataSize(containers::kMethodImplode, static_cast<int64_t>(payload.size()));
    int32_t size = 0;
    auto data = Read(containers::kMethodImplode, payload, bound, size);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(size, bound);
    data = Read(containers::kMethodImplode, payload, bound + 1, size);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(size, 0);
}

TEST_F(ItemDataBoundsTest, DeflatedZerosAreAcceptedAndClaimsPastTheBoundAreNot) {
    const std::vector<uint8_t> zeros(8000000, 0);
    const std::vector<uint8_t> payload = Deflated(zeros);
    const int64_t bound = MaxItemDataSize(containers::kMethodZlib, static_cast<int64_t>(payload.size()));
    EXPECT_GE(bound, static_cast<int64_t>(zeros.size()));
    EXPECT_LT(bound, static_cast<int64_t>(zeros.size()) * 11 / 10)
        << "zlib comes within 10% of deflate's best";

    int32_t size = 0;
    auto data = Read(containers::kMethodZlib, payload, static_cast<int64_t>(zeros.size()), size);
    ASSERT_NE(data, nullptr);
    ASSERT_EQ(size, static_cast<int32_t>(zeros.size()));
    EXPECT_EQ(std::vector<uint8_t>(data.get(), data.get() + size), zeros);

    // Up to the bound a claim is taken, and the size is what inflating made.
    data = Read(containers::kMethodZlib, payload, bound, size);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(size, static_cast<int32_t>(zeros.size()));
    data = Read(containers::kMethodZlib, payload, bound + 1, size);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(size, 0);
}

TEST_F(ItemDataBoundsTest, UnknownMethodsGetZerosOfTheClaimedSizeUpToTheGlobalCap) {
    EXPECT_EQ(MaxItemDataSize(9, 4), kMaxItemDataSize);
    const int64_t claims[] = {1, 4096, int64_t{16} << 20};
    for (int64_t claimed : claims) {
        int32_t size = 0;
        auto data = Read(9, {'t', 'i', 'n', 'y'}, claimed, size);
        ASSERT_NE(data, nullptr) << claimed;
        ASSERT_EQ(size, claimed);
        int64_t nonZero = 0;
        for (int64_t i = 0; i < claimed; ++i) nonZero += data[static_cast<size_t>(i)] != 0;
        EXPECT_EQ(nonZero, 0) << claimed;
    }
    int32_t size = 0;
    EXPECT_EQ(Read(9, {'t', 'i', 'n', 'y'}, kMaxItemDataSize + 1, size), nullptr);
    EXPECT_EQ(size, 0);
}

TEST(ItemDataBounds, NoMethodPassesTheGlobalCap) {
    const int64_t hugePayload = int64_t{1} << 30;
    for (int32_t method : {0, 1, 2, 3, -1})
        EXPECT_EQ(MaxItemDataSize(method, hugePayload), kMaxItemDataSize) << method;
    EXPECT_EQ(MaxItemDataSize(containers::kMethodStored, 11), 11);
    EXPECT_EQ(MaxItemDataSize(containers::kMethodImplode, -1), 0);
}
