// The drive list under "Browse from :" (control 217 of the browser dialog):
// it chooses the view of the tree. It fills itself lazily: until the user
// first opens it, it holds one entry; its first drop-down replaces that by
// the full list (Desktop, MyComputer, the drives, the product's own folder).
// Choosing an entry rebuilds the tree from nothing. It reaches the dialog
// through its parent window.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <string>

#include "framework/win32/UniqueHandle.h"
#include "framework/win32/Window.h"

namespace browser {

class CGraphicDlg;

namespace detail {
struct ImageListTraits {
    using Handle = HIMAGELIST;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle handle) { ::ImageList_Destroy(handle); }
};
}  // namespace detail
using UniqueImageList = framework::win32::UniqueHandle<detail::ImageListTraits>;

// The entry images of bitmap 134, by position in the strip.
enum DriveImage : int {
    kDesktopImage = 0,
    kProductImage = 1,
    kMyComputerImage = 3,
    kFixedDriveImage = 4,
    kRemovableDriveImage = 5,
    kCdRomDriveImage = 6,
    kRemoteDriveImage = 7,
};

// The image of a drive of GetDriveType's `driveType`; a type without an
// image of its own is shown as a fixed drive.
int ImageForDriveType(UINT driveType);

class CDriveComboBox : public framework::win32::Window {
public:
    // The strip's pictures are this wide and high; white is transparent.
    static constexpr int kImageSize = 18;
    static constexpr COLORREF kImageMask = RGB(255, 255, 255);
    // Every entry is inserted with text, image, selected image, overlay and indent.
    static constexpr UINT kEntryMask = 0x1F;
    // The room the drive roots are read into.
    static constexpr DWORD kDriveStringsBuffer = 128;

    CDriveComboBox() = default;
    ~CDriveComboBox() override;

    // Replaces the selected entry by one entry and selects the last entry.
    // An empty `text` stands for the product entry.
    void SetSingleEntry(const std::string& text);
    // The first drop-down: builds the full list, with the dialog's window
    // updates locked.
    void OnDropDown();
    // The full list, once: Desktop, MyComputer, the drives in ascending
    // order, the product entry.
    void FillDriveList();
    // Rebuilds the tree for the selected entry; tells the host that nothing
    // is selected.
    void OnSelChange();
    // The top level of the primary folder in the tree, the combo untouched.
    void FillTreeFromPrimaryFolder();

    int GetCount() const;
    int GetCurSel() const;
    void SetCurSel(int index) const;
    // The text of entry `index`; the empty text when there is none.
    std::string GetItemText(int index) const;
    // The text of the selected entry; the empty text when none is selected.
    std::string GetCurrentText() const;
    // Image and indent of entry `index`; false when there is none.
    bool GetItemLook(int index, int* image, int* indent) const;
    HIMAGELIST GetImageList() const { return imageList.Get(); }
    // Empties the list (CB_RESETCONTENT).
    void ResetContent() const;

    // True once the full list has been built; RefreshCombo clears it.
    bool populated = false;
    UniqueImageList imageList;

protected:
    bool OnChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) override;
    // The list and its images described this window: the control's next
    // window starts empty and builds its list at its own first drop-down.
    void OnDestroy() override;

private:
    CGraphicDlg* Dialog() const;
    // A new image list from the strip, handed to the control before the old
    // one goes.
    void AttachNewImageList();
    void InsertEntry(int index, const std::string& text, int image, int indent) const;
    void DeleteEntry(int index) const;
    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) const;
};

}  // namespace browser
