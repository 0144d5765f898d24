#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "containers/dcl/Dcl.h"
#include "tests/dcl/DclSampleData.h"
#include "tests/dcl/DclTestSupport.h"

namespace {

using dcltest::Bytes;
using dcltest::CodecRun;
using dcltest::RunExplode;
using dcltest::RunImplode;
using dcltest::StreamBuilder;

constexpr size_t kBlockSize = 4096;

Bytes FromText(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

struct Setting {
    unsigned int type;
    unsigned int dictionarySize;
};

std::string Describe(const Setting& setting) {
    return std::string(setting.type == dcl::kCompressionAscii ? "Ascii" : "Binary") +
           std::to_string(setting.dictionarySize);
}

void PrintTo(const Setting& setting, std::ostream* out) {
    *out << Describe(setting);
}

std::string SettingName(const testing::TestParamInfo<Setting>& info) {
    return Describe(info.param);
}

const Setting kAllSettings[] = {
    {dcl::kCompressionBinary, 1024}, {dcl::kCompressionBinary, 2048}, {dcl::kCompressionBinary, 4096},
    {dcl::kCompressionAscii, 1024},  {dcl::kCompressionAscii, 2048},  {dcl::kCompressionAscii, 4096},
};

class RoundTrip : public testing::TestWithParam<Setting> {
protected:
    // Compresses and decompresses `data`, checking both calls on the way.
    void ExpectRoundTrip(const Bytes& data) {
        const CodecRun packed = RunImplode(data, GetParam().type, GetParam().dictionarySize);
        ASSERT_EQ(packed.result, dcl::kOk);
        ASSERT_TRUE(packed.guardsIntact);
        ASSERT_GE(packed.output.size(), 4u);
        const CodecRun unpacked = RunExplode(packed.output);
        ASSERT_EQ(unpacked.result, dcl::kOk);
        ASSERT_TRUE(unpacked.guardsIntact);
        ASSERT_FALSE(unpacked.writeOutsideBuffer);
        ASSERT_EQ(unpacked.output.size(), data.size());
        ASSERT_TRUE(unpacked.output == data);
    }
};

TEST_P(RoundTrip, RandomBytesSurvive) {
    ExpectRoundTrip(dcltest::RandomBytes(100000, 1));
}

TEST_P(RoundTrip, TextLikeDataSurvives) {
    ExpectRoundTrip(dcltest::TextLike(200000, 2));
}

TEST_P(RoundTrip, BitmapLikeDataSurvives) {
    ExpectRoundTrip(dcltest::BitmapLike(200000, 3));
}

TEST_P(RoundTrip, HighlyRepetitiveDataSurvives) {
    ExpectRoundTrip(dcltest::HighlyRepetitive(300000));
}

TEST_P(RoundTrip, EmptyInputSurvives) {
    ExpectRoundTrip(Bytes());
}

TEST_P(RoundTrip, SingleByteSurvives) {
    for (int value : {0, 0x41, 0x80, 0xFF}) ExpectRoundTrip(Bytes{static_cast<uint8_t>(value)});
}

TEST_P(RoundTrip, EveryByteValueSurvives) {
    Bytes data;
    for (int round = 0; round < 40; ++round)
        for (int value = 0; value < 256; ++value) data.push_back(static_cast<uint8_t>(value * (round + 1)));
    ExpectRoundTrip(data);
}

TEST_P(RoundTrip, RunsOfEveryLengthAroundTheLongestMatchSurvive) {
    Bytes data;
    for (size_t run = 510; run <= 530; ++run) {
        data.insert(data.end(), run, static_cast<uint8_t>(run));
        data.push_back('|');
    }
    ExpectRoundTrip(data);
}

TEST_P(RoundTrip, SeveralMegabytesSurvive) {
    Bytes data = dcltest::TextLike(2 << 20, 4);
    const Bytes bitmap = dcltest::BitmapLike(2 << 20, 5);
    const Bytes noise = dcltest::RandomBytes(512 << 10, 6);
    const Bytes repeats = dcltest::HighlyRepetitive(512 << 10);
    data.insert(data.end(), bitmap.begin(), bitmap.end());
    data.insert(data.end(), noise.begin(), noise.end());
    data.insert(data.end(), repeats.begin(), repeats.end());
    ExpectRoundTrip(data);
}

TEST_P(RoundTrip, StreamHeaderNamesLiteralCodingAndDictionarySize) {
    const CodecRun packed = RunImplode(FromText("header"), GetParam().type, GetParam().dictionarySize);
    ASSERT_EQ(packed.result, dcl::kOk);
    ASSERT_GE(packed.output.size(), 2u);
    EXPECT_EQ(packed.output[0], GetParam().type);
    EXPECT_EQ(1u << (packed.output[1] + 6), GetParam().dictionarySize);
}

TEST_P(RoundTrip, InputInOneBytePiecesGivesTheSameStream) {
    const Bytes data = dcltest::TextLike(30000, 7);
    const CodecRun whole = RunImplode(data, GetParam().type, GetParam().dictionarySize);
    const CodecRun pieces = RunImplode(data, GetParam().type, GetParam().dictionarySize, 1);
    ASSERT_EQ(pieces.result, dcl::kOk);
    EXPECT_TRUE(pieces.output == whole.output);
    const CodecRun unpacked = RunExplode(whole.output, SIZE_MAX, 1);
    ASSERT_EQ(unpacked.result, dcl::kOk);
    EXPECT_TRUE(unpacked.output == data);
}

TEST_P(RoundTrip, MisalignedWorkBufferGivesTheSameResults) {
    const Bytes data = dcltest::BitmapLike(30000, 8);
    const CodecRun aligned = RunImplode(data, GetParam().type, GetParam().dictionarySize);
    for (size_t misalignment : {1, 2, 3, 5, 7}) {
        const CodecRun packed =
            RunImplode(data, GetParam().type, GetParam().dictionarySize, SIZE_MAX, misalignment);
        ASSERT_EQ(packed.result, dcl::kOk);
        EXPECT_TRUE(packed.guardsIntact);
        EXPECT_TRUE(packed.output == aligned.output);
        const CodecRun unpacked = RunExplode(aligned.output, SIZE_MAX, SIZE_MAX, misalignment);
        ASSERT_EQ(unpacked.result, dcl::kOk);
        EXPECT_TRUE(unpacked.guardsIntact);
        EXPECT_TRUE(unpacked.output == data);
    }
}

TEST_P(RoundTrip, IncompressibleDataGrowsByAtMostOneBitPerByte) {
    const Bytes data = dcltest::RandomBytes(65536, 9);
    const CodecRun packed = RunImplode(data, GetParam().type, GetParam().dictionarySize);
    ASSERT_EQ(packed.result, dcl::kOk);
    // Binary literals cost 9 bits; text-mode codes for high bytes cost up to 14.
    const size_t bitsPerByte = GetParam().type == dcl::kCompressionAscii ? 14 : 9;
    EXPECT_LE(packed.output.size(), data.size() * bitsPerByte / 8 + 4);
}

INSTANTIATE_TEST_SUITE_P(AllModes, RoundTrip, testing::ValuesIn(kAllSettings), SettingName);

TEST(Implode, HighlyRepetitiveDataShrinksManyTimes) {
    const Bytes data = dcltest::HighlyRepetitive(1 << 20);
    const CodecRun packed = RunImplode(data, dcl::kCompressionBinary, 4096);
    ASSERT_EQ(packed.result, dcl::kOk);
    EXPECT_LT(packed.output.size(), data.size() / 50);
}

TEST(Implode, TextShrinksToUnderHalf) {
    const Bytes data = dcltest::TextLike(1 << 20, 10);
    const CodecRun packed = RunImplode(data, dcl::kCompressionAscii, 4096);
    ASSERT_EQ(packed.result, dcl::kOk);
    EXPECT_LT(packed.output.size(), data.size() / 2);
}

TEST(Implode, TextCodingBeatsBinaryCodingOnText) {
    const Bytes data = dcltest::TextLike(1 << 18, 11);
    const CodecRun ascii = RunImplode(data, dcl::kCompressionAscii, 4096);
    const CodecRun binary = RunImplode(data, dcl::kCompressionBinary, 4096);
    EXPECT_LT(ascii.output.size(), binary.output.size());
}

TEST(Implode, LargerDictionaryHelpsOnDistantRepeats) {
    // A 3000-byte random block, repeated: only a 4096-byte dictionary reaches it.
    Bytes data = dcltest::RandomBytes(3000, 12);
    const Bytes copy = data;
    data.insert(data.end(), copy.begin(), copy.end());
    const CodecRun small = RunImplode(data, dcl::kCompressionBinary, 1024);
    const CodecRun large = RunImplode(data, dcl::kCompressionBinary, 4096);
    EXPECT_LT(large.output.size() * 3 / 2, small.output.size());
}

TEST(Implode, UnknownDictionarySizeIsRejected) {
    for (unsigned int size : {0u, 512u, 1000u, 3072u, 8192u}) {
        const CodecRun packed = RunImplode(FromText("text"), dcl::kCompressionBinary, size);
        EXPECT_EQ(packed.result, dcl::kInvalidDictionarySize) << size;
        EXPECT_TRUE(packed.output.empty());
    }
}

TEST(Implode, UnknownLiteralCodingIsRejected) {
    for (unsigned int type : {2u, 3u, 0xFFFFFFFFu}) {
        const CodecRun packed = RunImplode(FromText("text"), type, 4096);
        EXPECT_EQ(packed.result, dcl::kInvalidMode) << type;
        EXPECT_TRUE(packed.output.empty());
    }
}

TEST(Implode, StopsReadingAtEndOfInput) {
    const CodecRun packed = RunImplode(dcltest::TextLike(50000, 13), dcl::kCompressionAscii, 2048, 777);
    ASSERT_EQ(packed.result, dcl::kOk);
    EXPECT_EQ(packed.readsAfterEnd, 0u);
}

// The stream from Ben Rudiak-Gould's description of the format, as corrected
// in Mark Adler's blast.
TEST(Explode, ClassicStreamGivesAiaiText) {
    const CodecRun run = RunExplode(Bytes{0x00, 0x04, 0x82, 0x24, 0x25, 0x8f, 0x80, 0x7f});
    EXPECT_EQ(run.result, dcl::kOk);
    EXPECT_EQ(std::string(run.output.begin(), run.output.end()), "AIAIAIAIAIAIA");
}

TEST(Explode, ClassicStreamReadOneByteAtATimeGivesAiaiText) {
    const CodecRun run = RunExplode(Bytes{0x00, 0x04, 0x82, 0x24, 0x25, 0x8f, 0x80, 0x7f}, SIZE_MAX, 1);
    EXPECT_EQ(run.result, dcl::kOk);
    EXPECT_EQ(std::string(run.output.begin(), run.output.end()), "AIAIAIAIAIAIA");
}

TEST(Explode, EndCodeAloneGivesNoOutput) {
    for (unsigned int type : {dcl::kCompressionBinary, dcl::kCompressionAscii}) {
        const CodecRun run = RunExplode(StreamBuilder(type, 6).End().Finish());
        EXPECT_EQ(run.result, dcl::kOk);
        EXPECT_TRUE(run.output.empty());
        EXPECT_TRUE(run.writeSizes.empty());
    }
}

TEST(Explode, HandBuiltTokensGiveTheirText) {
    for (unsigned int type : {dcl::kCompressionBinary, dcl::kCompressionAscii}) {
        const Bytes stream =
            StreamBuilder(type, 5).Literals("ab").Match(2, 2).Match(7, 3).Literal('!').End().Finish();
        const CodecRun run = RunExplode(stream);
        EXPECT_EQ(run.result, dcl::kOk);
        EXPECT_EQ(std::string(run.output.begin(), run.output.end()), "ababbabbabb!");
    }
}

TEST(Explode, LiteralCodingOtherThanBinaryOrTextIsInvalidMode) {
    for (int type : {2, 3, 0x10, 0x80, 0xFF}) {
        Bytes stream = StreamBuilder(dcl::kCompressionBinary, 6).Literals("abc").End().Finish();
        stream[0] = static_cast<uint8_t>(type);
        EXPECT_EQ(RunExplode(stream).result, dcl::kInvalidMode) << type;
    }
}

TEST(Explode, DictionaryBitsOutsideFourToSixAreInvalidDictionarySize) {
    for (int bits : {0, 1, 3, 7, 8, 0xFF}) {
        Bytes stream = StreamBuilder(dcl::kCompressionBinary, 6).Literals("abc").End().Finish();
        stream[1] = static_cast<uint8_t>(bits);
        EXPECT_EQ(RunExplode(stream).result, dcl::kInvalidDictionarySize) << bits;
    }
}

TEST(Explode, InputShorterThanHeaderIsBadData) {
    EXPECT_EQ(RunExplode(Bytes()).result, dcl::kBadData);
    EXPECT_EQ(RunExplode(Bytes{0x00}).result, dcl::kBadData);
    EXPECT_EQ(RunExplode(Bytes{0x01}).result, dcl::kBadData);
}

TEST(Explode, HeaderWithoutTokensFails) {
    for (uint8_t bits = 4; bits <= 6; ++bits) {
        const CodecRun run = RunExplode(Bytes{0x00, bits});
        EXPECT_NE(run.result, dcl::kOk);
        EXPECT_TRUE(run.output.empty());
    }
}

TEST(Explode, MissingEndCodeFails) {
    for (unsigned int type : {dcl::kCompressionBinary, dcl::kCompressionAscii}) {
        const CodecRun run = RunExplode(StreamBuilder(type, 4).Literals("no end here").Match(5, 3).Finish());
        EXPECT_NE(run.result, dcl::kOk);
    }
}

TEST(Explode, MatchBeforeAnyOutputIsBadData) {
    EXPECT_EQ(RunExplode(StreamBuilder(0, 4).Match(3, 1).End().Finish()).result, dcl::kBadData);
    EXPECT_EQ(RunExplode(StreamBuilder(0, 4).Match(2, 1).End().Finish()).result, dcl::kBadData);
    EXPECT_EQ(RunExplode(StreamBuilder(1, 6).Match(518, 4096).End().Finish()).result, dcl::kBadData);
}

TEST(Explode, DistanceOneBeyondTheOutputIsBadData) {
    const CodecRun run = RunExplode(StreamBuilder(0, 6).Literals("abc").Match(4, 4).End().Finish());
    EXPECT_EQ(run.result, dcl::kBadData);
}

TEST(Explode, DistanceToTheFirstByteIsAccepted) {
    const CodecRun run = RunExplode(StreamBuilder(0, 6).Literals("abc").Match(5, 3).End().Finish());
    EXPECT_EQ(run.result, dcl::kOk);
    EXPECT_EQ(std::string(run.output.begin(), run.output.end()), "abcabcab");
}

// Builds `count` varied literals followed by one match of the given distance.
Bytes LiteralsThenMatch(size_t count, unsigned distance) {
    StreamBuilder builder(dcl::kCompressionBinary, 6);
    for (size_t i = 0; i < count; ++i) builder.Literal(static_cast<uint8_t>(i * 7 + i / 256));
    return builder.Match(10, distance).End().Finish();
}

TEST(Explode, FullDictionaryDistanceReachesTheFirstByteOfAFullWindow) {
    for (size_t count : {4095u, 4096u, 4097u, 8191u, 8192u, 9000u}) {
        const unsigned distance = count < 4096 ? static_cast<unsigned>(count) : 4096u;
        const CodecRun run = RunExplode(LiteralsThenMatch(count, distance));
        ASSERT_EQ(run.result, dcl::kOk) << count;
        ASSERT_EQ(run.output.size(), count + 10);
        for (size_t i = 0; i < 10; ++i) EXPECT_EQ(run.output[count + i], run.output[count - distance + i]);
    }
}

TEST(Explode, DistanceBeyondTheOutputBeforeTheFirstBlockIsBadData) {
    for (size_t count : {1u, 100u, 4095u}) {
        const CodecRun run = RunExplode(LiteralsThenMatch(count, static_cast<unsigned>(count) + 1));
        EXPECT_EQ(run.result, dcl::kBadData) << count;
    }
}

TEST(Explode, TruncatedStreamFailsAtEveryLength) {
    for (unsigned int type : {dcl::kCompressionBinary, dcl::kCompressionAscii}) {
        const Bytes data = dcltest::TextLike(6000, 14);
        const Bytes stream = RunImplode(data, type, 2048).output;
        for (size_t length = 0; length < stream.size(); ++length) {
            const CodecRun run =
                RunExplode(Bytes(stream.begin(), stream.begin() + static_cast<ptrdiff_t>(length)));
            ASSERT_NE(run.result, dcl::kOk) << length;
            ASSERT_TRUE(run.guardsIntact);
            ASSERT_FALSE(run.writeOutsideBuffer);
            ASSERT_EQ(run.readsAfterEnd, 0u);
            ASSERT_LE(run.output.size(), data.size());
            ASSERT_TRUE(std::equal(run.output.begin(), run.output.end(), data.begin()));
        }
    }
}

TEST(Explode, BytesAfterTheEndCodeAreIgnored) {
    const Bytes data = dcltest::TextLike(10000, 15);
    Bytes stream = RunImplode(data, dcl::kCompressionAscii, 4096).output;
    const Bytes trailer = dcltest::RandomBytes(5000, 16);
    stream.insert(stream.end(), trailer.begin(), trailer.end());
    const CodecRun run = RunExplode(stream);
    EXPECT_EQ(run.result, dcl::kOk);
    EXPECT_TRUE(run.output == data);
}

TEST(Explode, OutputLeavesInBlocksOf4096Bytes) {
    const Bytes data = dcltest::BitmapLike(5 * kBlockSize + 1234, 17);
    const CodecRun run = RunExplode(RunImplode(data, dcl::kCompressionBinary, 4096).output);
    ASSERT_EQ(run.result, dcl::kOk);
    ASSERT_EQ(run.writeSizes.size(), 6u);
    for (size_t i = 0; i < 5; ++i) EXPECT_EQ(run.writeSizes[i], kBlockSize);
    EXPECT_EQ(run.writeSizes[5], 1234u);
}

TEST(Explode, ConsumerThatRunsOutOfRoomMidStreamMakesItFail) {
    // Noise keeps the stream longer than the output, so the codec still needs
    // input when the consumer stops serving it.
    const Bytes data = dcltest::RandomBytes(5 * kBlockSize + 1000, 18);
    const Bytes stream = RunImplode(data, dcl::kCompressionBinary, 4096).output;
    for (size_t limit : {size_t{0}, size_t{1}, kBlockSize - 1, kBlockSize, 2 * kBlockSize + 5}) {
        const CodecRun run = RunExplode(stream, limit);
        EXPECT_NE(run.result, dcl::kOk) << limit;
        EXPECT_TRUE(run.overflow);
        EXPECT_EQ(run.readsAfterEnd, 0u);
        // Only whole blocks that fitted were taken.
        EXPECT_EQ(run.output.size(), limit / kBlockSize * kBlockSize) << limit;
        EXPECT_TRUE(std::equal(run.output.begin(), run.output.end(), data.begin()));
    }
}

TEST(Explode, ConsumerThatRefusesTheLastBlockIsTheOneToKnow) {
    // The last block leaves after the end code, when no input is left to refuse.
    const Bytes data = dcltest::RandomBytes(5 * kBlockSize + 1000, 18);
    const CodecRun run = RunExplode(RunImplode(data, dcl::kCompressionBinary, 4096).output, data.size() - 1);
    EXPECT_TRUE(run.overflow);
    EXPECT_EQ(run.output.size(), 5 * kBlockSize);
    EXPECT_TRUE(std::equal(run.output.begin(), run.output.end(), data.begin()));
}

TEST(Explode, ConsumerWithExactRoomSucceeds) {
    const Bytes data = dcltest::TextLike(3 * kBlockSize + 77, 19);
    const CodecRun run = RunExplode(RunImplode(data, dcl::kCompressionAscii, 4096).output, data.size());
    EXPECT_EQ(run.result, dcl::kOk);
    EXPECT_FALSE(run.overflow);
    EXPECT_TRUE(run.output == data);
}

TEST(Explode, ReadsInRandomSmallPiecesGiveTheSameOutput) {
    const Bytes data = dcltest::TextLike(40000, 20);
    const Bytes stream = RunImplode(data, dcl::kCompressionAscii, 1024).output;
    for (size_t piece : {1u, 2u, 3u, 7u, 8u, 9u, 100u, 2047u, 2049u}) {
        const CodecRun run = RunExplode(stream, SIZE_MAX, piece);
        EXPECT_EQ(run.result, dcl::kOk) << piece;
        EXPECT_TRUE(run.output == data) << piece;
    }
}

TEST(Explode, RandomStreamsEndWithinBoundsOfTheWorkBuffer) {
    std::mt19937 random(21);
    for (int round = 0; round < 3000; ++round) {
        Bytes stream = dcltest::RandomBytes(random() % 700, static_cast<uint32_t>(round));
        if (stream.size() >= 2) {
            stream[0] = static_cast<uint8_t>(random() % 2);
            stream[1] = static_cast<uint8_t>(4 + random() % 3);
        }
        const CodecRun run = RunExplode(stream, 1 << 20);
        ASSERT_TRUE(run.guardsIntact) << round;
        ASSERT_FALSE(run.writeOutsideBuffer) << round;
        ASSERT_EQ(run.readsAfterEnd, 0u) << round;
        for (size_t size : run.writeSizes) ASSERT_LE(size, kBlockSize) << round;
    }
}

}  // namespace
