// The walk over a thumbnail root that finds its category directories.
// Portable: the library runs it over FindFirstFileA and FindNextFileA, the
// tests over any listing they like.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace thumbnails {

struct DirectoryEntry {
    std::string name;
    bool isDirectory = false;
};

// Gives the next entry of a directory search; false when there is none or
// the search failed.
using NextDirectoryEntry = std::function<bool(DirectoryEntry& entry)>;

// Appends the directories of a listing to `names`, in the listing's order.
// The first two entries are thrown away unseen, whatever they are, because a
// directory search starts with "." and ".."; in the root of a drive, which
// has neither, that drops two real entries. Files are skipped.
//
// True when the listing got past its first two entries, so that the walk
// itself ran (and the caller closes the search and sorts); false when it
// stopped before, with nothing appended.
bool CollectCategoryNames(const NextDirectoryEntry& first, const NextDirectoryEntry& next,
                          std::vector<std::string>& names);

}  // namespace thumbnails
