// Reader of .qlt art containers. One object is made for one walk through a
// file: Init, Open, GetItemCount, then item texts, renditions and main data
// on demand. Items are numbered from 1. Nothing is cached: every operation
// seeks and reads again. Every read is bounded by the file, so a short or
// corrupt container gives the operation's failure value, never a read or an
// allocation beyond what the file can hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "containers/ArtFormat.h"
#include "framework/File.h"
#include "framework/GrowableArray.h"
#include "framework/StringMap.h"

namespace containers {

// The text record of one item, filled by GetItemInfo.
struct ArtItemInfo {
    int32_t code = 0;
    std::string path;
    std::string spare;  // left as the caller set it
    // "NONE" when the entry's offset for that kind is -1, else "AUTOMATIC".
    std::string rendition10;
    std::string rendition20;
    std::string rendition30;
    std::string rendition40;
    std::string rendition80;
    std::string name;
};

struct ArtRawChunk {
    int32_t chunkSize = 0;
    int32_t word1 = 0;
    int32_t method = 0;
    std::unique_ptr<uint8_t[]> data;  // chunkSize - 12 bytes
};

struct ArtRawRendition {
    int32_t chunkSize = 0;
    int32_t word1 = 0;
    int32_t word2 = 0;
    int32_t word3 = 0;
    int32_t word4 = 0;
    std::unique_ptr<uint8_t[]> data;  // chunkSize - 20 bytes
};

using ItemNumberArray = framework::GrowableArray<int32_t>;

// The most text that one keyword operation builds from a container's keyword
// map: LoadKeywordMap's list texts together, or the keyword texts that
// LoadItemKeywordMap adds to its map. A few kilobytes of map can name one
// long item list from many keywords, or one item from every list, so what a
// file asks for grows with the square of its size; past the cap the map is
// refused as one the reader cannot take. 32 MiB is far beyond any real index
// (10,000 items with 40 keywords of 20 characters each make 8 MiB).
constexpr size_t kMaxKeywordTextSize = size_t{32} << 20;

class CArtContainer {
public:
    CArtContainer();
    virtual ~CArtContainer();
    CArtContainer(const CArtContainer&) = delete;
    CArtContainer& operator=(const CArtContainer&) = delete;

    // Restores the header and directory defaults and closes the file; true.
    bool Reset();
    // Reset, and no items.
    void Init();
    // Opens `path` read-only (others may keep it open). A file that will not
    // open is reported to the user once, with the system's text, and gives
    // false; an empty path gives false silently. True once the file is open,
    // whatever the header read gave.
    bool Open(std::string path);
    bool ReadHeader();

    int32_t GetItemCount() const;
    int32_t GetHeaderValue() const;
    bool GetItemInfo(int32_t item, ArtItemInfo& info);

    // The payload of the item's rendition of `kind` (0x10, 0x20, 0x30, 0x40,
    // 0x80; any other kind reads 0x80's), or null with *size 0.
    std::unique_ptr<uint8_t[]> ReadRendition(int32_t item, int32_t kind, int32_t* size);
    std::unique_ptr<ArtRawRendition> ReadRawRendition(int32_t item, int32_t kind);
    // The item's main data, decompressed by its chunk's method, or null with
    // *size 0. An imploded chunk yields its data only when the explode adapter
    // reports failure, and null when it succeeds: the status of every method
    // is tested against zlib's success code, and that reversal is kept. A
    // chunk of an unknown method yields uncompressedSize zero bytes. A size
    // that the payload cannot decode to, or above kMaxItemDataSize, gives
    // null before anything is allocated (containers/ItemDataBounds.h).
    std::unique_ptr<uint8_t[]> ReadItemData(int32_t item, int32_t* size);
    std::unique_ptr<ArtRawChunk> ReadRawItemData(int32_t* uncompressedSize, int32_t item);

    // Keyword index. Each call reads the map anew and costs time linear in the
    // text it builds, which kMaxKeywordTextSize bounds: past it LoadKeywordMap
    // fails as for a corrupt map, LoadItemKeywordMap gives false (keeping
    // what it added up to there) and GetItemKeywords the empty text.
    bool LoadKeywordMap(framework::StringMap& keywordToItems);
    bool FindItemsByKeyword(std::string keyword, ItemNumberArray& items);
    bool LoadItemKeywordMap(framework::StringMap& itemToKeywords);
    std::string GetItemKeywords(int32_t item);

    const ArtContainerHeader* Header() const { return header_.get(); }
    const ArtKeywordDirectory* KeywordDirectory() const { return keywordDirectory_.get(); }
    const ArtEntryDirectory* EntryDirectory() const { return entryDirectory_.get(); }
    const ArtReservedDirectory* ReservedDirectory() const { return reservedDirectory_.get(); }

private:
    bool ReadEntry(int32_t item, ArtEntryRecord& entry);
    bool ReadKeywordMapFromFile(framework::StringMap& map);
    std::unique_ptr<int32_t[]> ReadItemList(int64_t offset, int32_t& count);

    std::unique_ptr<framework::File> file_;
    std::unique_ptr<ArtContainerHeader> header_;
    std::unique_ptr<ArtKeywordDirectory> keywordDirectory_;
    std::unique_ptr<ArtEntryDirectory> entryDirectory_;
    std::unique_ptr<ArtReservedDirectory> reservedDirectory_;
    int32_t itemCount_ = 0;
};

}  // namespace containers
