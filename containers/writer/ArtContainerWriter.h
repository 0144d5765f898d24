// Writer of .qlt art containers: lays out exactly what the reader requires,
// from a list of items (texts, renditions, main data and keywords) and a few
// options. Besides the ordinary road (AddItem, then Write), the keyword index
// can be given pair by pair, so that tests can make files that no ordinary
// use would: verbatim value texts, UTF-16 texts, duplicate keys, item lists in
// any order, counts that disagree with the pairs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "containers/ArtFormat.h"
#include "containers/dcl/Dcl.h"
#include "framework/StringMap.h"

namespace containers {

// Longest name, path or notice text that still leaves room for its NUL.
constexpr size_t kMaxEntryTextLength = kEntryTextSize - 1;
constexpr size_t kMaxNoticeLength = kNoticeSize - 1;

struct ArtWriterOptions {
    // What an entry stores for a rendition kind the item doesn't have: the
    // reader takes both -1 and 0 as "none", but tells them apart in its text
    // record ("NONE" for -1 only).
    int32_t noRenditionOffset = kNoRendition;
    // How method-2 chunks are imploded: text or binary literal coding, and a
    // dictionary of 1024, 2048 or 4096 bytes.
    unsigned int implodeType = dcl::kCompressionAscii;
    unsigned int implodeDictionarySize = 4096;
    // Always write a keyword map, even one without pairs; otherwise a
    // container whose items have no keywords gets no index (map offset 0).
    bool writeEmptyKeywordMap = false;

    // Header and directory fields that the reader doesn't interpret; a
    // container of our own making keeps the defaults.
    std::string notice = kDefaultNotice;
    double version = 1.0;
    int32_t headerWord0 = 0;
    int32_t headerWord1 = 0;
    int32_t headerWord2 = 0;  // the value GetHeaderValue hands out
    int32_t headerWord3 = 0;
    int32_t headerWord4 = 0;
    int32_t headerWord5 = 0;
    int32_t keywordDirectoryWord0 = 0;
    int32_t entryDirectoryWord0 = 0;
    int32_t reservedWord0 = 0;
    int32_t reservedWord1 = 0;
};

struct ArtRenditionSource {
    int32_t kind = 0x80;           // 0x10, 0x20, 0x30, 0x40 or 0x80
    std::vector<uint8_t> payload;  // a whole picture file, stored as it is
    int32_t word1 = 0;
    int32_t word2 = 0;
    int32_t word3 = 0;
    int32_t word4 = 0;
};

// A data chunk written exactly as given, for chunks that the writer would
// never produce itself (unknown methods, streams made elsewhere, sizes that
// lie).
struct ArtRawData {
    int32_t method = kMethodStored;
    int32_t uncompressedSize = 0;
    std::vector<uint8_t> payload;
};

struct ArtItemSource {
    std::string name;  // at most 254 characters
    std::string path;  // at most 254 characters
    int32_t code = 0;
    // The main data, uncompressed; without it the entry's data offset is 0.
    std::optional<std::vector<uint8_t>> data;
    int32_t method = kMethodStored;  // how `data` is stored: 0, 1 or 2
    int32_t dataWord1 = 0;
    // Takes the place of `data` and `method` when set.
    std::optional<ArtRawData> rawData;
    std::vector<ArtRenditionSource> renditions;  // at most one of each kind
    std::vector<std::string> keywords;           // duplicates count once
};

// A text of the keyword map: 8-bit, or UTF-16 behind the FF FE FF prefix.
struct MapText {
    std::string narrow;
    std::u16string wide;
    bool isWide = false;

    static MapText Narrow(std::string text);
    static MapText Wide(std::u16string text);
};

struct KeywordPair {
    MapText key;
    // When >= 0, the value is the decimal offset of lists[listIndex];
    // otherwise `value` is written verbatim.
    int listIndex = -1;
    MapText value;
};

// A keyword index given pair by pair, written in exactly this order.
struct KeywordIndexPlan {
    std::vector<std::vector<int32_t>> lists;  // each written in its own order
    std::vector<KeywordPair> pairs;           // duplicates allowed
    std::optional<uint32_t> count;            // pair count to write; default pairs.size()
    std::optional<int32_t> bufferSize;        // directory's buffer size; default the map's length
};

// Where Build put the blocks, for tools and tests that look at or alter one
// block of a written container. Offsets of absent blocks are 0.
struct ArtLayoutInfo {
    struct Item {
        int32_t entryOffset = 0;
        int32_t renditionOffsets[5] = {};  // kinds 0x10, 0x20, 0x30, 0x40, 0x80
        int32_t dataOffset = 0;
    };
    std::vector<Item> items;
    std::vector<int32_t> listOffsets;  // in the order of the index's lists
    int32_t keywordMapOffset = 0;
    int32_t keywordMapSize = 0;
};

class ArtContainerWriter {
public:
    explicit ArtContainerWriter(ArtWriterOptions options = {});

    // Adds an item and returns its number, counted from 1. Nothing is checked
    // until Build or Write, which name the item in their error.
    int32_t AddItem(ArtItemSource item);
    int32_t GetItemCount() const { return static_cast<int32_t>(items_.size()); }

    // Replaces the index that the items' keywords would make.
    void SetKeywordIndex(KeywordIndexPlan index);

    const ArtWriterOptions& Options() const { return options_; }
    ArtWriterOptions& Options() { return options_; }

    // Lays the whole container out in memory. False with a message in `error`
    // when something can't be written as it stands.
    bool Build(std::vector<uint8_t>& bytes, std::string& error, ArtLayoutInfo* layout = nullptr) const;
    // Builds and writes to `path` through a temporary file beside it, so a
    // failure leaves no partial file and never replaces an existing one.
    bool Write(const std::string& path, std::string& error) const;

    // The index that AddItem's keywords make: one list per keyword with the
    // item numbers in ascending order, and the pairs in the iteration order
    // of a string map that holds the keywords.
    KeywordIndexPlan DeriveKeywordIndex() const;

private:
    ArtWriterOptions options_;
    std::vector<ArtItemSource> items_;
    std::optional<KeywordIndexPlan> keywordIndex_;
};

// The archive encoding of a pair count: two bytes, or FF FF and four bytes
// from 0xFFFF on.
void AppendArchiveCount(std::vector<uint8_t>& out, uint32_t count);
// A text with its archive length prefix (1, 3 or 7 bytes; FF FE FF first for
// UTF-16).
void AppendArchiveText(std::vector<uint8_t>& out, const MapText& text);
// The bytes that the classic string map's serialisation writes for `map`:
// the count, then key and value of every pair in iteration order.
std::vector<uint8_t> SerializeStringMap(const framework::StringMap& map);

// Writes `size` bytes to `path` through a temporary file in the same folder
// that is renamed into place once complete.
bool WriteFileReplacing(const std::string& path, const uint8_t* data, size_t size, std::string& error);

}  // namespace containers
