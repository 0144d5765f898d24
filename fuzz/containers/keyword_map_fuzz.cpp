// Puts arbitrary bytes behind a valid container header as its keyword map
// (and the item lists it points to), then runs every keyword operation.
#include <cstdint>
#include <cstring>
#include <vector>

#include "FuzzFile.h"
#include "containers/ArtContainer.h"
#include "foundation/UserMessage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static foundation::ScopedUserMessageHandler quiet([](const std::string&) {});
    if (size < 2) return 0;
    std::vector<uint8_t> file(static_cast<size_t>(containers::kFirstFreeOffset), 0);
    containers::ArtContainerHeader header;
    header.itemCount = 8;
    header.Encode(file.data());
    containers::ArtKeywordDirectory keywords;
    keywords.keywordMapOffset = static_cast<int32_t>(containers::kFirstFreeOffset);
    keywords.keywordMapBufferSize = data[0] * 7;
    keywords.Encode(file.data() + containers::kKeywordDirectoryOffset);
    file.insert(file.end(), data + 1, data + size);

    containers::CArtContainer container;
    if (!container.Open(WriteFuzzFile(file.data(), file.size()))) return 0;
    framework::StringMap map;
    if (container.LoadKeywordMap(map)) {
        map.ForEach([&](const std::string& keyword, const std::string&) {
            containers::ItemNumberArray items;
            container.FindItemsByKeyword(keyword, items);
        });
    }
    containers::ItemNumberArray items;
    container.FindItemsByKeyword(" a ", items);
    framework::StringMap inverted;
    container.LoadItemKeywordMap(inverted);
    container.GetItemKeywords(data[0] % 9);
    return 0;
}
