// How large an item's data may claim to be once decoded, so that a size
// field cannot make the reader allocate more than the chunk's payload can
// really produce. Each bound comes from the densest stream its codec can
// decode, with a margin; every claim also stays under one global cap.
#pragma once

#include <cstdint>

namespace containers {

// The most that one item's data may claim, whatever its method: 256 MiB, as
// much as the imaging layer keeps of one picture. It bounds the buffer that
// an unknown method hands out, zero-filled, at the size its chunk claims.
constexpr int64_t kMaxItemDataSize = int64_t{256} << 20;

// Bytes per bit of the densest token of a stream: its output and its cost.
struct StreamDensity {
    int64_t bytes = 0;
    int64_t bits = 1;
};

// Deflate: a match of 258 bytes at distance 1, with one-bit codes for both
// (a block may code a single length and a single distance so): 1032 bytes
// per payload byte.
StreamDensity DensestDeflateToken();
// Implode: over every length code, the longest length it carries behind the
// shortest distance code and the low bits of the smallest dictionary (1024
// bytes); that is 518 bytes in 22 bits, about 188 bytes per payload byte.
StreamDensity DensestImplodeToken();

// The largest uncompressedSize accepted for a chunk of `method` whose
// payload is `payloadSize` bytes: the payload itself when stored, the densest
// stream's output plus 1/64 and 1 KB when deflated or imploded, the global
// cap for any other method; never above the cap.
int64_t MaxItemDataSize(int32_t method, int64_t payloadSize);

}  // namespace containers
