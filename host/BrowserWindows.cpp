#include "host/BrowserWindows.h"

#include <cstring>

#include "control/LumbrelIds.h"

namespace host {

namespace {

// The browser's drive list; the control itself never addresses it.
constexpr int kDriveComboId = 217;

struct Search {
    int id;
    HWND found;
};

BOOL CALLBACK MatchId(HWND window, LPARAM parameter) {
    auto* search = reinterpret_cast<Search*>(parameter);
    if (::GetDlgCtrlID(window) != search->id) return TRUE;
    search->found = window;
    return FALSE;
}

HTREEITEM Next(HWND tree, UINT relation, HTREEITEM item) {
    return reinterpret_cast<HTREEITEM>(
        ::SendMessageA(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

}  // namespace

HWND FindDescendant(HWND root, int id) {
    if (root == nullptr) return nullptr;
    Search search = {id, nullptr};
    ::EnumChildWindows(root, &MatchId, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

BrowserWindows FindBrowserWindows(HWND control) {
    BrowserWindows windows;
    windows.tree = FindDescendant(control, control::kTreeId);
    windows.gallery = FindDescendant(control, control::kGalleryId);
    // The ComboBoxEx's inner combo box carries the same identifier; the
    // outer one is the parent of the other.
    HWND combo = FindDescendant(control, kDriveComboId);
    if (combo != nullptr && ::GetDlgCtrlID(::GetParent(combo)) == kDriveComboId) combo = ::GetParent(combo);
    windows.combo = combo;
    return windows;
}

std::string TreeItemText(HWND tree, HTREEITEM item) {
    char text[MAX_PATH + 1] = {};
    TVITEMA data = {};
    data.mask = TVIF_TEXT;
    data.hItem = item;
    data.pszText = text;
    data.cchTextMax = MAX_PATH;
    if (!::SendMessageA(tree, TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&data))) return std::string();
    return text;
}

std::string TreeItemPath(HWND tree, HTREEITEM item) {
    std::string path;
    for (; item != nullptr; item = Next(tree, TVGN_PARENT, item))
        path = path.empty() ? TreeItemText(tree, item) : TreeItemText(tree, item) + "\\" + path;
    return path;
}

HTREEITEM ExpandAlongPath(HWND tree, const std::string& path, std::string* missing) {
    HTREEITEM item = Next(tree, TVGN_ROOT, nullptr);
    HTREEITEM found = nullptr;
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find('\\', start);
        if (end == std::string::npos) end = path.size();
        const std::string name = path.substr(start, end - start);
        start = end + 1;
        if (name.empty()) continue;
        // The node that holds the next name must have been expanded first.
        if (found != nullptr) {
            ::SendMessageA(tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(found));
            item = Next(tree, TVGN_CHILD, found);
        }
        while (item != nullptr && ::lstrcmpiA(TreeItemText(tree, item).c_str(), name.c_str()) != 0)
            item = Next(tree, TVGN_NEXT, item);
        if (item == nullptr) {
            *missing = name;
            return nullptr;
        }
        found = item;
    }
    if (found == nullptr) *missing = path;
    return found;
}

bool TreeLabelCentre(HWND tree, HTREEITEM item, POINT* centre) {
    ::SendMessageA(tree, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item));
    RECT rect = {};
    // TVM_GETITEMRECT takes the item in the rectangle's first bytes.
    std::memcpy(&rect, &item, sizeof item);
    if (!::SendMessageA(tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&rect))) return false;
    RECT client = {};
    ::GetClientRect(tree, &client);
    POINT point = {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
    // A label wider than the tree is clicked inside the visible part.
    if (point.x >= client.right) point.x = (rect.left + client.right) / 2;
    if (!::PtInRect(&client, point)) return false;
    *centre = point;
    return true;
}

int ComboCount(HWND combo) {
    const LRESULT count = ::SendMessageA(combo, CB_GETCOUNT, 0, 0);
    return count == CB_ERR ? 0 : static_cast<int>(count);
}

std::string ComboText(HWND combo, int index) {
    char text[MAX_PATH + 1] = {};
    COMBOBOXEXITEMA item = {};
    item.mask = CBEIF_TEXT;
    item.iItem = index;
    item.pszText = text;
    item.cchTextMax = MAX_PATH;
    if (!::SendMessageA(combo, CBEM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item))) return std::string();
    return text;
}

int FindComboEntry(HWND combo, const std::string& text) {
    const int count = ComboCount(combo);
    for (int i = 0; i < count; ++i)
        if (::lstrcmpiA(ComboText(combo, i).c_str(), text.c_str()) == 0) return i;
    return -1;
}

}  // namespace host
