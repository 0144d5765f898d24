#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>

#include "containers/dcl/Dcl.h"
#include "tests/dcl/DclSampleData.h"

namespace {

// CRC-32 as callers use it: start at all ones, complement the result.
uint32_t Crc(const void* data, size_t size) {
    unsigned int length = static_cast<unsigned int>(size);
    uint32_t start = 0xFFFFFFFFu;
    return ~dcl::crc32(static_cast<const char*>(data), &length, &start);
}

uint32_t Crc(const std::string& text) {
    return Crc(text.data(), text.size());
}

TEST(Crc32, CheckValueOf123456789) {
    EXPECT_EQ(Crc("123456789"), 0xCBF43926u);
}

TEST(Crc32, KnownValuesOfShortTexts) {
    EXPECT_EQ(Crc(""), 0x00000000u);
    EXPECT_EQ(Crc("a"), 0xE8B7BE43u);
    EXPECT_EQ(Crc("abc"), 0x352441C2u);
    EXPECT_EQ(Crc("The quick brown fox jumps over the lazy dog"), 0x414FA339u);
}

TEST(Crc32, EmptyBufferLeavesTheRunningValueAlone) {
    unsigned int length = 0;
    uint32_t running = 0x12345678u;
    EXPECT_EQ(dcl::crc32("x", &length, &running), 0x12345678u);
}

TEST(Crc32, NoInversionInside) {
    // From zero, a zero byte stays zero: the table entry for 0 is 0.
    const char zeros[16] = {};
    unsigned int length = sizeof(zeros);
    uint32_t start = 0;
    EXPECT_EQ(dcl::crc32(zeros, &length, &start), 0u);
}

TEST(Crc32, ContinuingFromARunningValueEqualsOneShot) {
    const std::vector<uint8_t> data = dcltest::RandomBytes(300, 1);
    const uint32_t oneShot = Crc(data.data(), data.size());
    for (size_t split = 0; split <= data.size(); ++split) {
        uint32_t running = 0xFFFFFFFFu;
        unsigned int first = static_cast<unsigned int>(split);
        running = dcl::crc32(reinterpret_cast<const char*>(data.data()), &first, &running);
        unsigned int second = static_cast<unsigned int>(data.size() - split);
        running = dcl::crc32(reinterpret_cast<const char*>(data.data() + split), &second, &running);
        ASSERT_EQ(~running, oneShot) << split;
    }
}

TEST(Crc32, AgreesWithZlibAtEveryLengthAndAlignment) {
    const std::vector<uint8_t> data = dcltest::RandomBytes(4096 + 64, 2);
    for (size_t offset = 0; offset < 8; ++offset)
        for (size_t length = 0; length < 100; ++length)
            ASSERT_EQ(Crc(data.data() + offset, length),
                      static_cast<uint32_t>(::crc32(0, data.data() + offset, static_cast<uInt>(length))))
                << offset << " " << length;
    const std::vector<uint8_t> large = dcltest::TextLike(3 << 20, 3);
    EXPECT_EQ(Crc(large.data(), large.size()),
              static_cast<uint32_t>(::crc32(0, large.data(), static_cast<uInt>(large.size()))));
}

}  // namespace
