// One outgoing dispinterface of a connectable object: sinks advise with a
// cookie and are called synchronously, in the order in which they connected.
// The connection point lives inside its container and shares its reference
// count, as a tear-off of the container would.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include <vector>

#include "framework/ole/ComClass.h"
#include "framework/win32/ComPtr.h"

namespace framework::ole {

LUMBREL_COM_CLASS_BEGIN
class ConnectionPoint : public IConnectionPoint {
public:
    ConnectionPoint(IConnectionPointContainer* container, const IID& eventsId);
    virtual ~ConnectionPoint();
    ConnectionPoint(const ConnectionPoint&) = delete;
    ConnectionPoint& operator=(const ConnectionPoint&) = delete;

    // IUnknown, delegated to the container.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // IConnectionPoint
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) override;
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer** container) override;
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override;
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** connections) override;

    const IID& EventsId() const { return eventsId_; }
    size_t SinkCount() const { return sinks_.size(); }

    // Calls IDispatch::Invoke(dispid, DISPATCH_METHOD, params) on every sink
    // connected when the call begins; a sink that disconnects or connects
    // another during the call changes nothing for this event.
    void Fire(DISPID dispid, DISPPARAMS* params);
    // Drops every sink, as the container does when it goes away.
    void DisconnectAll();

private:
    struct Sink {
        DWORD cookie;
        framework::win32::ComPtr<IDispatch> dispatch;
    };
    IConnectionPointContainer* container_;
    IID eventsId_;
    std::vector<Sink> sinks_;
    DWORD nextCookie_ = 1;
};
LUMBREL_COM_CLASS_END

// IEnumConnectionPoints over a fixed list of points of one container.
HRESULT CreateConnectionPointEnumerator(const std::vector<IConnectionPoint*>& points,
                                        IEnumConnectionPoints** enumerator);

}  // namespace framework::ole
