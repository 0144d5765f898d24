// What the imaging layer keeps for each thread that decodes: COM, the WIC
// factory, the shapes of the pixel formats met so far and the decoder of the
// last picture queried. Not part of the layer's interface.
//
// Making a factory (and initialising COM for it) costs far more than decoding
// a small picture, and a gallery decodes a thousand of them in a row, so all
// of it is made on the first decode of a thread and kept until the thread
// ends. COM is initialised only on a thread that has not done so itself: a
// host's thread keeps the apartment it chose. Where the layer initialised it,
// it is balanced once, when the thread ends. State is per thread because WIC
// objects are used on the thread that made them and two user-interface
// threads may each host a control.
#pragma once

#include <windows.h>

#include <wincodec.h>

#include <cstdint>
#include <vector>

#include "framework/win32/ComPtr.h"

namespace imaging {
void ReleaseImagingThreads();
}

namespace imaging::detail {

// How a WIC pixel format is taken in.
struct PixelShape {
    bool indexed = false;  // palette indices
    bool grey = false;     // grey levels, a ramp of 2^bits
    int32_t bits = 0;      // as stored
    bool alpha = false;
    uint32_t channels = 0;  // as the component information tells; 0 when it does not
};

// A query's decoder, kept for the load of the same bytes that usually follows.
struct KeptDecoder {
    std::vector<uint8_t> bytes;  // the stream reads this copy
    framework::win32::ComPtr<IWICStream> stream;
    framework::win32::ComPtr<IWICBitmapDecoder> decoder;
    framework::win32::ComPtr<IWICBitmapFrameDecode> frame;

    bool Holds(const uint8_t* data, size_t size) const;
    void Clear();
};

class ImagingThread {
public:
    // The calling thread's state, made on first use; null when it cannot be
    // made (no memory, COM unusable on this thread).
    static ImagingThread* Current();

    IWICImagingFactory* Factory() { return factory_.Get(); }
    // The shape of `format`, asked of the component registry once per format.
    const PixelShape& ShapeOf(const WICPixelFormatGUID& format);
    KeptDecoder& Kept() { return kept_; }
    // Threads whose state is alive; for tests that check it ends with them.
    static size_t LiveCount();

    ImagingThread() = default;
    ~ImagingThread() = default;
    ImagingThread(const ImagingThread&) = delete;
    ImagingThread& operator=(const ImagingThread&) = delete;

private:
    bool Start();
    // Lets go of the COM objects and, on the thread that initialised COM,
    // balances that initialisation.
    void Stop();
    static void WINAPI OnThreadEnd(void* state);
    friend void ::imaging::ReleaseImagingThreads();

    struct KnownShape {
        WICPixelFormatGUID format;
        PixelShape shape;
    };
    DWORD threadId_ = 0;
    bool initialisedCom_ = false;
    framework::win32::ComPtr<IWICImagingFactory> factory_;
    std::vector<KnownShape> shapes_;
    KeptDecoder kept_;
};

}  // namespace imaging::detail
