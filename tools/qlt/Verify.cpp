#include "tools/qlt/Verify.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <set>

#include "containers/ArtFormat.h"
#include "containers/writer/ChunkCodec.h"
#include "framework/ArchiveReader.h"
#include "framework/File.h"

namespace qlt {

namespace {

using containers::LoadLong;

std::string Hex(int32_t kind) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", static_cast<unsigned int>(kind));
    return text;
}

// The archive encoding read from memory, with the same rules as the reader's
// archive, but telling where it ran out instead of throwing.
class MemoryArchive {
public:
    MemoryArchive(const std::vector<uint8_t>& bytes, int64_t position) : bytes_(bytes), position_(position) {}

    int64_t Position() const { return position_; }

    bool Count(uint32_t& count) {
        uint16_t shortCount = 0;
        if (!Word(shortCount)) return false;
        if (shortCount != 0xFFFF) {
            count = shortCount;
            return true;
        }
        return Dword(count);
    }

    bool Text(std::string& text) {
        text.clear();
        uint8_t byte = 0;
        if (!Byte(byte)) return false;
        uint32_t length = byte;
        bool wide = false;
        if (length == 0xFF) {
            uint16_t word = 0;
            if (!Word(word)) return false;
            length = word;
            if (length == 0xFFFE) {
                wide = true;
                if (!Byte(byte)) return false;
                length = byte;
                if (length == 0xFF) {
                    if (!Word(word)) return false;
                    length = word;
                }
            }
            if (length == 0xFFFF && !Dword(length)) return false;
        }
        const uint64_t size = static_cast<uint64_t>(length) * (wide ? 2u : 1u);
        if (size > Left()) return false;
        const uint8_t* at = bytes_.data() + position_;
        if (wide) {
            text.reserve(length);
            for (uint32_t i = 0; i < length; ++i)
                text.push_back(
                    framework::Utf16UnitToAnsi(static_cast<uint16_t>(at[2 * i] | (at[2 * i + 1] << 8))));
        } else {
            text.assign(reinterpret_cast<const char*>(at), length);
        }
        position_ += static_cast<int64_t>(size);
        return true;
    }

private:
    uint64_t Left() const { return static_cast<uint64_t>(static_cast<int64_t>(bytes_.size()) - position_); }
    bool Byte(uint8_t& value) {
        if (Left() < 1) return false;
        value = bytes_[static_cast<size_t>(position_++)];
        return true;
    }
    bool Word(uint16_t& value) {
        if (Left() < 2) return false;
        const uint8_t* at = bytes_.data() + position_;
        value = static_cast<uint16_t>(at[0] | (at[1] << 8));
        position_ += 2;
        return true;
    }
    bool Dword(uint32_t& value) {
        if (Left() < 4) return false;
        value = static_cast<uint32_t>(LoadLong(bytes_.data() + position_));
        position_ += 4;
        return true;
    }

    const std::vector<uint8_t>& bytes_;
    int64_t position_;
};

// A value text read as atol reads it: blanks, a sign, then digits up to the
// first character that isn't one. Values beyond a long are flagged.
bool ParseOffsetText(const std::string& text, int64_t& value) {
    size_t i = 0;
    while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
    value = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        value = value * 10 + (text[i] - '0');
        if (value > 0xFFFFFFFFLL) return false;
    }
    if (negative) value = -value;
    return value >= INT32_MIN && value <= INT32_MAX;
}

class Verifier {
public:
    Verifier(const std::vector<uint8_t>& bytes, VerifyReport& report)
        : bytes_(bytes), size_(static_cast<int64_t>(bytes.size())), report_(report) {}

    void Run();

private:
    void Problem(const std::string& where, const std::string& message) {
        report_.findings.push_back(Finding{true, where, message});
    }
    void Warning(const std::string& where, const std::string& message) {
        report_.findings.push_back(Finding{false, where, message});
    }
    // A block of at least `headerSize` bytes at `offset`: inside the file and
    // behind the fixed start.
    bool BlockStart(const std::string& where, const char* what, int64_t offset, int64_t headerSize);
    void CheckItem(int32_t item, int64_t recordOffset);
    void CheckRendition(const std::string& where, int64_t offset);
    void CheckData(const std::string& where, int64_t offset);
    void CheckKeywordMap();
    void CheckItemList(const std::string& where, int64_t offset);

    const std::vector<uint8_t>& bytes_;
    const int64_t size_;
    VerifyReport& report_;
    containers::ArtContainerHeader header_;
    containers::ArtKeywordDirectory keywordDirectory_;
    containers::ArtEntryDirectory entryDirectory_;
};

bool Verifier::BlockStart(const std::string& where, const char* what, int64_t offset, int64_t headerSize) {
    if (offset < containers::kFirstFreeOffset) {
        Problem(where, std::string("the ") + what + " offset " + std::to_string(offset) +
                           " lies inside the fixed start of the file (before " +
                           std::to_string(containers::kFirstFreeOffset) + ")");
        return false;
    }
    if (offset + headerSize > size_) {
        Problem(where, std::string("the ") + what + " at " + std::to_string(offset) + " needs " +
                           std::to_string(headerSize) + " bytes, but the file ends at " +
                           std::to_string(size_));
        return false;
    }
    return true;
}

void Verifier::Run() {
    if (size_ < containers::kHeaderSize) {
        Problem("header", "the file is " + std::to_string(size_) + " bytes long, shorter than the " +
                              std::to_string(containers::kHeaderSize) + "-byte header");
        return;
    }
    header_.Decode(bytes_.data());
    report_.itemCount = header_.itemCount;
    if (size_ < containers::kFirstFreeOffset) {
        Problem("header", "the file is " + std::to_string(size_) +
                              " bytes long and ends inside the directories (" +
                              std::to_string(containers::kFirstFreeOffset) + " bytes)");
        return;
    }
    keywordDirectory_.Decode(bytes_.data() + containers::kKeywordDirectoryOffset);
    entryDirectory_.Decode(bytes_.data() + containers::kEntryDirectoryOffset);

    if (std::find(header_.notice, header_.notice + containers::kNoticeSize, '\0') ==
        header_.notice + containers::kNoticeSize)
        Warning("header", "the notice has no NUL within its 260 bytes");

    const int32_t count = header_.itemCount;
    if (count < 0) {
        Problem("header", "the item count " + std::to_string(count) + " is negative");
    } else if (count > 0) {
        const int64_t table = entryDirectory_.entryTableOffset;
        if (table == 0) {
            Problem("entry table",
                    "the header counts " + std::to_string(count) + " items, but there is no entry table");
        } else if (BlockStart("entry table", "entry table", table, containers::kEntryRecordSize)) {
            const int64_t end = table + static_cast<int64_t>(count) * containers::kEntryRecordSize;
            if (end > size_) {
                const int64_t whole = (size_ - table) / containers::kEntryRecordSize;
                Problem("entry table", "the table of " + std::to_string(count) + " records at " +
                                           std::to_string(table) + " runs to " + std::to_string(end) +
                                           ", past the end of the file at " + std::to_string(size_) +
                                           "; only " + std::to_string(whole) + " records are whole");
            }
            for (int32_t item = 1; item <= count; ++item) {
                const int64_t record = table + static_cast<int64_t>(item - 1) * containers::kEntryRecordSize;
                if (record + containers::kEntryRecordSize > size_) break;
                CheckItem(item, record);
            }
        }
    }
    CheckKeywordMap();
}

void Verifier::CheckItem(int32_t item, int64_t recordOffset) {
    containers::ArtEntryRecord entry;
    entry.Decode(bytes_.data() + recordOffset);
    const std::string where = "item " + std::to_string(item);
    if (entry.NameEnd() == entry.name + containers::kEntryTextSize)
        Problem(where, "the name has no NUL within its 255 bytes");
    if (entry.PathEnd() == entry.path + containers::kEntryTextSize)
        Problem(where, "the path has no NUL within its 255 bytes");
    for (int slot = 0; slot < 5; ++slot) {
        const int32_t offset = entry.renditionOffsets[slot];
        if (offset == 0 || offset == containers::kNoRendition) continue;
        CheckRendition(where + " rendition " + Hex(containers::kRenditionKinds[slot]), offset);
    }
    if (entry.dataOffset != 0) CheckData(where + " data", entry.dataOffset);
}

void Verifier::CheckRendition(const std::string& where, int64_t offset) {
    if (!BlockStart(where, "rendition", offset, containers::kRenditionHeaderSize)) return;
    containers::ArtRenditionHeader header;
    header.Decode(bytes_.data() + offset);
    if (header.chunkSize < containers::kRenditionHeaderSize) {
        Problem(where, "the chunk size " + std::to_string(header.chunkSize) + " is smaller than the " +
                           std::to_string(containers::kRenditionHeaderSize) + "-byte header it counts");
        return;
    }
    if (offset + header.chunkSize > size_)
        Problem(where, "the chunk at " + std::to_string(offset) + " of " + std::to_string(header.chunkSize) +
                           " bytes runs past the end of the file at " + std::to_string(size_));
    else if (header.chunkSize == containers::kRenditionHeaderSize)
        Warning(where, "the rendition has no payload");
}

void Verifier::CheckData(const std::string& where, int64_t offset) {
    if (!BlockStart(where, "data chunk", offset, containers::kDataChunkHeaderSize)) return;
    containers::ArtDataChunkHeader header;
    header.Decode(bytes_.data() + offset);
    if (header.chunkSize < containers::kDataChunkSizeBias) {
        Problem(where, "the chunk size " + std::to_string(header.chunkSize) + " is below " +
                           std::to_string(containers::kDataChunkSizeBias) +
                           ", so the payload size is negative");
        return;
    }
    const int64_t payloadSize = header.chunkSize - containers::kDataChunkSizeBias;
    const int64_t payloadOffset = offset + containers::kDataChunkHeaderSize;
    if (payloadOffset + payloadSize > size_) {
        Problem(where, "the payload of " + std::to_string(payloadSize) + " bytes at " +
                           std::to_string(payloadOffset) + " runs past the end of the file at " +
                           std::to_string(size_));
        return;
    }
    if (header.method < containers::kMethodStored || header.method > containers::kMethodImplode) {
        Problem(where, "the method " + std::to_string(header.method) +
                           " is not 0 (stored), 1 (zlib) or 2 (implode)");
        return;
    }
    std::vector<uint8_t> data;
    std::string error;
    if (!containers::DecompressChunk(header.method, bytes_.data() + payloadOffset,
                                     static_cast<size_t>(payloadSize), header.uncompressedSize, data, error))
        Problem(where, "method " + std::to_string(header.method) + ": " + error);
}

void Verifier::CheckKeywordMap() {
    const int64_t offset = keywordDirectory_.keywordMapOffset;
    if (offset == 0) return;
    const std::string where = "keyword map";
    if (!BlockStart(where, "keyword map", offset, 2)) return;
    MemoryArchive archive(bytes_, offset);
    uint32_t count = 0;
    if (!archive.Count(count)) {
        Problem(where, "the pair count at " + std::to_string(offset) + " runs past the end of the file");
        return;
    }
    if (count == 0) Warning(where, "the map holds no pairs, which the reader takes as no index at all");
    if (count > 0x7FFFFFFFu) {
        Problem(where, "the pair count " + std::to_string(count) + " is beyond what the reader accepts");
        return;
    }
    std::set<std::string> keys;
    struct Pair {
        std::string key;
        std::string value;
    };
    std::vector<Pair> pairs;
    for (uint32_t i = 0; i < count; ++i) {
        Pair pair;
        const int64_t at = archive.Position();
        if (!archive.Text(pair.key) || !archive.Text(pair.value)) {
            Problem(where, "pair " + std::to_string(i + 1) + " of " + std::to_string(count) + " at " +
                               std::to_string(at) + " runs past the end of the file at " +
                               std::to_string(size_));
            return;
        }
        pairs.push_back(std::move(pair));
    }
    const int64_t length = archive.Position() - offset;
    if (keywordDirectory_.keywordMapBufferSize != length)
        Warning(where, "the map is " + std::to_string(length) + " bytes long, but the directory gives " +
                           std::to_string(keywordDirectory_.keywordMapBufferSize));
    for (const Pair& pair : pairs) {
        const std::string keyWhere = "keyword \"" + pair.key + "\"";
        // The classic map keeps keys only up to a NUL.
        const std::string key = pair.key.c_str();
        if (!keys.insert(key).second) Warning(keyWhere, "the keyword appears again; the later pair wins");
        int64_t listOffset = 0;
        if (!ParseOffsetText(pair.value, listOffset)) {
            Problem(keyWhere, "the value \"" + pair.value + "\" is beyond the range of an offset");
            continue;
        }
        if (listOffset == 0) continue;
        CheckItemList(keyWhere, listOffset);
    }
}

void Verifier::CheckItemList(const std::string& where, int64_t offset) {
    if (!BlockStart(where, "item list", offset, 4)) return;
    const int32_t count = LoadLong(bytes_.data() + offset);
    if (count < 0) {
        Problem(where, "the item list at " + std::to_string(offset) + " has a negative count " +
                           std::to_string(count));
        return;
    }
    if (offset + 4 + 4 * static_cast<int64_t>(count) > size_) {
        Problem(where, "the item list of " + std::to_string(count) + " numbers at " + std::to_string(offset) +
                           " runs past the end of the file at " + std::to_string(size_));
        return;
    }
    for (int32_t i = 0; i < count; ++i) {
        const int32_t item = LoadLong(bytes_.data() + offset + 4 + 4 * static_cast<int64_t>(i));
        if (item < 1 || item > header_.itemCount)
            Problem(where, "the item list names item " + std::to_string(item) + ", but the container holds " +
                               std::to_string(header_.itemCount) + " items");
    }
}

}  // namespace

int VerifyReport::Problems() const {
    int count = 0;
    for (const Finding& finding : findings) count += finding.problem ? 1 : 0;
    return count;
}

int VerifyReport::Warnings() const {
    return static_cast<int>(findings.size()) - Problems();
}

VerifyReport VerifyContainerBytes(const std::vector<uint8_t>& bytes) {
    VerifyReport report;
    report.readable = true;
    report.fileSize = static_cast<int64_t>(bytes.size());
    Verifier(bytes, report).Run();
    return report;
}

VerifyReport VerifyContainer(const std::string& path) {
    VerifyReport report;
    framework::File file;
    if (!file.OpenForReading(path, report.error)) return report;
    std::vector<uint8_t> bytes;
    try {
        const int64_t length = file.Length();
        if (length < 0 || length > 0x7FFFFFFFLL) {
            report.error = path + ": the file is too large for a container";
            return report;
        }
        bytes.resize(static_cast<size_t>(length));
        size_t done = 0;
        while (done < bytes.size()) {
            const size_t count = file.Read(bytes.data() + done, bytes.size() - done);
            if (count == 0) break;
            done += count;
        }
        bytes.resize(done);
    } catch (const std::exception& failure) {
        report.error = path + ": " + failure.what();
        return report;
    }
    return VerifyContainerBytes(bytes);
}

}  // namespace qlt
