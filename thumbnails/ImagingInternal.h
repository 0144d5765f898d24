// Shared between the Windows sources of the imaging layer; not part of its
// interface.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <new>

#include "thumbnails/BitmapDescriptor.h"
#include "thumbnails/BmpReader.h"
#include "thumbnails/PictureProbe.h"

namespace imaging::detail {

// What a load asks for; `info` and `bitmap` may each be null (a query fills
// only `info`).
struct DecodeRequest {
    int32_t bitsPerPixel = 0;  // 0: the file's own depth
    int32_t colorOrder = kColorOrderBgr;
    FileInfo* info = nullptr;
    BitmapDescriptor* bitmap = nullptr;
};

// Probes the bytes and hands them to the decoder for their kind.
int DecodePicture(const uint8_t* data, size_t size, const DecodeRequest& request);

int DecodeWithWic(const uint8_t* data, size_t size, const PictureProbe& probe, const DecodeRequest& request);
int DecodePlainBmp(const uint8_t* data, size_t size, const BmpLayout& layout, const DecodeRequest& request);
int DecodeMetafile(const uint8_t* data, size_t size, const PictureProbe& probe, const DecodeRequest& request);

// A resolution as the layer records it: whole dots per inch, 0 when unknown.
int32_t Dpi(double value);

// Starts a FileInfo: zero-filled, with the fields every format shares.
void BeginInfo(FileInfo* info, int32_t format, const char* name, size_t fileSize);

// Moves a decoded picture (`native`, at the depth the decoder gave) into the
// request's bitmap at the asked depth and order, converting when they differ.
// `native` is given back either way.
int DeliverBitmap(BitmapDescriptor* native, const DecodeRequest& request);

// Runs an operation body; an exception that still reaches here becomes a result.
template <class Body>
int Guarded(Body body) noexcept {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return kErrorNoMemory;
    } catch (...) {
        return kErrorPlatform;
    }
}

// A descriptor owned by a scope: given back unless released.
class ScopedBitmap {
public:
    ScopedBitmap() = default;
    ~ScopedBitmap();
    ScopedBitmap(const ScopedBitmap&) = delete;
    ScopedBitmap& operator=(const ScopedBitmap&) = delete;

    BitmapDescriptor* Get() { return &bitmap_; }
    const BitmapDescriptor& operator*() const { return bitmap_; }
    // The descriptor, which the caller now owns; this scope holds nothing.
    BitmapDescriptor Release();

private:
    BitmapDescriptor bitmap_{};
};

}  // namespace imaging::detail
