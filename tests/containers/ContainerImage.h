// Lays out the bytes of a container by hand, so that tests can make exactly
// the file they need, well-formed or not.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "containers/ArtFormat.h"

namespace testsupport {

class ContainerImage {
public:
    ContainerImage() : bytes_(static_cast<size_t>(containers::kFirstFreeOffset), 0) {
        std::memcpy(header.notice, containers::kDefaultNotice, sizeof containers::kDefaultNotice);
    }

    containers::ArtContainerHeader header;
    containers::ArtKeywordDirectory keywordDirectory;
    containers::ArtEntryDirectory entryDirectory;
    containers::ArtReservedDirectory reservedDirectory;

    int32_t Offset() const { return static_cast<int32_t>(bytes_.size()); }

    int32_t Append(const void* data, size_t size) {
        int32_t at = Offset();
        const auto* p = static_cast<const uint8_t*>(data);
        bytes_.insert(bytes_.end(), p, p + size);
        return at;
    }
    int32_t Append(const std::vector<uint8_t>& data) { return Append(data.data(), data.size()); }
    int32_t AppendLong(int32_t value) {
        uint8_t b[4];
        containers::StoreLong(b, value);
        return Append(b, 4);
    }

    // A rendition chunk with `payload`; chunkSize counts header and payload.
    int32_t AppendRendition(const std::vector<uint8_t>& payload, int32_t words = 0) {
        containers::ArtRenditionHeader h;
        h.chunkSize = static_cast<int32_t>(payload.size() + containers::kRenditionHeaderSize);
        h.word1 = words;
        h.word2 = words + 1;
        h.word3 = words + 2;
        h.word4 = words + 3;
        uint8_t b[containers::kRenditionHeaderSize];
        h.Encode(b);
        int32_t at = Append(b, sizeof b);
        Append(payload);
        return at;
    }

    // A data chunk; chunkSize counts the payload and twelve header bytes.
    int32_t AppendData(int32_t method, const std::vector<uint8_t>& payload, int32_t uncompressedSize,
                       int32_t word1 = 0) {
        containers::ArtDataChunkHeader h;
        h.chunkSize = static_cast<int32_t>(payload.size() + containers::kDataChunkSizeBias);
        h.word1 = word1;
        h.method = method;
        h.uncompressedSize = uncompressedSize;
        uint8_t b[containers::kDataChunkHeaderSize];
        h.Encode(b);
        int32_t at = Append(b, sizeof b);
        Append(payload);
        return at;
    }

    int32_t AppendEntry(const containers::ArtEntryRecord& entry) {
        uint8_t b[containers::kEntryRecordSize];
        entry.Encode(b);
        return Append(b, sizeof b);
    }

    // An entry table of `entries`, recorded in the entry directory and header.
    int32_t AppendEntryTable(const std::vector<containers::ArtEntryRecord>& entries) {
        int32_t at = Offset();
        for (const auto& entry : entries) AppendEntry(entry);
        entryDirectory.entryTableOffset = at;
        header.itemCount = static_cast<int32_t>(entries.size());
        return at;
    }

    void PatchLong(int32_t at, int32_t value) {
        containers::StoreLong(&bytes_[static_cast<size_t>(at)], value);
    }

    std::vector<uint8_t> Bytes() const {
        std::vector<uint8_t> out = bytes_;
        header.Encode(&out[0]);
        keywordDirectory.Encode(&out[containers::kKeywordDirectoryOffset]);
        entryDirectory.Encode(&out[containers::kEntryDirectoryOffset]);
        reservedDirectory.Encode(&out[containers::kReservedDirectoryOffset]);
        return out;
    }

private:
    std::vector<uint8_t> bytes_;
};

inline containers::ArtEntryRecord MakeEntry(int32_t code, const std::string& name, const std::string& path) {
    containers::ArtEntryRecord entry;
    entry.code = code;
    std::strncpy(entry.name, name.c_str(), sizeof entry.name - 1);
    std::strncpy(entry.path, path.c_str(), sizeof entry.path - 1);
    for (int32_t& offset : entry.renditionOffsets) offset = containers::kNoRendition;
    return entry;
}

// Serialises texts in the archive encoding of a string map.
class ArchiveBytes {
public:
    ArchiveBytes& Count(uint32_t count) {
        if (count < 0xFFFF) return Word(static_cast<uint16_t>(count));
        Word(0xFFFF);
        return Dword(count);
    }
    ArchiveBytes& String(const std::string& text) {
        const size_t n = text.size();
        if (n < 255) {
            Byte(static_cast<uint8_t>(n));
        } else if (n < 0xFFFE) {
            Byte(0xFF);
            Word(static_cast<uint16_t>(n));
        } else {
            Byte(0xFF);
            Word(0xFFFF);
            Dword(static_cast<uint32_t>(n));
        }
        bytes.insert(bytes.end(), text.begin(), text.end());
        return *this;
    }
    // A UTF-16 text behind the FF FE FF marker, with a one-byte length.
    ArchiveBytes& WideString(const std::u16string& text) {
        Byte(0xFF);
        Word(0xFFFE);
        Byte(static_cast<uint8_t>(text.size()));
        for (char16_t c : text) Word(static_cast<uint16_t>(c));
        return *this;
    }
    ArchiveBytes& Byte(uint8_t b) {
        bytes.push_back(b);
        return *this;
    }
    ArchiveBytes& Word(uint16_t w) {
        return Byte(static_cast<uint8_t>(w)).Byte(static_cast<uint8_t>(w >> 8));
    }
    ArchiveBytes& Dword(uint32_t d) {
        return Word(static_cast<uint16_t>(d)).Word(static_cast<uint16_t>(d >> 16));
    }

    std::vector<uint8_t> bytes;
};

}  // namespace testsupport
