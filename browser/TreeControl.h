// The browser's tree view (control 1044 of the dialog), spoken to through
// the tree view's ANSI messages. A thin handle: the dialog's template makes
// the control and the dialog's window destroys it; this class only talks to
// it. Every call on a handle that is not (or no longer) a window does
// nothing and answers null, 0 or the empty text.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <string>

namespace browser {

class TreeControl {
public:
    // What an ordinary node carries: text, image and selected image.
    static constexpr UINT kItemMask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    // A drive of the "MyComputer" view also carries its children count.
    static constexpr UINT kDriveMask = kItemMask | TVIF_CHILDREN;

    void Attach(HWND tree) { hwnd_ = tree; }
    HWND Detach();
    HWND Handle() const { return hwnd_; }

    // Inserts under `parent` after `after` (TVI_SORT for alphabetical order)
    // with the fields of `mask`; image and selected image are both `image`.
    HTREEITEM InsertItem(UINT mask, const std::string& text, int image, int children, HTREEITEM parent,
                         HTREEITEM after) const;
    // An ordinary node, sorted among its siblings.
    HTREEITEM InsertSorted(const std::string& text, int image, HTREEITEM parent) const;

    std::string GetItemText(HTREEITEM item) const;
    // False when the item does not answer.
    bool GetItemImages(HTREEITEM item, int* image, int* selectedImage) const;
    // Whether the tree counts children for `item`: its children count is not
    // 0. A drive of the "MyComputer" view has a count of 1 before it was
    // ever read, so it has children here while no child item exists yet.
    bool ItemHasChildren(HTREEITEM item) const;
    // Whether child items stand below `item` now.
    bool HasChildItems(HTREEITEM item) const;
    // The children count as the tree reports it, which decides its button:
    // the one given at insertion, or, for an item inserted without one,
    // whether it has child items now. -1 when the item does not answer.
    int GetChildrenCount(HTREEITEM item) const;

    HTREEITEM GetNextItem(HTREEITEM item, UINT relation) const;
    HTREEITEM GetChildItem(HTREEITEM item) const { return GetNextItem(item, TVGN_CHILD); }
    HTREEITEM GetNextSiblingItem(HTREEITEM item) const { return GetNextItem(item, TVGN_NEXT); }
    HTREEITEM GetParentItem(HTREEITEM item) const { return GetNextItem(item, TVGN_PARENT); }
    HTREEITEM GetRootItem() const { return GetNextItem(nullptr, TVGN_ROOT); }
    HTREEITEM GetSelectedItem() const { return GetNextItem(nullptr, TVGN_CARET); }
    HTREEITEM GetDropHilightItem() const { return GetNextItem(nullptr, TVGN_DROPHILITE); }
    HTREEITEM GetFirstVisibleItem() const { return GetNextItem(nullptr, TVGN_FIRSTVISIBLE); }

    bool DeleteItem(HTREEITEM item) const;
    bool DeleteAllItems() const { return DeleteItem(TVI_ROOT); }
    // Makes `item` the caret; the tree tells its parent (TVN_SELCHANGED)
    // before this returns.
    bool SelectItem(HTREEITEM item) const;
    bool SelectDropTarget(HTREEITEM item) const;
    bool Expand(HTREEITEM item, UINT action) const;
    UINT GetCount() const;

private:
    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) const;

    HWND hwnd_ = nullptr;
};

}  // namespace browser
