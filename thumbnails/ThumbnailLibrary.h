// The thumbnail library. Its first job is the list of the items
// a gallery now shows: the browser empties it before each population,
// appends an item for each picture (directly, through `items`) and asks for
// an item's path when one is selected. Its second is a store of thumbnails
// on disk, a root directory with one directory per category and .thm files
// in it; nothing in the control uses that half, but it is part of the class.
//
// Every browser has a library of its own (Create), so that a second browser
// in the process never sees, empties or frees the thumbnails of the first;
// GetInstance is the process-wide one, for whatever works outside a browser
// (the store on disk). Making and destroying the process-wide instance is
// safe on any thread; a library's contents belong to one thread at a time,
// the thread of the browser that owns it.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "foundation/FilePath.h"
#include "framework/GrowableArray.h"
#include "thumbnails/KeyedObject.h"
#include "thumbnails/ThumbnailItem.h"

namespace thumbnails {

// The item pointers, in the order of the calls that added them, so that item
// indices are gallery positions. Grows by 16.
class CThumbnailItemArray : public framework::GrowableArray<CThumbnailItem*> {
public:
    CThumbnailItemArray() { SetSize(0, 16); }
};

// AddItem's results.
constexpr int kAddItemNotAPicture = 0;
constexpr int kAddItemNoCategory = 1;
constexpr int kAddItemStored = 2;

// DeleteItemFile's results besides the cause of a file error.
constexpr int kDeleteItemFileRemoved = 0;
constexpr int kDeleteItemFileNoItem = 1;

class CThumbnailLibrary : public CKeyedObject {
public:
    // The process-wide instance, made (and initialised with Init) on first use.
    static CThumbnailLibrary* GetInstance();
    // Deletes the instance; done at process end, and by tests for a fresh one.
    static void DestroyInstance();
    // A library of the caller's own, made and initialised as GetInstance
    // makes the process-wide one.
    static std::unique_ptr<CThumbnailLibrary> Create();

    ~CThumbnailLibrary() override;

    // The library has no key of its own: the empty text.
    std::string GetKey() override;
    // A hook for where the directories come from; it does nothing here.
    void LoadFromKey(const std::string& key) override;
    // No category; the directories as LoadFromKey leaves them (empty);
    // thumbnailRoot from baseDirectory; a scan of rootDirectory, which, being
    // empty, looks at the current drive's root; the first category current
    // when there is one.
    void InitFromKey(const std::string& key) override;

    // ClearCategories, ClearItems, then rootDirectory and ScanCategories.
    void SetRootDirectory(const std::string& path);
    void SetRootDirectoryOnly(const std::string& path);
    // Appends the directories of rootDirectory to categoryNames and sorts the
    // list without regard to case (CollectCategoryNames: the first two
    // entries of the search are never looked at). A search that ends before
    // its third entry changes nothing, the order included.
    void ScanCategories();
    // No categories, none current.
    void ClearCategories();
    // Makes the directory rootDirectory\name (whatever that answers), deletes
    // all items, appends the name unsorted and makes it current; its index.
    long AddCategory(const std::string& name);
    // With a current category: deletes all items and the category's .thm
    // files, removes its directory when that leaves it empty, drops the name
    // and makes category 0 current (or none, when no name is left).
    void DeleteCurrentCategory();
    // For an index other than the current one: deletes all items and stores
    // it. Items of the category are not loaded.
    void SetCurrentCategory(long index);
    // rootDirectory\<current name>. With no valid current category the name
    // is empty, giving rootDirectory followed by a backslash.
    void GetCategoryDirectory(foundation::CFilePath& out) const;
    // GetCategoryDirectory's text for a negative index, rootDirectory\name
    // for an index in the list, the empty text past its end.
    std::string GetCategoryPath(long index) const;

    // Stores a thumbnail of the picture in the current category:
    // kAddItemNotAPicture when the imaging layer knows no format in the file
    // (nothing changes), kAddItemNoCategory when there is no current category,
    // otherwise kAddItemStored after making an item (LoadFromFile, or
    // LoadFromFileRelative with `relative`; whether the load worked is not
    // looked at), appending it and writing <category>\<title>.thm. The
    // FileError of WriteThm passes to the caller.
    int AddItem(const foundation::CFilePath* picture, bool relative);

    ptrdiff_t GetItemCount() const { return items.GetSize(); }
    // Null for an index outside the list.
    CThumbnailItem* GetItem(ptrdiff_t index) const;
    // The item's GetFullPath; the empty text for an index outside the list.
    std::string GetItemPath(ptrdiff_t index) const;
    // The item's filePath alone; the empty text for an index outside the list.
    std::string GetItemFilePath(ptrdiff_t index) const;
    // Removes the item's picture file (not the item): kDeleteItemFileRemoved,
    // kDeleteItemFileNoItem, or the cause of the file error (FileError.h).
    int DeleteItemFile(ptrdiff_t index);
    // The first item whose GetItemPath equals `path` when both are upper-cased
    // (ASCII letters only), or -1. No path is normalised: "C:/a" is not "C:\a".
    ptrdiff_t FindItem(const std::string& path) const;
    bool IsNewItem(const std::string& path) const { return FindItem(path) < 0; }
    // Deletes all items and empties the list.
    void ClearItems();

    CThumbnailItemArray items;
    foundation::CFilePath rootDirectory;
    foundation::CFilePath baseDirectory;
    long currentCategory = -1;
    std::vector<std::string> categoryNames;

private:
    CThumbnailLibrary() = default;

    std::string CategoryName(long index) const;
};

}  // namespace thumbnails
