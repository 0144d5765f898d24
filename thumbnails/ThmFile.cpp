#include "thumbnails/ThmFile.h"

#include <algorithm>
#include <cstring>

namespace thumbnails {

namespace {

constexpr uint64_t kMaxLength = 0xFFFFFFFFu;

bool ReadLength(ThmByteSource& source, uint32_t* length) {
    uint8_t bytes[4];
    if (source.Read(bytes, sizeof bytes) != sizeof bytes) return false;
    *length = static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
              static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
    return true;
}

// A length that the source cannot satisfy fails before the allocation, so a
// damaged length field never asks for gigabytes.
bool ReadText(ThmByteSource& source, uint32_t length, std::string* text) {
    if (length == 0) {
        text->clear();
        return true;
    }
    if (length > source.Remaining()) return false;
    std::string bytes(length, '\0');
    if (source.Read(&bytes[0], length) != length) return false;
    // The text was terminated and taken as a C string: it ends at a NUL.
    const size_t end = bytes.find('\0');
    if (end != std::string::npos) bytes.resize(end);
    *text = std::move(bytes);
    return true;
}

void AppendLength(std::vector<uint8_t>& out, uint32_t length) {
    out.push_back(static_cast<uint8_t>(length));
    out.push_back(static_cast<uint8_t>(length >> 8));
    out.push_back(static_cast<uint8_t>(length >> 16));
    out.push_back(static_cast<uint8_t>(length >> 24));
}

void AppendText(std::vector<uint8_t>& out, const std::string& text) {
    const uint32_t length = static_cast<uint32_t>(std::min<uint64_t>(text.size(), kMaxLength));
    AppendLength(out, length);
    out.insert(out.end(), text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
}

}  // namespace

size_t ThmMemorySource::Read(void* buffer, size_t count) {
    const size_t available = std::min(count, size_ - position_);
    if (available != 0) std::memcpy(buffer, data_ + position_, available);
    position_ += available;
    return available;
}

ThmReadStatus ReadThmContents(ThmByteSource& source, ThmContents& contents) {
    uint32_t length = 0;
    if (!ReadLength(source, &length)) return ThmReadStatus::kShortPathLength;
    if (!ReadText(source, length, &contents.path)) return ThmReadStatus::kShortPath;
    contents.pathRead = true;

    if (!ReadLength(source, &length)) return ThmReadStatus::kShortNameLength;
    if (!ReadText(source, length, &contents.name)) return ThmReadStatus::kShortName;
    contents.nameRead = true;

    uint32_t imageSize = 0;
    if (!ReadLength(source, &imageSize)) return ThmReadStatus::kShortImageSize;
    if (imageSize > source.Remaining()) return ThmReadStatus::kShortImage;
    if (imageSize > kMaxThmImageBytes) return ThmReadStatus::kImageTooLarge;
    contents.image.assign(imageSize, 0);
    if (imageSize != 0 && source.Read(contents.image.data(), imageSize) != imageSize) {
        contents.image.clear();
        return ThmReadStatus::kShortImage;
    }
    return ThmReadStatus::kComplete;
}

std::vector<uint8_t> EncodeThmHeader(const std::string& path, const std::string& name, uint32_t imageSize) {
    std::vector<uint8_t> out;
    out.reserve(12 + path.size() + name.size());
    AppendText(out, path);
    AppendText(out, name);
    AppendLength(out, imageSize);
    return out;
}

std::vector<uint8_t> EncodeThm(const std::string& path, const std::string& name, const uint8_t* image,
                               size_t imageSize) {
    const uint32_t size =
        image != nullptr ? static_cast<uint32_t>(std::min<uint64_t>(imageSize, kMaxLength)) : 0;
    std::vector<uint8_t> out = EncodeThmHeader(path, name, size);
    if (size != 0) out.insert(out.end(), image, image + size);
    return out;
}

}  // namespace thumbnails
