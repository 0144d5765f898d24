// The tree: what the top of a view shows and hides, the placeholders that
// give folders their buttons, expansion, the "MyComputer" view and the paths
// rebuilt from the item texts.
#include <windows.h>

#include <shellapi.h>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "browser/ShellAccess.h"

namespace browsertest {
namespace {

using Texts = std::vector<std::string>;

const Texts kPrimaryTop = {"Animals",   "Blank",      "Empty",  "Gallery",    "lower",
                           "Names",     "Others",     "Patchy", "single.bmp", "TopContainer",
                           "TopFolder", "TopPicture", "Twins",  "Types"};

class FolderTreeTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(harness.Create()); }

    // Expansion reads below the view that the combo shows; at start it shows
    // nothing, so the tests that expand choose the product's view first.
    void ShowProductView() {
        harness.DropDown();
        harness.Choose("Orrimond");
    }
    int FolderImage() { return harness.Dialog().folderIconIndex; }
    // The shell's small-icon index of a file, asked of the shell itself.
    static int IconOf(const std::string& path) {
        SHFILEINFOA info = {};
        ::SHGetFileInfoA(path.c_str(), 0, &info, sizeof info, SHGFI_ICON | SHGFI_SMALLICON);
        if (info.hIcon != nullptr) ::DestroyIcon(info.hIcon);
        return info.iIcon;
    }
    // Whether the tree draws an expand button: its children count.
    bool ShowsButton(HTREEITEM item) { return harness.Tree().GetChildrenCount(item) > 0; }
    std::string SelectedPath() { return harness.Dialog().GetSelectedPath(); }

    ArtLayout& layout = SharedLayout();
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
};

TEST_F(FolderTreeTest, TopOfThePrimaryFolderLeavesOutTheHostsFoldersAndContainers) {
    // Textures, Borders, Backgrounds, BORDERS.QLT and backgrounds.qlt are
    // there, in every case of letters; the top shows none of them.
    EXPECT_EQ(kPrimaryTop, harness.Texts(TVI_ROOT));
}

TEST_F(FolderTreeTest, PlaceholdersAtTheTopNameTheFirstContent) {
    const HTREEITEM picture = harness.At({"TopPicture"});
    ASSERT_EQ((Texts{"x.jpg"}), harness.Texts(picture));
    const HTREEITEM placeholder = harness.Tree().GetChildItem(picture);
    EXPECT_EQ(IconOf(layout.Path("TopPicture\\x.jpg")), harness.ImageOf(placeholder));
    EXPECT_EQ(IconOf(layout.Path("TopPicture\\x.jpg")), harness.SelectedImageOf(placeholder));

    const HTREEITEM container = harness.At({"TopContainer"});
    ASSERT_EQ((Texts{"inner"}), harness.Texts(container));
    EXPECT_EQ(FolderImage(), harness.ImageOf(harness.Tree().GetChildItem(container)));

    const HTREEITEM folder = harness.At({"TopFolder"});
    ASSERT_EQ((Texts{"TEMP"}), harness.Texts(folder));
    EXPECT_EQ(FolderImage(), harness.ImageOf(harness.Tree().GetChildItem(folder)));

    for (const char* name : {"Empty", "Others"}) {
        const HTREEITEM item = harness.At({name});
        EXPECT_TRUE(harness.Texts(item).empty()) << name;
        EXPECT_FALSE(ShowsButton(item)) << name << " has no button";
    }
    EXPECT_TRUE(ShowsButton(folder));
    EXPECT_TRUE(ShowsButton(picture));
    EXPECT_TRUE(ShowsButton(container));
}

// A shell that gives no answer for files named "fail.jpg" and icon 42 for
// other pictures; anything else it asks the system.
DWORD_PTR PartialShell(const char* path, DWORD attributes, SHFILEINFOA* info, UINT size, UINT flags) {
    const std::string text = path;
    const auto endsWith = [&text](const std::string& tail) {
        return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
    };
    if (endsWith("\\fail.jpg")) return 0;
    if (endsWith(".jpg") && flags == (SHGFI_ICON | SHGFI_SMALLICON)) {
        info->iIcon = 42;
        return 1;
    }
    return ::SHGetFileInfoA(path, attributes, info, size, flags);
}

class ScopedShell {
public:
    explicit ScopedShell(browser::ShellFileInfoFunction function)
        : previous_(browser::SetShellFileInfoFunction(function)) {}
    ~ScopedShell() { browser::SetShellFileInfoFunction(previous_); }
    ScopedShell(const ScopedShell&) = delete;
    ScopedShell& operator=(const ScopedShell&) = delete;

private:
    browser::ShellFileInfoFunction previous_;
};

TEST_F(FolderTreeTest, APictureTheShellGivesNoIconForIsImageOneAtTheTopAndZeroBelow) {
    Disk disk;
    disk.File("P\\fail.jpg", JpegPicture(8, 8));
    disk.File("P\\ok.jpg", JpegPicture(8, 8));
    disk.File("P\\Lone\\fail.jpg", JpegPicture(8, 8));
    disk.File("P\\Shelf\\fail.jpg", JpegPicture(8, 8));
    disk.File("P\\Shelf\\ok.jpg", JpegPicture(8, 8));
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    ASSERT_TRUE(fresh.Create());
    ScopedShell shell(&PartialShell);
    fresh.DropDown();
    fresh.Choose("Orrimond");
    ASSERT_EQ((Texts{"fail.jpg", "Lone", "ok.jpg", "Shelf"}), fresh.Texts(TVI_ROOT));
    EXPECT_EQ(1, fresh.ImageOf(fresh.At({"fail.jpg"}))) << "the top of a view falls back to image 1";
    EXPECT_EQ(1, fresh.SelectedImageOf(fresh.At({"fail.jpg"})));
    EXPECT_EQ(42, fresh.ImageOf(fresh.At({"ok.jpg"})));
    EXPECT_EQ(1, fresh.ImageOf(fresh.At({"Lone", "fail.jpg"}))) << "so does a placeholder made there";
    const HTREEITEM shelf = fresh.At({"Shelf"});
    fresh.Expand(shelf);
    ASSERT_EQ((Texts{"fail.jpg", "ok.jpg"}), fresh.Texts(shelf));
    EXPECT_EQ(0, fresh.ImageOf(fresh.Find(shelf, "fail.jpg"))) << "below the top the zeroed answer stands";
    EXPECT_EQ(0, fresh.SelectedImageOf(fresh.Find(shelf, "fail.jpg")));
    EXPECT_EQ(42, fresh.ImageOf(fresh.Find(shelf, "ok.jpg")));
}

TEST_F(FolderTreeTest, FoldersAndContainersShowTheFolderImageAndPicturesTheirOwn) {
    for (const char* name : {"Gallery", "Animals", "Blank"}) {
        EXPECT_EQ(FolderImage(), harness.ImageOf(harness.At({name}))) << name;
        EXPECT_EQ(FolderImage(), harness.SelectedImageOf(harness.At({name}))) << name;
    }
    const HTREEITEM picture = harness.At({"single.bmp"});
    EXPECT_EQ(IconOf(layout.Path("single.bmp")), harness.ImageOf(picture));
    EXPECT_EQ(IconOf(layout.Path("single.bmp")), harness.SelectedImageOf(picture));
    EXPECT_NE(FolderImage(), harness.ImageOf(picture)) << "a picture must not look like a folder";
    EXPECT_FALSE(harness.Tree().ItemHasChildren(picture));
    EXPECT_FALSE(harness.Tree().ItemHasChildren(harness.At({"Animals"}))) << "a container is a leaf";
}

TEST_F(FolderTreeTest, OneLevelDownTheHostsNamesAreShown) {
    ShowProductView();
    const HTREEITEM gallery = harness.At({"Gallery"});
    harness.Expand(gallery);
    EXPECT_EQ((Texts{"Backgrounds", "Borders", "Boxed", "Deeper", "Edges", "Empty", "Others", "Pictures",
                     "Textures"}),
              harness.Texts(gallery));
    const HTREEITEM edges = harness.At({"Gallery", "Edges"});
    harness.Expand(edges);
    EXPECT_EQ((Texts{"BORDERS"}), harness.Texts(edges))
        << "BORDERS.QLT one level down is an ordinary container";
}

TEST_F(FolderTreeTest, FoldersBelowTheTopGetTempPlaceholders) {
    ShowProductView();
    harness.Expand(harness.At({"Gallery"}));
    // A folder of pictures gets one placeholder for each picture.
    EXPECT_EQ((Texts{"TEMP", "TEMP", "TEMP"}), harness.Texts(harness.At({"Gallery", "Pictures"})));
    for (const char* name : {"Deeper", "Boxed", "Textures", "Edges"})
        EXPECT_EQ((Texts{"TEMP"}), harness.Texts(harness.At({"Gallery", name}))) << name;
    for (const char* name : {"Empty", "Others", "Borders", "Backgrounds"}) {
        EXPECT_TRUE(harness.Texts(harness.At({"Gallery", name})).empty()) << name;
        EXPECT_FALSE(ShowsButton(harness.At({"Gallery", name}))) << name;
    }
    const HTREEITEM placeholder = harness.Tree().GetChildItem(harness.At({"Gallery", "Boxed"}));
    EXPECT_EQ(FolderImage(), harness.ImageOf(placeholder));
}

TEST_F(FolderTreeTest, ExpandingAFolderOfPicturesShowsThemAsLeaves) {
    ShowProductView();
    harness.Expand(harness.At({"Gallery"}));
    const HTREEITEM pictures = harness.At({"Gallery", "Pictures"});
    harness.Expand(pictures);
    ASSERT_EQ((Texts{"p1.jpg", "p2.bmp", "p3.png"}), harness.Texts(pictures));
    for (const char* name : {"p1.jpg", "p2.bmp", "p3.png"}) {
        const HTREEITEM leaf = harness.Find(pictures, name);
        EXPECT_EQ(IconOf(layout.Path(std::string("Gallery\\Pictures\\") + name)), harness.ImageOf(leaf))
            << name;
        EXPECT_FALSE(harness.Tree().ItemHasChildren(leaf)) << name;
    }
}

TEST_F(FolderTreeTest, PicturesAndContainersAreKnownByTheirNames) {
    ShowProductView();
    const HTREEITEM names = harness.At({"Names"});
    harness.Expand(names);
    // holiday.2000.jpg is no picture (the text behind its first dot is
    // "2000.jpg"), pic.jpe is none either, a.qlt.txt is a container (".qlt"
    // stands at position 1), and ".qlt" is none (its position is 0).
    EXPECT_EQ((Texts{"a.qlt", "ok.jpg"}), harness.Texts(names));
    EXPECT_EQ(FolderImage(), harness.ImageOf(harness.Find(names, "a.qlt")));

    const HTREEITEM types = harness.At({"Types"});
    harness.Expand(types);
    EXPECT_EQ((Texts{"big.bmp", "clip.cmp", "emf.emf", "image.png", "page.eps", "photo.jpg", "PIC.Jpeg",
                     "placeable.wmf", "plain.wmf", "scan.tif"}),
              harness.Texts(types));
}

TEST_F(FolderTreeTest, EveryExpansionReadsTheDiskAgainAndCollapsingKeepsTheChildren) {
    Disk disk;
    disk.File("P\\Shelf\\a.jpg", JpegPicture(8, 8));
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    ASSERT_TRUE(fresh.CreateInProductView());
    const HTREEITEM shelf = fresh.At({"Shelf"});
    ASSERT_EQ((Texts{"a.jpg"}), fresh.Texts(shelf)) << "at the top the placeholder is the first picture";
    fresh.UserExpand(shelf);
    ASSERT_EQ((Texts{"a.jpg"}), fresh.Texts(shelf));

    disk.File("P\\Shelf\\b.jpg", JpegPicture(8, 8));
    fresh.UserCollapse(shelf);
    EXPECT_EQ((Texts{"a.jpg"}), fresh.Texts(shelf)) << "collapsing keeps the children";
    fresh.UserExpand(shelf);
    EXPECT_EQ((Texts{"a.jpg", "b.jpg"}), fresh.Texts(shelf)) << "a second expansion reads the folder again";

    disk.Remove("P\\Shelf\\a.jpg");
    fresh.UserCollapse(shelf);
    fresh.UserExpand(shelf);
    EXPECT_EQ((Texts{"b.jpg"}), fresh.Texts(shelf));
}

TEST_F(FolderTreeTest, NoItemAndNoNotificationChangeNothing) {
    ASSERT_EQ(kPrimaryTop, harness.Texts(TVI_ROOT));
    harness.sink.Clear();
    EXPECT_EQ(1, harness.Dialog().FillTreeChildren(layout.Path("Gallery"), nullptr));
    EXPECT_EQ(kPrimaryTop, harness.Texts(TVI_ROOT)) << "the roots are not taken for the children of nothing";
    harness.Dialog().ExpandTreeItem(nullptr);
    LRESULT result = 7;
    harness.Dialog().OnTreeItemExpanding(nullptr, &result);
    EXPECT_EQ(0, result);
    harness.Dialog().OnTreeItemExpanding(nullptr, nullptr);
    result = 7;
    harness.Dialog().OnTreeSelChanged(nullptr, &result);
    EXPECT_EQ(7, result);
    EXPECT_EQ(kPrimaryTop, harness.Texts(TVI_ROOT));
    EXPECT_TRUE(harness.sink.events.empty());
}

TEST_F(FolderTreeTest, WithTheComboBlankPathsBeginWithABackslash) {
    ASSERT_EQ("", harness.Combo().GetCurrentText());
    harness.Select(harness.At({"Gallery"}));
    EXPECT_EQ("\\Gallery", SelectedPath()) << "a place on the current drive, not in the primary folder";
    // Expansion reads that place too: the folder is not there, so the
    // placeholder goes and nothing comes.
    harness.Expand(harness.At({"Gallery"}));
    EXPECT_TRUE(harness.Texts(harness.At({"Gallery"})).empty());
}

TEST_F(FolderTreeTest, ThePathsOfTheProductViewStartAtThePrimaryFolder) {
    harness.DropDown();
    harness.Choose("Orrimond");
    ASSERT_EQ(kPrimaryTop, harness.Texts(TVI_ROOT));
    harness.Expand(harness.At({"Gallery"}));
    harness.Expand(harness.At({"Gallery", "Pictures"}));
    harness.Select(harness.At({"Gallery", "Pictures", "p2.bmp"}));
    EXPECT_EQ(layout.Primary() + "\\Gallery\\Pictures\\p2.bmp", SelectedPath());
    harness.Select(harness.At({"Animals"}));
    EXPECT_EQ(layout.Primary() + "\\Animals", SelectedPath()) << "a container's node has no extension";
}

TEST_F(FolderTreeTest, TheDesktopViewReadsTheShellsDesktopFolder) {
    Disk desktop;
    desktop.File("Board\\pin.jpg", JpegPicture(8, 8));
    desktop.File("Textures\\t.jpg", JpegPicture(8, 8));
    desktop.File("photo.bmp", BmpPicture(8, 8, 0));
    desktop.File("readme.txt", Bytes{'x'});
    ScopedDesktopFolder redirected(desktop.Root());
    ASSERT_EQ(desktop.Root(), browser::GetSpecialFolderPath(browser::kDesktopDirectoryFolder));
    harness.DropDown();
    harness.Choose("Desktop");
    EXPECT_EQ((Texts{"Board", "photo.bmp"}), harness.Texts(TVI_ROOT));
    EXPECT_EQ((Texts{"pin.jpg"}), harness.Texts(harness.At({"Board"})));
    harness.Select(harness.At({"photo.bmp"}));
    EXPECT_EQ(desktop.Path("photo.bmp"), SelectedPath());
    desktop.File("Board\\note.txt", Bytes{'x'});
    desktop.File("Board\\Textures\\t.jpg", JpegPicture(8, 8));
    harness.Expand(harness.At({"Board"}));
    EXPECT_EQ((Texts{"pin.jpg", "Textures"}), harness.Texts(harness.At({"Board"})))
        << "expansion reads below the Desktop, where nothing is hidden";
    EXPECT_EQ((Texts{"TEMP"}), harness.Texts(harness.At({"Board", "Textures"})));
    harness.Select(harness.At({"Board", "pin.jpg"}));
    EXPECT_EQ(desktop.Path("Board\\pin.jpg"), SelectedPath());
}

TEST_F(FolderTreeTest, ADriveViewStartsAtTheDrivesRoot) {
    ScopedDrive drive(FreeDriveLetter(), layout.Primary(), DRIVE_FIXED);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    harness.DropDown();
    harness.Choose(drive.Text());
    EXPECT_EQ(kPrimaryTop, harness.Texts(TVI_ROOT))
        << "the top of a drive hides what the top of a view hides";
    harness.Expand(harness.At({"Gallery"}));
    EXPECT_EQ((Texts{"Backgrounds", "Borders", "Boxed", "Deeper", "Edges", "Empty", "Others", "Pictures",
                     "Textures"}),
              harness.Texts(harness.At({"Gallery"})));
    harness.Select(harness.At({"Gallery", "Boxed"}));
    EXPECT_EQ(drive.Text() + "\\Gallery\\Boxed", SelectedPath());
    harness.Expand(harness.At({"Gallery", "Boxed"}));
    EXPECT_EQ((Texts{"k"}), harness.Texts(harness.At({"Gallery", "Boxed"})));
}

TEST_F(FolderTreeTest, MyComputerListsEveryDriveWithAButtonEvenWithoutADisc) {
    Disk disk;
    disk.Folder("cd");
    ScopedDrive drive(FreeDriveLetter(), disk.Path("cd"), DRIVE_CDROM);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    drive.Eject();
    PromptAnswers answers({});
    harness.DropDown();
    harness.Choose("MyComputer");
    EXPECT_TRUE(answers.texts.empty()) << "MyComputer asks nothing";

    const std::vector<std::string> roots = SystemDriveRoots();
    ASSERT_EQ(roots, harness.Texts(TVI_ROOT)) << "the roots as the system gives them, in order";
    EXPECT_NE(nullptr, harness.At({drive.Text() + "\\"}));
    for (const std::string& root : roots) {
        const HTREEITEM item = harness.At({root});
        EXPECT_EQ(1, harness.Tree().GetChildrenCount(item)) << root << " shows a button";
        EXPECT_TRUE(harness.Tree().ItemHasChildren(item)) << root << " counts as having children";
        EXPECT_FALSE(harness.Tree().HasChildItems(item)) << root << " is read only when expanded";
        EXPECT_EQ(FolderImage(), harness.ImageOf(item)) << root;
    }
}

TEST_F(FolderTreeTest, BelowADriveOfMyComputerThePathKeepsADoubledBackslash) {
    ScopedDrive drive(FreeDriveLetter(), layout.Primary(), DRIVE_FIXED);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    harness.DropDown();
    harness.Choose("MyComputer");
    const HTREEITEM root = harness.At({drive.Text() + "\\"});
    ASSERT_NE(nullptr, root);
    harness.Expand(root);
    // Below the top of a view nothing is hidden.
    EXPECT_EQ((Texts{"Animals", "backgrounds", "Backgrounds", "Blank", "Borders", "BORDERS", "Empty",
                     "Gallery", "lower", "Names", "Others", "Patchy", "single.bmp", "Textures",
                     "TopContainer", "TopFolder", "TopPicture", "Twins", "Types"}),
              harness.Texts(root));
    harness.Select(root);
    EXPECT_EQ(drive.Text(), SelectedPath()) << "the drive itself is the bare drive and colon";
    harness.Select(harness.At({drive.Text() + "\\", "Gallery"}));
    EXPECT_EQ(drive.Text() + "\\\\Gallery", SelectedPath());
    harness.Expand(harness.At({drive.Text() + "\\", "Gallery"}));
    EXPECT_EQ(9u, harness.Texts(harness.At({drive.Text() + "\\", "Gallery"})).size())
        << "expansion reads the folder through the same doubled backslash";
    harness.Select(harness.At({drive.Text() + "\\", "Gallery", "Boxed"}));
    EXPECT_EQ(drive.Text() + "\\\\Gallery\\Boxed", SelectedPath());
}

}  // namespace
}  // namespace browsertest
