// The browser dialog's windows as the container finds them: it has the
// control only through COM, so it looks for the dialog's children by their
// identifiers under the control's window, and works them with their own
// window messages.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <string>

namespace host {

// The first window under `root`, at any depth, with identifier `id`.
HWND FindDescendant(HWND root, int id);

struct BrowserWindows {
    HWND tree = nullptr;
    HWND combo = nullptr;  // the ComboBoxEx32
    HWND gallery = nullptr;
};
BrowserWindows FindBrowserWindows(HWND control);

// ---- The tree

std::string TreeItemText(HWND tree, HTREEITEM item);
// The texts from the top of the tree down to `item`, joined by "\"; the
// empty text for no item.
std::string TreeItemPath(HWND tree, HTREEITEM item);
// Walks the names of `path` ("\"-separated, case-insensitive) from the top
// of the tree, expanding each node on the way as the tree's button does,
// and returns the node of the last name; null with `missing` set to the
// first name that is not there.
HTREEITEM ExpandAlongPath(HWND tree, const std::string& path, std::string* missing);
// The centre of the item's label in the tree's client area, after scrolling
// it into view; false when it has no visible label.
bool TreeLabelCentre(HWND tree, HTREEITEM item, POINT* centre);

// ---- The drive list

int ComboCount(HWND combo);
std::string ComboText(HWND combo, int index);
// The index of the entry whose text is `text` (case-insensitive), or -1.
int FindComboEntry(HWND combo, const std::string& text);

}  // namespace host
