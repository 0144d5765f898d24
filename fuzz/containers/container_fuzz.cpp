// Opens arbitrary bytes as a container and reads everything it offers.
#include <cstdint>

#include "FuzzFile.h"
#include "containers/ArtContainer.h"
#include "foundation/UserMessage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static foundation::ScopedUserMessageHandler quiet([](const std::string&) {});
    containers::CArtContainer container;
    if (!container.Open(WriteFuzzFile(data, size))) return 0;
    const int32_t count = container.GetItemCount();
    // Item numbers beyond a small range read the same code paths again.
    const int32_t last = count < 64 ? count : 64;
    for (int32_t item = -1; item <= last + 1; ++item) {
        containers::ArtItemInfo info;
        container.GetItemInfo(item, info);
        for (int32_t kind : {0x10, 0x20, 0x30, 0x40, 0x80, 0x41}) {
            int32_t renditionSize = 0;
            auto payload = container.ReadRendition(item, kind, &renditionSize);
            if (payload && renditionSize > 0) {
                volatile uint8_t touch = payload[static_cast<size_t>(renditionSize) - 1];
                (void)touch;
            }
            container.ReadRawRendition(item, kind);
        }
        int32_t dataSize = 0;
        auto itemData = container.ReadItemData(item, &dataSize);
        if (itemData && dataSize > 0) {
            volatile uint8_t touch = itemData[static_cast<size_t>(dataSize) - 1];
            (void)touch;
        }
        int32_t uncompressed = 0;
        container.ReadRawItemData(&uncompressed, item);
    }
    framework::StringMap map;
    container.LoadKeywordMap(map);
    container.GetItemKeywords(1);
    return 0;
}
