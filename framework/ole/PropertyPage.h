// A property page object: IPropertyPage around a child dialog template of
// the resource module, with its caption from the string table. A page with
// controls bound to properties derives from it and overrides OnApply; the
// base applies nothing and is never dirty.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include <string>
#include <vector>

#include "framework/ole/ComClass.h"
#include "framework/ole/ModuleLock.h"
#include "framework/win32/ComPtr.h"
#include "framework/win32/Dialog.h"

namespace framework::ole {

LUMBREL_COM_CLASS_BEGIN
class PropertyPage : public IPropertyPage {
public:
    PropertyPage(UINT dialogId, UINT captionId);
    virtual ~PropertyPage();
    PropertyPage(const PropertyPage&) = delete;
    PropertyPage& operator=(const PropertyPage&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE SetPageSite(IPropertyPageSite* site) override;
    HRESULT STDMETHODCALLTYPE Activate(HWND parent, LPCRECT rect, BOOL modal) override;
    HRESULT STDMETHODCALLTYPE Deactivate() override;
    HRESULT STDMETHODCALLTYPE GetPageInfo(PROPPAGEINFO* info) override;
    HRESULT STDMETHODCALLTYPE SetObjects(ULONG count, IUnknown** objects) override;
    HRESULT STDMETHODCALLTYPE Show(UINT command) override;
    HRESULT STDMETHODCALLTYPE Move(LPCRECT rect) override;
    HRESULT STDMETHODCALLTYPE IsPageDirty() override;
    HRESULT STDMETHODCALLTYPE Apply() override;
    HRESULT STDMETHODCALLTYPE Help(LPCOLESTR helpDirectory) override;
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG* msg) override;

    // The caption, from the string table.
    std::string Caption() const;
    // The page's window while it is active.
    HWND PageWindow() const { return dialog_.Handle(); }
    size_t ObjectCount() const { return objects_.size(); }

protected:
    // Writes the page's controls to the objects; the base has none.
    virtual HRESULT OnApply() { return S_OK; }

private:
    SIZE TemplateSize() const;

    ObjectCounter counter_;
    LONG references_ = 1;
    UINT captionId_;
    framework::win32::Dialog dialog_;
    framework::win32::ComPtr<IPropertyPageSite> site_;
    std::vector<framework::win32::ComPtr<IUnknown>> objects_;
};
LUMBREL_COM_CLASS_END

}  // namespace framework::ole
