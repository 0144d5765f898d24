#include "containers/ArtContainer.h"

#include <zlib.h>

#include <cstring>
#include <new>

#include "containers/ImplodeAdapters.h"
#include "containers/ItemDataBounds.h"
#include "foundation/UserMessage.h"

namespace containers {

namespace {

// A buffer of `count` bytes, zero-filled, or null when memory is short.
std::unique_ptr<uint8_t[]> AllocateBytes(int64_t count) {
    return std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[static_cast<size_t>(count)]());
}

// Reads a record of `size` bytes over `bytes`; a short read leaves the rest
// of the record as it was.
void ReadRecord(framework::File& file, uint8_t* bytes, size_t size) {
    file.Read(bytes, size);
}

// Whether `count` bytes from the current position lie inside the file.
bool FitsInFile(framework::File& file, int64_t count) {
    return count >= 0 && count <= file.Length() - file.Position();
}

std::string EntryText(const char* begin, const char* end) {
    return std::string(begin, end);
}

}  // namespace

CArtContainer::CArtContainer() {
    try {
        file_ = std::make_unique<framework::File>();
        header_ = std::make_unique<ArtContainerHeader>();
        keywordDirectory_ = std::make_unique<ArtKeywordDirectory>();
        entryDirectory_ = std::make_unique<ArtEntryDirectory>();
        reservedDirectory_ = std::make_unique<ArtReservedDirectory>();
    } catch (const std::bad_alloc&) {
        // Without its parts the object stays without defaults; every operation
        // then gives its failure value.
        file_.reset();
        return;
    }
    Init();
}

CArtContainer::~CArtContainer() = default;

bool CArtContainer::Reset() {
    if (header_) {
        *header_ = ArtContainerHeader{};
        std::memcpy(header_->notice, kDefaultNotice, sizeof kDefaultNotice);
    }
    if (keywordDirectory_) {
        // The buffer-size word keeps its value: only the first two are defaults.
        keywordDirectory_->word0 = 0;
        keywordDirectory_->keywordMapOffset = 0;
    }
    if (entryDirectory_) *entryDirectory_ = ArtEntryDirectory{};
    if (reservedDirectory_) *reservedDirectory_ = ArtReservedDirectory{};
    itemCount_ = 0;
    if (file_ && file_->IsOpen()) file_->Close();
    return true;
}

void CArtContainer::Init() {
    Reset();
    itemCount_ = 0;
}

bool CArtContainer::Open(std::string path) {
    if (path.empty() || !file_) return false;
    if (file_->IsOpen()) file_->Close();
    std::string error;
    if (!file_->OpenForReading(path, error)) {
        foundation::ShowUserMessage(error);
        return false;
    }
    ReadHeader();
    return true;
}

bool CArtContainer::ReadHeader() {
    if (!file_ || !file_->IsOpen() || !header_ || !keywordDirectory_ || !entryDirectory_ ||
        !reservedDirectory_)
        return false;
    try {
        file_->SeekFromStart(0);
        uint8_t headerBytes[kHeaderSize];
        header_->Encode(headerBytes);
        ReadRecord(*file_, headerBytes, sizeof headerBytes);
        header_->Decode(headerBytes);
        itemCount_ = header_->itemCount;

        uint8_t keywordBytes[kKeywordDirectorySize];
        keywordDirectory_->Encode(keywordBytes);
        ReadRecord(*file_, keywordBytes, sizeof keywordBytes);
        keywordDirectory_->Decode(keywordBytes);

        uint8_t entryBytes[kEntryDirectorySize];
        entryDirectory_->Encode(entryBytes);
        ReadRecord(*file_, entryBytes, sizeof entryBytes);
        entryDirectory_->Decode(entryBytes);

        uint8_t reservedBytes[kReservedDirectorySize];
        reservedDirectory_->Encode(reservedBytes);
        ReadRecord(*file_, reservedBytes, sizeof reservedBytes);
        reservedDirectory_->Decode(reservedBytes);
        return true;
    } catch (...) {
        return false;
    }
}

int32_t CArtContainer::GetItemCount() const {
    return header_ ? itemCount_ : 0;
}

int32_t CArtContainer::GetHeaderValue() const {
    return header_ ? header_->headerWord2 : 0;
}

bool CArtContainer::ReadEntry(int32_t item, ArtEntryRecord& entry) {
    // Item n's record stands (n - 1) records after the table; item 0 takes the
    // bytes just before it.
    const int64_t offset =
        int64_t{entryDirectory_->entryTableOffset} + (int64_t{item} - 1) * kEntryRecordSize;
    file_->SeekFromStart(offset);
    uint8_t bytes[kEntryRecordSize] = {};
    ReadRecord(*file_, bytes, sizeof bytes);
    entry.Decode(bytes);
    return true;
}

bool CArtContainer::GetItemInfo(int32_t item, ArtItemInfo& info) {
    if (item < 0 || item > itemCount_ || !header_ || !entryDirectory_ || !file_) return false;
    try {
        ArtEntryRecord entry;
        ReadEntry(item, entry);
        info.code = entry.code;
        info.path = EntryText(entry.path, entry.PathEnd());
        std::string* texts[5] = {&info.rendition10, &info.rendition20, &info.rendition30, &info.rendition40,
                                 &info.rendition80};
        for (int i = 0; i < 5; ++i)
            *texts[i] = entry.renditionOffsets[i] == kNoRendition ? "NONE" : "AUTOMATIC";
        info.name = EntryText(entry.name, entry.NameEnd());
        return true;
    } catch (...) {
        return false;
    }
}

std::unique_ptr<uint8_t[]> CArtContainer::ReadRendition(int32_t item, int32_t kind, int32_t* size) {
    std::unique_ptr<ArtRawRendition> raw;
    if (item < 0 || item > itemCount_) return nullptr;
    if (size != nullptr) *size = 0;
    raw = ReadRawRendition(item, kind);
    if (!raw) return nullptr;
    if (size != nullptr) *size = raw->chunkSize - static_cast<int32_t>(kRenditionHeaderSize);
    return std::move(raw->data);
}

std::unique_ptr<ArtRawRendition> CArtContainer::ReadRawRendition(int32_t item, int32_t kind) {
    if (item < 0 || item > itemCount_ || !entryDirectory_ || !file_) return nullptr;
    if (entryDirectory_->entryTableOffset == 0) return nullptr;
    try {
        ArtEntryRecord entry;
        ReadEntry(item, entry);
        const int32_t offset = entry.RenditionOffset(kind);
        if (offset == 0 || offset == kNoRendition) return nullptr;
        file_->SeekFromStart(offset);
        uint8_t headerBytes[kRenditionHeaderSize] = {};
        ReadRecord(*file_, headerBytes, sizeof headerBytes);
        auto raw = std::make_unique<ArtRawRendition>();
        ArtRenditionHeader header;
        header.Decode(headerBytes);
        raw->chunkSize = header.chunkSize;
        raw->word1 = header.word1;
        raw->word2 = header.word2;
        raw->word3 = header.word3;
        raw->word4 = header.word4;
        const int64_t payload = int64_t{header.chunkSize} - kRenditionHeaderSize;
        if (!FitsInFile(*file_, payload)) return nullptr;
        raw->data = AllocateBytes(payload);
        if (!raw->data) return nullptr;
        ReadRecord(*file_, raw->data.get(), static_cast<size_t>(payload));
        return raw;
    } catch (...) {
        return nullptr;
    }
}

std::unique_ptr<ArtRawChunk> CArtContainer::ReadRawItemData(int32_t* uncompressedSize, int32_t item) {
    if (item < 0 || item > itemCount_ || !header_ || !entryDirectory_ || !file_) return nullptr;
    if (uncompressedSize != nullptr) *uncompressedSize = 0;
    if (entryDirectory_->entryTableOffset == 0) return nullptr;
    try {
        ArtEntryRecord entry;
        ReadEntry(item, entry);
        if (entry.dataOffset == 0) return nullptr;
        file_->SeekFromStart(entry.dataOffset);
        uint8_t headerBytes[kDataChunkHeaderSize] = {};
        ReadRecord(*file_, headerBytes, sizeof headerBytes);
        ArtDataChunkHeader header;
        header.Decode(headerBytes);
        auto raw = std::make_unique<ArtRawChunk>();
        raw->chunkSize = header.chunkSize;
        raw->word1 = header.word1;
        raw->method = header.method;
        if (uncompressedSize != nullptr) *uncompressedSize = header.uncompressedSize;
        const int64_t payload = int64_t{header.chunkSize} - kDataChunkSizeBias;
        if (!FitsInFile(*file_, payload)) return nullptr;
        raw->data = AllocateBytes(payload);
        if (!raw->data) return nullptr;
        ReadRecord(*file_, raw->data.get(), static_cast<size_t>(payload));
        return raw;
    } catch (...) {
        return nullptr;
    }
}

std::unique_ptr<uint8_t[]> CArtContainer::ReadItemData(int32_t item, int32_t* size) {
    if (item < 0 || item > itemCount_ || !header_) return nullptr;
    if (size != nullptr) *size = 0;
    int32_t expected = 0;
    std::unique_ptr<ArtRawChunk> chunk = ReadRawItemData(&expected, item);
    if (!chunk) return nullptr;
    try {
        const int64_t sourceSize = int64_t{chunk->chunkSize} - kDataChunkSizeBias;
        // A claim beyond what the payload could decode to is refused before
        // anything is allocated for it.
        if (expected < 0 || expected > MaxItemDataSize(chunk->method, sourceSize)) return nullptr;
        std::unique_ptr<uint8_t[]> result = AllocateBytes(expected);
        if (!result) return nullptr;
        const uint8_t* source = chunk->data.get();
        int status = 0;
        int64_t length = expected;
        switch (chunk->method) {
            case kMethodStored: std::memcpy(result.get(), source, static_cast<size_t>(expected)); break;
            case kMethodZlib: {
                uLongf produced = static_cast<uLongf>(expected);
                status = uncompress(result.get(), &produced, source, static_cast<uLong>(sourceSize));
                length = static_cast<int64_t>(produced);
                break;
            }
            case kMethodImplode: {
                const uint32_t targetSize = static_cast<uint32_t>(expected);
                // The adapter answers 1 for success, yet success is tested as 0
                // here as for zlib: a well-exploded chunk is dropped and a failed
                // one handed out. Readers of this format depend on that reversal.
                status = ExplodeBuffer(source, static_cast<uint32_t>(sourceSize), result.get(), &targetSize);
                break;
            }
            default: break;  // the buffer goes out as allocated: zero-filled
        }
        chunk.reset();
        if (status != 0) return nullptr;
        if (size != nullptr) *size = static_cast<int32_t>(length);
        return result;
    } catch (...) {
        return nullptr;
    }
}

}  // namespace containers
