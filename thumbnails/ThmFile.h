// The .thm thumbnail file, byte for byte. Portable: the thumbnail item reads
// and writes files through this, and the tests and the fuzzer feed it bytes.
//
//   offset      width  field
//   0           4      pathLength  P, may be 0
//   4           P      path        the picture's full path
//   4 + P       4      nameLength  N, may be 0
//   8 + P       N      name        the picture's path relative to the thumbnail root
//   8 + P + N   4      imageSize   S
//   12 + P + N  S      image       the picture as a whole image file (a writer puts a 24-bit BMP)
//
// Lengths are 32-bit little-endian; texts are 8-bit with no terminator and no
// padding. There is no magic number, version or checksum, and the end of the
// image ends the file: whatever follows it is not read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace thumbnails {

// An image the imaging layer would refuse for its size anyway is not read
// into memory at all.
constexpr uint64_t kMaxThmImageBytes = 256ull * 1024 * 1024;

// Where a read stopped. Every field has its own short-read status, so that a
// caller can tell which fields it already has.
enum class ThmReadStatus {
    kComplete,
    kShortPathLength,
    kShortPath,
    kShortNameLength,
    kShortName,
    kShortImageSize,
    kShortImage,
    kImageTooLarge,
};

// The bytes of a .thm file, read in order from its start.
class ThmByteSource {
public:
    virtual ~ThmByteSource() = default;
    // Reads up to `count` bytes; returns how many were read (fewer at the end).
    virtual size_t Read(void* buffer, size_t count) = 0;
    // The bytes left behind the current position. A length that claims more
    // is a short read, found out before anything is allocated for it.
    virtual uint64_t Remaining() const = 0;
};

class ThmMemorySource : public ThmByteSource {
public:
    ThmMemorySource(const uint8_t* data, size_t size) : data_(data), size_(data != nullptr ? size : 0) {}
    size_t Read(void* buffer, size_t count) override;
    uint64_t Remaining() const override { return size_ - position_; }

private:
    const uint8_t* data_;
    size_t size_;
    size_t position_ = 0;
};

// What a read delivered. The texts are set as soon as they are read, so a
// read that fails later leaves them changed, as the item's fields are.
struct ThmContents {
    bool pathRead = false;
    std::string path;
    bool nameRead = false;
    std::string name;
    std::vector<uint8_t> image;
};

// Reads the fields in order and stops at the first one that is short. A text
// ends at its first NUL byte, as a terminated text made from it would.
ThmReadStatus ReadThmContents(ThmByteSource& source, ThmContents& contents);

// The bytes in front of an image of `imageSize` bytes: pathLength, path,
// nameLength, name, imageSize. A text beyond 4 GiB - 1 bytes is cut there, so
// that its length field stays true.
std::vector<uint8_t> EncodeThmHeader(const std::string& path, const std::string& name, uint32_t imageSize);
// A whole .thm file. An image beyond 4 GiB - 1 bytes is cut there likewise.
std::vector<uint8_t> EncodeThm(const std::string& path, const std::string& name, const uint8_t* image,
                               size_t imageSize);

}  // namespace thumbnails
