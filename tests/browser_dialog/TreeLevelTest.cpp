// A level of the tree filled in one go: the same items, in the same order and
// with the same images, as the tree's own sorted insertion and one shell
// question per file would give. The oracle is a second tree control, filled
// the plain way over the same folder.
#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <string>
#include <vector>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "browser/SelectionTarget.h"
#include "browser/TreeLevel.h"

namespace browsertest {
namespace {

// A bare tree control of its own, destroyed with the object.
class ScratchTree {
public:
    ScratchTree() {
        hwnd_ = ::CreateWindowExA(0, WC_TREEVIEWA, "", WS_OVERLAPPEDWINDOW, 0, 0, 200, 200, nullptr, nullptr,
                                  nullptr, nullptr);
        tree.Attach(hwnd_);
        root = tree.InsertItem(browser::TreeControl::kItemMask, "root", 0, 0, TVI_ROOT, TVI_LAST);
    }
    ~ScratchTree() {
        tree.Detach();
        if (hwnd_ != nullptr) ::DestroyWindow(hwnd_);
    }
    ScratchTree(const ScratchTree&) = delete;
    ScratchTree& operator=(const ScratchTree&) = delete;

    struct Shown {
        std::string text;
        int image;
        bool operator==(const Shown& other) const { return text == other.text && image == other.image; }
    };
    static std::vector<Shown> Children(const browser::TreeControl& tree, HTREEITEM parent) {
        std::vector<Shown> shown;
        for (HTREEITEM item = tree.GetChildItem(parent); item != nullptr;
             item = tree.GetNextSiblingItem(item)) {
            int image = -1;
            tree.GetItemImages(item, &image, nullptr);
            shown.push_back(Shown{tree.GetItemText(item), image});
        }
        return shown;
    }
    std::vector<Shown> Children() const { return Children(tree, root); }

    browser::TreeControl tree;
    HTREEITEM root = nullptr;

private:
    HWND hwnd_ = nullptr;
};

void PrintTo(const ScratchTree::Shown& shown, std::ostream* out) {
    *out << "{" << shown.text << ", " << shown.image << "}";
}

int ShellSmallIcon(const std::string& path) {
    SHFILEINFOA info = {};
    ::SHGetFileInfoA(path.c_str(), 0, &info, sizeof info, SHGFI_ICON | SHGFI_SMALLICON);
    if (info.hIcon != nullptr) ::DestroyIcon(info.hIcon);
    return info.iIcon;
}

// What a plain expansion of `folder` shows: every entry asked of the shell
// and inserted with TVI_SORT, in the order the file system lists them.
std::vector<ScratchTree::Shown> PlainLevel(const std::string& folder, int folderImage) {
    ScratchTree oracle;
    WIN32_FIND_DATAA found = {};
    const HANDLE search = ::FindFirstFileA((folder + "\\*.*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return {};
    do {
        const std::string name = found.cFileName;
        if (name == "." || name == "..") continue;
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
            oracle.tree.InsertSorted(name, folderImage, oracle.root);
        else if (browser::IsContainerFileName(name))
            oracle.tree.InsertSorted(browser::FoundFileTitle(name), folderImage, oracle.root);
        else if (browser::IsPictureFile(name))
            oracle.tree.InsertSorted(name, ShellSmallIcon(folder + "\\" + name), oracle.root);
    } while (::FindNextFileA(search, &found));
    ::FindClose(search);
    return oracle.Children();
}

class TreeLevelTest : public ::testing::Test {
protected:
    void SetUp() override {
        disk.File("P\\Mixed\\b.jpg", JpegPicture(8, 8));
        disk.File("P\\Mixed\\A.jpg", JpegPicture(8, 8));
        disk.File("P\\Mixed\\a2.bmp", BmpPicture(4, 4, 0x123456));
        disk.File("P\\Mixed\\_under.jpg", JpegPicture(8, 8));
        disk.File("P\\Mixed\\Zed.png", PngPicture(8, 8));
        disk.File("P\\Mixed\\zed.wmf", WmfPicture(false));
        disk.File("P\\Mixed\\10.jpg", JpegPicture(8, 8));
        disk.File("P\\Mixed\\9.jpg", JpegPicture(8, 8));
        disk.File("P\\Mixed\\co-op.jpg", JpegPicture(8, 8));
        disk.File("P\\Mixed\\coop.jpg", JpegPicture(8, 8));
        disk.File("P\\Mixed\\Apple\\inside.jpg", JpegPicture(8, 8));
        disk.File("P\\Mixed\\apple.qlt", ContainerFile({PictureEntry("x.jpg", 0x010203)}));
        disk.File("P\\Mixed\\notes.txt", Bytes{'n'});
        disk.Folder("P\\Mixed\\empty");
    }

    Disk disk;
};

TEST_F(TreeLevelTest, AnExpansionShowsWhatThePlainSortedInsertionShows) {
    ScopedPrimaryFolder primary(disk.Path("P"));
    DialogHarness harness;
    ASSERT_TRUE(harness.CreateInProductView());
    const HTREEITEM mixed = harness.At({"Mixed"});
    ASSERT_NE(nullptr, mixed);
    harness.Expand(mixed);
    const std::vector<ScratchTree::Shown> shown = ScratchTree::Children(harness.Tree(), mixed);
    const std::vector<ScratchTree::Shown> expected =
        PlainLevel(disk.Path("P\\Mixed"), harness.Dialog().folderIconIndex);
    ASSERT_EQ(13u, expected.size());
    EXPECT_EQ(expected, shown);
    // A directory still gets its placeholder; an empty one none.
    EXPECT_NE(nullptr, harness.Tree().GetChildItem(harness.Find(mixed, "Apple")));
    EXPECT_EQ(nullptr, harness.Tree().GetChildItem(harness.Find(mixed, "empty")));
}

TEST(SortedLevel, DistinctTextsComeInTheirSortedOrder) {
    browser::SortedLevel level;
    for (const char* text : {"b", "A", "c-d", "_x", "10", "9"}) level.Add(text, 0);
    EXPECT_EQ((std::vector<size_t>{3, 4, 5, 1, 0, 2}), level.SortedOrder());
}

TEST(SortedLevel, EqualTextsAreLeftToTheTreeAndComeOutAsItPlacesThem) {
    for (const std::vector<const char*>& texts :
         {std::vector<const char*>{"x", "a", "X"}, std::vector<const char*>{"X", "a", "x"},
          std::vector<const char*>{"x", "a", "X", "x"}}) {
        browser::SortedLevel level;
        for (const char* text : texts) level.Add(text, 0);
        EXPECT_TRUE(level.SortedOrder().empty());
        ScratchTree filled;
        level.InsertInto(filled.tree, filled.root, nullptr);
        ScratchTree oracle;
        for (const char* text : texts) oracle.tree.InsertSorted(text, 0, oracle.root);
        EXPECT_EQ(oracle.Children(), filled.Children());
    }
}

TEST(SortedLevel, AParentWithChildrenLeftIsFilledByTheTree) {
    ScratchTree filled;
    filled.tree.InsertSorted("m", 0, filled.root);
    browser::SortedLevel level;
    level.Add("z", 0);
    level.Add("a", 0);
    level.InsertInto(filled.tree, filled.root, nullptr);
    std::vector<std::string> texts;
    for (const auto& shown : filled.Children()) texts.push_back(shown.text);
    EXPECT_EQ((std::vector<std::string>{"a", "m", "z"}), texts);
}

TEST(SortedLevel, EachDirectoryIsReportedRightAfterItsNode) {
    ScratchTree filled;
    browser::SortedLevel level;
    level.Add("b", 0, "C:\\x\\b");
    level.Add("file.jpg", 5);
    level.Add("a", 0, "C:\\x\\a");
    std::vector<std::string> reported;
    level.InsertInto(filled.tree, filled.root, [&](HTREEITEM node, const std::string& path) {
        reported.push_back(filled.tree.GetItemText(node) + "=" + path);
        // The node is in place, its siblings up to it too.
        EXPECT_EQ(nullptr, filled.tree.GetNextSiblingItem(node));
    });
    EXPECT_EQ((std::vector<std::string>{"a=C:\\x\\a", "b=C:\\x\\b"}), reported);
}

TEST(ShellExtension, IsTheLastDotOnLowerCased) {
    EXPECT_EQ(".jpg", browser::ShellExtensionOf("holiday.2000.JPG"));
    EXPECT_EQ(".jpeg", browser::ShellExtensionOf("PIC.Jpeg"));
    EXPECT_EQ("", browser::ShellExtensionOf("noextension"));
    EXPECT_EQ(".", browser::ShellExtensionOf("trailing."));
}

// A class of the machine, which the shell reads through HKEY_CLASSES_ROOT;
// removed again afterwards.
class ScopedClass {
public:
    ScopedClass(const std::string& key, const std::string& value) : key_("Software\\Classes\\" + key) {
        HKEY created = nullptr;
        if (::RegCreateKeyExA(HKEY_LOCAL_MACHINE, key_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &created, nullptr) != ERROR_SUCCESS)
            return;
        ::RegSetValueExA(created, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                         static_cast<DWORD>(value.size() + 1));
        ::RegCloseKey(created);
    }
    ~ScopedClass() { ::RegDeleteTreeA(HKEY_LOCAL_MACHINE, key_.c_str()); }
    ScopedClass(const ScopedClass&) = delete;
    ScopedClass& operator=(const ScopedClass&) = delete;

private:
    std::string key_;
};

TEST(IconDependsOnFile, OnlyTypesWithIconsOfTheirOwnPerFile) {
    ScopedClass plainType(".lumbrelplain", "Lumbrel.PlainIcon");
    ScopedClass plainIcon("Lumbrel.PlainIcon\\DefaultIcon", "shell32.dll,3");
    ScopedClass selfType(".lumbrelself", "Lumbrel.SelfIcon");
    ScopedClass selfIcon("Lumbrel.SelfIcon\\DefaultIcon", "%1");
    ScopedClass handlerType(".lumbrelhandler", "Lumbrel.HandlerIcon");
    ScopedClass handler("Lumbrel.HandlerIcon\\ShellEx\\IconHandler",
                        "{00000000-0000-0000-0000-000000000001}");
    ScopedClass bareHandler(".lumbrelbare\\ShellEx\\IconHandler", "{00000000-0000-0000-0000-000000000002}");
    EXPECT_FALSE(browser::IconDependsOnFile(".lumbrelplain"));
    EXPECT_TRUE(browser::IconDependsOnFile(".lumbrelself"));
    EXPECT_TRUE(browser::IconDependsOnFile(".lumbrelhandler"));
    EXPECT_TRUE(browser::IconDependsOnFile(".lumbrelbare"));
    EXPECT_FALSE(browser::IconDependsOnFile(".lumbrelunknown")) << "no class: the shell's generic icon";
    EXPECT_TRUE(browser::IconDependsOnFile("")) << "no extension: asked per file";
    EXPECT_TRUE(browser::IconDependsOnFile("."));
}

TEST(FileIconIndexes, GiveWhatTheShellGivesForEachFile) {
    Disk disk;
    const char* const names[] = {"a.jpg", "b.jpg", "c.bmp", "d.wmf", "e.JPG", "f.cmp"};
    for (const char* name : names) disk.File(std::string("F\\") + name, JpegPicture(4, 4));
    browser::FileIconIndexes icons;
    for (const char* name : names) {
        SCOPED_TRACE(name);
        EXPECT_EQ(ShellSmallIcon(disk.Path(std::string("F\\") + name)), icons.IndexOf(disk.Path("F"), name));
    }
}

}  // namespace
}  // namespace browsertest
