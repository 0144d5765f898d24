#include "thumbnails/CategoryScan.h"

namespace thumbnails {

bool CollectCategoryNames(const NextDirectoryEntry& first, const NextDirectoryEntry& next,
                          std::vector<std::string>& names) {
    DirectoryEntry entry;
    if (!first || !next) return false;
    if (!first(entry)) return false;
    if (!next(entry)) return false;
    while (next(entry))
        if (entry.isDirectory) names.push_back(entry.name);
    return true;
}

}  // namespace thumbnails
