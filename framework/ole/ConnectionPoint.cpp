#include "framework/ole/ConnectionPoint.h"
#include "framework/ole/ComClass.h"

#include <olectl.h>

#include <new>

#include "framework/ole/Barrier.h"
#include "framework/ole/ModuleLock.h"

namespace framework::ole {

using framework::win32::ComPtr;

namespace {

struct ConnectDataTraits {
    using Element = CONNECTDATA;
    static void AddRef(const CONNECTDATA& data) {
        if (data.pUnk != nullptr) data.pUnk->AddRef();
    }
    static void Release(const CONNECTDATA& data) {
        if (data.pUnk != nullptr) data.pUnk->Release();
    }
};

struct ConnectionPointTraits {
    using Element = IConnectionPoint*;
    static void AddRef(IConnectionPoint* point) {
        if (point != nullptr) point->AddRef();
    }
    static void Release(IConnectionPoint* point) {
        if (point != nullptr) point->Release();
    }
};

// A snapshot enumerator: it holds a reference to each element for as long as
// it lives, and hands out one more with each element it returns.
LUMBREL_COM_CLASS_BEGIN
template <class Interface, class Traits>
class Enumerator : public Interface {
public:
    using Element = typename Traits::Element;

    explicit Enumerator(std::vector<Element> elements, size_t position = 0)
        : elements_(std::move(elements)), position_(position) {
        for (const Element& element : elements_) Traits::AddRef(element);
    }
    virtual ~Enumerator() {
        for (const Element& element : elements_) Traits::Release(element);
    }
    Enumerator(const Enumerator&) = delete;
    Enumerator& operator=(const Enumerator&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (iid == IID_IUnknown || iid == __uuidof(Interface)) {
            *object = static_cast<Interface*>(this);
            AddRef();
            return S_OK;
        }
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        return static_cast<ULONG>(InterlockedIncrement(&references_));
    }
    ULONG STDMETHODCALLTYPE Release() override {
        const LONG left = InterlockedDecrement(&references_);
        if (left == 0) delete this;
        return static_cast<ULONG>(left);
    }

    HRESULT STDMETHODCALLTYPE Next(ULONG count, Element* out, ULONG* fetched) override {
        try {
            if (out == nullptr) return E_POINTER;
            if (count > 1 && fetched == nullptr) return E_POINTER;
            ULONG done = 0;
            while (done < count && position_ < elements_.size()) {
                out[done] = elements_[position_++];
                Traits::AddRef(out[done]);
                ++done;
            }
            if (fetched != nullptr) *fetched = done;
            return done == count ? S_OK : S_FALSE;
        } catch (...) {
            return E_UNEXPECTED;
        }
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        const size_t left = elements_.size() - position_;
        if (count > left) {
            position_ = elements_.size();
            return S_FALSE;
        }
        position_ += count;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        position_ = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(Interface** copy) override {
        try {
            if (copy == nullptr) return E_POINTER;
            *copy = new Enumerator(elements_, position_);
            return S_OK;
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }

private:
    ObjectCounter counter_;
    LONG references_ = 1;
    std::vector<Element> elements_;
    size_t position_;
};
LUMBREL_COM_CLASS_END

}  // namespace

ConnectionPoint::ConnectionPoint(IConnectionPointContainer* container, const IID& eventsId)
    : container_(container), eventsId_(eventsId) {}

ConnectionPoint::~ConnectionPoint() = default;

HRESULT ConnectionPoint::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (iid == IID_IUnknown || iid == IID_IConnectionPoint) {
        *object = static_cast<IConnectionPoint*>(this);
        AddRef();
        return S_OK;
    }
    return E_NOINTERFACE;
}

ULONG ConnectionPoint::AddRef() {
    return container_->AddRef();
}

ULONG ConnectionPoint::Release() {
    return container_->Release();
}

HRESULT ConnectionPoint::GetConnectionInterface(IID* iid) {
    return ComBarrier([&]() -> HRESULT {
        if (iid == nullptr) return E_POINTER;
        *iid = eventsId_;
        return S_OK;
    });
}

HRESULT ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    return ComBarrier([&]() -> HRESULT {
        if (container == nullptr) return E_POINTER;
        *container = container_;
        container_->AddRef();
        return S_OK;
    });
}

HRESULT ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
    try {
        if (cookie == nullptr) return E_POINTER;
        *cookie = 0;
        if (sink == nullptr) return E_POINTER;
        // A sink speaks the events dispinterface; one that only admits to
        // IDispatch is taken too, since the events are plain Invoke calls.
        ComPtr<IDispatch> dispatch;
        if (FAILED(sink->QueryInterface(eventsId_, dispatch.PutVoid())) &&
            FAILED(sink->QueryInterface(IID_IDispatch, dispatch.PutVoid())))
            return CONNECT_E_CANNOTCONNECT;
        if (nextCookie_ == 0) return CONNECT_E_ADVISELIMIT;
        sinks_.push_back(Sink{nextCookie_, std::move(dispatch)});
        *cookie = nextCookie_++;
        return S_OK;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

HRESULT ConnectionPoint::Unadvise(DWORD cookie) {
    try {
        for (auto it = sinks_.begin(); it != sinks_.end(); ++it) {
            if (it->cookie == cookie) {
                // Released after the list no longer holds it: the sink's
                // Release may call back into this point.
                ComPtr<IDispatch> gone = std::move(it->dispatch);
                sinks_.erase(it);
                return S_OK;
            }
        }
        return CONNECT_E_NOCONNECTION;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

HRESULT ConnectionPoint::EnumConnections(IEnumConnections** connections) {
    try {
        if (connections == nullptr) return E_POINTER;
        *connections = nullptr;
        std::vector<CONNECTDATA> data;
        data.reserve(sinks_.size());
        for (const Sink& sink : sinks_) data.push_back(CONNECTDATA{sink.dispatch.Get(), sink.cookie});
        *connections = new Enumerator<IEnumConnections, ConnectDataTraits>(std::move(data));
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

void ConnectionPoint::Fire(DISPID dispid, DISPPARAMS* params) {
    std::vector<ComPtr<IDispatch>> targets;
    targets.reserve(sinks_.size());
    for (const Sink& sink : sinks_) targets.push_back(sink.dispatch.Copy());
    for (const ComPtr<IDispatch>& target : targets) {
        EXCEPINFO exception = {};
        UINT argError = 0;
        target->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, params, nullptr, &exception,
                       &argError);
        ::SysFreeString(exception.bstrSource);
        ::SysFreeString(exception.bstrDescription);
        ::SysFreeString(exception.bstrHelpFile);
    }
}

void ConnectionPoint::DisconnectAll() {
    std::vector<Sink> gone;
    gone.swap(sinks_);
}

HRESULT CreateConnectionPointEnumerator(const std::vector<IConnectionPoint*>& points,
                                        IEnumConnectionPoints** enumerator) {
    try {
        if (enumerator == nullptr) return E_POINTER;
        *enumerator = new Enumerator<IEnumConnectionPoints, ConnectionPointTraits>(points);
        return S_OK;
    } catch (...) {
        if (enumerator != nullptr) *enumerator = nullptr;
        return E_OUTOFMEMORY;
    }
}

}  // namespace framework::ole
