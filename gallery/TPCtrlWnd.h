// The toolkit's base class for a child control: its owner link, a serial
// number, owned odds and ends, and the prompt and tool tip texts that come
// from the string resource of the control's id.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "framework/RuntimeClass.h"
#include "framework/win32/Window.h"
#include "gallery/OwnerLink.h"

namespace gallery {

class CTPCtrlWnd : public framework::win32::Window {
    LUMBREL_DECLARE_RUNTIME_CLASS(CTPCtrlWnd)

public:
    // A control on a palette page, as dynamic creation makes it.
    CTPCtrlWnd() : CTPCtrlWnd(2) {}
    explicit CTPCtrlWnd(int ownerKind);
    ~CTPCtrlWnd() override;

    OwnerLink& GetOwnerLink() { return ownerLink; }
    const OwnerLink& GetOwnerLink() const { return ownerLink; }
    int GetUniqueId() const { return uniqueId; }
    bool IsCreated() const { return created != FALSE; }
    int GetLastAction() const { return lastAction; }

    void NotifyOwner(framework::win32::CommandTarget* target, UINT id, int code) const {
        ownerLink.NotifyOwner(target, id, code);
    }
    void PostNotifyOwner(framework::win32::Window* target, UINT id, int code) const {
        ownerLink.PostNotifyOwner(target, id, code);
    }
    void ReturnFocus() const { ownerLink.ReturnFocus(); }
    framework::win32::Window* FindActiveView() const { return ownerLink.FindActiveView(); }

    // Owned extras: the attachment is deleted through its virtual
    // destructor, the blocks (from the last to the first) with operator delete.
    void SetAttachment(std::unique_ptr<framework::Object> object) { attachment = std::move(object); }
    void AddBlock(void* block) { blocks.push_back(block); }

    virtual void OnUpdateCmdUI(framework::win32::Window* target, BOOL disableIfNoHandler);
    // The string resource of the control's id, before its first newline.
    virtual std::string GetPromptText() const;
    // The control's window rectangle on the screen; `index` is not looked at.
    virtual void GetToolRect(int index, RECT* rect) const;
    virtual int GetToolRectCount() const;
    // Empty until the window is created; then the string resource of the
    // control's id, after its first newline. The point is not looked at.
    virtual std::string GetToolTipText(int x, int y) const;

    BOOL PreTranslateMessage(MSG* msg) override;

protected:
    int OnCreate(CREATESTRUCTA* create) override;

    OwnerLink ownerLink;
    int uniqueId;
    std::unique_ptr<framework::Object> attachment;
    std::vector<void*> blocks;
    int lastAction = 0;
    BOOL created = FALSE;

private:
    // The string resource whose id is the control's id, or the empty text.
    std::string LoadIdText() const;
    ToolTipSite* ParentToolTipSite() const;
};

// The shared control font: made once; never deleted by a caller.
HFONT GetControlFont();
// The palette font around the stock GUI font, attached by the first palette
// page; null before that.
HFONT GetDefaultGuiFont();
void AttachDefaultGuiFont();

// The value the next control's serial number will be taken from; for tests.
int PeekNextUniqueId();

}  // namespace gallery
