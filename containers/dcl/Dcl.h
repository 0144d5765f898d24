// The PKWARE Data Compression Library's stream interface: implode and explode
// driven by read and write callbacks, and the CRC-32 that goes with them.
// Our own portable implementation of the format; see docs/architecture.md.
#pragma once

#include <cstdint>

namespace dcl {

// Puts up to *size bytes into buf and returns how many it put there; 0 at the
// end of the input. May lower *size.
using ReadCallback = unsigned int (*)(char* buf, unsigned int* size, void* param);
// Takes the *size bytes at buf.
using WriteCallback = void (*)(char* buf, unsigned int* size, void* param);

// Literal coding of a compressed stream.
constexpr unsigned int kCompressionBinary = 0;  // literals as plain bytes
constexpr unsigned int kCompressionAscii = 1;   // literals Huffman-coded for text

// Scratch memory that the caller hands to implode and explode; all of their
// state lives in it.
constexpr unsigned int kWorkBufferSize = 36312;

enum Result : unsigned int {
    kOk = 0,
    kInvalidDictionarySize = 1,
    kInvalidMode = 2,
    kBadData = 3,
    kAbort = 4,
};

// Compresses everything `read` delivers. *type is kCompressionBinary or
// kCompressionAscii; *dictionarySize is 1024, 2048 or 4096.
unsigned int implode(ReadCallback read, WriteCallback write, char* workBuffer, void* param,
                     unsigned int* type, unsigned int* dictionarySize);

// Decompresses one stream; literal coding and dictionary size come from the
// stream itself. kOk once the end code has been read.
unsigned int explode(ReadCallback read, WriteCallback write, char* workBuffer, void* param);

// The ordinary CRC-32 (reflected, polynomial 0xEDB88320) over *size bytes,
// continuing from *oldCrc without pre- or post-inversion: the caller starts
// with 0xFFFFFFFF and complements the end result.
uint32_t crc32(const char* buffer, unsigned int* size, uint32_t* oldCrc);

}  // namespace dcl
