#include "browser/TreeControl.h"

#include <vector>

namespace browser {

HWND TreeControl::Detach() {
    const HWND tree = hwnd_;
    hwnd_ = nullptr;
    return tree;
}

LRESULT TreeControl::Send(UINT message, WPARAM wParam, LPARAM lParam) const {
    if (hwnd_ == nullptr || !::IsWindow(hwnd_)) return 0;
    return ::SendMessageA(hwnd_, message, wParam, lParam);
}

HTREEITEM TreeControl::InsertItem(UINT mask, const std::string& text, int image, int children,
                                  HTREEITEM parent, HTREEITEM after) const {
    TVINSERTSTRUCTA insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = after;
    insert.item.mask = mask;
    // The tree copies the text; it never writes through this pointer.
    insert.item.pszText = const_cast<char*>(text.c_str());
    insert.item.iImage = image;
    insert.item.iSelectedImage = image;
    insert.item.cChildren = children;
    return reinterpret_cast<HTREEITEM>(Send(TVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&insert)));
}

HTREEITEM TreeControl::InsertSorted(const std::string& text, int image, HTREEITEM parent) const {
    return InsertItem(kItemMask, text, image, 0, parent, TVI_SORT);
}

std::string TreeControl::GetItemText(HTREEITEM item) const {
    if (item == nullptr) return std::string();
    // Start with room for any path component; grow while the text fills it.
    std::vector<char> buffer(512);
    for (;;) {
        TVITEMA query = {};
        query.mask = TVIF_TEXT;
        query.hItem = item;
        query.pszText = buffer.data();
        query.cchTextMax = static_cast<int>(buffer.size());
        buffer[0] = '\0';
        if (Send(TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&query)) == 0) return std::string();
        // The tree may answer with a pointer of its own instead of filling ours.
        const char* text = query.pszText != nullptr ? query.pszText : "";
        std::string result;
        if (text == buffer.data()) {
            buffer.back() = '\0';
            result.assign(buffer.data());
            if (result.size() + 1 < buffer.size() || buffer.size() >= 0x10000) return result;
            buffer.resize(buffer.size() * 2);
            continue;
        }
        return std::string(text);
    }
}

bool TreeControl::GetItemImages(HTREEITEM item, int* image, int* selectedImage) const {
    if (item == nullptr) return false;
    TVITEMA query = {};
    query.mask = TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    query.hItem = item;
    if (Send(TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&query)) == 0) return false;
    if (image != nullptr) *image = query.iImage;
    if (selectedImage != nullptr) *selectedImage = query.iSelectedImage;
    return true;
}

bool TreeControl::ItemHasChildren(HTREEITEM item) const {
    // An item that does not answer (-1) has no children either.
    return GetChildrenCount(item) > 0;
}

bool TreeControl::HasChildItems(HTREEITEM item) const {
    // A null item would ask for the first root instead.
    return item != nullptr && GetChildItem(item) != nullptr;
}

int TreeControl::GetChildrenCount(HTREEITEM item) const {
    if (item == nullptr) return -1;
    TVITEMA query = {};
    query.mask = TVIF_CHILDREN;
    query.hItem = item;
    if (Send(TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&query)) == 0) return -1;
    return query.cChildren;
}

HTREEITEM TreeControl::GetNextItem(HTREEITEM item, UINT relation) const {
    return reinterpret_cast<HTREEITEM>(Send(TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

bool TreeControl::DeleteItem(HTREEITEM item) const {
    return Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(item)) != 0;
}

bool TreeControl::SelectItem(HTREEITEM item) const {
    return Send(TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item)) != 0;
}

bool TreeControl::SelectDropTarget(HTREEITEM item) const {
    return Send(TVM_SELECTITEM, TVGN_DROPHILITE, reinterpret_cast<LPARAM>(item)) != 0;
}

bool TreeControl::Expand(HTREEITEM item, UINT action) const {
    return Send(TVM_EXPAND, action, reinterpret_cast<LPARAM>(item)) != 0;
}

UINT TreeControl::GetCount() const {
    return static_cast<UINT>(Send(TVM_GETCOUNT, 0, 0));
}

}  // namespace browser
