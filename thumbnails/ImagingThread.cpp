// The per-thread state of the imaging layer. A fiber-local slot with a
// callback holds it: the callback runs when the thread ends, on that thread,
// which is where COM must be uninitialised, and it works alike in an
// executable and in the control's module.
#include "thumbnails/ImagingThread.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "thumbnails/Imaging.h"

namespace imaging::detail {

namespace {

using framework::win32::ComPtr;

SRWLOCK g_lock = SRWLOCK_INIT;
DWORD g_slot = FLS_OUT_OF_INDEXES;

// Every thread's state, for ReleaseImagingThreads. Made once and never
// destroyed, so that no destructor order at process exit can reach it.
std::vector<ImagingThread*>& Threads() {
    static auto* threads = new std::vector<ImagingThread*>();
    return *threads;
}

class LockGuard {
public:
    LockGuard() { ::AcquireSRWLockExclusive(&g_lock); }
    ~LockGuard() { ::ReleaseSRWLockExclusive(&g_lock); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;
};

// At process exit other threads have been stopped wherever they were, and
// COM may already be gone: nothing is given back then, the system reclaims
// it with the process.
bool ProcessIsEnding() {
    using Query = BOOLEAN(WINAPI*)();
    static const Query query = reinterpret_cast<Query>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "RtlDllShutdownInProgress")));
    return query != nullptr && query() != FALSE;
}

PixelShape LookUpShape(IWICImagingFactory* factory, const WICPixelFormatGUID& format) {
    struct Known {
        const GUID* format;
        bool indexed;
        bool grey;
        int32_t bits;
    };
    static const Known kLowDepth[] = {
        {&GUID_WICPixelFormat1bppIndexed, true, false, 1}, {&GUID_WICPixelFormat2bppIndexed, true, false, 2},
        {&GUID_WICPixelFormat4bppIndexed, true, false, 4}, {&GUID_WICPixelFormat8bppIndexed, true, false, 8},
        {&GUID_WICPixelFormatBlackWhite, false, true, 1},  {&GUID_WICPixelFormat2bppGray, false, true, 2},
        {&GUID_WICPixelFormat4bppGray, false, true, 4},    {&GUID_WICPixelFormat8bppGray, false, true, 8},
    };
    PixelShape shape;
    for (const Known& known : kLowDepth) {
        if (IsEqualGUID(format, *known.format)) {
            shape.indexed = known.indexed;
            shape.grey = known.grey;
            shape.bits = known.bits;
            return shape;
        }
    }
    ComPtr<IWICComponentInfo> component;
    ComPtr<IWICPixelFormatInfo> info;
    if (SUCCEEDED(factory->CreateComponentInfo(format, component.Put())) && SUCCEEDED(component.As(&info))) {
        UINT bits = 0;
        if (SUCCEEDED(info->GetBitsPerPixel(&bits))) shape.bits = static_cast<int32_t>(bits);
        UINT channels = 0;
        if (SUCCEEDED(info->GetChannelCount(&channels))) shape.channels = channels;
        ComPtr<IWICPixelFormatInfo2> info2;
        BOOL transparency = FALSE;
        if (SUCCEEDED(component.As(&info2)) && SUCCEEDED(info2->SupportsTransparency(&transparency)))
            shape.alpha = transparency != FALSE;
    }
    // Formats whose transparency matters even where the component information
    // does not say so.
    static const GUID* const kAlpha[] = {&GUID_WICPixelFormat32bppBGRA,    &GUID_WICPixelFormat32bppPBGRA,
                                         &GUID_WICPixelFormat32bppRGBA,    &GUID_WICPixelFormat32bppPRGBA,
                                         &GUID_WICPixelFormat64bppRGBA,    &GUID_WICPixelFormat64bppPRGBA,
                                         &GUID_WICPixelFormat16bppBGRA5551};
    for (const GUID* known : kAlpha) {
        if (IsEqualGUID(format, *known)) shape.alpha = true;
    }
    return shape;
}

}  // namespace

bool KeptDecoder::Holds(const uint8_t* data, size_t size) const {
    return frame && size == bytes.size() && size != 0 && std::memcmp(data, bytes.data(), size) == 0;
}

void KeptDecoder::Clear() {
    frame.Reset();
    decoder.Reset();
    stream.Reset();
    bytes.clear();
    bytes.shrink_to_fit();
}

ImagingThread* ImagingThread::Current() {
    DWORD slot = FLS_OUT_OF_INDEXES;
    {
        LockGuard lock;
        if (g_slot == FLS_OUT_OF_INDEXES) g_slot = ::FlsAlloc(&ImagingThread::OnThreadEnd);
        slot = g_slot;
    }
    if (slot == FLS_OUT_OF_INDEXES) return nullptr;
    if (auto* state = static_cast<ImagingThread*>(::FlsGetValue(slot))) return state;
    std::unique_ptr<ImagingThread> made(new (std::nothrow) ImagingThread);
    if (!made) return nullptr;
    if (!made->Start()) {
        made->Stop();
        return nullptr;
    }
    {
        LockGuard lock;
        try {
            Threads().push_back(made.get());
        } catch (...) {
            made->Stop();
            return nullptr;
        }
    }
    if (!::FlsSetValue(slot, made.get())) {
        LockGuard lock;
        auto& threads = Threads();
        threads.erase(std::remove(threads.begin(), threads.end(), made.get()), threads.end());
        made->Stop();
        return nullptr;
    }
    return made.release();
}

size_t ImagingThread::LiveCount() {
    LockGuard lock;
    return Threads().size();
}

bool ImagingThread::Start() {
    threadId_ = ::GetCurrentThreadId();
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    const HRESULT apartment = ::CoGetApartmentType(&type, &qualifier);
    if (apartment == CO_E_NOTINITIALIZED) {
        if (FAILED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return false;
        initialisedCom_ = true;
    } else if (FAILED(apartment)) {
        return false;
    }
    return SUCCEEDED(::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                        IID_IWICImagingFactory, factory_.PutVoid()));
}

void ImagingThread::Stop() {
    kept_.Clear();
    factory_.Reset();
    shapes_.clear();
    if (initialisedCom_ && ::GetCurrentThreadId() == threadId_) ::CoUninitialize();
    initialisedCom_ = false;
}

const PixelShape& ImagingThread::ShapeOf(const WICPixelFormatGUID& format) {
    for (const KnownShape& known : shapes_) {
        if (IsEqualGUID(known.format, format)) return known.shape;
    }
    shapes_.push_back(KnownShape{format, LookUpShape(factory_.Get(), format)});
    return shapes_.back().shape;
}

void WINAPI ImagingThread::OnThreadEnd(void* state) {
    if (state == nullptr || ProcessIsEnding()) return;
    auto* thread = static_cast<ImagingThread*>(state);
    {
        LockGuard lock;
        auto& threads = Threads();
        threads.erase(std::remove(threads.begin(), threads.end(), thread), threads.end());
    }
    thread->Stop();
    delete thread;
}

}  // namespace imaging::detail

namespace imaging {

void ReleaseImagingThreads() {
    using detail::ImagingThread;
    DWORD slot = FLS_OUT_OF_INDEXES;
    {
        detail::LockGuard lock;
        slot = detail::g_slot;
        detail::g_slot = FLS_OUT_OF_INDEXES;
    }
    // Freeing the slot may run the callback for the states of every thread
    // (each then leaves the list); whatever it did not reach goes here.
    if (slot != FLS_OUT_OF_INDEXES) ::FlsFree(slot);
    std::vector<ImagingThread*> rest;
    {
        detail::LockGuard lock;
        rest.swap(detail::Threads());
    }
    for (ImagingThread* thread : rest) {
        thread->Stop();
        delete thread;
    }
}

}  // namespace imaging
