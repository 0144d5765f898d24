#include "containers/ImplodeAdapters.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "containers/dcl/Dcl.h"

using namespace containers;

namespace {

std::vector<uint8_t> TextLike(size_t n) {
    static const char* words[] = {"picture ", "art ",    "container ", "thumbnail ",
                                  "gallery ", "border ", "\r\n"};
    std::mt19937 random(7);
    std::vector<uint8_t> data;
    while (data.size() < n) {
        const char* word = words[random() % 7];
        data.insert(data.end(), word, word + std::strlen(word));
    }
    data.resize(n);
    return data;
}

std::vector<uint8_t> Noise(size_t n) {
    std::mt19937 random(11);
    std::vector<uint8_t> data(n);
    for (auto& b : data) b = static_cast<uint8_t>(random());
    return data;
}

uint32_t ReferenceCrc(const std::vector<uint8_t>& data) {
    return static_cast<uint32_t>(::crc32(0L, data.data(), static_cast<uInt>(data.size())));
}

// Compresses through the stream interface with room for any output, since
// the memory adapter refuses output longer than the input.
std::vector<uint8_t> Imploded(const std::vector<uint8_t>& data) {
    std::vector<uint8_t> source = data;
    std::vector<uint8_t> out(data.size() * 2 + 64);
    ImplodeStream stream{};
    stream.mode = kModeCompress;
    stream.crc = 0xFFFFFFFFu;
    stream.source = MemoryCursor{source.data(), 0, static_cast<uint32_t>(source.size())};
    stream.middle = MemoryCursor{out.data(), 0, static_cast<uint32_t>(out.size())};
    std::vector<char> work(dcl::kWorkBufferSize);
    unsigned int type = dcl::kCompressionAscii, dictionary = 4096;
    EXPECT_EQ(
        dcl::implode(ImplodeReadCallback, ImplodeWriteCallback, work.data(), &stream, &type, &dictionary),
        dcl::kOk);
    EXPECT_EQ(stream.overflow, 0);
    out.resize(stream.totalWritten);
    return out;
}

}  // namespace

TEST(ImplodeAdapters, RoundTripThroughTheBufferFunctions) {
    const auto data = TextLike(20000);
    std::vector<uint8_t> packed(data.size());
    uint32_t size = static_cast<uint32_t>(data.size());
    ASSERT_EQ(ImplodeBuffer(packed.data(), data.data(), &size), 1);
    ASSERT_LT(size, data.size());
    std::vector<uint8_t> unpacked(data.size());
    const uint32_t targetSize = static_cast<uint32_t>(unpacked.size());
    ASSERT_EQ(ExplodeBuffer(packed.data(), size, unpacked.data(), &targetSize), 1);
    EXPECT_EQ(unpacked, data);
}

TEST(ImplodeAdapters, CrcIsTakenOverTheUncompressedDataInBothDirections) {
    const auto data = TextLike(10000);
    std::vector<uint8_t> packed(data.size());
    uint32_t crc = 0, packedSize = 0;
    ASSERT_EQ(
        ImplodeMemory(&crc, &packedSize, data.data(), packed.data(), static_cast<uint32_t>(data.size())), 1);
    EXPECT_EQ(crc, ReferenceCrc(data));
    std::vector<uint8_t> unpacked(data.size());
    uint32_t crcOut = 0;
    ASSERT_EQ(ExplodeMemory(&crcOut, packed.data(), packedSize, unpacked.data(),
                            static_cast<uint32_t>(unpacked.size())),
              1);
    EXPECT_EQ(crcOut, ReferenceCrc(data));
}

TEST(ImplodeAdapters, DataThatDoesNotShrinkFailsToImplode) {
    const auto data = Noise(5000);
    std::vector<uint8_t> packed(data.size());
    uint32_t size = static_cast<uint32_t>(data.size());
    EXPECT_EQ(ImplodeBuffer(packed.data(), data.data(), &size), 0);
    EXPECT_EQ(size, data.size()) << "the size is left alone on failure";
}

TEST(ImplodeAdapters, ExplodingToExactlyTheTargetSizeSucceeds) {
    const auto data = TextLike(3 * 4096 + 123);
    const auto packed = Imploded(data);
    std::vector<uint8_t> out(data.size());
    uint32_t crc = 0;
    EXPECT_EQ(ExplodeMemory(&crc, packed.data(), static_cast<uint32_t>(packed.size()), out.data(),
                            static_cast<uint32_t>(out.size())),
              1);
    EXPECT_EQ(out, data);
}

TEST(ImplodeAdapters, ExplodingOneByteMoreThanTheTargetFails) {
    const auto data = TextLike(3 * 4096 + 123);
    const auto packed = Imploded(data);
    std::vector<uint8_t> out(data.size() + 8, 0xEE);
    const uint32_t targetSize = static_cast<uint32_t>(data.size() - 1);
    EXPECT_EQ(ExplodeBuffer(packed.data(), static_cast<uint32_t>(packed.size()), out.data(), &targetSize), 0);
    // Whole blocks only: the last, partial block was not copied at all.
    EXPECT_EQ(out[targetSize - 1], 0xEE);
    EXPECT_EQ(out[data.size()], 0xEE);
}

TEST(ImplodeAdapters, NullArgumentsDoNothingAndSucceed) {
    uint8_t buffer[16] = {};
    uint32_t size = 16;
    EXPECT_EQ(ExplodeBuffer(nullptr, 16, buffer, &size), 1);
    EXPECT_EQ(ExplodeBuffer(buffer, 16, nullptr, &size), 1);
    EXPECT_EQ(ImplodeBuffer(nullptr, buffer, &size), 1);
    EXPECT_EQ(ImplodeBuffer(buffer, nullptr, &size), 1);
    EXPECT_EQ(size, 16u);
}

TEST(ImplodeAdapters, EmptySourceFailsToExplode) {
    uint8_t source[1] = {};
    uint8_t target[16] = {};
    uint32_t crc = 0;
    EXPECT_EQ(ExplodeMemory(&crc, source, 0, target, sizeof target), 0);
}

TEST(ImplodeAdapters, AnyCrcIsAcceptedSinceNothingIsCompared) {
    // A stream whose bytes are fine but whose data is not what some other
    // checksum says: the adapters have nothing to compare it with.
    const auto data = TextLike(500);
    auto packed = Imploded(data);
    std::vector<uint8_t> out(data.size());
    const uint32_t targetSize = static_cast<uint32_t>(out.size());
    EXPECT_EQ(ExplodeBuffer(packed.data(), static_cast<uint32_t>(packed.size()), out.data(), &targetSize), 1);
}

TEST(ImplodeAdapters, ClassicStreamExplodes) {
    const uint8_t stream[] = {0x00, 0x04, 0x82, 0x24, 0x25, 0x8f, 0x80, 0x7f};
    char out[13];
    const uint32_t size = sizeof out;
    ASSERT_EQ(ExplodeBuffer(stream, sizeof stream, reinterpret_cast<uint8_t*>(out), &size), 1);
    EXPECT_EQ(std::string(out, sizeof out), "AIAIAIAIAIAIA");
}

TEST(ImplodeAdapters, WriteCallbackNeverCopiesAPartialBlock) {
    uint8_t target[100];
    std::memset(target, 0, sizeof target);
    ImplodeStream stream{};
    stream.mode = kModeCompress;
    stream.middle = MemoryCursor{target, 0, 100};
    char block[101];
    std::memset(block, 'x', sizeof block);
    unsigned int count = 60;
    ImplodeWriteCallback(block, &count, &stream);
    count = 40;
    ImplodeWriteCallback(block, &count, &stream);
    EXPECT_EQ(stream.overflow, 0) << "exactly 100 bytes fit";
    EXPECT_EQ(stream.middle.position, 100u);
    EXPECT_EQ(stream.totalWritten, 100u);

    stream.middle = MemoryCursor{target, 50, 100};
    std::memset(target, 0, sizeof target);
    count = 51;
    ImplodeWriteCallback(block, &count, &stream);
    EXPECT_EQ(stream.overflow, 1);
    EXPECT_EQ(stream.totalWritten, 151u) << "counted before the test";
    EXPECT_EQ(stream.middle.position, 50u);
    for (uint8_t b : target) EXPECT_EQ(b, 0) << "nothing of the overrunning block was copied";

    count = 1;
    ImplodeWriteCallback(block, &count, &stream);
    EXPECT_EQ(stream.totalWritten, 151u) << "no more writes are served";
}

TEST(ImplodeAdapters, ReadCallbackCutsTheCountAndStopsAfterOverflow) {
    uint8_t source[10] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    ImplodeStream stream{};
    stream.mode = kModeDecompress;
    stream.crc = 0xFFFFFFFFu;
    stream.middle = MemoryCursor{source, 6, 10};
    char buffer[32] = {};
    unsigned int want = 32;
    EXPECT_EQ(ImplodeReadCallback(buffer, &want, &stream), 4u);
    EXPECT_EQ(want, 4u) << "the caller's count is cut too";
    EXPECT_EQ(buffer[0], 7);
    EXPECT_EQ(stream.crc, 0xFFFFFFFFu) << "decompression takes the crc on the output side";
    want = 32;
    EXPECT_EQ(ImplodeReadCallback(buffer, &want, &stream), 0u);
    stream.middle.position = 0;
    stream.overflow = 1;
    want = 5;
    EXPECT_EQ(ImplodeReadCallback(buffer, &want, &stream), 0u);
}

TEST(ImplodeAdapters, ReadCallbackTakesTheCrcWhenCompressing) {
    std::vector<uint8_t> source = TextLike(64);
    ImplodeStream stream{};
    stream.mode = kModeCompress;
    stream.crc = 0xFFFFFFFFu;
    stream.source = MemoryCursor{source.data(), 0, 64};
    char buffer[64];
    unsigned int want = 64;
    ASSERT_EQ(ImplodeReadCallback(buffer, &want, &stream), 64u);
    EXPECT_EQ(~stream.crc, ReferenceCrc(source));
}

namespace {

// 100 bytes: `noisy` bytes of noise (which grow in imploding) ahead of text
// (which shrinks).
std::vector<uint8_t> Mixture(size_t noisy, unsigned seed) {
    std::vector<uint8_t> data = TextLike(100);
    std::mt19937 random(seed);
    for (size_t i = 0; i < noisy; ++i) data[i] = static_cast<uint8_t>(random());
    return data;
}

// Implodes as ImplodeMemory does, into a span of `room` bytes.
ImplodeStream ImplodeInto(std::vector<uint8_t> data, uint8_t* target, uint32_t room) {
    ImplodeStream stream{};
    stream.mode = kModeCompress;
    stream.crc = 0xFFFFFFFFu;
    stream.source = MemoryCursor{data.data(), 0, static_cast<uint32_t>(data.size())};
    stream.middle = MemoryCursor{target, 0, room};
    std::vector<char> work(dcl::kWorkBufferSize);
    unsigned int type = dcl::kCompressionAscii, dictionary = 4096;
    EXPECT_EQ(
        dcl::implode(ImplodeReadCallback, ImplodeWriteCallback, work.data(), &stream, &type, &dictionary),
        dcl::kOk);
    return stream;
}

}  // namespace

TEST(ImplodeAdapters, HundredBytesImplodingToAHundredSucceedAndToAHundredAndOneFail) {
    // Somewhere between all text and all noise, mixtures implode to exactly
    // 100 and to 101 bytes; they are looked for, not assumed.
    std::vector<uint8_t> exact;
    std::vector<uint8_t> over;
    for (unsigned seed = 1; seed < 40 && (exact.empty() || over.empty()); ++seed) {
        for (size_t noisy = 0; noisy <= 100; ++noisy) {
            const std::vector<uint8_t> data = Mixture(noisy, seed);
            const size_t size = Imploded(data).size();
            if (size == 100 && exact.empty()) exact = data;
            if (size == 101 && over.empty()) over = data;
        }
    }
    ASSERT_FALSE(exact.empty());
    ASSERT_FALSE(over.empty());

    std::vector<uint8_t> target(200, 0xCD);
    uint32_t size = 100;
    ASSERT_EQ(ImplodeBuffer(target.data(), exact.data(), &size), 1);
    EXPECT_EQ(size, 100u);
    EXPECT_EQ(std::vector<uint8_t>(target.begin(), target.begin() + 100), Imploded(exact));
    EXPECT_EQ(std::vector<uint8_t>(target.begin() + 100, target.end()), std::vector<uint8_t>(100, 0xCD));
    std::vector<uint8_t> back(100);
    const uint32_t backSize = 100;
    ASSERT_EQ(ExplodeBuffer(target.data(), size, back.data(), &backSize), 1);
    EXPECT_EQ(back, exact);

    std::fill(target.begin(), target.end(), 0xCD);
    size = 100;
    EXPECT_EQ(ImplodeBuffer(target.data(), over.data(), &size), 0);
    EXPECT_EQ(size, 100u) << "the size is left alone on failure";
    EXPECT_EQ(target, std::vector<uint8_t>(200, 0xCD)) << "the block that would overrun is not copied";
    const ImplodeStream stream = ImplodeInto(over, target.data(), 100);
    EXPECT_EQ(stream.overflow, 1);
    EXPECT_EQ(stream.totalWritten, 101u);
    EXPECT_EQ(target, std::vector<uint8_t>(200, 0xCD));
}

TEST(ImplodeAdapters, EmptySourceLeavesNoRoomForTheLibrarysStream) {
    // The library answers an empty input with success and a stream of its
    // header and end code; the adapter allows no more output than input, so
    // that stream overflows an empty span.
    std::vector<uint8_t> room(64, 0xCD);
    const ImplodeStream roomy = ImplodeInto({}, room.data(), 64);
    EXPECT_EQ(roomy.overflow, 0);
    EXPECT_GT(roomy.totalWritten, 0u);
    EXPECT_EQ(roomy.source.position, 0u);
    EXPECT_EQ(roomy.crc, 0xFFFFFFFFu) << "the read callback delivered nothing";

    uint8_t source[1] = {42};
    uint8_t target[8];
    std::memset(target, 0xCD, sizeof target);
    uint32_t size = 0;
    EXPECT_EQ(ImplodeBuffer(target, source, &size), 0);
    EXPECT_EQ(size, 0u);
    uint32_t crc = 1, packedSize = 1;
    EXPECT_EQ(ImplodeMemory(&crc, &packedSize, source, target, 0), 0);
    EXPECT_EQ(crc, 1u) << "nothing is given out on failure";
    for (uint8_t b : target) EXPECT_EQ(b, 0xCD);
}
