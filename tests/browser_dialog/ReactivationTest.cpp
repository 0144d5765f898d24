// A host deactivates the control and activates it again (a hidden and shown
// form, a tab switch): every activation makes a new browser window, and the
// browser behaves in it as it did in the first one. What belonged to the old
// window (the drive list's state, the anchors, the tree, the gallery and its
// scroll bar) is made anew; what the host gave the control stays; nothing
// of the old windows is left behind in handles, windows or GDI objects.
#include <sstream>
#include <string>

#include "ArtLayout.h"
#include "EmbeddedControl.h"
#include "browser/GraphicDlg.h"
#include "control/LumbrelIds.h"
#include "framework/ole/ModuleLock.h"

namespace browsertest {
namespace {

// What one activation shows, as far as a round through it can see.
struct Round {
    std::vector<int> anchorIds;
    int entriesBeforeDropDown = -1;
    std::vector<std::string> entriesAfterDropDown;
    std::vector<std::string> treeTop;
    std::vector<GraphicItemInfo> records;
    int cells = -1;
    int selectedIndex = -2;
    SCROLLINFO scroll = {};
    SIZE galleryGrowth = {};
    BOOL largeChecked = FALSE;
    BOOL aspectChecked = TRUE;

    std::string Text() const {
        std::ostringstream out;
        out << "anchors";
        for (int id : anchorIds) out << " " << id;
        out << "; entries before drop-down " << entriesBeforeDropDown << ", after";
        for (const std::string& entry : entriesAfterDropDown) out << " [" << entry << "]";
        out << "; tree";
        for (const std::string& text : treeTop) out << " [" << text << "]";
        out << "; events";
        for (const GraphicItemInfo& record : records) out << " " << browsertest::Describe(record);
        out << "; cells " << cells << ", selected " << selectedIndex << "; bar " << scroll.nMin << ".."
            << scroll.nMax << " page " << scroll.nPage << " at " << scroll.nPos << "; growth "
            << galleryGrowth.cx << " x " << galleryGrowth.cy << "; large " << largeChecked << ", aspect "
            << aspectChecked;
        return out.str();
    }
};

SIZE WindowSize(HWND window) {
    RECT rect = {};
    ::GetWindowRect(window, &rect);
    return SIZE{rect.right - rect.left, rect.bottom - rect.top};
}

std::vector<std::string> ComboTexts(const browser::CDriveComboBox& combo) {
    std::vector<std::string> texts;
    for (int i = 0; i < combo.GetCount(); ++i) texts.push_back(combo.GetItemText(i));
    return texts;
}

std::vector<std::string> TreeTop(const browser::TreeControl& tree) {
    std::vector<std::string> texts;
    for (HTREEITEM item = tree.GetRootItem(); item != nullptr; item = tree.GetNextSiblingItem(item))
        texts.push_back(tree.GetItemText(item));
    return texts;
}

// Activates (but for the first round), browses as a user would, and looks.
Round Browse(EmbeddedControl& host) {
    Round round;
    browser::CGraphicDlg& dialog = host.Dialog();
    for (const foundation::ResizeAnchor& anchor : dialog.Anchors())
        round.anchorIds.push_back(anchor.controlId);
    round.largeChecked =
        static_cast<BOOL>(::SendMessageA(host.Item(control::kLargeThumbnailsRadio), BM_GETCHECK, 0, 0));
    round.aspectChecked =
        static_cast<BOOL>(::SendMessageA(host.Item(control::kAspectRatioBox), BM_GETCHECK, 0, 0));

    // The user chooses the product's folder in the drive list; its first
    // drop-down in this window builds the list.
    round.entriesBeforeDropDown = dialog.driveCombo.GetCount();
    const HWND combo = host.Item(IDC_DRIVE_COMBO);
    ::SendMessageA(combo, CB_SHOWDROPDOWN, TRUE, 0);
    ::SendMessageA(combo, CB_SHOWDROPDOWN, FALSE, 0);
    controltest::PumpMessages();
    round.entriesAfterDropDown = ComboTexts(dialog.driveCombo);
    const int product = static_cast<int>(round.entriesAfterDropDown.size()) - 1;
    dialog.driveCombo.SetCurSel(product);
    ::SendMessageA(dialog.Handle(), WM_COMMAND, MAKEWPARAM(IDC_DRIVE_COMBO, CBN_SELCHANGE),
                   reinterpret_cast<LPARAM>(combo));
    round.treeTop = TreeTop(dialog.tree);

    host.Events().clear();
    // The tree selects its first node when it first has the focus, so the
    // user goes through another node to it.
    host.ClickTreeItem(host.TreeItem("Blank"));
    host.ClickTreeItem(host.TreeItem("Animals"));
    if (dialog.gallery) {
        round.cells = dialog.gallery->GetItemCount();
        host.ClickGalleryCell(2);
        round.selectedIndex = dialog.gallery->SelectedIndex();
        round.scroll.cbSize = sizeof round.scroll;
        round.scroll.fMask = SIF_ALL;
        ::GetScrollInfo(dialog.gallery->Handle(), SB_VERT, &round.scroll);
    }
    round.records = host.Records();

    const HWND gallery = host.Item(control::kGalleryId);
    const SIZE before = WindowSize(gallery);
    host.Grow(40, 30);
    const SIZE after = WindowSize(gallery);
    round.galleryGrowth = SIZE{after.cx - before.cx, after.cy - before.cy};
    host.Grow(0, 0);
    return round;
}

class ReactivationTest : public ::testing::Test {
protected:
    ArtLayout& layout = SharedLayout();
    ScopedPrimaryFolder primary{layout.Primary()};
};

TEST_F(ReactivationTest, TenRoundsBrowseAsTheFirstAndLeaveNothingBehind) {
    const ResourceCounts start = CountResources();
    std::vector<Round> rounds;
    std::vector<ResourceCounts> counts;
    {
        EmbeddedControl host;
        ASSERT_TRUE(host.Ok());
        // What the host gave the control before the rounds stays with it.
        host.Control()->DoubleClickFlag(TRUE);
        for (int round = 0; round < 10; ++round) {
            if (round > 0) {
                ASSERT_EQ(S_OK, host.Activate()) << "round " << round;
            }
            ASSERT_NE(nullptr, host.Control()->BrowserWindow()) << "round " << round;
            rounds.push_back(Browse(host));
            ASSERT_EQ(S_OK, host.Deactivate()) << "round " << round;
            EXPECT_EQ(nullptr, host.Control()->BrowserWindow());
            EXPECT_EQ(1, host.Dialog().doubleClickFlag);
            counts.push_back(CountResources());
        }
    }
    EXPECT_EQ(0, framework::ole::ObjectCount());

    const Round& first = rounds.front();
    // The first round is what a host has always seen.
    EXPECT_EQ((std::vector<int>{IDC_DRIVE_COMBO, IDC_FOLDER_TREE, IDC_PRESERVE_ASPECT, IDC_LARGE_THUMBNAILS,
                                IDC_SMALL_THUMBNAILS, IDC_GALLERY_PLACEHOLDER, IDC_GALLERY}),
              first.anchorIds);
    EXPECT_EQ(0, first.entriesBeforeDropDown);
    ASSERT_GE(first.entriesAfterDropDown.size(), 3u) << first.Text();
    EXPECT_EQ("Desktop", first.entriesAfterDropDown.front());
    EXPECT_EQ("Orrimond", first.entriesAfterDropDown.back());
    EXPECT_EQ(5, first.cells);
    EXPECT_EQ(2, first.selectedIndex);
    const std::string animals = layout.Path("Animals.QLT");
    const std::string blank = layout.Path("Blank.QLT");
    EXPECT_TRUE(SameRecords({NothingSelected(), Record(1, 1, blank), NothingSelected(), Record(1, 1, animals),
                             Record(1, 3, animals)},
                            first.records));
    EXPECT_EQ(40, first.galleryGrowth.cx);
    EXPECT_EQ(30, first.galleryGrowth.cy);
    EXPECT_TRUE(first.largeChecked);
    EXPECT_FALSE(first.aspectChecked);

    for (size_t round = 1; round < rounds.size(); ++round)
        EXPECT_EQ(first.Text(), rounds[round].Text()) << "round " << round;

    // The first round may make what the process keeps from then on (shared
    // fonts, the system's image list, class registrations); after it nothing grows.
    for (size_t round = 2; round < counts.size(); ++round) {
        EXPECT_LE(counts[round].handles, counts[1].handles)
            << "round " << round << ": " << Describe(counts[round]);
        EXPECT_LE(counts[round].userObjects, counts[1].userObjects)
            << "round " << round << ": " << Describe(counts[round]);
        EXPECT_LE(counts[round].gdiObjects, counts[1].gdiObjects)
            << "round " << round << ": " << Describe(counts[round]);
    }
    std::printf("resources: at start %s; after round 1 %s; after round 10 %s\n", Describe(start).c_str(),
                Describe(counts[1]).c_str(), Describe(counts.back()).c_str());
}

TEST_F(ReactivationTest, TheHostsPathIsNavigatedToInEachNewWindowAsInTheFirst) {
    const std::string path = layout.Path("lower\\cats");
    // Navigation leaves the stored path with ".QLT" behind it: that is what
    // each later window starts from.
    const std::string stored = path + ".QLT";
    std::vector<GraphicItemInfo> first;
    std::string firstSelected;
    {
        EmbeddedControl fresh(false);
        ASSERT_TRUE(fresh.Ok());
        ASSERT_EQ(S_OK, fresh.SetItemPath(stored, 1));
        ASSERT_TRUE(fresh.Embed());
        first = fresh.Records();
        firstSelected = fresh.Dialog().tree.GetItemText(fresh.Dialog().tree.GetSelectedItem());
    }
    ASSERT_FALSE(first.empty());
    EXPECT_TRUE(SameRecords({Record(1, 1, stored)}, {first.back()})) << "the host hears of its path last";

    EmbeddedControl host;
    ASSERT_TRUE(host.Ok());
    ASSERT_EQ(S_OK, host.SetItemPath(path, 1));
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(S_OK, host.Deactivate());
        host.Events().clear();
        ASSERT_EQ(S_OK, host.Activate());
        EXPECT_TRUE(SameRecords(first, host.Records())) << "round " << round;
        EXPECT_EQ(firstSelected, host.Dialog().tree.GetItemText(host.Dialog().tree.GetSelectedItem()));
        EXPECT_EQ(7u, host.Dialog().Anchors().size());
    }
}

// A new window hears its tree as the first did, also when nothing goes
// through the drive list first: the start fills the tree from the primary
// folder directly, and the window that went had stopped listening to its
// tree on its way out. (With no entry chosen in the drive list the path of
// a node names nothing, so each click tells the host only that nothing is
// selected: it is heard all the same.)
TEST_F(ReactivationTest, ANewWindowHearsItsTreeWithoutTheDriveList) {
    EmbeddedControl host;
    ASSERT_TRUE(host.Ok());
    std::vector<GraphicItemInfo> first;
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE("activation " + std::to_string(round + 1));
        if (round > 0) {
            ASSERT_EQ(S_OK, host.Deactivate());
            ASSERT_EQ(S_OK, host.Activate());
        }
        host.Events().clear();
        host.ClickTreeItem(host.TreeItem("Blank"));
        host.ClickTreeItem(host.TreeItem("Animals"));
        if (round == 0) {
            first = host.Records();
            ASSERT_EQ(2u, first.size()) << "each click is heard";
        }
        EXPECT_TRUE(SameRecords(first, host.Records()));
    }
}

}  // namespace
}  // namespace browsertest
