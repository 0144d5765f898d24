// The records of a .qlt art container, as they stand in the file: all
// integers little-endian, every position an absolute offset from the start of
// the file. Each record decodes from and encodes to its exact bytes, so the
// reader and the writer share one description of the format.
#pragma once

#include <cstddef>
#include <cstdint>

namespace containers {

constexpr int64_t kHeaderSize = 296;
constexpr int64_t kKeywordDirectoryOffset = 296;
constexpr int64_t kKeywordDirectorySize = 12;
constexpr int64_t kEntryDirectoryOffset = 308;
constexpr int64_t kEntryDirectorySize = 8;
constexpr int64_t kReservedDirectoryOffset = 316;
constexpr int64_t kReservedDirectorySize = 8;
constexpr int64_t kFirstFreeOffset = 324;
constexpr int64_t kEntryRecordSize = 540;
constexpr int64_t kRenditionHeaderSize = 20;
constexpr int64_t kDataChunkHeaderSize = 16;
// A data chunk's size field counts only twelve bytes of its sixteen-byte header.
constexpr int64_t kDataChunkSizeBias = 12;
constexpr size_t kNoticeSize = 260;
constexpr size_t kEntryTextSize = 255;

// Rendition offsets of -1 and 0 both mean "no rendition of that kind".
constexpr int32_t kNoRendition = -1;

// The maker's notice that a freshly reset header carries.
constexpr const char kDefaultNotice[] = "Lumbrel art container (c) Lumbrel 2026";

// Data chunk methods.
enum ChunkMethod : int32_t { kMethodStored = 0, kMethodZlib = 1, kMethodImplode = 2 };

struct ArtContainerHeader {
    int32_t headerWord0 = 0;
    char notice[kNoticeSize] = {};
    double version = 1.0;
    int32_t headerWord1 = 0;
    int32_t headerWord2 = 0;
    int32_t itemCount = 0;
    int32_t headerWord3 = 0;
    int32_t headerWord4 = 0;
    int32_t headerWord5 = 0;

    void Decode(const uint8_t* bytes);
    void Encode(uint8_t* bytes) const;
};

struct ArtKeywordDirectory {
    int32_t word0 = 0;
    int32_t keywordMapOffset = 0;
    int32_t keywordMapBufferSize = 0;

    void Decode(const uint8_t* bytes);
    void Encode(uint8_t* bytes) const;
};

struct ArtEntryDirectory {
    int32_t word0 = 0;
    int32_t entryTableOffset = 0;

    void Decode(const uint8_t* bytes);
    void Encode(uint8_t* bytes) const;
};

struct ArtReservedDirectory {
    int32_t word0 = 0;
    int32_t word1 = 0;

    void Decode(const uint8_t* bytes);
    void Encode(uint8_t* bytes) const;
};

// Rendition kinds, named by the edge of the square box that they fill.
constexpr int32_t kRenditionKinds[5] = {0x10, 0x20, 0x30, 0x40, 0x80};

struct ArtEntryRecord {
    int32_t code = 0;
    char name[kEntryTextSize] = {};
    char path[kEntryTextSize] = {};
    // Offsets of the renditions of kinds 0x10, 0x20, 0x30, 0x40 and 0x80.
    int32_t renditionOffsets[5] = {};
    int32_t dataOffset = 0;

    // The offset field for `kind`; any kind other than the five reads 0x80's.
    int32_t RenditionOffset(int32_t kind) const;
    // The texts, up to their first NUL and never beyond their fields.
    const char* NameEnd() const;
    const char* PathEnd() const;

    void Decode(const uint8_t* bytes);
    void Encode(uint8_t* bytes) const;
};

struct ArtRenditionHeader {
    int32_t chunkSize = 0;  // header plus payload
    int32_t word1 = 0;
    int32_t word2 = 0;
    int32_t word3 = 0;
    int32_t word4 = 0;

    void Decode(const uint8_t* bytes);
    void Encode(uint8_t* bytes) const;
};

struct ArtDataChunkHeader {
    int32_t chunkSize = 0;  // payload + 12
    int32_t word1 = 0;
    int32_t method = kMethodStored;
    int32_t uncompressedSize = 0;

    void Decode(const uint8_t* bytes);
    void Encode(uint8_t* bytes) const;
};

// Little-endian field access shared by the records.
int32_t LoadLong(const uint8_t* bytes);
void StoreLong(uint8_t* bytes, int32_t value);

}  // namespace containers
