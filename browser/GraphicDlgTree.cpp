// The tree: a map of one view of the disk, filled one level at a time. Its
// items keep no path: every path is rebuilt from the item texts and the drive
// list's entry. A folder gets a placeholder child when a look into it finds
// something to show, so that its button appears; expanding it reads it.
#include <cctype>
#include <cstring>

#include "browser/GraphicDlg.h"
#include "browser/SelectionTarget.h"
#include "browser/ShellAccess.h"
#include "browser/TreeLevel.h"
#include "browser/WaitCursor.h"
#include "foundation/ReportError.h"
#include "framework/win32/MemoryHandles.h"

namespace browser {

namespace {

constexpr char kPlaceholderText[] = "TEMP";

// A directory search, closed when it goes.
class DirectorySearch {
public:
    explicit DirectorySearch(const std::string& directoryPath)
        : handle_(::FindFirstFileA((directoryPath + "\\*.*").c_str(), &data_)) {}
    ~DirectorySearch() {
        if (handle_ != INVALID_HANDLE_VALUE) ::FindClose(handle_);
    }
    DirectorySearch(const DirectorySearch&) = delete;
    DirectorySearch& operator=(const DirectorySearch&) = delete;

    bool Found() const { return handle_ != INVALID_HANDLE_VALUE; }
    // Moves to the next entry that is not "." or ".."; false at the end.
    // The first call looks at the entry the search began with.
    bool Next() {
        if (handle_ == INVALID_HANDLE_VALUE) return false;
        for (;;) {
            if (started_ && !::FindNextFileA(handle_, &data_)) return false;
            started_ = true;
            data_.cFileName[MAX_PATH - 1] = '\0';
            if (std::strcmp(data_.cFileName, ".") != 0 && std::strcmp(data_.cFileName, "..") != 0)
                return true;
        }
    }
    std::string Name() const { return data_.cFileName; }
    bool IsDirectory() const { return (data_.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }

private:
    WIN32_FIND_DATAA data_ = {};
    HANDLE handle_;
    bool started_ = false;
};

std::string Lowered(const std::string& text) {
    std::string lowered = text;
    for (char& c : lowered) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lowered;
}

}  // namespace

bool IsHiddenTopLevelFolder(const std::string& name) {
    return EqualsNoCase(name, "Textures") || EqualsNoCase(name, "Borders") ||
           EqualsNoCase(name, "Backgrounds");
}

bool IsHiddenTopLevelContainer(const std::string& name) {
    return EqualsNoCase(name, "backgrounds.qlt") || EqualsNoCase(name, "borders.qlt");
}

bool IsContainerFileName(const std::string& name) {
    const size_t position = Lowered(name).find(".qlt");
    return position != std::string::npos && position >= 1;
}

std::string FoundFileTitle(const std::string& name) {
    const size_t dot = name.rfind('.');
    return dot == std::string::npos ? name : name.substr(0, dot);
}

// ---- Paths -------------------------------------------------------------------------

namespace {

// The texts of `item` and its ancestors, root first, each followed by "\".
std::string ItemTextChain(const TreeControl& tree, HTREEITEM item) {
    std::string path;
    for (HTREEITEM current = item; current != nullptr; current = tree.GetParentItem(current))
        path = tree.GetItemText(current) + "\\" + path;
    return path;
}

void RemoveTrailingBackslashes(std::string& path) {
    while (!path.empty() && path.back() == '\\') path.pop_back();
}

}  // namespace

std::string CGraphicDlg::GetSelectedPath() {
    std::string path = ItemTextChain(tree, tree.GetSelectedItem());
    if (path.empty() || path.back() != '\\') return path;
    RemoveTrailingBackslashes(path);
    const std::string entry = driveCombo.GetCurrentText();
    if (EqualsNoCase(entry, ProductEntryText()))
        path = primaryFolder + "\\" + path;
    else if (EqualsNoCase(entry, DesktopText()))
        path = GetSpecialFolderPath(kDesktopDirectoryFolder) + "\\" + path;
    else if (!EqualsNoCase(entry, MyComputerText()))
        path = entry + "\\" + path;
    // In the "MyComputer" view the drive's own text ("C:\") leads, so a path
    // below a drive keeps a doubled backslash behind it; the host gets it so.
    return path;
}

std::string CGraphicDlg::GetExpansionPath(HTREEITEM item) {
    std::string path = ItemTextChain(tree, item);
    if (path.empty() || path.back() != '\\') return std::string();
    RemoveTrailingBackslashes(path);
    const std::string entry = driveCombo.GetCurrentText();
    if (EqualsNoCase(entry, ProductEntryText()))
        path = primaryFolder + "\\" + path;
    else if (EqualsNoCase(entry, DesktopText()))
        path = GetSpecialFolderPath(kDesktopDirectoryFolder) + "\\" + path;
    else if (!EqualsNoCase(entry, MyComputerText()))
        path = entry + "\\" + path;
    else
        path += "\\";
    return path;
}

// ---- Levels ------------------------------------------------------------------------

void CGraphicDlg::AddChildPlaceholders(const std::string& directoryPath, HTREEITEM node) {
    DirectorySearch look(directoryPath);
    while (look.Next()) {
        const std::string name = look.Name();
        if (look.IsDirectory() || IsContainerFileName(name)) {
            tree.InsertSorted(kPlaceholderText, folderIconIndex, node);
            return;
        }
        // Each picture gets a placeholder of its own until a folder or a
        // container ends the look; expansion deletes them all.
        if (IsPictureFile(name)) tree.InsertSorted(kPlaceholderText, folderIconIndex, node);
    }
}

int CGraphicDlg::FillTreeChildren(const std::string& directoryPath, HTREEITEM item) {
    // No item is no place to fill; the tree would take it for its first root.
    if (item == nullptr) return 1;
    WaitCursor wait;
    DirectorySearch search(directoryPath);
    // A second expansion reads the disk again: what was there goes, the
    // placeholder with it.
    for (HTREEITEM child = tree.GetChildItem(item); child != nullptr; child = tree.GetChildItem(item))
        if (!tree.DeleteItem(child)) break;
    // A folder may hold thousands of pictures: the level is sorted once and
    // each file type's icon asked once (TreeLevel.h); the tree shows the same.
    SortedLevel level;
    FileIconIndexes icons;
    while (search.Next()) {
        const std::string name = search.Name();
        if (search.IsDirectory()) {
            level.Add(name, folderIconIndex, directoryPath + "\\" + name);
        } else if (IsContainerFileName(name)) {
            level.Add(FoundFileTitle(name), folderIconIndex);
        } else if (IsPictureFile(name)) {
            level.Add(name, icons.IndexOf(directoryPath, name));
        }
    }
    level.InsertInto(tree, item,
                     [this](HTREEITEM node, const std::string& path) { AddChildPlaceholders(path, node); });
    return 1;
}

int CGraphicDlg::TopLevelPictureIcon(const std::string& path) {
    bool answered = false;
    const int icon = ShellIconIndex(path, kSmallFileIcon, &answered);
    return answered ? icon : 1;
}

void CGraphicDlg::AddTopLevelPlaceholder(const std::string& directoryPath, HTREEITEM node) {
    DirectorySearch look(directoryPath);
    while (look.Next()) {
        const std::string name = look.Name();
        if (look.IsDirectory()) {
            tree.InsertSorted(kPlaceholderText, folderIconIndex, node);
            return;
        }
        if (IsContainerFileName(name)) {
            tree.InsertSorted(FoundFileTitle(name), folderIconIndex, node);
            return;
        }
        if (IsPictureFile(name)) {
            tree.InsertSorted(name, TopLevelPictureIcon(directoryPath + "\\" + name), node);
            return;
        }
    }
}

void CGraphicDlg::FillTreeRoot(const std::string& directoryPath) {
    WaitCursor wait;
    DirectorySearch search(directoryPath);
    while (search.Next()) {
        const std::string name = search.Name();
        const std::string entryPath = directoryPath + "\\" + name;
        if (search.IsDirectory()) {
            if (IsHiddenTopLevelFolder(name)) continue;
            const HTREEITEM node = tree.InsertSorted(name, folderIconIndex, TVI_ROOT);
            if (node != nullptr) AddTopLevelPlaceholder(entryPath, node);
        } else if (IsContainerFileName(name)) {
            if (IsHiddenTopLevelContainer(name)) continue;
            tree.InsertSorted(FoundFileTitle(name), folderIconIndex, TVI_ROOT);
        } else if (IsPictureFile(name)) {
            tree.InsertSorted(name, TopLevelPictureIcon(entryPath), TVI_ROOT);
        }
    }
}

bool CGraphicDlg::InsertDriveRoots() {
    const std::vector<std::string> roots = LogicalDriveRoots(CDriveComboBox::kDriveStringsBuffer);
    if (roots.empty()) return false;
    // A drive shows its button whether or not a disc is in it.
    for (const std::string& root : roots)
        tree.InsertItem(TreeControl::kDriveMask, root, folderIconIndex, 1, TVI_ROOT, TVI_SORT);
    return true;
}

// ---- Expansion -----------------------------------------------------------------------

void CGraphicDlg::ExpandTreeItem(HTREEITEM item) {
    const std::string path = GetExpansionPath(item);
    if (path.empty()) return;
    FillTreeChildren(path, item);
}

void CGraphicDlg::OnTreeItemExpanding(NMHDR* notification, LRESULT* result) {
    try {
        const auto* change = reinterpret_cast<const NMTREEVIEWA*>(notification);
        // Collapsing keeps the children until the next expansion.
        if (change != nullptr && change->action == TVE_EXPAND) ExpandTreeItem(change->itemNew.hItem);
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
    if (result != nullptr) *result = 0;
}

}  // namespace browser
