// The dialog itself: template 202 as its table gives it, the strings and the
// image strip, the fields a new dialog starts with, start-up (system image
// list, gallery over control 212, anchors, radio 1087, the primary folder),
// the layout after resizes, and teardown.
#include <windows.h>

#include <shellapi.h>

#include <cstring>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "framework/win32/GdiHandles.h"
#include "thumbnails/BitmapKernel.h"
#include "thumbnails/ThumbnailLibrary.h"

namespace browsertest {
namespace {

// ---- The template ----------------------------------------------------------------

struct TemplateControl {
    int id;
    std::string className;  // upper case; atoms as their class names
    DWORD style;
    int x, y, cx, cy;
    std::string text;
};

struct DialogTemplate {
    DWORD style = 0;
    int cx = 0, cy = 0;
    int pointSize = 0;
    std::string face;
    std::vector<TemplateControl> controls;
};

std::string UpperAscii(const std::wstring& text) {
    std::string out;
    for (wchar_t c : text) out.push_back(static_cast<char>(c >= L'a' && c <= L'z' ? c - 32 : c));
    return out;
}

// Reads a name or ordinal of a template: 0xFFFF and a number, or a string.
const WORD* ReadNameOrOrdinal(const WORD* at, std::wstring* text, int* ordinal) {
    if (*at == 0xFFFF) {
        *ordinal = at[1];
        return at + 2;
    }
    *ordinal = -1;
    while (*at != 0) text->push_back(static_cast<wchar_t>(*at++));
    return at + 1;
}

DialogTemplate ParseTemplate(HMODULE module, int id) {
    DialogTemplate result;
    const HRSRC found = ::FindResourceA(module, MAKEINTRESOURCEA(id), MAKEINTRESOURCEA(5));
    if (found == nullptr) return result;
    const auto* bytes = static_cast<const BYTE*>(::LockResource(::LoadResource(module, found)));
    DLGTEMPLATE header;
    std::memcpy(&header, bytes, sizeof header);
    result.style = header.style;
    result.cx = header.cx;
    result.cy = header.cy;
    const WORD* at = reinterpret_cast<const WORD*>(bytes + 18);
    std::wstring ignored;
    int ordinal = 0;
    at = ReadNameOrOrdinal(at, &ignored, &ordinal);  // menu
    ignored.clear();
    at = ReadNameOrOrdinal(at, &ignored, &ordinal);  // class
    ignored.clear();
    at = ReadNameOrOrdinal(at, &ignored, &ordinal);  // title
    result.pointSize = *at++;
    std::wstring face;
    at = ReadNameOrOrdinal(at, &face, &ordinal);
    result.face = UpperAscii(face);
    for (int i = 0; i < header.cdit; ++i) {
        const auto offset = reinterpret_cast<const BYTE*>(at) - bytes;
        at = reinterpret_cast<const WORD*>(bytes + ((offset + 3) & ~3));
        DLGITEMTEMPLATE item;
        std::memcpy(&item, at, sizeof item);
        at = reinterpret_cast<const WORD*>(reinterpret_cast<const BYTE*>(at) + 18);
        TemplateControl control;
        control.id = static_cast<short>(item.id);
        control.style = item.style;
        control.x = item.x;
        control.y = item.y;
        control.cx = item.cx;
        control.cy = item.cy;
        std::wstring className, text;
        at = ReadNameOrOrdinal(at, &className, &ordinal);
        if (ordinal == 0x80) className = L"BUTTON";
        if (ordinal == 0x82) className = L"STATIC";
        control.className = UpperAscii(className);
        at = ReadNameOrOrdinal(at, &text, &ordinal);
        for (wchar_t c : text) control.text.push_back(static_cast<char>(c));
        const WORD extra = *at++;
        at = reinterpret_cast<const WORD*>(reinterpret_cast<const BYTE*>(at) + extra);
        result.controls.push_back(control);
    }
    return result;
}

TEST(BrowserResources, TheTemplateIsExactlyTheTable) {
    const DialogTemplate dialog = ParseTemplate(::GetModuleHandleA(nullptr), 202);
    EXPECT_EQ(0x50000040u, dialog.style) << "WS_CHILD, WS_VISIBLE, DS_SETFONT";
    EXPECT_EQ(364, dialog.cx);
    EXPECT_EQ(226, dialog.cy);
    EXPECT_EQ(8, dialog.pointSize);
    EXPECT_EQ("MS SANS SERIF", dialog.face);
    const std::vector<TemplateControl> expected = {
        {1044, "SYSTREEVIEW32", 0x50810807, 10, 29, 131, 161, "Tree1"},
        {217, "COMBOBOXEX32", 0x50210103, 10, 14, 131, 73, ""},
        {-1, "STATIC", 0x50020000, 9, 3, 45, 8, "Browse from :"},
        {212, "STATIC", 0x50000006, 162, 4, 197, 218, ""},
        {1087, "BUTTON", 0x50020009, 10, 209, 70, 11, "Large Thumbnails "},
        {1088, "BUTTON", 0x50000009, 86, 209, 70, 11, "Small Thumbnails"},
        {1092, "BUTTON", 0x50010103, 11, 195, 87, 10, "Preserve Aspect Ratio"},
        {1093, "BUTTON", 0x40012103, 103, 195, 49, 10, "AutoPlace"},
    };
    ASSERT_EQ(expected.size(), dialog.controls.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(expected[i].id);
        const TemplateControl& actual = dialog.controls[i];
        EXPECT_EQ(expected[i].id, actual.id) << "tab order";
        EXPECT_EQ(expected[i].className, actual.className);
        EXPECT_EQ(expected[i].style, actual.style);
        EXPECT_EQ(expected[i].x, actual.x);
        EXPECT_EQ(expected[i].y, actual.y);
        EXPECT_EQ(expected[i].cx, actual.cx);
        EXPECT_EQ(expected[i].cy, actual.cy);
        EXPECT_EQ(expected[i].text, actual.text);
    }
}

TEST(BrowserResources, TheStringsNameTheViewsAndTheRegistryValue) {
    const std::pair<UINT, const char*> strings[] = {
        {204, "MyComputer"},
        {205, "Desktop"},
        {207, "LocalHar"},
        {208, "Orrimond"},
        {209, "SOFTWARE\\Tessaly\\Orrimond\\1.0\\Directories"},
        {210, "Primary Graphics Folder"},
    };
    for (const auto& [id, text] : strings) {
        char loaded[256] = {};
        EXPECT_GT(::LoadStringA(::GetModuleHandleA(nullptr), id, loaded, sizeof loaded), 0) << id;
        EXPECT_STREQ(text, loaded) << id;
    }
}

TEST(BrowserResources, TheImageStripHasEightPicturesAndTransparentSlots) {
    const framework::win32::UniqueBitmap strip(
        ::LoadBitmapA(::GetModuleHandleA(nullptr), MAKEINTRESOURCEA(134)));
    ASSERT_TRUE(strip);
    BITMAP info = {};
    ASSERT_EQ(static_cast<int>(sizeof info), ::GetObjectA(strip.Get(), sizeof info, &info));
    EXPECT_EQ(163, info.bmWidth);
    EXPECT_EQ(18, info.bmHeight);
    const framework::win32::UniqueDc dc(::CreateCompatibleDC(nullptr));
    const framework::win32::SelectionGuard selected(dc.Get(), strip.Get());
    const auto whitePixels = [&](int image) {
        int white = 0;
        for (int y = 0; y < 18; ++y)
            for (int x = 0; x < 18 && image * 18 + x < 163; ++x)
                if (::GetPixel(dc.Get(), image * 18 + x, y) == RGB(255, 255, 255)) ++white;
        return white;
    };
    EXPECT_EQ(18 * 18, whitePixels(2)) << "the unused slot is all mask";
    EXPECT_EQ(18 * 18, whitePixels(8)) << "so is the ninth, cut one";
    for (int image : {0, 1, 3, 4, 5, 6, 7}) EXPECT_LT(whitePixels(image), 18 * 18 - 20) << image;
    // Each drawn picture is a picture of its own: no two slots are alike.
    const auto slot = [&](int image) {
        std::vector<COLORREF> pixels;
        for (int y = 0; y < 18; ++y)
            for (int x = 0; x < 18; ++x) pixels.push_back(::GetPixel(dc.Get(), image * 18 + x, y));
        return pixels;
    };
    const int drawn[] = {0, 1, 3, 4, 5, 6, 7};
    for (size_t i = 0; i < std::size(drawn); ++i)
        for (size_t j = i + 1; j < std::size(drawn); ++j)
            EXPECT_NE(slot(drawn[i]), slot(drawn[j])) << drawn[i] << " and " << drawn[j];
}

// ---- A new dialog -------------------------------------------------------------------

TEST(BrowserDialogFields, ANewDialogStartsWithTheDefaults) {
    browser::CGraphicDlg dialog;
    EXPECT_EQ(202u, dialog.TemplateId());
    EXPECT_EQ(1, dialog.treeNotifyEnabled);
    EXPECT_EQ(1, dialog.largeThumbnails);
    EXPECT_EQ(0, dialog.doubleClickFlag);
    EXPECT_EQ(1, dialog.reservedOne);
    EXPECT_EQ(-1, dialog.lastPosition);
    EXPECT_EQ(6, dialog.reservedSix);
    EXPECT_EQ("", dialog.itemPath);
    EXPECT_EQ("", dialog.primaryFolder);
    EXPECT_EQ(nullptr, dialog.systemImageList);
    EXPECT_EQ("", dialog.currentPath);
    EXPECT_EQ(nullptr, dialog.currentTreeItem);
    EXPECT_EQ(nullptr, dialog.parentWindow);
    EXPECT_EQ(0, dialog.folderIconIndex);
    EXPECT_EQ(nullptr, dialog.gallery);
    EXPECT_TRUE(SameRecords({NothingSelected()}, {dialog.itemInfo}));
    EXPECT_EQ(nullptr, dialog.BrowserWindow());

    // The host's fields are kept before the window exists.
    dialog.SetItemPath("C:\\art\\cats", 3);
    dialog.SetDoubleClickFlag(TRUE);
    dialog.SetLargeThumbnails(FALSE);
    EXPECT_EQ("C:\\art\\cats", dialog.itemPath);
    EXPECT_EQ(3, dialog.initialPosition);
    EXPECT_EQ(1, dialog.doubleClickFlag);
    EXPECT_EQ(0, dialog.largeThumbnails);
    // And what needs the window does nothing without it.
    dialog.ResetDriveCombo("C:");
    dialog.NavigateToPath("C:\\art\\cats", 3);
    dialog.RedrawThumbnails();
    dialog.OnGalleryCommand();
    EXPECT_FALSE(dialog.driveCombo.populated);
    EXPECT_EQ(-1, dialog.lastPosition);
}

// ---- Start-up -------------------------------------------------------------------------

class DialogSetupTest : public ::testing::Test {
protected:
    ArtLayout& layout = SharedLayout();
};

TEST_F(DialogSetupTest, WithoutTheRegistryKeyTheTreeIsEmptyAndLargeIsChecked) {
    ScopedPrimaryFolder primary{std::nullopt};
    primary.RemoveKey();
    DialogHarness harness;
    ASSERT_TRUE(harness.Create());
    EXPECT_EQ(nullptr, harness.Tree().GetRootItem());
    EXPECT_EQ("", harness.Dialog().primaryFolder);
    EXPECT_EQ(BST_CHECKED, ::SendMessageA(harness.Item(IDC_LARGE_THUMBNAILS), BM_GETCHECK, 0, 0));
    EXPECT_EQ(BST_UNCHECKED, ::SendMessageA(harness.Item(IDC_SMALL_THUMBNAILS), BM_GETCHECK, 0, 0));
    EXPECT_NE(nullptr, harness.Dialog().gallery) << "the rest of the start-up has run";
}

TEST_F(DialogSetupTest, WithTheKeyButNoValueThePrimaryFolderIsTheValuesName) {
    ScopedPrimaryFolder primary{"placeholder"};
    primary.Set(std::nullopt);
    DialogHarness harness;
    ASSERT_TRUE(harness.Create());
    EXPECT_EQ(nullptr, harness.Tree().GetRootItem());
    EXPECT_EQ("Primary Graphics Folder", harness.Dialog().primaryFolder);
}

TEST_F(DialogSetupTest, APrimaryFolderValueIsReadIntoTwoHundredAndFiftySixBytes) {
    // 255 characters and the terminator fill the room exactly.
    const std::string fits = "C:\\" + std::string(252, 'f');
    ScopedPrimaryFolder primary{fits};
    {
        DialogHarness harness;
        ASSERT_TRUE(harness.Create());
        EXPECT_EQ(fits, harness.Dialog().primaryFolder);
        EXPECT_EQ(nullptr, harness.Tree().GetRootItem());
    }
    // One more does not fit: the value counts as missing, here and when navigating.
    primary.Set(fits + "g");
    DialogHarness harness;
    ASSERT_TRUE(harness.Create());
    EXPECT_EQ("Primary Graphics Folder", harness.Dialog().primaryFolder);
    EXPECT_EQ(nullptr, harness.Tree().GetRootItem());
    harness.Dialog().NavigateToPath(layout.Path("Animals"), 1);
    EXPECT_TRUE(harness.sink.events.empty());
    EXPECT_EQ(-1, harness.Dialog().lastPosition);
    EXPECT_EQ(0, harness.Combo().GetCount());
}

TEST_F(DialogSetupTest, TheStartFillsTheTreeFromThePrimaryFolderAndLeavesTheComboBlank) {
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
    ASSERT_TRUE(harness.Create());
    EXPECT_EQ(layout.Primary(), harness.Dialog().primaryFolder);
    EXPECT_EQ(14u, harness.Texts(TVI_ROOT).size());
    EXPECT_EQ(0, harness.Combo().GetCount());
    EXPECT_EQ(harness.host.Handle(), harness.Dialog().parentWindow);
    EXPECT_EQ(0, harness.Gallery().GetItemCount());
}

TEST_F(DialogSetupTest, ASizeChosenBeforeTheWindowExistsIsNotHonoured) {
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
    harness.Dialog().SetLargeThumbnails(FALSE);
    ASSERT_TRUE(harness.Create());
    EXPECT_EQ(BST_CHECKED, ::SendMessageA(harness.Item(IDC_LARGE_THUMBNAILS), BM_GETCHECK, 0, 0));
    EXPECT_EQ(BST_UNCHECKED, ::SendMessageA(harness.Item(IDC_SMALL_THUMBNAILS), BM_GETCHECK, 0, 0));
}

TEST_F(DialogSetupTest, TheTreeShowsTheSystemsSmallIcons) {
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
    ASSERT_TRUE(harness.Create());
    SHFILEINFOA root = {};
    const auto system = reinterpret_cast<HIMAGELIST>(
        ::SHGetFileInfoA("c:\\", 0, &root, sizeof root, SHGFI_SYSICONINDEX | SHGFI_SMALLICON));
    ASSERT_NE(nullptr, system);
    EXPECT_EQ(reinterpret_cast<LRESULT>(system),
              ::SendMessageA(harness.Tree().Handle(), TVM_GETIMAGELIST, TVSIL_NORMAL, 0));
    ASSERT_NE(nullptr, harness.Dialog().systemImageList);
    EXPECT_EQ(system, harness.Dialog().systemImageList->Get());
    char windows[MAX_PATH] = {};
    ::GetWindowsDirectoryA(windows, MAX_PATH);
    SHFILEINFOA folder = {};
    ::SHGetFileInfoA(windows, 0, &folder, sizeof folder, SHGFI_SYSICONINDEX | SHGFI_SMALLICON);
    EXPECT_EQ(folder.iIcon, harness.Dialog().folderIconIndex);
    // A picture's icon must not look like a folder.
    SHFILEINFOA picture = {};
    ::SHGetFileInfoA(layout.Path("single.bmp").c_str(), 0, &picture, sizeof picture,
                     SHGFI_SYSICONINDEX | SHGFI_SMALLICON);
    EXPECT_NE(folder.iIcon, picture.iIcon);
}

TEST_F(DialogSetupTest, TheGalleryLiesOverItsPlaceholder) {
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
    ASSERT_TRUE(harness.Create());
    const HWND gallery = harness.Gallery().Handle();
    ASSERT_NE(nullptr, gallery);
    EXPECT_EQ(gallery, harness.Item(IDC_GALLERY));
    EXPECT_EQ(harness.Dialog().Handle(), ::GetParent(gallery));
    EXPECT_TRUE(::IsWindowVisible(gallery));
    const RECT placeholder = harness.ChildRect(harness.Item(IDC_GALLERY_PLACEHOLDER));
    const RECT rect = harness.ChildRect(gallery);
    EXPECT_TRUE(::EqualRect(&placeholder, &rect));
    EXPECT_EQ(3, harness.Gallery().GetOwnerLink().OwnerKind());
    EXPECT_EQ(145, harness.Gallery().GetCellSize().cx);
    EXPECT_EQ(179, harness.Gallery().GetCellSize().cy);
}

TEST_F(DialogSetupTest, TheControlsStandWhereTheTemplatePutsThem) {
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
    ASSERT_TRUE(harness.Create());
    const HWND dialog = harness.Dialog().Handle();
    // The dialog manager converts the position and the size each on its own.
    const auto inPixels = [dialog](int x, int y, int cx, int cy) {
        RECT position = {x, y, x, y};
        RECT size = {0, 0, cx, cy};
        ::MapDialogRect(dialog, &position);
        ::MapDialogRect(dialog, &size);
        return RECT{position.left, position.top, position.left + size.right, position.top + size.bottom};
    };
    const struct {
        int id;
        RECT units;
    } places[] = {
        {IDC_FOLDER_TREE, {10, 29, 131, 161}},     {IDC_GALLERY_PLACEHOLDER, {162, 4, 197, 218}},
        {IDC_LARGE_THUMBNAILS, {10, 209, 70, 11}}, {IDC_SMALL_THUMBNAILS, {86, 209, 70, 11}},
        {IDC_PRESERVE_ASPECT, {11, 195, 87, 10}},  {IDC_AUTO_PLACE, {103, 195, 49, 10}},
    };
    for (const auto& place : places) {
        const RECT expected =
            inPixels(place.units.left, place.units.top, place.units.right, place.units.bottom);
        const RECT actual = harness.ChildRect(harness.Item(place.id));
        EXPECT_TRUE(::EqualRect(&expected, &actual))
            << place.id << ": expected " << expected.left << "," << expected.top << "," << expected.right
            << "," << expected.bottom << " actual " << actual.left << "," << actual.top << "," << actual.right
            << "," << actual.bottom;
    }
    // The combo's own height is the control's business; its place is not.
    const RECT combo = harness.ChildRect(harness.Item(IDC_DRIVE_COMBO));
    const RECT comboUnits = inPixels(10, 14, 131, 73);
    EXPECT_EQ(comboUnits.left, combo.left);
    EXPECT_EQ(comboUnits.top, combo.top);
    EXPECT_EQ(comboUnits.right, combo.right);
    EXPECT_FALSE(::IsWindowVisible(harness.Item(IDC_AUTO_PLACE))) << "AutoPlace is hidden";
    char text[64] = {};
    ::GetWindowTextA(harness.Item(IDC_LARGE_THUMBNAILS), text, sizeof text);
    EXPECT_STREQ("Large Thumbnails ", text);
}

TEST_F(DialogSetupTest, ResizingMovesAndStretchesByTheAnchors) {
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
    ASSERT_TRUE(harness.Create());
    const int ids[] = {IDC_DRIVE_COMBO,      IDC_FOLDER_TREE,      IDC_PRESERVE_ASPECT,
                       IDC_LARGE_THUMBNAILS, IDC_SMALL_THUMBNAILS, IDC_GALLERY_PLACEHOLDER,
                       IDC_GALLERY};
    std::vector<RECT> before;
    for (int id : ids) before.push_back(harness.ChildRect(harness.Item(id)));
    for (const auto& [dx, dy] : {std::pair<int, int>{120, 80}, std::pair<int, int>{-50, -30}}) {
        SCOPED_TRACE(std::to_string(dx) + " x " + std::to_string(dy));
        harness.ResizeBy(dx, dy);
        for (size_t i = 0; i < std::size(ids); ++i) {
            const RECT now = harness.ChildRect(harness.Item(ids[i]));
            RECT expected = before[i];
            switch (ids[i]) {
                case IDC_DRIVE_COMBO: break;
                case IDC_FOLDER_TREE: expected.bottom += dy; break;
                case IDC_PRESERVE_ASPECT:
                case IDC_LARGE_THUMBNAILS:
                case IDC_SMALL_THUMBNAILS: ::OffsetRect(&expected, 0, dy); break;
                default:
                    expected.right += dx;
                    expected.bottom += dy;
                    break;
            }
            EXPECT_TRUE(::EqualRect(&expected, &now)) << ids[i];
            before[i] = now;
        }
    }
    const auto& anchors = harness.Dialog().Anchors();
    ASSERT_EQ(7u, anchors.size());
    // Stay 0, stretch 1, move 2, per axis.
    const int modes[7][2] = {{0, 0}, {0, 1}, {0, 2}, {0, 2}, {0, 2}, {1, 1}, {1, 1}};
    for (size_t i = 0; i < anchors.size(); ++i) {
        EXPECT_EQ(ids[i], anchors[i].controlId) << "anchors in their order";
        EXPECT_EQ(modes[i][0], anchors[i].horizontalMode) << ids[i];
        EXPECT_EQ(modes[i][1], anchors[i].verticalMode) << ids[i];
        EXPECT_TRUE(anchors[i].clipOnErase) << ids[i];
    }
}

TEST_F(DialogSetupTest, TheHostMayShrinkTheDialogBelowItsFirstSize) {
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
    ASSERT_TRUE(harness.Create());
    const RECT tree = harness.Dialog().Anchors()[1].rect;
    const RECT gallery = harness.Dialog().Anchors()[6].rect;
    const RECT large = harness.Dialog().Anchors()[3].rect;
    const int dx = -(gallery.right - gallery.left) - 30;
    const int dy = -(tree.bottom - tree.top) - 40;
    harness.ResizeBy(dx, dy);
    RECT window = {};
    ::GetWindowRect(harness.Dialog().Handle(), &window);
    EXPECT_TRUE(::EqualRect(&window, &harness.Dialog().LastRect()));
    // The children go on following the change, into negative sizes.
    const auto& anchors = harness.Dialog().Anchors();
    EXPECT_EQ(tree.bottom + dy, anchors[1].rect.bottom);
    EXPECT_LT(anchors[1].rect.bottom, anchors[1].rect.top);
    EXPECT_EQ(gallery.right + dx, anchors[6].rect.right);
    EXPECT_LT(anchors[6].rect.right, anchors[6].rect.left);
    EXPECT_EQ(large.top + dy, anchors[3].rect.top);
    EXPECT_EQ(large.left, anchors[3].rect.left);
    // And back: every child stands where it stood.
    harness.ResizeBy(-dx, -dy);
    for (size_t i = 0; i < anchors.size(); ++i) {
        const RECT now = harness.ChildRect(harness.Item(anchors[i].controlId));
        EXPECT_TRUE(::EqualRect(&anchors[i].rect, &now)) << anchors[i].controlId;
    }
    EXPECT_TRUE(::EqualRect(&tree, &anchors[1].rect));
    EXPECT_TRUE(::EqualRect(&gallery, &anchors[6].rect));
}

// A cell that notes, when the gallery deletes it, what of the dialog was
// still there: how many items its thumbnail library held, whether it still
// held the system's image list, and whether its window and the tree's lived.
struct TeardownState {
    int libraryItems = -1;
    bool imageListHeld = true;
    bool dialogWindowAlive = false;
    bool treeWindowAlive = false;
};

class TeardownProbe final : public gallery::CTPGalleryItem {
public:
    TeardownProbe(browser::CGraphicDlg* dialog, HWND dialogWindow, HWND treeWindow, TeardownState* seen)
        : dialog_(dialog), dialogWindow_(dialogWindow), treeWindow_(treeWindow), seen_(seen) {}
    ~TeardownProbe() override {
        seen_->libraryItems = static_cast<int>(dialog_->ThumbnailLibrary().GetItemCount());
        seen_->imageListHeld = dialog_->systemImageList != nullptr;
        seen_->dialogWindowAlive = ::IsWindow(dialogWindow_) != FALSE;
        seen_->treeWindowAlive = ::IsWindow(treeWindow_) != FALSE;
    }
    int GetWidth(BOOL) const override { return 10; }
    int GetHeight(BOOL) const override { return 10; }
    void Draw(HDC, const RECT*, DWORD, BOOL) override {}

private:
    browser::CGraphicDlg* dialog_;
    HWND dialogWindow_;
    HWND treeWindow_;
    TeardownState* seen_;
};

TEST_F(DialogSetupTest, TeardownGoesImageListLibraryGalleryThenTheWindows) {
    ScopedPrimaryFolder primary{layout.Primary()};
    const size_t live = imaging::kernel::LiveStorageCount();
    HIMAGELIST system = nullptr;
    HWND dialogWindow = nullptr;
    TeardownState seen;
    {
        DialogHarness harness;
        ASSERT_TRUE(harness.CreateInProductView());
        harness.Select(harness.At({"Animals"}));
        ASSERT_EQ(5, harness.Gallery().GetItemCount());
        EXPECT_EQ(live + 5, imaging::kernel::LiveStorageCount());
        system = harness.Dialog().systemImageList->Get();
        dialogWindow = harness.Dialog().Handle();
        harness.Gallery().AddItem(
            std::make_unique<TeardownProbe>(&harness.Dialog(), dialogWindow, harness.Tree().Handle(), &seen),
            FALSE);
        ASSERT_EQ(5, harness.Dialog().ThumbnailLibrary().GetItemCount());
    }
    EXPECT_FALSE(seen.imageListHeld) << "the image list was let go of before the gallery's cells went";
    EXPECT_EQ(0, seen.libraryItems) << "the library was emptied before the gallery's cells went";
    EXPECT_TRUE(seen.dialogWindowAlive) << "the dialog's window goes after the gallery";
    EXPECT_TRUE(seen.treeWindowAlive) << "the tree's window goes after the gallery";
    EXPECT_FALSE(::IsWindow(dialogWindow));
    EXPECT_EQ(live, imaging::kernel::LiveStorageCount()) << "every thumbnail's pixels were given back";
    EXPECT_GT(::ImageList_GetImageCount(system), 0) << "the shell's list is not destroyed";
}

}  // namespace
}  // namespace browsertest
