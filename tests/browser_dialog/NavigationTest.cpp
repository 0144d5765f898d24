// The roads that fill the gallery: a tree selection, with its two events for
// a leaf; the size switch, which keeps the selection; the size correction;
// and NavigateToPath, step by step, inside and outside the primary folder.
#include <algorithm>
#include <cctype>
#include <climits>

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

class NavigationTest : public ProductViewTest {
protected:
    GraphicItemInfo& Last() { return harness.Dialog().itemInfo; }
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

// What the gallery and the dialog hold at the moment of each ItemSel.
struct Moment {
    int items;
    int selected;
    SIZE cell;
    std::string currentPath;
    HTREEITEM caret;
};

class MomentRecorder {
public:
    explicit MomentRecorder(DialogHarness& harness) : harness_(harness) {
        harness.sink.onItemSel = [this](GraphicItemInfo&) {
            moments.push_back(Moment{harness_.Gallery().GetItemCount(), harness_.Gallery().SelectedIndex(),
                                     harness_.Gallery().GetCellSize(), harness_.Dialog().currentPath,
                                     harness_.Tree().GetSelectedItem()});
        };
    }
    ~MomentRecorder() { harness_.sink.onItemSel = nullptr; }
    MomentRecorder(const MomentRecorder&) = delete;
    MomentRecorder& operator=(const MomentRecorder&) = delete;

    std::vector<Moment> moments;

private:
    DialogHarness& harness_;
};

TEST_F(NavigationTest, APictureLeafTellsTheHostBeforeTheGalleryChangesAndAgainWhenItIsShown) {
    harness.Select(harness.At({"Animals"}));
    ASSERT_EQ(5, harness.Gallery().GetItemCount());
    const std::string before = harness.Dialog().currentPath;
    const HTREEITEM picture = Below("Types", "photo.jpg");
    harness.sink.Clear();
    MomentRecorder recorder(harness);
    harness.Select(picture);
    const std::string path = layout.Path("Types\\photo.jpg");
    ASSERT_TRUE(SameRecords({NothingSelected(), Record(1, 0, path)}, harness.sink.Records()));
    ASSERT_EQ(2u, recorder.moments.size());
    EXPECT_EQ(5, recorder.moments[0].items) << "the first event comes before the leaf is looked at";
    EXPECT_EQ(1, recorder.moments[1].items);
    EXPECT_EQ(0, recorder.moments[1].selected);
    EXPECT_TRUE(recorder.moments[1].cell == browser::kLargeCell);
    EXPECT_EQ(before, recorder.moments[1].currentPath)
        << "the path is stored after the render has told the host";
    EXPECT_EQ(path, harness.Dialog().currentPath);
}

TEST_F(NavigationTest, AContainerIsShownSelectedAndStoredBeforeTheHostIsTold) {
    const HTREEITEM cats = Below("lower", "cats");
    harness.sink.Clear();
    MomentRecorder recorder(harness);
    harness.Select(cats);
    const std::string path = layout.Path("lower\\cats.QLT");
    ASSERT_TRUE(SameRecords({NothingSelected(), Record(1, 1, path)}, harness.sink.Records()));
    ASSERT_EQ(2u, recorder.moments.size());
    EXPECT_EQ(0, recorder.moments[0].items);
    EXPECT_EQ("", recorder.moments[0].currentPath);
    EXPECT_EQ(3, recorder.moments[1].items);
    EXPECT_EQ(0, recorder.moments[1].selected);
    EXPECT_EQ(path, recorder.moments[1].currentPath);
    EXPECT_EQ(cats, recorder.moments[1].caret);
}

TEST_F(NavigationTest, ANodeWithChildrenIsClearedBeforeTheHostIsTold) {
    harness.Select(harness.At({"Animals"}));
    harness.sink.Clear();
    MomentRecorder recorder(harness);
    harness.Select(harness.At({"Gallery"}));
    ASSERT_EQ(1u, recorder.moments.size());
    EXPECT_EQ(0, recorder.moments[0].items);
    EXPECT_TRUE(recorder.moments[0].cell == (SIZE{0, 0}));
}

TEST_F(NavigationTest, ADriveOfMyComputerThatWasNeverReadHasChildrenAndEmptiesTheGallery) {
    // A drive is inserted with a children count of 1, so before it was ever
    // read (and even with no disc in it) it counts as having children:
    // selecting it empties the gallery like any node with children, and the
    // host hears only that nothing is selected.
    Disk disk;
    disk.Folder("cd");
    ScopedDrive cd(FreeDriveLetter(), disk.Path("cd"), DRIVE_CDROM);
    if (!cd.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    cd.Eject();
    ScopedDrive fixed(FreeDriveLetter(), layout.Primary(), DRIVE_FIXED);
    ASSERT_TRUE(fixed.Ok());
    harness.Choose("MyComputer");
    const HTREEITEM root = harness.At({fixed.Text() + "\\"});
    ASSERT_NE(nullptr, root);
    harness.Expand(root);
    harness.Select(harness.At({fixed.Text() + "\\", "Animals"}));
    ASSERT_EQ(5, harness.Gallery().GetItemCount());
    EXPECT_TRUE(SameRecords({Record(1, 1, fixed.Text() + "\\\\Animals.QLT")}, {Last()}));
    harness.sink.Clear();

    const HTREEITEM unread = harness.At({cd.Text() + "\\"});
    ASSERT_NE(nullptr, unread);
    ASSERT_FALSE(harness.Tree().HasChildItems(unread)) << "the drive was never read";
    MomentRecorder recorder(harness);
    harness.Select(unread);
    EXPECT_TRUE(SameRecords({NothingSelected()}, harness.sink.Records()));
    ASSERT_EQ(1u, recorder.moments.size());
    EXPECT_EQ(0, recorder.moments[0].items) << "emptied before the host is told";
    EXPECT_EQ(0, harness.Gallery().GetItemCount());
    EXPECT_TRUE(harness.Gallery().GetCellSize() == (SIZE{0, 0}));

    // A drive that was read empties it the same way.
    harness.Select(harness.At({fixed.Text() + "\\", "Animals"}));
    ASSERT_EQ(5, harness.Gallery().GetItemCount());
    harness.sink.Clear();
    harness.Select(root);
    EXPECT_TRUE(SameRecords({NothingSelected()}, harness.sink.Records()));
    EXPECT_EQ(0, harness.Gallery().GetItemCount());
    EXPECT_TRUE(harness.Gallery().GetCellSize() == (SIZE{0, 0}));
}

TEST_F(NavigationTest, AnEmptyPictureFileIsStillOneCellAndTwoEvents) {
    Disk disk;
    disk.File("P\\zero.jpg", Bytes());
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    ASSERT_TRUE(fresh.CreateInProductView());
    fresh.sink.Clear();
    fresh.Select(fresh.At({"zero.jpg"}));
    EXPECT_TRUE(
        SameRecords({NothingSelected(), Record(1, 0, disk.Path("P\\zero.jpg"))}, fresh.sink.Records()));
    EXPECT_EQ(1, fresh.Gallery().GetItemCount()) << "the no-preview picture stands in";
}

TEST_F(NavigationTest, APrimaryFolderWithATrailingBackslashIsNotNormalised) {
    Disk disk;
    disk.File("P\\Box.qlt", ContainerFile({PictureEntry("a.jpg", 1), PictureEntry("b.jpg", 2)}));
    ScopedPrimaryFolder own(disk.Path("P") + "\\");
    DialogHarness fresh;
    ASSERT_TRUE(fresh.Create());
    EXPECT_EQ((Texts{"Box"}), fresh.Texts(TVI_ROOT));
    fresh.DropDown();
    fresh.Choose("Orrimond");
    fresh.sink.Clear();
    fresh.Select(fresh.At({"Box"}));
    EXPECT_TRUE(
        SameRecords({NothingSelected(), Record(1, 1, disk.Path("P") + "\\\\Box.QLT")}, fresh.sink.Records()));
    EXPECT_EQ(2, fresh.Gallery().GetItemCount());
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
    ASSERT_TRUE(fresh.CreateInProductView());
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

TEST_F(NavigationTest, SwitchingSizeForAPictureThatIsGoneLeavesTheGalleryEmptyAndSilent) {
    Disk disk;
    disk.File("P\\gone.jpg", JpegPicture(40, 30));
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    ASSERT_TRUE(fresh.CreateInProductView());
    fresh.Select(fresh.At({"gone.jpg"}));
    ASSERT_EQ(1, fresh.Gallery().GetItemCount());
    disk.Remove("P\\gone.jpg");
    fresh.sink.Clear();
    fresh.ClickRadio(IDC_SMALL_THUMBNAILS);
    EXPECT_TRUE(fresh.sink.events.empty());
    EXPECT_EQ(0, fresh.Dialog().largeThumbnails);
    EXPECT_EQ(0, fresh.Gallery().GetItemCount()) << "the new cell size emptied it before the file was read";
    EXPECT_TRUE(fresh.Gallery().GetCellSize() == browser::kSmallContainerCell);
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

TEST_F(NavigationTest, NavigationRebuildsTheTreeThenSelectsThenReports) {
    harness.Dialog().ResetDriveCombo("C:");
    const std::string path = layout.Path("lower\\cats");
    const std::string container = path + ".QLT";
    harness.Dialog().SetItemPath(path, 3);
    harness.sink.Clear();
    std::vector<std::string> entries;
    std::vector<bool> treeEmpty;
    std::vector<bool> treeFocused;
    MomentRecorder recorder(harness);
    harness.sink.onItemSel = [&, inner = harness.sink.onItemSel](GraphicItemInfo& info) {
        inner(info);
        entries.push_back(harness.Combo().GetCurrentText());
        treeEmpty.push_back(harness.Tree().GetRootItem() == nullptr);
        treeFocused.push_back(::GetFocus() == harness.Tree().Handle());
    };
    harness.Dialog().NavigateToPath(path, 3);
    ASSERT_TRUE(
        SameRecords({NothingSelected(), NothingSelected(), Record(1, 1, container), Record(1, 3, container)},
                    harness.sink.Records()));
    const HTREEITEM cats = harness.At({"lower", "cats"});
    ASSERT_EQ(4u, recorder.moments.size());
    // The combo's rebuild: the product entry shown, the tree emptied.
    EXPECT_EQ("Orrimond", entries[0]);
    EXPECT_TRUE(treeEmpty[0]);
    // The selection of the walk's last node: the leaf, then the container.
    EXPECT_EQ(cats, recorder.moments[1].caret);
    EXPECT_EQ(cats, recorder.moments[2].caret);
    EXPECT_EQ(0, recorder.moments[2].selected);
    // The end: the position's item selected and the tree focused.
    EXPECT_EQ(2, recorder.moments[3].selected);
    EXPECT_TRUE(treeFocused[3]);
    EXPECT_EQ(3, harness.Dialog().lastPosition);
}

TEST_F(NavigationTest, PositionsAreReportedAsGivenWhateverTheirRange) {
    const std::string path = layout.Path("lower\\cats");
    const std::string container = path + ".QLT";
    const struct {
        long position;
        int selected;
    } cases[] = {{0, -1}, {4, 3}, {-5, -6}, {LONG_MAX, LONG_MAX - 1}, {LONG_MIN, INT_MAX}};
    for (const auto& [position, selected] : cases) {
        SCOPED_TRACE(position);
        // A single product entry each time: with the product entry selected
        // and a drive below it, the next navigation would end on the drive.
        harness.Dialog().ResetDriveCombo("");
        harness.Dialog().SetItemPath(path, position);
        harness.sink.Clear();
        harness.Dialog().NavigateToPath(path, position);
        EXPECT_TRUE(SameRecords({NothingSelected(), NothingSelected(), Record(1, 1, container),
                                 Record(1, static_cast<int32_t>(position), container)},
                                harness.sink.Records()));
        ASSERT_EQ(3, harness.Gallery().GetItemCount());
        EXPECT_EQ(selected, harness.Gallery().SelectedIndex()) << "gallery item position - 1";
        EXPECT_EQ(static_cast<int>(position), harness.Dialog().lastPosition);
        // A selection beyond the cells paints nothing of its own.
        ::RedrawWindow(harness.Gallery().Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    }
}

TEST_F(NavigationTest, APathLongerThanMaxPathWalksAsFarAsItsNamesGo) {
    const std::string path = layout.Path("Gallery\\" + std::string(300, 'a') + "\\more");
    harness.Dialog().SetItemPath(path, 2);
    harness.sink.Clear();
    harness.Dialog().NavigateToPath(path, 2);
    EXPECT_EQ(harness.At({"Gallery"}), harness.Tree().GetSelectedItem());
    EXPECT_TRUE(SameRecords({NothingSelected(), NothingSelected()}, harness.sink.Records()))
        << "neither the path nor its container exists: no item is reported";
    EXPECT_EQ(path + ".QLT", harness.Dialog().itemPath);
}

TEST_F(NavigationTest, APathWithATrailingBackslashWalksToItsLastName) {
    const std::string path = layout.Path("Gallery\\Boxed\\");
    harness.Dialog().SetItemPath(path, 1);
    harness.sink.Clear();
    harness.Dialog().NavigateToPath(path, 1);
    EXPECT_EQ(harness.At({"Gallery", "Boxed"}), harness.Tree().GetSelectedItem());
    EXPECT_TRUE(
        SameRecords({NothingSelected(), NothingSelected(), Record(1, 1, path)}, harness.sink.Records()));
}

TEST_F(NavigationTest, DotsInFolderNamesAreOrdinaryCharactersOfThePath) {
    Disk disk;
    disk.File("P\\my.pics\\cat.jpg", JpegPicture(40, 30));
    disk.File("P\\my.pics\\box.qlt", ContainerFile({PictureEntry("a.jpg", 1), PictureEntry("b.jpg", 2)}));
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    ASSERT_TRUE(fresh.Create());
    const std::string picture = disk.Path("P\\my.pics\\cat.jpg");
    fresh.Dialog().SetItemPath(picture, 1);
    fresh.sink.Clear();
    fresh.Dialog().NavigateToPath(picture, 1);
    EXPECT_EQ(fresh.At({"my.pics", "cat.jpg"}), fresh.Tree().GetSelectedItem());
    EXPECT_TRUE(
        SameRecords({NothingSelected(), NothingSelected(), Record(1, 0, picture), Record(1, 1, picture)},
                    fresh.sink.Records()));
    fresh.sink.Clear();
    fresh.Select(fresh.At({"my.pics", "box"}));
    EXPECT_TRUE(SameRecords({NothingSelected(), Record(1, 1, disk.Path("P\\my.pics\\box.QLT"))},
                            fresh.sink.Records()));
    EXPECT_EQ(2, fresh.Gallery().GetItemCount());
}

TEST_F(NavigationTest, AtStartTheDirectoryTestLooksAtTheStoredPathWithoutTheExtension) {
    // The stored path names no file; with ".QLT" appended it names a folder.
    // The test for a directory is made on the path as it was stored, which
    // is no directory, so the folder is reported as the item.
    Disk disk;
    disk.File("P\\Stack.QLT\\inside.jpg", JpegPicture(20, 20));
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    const std::string stored = disk.Path("P\\Stack");
    fresh.Dialog().SetItemPath(stored, 2);
    ASSERT_TRUE(fresh.Create());
    ASSERT_FALSE(fresh.sink.Records().empty());
    EXPECT_TRUE(SameRecords({Record(1, 2, stored + ".QLT")}, {fresh.sink.Records().back()}));
    EXPECT_EQ(stored + ".QLT", fresh.Dialog().itemPath);
}

TEST_F(NavigationTest, ALongDrivePartBecomesTheWholeComboEntry) {
    const std::string drive = std::string(300, 'x') + ":";
    const std::string path = drive + "\\a\\b";
    harness.Dialog().ResetDriveCombo("");
    harness.Dialog().SetItemPath(path, 1);
    harness.sink.Clear();
    harness.Dialog().NavigateToPath(path, 1);
    EXPECT_EQ((Texts{drive}), harness.ComboTexts());
    EXPECT_EQ(drive, harness.Combo().GetCurrentText());
    EXPECT_EQ(nullptr, harness.Tree().GetRootItem()) << "no such place: the tree stays empty";
    EXPECT_TRUE(SameRecords({NothingSelected()}, harness.sink.Records()));
}

TEST_F(NavigationTest, ThePrimaryFolderIsCutFromTheFrontWhereverItWasFound) {
    Disk disk;
    disk.File("P\\Shelf\\Box.qlt", ContainerFile({PictureEntry("a.jpg", 1), PictureEntry("b.jpg", 2)}));
    const std::string primaryPath = disk.Path("P");
    ScopedPrimaryFolder own(primaryPath);
    DialogHarness fresh;
    ASSERT_TRUE(fresh.Create());
    // One character before the primary folder: its length comes off the
    // front, which leaves its last letter, and the walk skips that name.
    const std::string oneAhead = "z" + primaryPath + "\\Shelf\\Box";
    fresh.sink.Clear();
    fresh.Dialog().NavigateToPath(oneAhead, 2);
    EXPECT_EQ((Texts{"Orrimond"}), fresh.ComboTexts());
    EXPECT_EQ(fresh.At({"Shelf", "Box"}), fresh.Tree().GetSelectedItem());
    EXPECT_TRUE(
        SameRecords({NothingSelected(), NothingSelected(), Record(1, 1, primaryPath + "\\Shelf\\Box.QLT")},
                    fresh.sink.Records()))
        << "the path as given names nothing, so no last event";
    // Three characters before it: the rest of its last folder's name and the
    // folder itself are left to walk, and the walk finds nothing of them.
    const std::string threeAhead = "zzz" + primaryPath + "\\Shelf\\Box";
    fresh.sink.Clear();
    fresh.Dialog().NavigateToPath(threeAhead, 2);
    EXPECT_EQ(fresh.At({"Shelf"}), fresh.Tree().GetSelectedItem())
        << "the first item stays the last one found";
    EXPECT_TRUE(SameRecords({NothingSelected(), NothingSelected()}, fresh.sink.Records()));
}

TEST_F(NavigationTest, ThePrimaryFolderIsFoundWithItsCaseButTheTreeIsWalkedWithout) {
    Disk disk;
    disk.File("P\\Shelf\\Box.qlt", ContainerFile({PictureEntry("a.jpg", 1), PictureEntry("b.jpg", 2)}));
    const std::string primaryPath = disk.Path("P");
    ScopedPrimaryFolder own(primaryPath);
    DialogHarness fresh;
    ASSERT_TRUE(fresh.Create());
    std::string lowered = primaryPath + "\\Shelf\\Box";
    for (char& c : lowered) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    ASSERT_NE(lowered.substr(0, primaryPath.size()), primaryPath);
    const std::string drive = lowered.substr(0, 2);
    fresh.Dialog().SetItemPath(lowered, 2);
    fresh.sink.Clear();
    fresh.Dialog().NavigateToPath(lowered, 2);
    EXPECT_EQ((Texts{drive}), fresh.ComboTexts()) << "not found: the drive's view";
    const HTREEITEM selected = fresh.Tree().GetSelectedItem();
    ASSERT_NE(nullptr, selected);
    EXPECT_EQ("Box", fresh.Tree().GetItemText(selected));
    const std::string shown = drive + primaryPath.substr(2) + "\\Shelf\\Box.QLT";
    EXPECT_TRUE(SameRecords(
        {NothingSelected(), NothingSelected(), Record(1, 1, shown), Record(1, 2, lowered + ".QLT")},
        fresh.sink.Records()));
    EXPECT_EQ(1, fresh.Gallery().SelectedIndex());
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
