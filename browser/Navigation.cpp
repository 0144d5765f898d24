// The three roads that fill the gallery: a tree selection, the host naming a
// path, and a change of thumbnail size. A path from the host becomes a tree
// selection, so it runs through the same handler as a click.
#include <io.h>

#include <limits>
#include <vector>

#include "browser/GraphicDlg.h"
#include "browser/PathExists.h"
#include "browser/PreviewRender.h"
#include "browser/SelectionTarget.h"
#include "browser/WaitCursor.h"
#include "foundation/ReportError.h"
#include "framework/win32/MemoryHandles.h"

namespace browser {

namespace {

// KEY_READ, as the primary folder has always been opened.
constexpr REGSAM kRegistryAccess = 0x20019;
// The room the primary folder's value is read into.
constexpr DWORD kRegistryValueRoom = 256;

struct RegistryKeyTraits {
    using Handle = HKEY;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle handle) { ::RegCloseKey(handle); }
};
using UniqueRegistryKey = framework::win32::UniqueHandle<RegistryKeyTraits>;

// Reads a text value of `room` bytes at most; false when the key or the
// value is missing or larger.
bool ReadRegistryText(const std::string& keyName, const std::string& valueName, std::string* value) {
    HKEY opened = nullptr;
    if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, keyName.c_str(), 0, kRegistryAccess, &opened) != ERROR_SUCCESS)
        return false;
    const UniqueRegistryKey key(opened);
    // One byte beyond the room, so that a value that fills it still ends.
    char buffer[kRegistryValueRoom + 1] = {};
    DWORD size = kRegistryValueRoom;
    if (::RegQueryValueExA(key.Get(), valueName.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(buffer),
                           &size) != ERROR_SUCCESS)
        return false;
    buffer[size < kRegistryValueRoom ? size : kRegistryValueRoom] = '\0';
    *value = buffer;
    return true;
}

bool Exists(const std::string& path) {
    return PathExistsOnDisk(path);
}

// The gallery index of a 1-based position: 0 gives -1, which selects
// nothing. Counted in 32 bits without sign, as the host's number is, so that
// the lowest position wraps round instead of overflowing.
int GalleryIndexOfPosition(long position) {
    return static_cast<int>(static_cast<uint32_t>(position) - 1u);
}

}  // namespace

// ---- The end of start-up -------------------------------------------------------------

BOOL CGraphicDlg::FinishStartUp() {
    foundation::CResString keyName(IDS_DIRECTORIES_KEY);
    HKEY opened = nullptr;
    if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, keyName.GetText().c_str(), 0, kRegistryAccess, &opened) !=
        ERROR_SUCCESS)
        return FALSE;
    UniqueRegistryKey key(opened);
    foundation::CResString valueName(IDS_PRIMARY_FOLDER_VALUE);
    primaryFolder = valueName.GetText();
    char buffer[kRegistryValueRoom + 1] = {};
    DWORD size = kRegistryValueRoom;
    if (::RegQueryValueExA(key.Get(), primaryFolder.c_str(), nullptr, nullptr,
                           reinterpret_cast<BYTE*>(buffer), &size) != ERROR_SUCCESS)
        return FALSE;
    buffer[size < kRegistryValueRoom ? size : kRegistryValueRoom] = '\0';
    primaryFolder = buffer;
    key.Reset();
    if (itemPath.empty())
        driveCombo.FillTreeFromPrimaryFolder();
    else
        NavigateToPath(itemPath, initialPosition);
    return TRUE;
}

// ---- Single pictures -----------------------------------------------------------------

std::string PreviewFileNamePart(const std::string& path) {
    const size_t dot = path.find('.');
    const size_t slash = path.rfind('\\');
    const size_t start = slash == std::string::npos ? 0 : slash + 1;
    // With no dot at all the part has no characters.
    const size_t count = dot == std::string::npos ? 0 : dot + 1;
    if (start >= path.size()) return std::string();
    return path.substr(start, count);
}

bool CGraphicDlg::ReadPictureRequest(const std::string& path, PreviewRequest& request,
                                     std::vector<uint8_t>& buffer) {
    request = PreviewRequest{};
    request.thumbnailSize = largeThumbnails == 1 ? kLargeThumbnailSize : kSmallThumbnailSize;
    const framework::win32::UniqueFile file(::CreateFileA(path.c_str(), GENERIC_READ,
                                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return false;
    LARGE_INTEGER length = {};
    if (!::GetFileSizeEx(file.Get(), &length) || length.QuadPart < 0) THROW_LINE();
    // Four times the length: slack that has always been there. The request
    // counts the length in 32 bits, so four times it must fit too.
    if (static_cast<uint64_t>(length.QuadPart) > std::numeric_limits<uint32_t>::max() / 4) THROW_LINE();
    const auto fileLength = static_cast<uint32_t>(length.QuadPart);
    buffer.assign(static_cast<size_t>(fileLength) * 4, 0);
    DWORD read = 0;
    if (fileLength > 0 &&
        (!::ReadFile(file.Get(), buffer.data(), fileLength, &read, nullptr) || read != fileLength))
        THROW_LINE();
    request.dataLength = fileLength;
    request.fileData = buffer.data();
    CopyToField(request.fileName, sizeof request.fileName, PreviewFileNamePart(path));
    return true;
}

void CGraphicDlg::RenderPicture(const std::string&, PreviewRequest& request) {
    request.targetWindow = hwnd_;
    // RenderPreview catches everything and pumps no messages: only its own
    // send can meet the flag set.
    previewExpected_ = true;
    RenderPreview(request);
    previewExpected_ = false;
}

// ---- Tree selection ------------------------------------------------------------------

void CGraphicDlg::OnTreeSelChanged(NMHDR* notification, LRESULT* result) {
    if (treeNotifyEnabled == 0 || notification == nullptr) return;
    std::vector<uint8_t> buffer;
    try {
        if (gallery && gallery->GetItemCount() == 0) {
            // The radio buttons take effect here, at the first selection
            // after a size was chosen for an empty gallery.
            if (::SendMessageA(GetDlgItem(IDC_LARGE_THUMBNAILS), BM_GETCHECK, 0, 0) == BST_CHECKED) {
                largeThumbnails = 1;
                gallery->SetCellSize(kLargeCell.cx, kLargeCell.cy);
            } else if (::SendMessageA(GetDlgItem(IDC_SMALL_THUMBNAILS), BM_GETCHECK, 0, 0) == BST_CHECKED) {
                largeThumbnails = 0;
                gallery->SetCellSize(kSmallContainerCell.cx, kSmallContainerCell.cy);
            }
            gallery->Relayout(GalleryWindowRect());
        }
        WaitCursor wait;
        const HTREEITEM item = reinterpret_cast<const NMTREEVIEWA*>(notification)->itemNew.hItem;
        // The node stays highlighted while the focus is in the gallery.
        tree.SelectDropTarget(item);
        if (tree.ItemHasChildren(item)) {
            EmptyGallery();
            itemInfo = EmptyItemInfo();
            FireItemSel(itemInfo);
            return;
        }
        // A leaf: the host first learns that nothing is selected.
        itemInfo = EmptyItemInfo();
        FireItemSel(itemInfo);
        if (!WindowSurvived()) return;
        std::string path = GetSelectedPath();
        if (Exists(path)) {
            PreviewRequest request;
            if (!ReadPictureRequest(path, request, buffer)) {
                EmptyGallery();
            } else {
                RenderPicture(path, request);
                // The picture's ItemSel has gone out: the window may be gone.
                if (!WindowSurvived()) return;
                currentTreeItem = item;
                currentPath = path;
            }
        } else {
            path += kContainerExtension;
            if (!Exists(path)) THROW_LINE();
            ShowContainer(path);
            SendSizeCorrection();
            if (gallery) gallery->SetTopRow(0, TRUE);
            currentPath = path;
            if (gallery) gallery->SetSelection(0);
            GraphicItemInfo shown = MakeItemInfo(1, 1, path);
            itemInfo = shown;
            FireItemSel(shown);
        }
        *result = 0;
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
}

// ---- The size switch -----------------------------------------------------------------

void CGraphicDlg::OnLargeThumbnails() {
    SwitchThumbnailSize(1);
}

void CGraphicDlg::OnSmallThumbnails() {
    SwitchThumbnailSize(0);
}

void CGraphicDlg::SwitchThumbnailSize(int large) {
    // An empty gallery keeps its size and the flag: the radio buttons are
    // read at the next tree selection.
    if (!gallery || gallery->GetItemCount() == 0) return;
    std::vector<uint8_t> buffer;
    try {
        largeThumbnails = large;
        const SIZE cell = large == 1 ? kLargeCell : kSmallContainerCell;
        gallery->SetCellSize(cell.cx, cell.cy);
        gallery->Relayout(GalleryWindowRect());
        const std::string path = GetSelectedPath();
        const std::string container = path + kContainerExtension;
        if (!Exists(container)) {
            PreviewRequest request;
            // A file that will not open has no length to read.
            if (!ReadPictureRequest(path, request, buffer)) THROW_LINE();
            RenderPicture(path, request);
        } else {
            // The container last shown, which is the selected one as long as
            // the tree's selection is the one last shown.
            ShowContainer(currentPath);
            SendSizeCorrection();
            const int selected = gallery->SelectedIndex();
            if (selected >= 0) {
                gallery->SetSelection(selected);
                gallery->EnsureVisible(selected);
            }
        }
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
}

// ---- Navigation ----------------------------------------------------------------------

void CGraphicDlg::NavigateToPath(const std::string& pathGiven, long position) {
    if (hwnd_ == nullptr) return;
    // The start-up passes `itemPath` itself, which this function extends by
    // ".QLT" before it looks at the path as it came in: that one is a copy.
    const std::string pathArgument = pathGiven;
    try {
        foundation::CResString keyName(IDS_DIRECTORIES_KEY);
        foundation::CResString valueName(IDS_PRIMARY_FOLDER_VALUE);
        std::string primary;
        if (!ReadRegistryText(keyName.GetText(), valueName.GetText(), &primary)) return;
        lastPosition = static_cast<int>(position);

        std::string path = pathArgument;
        const size_t colon = path.find(':');
        const std::string drive = colon == std::string::npos ? std::string() : path.substr(0, colon + 1);
        const int entries = driveCombo.GetCount();
        for (int index = 0; index < entries; ++index) {
            if (EqualsNoCase(driveCombo.GetItemText(index), drive)) {
                driveCombo.SetCurSel(index);
                break;
            }
        }

        if (path.find(primary) == std::string::npos) {
            driveCombo.SetSingleEntry(drive);
        } else {
            // Wherever the primary folder was found, as many characters as it
            // has go from the front; its last component then stands in the
            // place of the drive, and the walk below skips it.
            path.erase(0, primary.size());
            const size_t slash = primary.rfind('\\');
            const std::string component = slash == std::string::npos ? primary : primary.substr(slash + 1);
            driveCombo.SetSingleEntry(std::string());
            path = component + path;
        }

        driveCombo.OnSelChange();
        // Each step below follows an ItemSel, inside which the host may have
        // destroyed the window.
        if (!WindowSurvived()) return;

        HTREEITEM item = tree.GetFirstVisibleItem();
        HTREEITEM last = item;
        while (!path.empty()) {
            const size_t first = path.find('\\');
            path.erase(0, first == std::string::npos ? 0 : first + 1);
            std::string name;
            const size_t next = path.find('\\');
            if (next != std::string::npos) {
                name = path.substr(0, next);
            } else {
                name = path;
                path.clear();
            }
            const UINT steps = tree.GetCount();
            for (UINT step = 0; step < steps && item != nullptr; ++step) {
                if (EqualsNoCase(name, tree.GetItemText(item))) {
                    if (tree.ItemHasChildren(item)) tree.Expand(item, TVE_EXPAND);
                    last = item;
                    item =
                        tree.ItemHasChildren(item) ? tree.GetChildItem(item) : tree.GetNextSiblingItem(item);
                    break;
                }
                item = tree.GetNextSiblingItem(item);
            }
        }

        // On a tree just rebuilt nothing is selected, so selecting no item
        // would change nothing: it is not asked for.
        if (last != nullptr) {
            tree.SelectItem(last);
            if (!WindowSurvived()) return;
            tree.SelectDropTarget(last);
        }
        ::SetFocus(tree.Handle());

        if (!Exists(itemPath)) {
            itemPath += kContainerExtension;
            const DWORD attributes = ::GetFileAttributesA(pathArgument.c_str());
            if (attributes == FILE_ATTRIBUTE_DIRECTORY || pathArgument.empty()) itemPath.clear();
            if (!Exists(itemPath)) return;
            if (gallery) {
                gallery->SetSelection(GalleryIndexOfPosition(position));
                gallery->EnsureVisible(GalleryIndexOfPosition(position));
            }
        } else {
            if (gallery) gallery->SetSelection(GalleryIndexOfPosition(position));
            ResetGalleryScrollBar();
        }
        GraphicItemInfo finished = MakeItemInfo(1, static_cast<int32_t>(position), itemPath);
        itemInfo = finished;
        FireItemSel(finished);
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
}

}  // namespace browser
