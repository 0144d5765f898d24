#include "containers/ArtFormat.h"

#include <cstring>

namespace containers {

int32_t LoadLong(const uint8_t* bytes) {
    uint32_t value = static_cast<uint32_t>(bytes[0]) | (static_cast<uint32_t>(bytes[1]) << 8) |
                     (static_cast<uint32_t>(bytes[2]) << 16) | (static_cast<uint32_t>(bytes[3]) << 24);
    return static_cast<int32_t>(value);
}

void StoreLong(uint8_t* bytes, int32_t value) {
    uint32_t bits = static_cast<uint32_t>(value);
    bytes[0] = static_cast<uint8_t>(bits);
    bytes[1] = static_cast<uint8_t>(bits >> 8);
    bytes[2] = static_cast<uint8_t>(bits >> 16);
    bytes[3] = static_cast<uint8_t>(bits >> 24);
}

namespace {

double LoadDouble(const uint8_t* bytes) {
    uint64_t bits = 0;
    for (int i = 7; i >= 0; --i) bits = (bits << 8) | bytes[i];
    double value;
    static_assert(sizeof value == sizeof bits, "IEEE double");
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

void StoreDouble(uint8_t* bytes, double value) {
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    for (int i = 0; i < 8; ++i) bytes[i] = static_cast<uint8_t>(bits >> (8 * i));
}

}  // namespace

void ArtContainerHeader::Decode(const uint8_t* bytes) {
    headerWord0 = LoadLong(bytes);
    std::memcpy(notice, bytes + 4, kNoticeSize);
    version = LoadDouble(bytes + 264);
    headerWord1 = LoadLong(bytes + 272);
    headerWord2 = LoadLong(bytes + 276);
    itemCount = LoadLong(bytes + 280);
    headerWord3 = LoadLong(bytes + 284);
    headerWord4 = LoadLong(bytes + 288);
    headerWord5 = LoadLong(bytes + 292);
}

void ArtContainerHeader::Encode(uint8_t* bytes) const {
    StoreLong(bytes, headerWord0);
    std::memcpy(bytes + 4, notice, kNoticeSize);
    StoreDouble(bytes + 264, version);
    StoreLong(bytes + 272, headerWord1);
    StoreLong(bytes + 276, headerWord2);
    StoreLong(bytes + 280, itemCount);
    StoreLong(bytes + 284, headerWord3);
    StoreLong(bytes + 288, headerWord4);
    StoreLong(bytes + 292, headerWord5);
}

void ArtKeywordDirectory::Decode(const uint8_t* bytes) {
    word0 = LoadLong(bytes);
    keywordMapOffset = LoadLong(bytes + 4);
    keywordMapBufferSize = LoadLong(bytes + 8);
}

void ArtKeywordDirectory::Encode(uint8_t* bytes) const {
    StoreLong(bytes, word0);
    StoreLong(bytes + 4, keywordMapOffset);
    StoreLong(bytes + 8, keywordMapBufferSize);
}

void ArtEntryDirectory::Decode(const uint8_t* bytes) {
    word0 = LoadLong(bytes);
    entryTableOffset = LoadLong(bytes + 4);
}

void ArtEntryDirectory::Encode(uint8_t* bytes) const {
    StoreLong(bytes, word0);
    StoreLong(bytes + 4, entryTableOffset);
}

void ArtReservedDirectory::Decode(const uint8_t* bytes) {
    word0 = LoadLong(bytes);
    word1 = LoadLong(bytes + 4);
}

void ArtReservedDirectory::Encode(uint8_t* bytes) const {
    StoreLong(bytes, word0);
    StoreLong(bytes + 4, word1);
}

int32_t ArtEntryRecord::RenditionOffset(int32_t kind) const {
    for (int i = 0; i < 5; ++i)
        if (kRenditionKinds[i] == kind) return renditionOffsets[i];
    return renditionOffsets[4];
}

const char* ArtEntryRecord::NameEnd() const {
    const void* nul = std::memchr(name, '\0', kEntryTextSize);
    return nul != nullptr ? static_cast<const char*>(nul) : name + kEntryTextSize;
}

const char* ArtEntryRecord::PathEnd() const {
    const void* nul = std::memchr(path, '\0', kEntryTextSize);
    return nul != nullptr ? static_cast<const char*>(nul) : path + kEntryTextSize;
}

void ArtEntryRecord::Decode(const uint8_t* bytes) {
    code = LoadLong(bytes);
    std::memcpy(name, bytes + 4, kEntryTextSize);
    std::memcpy(path, bytes + 259, kEntryTextSize);
    for (int i = 0; i < 5; ++i) renditionOffsets[i] = LoadLong(bytes + 516 + 4 * i);
    dataOffset = LoadLong(bytes + 536);
}

void ArtEntryRecord::Encode(uint8_t* bytes) const {
    StoreLong(bytes, code);
    std::memcpy(bytes + 4, name, kEntryTextSize);
    std::memcpy(bytes + 259, path, kEntryTextSize);
    bytes[514] = 0;
    bytes[515] = 0;
    for (int i = 0; i < 5; ++i) StoreLong(bytes + 516 + 4 * i, renditionOffsets[i]);
    StoreLong(bytes + 536, dataOffset);
}

void ArtRenditionHeader::Decode(const uint8_t* bytes) {
    chunkSize = LoadLong(bytes);
    word1 = LoadLong(bytes + 4);
    word2 = LoadLong(bytes + 8);
    word3 = LoadLong(bytes + 12);
    word4 = LoadLong(bytes + 16);
}

void ArtRenditionHeader::Encode(uint8_t* bytes) const {
    StoreLong(bytes, chunkSize);
    StoreLong(bytes + 4, word1);
    StoreLong(bytes + 8, word2);
    StoreLong(bytes + 12, word3);
    StoreLong(bytes + 16, word4);
}

void ArtDataChunkHeader::Decode(const uint8_t* bytes) {
    chunkSize = LoadLong(bytes);
    word1 = LoadLong(bytes + 4);
    method = LoadLong(bytes + 8);
    uncompressedSize = LoadLong(bytes + 12);
}

void ArtDataChunkHeader::Encode(uint8_t* bytes) const {
    StoreLong(bytes, chunkSize);
    StoreLong(bytes + 4, word1);
    StoreLong(bytes + 8, method);
    StoreLong(bytes + 12, uncompressedSize);
}

}  // namespace containers
