// What the persistence tests save the control into and load it from: a
// growing stream in memory, and the part of a property bag that does not
// change from one kind of bag to another.
#pragma once

#include <ole2.h>

#include "OleTestSupport.h"
#include "framework/ole/ComClass.h"

namespace controltest {

inline ComPtr<IStream> NewStream() {
    ComPtr<IStream> stream;
    ::CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    return stream;
}

// Back to the start, for a load of what was saved or written.
inline void Rewind(IStream* stream) {
    LARGE_INTEGER start = {};
    stream->Seek(start, STREAM_SEEK_SET, nullptr);
}

LUMBREL_COM_CLASS_BEGIN
// A bag that lives on the test's stack: the control only borrows it while it
// loads or saves, so its references are not counted.
class StackPropertyBag : public IPropertyBag {
public:
    virtual ~StackPropertyBag() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (iid != IID_IUnknown && iid != IID_IPropertyBag) return E_NOINTERFACE;
        *object = static_cast<IPropertyBag*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
};
LUMBREL_COM_CLASS_END

}  // namespace controltest
