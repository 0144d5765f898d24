// Compression and decompression of a data chunk's payload by its method, for
// the tools that write and check containers. Unlike the reader's own road,
// decoding here reports success as success for every method, and tells how
// many bytes the stream really held.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace containers {

struct ImplodeSettings {
    unsigned int type = 1;  // dcl::kCompressionAscii
    unsigned int dictionarySize = 4096;
};

// Method 0 copies, 1 is zlib's `compress`, 2 is implode into an output that
// grows as needed (so data that doesn't shrink is still written).
bool CompressChunk(int32_t method, const std::vector<uint8_t>& data, const ImplodeSettings& implode,
                   std::vector<uint8_t>& payload, std::string& error);

// Decodes `payload` by `method` into exactly `uncompressedSize` bytes. False
// with the reason in `error` when the method is unknown, the stream is bad,
// or it holds more or fewer bytes than `uncompressedSize`.
bool DecompressChunk(int32_t method, const uint8_t* payload, size_t payloadSize, int32_t uncompressedSize,
                     std::vector<uint8_t>& data, std::string& error);

}  // namespace containers
