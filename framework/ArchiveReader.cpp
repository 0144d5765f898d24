#include "framework/ArchiveReader.h"

#include <algorithm>
#include <cstring>

namespace framework {

namespace {
// Bounds the read-ahead that a hostile buffer-size field could ask for.
constexpr int64_t kMinBuffer = 128;
constexpr int64_t kMaxBuffer = 1 << 20;
}  // namespace

ArchiveReader::ArchiveReader(File& file, int64_t bufferSize)
    : file_(file), buffer_(static_cast<size_t>(std::clamp(bufferSize, kMinBuffer, kMaxBuffer))) {
    fileLength_ = file_.Length();
}

uint64_t ArchiveReader::BytesLeft() const {
    int64_t inFile = fileLength_ - file_.Position();
    return (end_ - begin_) + static_cast<uint64_t>(inFile > 0 ? inFile : 0);
}

void ArchiveReader::Fill() {
    begin_ = 0;
    end_ = file_.Read(buffer_.data(), buffer_.size());
    if (end_ == 0) throw ArchiveException("unexpected end of file");
}

void ArchiveReader::ReadBytes(void* out, size_t count) {
    auto* target = static_cast<uint8_t*>(out);
    while (count > 0) {
        if (begin_ == end_) Fill();
        size_t take = std::min(count, end_ - begin_);
        std::memcpy(target, buffer_.data() + begin_, take);
        begin_ += take;
        target += take;
        count -= take;
    }
}

uint8_t ArchiveReader::ReadByte() {
    uint8_t value = 0;
    ReadBytes(&value, 1);
    return value;
}

uint16_t ArchiveReader::ReadWord() {
    uint8_t bytes[2];
    ReadBytes(bytes, 2);
    return static_cast<uint16_t>(bytes[0] | (bytes[1] << 8));
}

uint32_t ArchiveReader::ReadDword() {
    uint8_t bytes[4];
    ReadBytes(bytes, 4);
    return static_cast<uint32_t>(bytes[0]) | (static_cast<uint32_t>(bytes[1]) << 8) |
           (static_cast<uint32_t>(bytes[2]) << 16) | (static_cast<uint32_t>(bytes[3]) << 24);
}

uint32_t ArchiveReader::ReadCount() {
    uint16_t shortCount = ReadWord();
    if (shortCount != 0xFFFF) return shortCount;
    return ReadDword();
}

std::string ArchiveReader::ReadString() {
    bool wide = false;
    uint32_t length = ReadByte();
    if (length == 0xFF) {
        length = ReadWord();
        if (length == 0xFFFE) {
            // A UTF-16 text; its length follows in the same scheme.
            wide = true;
            length = ReadByte();
            if (length == 0xFF) length = ReadWord();
        }
        if (length == 0xFFFF) length = ReadDword();
    }
    const uint64_t bytes = static_cast<uint64_t>(length) * (wide ? 2u : 1u);
    if (bytes > BytesLeft()) throw ArchiveException("text longer than the rest of the file");
    std::string text;
    if (!wide) {
        text.resize(length);
        if (length != 0) ReadBytes(&text[0], length);
        return text;
    }
    text.reserve(length);
    for (uint32_t i = 0; i < length; ++i) text.push_back(Utf16UnitToAnsi(ReadWord()));
    return text;
}

char Utf16UnitToAnsi(uint16_t unit) {
    // Windows-1252 gives 0x80..0x9F to typographic characters; the rest of its
    // upper half is Latin-1.
    static const uint16_t kHighControls[32] = {
        0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};
    if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) return static_cast<char>(unit);
    for (int i = 0; i < 32; ++i)
        if (kHighControls[i] != 0 && kHighControls[i] == unit) return static_cast<char>(0x80 + i);
    return '?';
}

}  // namespace framework
