// The thumbnail library: the singleton, the item list, and the category store
// on disk in a temporary directory.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "TestPictures.h"
#include "foundation/resstr.h"
#include "support/TempDir.h"
#include "thumbnails/FileError.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ThmFile.h"
#include "thumbnails/ThumbnailLibrary.h"

using foundation::CFilePath;
using testpictures::Bytes;
using thumbnails::CThumbnailItem;
using thumbnails::CThumbnailLibrary;

namespace {

class ThumbnailLibraryTest : public ::testing::Test {
protected:
    void SetUp() override {
        CThumbnailLibrary::DestroyInstance();
        library_ = CThumbnailLibrary::GetInstance();
        root_ = dir_.Path().string();
        live_ = imaging::kernel::LiveStorageCount();
    }
    void TearDown() override {
        CThumbnailLibrary::DestroyInstance();
        thumbnails::thumbnailRoot = CFilePath();
        EXPECT_EQ(imaging::kernel::LiveStorageCount(), live_) << "the items' pixels given back";
    }

    std::string MakeDirectory(const std::string& name) {
        const std::string path = root_ + "\\" + name;
        ::CreateDirectoryA(path.c_str(), nullptr);
        return path;
    }
    std::string Picture(const std::string& name, int32_t width = 20, int32_t height = 10) {
        return testpictures::WriteFile(dir_.File(name), testpictures::Bmp24(width, height));
    }
    // A picture item appended as the browser appends them.
    CThumbnailItem* Append(const std::string& path) {
        auto* item = new CThumbnailItem();
        item->filePath = CFilePath(path);
        library_->items.Add(item);
        return item;
    }

    testsupport::TempDir dir_;
    CThumbnailLibrary* library_ = nullptr;
    std::string root_;

private:
    size_t live_ = 0;
};

const std::vector<std::string>& Names(const CThumbnailLibrary* library) {
    return library->categoryNames;
}

bool LoadKeyText(long id, std::string& text) {
    if (id != thumbnails::kKeyedObjectKeyString) return false;
    text = "Software\\Lumbrel\\Thumbnails";
    return true;
}

class KeyedProbe : public thumbnails::CKeyedObject {
public:
    void LoadFromKey(const std::string& key) override { loaded.push_back(key); }
    void InitFromKey(const std::string& key) override { initialised.push_back(key); }
    std::vector<std::string> loaded, initialised;
};

}  // namespace

// ---- The singleton ---------------------------------------------------------------------

TEST_F(ThumbnailLibraryTest, OneInstanceMadeOnFirstUse) {
    EXPECT_EQ(CThumbnailLibrary::GetInstance(), library_);
    CThumbnailLibrary::DestroyInstance();
    CThumbnailLibrary* fresh = CThumbnailLibrary::GetInstance();
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(CThumbnailLibrary::GetInstance(), fresh);
    library_ = fresh;
}

TEST_F(ThumbnailLibraryTest, ThreadsAskingAtOnceGetOneInstance) {
    CThumbnailLibrary::DestroyInstance();
    constexpr int kThreads = 8;
    std::vector<CThumbnailLibrary*> seen(kThreads, nullptr);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&seen, i] { seen[static_cast<size_t>(i)] = CThumbnailLibrary::GetInstance(); });
    for (std::thread& thread : threads) thread.join();
    library_ = CThumbnailLibrary::GetInstance();
    for (CThumbnailLibrary* instance : seen) EXPECT_EQ(instance, library_);
}

TEST_F(ThumbnailLibraryTest, ALibraryOfOnesOwnStartsAsTheInstanceAndSharesNoItems) {
    std::unique_ptr<CThumbnailLibrary> own = CThumbnailLibrary::Create();
    std::unique_ptr<CThumbnailLibrary> other = CThumbnailLibrary::Create();
    ASSERT_NE(own, nullptr);
    EXPECT_NE(own.get(), library_);
    EXPECT_NE(own.get(), other.get());
    // Initialised as the instance is: the same scan of the drive's root.
    EXPECT_EQ(Names(own.get()), Names(library_));
    EXPECT_EQ(own->currentCategory, library_->currentCategory);
    EXPECT_EQ(own->rootDirectory.path, "");

    auto* item = new CThumbnailItem();
    item->filePath = CFilePath("C:\\pics\\own.jpg");
    own->items.Add(item);
    Append("C:\\pics\\instance.jpg");
    EXPECT_EQ(own->GetItemCount(), 1);
    EXPECT_EQ(other->GetItemCount(), 0);
    EXPECT_EQ(library_->GetItemCount(), 1);
    other->ClearItems();
    library_->ClearItems();
    EXPECT_EQ(own->GetItem(0), item) << "emptying another library leaves this one's items";
    EXPECT_EQ(own->GetItemPath(0), "C:\\pics\\own.jpg");
}

TEST_F(ThumbnailLibraryTest, StartsWithEmptyDirectoriesAndTheDriveRootsCategories) {
    // The directories stay as the key hook leaves them: empty, whatever the
    // program's own location.
    EXPECT_EQ(library_->rootDirectory.path, "");
    EXPECT_EQ(library_->baseDirectory.path, "");
    EXPECT_EQ(thumbnails::thumbnailRoot.path, "");
    EXPECT_EQ(library_->GetItemCount(), 0);
    // The first scan looked at "\*.*", the current drive's root.
    EXPECT_EQ(library_->currentCategory, Names(library_).empty() ? -1 : 0);
    EXPECT_TRUE(std::is_sorted(
        Names(library_).begin(), Names(library_).end(),
        [](const std::string& a, const std::string& b) { return _stricmp(a.c_str(), b.c_str()) < 0; }));
}

TEST_F(ThumbnailLibraryTest, KeysOfTheBaseAndOfTheLibrary) {
    const foundation::ResourceStringLoader previous = foundation::SetResourceStringLoader(&LoadKeyText);
    KeyedProbe probe;
    EXPECT_EQ(probe.GetKey(), "Software\\Lumbrel\\Thumbnails") << "string 6049";
    probe.Load();
    probe.Init();
    EXPECT_EQ(probe.loaded, std::vector<std::string>{"Software\\Lumbrel\\Thumbnails"});
    EXPECT_EQ(probe.initialised, std::vector<std::string>{"Software\\Lumbrel\\Thumbnails"});
    EXPECT_EQ(library_->GetKey(), "") << "the library has no key of its own";
    foundation::SetResourceStringLoader(previous);
}

// ---- Categories on disk -------------------------------------------------------------------

TEST_F(ThumbnailLibraryTest, SetRootDirectoryScansItsDirectoriesSorted) {
    MakeDirectory("boats");
    MakeDirectory("Animals");
    MakeDirectory("cars");
    Picture("loose.bmp");
    Append("c:\\x.bmp");
    library_->SetRootDirectory(root_);
    EXPECT_EQ(library_->rootDirectory.path, root_);
    EXPECT_EQ(Names(library_), (std::vector<std::string>{"Animals", "boats", "cars"}));
    EXPECT_EQ(library_->currentCategory, -1) << "no category is made current";
    EXPECT_EQ(library_->GetItemCount(), 0) << "items go with the old root";
}

TEST_F(ThumbnailLibraryTest, ScanningAgainAppends) {
    MakeDirectory("b");
    MakeDirectory("a");
    library_->SetRootDirectory(root_);
    library_->ScanCategories();
    EXPECT_EQ(Names(library_), (std::vector<std::string>{"a", "a", "b", "b"}));
}

TEST_F(ThumbnailLibraryTest, EmptyAndMissingRoots) {
    library_->SetRootDirectory(root_);
    EXPECT_TRUE(Names(library_).empty());
    library_->SetRootDirectory(root_ + "\\missing");
    EXPECT_TRUE(Names(library_).empty());
    EXPECT_EQ(library_->currentCategory, -1);
}

TEST_F(ThumbnailLibraryTest, AddCategoryMakesTheDirectoryAndAppendsUnsorted) {
    library_->SetRootDirectory(root_);
    EXPECT_EQ(library_->AddCategory("zebra"), 0);
    EXPECT_EQ(library_->AddCategory("apple"), 1);
    EXPECT_EQ(Names(library_), (std::vector<std::string>{"zebra", "apple"}));
    EXPECT_EQ(library_->currentCategory, 1);
    EXPECT_TRUE(testpictures::DirectoryExists(root_ + "\\zebra"));
    EXPECT_TRUE(testpictures::DirectoryExists(root_ + "\\apple"));
    // An existing directory is no obstacle.
    EXPECT_EQ(library_->AddCategory("zebra"), 2);
    Append("c:\\y.bmp");
    library_->AddCategory("more");
    EXPECT_EQ(library_->GetItemCount(), 0);
}

TEST_F(ThumbnailLibraryTest, CategoryDirectoriesAndPaths) {
    library_->SetRootDirectory(root_);
    EXPECT_EQ(library_->GetCategoryPath(-1), root_ + "\\") << "no current category: an empty name";
    library_->AddCategory("first");
    library_->AddCategory("second");
    CFilePath directory;
    library_->GetCategoryDirectory(directory);
    EXPECT_EQ(directory.path, root_ + "\\second");
    EXPECT_EQ(library_->GetCategoryPath(-1), root_ + "\\second");
    EXPECT_EQ(library_->GetCategoryPath(-7), root_ + "\\second");
    EXPECT_EQ(library_->GetCategoryPath(0), root_ + "\\first");
    EXPECT_EQ(library_->GetCategoryPath(2), "");
    library_->SetCurrentCategory(40);
    library_->GetCategoryDirectory(directory);
    EXPECT_EQ(directory.path, root_ + "\\") << "an index past the list names nothing";
}

TEST_F(ThumbnailLibraryTest, SetCurrentCategoryKeepsItemsOnlyForTheSameIndex) {
    library_->SetRootDirectory(root_);
    library_->AddCategory("a");
    library_->AddCategory("b");
    Append("c:\\1.bmp");
    Append("c:\\2.bmp");
    library_->SetCurrentCategory(1);
    EXPECT_EQ(library_->GetItemCount(), 2);
    library_->SetCurrentCategory(0);
    EXPECT_EQ(library_->GetItemCount(), 0);
    EXPECT_EQ(library_->currentCategory, 0);
}

TEST_F(ThumbnailLibraryTest, DeleteCurrentCategoryRemovesThumbnailsOnly) {
    library_->SetRootDirectory(root_);
    library_->AddCategory("keep");
    library_->AddCategory("plain");
    library_->AddCategory("mixed");
    testpictures::WriteFile(root_ + "\\plain\\a.thm", Bytes(4, 0));
    testpictures::WriteFile(root_ + "\\plain\\b.thm", Bytes(4, 0));
    testpictures::WriteFile(root_ + "\\mixed\\c.thm", Bytes(4, 0));
    testpictures::WriteFile(root_ + "\\mixed\\notes.txt", Bytes(4, 0));

    // "mixed" is current: its .thm goes, the text file and so the directory stay.
    Append("c:\\z.bmp");
    library_->DeleteCurrentCategory();
    EXPECT_EQ(library_->GetItemCount(), 0);
    EXPECT_FALSE(testpictures::FileExists(root_ + "\\mixed\\c.thm"));
    EXPECT_TRUE(testpictures::FileExists(root_ + "\\mixed\\notes.txt"));
    EXPECT_TRUE(testpictures::DirectoryExists(root_ + "\\mixed"));
    EXPECT_EQ(Names(library_), (std::vector<std::string>{"keep", "plain"}));
    EXPECT_EQ(library_->currentCategory, 0) << "index 0, not the neighbour of the one deleted";

    library_->SetCurrentCategory(1);
    library_->DeleteCurrentCategory();
    EXPECT_FALSE(testpictures::DirectoryExists(root_ + "\\plain")) << "emptied and removed";
    library_->DeleteCurrentCategory();
    EXPECT_FALSE(testpictures::DirectoryExists(root_ + "\\keep")) << "an empty one goes at once";
    EXPECT_TRUE(Names(library_).empty());
    EXPECT_EQ(library_->currentCategory, -1);
    EXPECT_EQ(library_->GetCategoryPath(0), "");

    library_->DeleteCurrentCategory();  // none current: nothing
    EXPECT_EQ(library_->currentCategory, -1);
}

// ---- AddItem -----------------------------------------------------------------------------

TEST_F(ThumbnailLibraryTest, AddItemsThreeResults) {
    library_->SetRootDirectory(root_);
    const CFilePath text(testpictures::WriteFile(dir_.File("notes.txt"), Bytes{'h', 'e', 'l', 'l', 'o'}));
    const CFilePath picture(Picture("sunset.bmp", 40, 20));

    EXPECT_EQ(library_->AddItem(&text, false), thumbnails::kAddItemNotAPicture);
    EXPECT_EQ(library_->AddItem(&picture, false), thumbnails::kAddItemNoCategory);
    EXPECT_EQ(library_->GetItemCount(), 0);

    library_->AddCategory("holiday");
    EXPECT_EQ(library_->AddItem(&text, false), thumbnails::kAddItemNotAPicture);
    EXPECT_EQ(library_->GetItemCount(), 0);
    EXPECT_EQ(library_->AddItem(&picture, false), thumbnails::kAddItemStored);
    ASSERT_EQ(library_->GetItemCount(), 1);
    EXPECT_EQ(library_->GetItemFilePath(0), picture.path);
    EXPECT_EQ(library_->GetItem(0)->bitmap.width, 85);
    EXPECT_EQ(library_->GetItem(0)->bitmap.height, 42);

    const std::string thm = root_ + "\\holiday\\sunset.thm";
    ASSERT_TRUE(testpictures::FileExists(thm));
    CThumbnailItem read;
    const CFilePath thmPath(thm);
    EXPECT_TRUE(read.ReadThm(&thmPath));
    EXPECT_EQ(read.filePath.path, picture.path);
    EXPECT_EQ(read.bitmap.width, 85);
    EXPECT_EQ(library_->AddItem(nullptr, false), thumbnails::kAddItemNotAPicture);
}

TEST_F(ThumbnailLibraryTest, PicturesWithTheSameTitleShareOneThmFile) {
    library_->SetRootDirectory(root_);
    library_->AddCategory("c");
    const CFilePath first(testpictures::WriteFile(dir_.File("a.b.jpg"), testpictures::Jpeg(16, 16)));
    const CFilePath second(Picture("a.c.png", 30, 30));
    EXPECT_EQ(library_->AddItem(&first, false), thumbnails::kAddItemStored);
    EXPECT_EQ(library_->AddItem(&second, false), thumbnails::kAddItemStored);
    EXPECT_EQ(library_->GetItemCount(), 2);
    CThumbnailItem read;
    const CFilePath thm(root_ + "\\c\\a.thm");
    EXPECT_TRUE(read.ReadThm(&thm));
    EXPECT_EQ(read.filePath.path, second.path) << "the second overwrote the first";
}

TEST_F(ThumbnailLibraryTest, AMissingPictureIsStoredWithAnEmptyImage) {
    // Only "no format known" stops AddItem; other query failures go on.
    library_->SetRootDirectory(root_);
    library_->AddCategory("c");
    const CFilePath missing(dir_.File("gone.bmp"));
    EXPECT_EQ(library_->AddItem(&missing, false), thumbnails::kAddItemStored);
    EXPECT_EQ(library_->GetItemCount(), 1);
    EXPECT_EQ(testpictures::ReadFile(root_ + "\\c\\gone.thm"),
              thumbnails::EncodeThm(missing.path, "", nullptr, 0));
}

TEST_F(ThumbnailLibraryTest, RelativeItems) {
    library_->SetRootDirectory(root_);
    library_->AddCategory("c");
    thumbnails::thumbnailRoot = CFilePath(root_);
    const CFilePath picture(Picture("r.bmp"));
    EXPECT_EQ(library_->AddItem(&picture, true), thumbnails::kAddItemStored);
    CThumbnailItem* item = library_->GetItem(0);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->relativeName, "\\r.bmp");
    EXPECT_EQ(library_->GetItemPath(0), picture.path);
    EXPECT_EQ(library_->GetItemFilePath(0), "");
    // A relative-only item keeps its pixels when deleted; give them back here.
    imaging::FreeBitmap(&item->bitmap);
}

TEST_F(ThumbnailLibraryTest, ADotInTheRootMovesTheThmFile) {
    // The extension is set on the whole path, and the last dot is in the
    // root: everything after it gives way to "thm".
    const std::string dotted = MakeDirectory("store.v2");
    library_->SetRootDirectory(dotted);
    library_->AddCategory("c");
    const CFilePath picture(Picture("plain.bmp"));
    EXPECT_EQ(library_->AddItem(&picture, false), thumbnails::kAddItemStored);
    EXPECT_FALSE(testpictures::FileExists(dotted + "\\c\\plain.thm"));
    EXPECT_TRUE(testpictures::FileExists(root_ + "\\store.thm"));
}

TEST_F(ThumbnailLibraryTest, AThmFileThatCannotBeWrittenThrowsToTheCaller) {
    library_->SetRootDirectoryOnly(root_ + "\\missing");
    library_->categoryNames = {"c"};
    library_->currentCategory = 0;
    const CFilePath picture(Picture("p.bmp"));
    EXPECT_THROW(library_->AddItem(&picture, false), thumbnails::FileError);
    EXPECT_EQ(library_->GetItemCount(), 1) << "the item was appended before the write";
}

// ---- Items ------------------------------------------------------------------------------

TEST_F(ThumbnailLibraryTest, FindItemIgnoresCaseButNotSlashes) {
    Append("C:\\PICS\\a.jpg");
    Append("C:\\PICS\\b.jpg");
    Append("c:\\pics\\A.JPG");
    EXPECT_EQ(library_->FindItem("c:\\pics\\A.JPG"), 0) << "the first equal one";
    EXPECT_EQ(library_->FindItem("c:\\pics\\B.jpg"), 1);
    EXPECT_EQ(library_->FindItem("C:/PICS/a.jpg"), -1);
    EXPECT_EQ(library_->FindItem("C:\\PICS\\.\\a.jpg"), -1);
    EXPECT_FALSE(library_->IsNewItem("c:\\PICS\\a.JPG"));
    EXPECT_TRUE(library_->IsNewItem("c:\\pics\\c.jpg"));
}

TEST_F(ThumbnailLibraryTest, ItemsOutsideTheList) {
    Append("c:\\one.bmp");
    EXPECT_EQ(library_->GetItem(1), nullptr);
    EXPECT_EQ(library_->GetItem(-1), nullptr);
    EXPECT_EQ(library_->GetItemPath(5), "");
    EXPECT_EQ(library_->GetItemFilePath(-3), "");
    EXPECT_EQ(library_->DeleteItemFile(1), thumbnails::kDeleteItemFileNoItem);
}

TEST_F(ThumbnailLibraryTest, DeleteItemFileRemovesThePictureNotTheItem) {
    const std::string picture = Picture("del.bmp");
    Append(picture);
    EXPECT_EQ(library_->DeleteItemFile(0), thumbnails::kDeleteItemFileRemoved);
    EXPECT_FALSE(testpictures::FileExists(picture));
    EXPECT_EQ(library_->GetItemCount(), 1);
    EXPECT_EQ(library_->DeleteItemFile(0), thumbnails::kCauseFileNotFound) << "the file error's cause";
    Append(root_ + "\\no\\such\\dir.bmp");
    EXPECT_EQ(library_->DeleteItemFile(1), thumbnails::kCauseBadPath);
}

TEST_F(ThumbnailLibraryTest, ClearItemsDeletesThemAll) {
    const CFilePath picture(Picture("c.bmp"));
    for (int i = 0; i < 40; ++i) {
        auto* item = new CThumbnailItem();
        item->LoadFromFile(&picture);
        library_->items.Add(item);
    }
    library_->items.Add(nullptr);
    EXPECT_EQ(library_->GetItemCount(), 41);
    EXPECT_EQ(library_->items.GetGrowBy(), 16);
    library_->ClearItems();
    EXPECT_EQ(library_->GetItemCount(), 0);
}

TEST_F(ThumbnailLibraryTest, ItemIndicesFollowTheOrderOfAdding) {
    for (int i = 0; i < 20; ++i) Append("c:\\" + std::to_string(i) + ".bmp");
    for (int i = 0; i < 20; ++i) EXPECT_EQ(library_->GetItemPath(i), "c:\\" + std::to_string(i) + ".bmp");
}
