#include "containers/writer/ArtContainerWriter.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <random>
#include <system_error>

#include "containers/writer/ChunkCodec.h"

namespace containers {

namespace {

constexpr int64_t kMaxFileSize = std::numeric_limits<int32_t>::max();

std::string ItemLabel(size_t index, const ArtItemSource& item) {
    return "item " + std::to_string(index + 1) + " (\"" + item.name + "\")";
}

bool CheckEntryText(const std::string& text, const char* field, const std::string& label,
                    std::string& error) {
    if (text.find('\0') != std::string::npos) {
        error = label + ": the " + field + " contains a NUL character";
        return false;
    }
    if (text.size() > kMaxEntryTextLength) {
        error = label + ": the " + field + " is " + std::to_string(text.size()) +
                " characters long; at most " + std::to_string(kMaxEntryTextLength) + " fit in an entry";
        return false;
    }
    return true;
}

int RenditionSlot(int32_t kind) {
    for (int i = 0; i < 5; ++i)
        if (kRenditionKinds[i] == kind) return i;
    return -1;
}

// Appends one block and gives its offset; the offsets of a container are
// longs, so the file may not pass 2 GiB.
class Layout {
public:
    explicit Layout(std::vector<uint8_t>& bytes) : bytes_(bytes) {}

    bool Reserve(int64_t size, int64_t& offset, std::string& error) {
        offset = static_cast<int64_t>(bytes_.size());
        if (size < 0 || offset + size > kMaxFileSize) {
            error = "the container would pass 2 GiB, beyond what its offsets can address";
            return false;
        }
        bytes_.resize(static_cast<size_t>(offset + size));
        return true;
    }
    uint8_t* At(int64_t offset) { return bytes_.data() + offset; }

private:
    std::vector<uint8_t>& bytes_;
};

bool WriteBlock(Layout& layout, const uint8_t* header, size_t headerSize, const std::vector<uint8_t>& payload,
                int64_t& offset, std::string& error) {
    if (!layout.Reserve(static_cast<int64_t>(headerSize + payload.size()), offset, error)) return false;
    std::memcpy(layout.At(offset), header, headerSize);
    if (!payload.empty()) std::memcpy(layout.At(offset) + headerSize, payload.data(), payload.size());
    return true;
}

void AppendBytes(std::vector<uint8_t>& out, const void* data, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(data);
    out.insert(out.end(), bytes, bytes + size);
}

void AppendWord(std::vector<uint8_t>& out, uint16_t value) {
    out.push_back(static_cast<uint8_t>(value));
    out.push_back(static_cast<uint8_t>(value >> 8));
}

void AppendDword(std::vector<uint8_t>& out, uint32_t value) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

// The length prefix of a text, without the UTF-16 marker: one byte below 255,
// FF and a word below 0xFFFE, else FF FF FF and a dword. A word of 0xFFFE
// would read as the UTF-16 marker, hence the long form from there on.
void AppendTextLength(std::vector<uint8_t>& out, uint64_t length) {
    if (length < 0xFF) {
        out.push_back(static_cast<uint8_t>(length));
    } else if (length < 0xFFFE) {
        out.push_back(0xFF);
        AppendWord(out, static_cast<uint16_t>(length));
    } else {
        out.push_back(0xFF);
        AppendWord(out, 0xFFFF);
        AppendDword(out, static_cast<uint32_t>(length));
    }
}

std::string TemporaryNameFor(const std::string& path) {
    static unsigned int counter = 0;
    std::random_device device;
    std::mt19937 generator(
        device() ^ static_cast<unsigned int>(std::chrono::steady_clock::now().time_since_epoch().count()) ^
        ++counter);
    char suffix[16];
    std::snprintf(suffix, sizeof suffix, "%08x", static_cast<unsigned int>(generator()));
    return path + ".tmp-" + suffix;
}

bool FileExists(const std::string& path) {
    std::FILE* probe = std::fopen(path.c_str(), "rb");
    if (probe == nullptr) return false;
    std::fclose(probe);
    return true;
}

// Puts the finished temporary file in the place of `path`. The C library's
// rename replaces an existing file on POSIX but not on Windows, where the
// file system library's rename does.
bool MoveIntoPlace(const std::string& temporary, const std::string& path, std::string& error) {
    if (std::rename(temporary.c_str(), path.c_str()) == 0) return true;
    std::error_code code;
    std::filesystem::rename(std::filesystem::path(temporary), std::filesystem::path(path), code);
    if (!code) return true;
    error = path + ": " + code.message();
    return false;
}

}  // namespace

MapText MapText::Narrow(std::string text) {
    MapText result;
    result.narrow = std::move(text);
    return result;
}

MapText MapText::Wide(std::u16string text) {
    MapText result;
    result.wide = std::move(text);
    result.isWide = true;
    return result;
}

void AppendArchiveCount(std::vector<uint8_t>& out, uint32_t count) {
    if (count < 0xFFFF) {
        AppendWord(out, static_cast<uint16_t>(count));
    } else {
        AppendWord(out, 0xFFFF);
        AppendDword(out, count);
    }
}

void AppendArchiveText(std::vector<uint8_t>& out, const MapText& text) {
    if (!text.isWide) {
        AppendTextLength(out, text.narrow.size());
        AppendBytes(out, text.narrow.data(), text.narrow.size());
        return;
    }
    out.push_back(0xFF);
    AppendWord(out, 0xFFFE);
    AppendTextLength(out, text.wide.size());
    for (char16_t unit : text.wide) AppendWord(out, static_cast<uint16_t>(unit));
}

std::vector<uint8_t> SerializeStringMap(const framework::StringMap& map) {
    std::vector<uint8_t> out;
    AppendArchiveCount(out, static_cast<uint32_t>(map.GetCount()));
    map.ForEach([&](const std::string& key, const std::string& value) {
        AppendArchiveText(out, MapText::Narrow(key));
        AppendArchiveText(out, MapText::Narrow(value));
    });
    return out;
}

bool WriteFileReplacing(const std::string& path, const uint8_t* data, size_t size, std::string& error) {
    if (path.empty()) {
        error = "no output file named";
        return false;
    }
    std::string temporary = TemporaryNameFor(path);
    for (int attempt = 0; attempt < 16 && FileExists(temporary); ++attempt)
        temporary = TemporaryNameFor(path);
    std::FILE* file = std::fopen(temporary.c_str(), "wb");
    if (file == nullptr) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    bool written = size == 0 || std::fwrite(data, 1, size, file) == size;
    int writeError = written ? 0 : errno;
    if (std::fflush(file) != 0 && written) {
        written = false;
        writeError = errno;
    }
    if (std::fclose(file) != 0 && written) {
        written = false;
        writeError = errno;
    }
    if (!written) {
        std::remove(temporary.c_str());
        error = path + ": " + (writeError != 0 ? std::strerror(writeError) : "write failed");
        return false;
    }
    if (!MoveIntoPlace(temporary, path, error)) {
        std::remove(temporary.c_str());
        return false;
    }
    return true;
}

ArtContainerWriter::ArtContainerWriter(ArtWriterOptions options) : options_(std::move(options)) {}

int32_t ArtContainerWriter::AddItem(ArtItemSource item) {
    items_.push_back(std::move(item));
    return static_cast<int32_t>(items_.size());
}

void ArtContainerWriter::SetKeywordIndex(KeywordIndexPlan index) {
    keywordIndex_ = std::move(index);
}

KeywordIndexPlan ArtContainerWriter::DeriveKeywordIndex() const {
    KeywordIndexPlan index;
    // Keyword to the number of its list, as text, so that the map's own order
    // decides the order of the pairs.
    framework::StringMap listOfKeyword;
    for (size_t i = 0; i < items_.size(); ++i) {
        const int32_t itemNumber = static_cast<int32_t>(i + 1);
        for (const std::string& keyword : items_[i].keywords) {
            std::string listText;
            size_t list;
            if (listOfKeyword.Lookup(keyword, listText)) {
                list = static_cast<size_t>(std::stoul(listText));
            } else {
                list = index.lists.size();
                index.lists.emplace_back();
                listOfKeyword.SetAt(keyword, std::to_string(list));
            }
            std::vector<int32_t>& numbers = index.lists[list];
            if (numbers.empty() || numbers.back() != itemNumber) numbers.push_back(itemNumber);
        }
    }
    listOfKeyword.ForEach([&](const std::string& keyword, const std::string& listText) {
        KeywordPair pair;
        pair.key = MapText::Narrow(keyword);
        pair.listIndex = std::stoi(listText);
        index.pairs.push_back(std::move(pair));
    });
    return index;
}

bool ArtContainerWriter::Build(std::vector<uint8_t>& bytes, std::string& error,
                               ArtLayoutInfo* layoutInfo) const {
    bytes.clear();
    error.clear();
    ArtLayoutInfo info;

    if (options_.notice.size() > kMaxNoticeLength || options_.notice.find('\0') != std::string::npos) {
        error = "the notice must be a text of at most " + std::to_string(kMaxNoticeLength) + " characters";
        return false;
    }
    if (items_.size() > static_cast<size_t>((kMaxFileSize - kFirstFreeOffset) / kEntryRecordSize)) {
        error = "too many items for one container";
        return false;
    }
    for (size_t i = 0; i < items_.size(); ++i) {
        const ArtItemSource& item = items_[i];
        const std::string label = ItemLabel(i, item);
        if (!CheckEntryText(item.name, "name", label, error) ||
            !CheckEntryText(item.path, "path", label, error))
            return false;
        for (const std::string& keyword : item.keywords) {
            if (keyword.find('\0') != std::string::npos) {
                error = label + ": a keyword contains a NUL character";
                return false;
            }
        }
        bool seen[5] = {};
        for (const ArtRenditionSource& rendition : item.renditions) {
            int slot = RenditionSlot(rendition.kind);
            if (slot < 0) {
                char kind[16];
                std::snprintf(kind, sizeof kind, "0x%X", static_cast<unsigned int>(rendition.kind));
                error = label + ": " + kind + " is not a rendition kind (0x10, 0x20, 0x30, 0x40 or 0x80)";
                return false;
            }
            if (seen[slot]) {
                error = label + ": two renditions of the same kind";
                return false;
            }
            seen[slot] = true;
        }
    }

    Layout layout(bytes);
    int64_t offset = 0;
    if (!layout.Reserve(kFirstFreeOffset, offset, error)) return false;

    ArtEntryDirectory entryDirectory;
    entryDirectory.word0 = options_.entryDirectoryWord0;
    int64_t tableOffset = 0;
    if (!items_.empty()) {
        if (!layout.Reserve(static_cast<int64_t>(items_.size()) * kEntryRecordSize, tableOffset, error))
            return false;
        entryDirectory.entryTableOffset = static_cast<int32_t>(tableOffset);
    }

    const ImplodeSettings implode{options_.implodeType, options_.implodeDictionarySize};
    for (size_t i = 0; i < items_.size(); ++i) {
        const ArtItemSource& item = items_[i];
        ArtEntryRecord entry;
        entry.code = item.code;
        std::memcpy(entry.name, item.name.data(), item.name.size());
        std::memcpy(entry.path, item.path.data(), item.path.size());
        for (int32_t& renditionOffset : entry.renditionOffsets) renditionOffset = options_.noRenditionOffset;

        // Renditions go out by kind, whatever order they were given in, so
        // that equal input gives equal files.
        for (int slot = 0; slot < 5; ++slot) {
            for (const ArtRenditionSource& rendition : item.renditions) {
                if (RenditionSlot(rendition.kind) != slot) continue;
                if (rendition.payload.size() > static_cast<size_t>(kMaxFileSize)) {
                    error = ItemLabel(i, item) + ": rendition too large";
                    return false;
                }
                ArtRenditionHeader header;
                header.chunkSize = static_cast<int32_t>(kRenditionHeaderSize + rendition.payload.size());
                header.word1 = rendition.word1;
                header.word2 = rendition.word2;
                header.word3 = rendition.word3;
                header.word4 = rendition.word4;
                uint8_t encoded[kRenditionHeaderSize];
                header.Encode(encoded);
                int64_t at = 0;
                if (!WriteBlock(layout, encoded, sizeof encoded, rendition.payload, at, error)) return false;
                entry.renditionOffsets[slot] = static_cast<int32_t>(at);
            }
        }

        if (item.rawData || item.data) {
            ArtDataChunkHeader header;
            header.word1 = item.dataWord1;
            std::vector<uint8_t> compressed;
            const std::vector<uint8_t>* payload = &compressed;
            if (item.rawData) {
                header.method = item.rawData->method;
                header.uncompressedSize = item.rawData->uncompressedSize;
                payload = &item.rawData->payload;
            } else {
                if (!CompressChunk(item.method, *item.data, implode, compressed, error)) {
                    error = ItemLabel(i, item) + ": " + error;
                    return false;
                }
                header.method = item.method;
                header.uncompressedSize = static_cast<int32_t>(item.data->size());
            }
            if (payload->size() > static_cast<size_t>(kMaxFileSize)) {
                error = ItemLabel(i, item) + ": data too large";
                return false;
            }
            header.chunkSize = static_cast<int32_t>(payload->size() + kDataChunkSizeBias);
            uint8_t encoded[kDataChunkHeaderSize];
            header.Encode(encoded);
            int64_t at = 0;
            if (!WriteBlock(layout, encoded, sizeof encoded, *payload, at, error)) return false;
            entry.dataOffset = static_cast<int32_t>(at);
        }
        const int64_t entryOffset = tableOffset + static_cast<int64_t>(i) * kEntryRecordSize;
        entry.Encode(layout.At(entryOffset));
        ArtLayoutInfo::Item placed;
        placed.entryOffset = static_cast<int32_t>(entryOffset);
        for (int slot = 0; slot < 5; ++slot)
            placed.renditionOffsets[slot] =
                entry.renditionOffsets[slot] == options_.noRenditionOffset ? 0 : entry.renditionOffsets[slot];
        placed.dataOffset = entry.dataOffset;
        info.items.push_back(placed);
    }

    ArtKeywordDirectory keywordDirectory;
    keywordDirectory.word0 = options_.keywordDirectoryWord0;
    const KeywordIndexPlan index = keywordIndex_ ? *keywordIndex_ : DeriveKeywordIndex();
    if (keywordIndex_ || !index.pairs.empty() || options_.writeEmptyKeywordMap) {
        std::vector<int64_t> listOffsets;
        for (const std::vector<int32_t>& list : index.lists) {
            int64_t at = 0;
            if (!layout.Reserve(4 + 4 * static_cast<int64_t>(list.size()), at, error)) return false;
            StoreLong(layout.At(at), static_cast<int32_t>(list.size()));
            for (size_t n = 0; n < list.size(); ++n)
                StoreLong(layout.At(at + 4 + 4 * static_cast<int64_t>(n)), list[n]);
            listOffsets.push_back(at);
        }
        std::vector<uint8_t> map;
        AppendArchiveCount(map, index.count ? *index.count : static_cast<uint32_t>(index.pairs.size()));
        for (const KeywordPair& pair : index.pairs) {
            AppendArchiveText(map, pair.key);
            if (pair.listIndex >= 0) {
                if (static_cast<size_t>(pair.listIndex) >= listOffsets.size()) {
                    error = "a keyword pair names item list " + std::to_string(pair.listIndex) +
                            ", but there are " + std::to_string(listOffsets.size());
                    return false;
                }
                AppendArchiveText(
                    map, MapText::Narrow(std::to_string(listOffsets[static_cast<size_t>(pair.listIndex)])));
            } else {
                AppendArchiveText(map, pair.value);
            }
        }
        int64_t at = 0;
        if (!layout.Reserve(static_cast<int64_t>(map.size()), at, error)) return false;
        std::memcpy(layout.At(at), map.data(), map.size());
        keywordDirectory.keywordMapOffset = static_cast<int32_t>(at);
        info.listOffsets.assign(listOffsets.begin(), listOffsets.end());
        info.keywordMapOffset = static_cast<int32_t>(at);
        info.keywordMapSize = static_cast<int32_t>(map.size());
        keywordDirectory.keywordMapBufferSize =
            index.bufferSize ? *index.bufferSize : static_cast<int32_t>(map.size());
    }

    ArtContainerHeader header;
    header.headerWord0 = options_.headerWord0;
    std::memcpy(header.notice, options_.notice.data(), options_.notice.size());
    header.version = options_.version;
    header.headerWord1 = options_.headerWord1;
    header.headerWord2 = options_.headerWord2;
    header.itemCount = static_cast<int32_t>(items_.size());
    header.headerWord3 = options_.headerWord3;
    header.headerWord4 = options_.headerWord4;
    header.headerWord5 = options_.headerWord5;
    header.Encode(layout.At(0));
    keywordDirectory.Encode(layout.At(kKeywordDirectoryOffset));
    entryDirectory.Encode(layout.At(kEntryDirectoryOffset));
    ArtReservedDirectory reserved;
    reserved.word0 = options_.reservedWord0;
    reserved.word1 = options_.reservedWord1;
    reserved.Encode(layout.At(kReservedDirectoryOffset));
    if (layoutInfo != nullptr) *layoutInfo = std::move(info);
    return true;
}

bool ArtContainerWriter::Write(const std::string& path, std::string& error) const {
    std::vector<uint8_t> bytes;
    if (!Build(bytes, error)) return false;
    return WriteFileReplacing(path, bytes.data(), bytes.size(), error);
}

}  // namespace containers
