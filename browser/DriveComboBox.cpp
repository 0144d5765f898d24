#include "browser/DriveComboBox.h"

#include <io.h>

#include <vector>

#include "browser/DrivePrompt.h"
#include "browser/GraphicDlg.h"
#include "browser/ShellAccess.h"
#include "browser/WaitCursor.h"
#include "foundation/ReportError.h"

namespace browser {

namespace {

// Window updates of one window locked for a scope; the system allows one
// locked window at a time.
class UpdateLock {
public:
    explicit UpdateLock(HWND window) : locked_(window != nullptr && ::LockWindowUpdate(window) != FALSE) {}
    ~UpdateLock() {
        if (locked_) ::LockWindowUpdate(nullptr);
    }
    UpdateLock(const UpdateLock&) = delete;
    UpdateLock& operator=(const UpdateLock&) = delete;

private:
    bool locked_;
};

std::string WithoutTrailingBackslash(const std::string& root) {
    if (!root.empty() && root.back() == '\\') return root.substr(0, root.size() - 1);
    return root;
}

// The host's side of a modal question: told when it opens and when it has
// closed, however the question ends.
class ModalQuestion {
public:
    explicit ModalQuestion(ItemEventSink* host) : host_(host) {
        if (host_ != nullptr) host_->BeginModalQuestion();
    }
    ~ModalQuestion() {
        if (host_ != nullptr) host_->EndModalQuestion();
    }
    ModalQuestion(const ModalQuestion&) = delete;
    ModalQuestion& operator=(const ModalQuestion&) = delete;

private:
    ItemEventSink* host_;
};

}  // namespace

int CGraphicDlg::PromptDriveNotReady(const std::string& path) {
    const ModalQuestion modal(events_);
    return AskDriveNotReady(DriveNotReadyText(path), kDriveNotReadyStyle);
}

int ImageForDriveType(UINT driveType) {
    switch (driveType) {
        case DRIVE_REMOVABLE: return kRemovableDriveImage;
        case DRIVE_FIXED: return kFixedDriveImage;
        case DRIVE_REMOTE: return kRemoteDriveImage;
        case DRIVE_CDROM: return kCdRomDriveImage;
        default: return kFixedDriveImage;
    }
}

CDriveComboBox::~CDriveComboBox() {
    // The control may still show the list; it must not paint with it once gone.
    if (hwnd_ != nullptr && ::IsWindow(hwnd_) && imageList) Send(CBEM_SETIMAGELIST, 0, 0);
}

void CDriveComboBox::OnDestroy() {
    populated = false;
    Send(CBEM_SETIMAGELIST, 0, 0);
    imageList.Reset();
    Window::OnDestroy();
}

CGraphicDlg* CDriveComboBox::Dialog() const {
    if (hwnd_ == nullptr) return nullptr;
    return dynamic_cast<CGraphicDlg*>(Window::FromHandle(::GetParent(hwnd_)));
}

LRESULT CDriveComboBox::Send(UINT message, WPARAM wParam, LPARAM lParam) const {
    if (hwnd_ == nullptr || !::IsWindow(hwnd_)) return 0;
    return ::SendMessageA(hwnd_, message, wParam, lParam);
}

bool CDriveComboBox::OnChildNotify(UINT message, WPARAM wParam, LPARAM, LRESULT*) {
    if (message != WM_COMMAND) return false;
    switch (HIWORD(wParam)) {
        case CBN_SELCHANGE: OnSelChange(); return true;
        case CBN_DROPDOWN: OnDropDown(); return true;
        default: return false;
    }
}

// ---- Entries -----------------------------------------------------------------------

int CDriveComboBox::GetCount() const {
    const LRESULT count = Send(CB_GETCOUNT, 0, 0);
    return count > 0 ? static_cast<int>(count) : 0;
}

int CDriveComboBox::GetCurSel() const {
    if (hwnd_ == nullptr) return CB_ERR;
    return static_cast<int>(Send(CB_GETCURSEL, 0, 0));
}

void CDriveComboBox::SetCurSel(int index) const {
    Send(CB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

void CDriveComboBox::ResetContent() const {
    Send(CB_RESETCONTENT, 0, 0);
}

std::string CDriveComboBox::GetItemText(int index) const {
    if (index < 0) return std::string();
    // Room for any drive or folder text; grown while an entry (such as the
    // drive part of a long path from the host) fills it.
    std::vector<char> text(MAX_PATH + 1);
    for (;;) {
        COMBOBOXEXITEMA item = {};
        item.mask = CBEIF_TEXT;
        item.iItem = index;
        item.pszText = text.data();
        item.cchTextMax = static_cast<int>(text.size() - 1);
        text[0] = '\0';
        if (Send(CBEM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item)) == 0) return std::string();
        text.back() = '\0';
        const std::string result(text.data());
        if (result.size() + 2 < text.size() || text.size() >= 0x10000) return result;
        text.resize(text.size() * 2);
    }
}

std::string CDriveComboBox::GetCurrentText() const {
    return GetItemText(GetCurSel());
}

bool CDriveComboBox::GetItemLook(int index, int* image, int* indent) const {
    if (index < 0) return false;
    COMBOBOXEXITEMA item = {};
    item.mask = CBEIF_IMAGE | CBEIF_INDENT;
    item.iItem = index;
    if (Send(CBEM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item)) == 0) return false;
    if (image != nullptr) *image = item.iImage;
    if (indent != nullptr) *indent = item.iIndent;
    return true;
}

void CDriveComboBox::InsertEntry(int index, const std::string& text, int image, int indent) const {
    COMBOBOXEXITEMA item = {};
    item.mask = kEntryMask;
    item.iItem = index;
    // The control copies the text; it never writes through this pointer.
    item.pszText = const_cast<char*>(text.c_str());
    item.iImage = image;
    item.iSelectedImage = image;
    item.iIndent = indent;
    Send(CBEM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&item));
}

void CDriveComboBox::DeleteEntry(int index) const {
    if (index < 0) return;
    Send(CBEM_DELETEITEM, static_cast<WPARAM>(index), 0);
}

void CDriveComboBox::AttachNewImageList() {
    UniqueImageList list(::ImageList_LoadImageA(framework::win32::ResourceModule(),
                                                MAKEINTRESOURCEA(IDB_DRIVE_IMAGES), kImageSize, 1, kImageMask,
                                                IMAGE_BITMAP, 0));
    Send(CBEM_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(list.Get()));
    imageList = std::move(list);
}

void CDriveComboBox::SetSingleEntry(const std::string& text) {
    DeleteEntry(GetCurSel());
    AttachNewImageList();
    CGraphicDlg* dialog = Dialog();
    if (text.empty()) {
        InsertEntry(0, dialog != nullptr ? dialog->ProductEntryText() : std::string(), kProductImage, 1);
    } else {
        InsertEntry(0, text, ImageForDriveType(::GetDriveTypeA((text + "\\").c_str())), 1);
    }
    SetCurSel(GetCount() - 1);
}

void CDriveComboBox::FillDriveList() {
    if (populated) return;
    CGraphicDlg* dialog = Dialog();
    if (dialog == nullptr) return;
    const std::string saved = GetCurrentText();
    DeleteEntry(GetCurSel());
    AttachNewImageList();
    InsertEntry(0, dialog->DesktopText(), kDesktopImage, 0);
    populated = true;
    if (QuerySpecialFolderLocation(kDrivesFolder) >= 0) {
        const std::vector<std::string> roots = LogicalDriveRoots(kDriveStringsBuffer);
        if (roots.empty()) return;
        const int n = static_cast<int>(roots.size());
        // With three drives MyComputer sits one step in and the drives two;
        // the bitwise ANDs are the indents the list has always had.
        InsertEntry(1, dialog->MyComputerText(), kMyComputerImage, 1 & n);
        for (auto root = roots.rbegin(); root != roots.rend(); ++root)
            InsertEntry(2, WithoutTrailingBackslash(*root), ImageForDriveType(::GetDriveTypeA(root->c_str())),
                        2 & n);
    }
    InsertEntry(GetCount(), dialog->ProductEntryText(), kProductImage, 0);
    // A drive shown before the first drop-down is not selected again.
    SetCurSel(EqualsNoCase(saved, dialog->ProductEntryText()) ? GetCount() - 1 : -1);
}

void CDriveComboBox::OnDropDown() {
    CGraphicDlg* dialog = Dialog();
    UpdateLock lock(dialog != nullptr ? dialog->Handle() : nullptr);
    FillDriveList();
}

// ---- The view -----------------------------------------------------------------------

void CDriveComboBox::FillTreeFromPrimaryFolder() {
    CGraphicDlg* dialog = Dialog();
    if (dialog == nullptr) return;
    dialog->tree.DeleteAllItems();
    const std::string path = dialog->primaryFolder;
    dialog->FillTreeRoot(path);
}

void CDriveComboBox::OnSelChange() {
    CGraphicDlg* dialog = Dialog();
    if (dialog == nullptr) return;
    try {
        WaitCursor wait;
        if (dialog->gallery) {
            dialog->gallery->SetCellSize(0, 0);
            dialog->gallery->RemoveAllItems();
        }
        dialog->ResetGalleryScrollBar();

        // The deletion moves the tree's selection; nobody is to hear of it.
        dialog->treeNotifyEnabled = 0;
        {
            UpdateLock lock(dialog->tree.Handle());
            dialog->tree.DeleteAllItems();
        }
        dialog->treeNotifyEnabled = 1;

        GraphicItemInfo nothing = EmptyItemInfo();
        dialog->FireItemSel(nothing);
        // The host may have destroyed the window inside the event.
        if (!IsAlive() || !dialog->IsAlive()) return;

        const std::string text = GetCurrentText();
        std::string path = text;
        if (EqualsNoCase(text, dialog->ProductEntryText())) {
            path = dialog->primaryFolder;
            if (path.empty()) THROW_LINE();
        } else if (EqualsNoCase(text, dialog->DesktopText())) {
            path = GetSpecialFolderPath(kDesktopDirectoryFolder);
        } else if (EqualsNoCase(text, dialog->MyComputerText())) {
            if (!dialog->InsertDriveRoots()) THROW_LINE();
        }

        // For "MyComputer" the path is the word itself: the search finds
        // nothing, asks nothing, and the tree keeps the drives.
        const auto searchFinds = [&path]() {
            WIN32_FIND_DATAA found = {};
            const HANDLE search = ::FindFirstFileA((path + "\\*.*").c_str(), &found);
            if (search == INVALID_HANDLE_VALUE) return false;
            ::FindClose(search);
            return true;
        };
        bool found = searchFinds();
        const UINT type = ::GetDriveTypeA(path.c_str());
        if ((type == DRIVE_CDROM || type == DRIVE_REMOVABLE) && _access(path.c_str(), 0) != 0 && !found) {
            while (!found) {
                if (dialog->PromptDriveNotReady(path) != IDRETRY) THROW_LINE();
                found = searchFinds();
            }
        }
        dialog->FillTreeRoot(path);
    } catch (int line) {
        dialog->treeNotifyEnabled = 1;
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        dialog->treeNotifyEnabled = 1;
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
}

}  // namespace browser
