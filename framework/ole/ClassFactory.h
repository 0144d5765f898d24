// The class object of one creatable class of an in-process server. Factories
// are static objects of the module: their references count as objects of
// the module, LockServer as its locks, and neither ever deletes them.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <new>

#include "framework/ole/ComClass.h"

namespace framework::ole {

LUMBREL_COM_CLASS_BEGIN
class ClassFactory : public IClassFactory {
public:
    // Makes a new object and gives the interface `iid` of it; the object
    // starts with the one reference that it hands out.
    using Creator = HRESULT (*)(REFIID iid, void** object);

    ClassFactory(const CLSID& classId, Creator creator) : classId_(classId), creator_(creator) {}
    virtual ~ClassFactory() = default;
    ClassFactory(const ClassFactory&) = delete;
    ClassFactory& operator=(const ClassFactory&) = delete;

    const CLSID& ClassId() const { return classId_; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

private:
    CLSID classId_;
    Creator creator_;
};
LUMBREL_COM_CLASS_END

// DllGetClassObject over a list of factories: the one of `classId`, or
// CLASS_E_CLASSNOTAVAILABLE.
HRESULT GetClassObject(ClassFactory* const* factories, size_t count, REFCLSID classId, REFIID iid,
                       void** object);

// Creates a T with `new`, whose constructor leaves one reference, and hands
// out `iid` of it. The pattern of every Creator.
template <class T, class... Args>
HRESULT CreateComObject(REFIID iid, void** object, Args&&... args) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    try {
        T* created = new T(static_cast<Args&&>(args)...);
        const HRESULT hr = created->QueryInterface(iid, object);
        created->Release();
        return hr;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace framework::ole
