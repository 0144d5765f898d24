#include "framework/ole/PropertyPage.h"

#include "framework/ole/Barrier.h"
#include "framework/ole/Strings.h"

namespace framework::ole {

PropertyPage::PropertyPage(UINT dialogId, UINT captionId) : captionId_(captionId), dialog_(dialogId) {}

PropertyPage::~PropertyPage() {
    dialog_.DestroyWindow();
}

HRESULT PropertyPage::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IPropertyPage) return E_NOINTERFACE;
    *object = static_cast<IPropertyPage*>(this);
    AddRef();
    return S_OK;
}

ULONG PropertyPage::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG PropertyPage::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
}

HRESULT PropertyPage::SetPageSite(IPropertyPageSite* site) {
    return ComBarrier([&] {
        // A site is given once and taken back with null.
        if (site != nullptr && site_) return E_UNEXPECTED;
        site_ = ShareComPtr(site);
        return S_OK;
    });
}

HRESULT PropertyPage::Activate(HWND parent, LPCRECT rect, BOOL) {
    return ComBarrier([&] {
        if (rect == nullptr) return E_POINTER;
        if (dialog_.Handle() != nullptr) return E_UNEXPECTED;
        if (!dialog_.Create(parent)) return E_OUTOFMEMORY;
        ::MoveWindow(dialog_.Handle(), rect->left, rect->top, rect->right - rect->left,
                     rect->bottom - rect->top, TRUE);
        return S_OK;
    });
}

HRESULT PropertyPage::Deactivate() {
    return ComBarrier([&] {
        dialog_.DestroyWindow();
        return S_OK;
    });
}

SIZE PropertyPage::TemplateSize() const {
    // The template's size in pixels depends on its font: the dialog is made
    // once, hidden, under the message-only window to measure it.
    framework::win32::Dialog probe(dialog_.TemplateId());
    SIZE size = {0, 0};
    if (probe.Create(HWND_MESSAGE)) {
        const RECT rect = probe.GetWindowRect();
        size.cx = rect.right - rect.left;
        size.cy = rect.bottom - rect.top;
        probe.DestroyWindow();
    }
    return size;
}

HRESULT PropertyPage::GetPageInfo(PROPPAGEINFO* info) {
    return ComBarrier([&] {
        if (info == nullptr) return E_POINTER;
        const std::string caption = Caption();
        info->cb = sizeof(PROPPAGEINFO);
        info->pszTitle = CoTaskStringFromAnsi(caption);
        if (info->pszTitle == nullptr) return E_OUTOFMEMORY;
        if (dialog_.Handle() != nullptr) {
            const RECT rect = dialog_.GetWindowRect();
            info->size = SIZE{rect.right - rect.left, rect.bottom - rect.top};
        } else {
            info->size = TemplateSize();
        }
        info->pszDocString = nullptr;
        info->pszHelpFile = nullptr;
        info->dwHelpContext = 0;
        return S_OK;
    });
}

HRESULT PropertyPage::SetObjects(ULONG count, IUnknown** objects) {
    return ComBarrier([&] {
        if (count > 0 && objects == nullptr) return E_POINTER;
        std::vector<framework::win32::ComPtr<IUnknown>> kept;
        kept.reserve(count);
        for (ULONG i = 0; i < count; ++i) kept.push_back(ShareComPtr(objects[i]));
        objects_.swap(kept);
        return S_OK;
    });
}

HRESULT PropertyPage::Show(UINT command) {
    return ComBarrier([&]() -> HRESULT {
        if (dialog_.Handle() == nullptr) return E_UNEXPECTED;
        ::ShowWindow(dialog_.Handle(), static_cast<int>(command));
        return S_OK;
    });
}

HRESULT PropertyPage::Move(LPCRECT rect) {
    return ComBarrier([&]() -> HRESULT {
        if (rect == nullptr) return E_POINTER;
        if (dialog_.Handle() == nullptr) return E_UNEXPECTED;
        ::MoveWindow(dialog_.Handle(), rect->left, rect->top, rect->right - rect->left,
                     rect->bottom - rect->top, TRUE);
        return S_OK;
    });
}

HRESULT PropertyPage::IsPageDirty() {
    return ComBarrier([&]() -> HRESULT { return S_FALSE; });
}

HRESULT PropertyPage::Apply() {
    return ComBarrier([&] { return OnApply(); });
}

HRESULT PropertyPage::Help(LPCOLESTR) {
    return E_NOTIMPL;
}

HRESULT PropertyPage::TranslateAccelerator(MSG* msg) {
    return ComBarrier([&]() -> HRESULT {
        if (msg == nullptr) return E_POINTER;
        if (dialog_.Handle() == nullptr) return S_FALSE;
        return ::IsDialogMessageA(dialog_.Handle(), msg) ? S_OK : S_FALSE;
    });
}

std::string PropertyPage::Caption() const {
    char text[256] = {};
    const int length =
        ::LoadStringA(framework::win32::ResourceModule(), captionId_, text, static_cast<int>(sizeof text));
    return std::string(text, length > 0 ? static_cast<size_t>(length) : 0);
}

}  // namespace framework::ole
