// The keyword index of a container: a serialised map from keyword to the
// offset of an item list, read anew by every operation.
#include <charconv>
#include <string>

#include "containers/ArtContainer.h"
#include "framework/ArchiveReader.h"

namespace containers {

namespace {

bool IsCSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// Parses like the C library's atol: leading white space, an optional sign,
// then digits up to the first non-digit. Overflow wraps in 32 bits instead of
// being undefined.
int32_t ParseLong(const std::string& text) {
    size_t i = 0;
    while (i < text.size() && IsCSpace(text[i])) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
    uint32_t value = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
        value = value * 10u + static_cast<uint32_t>(text[i] - '0');
    return static_cast<int32_t>(negative ? 0u - value : value);
}

std::string Trimmed(const std::string& text) {
    size_t begin = 0;
    while (begin < text.size() && IsCSpace(text[begin])) ++begin;
    size_t end = text.size();
    while (end > begin && IsCSpace(text[end - 1])) --end;
    return text.substr(begin, end - begin);
}

// Counts the text that one operation builds from a keyword map and refuses
// the map, as a file the reader cannot take, once it passes the cap.
class KeywordTextBudget {
public:
    void Spend(size_t bytes) {
        if (bytes > kMaxKeywordTextSize - spent_)
            throw framework::FileException("keyword map builds more text than the cap allows");
        spent_ += bytes;
    }

private:
    size_t spent_ = 0;
};

// The text of "%ld".
std::string FormatLong(int32_t value) {
    char text[16];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, value);
    return std::string(text, end.ptr);
}

}  // namespace

bool CArtContainer::ReadKeywordMapFromFile(framework::StringMap& map) {
    if (!header_ || !keywordDirectory_ || !file_ || !file_->IsOpen()) return false;
    if (keywordDirectory_->keywordMapOffset == 0) return false;
    file_->SeekFromStart(keywordDirectory_->keywordMapOffset);
    framework::ArchiveReader archive(*file_, keywordDirectory_->keywordMapBufferSize);
    for (uint32_t pairs = archive.ReadCount(); pairs > 0; --pairs) {
        std::string key = archive.ReadString();
        std::string value = archive.ReadString();
        map.SetAt(key, value);
    }
    return true;
}

std::unique_ptr<int32_t[]> CArtContainer::ReadItemList(int64_t offset, int32_t& count) {
    file_->SeekFromStart(offset);
    uint8_t countBytes[4];
    if (file_->Read(countBytes, 4) != 4)
        throw framework::FileException("item list beyond the end of the file");
    count = LoadLong(countBytes);
    // A count that the rest of the file cannot hold is refused before
    // anything is allocated for it.
    if (count < 0 || int64_t{count} * 4 > file_->Length() - file_->Position())
        throw framework::FileException("item list longer than the file");
    std::unique_ptr<int32_t[]> numbers(new int32_t[static_cast<size_t>(count) + 1]());
    std::unique_ptr<uint8_t[]> bytes(new uint8_t[static_cast<size_t>(count) * 4 + 1]());
    file_->Read(bytes.get(), static_cast<size_t>(count) * 4);
    for (int32_t i = 0; i < count; ++i) numbers[static_cast<size_t>(i)] = LoadLong(bytes.get() + 4 * i);
    return numbers;
}

bool CArtContainer::LoadKeywordMap(framework::StringMap& keywordToItems) {
    keywordToItems.RemoveAll();
    try {
        framework::StringMap map;
        if (!ReadKeywordMapFromFile(map)) return false;
        if (map.GetCount() <= 0) return false;
        // Many keywords may share one long list, so the texts can grow with
        // the square of the file; they are refused once past the cap.
        KeywordTextBudget budget;
        map.ForEach([&](const std::string& keyword, const std::string& value) {
            const int32_t offset = ParseLong(value);
            if (offset == 0) return;
            int32_t count = 0;
            std::unique_ptr<int32_t[]> numbers = ReadItemList(offset, count);
            std::string text;
            for (int32_t i = 0; i < count; ++i) {
                const std::string number = FormatLong(numbers[static_cast<size_t>(i)]);
                budget.Spend(number.size() + 1);
                text += ',';
                text += number;
            }
            budget.Spend(1);
            text += ',';
            keywordToItems.SetAt(keyword, text);
        });
        return true;
    } catch (...) {
        keywordToItems.RemoveAll();
        return false;
    }
}

bool CArtContainer::FindItemsByKeyword(std::string keyword, ItemNumberArray& items) {
    items.RemoveAll();
    if (keyword.empty()) return false;
    try {
        framework::StringMap map;
        if (!ReadKeywordMapFromFile(map)) return false;
        // Trimmed only now, so that a keyword of blanks gets past the emptiness
        // test above and fails in the lookup.
        keyword = Trimmed(keyword);
        if (map.GetCount() <= 0) return false;
        std::string value;
        if (!map.Lookup(keyword, value)) return false;
        const int32_t offset = ParseLong(value);
        if (offset == 0) return false;
        int32_t count = 0;
        std::unique_ptr<int32_t[]> numbers = ReadItemList(offset, count);
        items.SetSize(count);
        for (int32_t i = 0; i < count; ++i) items[i] = numbers[static_cast<size_t>(i)];
        return true;
    } catch (...) {
        items.RemoveAll();
        return false;
    }
}

bool CArtContainer::LoadItemKeywordMap(framework::StringMap& itemToKeywords) {
    framework::StringMap keywordToItems;
    LoadKeywordMap(keywordToItems);
    try {
        // One item named thousands of times collects a long text: it grows in
        // place, so the cost stays linear in what is built, and the cap bounds
        // the whole.
        KeywordTextBudget budget;
        keywordToItems.ForEach([&](const std::string& keyword, const std::string& list) {
            const std::string appended = keyword + ",";
            long prev = 0;
            for (;;) {
                const size_t comma = list.find(',', static_cast<size_t>(prev) + 1);
                const long next = comma == std::string::npos ? -1 : static_cast<long>(comma);
                const long length = next - prev - 1;
                // Past the last comma the length comes out negative: the walk ends.
                if (length <= 0) break;
                const std::string item =
                    list.substr(static_cast<size_t>(prev) + 1, static_cast<size_t>(length));
                const std::string* value = itemToKeywords.ValueOf(item);
                if (value == nullptr || value->empty()) {
                    budget.Spend(appended.size() + 1);
                    itemToKeywords.SetAt(item, "," + appended);
                } else {
                    budget.Spend(appended.size());
                    // In place, and the key moves to the head of its bucket as
                    // removing it and storing the longer text would: later
                    // walks see that order.
                    itemToKeywords.ExtendValue(item, appended);
                }
                prev = next;
            }
        });
        return true;
    } catch (...) {
        return false;
    }
}

std::string CArtContainer::GetItemKeywords(int32_t item) {
    framework::StringMap itemToKeywords;
    if (!LoadItemKeywordMap(itemToKeywords)) return std::string();
    std::string keywords;
    if (!itemToKeywords.Lookup(FormatLong(item), keywords)) return std::string();
    return keywords;
}

}  // namespace containers
