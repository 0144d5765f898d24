// The fixed codes of the compressed stream, shared by implode and explode.
//
// Each of the three codes (literals in text mode, match lengths, the high bits
// of match distances) is a complete canonical prefix code given by its code
// lengths: shorter codes take the lower code values, symbols of one length
// follow in symbol order. The stream carries every code bit-inverted, highest
// bit first, in a bit stream that fills each byte from its least significant
// bit. The tables below turn that into values that go straight into, or come
// straight out of, an LSB-first bit buffer. Also the few helpers that implode
// and explode share.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace dcl::detail {

// Header bytes: literal coding, then log2(dictionary size) - 6.
inline constexpr unsigned kMinDictionaryBits = 4;
inline constexpr unsigned kMaxDictionaryBits = 6;

inline constexpr unsigned kMinMatch = 2;
inline constexpr unsigned kMaxMatch = 518;
// A match of this length ends the stream.
inline constexpr unsigned kEndLength = 519;
// A length-2 match carries only two low distance bits, so it reaches 256 back.
inline constexpr unsigned kLowBitsForShortMatch = 2;
inline constexpr unsigned kMaxShortMatchDistance = 256;
inline constexpr unsigned kMaxDistance = 4096;

inline constexpr unsigned kLiteralCodeMaxBits = 13;
inline constexpr unsigned kLengthCodeMaxBits = 7;
inline constexpr unsigned kDistanceCodeMaxBits = 8;
inline constexpr unsigned kLengthCodeCount = 16;
inline constexpr unsigned kDistanceCodeCount = 64;

// Literal code lengths in text mode: short codes for letters, digits, spaces
// and line breaks, long ones for control characters and bytes above 0x7F.
inline constexpr uint8_t kLiteralCodeBits[256] = {
    11, 12, 12, 12, 12, 12, 12, 12, 12, 8,  7,  12, 12, 7,  12, 12,  // 0x00
    12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 13, 12, 12, 12, 12, 12,  // 0x10
    4,  10, 8,  12, 10, 12, 10, 8,  7,  7,  8,  9,  7,  6,  7,  8,   // 0x20
    7,  6,  7,  7,  7,  7,  8,  7,  7,  8,  8,  12, 11, 7,  9,  11,  // 0x30
    12, 6,  7,  6,  6,  5,  7,  8,  8,  6,  11, 9,  6,  7,  6,  6,   // 0x40
    7,  11, 6,  6,  6,  7,  9,  8,  9,  9,  11, 8,  11, 9,  12, 8,   // 0x50
    12, 5,  6,  6,  6,  5,  6,  6,  6,  5,  11, 7,  5,  6,  5,  5,   // 0x60
    6,  10, 5,  5,  5,  5,  8,  7,  8,  8,  10, 11, 11, 12, 12, 12,  // 0x70
    13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13,  // 0x80
    13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13,  // 0x90
    13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13,  // 0xA0
    12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12,  // 0xB0
    12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12,  // 0xC0
    12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12,  // 0xD0
    13, 12, 13, 13, 13, 12, 13, 13, 13, 12, 13, 13, 13, 13, 12, 13,  // 0xE0
    13, 13, 12, 12, 12, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13,  // 0xF0
};

// Length symbols: code length, shortest match length, extra bits after the code.
// Symbol 0 stands for length 3 and symbol 1 for length 2.
inline constexpr uint8_t kLengthCodeBits[kLengthCodeCount] = {2, 3, 3, 3, 4, 4, 4, 5, 5, 5, 5, 6, 6, 6, 7, 7};
inline constexpr uint16_t kLengthBase[kLengthCodeCount] = {3,  2,  4,  5,  6,  7,  8,   9,
                                                           10, 12, 16, 24, 40, 72, 136, 264};
inline constexpr uint8_t kLengthExtraBits[kLengthCodeCount] = {0, 0, 0, 0, 0, 0, 0, 0,
                                                               1, 2, 3, 4, 5, 6, 7, 8};

inline constexpr uint8_t kDistanceCodeBits[kDistanceCodeCount] = {
    2, 4, 4, 5, 5, 5, 5, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7,
    7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8,
};

// Each symbol's code as it lies in an LSB-first bit buffer.
template <size_t N>
constexpr std::array<uint16_t, N> StreamCodes(const uint8_t (&bits)[N]) {
    constexpr unsigned kLongest = 16;
    unsigned count[kLongest + 1] = {};
    for (size_t symbol = 0; symbol < N; ++symbol) ++count[bits[symbol]];
    unsigned next[kLongest + 1] = {};
    unsigned code = 0;
    for (unsigned length = 1; length <= kLongest; ++length) {
        code = (code + count[length - 1]) << 1;
        next[length] = code;
    }
    std::array<uint16_t, N> codes = {};
    for (size_t symbol = 0; symbol < N; ++symbol) {
        const unsigned length = bits[symbol];
        const unsigned inverted = ~next[length]++ & ((1u << length) - 1);
        unsigned reversed = 0;
        for (unsigned bit = 0; bit < length; ++bit)
            reversed |= ((inverted >> bit) & 1u) << (length - 1 - bit);
        codes[symbol] = static_cast<uint16_t>(reversed);
    }
    return codes;
}

// The codes are complete: every bit pattern decodes, so explode never meets
// an invalid code, and a table of 2^maxBits entries covers them.
template <size_t N>
constexpr bool IsCompleteCode(const uint8_t (&bits)[N], unsigned maxBits) {
    unsigned long long sum = 0;
    for (size_t symbol = 0; symbol < N; ++symbol) {
        if (bits[symbol] == 0 || bits[symbol] > maxBits) return false;
        sum += 1ull << (maxBits - bits[symbol]);
    }
    return sum == (1ull << maxBits);
}
static_assert(IsCompleteCode(kLiteralCodeBits, kLiteralCodeMaxBits));
static_assert(IsCompleteCode(kLengthCodeBits, kLengthCodeMaxBits));
static_assert(IsCompleteCode(kDistanceCodeBits, kDistanceCodeMaxBits));

inline constexpr std::array<uint16_t, 256> kLiteralCodes = StreamCodes(kLiteralCodeBits);
inline constexpr std::array<uint16_t, kLengthCodeCount> kLengthCodes = StreamCodes(kLengthCodeBits);
inline constexpr std::array<uint16_t, kDistanceCodeCount> kDistanceCodes = StreamCodes(kDistanceCodeBits);

// Decoding: the next maxBits bits of the stream index a table whose entry
// holds the symbol (above bit 4) and the length of its code (low 4 bits).
template <unsigned kMaxBits, size_t N>
constexpr std::array<uint16_t, (1u << kMaxBits)> DecodeTable(const uint8_t (&bits)[N]) {
    const std::array<uint16_t, N> codes = StreamCodes(bits);
    std::array<uint16_t, (1u << kMaxBits)> table = {};
    for (size_t symbol = 0; symbol < N; ++symbol)
        for (unsigned index = codes[symbol]; index < (1u << kMaxBits); index += 1u << bits[symbol])
            table[index] = static_cast<uint16_t>(symbol << 4 | bits[symbol]);
    return table;
}

inline constexpr std::array<uint16_t, (1u << kLiteralCodeMaxBits)> kLiteralDecode =
    DecodeTable<kLiteralCodeMaxBits>(kLiteralCodeBits);
inline constexpr std::array<uint16_t, (1u << kDistanceCodeMaxBits)> kDistanceDecode =
    DecodeTable<kDistanceCodeMaxBits>(kDistanceCodeBits);

// Length decoding in one look-up: the code length, the extra bits and the base.
struct LengthDecodeEntry {
    uint16_t base;
    uint8_t codeBits;
    uint8_t extraBits;
};

constexpr std::array<LengthDecodeEntry, (1u << kLengthCodeMaxBits)> MakeLengthDecode() {
    const auto symbols = DecodeTable<kLengthCodeMaxBits>(kLengthCodeBits);
    std::array<LengthDecodeEntry, (1u << kLengthCodeMaxBits)> table = {};
    for (size_t index = 0; index < table.size(); ++index) {
        const unsigned symbol = symbols[index] >> 4;
        table[index] = {kLengthBase[symbol], kLengthCodeBits[symbol], kLengthExtraBits[symbol]};
    }
    return table;
}
inline constexpr auto kLengthDecode = MakeLengthDecode();

// Length encoding in one look-up, for lengths 2..519: the match flag, the
// length code and its extra bits, as one bit-buffer value.
struct LengthEncodeEntry {
    uint32_t value;
    uint32_t bits;
};

constexpr std::array<LengthEncodeEntry, kEndLength + 1> MakeLengthEncode() {
    std::array<LengthEncodeEntry, kEndLength + 1> table = {};
    for (unsigned symbol = 0; symbol < kLengthCodeCount; ++symbol) {
        for (unsigned extra = 0; extra < (1u << kLengthExtraBits[symbol]); ++extra) {
            const unsigned length = kLengthBase[symbol] + extra;
            if (length > kEndLength) break;
            const uint32_t value = 1u | static_cast<uint32_t>(kLengthCodes[symbol]) << 1 |
                                   static_cast<uint32_t>(extra) << (1 + kLengthCodeBits[symbol]);
            table[length] = {value, 1u + kLengthCodeBits[symbol] + kLengthExtraBits[symbol]};
        }
    }
    return table;
}
inline constexpr auto kLengthEncode = MakeLengthEncode();

// Eight bytes as a little-endian number, from any address.
inline uint64_t LoadLittleEndian64(const uint8_t* p) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    uint64_t value;
    std::memcpy(&value, p, sizeof(value));
    return value;
#else
    return static_cast<uint64_t>(p[0]) | static_cast<uint64_t>(p[1]) << 8 |
           static_cast<uint64_t>(p[2]) << 16 | static_cast<uint64_t>(p[3]) << 24 |
           static_cast<uint64_t>(p[4]) << 32 | static_cast<uint64_t>(p[5]) << 40 |
           static_cast<uint64_t>(p[6]) << 48 | static_cast<uint64_t>(p[7]) << 56;
#endif
}

// Places T at the first suitably aligned address of the caller's work buffer.
template <typename T, size_t kBufferSize>
T* PlaceInWorkBuffer(char* buffer) {
    static_assert(sizeof(T) + alignof(T) - 1 <= kBufferSize, "state does not fit in the work buffer");
    const uintptr_t address = reinterpret_cast<uintptr_t>(buffer);
    const uintptr_t padding = (alignof(T) - address % alignof(T)) % alignof(T);
    return new (buffer + padding) T;
}

}  // namespace dcl::detail
