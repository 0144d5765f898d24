#include <array>
#include <cstddef>
#include <cstdint>

#include "containers/dcl/Dcl.h"

namespace dcl {

namespace {

constexpr uint32_t kPolynomial = 0xEDB88320u;
constexpr unsigned kSlices = 8;

// Slice 0 is the classic byte table; slice k advances a byte through k more
// zero bytes, so eight input bytes fold in with eight independent look-ups.
constexpr std::array<std::array<uint32_t, 256>, kSlices> MakeTables() {
    std::array<std::array<uint32_t, 256>, kSlices> tables = {};
    for (uint32_t byte = 0; byte < 256; ++byte) {
        uint32_t crc = byte;
        for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1u) ? kPolynomial : 0u);
        tables[0][byte] = crc;
    }
    for (uint32_t byte = 0; byte < 256; ++byte)
        for (unsigned slice = 1; slice < kSlices; ++slice)
            tables[slice][byte] = (tables[slice - 1][byte] >> 8) ^ tables[0][tables[slice - 1][byte] & 0xFFu];
    return tables;
}

constexpr auto kTables = MakeTables();

inline uint32_t Load32(const unsigned char* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

}  // namespace

uint32_t crc32(const char* buffer, unsigned int* size, uint32_t* oldCrc) {
    uint32_t crc = *oldCrc;
    const unsigned char* p = reinterpret_cast<const unsigned char*>(buffer);
    size_t left = *size;
    while (left >= kSlices) {
        const uint32_t low = Load32(p) ^ crc;
        const uint32_t high = Load32(p + 4);
        crc = kTables[7][low & 0xFFu] ^ kTables[6][(low >> 8) & 0xFFu] ^ kTables[5][(low >> 16) & 0xFFu] ^
              kTables[4][low >> 24] ^ kTables[3][high & 0xFFu] ^ kTables[2][(high >> 8) & 0xFFu] ^
              kTables[1][(high >> 16) & 0xFFu] ^ kTables[0][high >> 24];
        p += kSlices;
        left -= kSlices;
    }
    while (left-- != 0) crc = kTables[0][(crc ^ *p++) & 0xFFu] ^ (crc >> 8);
    return crc;
}

}  // namespace dcl
