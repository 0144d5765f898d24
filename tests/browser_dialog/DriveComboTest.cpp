// The drive list: one entry until the first drop-down, then the full list
// in its order with its images and indents; the single entry that
// navigation and RefreshCombo put at the top; and the rebuilt tree, with the
// prompt for a drive that has no medium in it.
#include <cstring>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "browser/DrivePrompt.h"
#include "browser/ShellAccess.h"

namespace browsertest {
namespace {

using Texts = std::vector<std::string>;

struct Look {
    int image = -1;
    int indent = -1;
    bool operator==(const Look& other) const { return image == other.image && indent == other.indent; }
};

std::ostream& operator<<(std::ostream& out, const Look& look) {
    return out << "{image " << look.image << ", indent " << look.indent << "}";
}

std::string WithoutBackslash(const std::string& root) {
    return root.substr(0, root.size() - 1);
}

class DriveComboTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(harness.Create()); }

    std::vector<Look> Looks() {
        std::vector<Look> looks;
        for (int i = 0; i < harness.Combo().GetCount(); ++i) {
            Look look;
            harness.Combo().GetItemLook(i, &look.image, &look.indent);
            looks.push_back(look);
        }
        return looks;
    }
    // The full list as it must be for the drives the system has now.
    Texts ExpectedList() {
        Texts texts = {"Desktop", "MyComputer"};
        for (const std::string& root : SystemDriveRoots()) texts.push_back(WithoutBackslash(root));
        texts.push_back("Orrimond");
        return texts;
    }
    std::vector<Look> ExpectedLooks() {
        const std::vector<std::string> roots = SystemDriveRoots();
        const int n = static_cast<int>(roots.size());
        std::vector<Look> looks = {{0, 0}, {3, 1 & n}};
        for (const std::string& root : roots) looks.push_back({ExpectedDriveImage(root), 2 & n});
        looks.push_back({1, 0});
        return looks;
    }

    ArtLayout& layout = SharedLayout();
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
};

TEST(DriveImages, FollowTheDriveType) {
    EXPECT_EQ(5, browser::ImageForDriveType(DRIVE_REMOVABLE));
    EXPECT_EQ(4, browser::ImageForDriveType(DRIVE_FIXED));
    EXPECT_EQ(7, browser::ImageForDriveType(DRIVE_REMOTE));
    EXPECT_EQ(6, browser::ImageForDriveType(DRIVE_CDROM));
    for (UINT other : {UINT{DRIVE_UNKNOWN}, UINT{DRIVE_NO_ROOT_DIR}, UINT{DRIVE_RAMDISK}, 99u})
        EXPECT_EQ(4, browser::ImageForDriveType(other)) << other;
}

TEST(DrivePromptText, NamesTheDriveWithItsBackslashAndTheDeviceState) {
    EXPECT_EQ("E:\\ is not accessible\n\nThe device is not ready", browser::DriveNotReadyText("E:"));
    EXPECT_EQ(0x35u, browser::kDriveNotReadyStyle);
    EXPECT_EQ(static_cast<UINT>(MB_RETRYCANCEL | MB_ICONEXCLAMATION), browser::kDriveNotReadyStyle);
}

TEST_F(DriveComboTest, StaysBlankUntilTheFirstDropDown) {
    EXPECT_EQ(0, harness.Combo().GetCount());
    EXPECT_EQ(CB_ERR, harness.Combo().GetCurSel());
    EXPECT_FALSE(harness.Combo().populated);
}

TEST_F(DriveComboTest, TheFirstDropDownBuildsTheListInItsOrder) {
    harness.DropDown();
    EXPECT_TRUE(harness.Combo().populated);
    EXPECT_EQ(ExpectedList(), harness.ComboTexts());
    EXPECT_EQ(ExpectedLooks(), Looks());
    // Each entry shows the same image selected, with no overlay.
    for (int i = 0; i < harness.Combo().GetCount(); ++i) {
        COMBOBOXEXITEMA item = {};
        item.mask = CBEIF_IMAGE | CBEIF_SELECTEDIMAGE | CBEIF_OVERLAY;
        item.iItem = i;
        ASSERT_NE(
            0, ::SendMessageA(harness.Combo().Handle(), CBEM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item)));
        EXPECT_EQ(item.iImage, item.iSelectedImage) << i;
        EXPECT_EQ(0, item.iOverlay) << i;
    }
    EXPECT_EQ(CB_ERR, harness.Combo().GetCurSel()) << "a blank combo stays without a selection";
}

TEST_F(DriveComboTest, TheControlsOwnDropDownBuildsTheList) {
    ::SendMessageA(harness.Combo().Handle(), CB_SHOWDROPDOWN, TRUE, 0);
    ::SendMessageA(harness.Combo().Handle(), CB_SHOWDROPDOWN, FALSE, 0);
    EXPECT_TRUE(harness.Combo().populated);
    EXPECT_EQ(ExpectedList(), harness.ComboTexts());
}

TEST_F(DriveComboTest, ASecondDropDownDoesNotRebuildTheList) {
    harness.DropDown();
    const Texts first = harness.ComboTexts();
    Disk disk;
    disk.Folder("d");
    ScopedDrive drive(FreeDriveLetter(), disk.Path("d"), DRIVE_FIXED);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    harness.DropDown();
    EXPECT_EQ(first, harness.ComboTexts()) << "the new drive waits for RefreshCombo";
}

TEST_F(DriveComboTest, TheImagesAndIndentsFollowTheDrives) {
    Disk disk;
    disk.Folder("a");
    disk.Folder("b");
    disk.Folder("c");
    disk.Folder("d");
    ScopedDrive removable(FreeDriveLetter(), disk.Path("a"), DRIVE_REMOVABLE);
    if (!removable.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    ScopedDrive cdrom(FreeDriveLetter(), disk.Path("b"), DRIVE_CDROM);
    ScopedDrive remote(FreeDriveLetter(), disk.Path("c"), DRIVE_REMOTE);
    ScopedDrive fixed(FreeDriveLetter(), disk.Path("d"), DRIVE_FIXED);
    harness.DropDown();
    EXPECT_EQ(ExpectedList(), harness.ComboTexts());
    EXPECT_EQ(ExpectedLooks(), Looks());
    const Texts texts = harness.ComboTexts();
    const std::vector<Look> looks = Looks();
    for (size_t i = 0; i < texts.size(); ++i) {
        int expected = -1;
        if (texts[i] == removable.Text()) expected = 5;
        if (texts[i] == cdrom.Text()) expected = 6;
        if (texts[i] == remote.Text()) expected = 7;
        if (texts[i] == fixed.Text()) expected = 4;
        if (expected >= 0) {
            EXPECT_EQ(expected, looks[i].image) << texts[i];
        }
    }
}

TEST_F(DriveComboTest, IndentsAreTheBitwiseAndsOfTheDriveCount) {
    // With three drives MyComputer is indented by 1 and the drives by 2,
    // with four by 0 and 0.
    Disk disk;
    std::vector<std::unique_ptr<ScopedDrive>> drives;
    for (int n = static_cast<int>(SystemDriveRoots().size()); n < 3; ++n) {
        disk.Folder("x" + std::to_string(n));
        drives.push_back(std::make_unique<ScopedDrive>(FreeDriveLetter(), disk.Path("x" + std::to_string(n)),
                                                       DRIVE_FIXED));
        if (!drives.back()->Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    }
    if (SystemDriveRoots().size() != 3) GTEST_SKIP() << "the prefix has more than three drives";
    harness.DropDown();
    std::vector<Look> looks = Looks();
    ASSERT_EQ(6u, looks.size());
    EXPECT_EQ(1, looks[1].indent);
    for (size_t i = 2; i < 5; ++i) EXPECT_EQ(2, looks[i].indent);

    disk.Folder("four");
    ScopedDrive fourth(FreeDriveLetter(), disk.Path("four"), DRIVE_FIXED);
    ASSERT_TRUE(fourth.Ok());
    harness.Dialog().ResetDriveCombo("");
    harness.DropDown();
    looks = Looks();
    ASSERT_EQ(7u, looks.size());
    for (size_t i = 1; i < 6; ++i) EXPECT_EQ(0, looks[i].indent) << i;
}

TEST_F(DriveComboTest, TheImageListIsTheStripOfEighteenPixelPictures) {
    harness.DropDown();
    const HIMAGELIST list = harness.Combo().GetImageList();
    ASSERT_NE(nullptr, list);
    EXPECT_EQ(reinterpret_cast<LRESULT>(list),
              ::SendMessageA(harness.Combo().Handle(), CBEM_GETIMAGELIST, 0, 0));
    // 163 pixels wide: nine images, the last one cut.
    EXPECT_EQ(9, ::ImageList_GetImageCount(list));
    int cx = 0, cy = 0;
    ASSERT_TRUE(::ImageList_GetIconSize(list, &cx, &cy));
    EXPECT_EQ(18, cx);
    EXPECT_EQ(18, cy);
}

TEST_F(DriveComboTest, ASingleEntryIsTheDriveOrTheProductEntry) {
    harness.Dialog().ResetDriveCombo("C:");
    EXPECT_EQ((Texts{"C:"}), harness.ComboTexts());
    EXPECT_EQ((std::vector<Look>{{ExpectedDriveImage("C:\\"), 1}}), Looks());
    EXPECT_EQ(0, harness.Combo().GetCurSel());

    harness.Dialog().ResetDriveCombo("");
    EXPECT_EQ((Texts{"Orrimond"}), harness.ComboTexts());
    EXPECT_EQ((std::vector<Look>{{1, 1}}), Looks());
    EXPECT_EQ(0, harness.Combo().GetCurSel());
}

TEST_F(DriveComboTest, ASingleEntryAfterTheListMovesTheDriveToTheTopAndSelectsTheProductEntry) {
    harness.DropDown();
    const Texts list = harness.ComboTexts();
    harness.Combo().SetSingleEntry("Z:");
    Texts expected = {"Z:"};
    expected.insert(expected.end(), list.begin(), list.end());
    EXPECT_EQ(expected, harness.ComboTexts()) << "nothing was selected, so nothing was deleted";
    EXPECT_EQ(harness.Combo().GetCount() - 1, harness.Combo().GetCurSel());
    EXPECT_EQ("Orrimond", harness.Combo().GetCurrentText());
    harness.sink.Clear();
    harness.Combo().OnSelChange();
    EXPECT_EQ((std::vector<std::string>{"Animals", "Blank", "Empty", "Gallery", "lower", "Names", "Others",
                                        "Patchy", "single.bmp", "TopContainer", "TopFolder", "TopPicture",
                                        "Twins", "Types"}),
              harness.Texts(TVI_ROOT))
        << "the tree that follows is the primary folder's";

    // With an entry selected, that entry is the one replaced.
    harness.Combo().SetSingleEntry("C:");
    Texts replaced = {"C:", "Z:"};
    replaced.insert(replaced.end(), list.begin(), list.end() - 1);
    EXPECT_EQ(replaced, harness.ComboTexts());
}

TEST_F(DriveComboTest, TheProductEntryStaysSelectedWhenTheListIsBuilt) {
    harness.Dialog().ResetDriveCombo("");
    harness.DropDown();
    EXPECT_EQ(ExpectedList(), harness.ComboTexts()) << "the single entry made way for the list";
    EXPECT_EQ(harness.Combo().GetCount() - 1, harness.Combo().GetCurSel());

    harness.Dialog().ResetDriveCombo("C:");
    EXPECT_FALSE(harness.Combo().populated);
    harness.DropDown();
    EXPECT_EQ(ExpectedList(), harness.ComboTexts());
    EXPECT_EQ(CB_ERR, harness.Combo().GetCurSel())
        << "a drive shown before the drop-down is not selected again";
}

TEST_F(DriveComboTest, ChoosingAnEntryRebuildsTheTreeAndTellsTheHostNothingIsSelected) {
    harness.DropDown();
    harness.Choose("Orrimond");
    harness.Select(harness.At({"Animals"}));
    ASSERT_GT(harness.Gallery().GetItemCount(), 0);
    const GraphicItemInfo shown = harness.Dialog().itemInfo;
    ASSERT_EQ(1, shown.valid);
    harness.sink.Clear();

    harness.Choose("Orrimond");
    EXPECT_TRUE(SameRecords({NothingSelected()}, harness.sink.Records()));
    EXPECT_EQ(0, std::memcmp(&shown, &harness.Dialog().itemInfo, sizeof shown))
        << "the combo's empty record is not kept as the last record";
    EXPECT_EQ(0, harness.Gallery().GetItemCount());
    EXPECT_EQ(0, harness.Gallery().GetCellSize().cx);
    EXPECT_EQ(0, harness.Gallery().GetCellSize().cy);
    SCROLLINFO bar = {};
    bar.cbSize = sizeof bar;
    bar.fMask = SIF_ALL;
    ::GetScrollInfo(harness.Gallery().Handle(), SB_VERT, &bar);
    EXPECT_EQ(0, bar.nMin);
    EXPECT_EQ(0, bar.nMax);
    EXPECT_EQ(0u, bar.nPage);
    EXPECT_EQ(0, bar.nPos);
    EXPECT_EQ(nullptr, harness.Tree().GetSelectedItem()) << "the old tree is gone";
    EXPECT_EQ(1, harness.Dialog().treeNotifyEnabled);
}

TEST_F(DriveComboTest, TheHostIsToldOnlyAfterTheOldTreeAndGalleryAreGone) {
    harness.DropDown();
    harness.Choose("Orrimond");
    harness.Select(harness.At({"Animals"}));
    ASSERT_EQ(5, harness.Gallery().GetItemCount());
    harness.sink.Clear();
    bool treeEmpty = false;
    int items = -1;
    SIZE cell = {-1, -1};
    int notifying = -1;
    harness.sink.onItemSel = [&](GraphicItemInfo&) {
        treeEmpty = harness.Tree().GetRootItem() == nullptr;
        items = harness.Gallery().GetItemCount();
        cell = harness.Gallery().GetCellSize();
        notifying = harness.Dialog().treeNotifyEnabled;
    };
    harness.Choose("Desktop");
    harness.sink.onItemSel = nullptr;
    EXPECT_TRUE(SameRecords({NothingSelected()}, harness.sink.Records()));
    EXPECT_TRUE(treeEmpty);
    EXPECT_EQ(0, items);
    EXPECT_EQ(0, cell.cx);
    EXPECT_EQ(0, cell.cy);
    EXPECT_EQ(1, notifying) << "the tree's notifications are back on before the host hears";
}

TEST_F(DriveComboTest, TheControlsOwnSelectionChangeReachesTheCombo) {
    harness.DropDown();
    const HWND inner =
        reinterpret_cast<HWND>(::SendMessageA(harness.Combo().Handle(), CBEM_GETCOMBOCONTROL, 0, 0));
    ASSERT_NE(nullptr, inner);
    harness.sink.Clear();
    ::SendMessageA(inner, WM_KEYDOWN, VK_HOME, 0);
    EXPECT_EQ("Desktop", harness.Combo().GetCurrentText());
    EXPECT_TRUE(SameRecords({NothingSelected()}, harness.sink.Records()));
}

TEST_F(DriveComboTest, ACdRomWithoutADiscAsksAndCancelLeavesTheTreeEmpty) {
    Disk disk;
    disk.File("cd\\Art\\a.jpg", JpegPicture(8, 8));
    ScopedDrive drive(FreeDriveLetter(), disk.Path("cd"), DRIVE_CDROM);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    drive.Eject();
    harness.DropDown();
    PromptAnswers answers({IDCANCEL});
    harness.sink.Clear();
    harness.Choose(drive.Text());
    ASSERT_EQ(1u, answers.texts.size());
    EXPECT_EQ(drive.Text() + "\\ is not accessible\n\nThe device is not ready", answers.texts[0]);
    EXPECT_EQ(0x35u, answers.styles[0]);
    EXPECT_TRUE(harness.Texts(TVI_ROOT).empty());
    EXPECT_EQ(drive.Text(), harness.Combo().GetCurrentText()) << "the combo stays on the unreadable entry";
    EXPECT_TRUE(SameRecords({NothingSelected()}, harness.sink.Records()));
}

TEST_F(DriveComboTest, ThePromptComesBackOnRetryUntilTheDiscIsIn) {
    Disk disk;
    disk.File("cd\\Art\\a.jpg", JpegPicture(8, 8));
    disk.File("cd\\photo.jpg", JpegPicture(8, 8));
    ScopedDrive drive(FreeDriveLetter(), disk.Path("cd"), DRIVE_CDROM);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    drive.Eject();
    harness.DropDown();
    PromptAnswers answers({IDRETRY, IDRETRY, IDRETRY}, [&drive](size_t question) {
        if (question == 2) drive.Insert();
    });
    harness.Choose(drive.Text());
    EXPECT_EQ(3u, answers.texts.size());
    EXPECT_EQ((Texts{"Art", "photo.jpg"}), harness.Texts(TVI_ROOT));
}

TEST_F(DriveComboTest, ARemovableDriveWithoutMediaAsksToo) {
    Disk disk;
    disk.Folder("stick");
    ScopedDrive drive(FreeDriveLetter(), disk.Path("stick"), DRIVE_REMOVABLE);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    drive.Eject();
    harness.DropDown();
    PromptAnswers answers({});
    harness.Choose(drive.Text());
    EXPECT_EQ((Texts{drive.Text() + "\\ is not accessible\n\nThe device is not ready"}), answers.texts);
}

TEST_F(DriveComboTest, AnUnreadableFixedDriveGivesAnEmptyTreeWithoutAsking) {
    Disk disk;
    disk.File("hd\\a.jpg", JpegPicture(8, 8));
    ScopedDrive drive(FreeDriveLetter(), disk.Path("hd"), DRIVE_FIXED);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    drive.Eject();
    harness.DropDown();
    PromptAnswers answers({});
    harness.Choose(drive.Text());
    EXPECT_TRUE(answers.texts.empty());
    EXPECT_TRUE(harness.Texts(TVI_ROOT).empty());
}

TEST_F(DriveComboTest, AReadableCdRomAsksNothing) {
    Disk disk;
    disk.File("cd\\photo.jpg", JpegPicture(8, 8));
    ScopedDrive drive(FreeDriveLetter(), disk.Path("cd"), DRIVE_CDROM);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    harness.DropDown();
    PromptAnswers answers({});
    harness.Choose(drive.Text());
    EXPECT_TRUE(answers.texts.empty());
    EXPECT_EQ((Texts{"photo.jpg"}), harness.Texts(TVI_ROOT));
}

TEST(DriveComboWithoutPrimaryFolder, TheProductEntryShowsNothing) {
    ScopedPrimaryFolder primary{std::nullopt};
    primary.RemoveKey();
    DialogHarness harness;
    ASSERT_TRUE(harness.Create());
    ASSERT_EQ("", harness.Dialog().primaryFolder);
    harness.DropDown();
    harness.Choose("Orrimond");
    EXPECT_TRUE(harness.Texts(TVI_ROOT).empty());
    EXPECT_TRUE(SameRecords({NothingSelected()}, harness.sink.Records()));
}

}  // namespace
}  // namespace browsertest
