#include "browser/GraphicItemInfo.h"

#include <cstring>

namespace browser {

GraphicItemInfo EmptyItemInfo() {
    GraphicItemInfo info;
    std::memset(&info, 0, sizeof info);
    return info;
}

void CopyToField(char* field, size_t size, const std::string& text) {
    std::memset(field, 0, size);
    if (size == 0) return;
    const size_t length = text.size() < size - 1 ? text.size() : size - 1;
    std::memcpy(field, text.data(), length);
}

GraphicItemInfo MakeItemInfo(int32_t valid, int32_t itemNumber, const std::string& path,
                             const std::string& name) {
    GraphicItemInfo info = EmptyItemInfo();
    info.valid = valid;
    info.itemNumber = itemNumber;
    CopyToField(info.path, sizeof info.path, path);
    CopyToField(info.name, sizeof info.name, name);
    return info;
}

}  // namespace browser
