// Reads values in the classic archive encoding from a file, starting at the
// file's current position: little-endian integers, counts in a short and a
// long form, and length-prefixed texts. Every read is bounded by the file:
// running out of bytes, or a length that the rest of the file cannot hold,
// throws ArchiveException before anything is allocated for it.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "framework/File.h"

namespace framework {

class ArchiveException : public std::runtime_error {
public:
    explicit ArchiveException(const std::string& message) : std::runtime_error(message) {}
};

class ArchiveReader {
public:
    // Reads through a buffer of `bufferSize` bytes (at least 128).
    ArchiveReader(File& file, int64_t bufferSize);

    uint8_t ReadByte();
    uint16_t ReadWord();
    uint32_t ReadDword();
    // A count: two bytes, or FF FF and then four bytes.
    uint32_t ReadCount();
    // A text with its length prefix; a UTF-16 text (prefix FF FE FF) comes back
    // as 8-bit ANSI text.
    std::string ReadString();

private:
    void ReadBytes(void* out, size_t count);
    void Fill();
    uint64_t BytesLeft() const;

    File& file_;
    std::vector<uint8_t> buffer_;
    size_t begin_ = 0;
    size_t end_ = 0;
    int64_t fileLength_ = 0;
};

// Converts one UTF-16 code unit to the 8-bit Western code page (Windows-1252),
// '?' where it has no 8-bit form.
char Utf16UnitToAnsi(uint16_t unit);

}  // namespace framework
