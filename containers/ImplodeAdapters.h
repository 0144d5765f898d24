// Runs the stream codec of the PKWARE Data Compression Library from one memory
// buffer to another. Results: 1 on success, 0 on failure. The output span is
// never exceeded: a block that would overrun it is not copied at all, and no
// read or write is served after that.
#pragma once

#include <cstdint>

namespace containers {

// One span of memory.
struct MemoryCursor {
    uint8_t* data = nullptr;
    uint32_t position = 0;  // bytes consumed or produced so far
    uint32_t size = 0;      // length of the span
};

enum ImplodeStreamMode : int32_t { kModeCompress = 1, kModeDecompress = 2 };

// The state handed to the codec as its opaque parameter.
struct ImplodeStream {
    MemoryCursor source;  // input when compressing
    MemoryCursor middle;  // output when compressing, input when decompressing
    MemoryCursor target;  // output when decompressing
    int32_t mode = 0;
    uint32_t crc = 0;           // running CRC-32 of the uncompressed data
    uint32_t totalWritten = 0;  // compressed bytes produced (compressing)
    int32_t overflow = 0;       // 1 once the output span has been exceeded
};

// The codec's callbacks, with an ImplodeStream as their parameter.
unsigned int ImplodeReadCallback(char* buffer, unsigned int* size, void* param);
void ImplodeWriteCallback(char* buffer, unsigned int* size, void* param);

// Compresses in text (ASCII) mode with a 4096-byte dictionary; the output may
// be no longer than the input, so data that does not shrink fails.
int ImplodeMemory(uint32_t* crc, uint32_t* compressedSize, const uint8_t* source, uint8_t* target,
                  uint32_t sourceSize);
int ExplodeMemory(uint32_t* crc, const uint8_t* source, uint32_t sourceSize, uint8_t* target,
                  uint32_t targetSize);

// Compresses a copy of the source into target; *size is the source size going
// in and the compressed size coming out. Null arguments: 1, and nothing done.
int ImplodeBuffer(uint8_t* target, const uint8_t* source, uint32_t* size);
// Decompresses into at most *targetSize bytes; the size is not written back.
// Null source or target: 1, and nothing done.
int ExplodeBuffer(const uint8_t* source, uint32_t sourceSize, uint8_t* target, const uint32_t* targetSize);

}  // namespace containers
