// What the host is told. Every selection reaches it as one GraphicItemInfo
// through ItemSel; this file holds the gallery-click and double-click roads.
// The item number within a container is the cell's position plus one, which
// is the entry's number only as long as no rendition was skipped.
#include <vector>

#include "browser/GraphicDlg.h"
#include "browser/PathExists.h"
#include "browser/PreviewRender.h"
#include "browser/SelectionTarget.h"
#include "browser/WaitCursor.h"
#include "foundation/ReportError.h"

namespace browser {

void CGraphicDlg::FireItemSel(GraphicItemInfo& info) {
    if (events_ != nullptr) events_->FireItemSel(info);
}

void CGraphicDlg::OnGalleryCommand() {
    try {
        if (gallery && gallery->Handle() != nullptr) ::SetFocus(gallery->Handle());
        GraphicItemInfo record = EmptyItemInfo();
        // The hourglass stays until the next cursor update.
        BeginWaitCursor();
        const int current = gallery ? gallery->CurrentIndex() : -1;
        const std::string path = GetSelectedPath();
        const std::string container = path + kContainerExtension;
        if (!PathExistsOnDisk(container)) {
            record.itemNumber = 1;
            CopyToField(record.path, sizeof record.path, path);
        } else {
            record.itemNumber = current + 1;
            CopyToField(record.path, sizeof record.path, container);
        }
        record.valid = 1;
        itemInfo = record;
        FireItemSel(record);
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
}

void CGraphicDlg::PrepareDoubleClick() {
    std::string path;
    try {
        path = GetSelectedPath();
    } catch (...) {
        return;
    }
    PrepareDoubleClick(path);
}

void CGraphicDlg::PrepareDoubleClick(const std::string& path) {
    std::vector<uint8_t> buffer;
    try {
        GraphicItemInfo record = EmptyItemInfo();
        // A container's node has no extension in the tree: it does not exist
        // as it stands, and a double click on it delivers nothing by itself.
        if (!PathExistsOnDisk(path)) return;
        PreviewRequest request;
        if (!ReadPictureRequest(path, request, buffer)) {
            // A directory: nothing is selected.
            itemInfo = record;
            return;
        }
        // The render tells the host of the picture (item number 0) before it returns.
        RenderPicture(path, request);
        // The picture's ItemSel has gone out: the window may be gone.
        if (!WindowSurvived()) return;
        currentPath = path;
        record.itemNumber = 1;
        CopyToField(record.name, sizeof record.name, PreviewFileNamePart(path));
        CopyToField(record.path, sizeof record.path, path);
        record.valid = 1;
        itemInfo = record;
        if (gallery) gallery->SetSelection(0);
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
}

}  // namespace browser
