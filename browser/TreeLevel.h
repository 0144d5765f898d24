// One level of the tree as an expansion fills it: thousands of files in a
// folder are the common case, so two costs that grow with the folder are
// kept down without changing what the tree shows.
//  - The shell's icon index of a picture: asked of the shell once per file
//    type, and per file only for types whose icon depends on the file
//    itself. Asking the shell about one file costs milliseconds.
//  - Alphabetical order: the tree's own sorted insertion walks every sibling
//    for each new item. The level is sorted here once, by the comparison the
//    tree uses, and inserted in that order at the end.
// Windows only.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "browser/TreeControl.h"

namespace browser {

// The extension the shell files a name under: from its last "." on (".jpg"),
// lower-cased; empty when the name has none.
std::string ShellExtensionOf(const std::string& fileName);

// Whether the shell gives files of this extension icons of their own (a
// default icon of "%1", or an icon handler), so that one file's icon index
// says nothing about another's. True for an empty extension.
bool IconDependsOnFile(const std::string& extension);

// The small shell icon index of each file (SHGetFileInfo with SHGFI_ICON |
// SHGFI_SMALLICON, the icon destroyed), as the tree shows pictures: 0 when
// the shell answers nothing. Keep one for one fill: the shell's associations
// may change between fills.
class FileIconIndexes {
public:
    int IndexOf(const std::string& directoryPath, const std::string& fileName);

private:
    std::map<std::string, int> byType_;
    std::map<std::string, bool> dependsOnFile_;
};

// The items of one level, inserted in the order that the tree's sorted
// insertion (TVI_SORT) gives them, each with the tree's ordinary mask.
class SortedLevel {
public:
    // `directoryPath` is the path of a directory item, empty for any other.
    void Add(const std::string& text, int image, const std::string& directoryPath = std::string());

    // Inserts the items under `parent` and runs `onDirectory` with each
    // directory's new node and path right after it is inserted. Where two
    // siblings compare equal (a folder and a container of one title), or the
    // parent still has children, the tree's own placement decides: the level
    // is handed to it item by item, in the order the items were added.
    void InsertInto(const TreeControl& tree, HTREEITEM parent,
                    const std::function<void(HTREEITEM, const std::string&)>& onDirectory) const;

    // The order in which InsertInto inserts: indexes into the added items,
    // each text after the one before it; empty when the tree must place them.
    std::vector<size_t> SortedOrder() const;

private:
    struct Entry {
        std::string text;
        int image;
        std::string directoryPath;
    };
    std::vector<Entry> entries_;
};

}  // namespace browser
