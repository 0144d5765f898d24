// Little-endian fields of the picture formats that the thumbnails read and
// rebuild (BMP headers, metafile records): read and written byte by byte, so
// that neither alignment nor the machine's byte order matters.
#pragma once

#include <cstdint>
#include <cstring>

namespace byteorder {

inline uint32_t Read16(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8;
}

inline uint32_t Read32(const uint8_t* p) {
    return Read16(p) | Read16(p + 2) << 16;
}

// The two's complement value of a 32-bit field.
inline int32_t Signed32(uint32_t value) {
    int32_t result;
    std::memcpy(&result, &value, sizeof result);
    return result;
}

inline int32_t ReadSigned32(const uint8_t* p) {
    return Signed32(Read32(p));
}

inline void Write16(uint8_t* p, uint32_t value) {
    p[0] = static_cast<uint8_t>(value);
    p[1] = static_cast<uint8_t>(value >> 8);
}

inline void Write32(uint8_t* p, uint32_t value) {
    Write16(p, value & 0xFFFF);
    Write16(p + 2, value >> 16);
}

}  // namespace byteorder
