#include "thumbnails/PictureProbe.h"

#include <algorithm>
#include <cstring>

#include "thumbnails/BitmapDescriptor.h"

namespace imaging {

namespace {

// Bounds-checked reads: every accessor fails instead of reading past the end.
class Bytes {
public:
    Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    size_t Size() const { return size_; }
    bool Has(uint64_t offset, uint64_t count) const { return offset <= size_ && count <= size_ - offset; }

    bool U8(uint64_t offset, uint32_t* out) const {
        if (!Has(offset, 1)) return false;
        *out = data_[offset];
        return true;
    }
    bool U16(uint64_t offset, bool bigEndian, uint32_t* out) const {
        if (!Has(offset, 2)) return false;
        const uint32_t a = data_[offset];
        const uint32_t b = data_[offset + 1];
        *out = bigEndian ? (a << 8 | b) : (b << 8 | a);
        return true;
    }
    bool U32(uint64_t offset, bool bigEndian, uint32_t* out) const {
        if (!Has(offset, 4)) return false;
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            const uint32_t byte = data_[offset + (bigEndian ? i : 3 - i)];
            value = value << 8 | byte;
        }
        *out = value;
        return true;
    }
    bool Equals(uint64_t offset, const char* text, size_t count) const {
        return Has(offset, count) && std::memcmp(data_ + offset, text, count) == 0;
    }

private:
    const uint8_t* data_;
    size_t size_;
};

int32_t AsSigned(uint32_t value) {
    int32_t result;
    std::memcpy(&result, &value, sizeof result);
    return result;
}

PictureProbe Result(ProbeStatus status, PictureKind kind) {
    PictureProbe probe;
    probe.status = status;
    probe.kind = kind;
    return probe;
}

// The size check every format shares: sides of at least one pixel, within the
// limits. Sizes come in as 64-bit so that no header value can wrap.
ProbeStatus CheckSize(int64_t width, int64_t height) {
    if (width < 1 || height < 1) return ProbeStatus::kMalformed;
    if (width > kMaxSide || height > kMaxSide) return ProbeStatus::kTooLarge;
    if (static_cast<uint64_t>(width) * static_cast<uint64_t>(height) > kMaxDecodedPixels)
        return ProbeStatus::kTooLarge;
    return ProbeStatus::kRecognised;
}

PictureProbe Sized(PictureKind kind, int64_t width, int64_t height) {
    PictureProbe probe = Result(CheckSize(width, height), kind);
    if (probe.status == ProbeStatus::kRecognised) {
        probe.width = static_cast<int32_t>(width);
        probe.height = static_cast<int32_t>(height);
        probe.frames = 1;
    }
    return probe;
}

const char kPngSignature[] = "\x89PNG\r\n\x1a\n";

// The IHDR of a PNG stream starting at `offset`.
PictureProbe ProbePngAt(const Bytes& bytes, uint64_t offset, PictureKind kind) {
    uint32_t length = 0, width = 0, height = 0;
    // Signature, chunk length and type, 13 bytes of header and the CRC.
    if (!bytes.Has(offset, 33) || !bytes.U32(offset + 8, true, &length) || length != 13 ||
        !bytes.Equals(offset + 12, "IHDR", 4) || !bytes.U32(offset + 16, true, &width) ||
        !bytes.U32(offset + 20, true, &height))
        return Result(ProbeStatus::kMalformed, kind);
    if (width > 0x7FFFFFFFu || height > 0x7FFFFFFFu) return Result(ProbeStatus::kMalformed, kind);
    return Sized(kind, width, height);
}

PictureProbe ProbeBmp(const Bytes& bytes) {
    uint32_t headerSize = 0;
    if (!bytes.U32(14, false, &headerSize) || !bytes.Has(14, headerSize))
        return Result(ProbeStatus::kMalformed, PictureKind::kBmp);
    int64_t width = 0, height = 0;
    uint32_t bits = 0;
    if (headerSize == 12) {
        uint32_t w = 0, h = 0;
        if (!bytes.U16(18, false, &w) || !bytes.U16(20, false, &h) || !bytes.U16(24, false, &bits))
            return Result(ProbeStatus::kMalformed, PictureKind::kBmp);
        width = w;
        height = h;
    } else if (headerSize >= 40 && headerSize <= 124) {
        uint32_t w = 0, h = 0;
        if (!bytes.U32(18, false, &w) || !bytes.U32(22, false, &h) || !bytes.U16(28, false, &bits))
            return Result(ProbeStatus::kMalformed, PictureKind::kBmp);
        width = AsSigned(w);
        height = AsSigned(h);
        if (height < 0) height = -height;  // top-down rows
    } else {
        return Result(ProbeStatus::kMalformed, PictureKind::kBmp);
    }
    switch (bits) {
        case 0:
        case 1:
        case 2:
        case 4:
        case 8:
        case 16:
        case 24:
        case 32: break;
        default: return Result(ProbeStatus::kMalformed, PictureKind::kBmp);
    }
    return Sized(PictureKind::kBmp, width, height);
}

PictureProbe ProbeJpeg(const Bytes& bytes) {
    uint64_t position = 2;
    while (position < bytes.Size()) {
        uint32_t byte = 0;
        if (!bytes.U8(position, &byte) || byte != 0xFF)
            return Result(ProbeStatus::kMalformed, PictureKind::kJpeg);
        while (bytes.U8(position, &byte) && byte == 0xFF) ++position;  // fill bytes
        uint32_t marker = 0;
        if (!bytes.U8(position, &marker)) break;
        ++position;
        if (marker == 0x01 || marker == 0xD8 || (marker >= 0xD0 && marker <= 0xD7)) continue;
        if (marker == 0xD9 || marker == 0xDA) break;  // end or scan before any frame header
        uint32_t length = 0;
        if (!bytes.U16(position, true, &length) || length < 2) break;
        const bool frameHeader =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (frameHeader) {
            uint32_t height = 0, width = 0, components = 0;
            if (length < 8 || !bytes.U16(position + 3, true, &height) ||
                !bytes.U16(position + 5, true, &width) || !bytes.U8(position + 7, &components) ||
                components == 0)
                break;
            return Sized(PictureKind::kJpeg, width, height);
        }
        position += length;
    }
    return Result(ProbeStatus::kMalformed, PictureKind::kJpeg);
}

// Skips GIF data sub-blocks; false when they run past the end.
bool SkipSubBlocks(const Bytes& bytes, uint64_t* position) {
    for (;;) {
        uint32_t length = 0;
        if (!bytes.U8(*position, &length)) return false;
        *position += 1 + static_cast<uint64_t>(length);
        if (length == 0) return true;
    }
}

PictureProbe ProbeGif(const Bytes& bytes) {
    uint32_t screenWidth = 0, screenHeight = 0, flags = 0;
    if (!bytes.U16(6, false, &screenWidth) || !bytes.U16(8, false, &screenHeight) || !bytes.U8(10, &flags))
        return Result(ProbeStatus::kMalformed, PictureKind::kGif);
    uint64_t position = 13;
    if ((flags & 0x80) != 0) position += 3ull << ((flags & 7) + 1);
    PictureProbe probe = Result(ProbeStatus::kMalformed, PictureKind::kGif);
    int32_t frames = 0;
    for (;;) {
        uint32_t introducer = 0;
        if (!bytes.U8(position, &introducer) || introducer == 0x3B) break;
        if (introducer == 0x21) {
            position += 2;
            if (!SkipSubBlocks(bytes, &position)) break;
        } else if (introducer == 0x2C) {
            uint32_t width = 0, height = 0, imageFlags = 0;
            if (!bytes.U16(position + 5, false, &width) || !bytes.U16(position + 7, false, &height) ||
                !bytes.U8(position + 9, &imageFlags))
                break;
            const ProbeStatus size = CheckSize(width, height);
            if (size == ProbeStatus::kTooLarge) return Result(size, PictureKind::kGif);
            if (size != ProbeStatus::kRecognised) break;
            position += 10;
            if ((imageFlags & 0x80) != 0) position += 3ull << ((imageFlags & 7) + 1);
            position += 1;  // minimum code size
            if (!SkipSubBlocks(bytes, &position)) break;
            if (frames == 0) probe = Sized(PictureKind::kGif, width, height);
            ++frames;
        } else {
            break;
        }
    }
    if (frames == 0) return Result(ProbeStatus::kMalformed, PictureKind::kGif);
    // Decoders compose frames on the logical screen, so it is held to the limits too.
    if (CheckSize(screenWidth, screenHeight) == ProbeStatus::kTooLarge)
        return Result(ProbeStatus::kTooLarge, PictureKind::kGif);
    probe.frames = frames;
    return probe;
}

PictureProbe ProbeTiff(const Bytes& bytes) {
    const bool bigEndian = bytes.Equals(0, "MM", 2);
    uint32_t directory = 0, count = 0;
    // The whole first directory, up to the offset of the next one.
    if (!bytes.U32(4, bigEndian, &directory) || directory < 8 || !bytes.U16(directory, bigEndian, &count) ||
        count == 0 || !bytes.Has(directory, 2 + 12ull * count + 4))
        return Result(ProbeStatus::kMalformed, PictureKind::kTiff);
    int64_t width = 0, height = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const uint64_t entry = directory + 2ull + 12ull * i;
        uint32_t tag = 0, type = 0, valueCount = 0;
        if (!bytes.U16(entry, bigEndian, &tag) || !bytes.U16(entry + 2, bigEndian, &type) ||
            !bytes.U32(entry + 4, bigEndian, &valueCount))
            break;
        if (tag != 256 && tag != 257) continue;
        uint32_t value = 0;
        if (valueCount != 1) return Result(ProbeStatus::kMalformed, PictureKind::kTiff);
        if (type == 3) {
            if (!bytes.U16(entry + 8, bigEndian, &value)) break;
        } else if (type == 4) {
            if (!bytes.U32(entry + 8, bigEndian, &value)) break;
        } else {
            return Result(ProbeStatus::kMalformed, PictureKind::kTiff);
        }
        (tag == 256 ? width : height) = value;
    }
    return Sized(PictureKind::kTiff, width, height);
}

PictureProbe ProbeIcon(const Bytes& bytes) {
    uint32_t count = 0;
    if (!bytes.U16(4, false, &count) || count == 0 || !bytes.Has(6, 16ull * count))
        return Result(ProbeStatus::kMalformed, PictureKind::kIcon);
    PictureProbe best = Result(ProbeStatus::kMalformed, PictureKind::kIcon);
    uint64_t bestArea = 0;
    uint32_t bestBits = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const uint64_t entry = 6 + 16ull * i;
        uint32_t width = 0, height = 0, bits = 0, length = 0, offset = 0;
        bytes.U8(entry, &width);
        bytes.U8(entry + 1, &height);
        bytes.U16(entry + 6, false, &bits);
        bytes.U32(entry + 8, false, &length);
        bytes.U32(entry + 12, false, &offset);
        if (length < 16 || !bytes.Has(offset, length))
            return Result(ProbeStatus::kMalformed, PictureKind::kIcon);
        int64_t imageWidth = width == 0 ? 256 : width;
        int64_t imageHeight = height == 0 ? 256 : height;
        if (bytes.Equals(offset, kPngSignature, 8)) {
            const PictureProbe png = ProbePngAt(bytes, offset, PictureKind::kIcon);
            if (png.status != ProbeStatus::kRecognised) return png;
            imageWidth = png.width;
            imageHeight = png.height;
        } else {
            // A DIB whose height counts the colour and the mask rows.
            uint32_t dibWidth = 0, dibHeight = 0;
            if (!bytes.U32(offset + 4, false, &dibWidth) || !bytes.U32(offset + 8, false, &dibHeight))
                return Result(ProbeStatus::kMalformed, PictureKind::kIcon);
            const int64_t w = AsSigned(dibWidth);
            const int64_t h = AsSigned(dibHeight) / 2;
            const ProbeStatus size = CheckSize(w, h < 0 ? -h : h);
            if (size != ProbeStatus::kRecognised) return Result(size, PictureKind::kIcon);
        }
        const ProbeStatus size = CheckSize(imageWidth, imageHeight);
        if (size != ProbeStatus::kRecognised) return Result(size, PictureKind::kIcon);
        const uint64_t area = static_cast<uint64_t>(imageWidth) * static_cast<uint64_t>(imageHeight);
        if (area > bestArea || (area == bestArea && bits > bestBits)) {
            best = Sized(PictureKind::kIcon, imageWidth, imageHeight);
            best.bestFrame = static_cast<int32_t>(i);
            bestArea = area;
            bestBits = bits;
        }
    }
    best.frames = static_cast<int32_t>(count);
    return best;
}

PictureProbe ProbeEmf(const Bytes& bytes) {
    uint32_t headerSize = 0, total = 0;
    uint32_t bounds[4] = {};
    if (!bytes.U32(4, false, &headerSize) || headerSize < 88 || !bytes.U32(48, false, &total) ||
        !bytes.Has(0, headerSize))
        return Result(ProbeStatus::kMalformed, PictureKind::kEmf);
    // Writers get the byte count wrong both ways: the records are walked to
    // the smaller of it and the data (MetafileFilter.h).
    uint64_t limit = bytes.Size() & ~uint64_t{3};
    if (total >= uint64_t{headerSize} + 8) limit = std::min<uint64_t>(limit, total & ~uint32_t{3});
    for (int i = 0; i < 4; ++i) bytes.U32(8 + 4 * i, false, &bounds[i]);
    uint64_t position = 0;
    bool ended = false;
    while (!ended && position != limit) {
        uint32_t type = 0, length = 0;
        if (!bytes.U32(position, false, &type) || !bytes.U32(position + 4, false, &length) || length < 8 ||
            length % 4 != 0 || length > limit - position)
            return Result(ProbeStatus::kMalformed, PictureKind::kEmf);
        ended = type == 14;  // EMR_EOF
        position += length;
    }
    PictureProbe probe = Result(ProbeStatus::kRecognised, PictureKind::kEmf);
    // The bounds are inclusive device pixels of the reference device.
    const int64_t width = static_cast<int64_t>(AsSigned(bounds[2])) - AsSigned(bounds[0]) + 1;
    const int64_t height = static_cast<int64_t>(AsSigned(bounds[3])) - AsSigned(bounds[1]) + 1;
    probe.width = width > 0 && width <= kMaxSide ? static_cast<int32_t>(width) : 0;
    probe.height = height > 0 && height <= kMaxSide ? static_cast<int32_t>(height) : 0;
    probe.frames = 1;
    return probe;
}

// The standard metafile header and record chain from `start`; notes the
// extent of the first SetWindowExt record, which is all the size a plain
// metafile tells.
bool WmfChainIsWhole(const Bytes& bytes, uint64_t start, int32_t* windowWidth = nullptr,
                     int32_t* windowHeight = nullptr) {
    uint32_t type = 0, headerWords = 0, version = 0;
    if (!bytes.U16(start, false, &type) || (type != 1 && type != 2) ||
        !bytes.U16(start + 2, false, &headerWords) || headerWords != 9 ||
        !bytes.U16(start + 4, false, &version) || (version != 0x100 && version != 0x300))
        return false;
    // To the smaller of the header's size and the data, where an end record
    // or the end of a record at that very point ends the chain.
    uint64_t limit = bytes.Size();
    uint32_t declared = 0;
    if (bytes.U32(start + 6, false, &declared) && 2ull * declared >= 18 + 6)
        limit = std::min<uint64_t>(limit, start + 2ull * declared);
    uint64_t position = start + 18;
    for (bool any = false;; any = true) {
        if (position == limit && any) return true;
        uint32_t words = 0, function = 0;
        if (!bytes.U32(position, false, &words) || !bytes.U16(position + 4, false, &function) || words < 3 ||
            2ull * words > limit - position)
            return false;
        if (function == 0) return true;  // META_EOF
        uint32_t y = 0, x = 0;
        if (function == 0x020C && windowWidth != nullptr && *windowWidth == 0 && words >= 5 &&
            bytes.U16(position + 6, false, &y) && bytes.U16(position + 8, false, &x)) {
            // The parameters are stored last first: height, then width.
            *windowWidth = static_cast<int16_t>(static_cast<uint16_t>(x));
            *windowHeight = static_cast<int16_t>(static_cast<uint16_t>(y));
        }
        position += 2ull * words;
    }
}

PictureProbe ProbeWmfPlaceable(const Bytes& bytes) {
    uint32_t left = 0, top = 0, right = 0, bottom = 0, inch = 0;
    if (!bytes.U16(6, false, &left) || !bytes.U16(8, false, &top) || !bytes.U16(10, false, &right) ||
        !bytes.U16(12, false, &bottom) || !bytes.U16(14, false, &inch) || inch == 0 ||
        !WmfChainIsWhole(bytes, 22))
        return Result(ProbeStatus::kMalformed, PictureKind::kWmfPlaceable);
    auto signed16 = [](uint32_t v) {
        return static_cast<int32_t>(static_cast<int16_t>(static_cast<uint16_t>(v)));
    };
    const int32_t width = signed16(right) - signed16(left);
    const int32_t height = signed16(bottom) - signed16(top);
    PictureProbe probe = Result(ProbeStatus::kRecognised, PictureKind::kWmfPlaceable);
    probe.width = width < 0 ? -width : width;
    probe.height = height < 0 ? -height : height;
    if (probe.width == 0 || probe.height == 0)
        return Result(ProbeStatus::kMalformed, PictureKind::kWmfPlaceable);
    probe.frames = 1;
    probe.headerBytes = 22;
    probe.unitsPerInch = static_cast<int32_t>(inch);
    return probe;
}

}  // namespace

PictureProbe ProbePicture(const uint8_t* data, size_t size) {
    if (data == nullptr || size == 0) return Result(ProbeStatus::kUnknown, PictureKind::kUnknown);
    const Bytes bytes(data, size);
    uint32_t first = 0, emfSignature = 0;
    bytes.U32(0, false, &first);
    if (bytes.Equals(0, "BM", 2)) return ProbeBmp(bytes);
    if (bytes.Equals(0, "\xFF\xD8\xFF", 3)) return ProbeJpeg(bytes);
    if (bytes.Equals(0, kPngSignature, 8)) return ProbePngAt(bytes, 0, PictureKind::kPng);
    if (bytes.Equals(0, "GIF87a", 6) || bytes.Equals(0, "GIF89a", 6)) return ProbeGif(bytes);
    if (bytes.Equals(0, "II*\0", 4) || bytes.Equals(0, "MM\0*", 4)) return ProbeTiff(bytes);
    if (bytes.Equals(0, "\0\0\1\0", 4)) return ProbeIcon(bytes);
    if (first == 1 && bytes.U32(40, false, &emfSignature) && emfSignature == 0x464D4520)
        return ProbeEmf(bytes);
    if (first == 0x9AC6CDD7u) return ProbeWmfPlaceable(bytes);
    int32_t windowWidth = 0, windowHeight = 0;
    if (WmfChainIsWhole(bytes, 0, &windowWidth, &windowHeight)) {
        PictureProbe probe = Result(ProbeStatus::kRecognised, PictureKind::kWmf);
        probe.frames = 1;
        if (windowWidth < 0) windowWidth = -windowWidth;
        if (windowHeight < 0) windowHeight = -windowHeight;
        if (windowWidth > 0 && windowHeight > 0) {
            probe.width = windowWidth;
            probe.height = windowHeight;
        }
        return probe;
    }
    return Result(ProbeStatus::kUnknown, PictureKind::kUnknown);
}

}  // namespace imaging
