// The roads that fill the gallery: a tree selection, with its two events for
// a leaf; the size switch, which keeps the selection; the size correction;
// and NavigateToPath, step by step, inside and outside the primary folder.
#include <algorithm>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "gallery/ThumbnailGalleryItem.h"

namespace browsertest {
namespace {

using Records = std::vector<GraphicItemInfo>;
using Texts = std::vector<std::string>;

bool operator==(const SIZE& a, const SIZE& b) {
    return a.cx == b.cx && a.cy == b.cy;
}

// Whether the tree was asked to mark `item` as its drop target. (Wine's tree
// ignores the request for the item that is already its caret, so the mark
// itself cannot be read back there.)
bool MarkedAsDropTarget(const SentMessages& selections, HTREEITEM item) {
    for (const SentMessages::Seen& seen : selections.seen)
        if (seen.wParam == TVGN_DROPHILITE && seen.lParam == reinterpret_cast<LPARAM>(item)) return true;
    return false;
}

class NavigationTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(harness.Create());
        harness.DropDown();
        harness.Choose("Orrimond");
        harness.sink.Clear();
    }
    HTREEITEM Below(const std::string& folder, const std::string& name) {
        const HTREEITEM parent = harness.At({folder});
        harness.Expand(parent);
        return harness.Find(parent, name);
    }
    GraphicItemInfo& Last() { return harness.Dialog().itemInfo; }

    ArtLayout& layout = SharedLayout();
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
};

// ---- Tree selection ---------------------------------------------------------------------

TEST_F(NavigationTest, ANodeWithChildrenEmptiesTheGalleryAndTellsTheHostNothingIsSelected) {
    harness.Select(harness.At({"Animals"}));
    ASSERT_EQ(5, harness.Gallery().GetItemCount());
    harness.sink.Clear();
    const HTREEITEM folder = harness.At({"Gallery"});
    SentMessages selections(harness.Tree().Handle(), TVM_SELECTITEM);
    harness.Select(folder);
    EXPECT_TRUE(SameRecords({NothingSelected()}, harness.sink.Records()));
    EXPECT_EQ(0, harness.Gallery().GetItemCount());
    EXPECT_TRUE(harness.Gallery().GetCellSize() == (SIZE{0, 0}));
    EXPECT_TRUE(SameRecords({NothingSelected()}, {Last()}));
    EXPECT_TRUE(MarkedAsDropTarget(selections, folder)) << "the node stays highlighted";
}

TEST_F(NavigationTest, APictureGivesOneCellAndTwoEvents) {
    const HTREEITEM picture = Below("Types", "photo.jpg");
    SentMessages selections(harness.Tree().Handle(), TVM_SELECTITEM);
    harness.Select(picture);
    const std::string path = layout.Path("Types\\photo.jpg");
    EXPECT_TRUE(SameRecords({NothingSelected(), Record(1, 0, path)}, harness.sink.Records()));
    EXPECT_TRUE(SameRecords({Record(1, 0, path)}, {Last()}));
    EXPECT_EQ(1, harness.Gallery().GetItemCount());
    EXPECT_EQ(0, harness.Gallery().SelectedIndex());
    EXPECT_EQ(path, harness.Dialog().currentPath);
    EXPECT_EQ(picture, harness.Dialog().currentTreeItem);
    EXPECT_TRUE(MarkedAsDropTarget(selections, picture));
}

TEST_F(NavigationTest, AContainerGivesTwoEventsWithTheExtensionInUpperCase) {
    const HTREEITEM cats = Below("lower", "cats");
    harness.Select(cats);
    const std::string path = layout.Path("lower\\cats.QLT");
    EXPECT_TRUE(SameRecords({NothingSelected(), Record(1, 1, path)}, harness.sink.Records()))
        << "cats.qlt is named in lower case on disk";
    EXPECT_TRUE(SameRecords({Record(1, 1, path)}, {Last()}));
    EXPECT_EQ(3, harness.Gallery().GetItemCount());
    EXPECT_EQ(0, harness.Gallery().SelectedIndex());
    EXPECT_EQ(0, harness.Gallery().GetTopRow());
    EXPECT_EQ(path, harness.Dialog().currentPath);
}

TEST_F(NavigationTest, AFileAtAContainersPathWithoutExtensionHidesTheContainer) {
    harness.Select(Below("Twins", "both"));
    EXPECT_TRUE(
        SameRecords({NothingSelected(), Record(1, 0, layout.Path("Twins\\both"))}, harness.sink.Records()));
    ASSERT_EQ(1, harness.Gallery().GetItemCount()) << "the plain file is taken for a picture";
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kLargeCell);
}

TEST_F(NavigationTest, AnEmptyFolderLeafLeavesTheGalleryEmpty) {
    harness.Select(harness.At({"Animals"}));
    harness.sink.Clear();
    harness.Select(harness.At({"Empty"}));
    EXPECT_TRUE(SameRecords({NothingSelected()}, harness.sink.Records()));
    EXPECT_EQ(0, harness.Gallery().GetItemCount());
    EXPECT_TRUE(harness.Gallery().GetCellSize() == (SIZE{0, 0}));
}

TEST_F(NavigationTest, ALeafThatIsNeitherFileNorContainerLeavesTheGalleryAsItWas) {
    Disk disk;
    disk.File("P\\Shelf\\gone.jpg", JpegPicture(8, 8));
    disk.File("P\\Box.qlt", ContainerFile({PictureEntry("a.jpg", 1), PictureEntry("b.jpg", 2)}));
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    ASSERT_TRUE(fresh.Create());
    fresh.DropDown();
    fresh.Choose("Orrimond");
    fresh.Select(fresh.At({"Box"}));
    ASSERT_EQ(2, fresh.Gallery().GetItemCount());
    fresh.Expand(fresh.At({"Shelf"}));
    disk.Remove("P\\Shelf\\gone.jpg");
    fresh.sink.Clear();
    fresh.Select(fresh.At({"Shelf", "gone.jpg"}));
    EXPECT_TRUE(SameRecords({NothingSelected()}, fresh.sink.Records()));
    EXPECT_EQ(2, fresh.Gallery().GetItemCount());
}

TEST_F(NavigationTest, TheRadioButtonsTakeEffectAtTheNextSelectionOfAnEmptyGallery) {
    ASSERT_EQ(0, harness.Gallery().GetItemCount());
    const SIZE before = harness.Gallery().GetCellSize();
    harness.ClickRadio(IDC_SMALL_THUMBNAILS);
    EXPECT_EQ(1, harness.Dialog().largeThumbnails) << "an empty gallery keeps its size";
    EXPECT_TRUE(harness.Gallery().GetCellSize() == before);
    EXPECT_TRUE(harness.sink.events.empty());
    harness.Select(harness.At({"Animals"}));
    EXPECT_EQ(0, harness.Dialog().largeThumbnails);
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kSmallContainerCell);
}

TEST_F(NavigationTest, TheSizeCorrectionSendsAHeightOf362As358) {
    const RECT before = harness.Dialog().GalleryWindowRect();
    harness.ResizeBy(0, 362 - (before.bottom - before.top));
    const RECT rect = harness.Dialog().GalleryWindowRect();
    ASSERT_EQ(362, rect.bottom - rect.top);
    {
        SentMessages sizes(harness.Gallery().Handle(), WM_SIZE);
        harness.Select(harness.At({"Animals"}));
        ASSERT_EQ(1u, sizes.seen.size());
        EXPECT_EQ(0u, sizes.seen[0].wParam);
        EXPECT_EQ(rect.right - rect.left, LOWORD(sizes.seen[0].lParam));
        EXPECT_EQ(358, HIWORD(sizes.seen[0].lParam));
    }
    harness.ResizeBy(0, 1);
    SentMessages sizes(harness.Gallery().Handle(), WM_SIZE);
    harness.Select(harness.At({"Patchy"}));
    ASSERT_EQ(1u, sizes.seen.size());
    EXPECT_EQ(363, HIWORD(sizes.seen[0].lParam)) << "only 362 is replaced";
}

// ---- The size switch ---------------------------------------------------------------------

TEST_F(NavigationTest, SwitchingSizeRefillsTheContainerAndKeepsTheSelection) {
    harness.Select(harness.At({"Animals"}));
    harness.ClickCell(2);
    ASSERT_EQ(2, harness.Gallery().SelectedIndex());
    harness.sink.Clear();
    harness.ClickRadio(IDC_SMALL_THUMBNAILS);
    EXPECT_TRUE(harness.sink.events.empty()) << "the host is not told again";
    EXPECT_EQ(0, harness.Dialog().largeThumbnails);
    ASSERT_EQ(5, harness.Gallery().GetItemCount());
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kSmallContainerCell);
    EXPECT_EQ(2, harness.Gallery().SelectedIndex()) << "the selection survives the refill by number";
    EXPECT_EQ(60, harness.CellBitmap(0)->width);

    harness.ClickRadio(IDC_LARGE_THUMBNAILS);
    EXPECT_EQ(1, harness.Dialog().largeThumbnails);
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kLargeCell);
    EXPECT_EQ(2, harness.Gallery().SelectedIndex());
    EXPECT_EQ(120, harness.CellBitmap(0)->width);
    // Scrolling it into view may have put the page a row further down, as
    // the gallery does for its last page; the click is made from the top.
    harness.Gallery().SetTopRow(0, TRUE);
    harness.ClickCell(harness.Gallery().SelectedIndex());
    EXPECT_TRUE(SameRecords({Record(1, 3, layout.Path("Animals.QLT"))}, harness.sink.Records()));
}

TEST_F(NavigationTest, SwitchingSizeRendersAPictureAgainAndTellsTheHost) {
    harness.Select(Below("Types", "photo.jpg"));
    harness.sink.Clear();
    harness.ClickRadio(IDC_SMALL_THUMBNAILS);
    const std::string path = layout.Path("Types\\photo.jpg");
    EXPECT_TRUE(SameRecords({Record(1, 0, path)}, harness.sink.Records()));
    ASSERT_EQ(1, harness.Gallery().GetItemCount());
    EXPECT_EQ(57, harness.CellBitmap(0)->width);
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kSmallPictureCell);
}

TEST_F(NavigationTest, TheSizeSwitchAsksForTheContainerFirst) {
    // twin.jpg is a picture to the tree, but twin.jpg.QLT exists too: the
    // switch refills from the path last shown, which is the picture's.
    const HTREEITEM twin = Below("Twins", "twin.jpg");
    harness.Select(twin);
    ASSERT_EQ(1, harness.Gallery().GetItemCount());
    harness.sink.Clear();
    harness.ClickRadio(IDC_SMALL_THUMBNAILS);
    EXPECT_TRUE(harness.sink.events.empty()) << "the container road tells the host nothing";
    EXPECT_EQ(0, harness.Gallery().GetItemCount()) << "the picture file is no container";
}

TEST_F(NavigationTest, RedrawThumbnailsPicksTheHandlerByTheFlag) {
    harness.Select(harness.At({"Animals"}));
    harness.Dialog().SetLargeThumbnails(FALSE);
    harness.Dialog().RedrawThumbnails();
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kSmallContainerCell);
    harness.Dialog().SetLargeThumbnails(TRUE);
    harness.Dialog().RedrawThumbnails();
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kLargeCell);
}

// ---- NavigateToPath -------------------------------------------------------------------------

TEST_F(NavigationTest, NavigatingInsideThePrimaryFolderShowsTheProductEntryAndSelectsTheItem) {
    harness.Dialog().ResetDriveCombo("C:");
    const std::string path = layout.Path("lower\\cats");
    harness.Dialog().SetItemPath(path, 2);
    harness.sink.Clear();
    SentMessages selections(harness.Tree().Handle(), TVM_SELECTITEM);
    harness.Dialog().NavigateToPath(path, 2);
    EXPECT_EQ((Texts{"Orrimond"}), harness.ComboTexts())
        << "the drive's entry made way for the product entry";
    const HTREEITEM cats = harness.At({"lower", "cats"});
    ASSERT_NE(nullptr, cats);
    EXPECT_EQ(cats, harness.Tree().GetSelectedItem());
    EXPECT_TRUE(MarkedAsDropTarget(selections, cats));
    EXPECT_EQ(harness.Tree().Handle(), ::GetFocus());
    const std::string container = path + ".QLT";
    EXPECT_TRUE(
        SameRecords({NothingSelected(), NothingSelected(), Record(1, 1, container), Record(1, 2, container)},
                    harness.sink.Records()));
    EXPECT_TRUE(SameRecords({Record(1, 2, container)}, {Last()}));
    EXPECT_EQ(1, harness.Gallery().SelectedIndex());
    EXPECT_EQ(container, harness.Dialog().itemPath) << "the stored path keeps its new extension";
    EXPECT_EQ(2, harness.Dialog().lastPosition);
}

TEST_F(NavigationTest, WithTheFullListTheDrivesEntryIsTheOneReplaced) {
    // The fixture opened the list and chose the product entry. The path's
    // drive entry is made current, and it is that entry which the product
    // entry replaces at the top; the last entry, the product entry, ends
    // selected.
    Texts expected = harness.ComboTexts();
    ASSERT_EQ("Orrimond", expected.back());
    expected.erase(std::find(expected.begin(), expected.end(), "C:"));
    expected.insert(expected.begin(), "Orrimond");
    const std::string path = layout.Path("lower\\cats");
    harness.Dialog().SetItemPath(path, 3);
    harness.sink.Clear();
    harness.Dialog().NavigateToPath(path, 3);
    EXPECT_EQ(expected, harness.ComboTexts());
    EXPECT_EQ(harness.Combo().GetCount() - 1, harness.Combo().GetCurSel());
    EXPECT_EQ(harness.At({"lower", "cats"}), harness.Tree().GetSelectedItem());
    const std::string container = path + ".QLT";
    EXPECT_TRUE(
        SameRecords({NothingSelected(), NothingSelected(), Record(1, 1, container), Record(1, 3, container)},
                    harness.sink.Records()));
}

TEST_F(NavigationTest, NavigatingToAPictureWithPositionZeroSelectsNothingAndStillReports) {
    const std::string path = layout.Path("Types\\photo.jpg");
    harness.Dialog().SetItemPath(path, 0);
    harness.sink.Clear();
    harness.Dialog().NavigateToPath(path, 0);
    EXPECT_TRUE(SameRecords({NothingSelected(), NothingSelected(), Record(1, 0, path), Record(1, 0, path)},
                            harness.sink.Records()));
    EXPECT_EQ(-1, harness.Gallery().SelectedIndex());
    EXPECT_EQ(path, harness.Dialog().itemPath);
}

TEST_F(NavigationTest, NavigatingToAFolderSelectsItAndReportsThePath) {
    const std::string path = layout.Path("Gallery\\Boxed");
    harness.Dialog().SetItemPath(path, 1);
    harness.sink.Clear();
    harness.Dialog().NavigateToPath(path, 1);
    EXPECT_EQ(harness.At({"Gallery", "Boxed"}), harness.Tree().GetSelectedItem());
    EXPECT_TRUE(
        SameRecords({NothingSelected(), NothingSelected(), Record(1, 1, path)}, harness.sink.Records()));
}

TEST_F(NavigationTest, NavigatingWithAnEmptyPathSelectsTheFirstItemOfThePrimaryFolder) {
    harness.Dialog().ResetDriveCombo("");
    harness.Dialog().SetItemPath("", 0);
    harness.sink.Clear();
    harness.Dialog().NavigateToPath("", 0);
    EXPECT_EQ((Texts{"Orrimond"}), harness.ComboTexts());
    EXPECT_EQ(harness.At({"Animals"}), harness.Tree().GetSelectedItem());
    EXPECT_TRUE(SameRecords({NothingSelected(), NothingSelected(), Record(1, 1, layout.Path("Animals.QLT"))},
                            harness.sink.Records()));
    EXPECT_EQ("", harness.Dialog().itemPath);
}

TEST_F(NavigationTest, NavigatingOutsideThePrimaryFolderPutsTheDriveInTheCombo) {
    Disk disk;
    disk.File("root\\Shelf\\Box.qlt",
              ContainerFile({PictureEntry("a.jpg", 1), PictureEntry("b.jpg", 2), PictureEntry("c.jpg", 3)}));
    ScopedDrive drive(FreeDriveLetter(), disk.Path("root"), DRIVE_FIXED);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    DialogHarness fresh;
    ASSERT_TRUE(fresh.Create());
    fresh.Dialog().ResetDriveCombo("");
    const std::string path = drive.Text() + "\\Shelf\\Box";
    fresh.Dialog().SetItemPath(path, 3);
    fresh.sink.Clear();
    fresh.Dialog().NavigateToPath(path, 3);
    EXPECT_EQ((Texts{drive.Text()}), fresh.ComboTexts());
    EXPECT_EQ(drive.Text(), fresh.Combo().GetCurrentText());
    EXPECT_EQ(fresh.At({"Shelf", "Box"}), fresh.Tree().GetSelectedItem());
    const std::string container = path + ".QLT";
    EXPECT_TRUE(
        SameRecords({NothingSelected(), NothingSelected(), Record(1, 1, container), Record(1, 3, container)},
                    fresh.sink.Records()));
    EXPECT_EQ(2, fresh.Gallery().SelectedIndex());
}

TEST_F(NavigationTest, WithTheFullListADriveOutsideEndsOnTheProductEntry) {
    // The drive's entry is selected, then replaced by the drive at the top,
    // and the last entry, the product entry, is selected: the tree is the
    // primary folder's and the walk finds nothing of the path.
    harness.DropDown();
    ASSERT_TRUE(harness.Combo().populated);
    const std::string path = "C:\\nowhere\\at\\all";
    harness.Dialog().SetItemPath(path, 1);
    harness.sink.Clear();
    harness.Dialog().NavigateToPath(path, 1);
    Texts expected = {"C:", "Desktop", "MyComputer"};
    for (const std::string& text : harness.ComboTexts())
        if (text.size() == 2 && text[1] == ':' && text != "C:") expected.push_back(text);
    expected.push_back("Orrimond");
    EXPECT_EQ(expected, harness.ComboTexts());
    EXPECT_EQ("Orrimond", harness.Combo().GetCurrentText());
    EXPECT_EQ(harness.At({"Animals"}), harness.Tree().GetSelectedItem())
        << "the first item stays the last one found";
    EXPECT_TRUE(SameRecords({NothingSelected(), NothingSelected(), Record(1, 1, layout.Path("Animals.QLT"))},
                            harness.sink.Records()));
}

TEST_F(NavigationTest, RefreshingToADriveForgetsAStoredPathThatIsGone) {
    Disk disk;
    disk.File("root\\photo.jpg", JpegPicture(8, 8));
    ScopedDrive drive(FreeDriveLetter(), disk.Path("root"), DRIVE_REMOVABLE);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    harness.Dialog().SetItemPath(drive.Text() + "\\gone", 4);
    harness.Dialog().ResetDriveCombo(drive.Text());
    harness.sink.Clear();
    harness.Dialog().NavigateToPath(drive.Text(), 0);
    EXPECT_EQ("", harness.Dialog().itemPath) << "the drive itself is a directory";
    EXPECT_EQ(harness.At({"photo.jpg"}), harness.Tree().GetSelectedItem());
    EXPECT_TRUE(
        SameRecords({NothingSelected(), NothingSelected(), Record(1, 0, drive.Text() + "\\photo.jpg")},
                    harness.sink.Records()));
}

TEST(NavigationWithoutPrimaryFolder, NavigatingGivesUpAtOnce) {
    ScopedPrimaryFolder primary{std::nullopt};
    primary.RemoveKey();
    DialogHarness harness;
    ASSERT_TRUE(harness.Create());
    harness.Dialog().ResetDriveCombo("C:");
    harness.sink.Clear();
    harness.Dialog().NavigateToPath("C:\\anything", 5);
    EXPECT_TRUE(harness.sink.events.empty());
    EXPECT_EQ(-1, harness.Dialog().lastPosition);
    EXPECT_EQ((Texts{"C:"}), harness.ComboTexts());
}

TEST(NavigationAtStart, AStoredPathIsNavigatedToWhenTheDialogIsMade) {
    ArtLayout& layout = SharedLayout();
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
    const std::string path = layout.Path("Animals");
    harness.Dialog().SetItemPath(path, 4);
    ASSERT_TRUE(harness.Create());
    EXPECT_EQ(harness.At({"Animals"}), harness.Tree().GetSelectedItem());
    EXPECT_EQ(3, harness.Gallery().SelectedIndex());
    EXPECT_TRUE(SameRecords(
        {NothingSelected(), NothingSelected(), Record(1, 1, path + ".QLT"), Record(1, 4, path + ".QLT")},
        harness.sink.Records()));
}

}  // namespace
}  // namespace browsertest
