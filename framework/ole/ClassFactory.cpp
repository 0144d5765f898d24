#include "framework/ole/ClassFactory.h"

#include "framework/ole/Barrier.h"
#include "framework/ole/ModuleLock.h"

namespace framework::ole {

namespace {
// Each reference to a factory keeps the module as an object would.
void CountFactoryReference(bool add) {
    if (add)
        LockModule();
    else
        UnlockModule();
}
}  // namespace

HRESULT ClassFactory::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IClassFactory) return E_NOINTERFACE;
    *object = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
}

ULONG ClassFactory::AddRef() {
    CountFactoryReference(true);
    return 2;
}

ULONG ClassFactory::Release() {
    CountFactoryReference(false);
    return 1;
}

HRESULT ClassFactory::CreateInstance(IUnknown* outer, REFIID iid, void** object) {
    return ComBarrier([&] {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        return creator_(iid, object);
    });
}

HRESULT ClassFactory::LockServer(BOOL lock) {
    return ComBarrier([&]() -> HRESULT {
        if (lock)
            LockModule();
        else
            UnlockModule();
        return S_OK;
    });
}

HRESULT GetClassObject(ClassFactory* const* factories, size_t count, REFCLSID classId, REFIID iid,
                       void** object) {
    return ComBarrier([&] {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        for (size_t i = 0; i < count; ++i)
            if (factories[i]->ClassId() == classId) return factories[i]->QueryInterface(iid, object);
        return CLASS_E_CLASSNOTAVAILABLE;
    });
}

}  // namespace framework::ole
