// File input and output: the operations on paths and buffers, and the
// dispatch from a probed picture to its decoder.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "framework/win32/MemoryHandles.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ImagingInternal.h"

namespace imaging {

namespace detail {

ScopedBitmap::~ScopedBitmap() {
    FreeBitmap(&bitmap_);
}

BitmapDescriptor ScopedBitmap::Release() {
    const BitmapDescriptor result = bitmap_;
    bitmap_ = BitmapDescriptor{};
    return result;
}

int32_t Dpi(double value) {
    if (!(value > 0.0) || value > 1e6) return 0;
    return static_cast<int32_t>(std::lround(value));
}

void BeginInfo(FileInfo* info, int32_t format, const char* name, size_t fileSize) {
    std::memset(info, 0, sizeof *info);
    info->structSize = sizeof *info;
    info->format = format;
    info->pageCount = 1;
    info->fileSize = static_cast<uint32_t>(fileSize);
    info->fileOrder = kColorOrderBgr;
    info->viewPerspective = kViewTopLeft;
    std::strncpy(info->formatName, name, sizeof info->formatName - 1);
}

int DeliverBitmap(BitmapDescriptor* native, const DecodeRequest& request) {
    ScopedBitmap owned;
    *owned.Get() = *native;
    *native = BitmapDescriptor{};
    const int32_t bits = request.bitsPerPixel == 0 ? owned.Get()->bitsPerPixel : request.bitsPerPixel;
    const bool sameOrder = bits <= 8 || owned.Get()->colorOrder == request.colorOrder;
    if (bits == owned.Get()->bitsPerPixel && sameOrder) {
        *request.bitmap = owned.Release();
        return kSuccess;
    }
    ScopedBitmap converted;
    const int result = kernel::ConvertBitmap(*owned, bits, request.colorOrder, converted.Get());
    if (result != kSuccess) return result;
    *request.bitmap = converted.Release();
    return kSuccess;
}

int DecodePicture(const uint8_t* data, size_t size, const DecodeRequest& request) {
    const PictureProbe probe = ProbePicture(data, size);
    switch (probe.status) {
        case ProbeStatus::kUnknown: return kErrorUnknownFormat;
        case ProbeStatus::kMalformed: return kErrorCorrupt;
        case ProbeStatus::kTooLarge: return kErrorTooLarge;
        case ProbeStatus::kRecognised: break;
    }
    switch (probe.kind) {
        case PictureKind::kEmf:
        case PictureKind::kWmf:
        case PictureKind::kWmfPlaceable: return DecodeMetafile(data, size, probe, request);
        case PictureKind::kBmp: {
            BmpLayout layout;
            if (ReadBmpLayout(data, size, &layout)) return DecodePlainBmp(data, size, layout, request);
            return DecodeWithWic(data, size, probe, request);
        }
        default: return DecodeWithWic(data, size, probe, request);
    }
}

}  // namespace detail

namespace {

bool ValidLoadRequest(int32_t bitsPerPixel, int32_t colorOrder) {
    const bool depth = bitsPerPixel == 0 || bitsPerPixel == 1 || bitsPerPixel == 4 || bitsPerPixel == 8 ||
                       bitsPerPixel == 24 || bitsPerPixel == 32;
    return depth && (colorOrder == kColorOrderBgr || colorOrder == kColorOrderRgb);
}

// Pictures are read whole: the decoders work on memory, and a file that
// changes while it is read cannot then be half-decoded.
int ReadWholeFile(const char* path, std::vector<uint8_t>* bytes) {
    if (path == nullptr || path[0] == '\0') return kErrorInvalidParameter;
    framework::win32::UniqueFile file(
        ::CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                      FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file) return kErrorFileRead;
    LARGE_INTEGER length{};
    if (!::GetFileSizeEx(file.Get(), &length) || length.QuadPart < 0) return kErrorFileRead;
    if (static_cast<uint64_t>(length.QuadPart) > kMaxInputBytes) return kErrorTooLarge;
    bytes->resize(static_cast<size_t>(length.QuadPart));
    size_t done = 0;
    while (done < bytes->size()) {
        DWORD got = 0;
        const DWORD want = static_cast<DWORD>(std::min<size_t>(bytes->size() - done, 1u << 24));
        if (!::ReadFile(file.Get(), bytes->data() + done, want, &got, nullptr)) return kErrorFileRead;
        if (got == 0) return kErrorFileRead;  // the file shrank while being read
        done += got;
    }
    return kSuccess;
}

int LoadFromBytes(const uint8_t* data, size_t size, BitmapDescriptor* bitmap, int32_t bitsPerPixel,
                  int32_t colorOrder) {
    if (size == 0) return kErrorUnknownFormat;
    if (size > kMaxInputBytes) return kErrorTooLarge;
    detail::DecodeRequest request;
    request.bitsPerPixel = bitsPerPixel;
    request.colorOrder = colorOrder;
    request.bitmap = bitmap;
    return detail::DecodePicture(data, size, request);
}

int QueryBytes(const uint8_t* data, size_t size, FileInfo* info) {
    if (size == 0) return kErrorUnknownFormat;
    if (size > kMaxInputBytes) return kErrorTooLarge;
    detail::DecodeRequest request;
    request.info = info;
    return detail::DecodePicture(data, size, request);
}

}  // namespace

int LoadBitmapFile(const char* path, BitmapDescriptor* bitmap, int32_t bitsPerPixel, int32_t colorOrder,
                   const void* options) {
    return detail::Guarded([&] {
        if (bitmap == nullptr || options != nullptr || !ValidLoadRequest(bitsPerPixel, colorOrder))
            return kErrorInvalidParameter;
        std::vector<uint8_t> bytes;
        const int read = ReadWholeFile(path, &bytes);
        if (read != kSuccess) return read;
        return LoadFromBytes(bytes.data(), bytes.size(), bitmap, bitsPerPixel, colorOrder);
    });
}

int LoadBitmapMemory(const void* buffer, BitmapDescriptor* bitmap, int32_t bitsPerPixel, int32_t colorOrder,
                     uint32_t bufferSize, const void* options) {
    return detail::Guarded([&] {
        if (buffer == nullptr || bitmap == nullptr || options != nullptr ||
            !ValidLoadRequest(bitsPerPixel, colorOrder))
            return kErrorInvalidParameter;
        return LoadFromBytes(static_cast<const uint8_t*>(buffer), bufferSize, bitmap, bitsPerPixel,
                             colorOrder);
    });
}

int QueryFileInfo(const char* path, FileInfo* info, uint32_t flags, const void* options) {
    return detail::Guarded([&] {
        if (info == nullptr || flags != 0 || options != nullptr) return kErrorInvalidParameter;
        std::vector<uint8_t> bytes;
        const int read = ReadWholeFile(path, &bytes);
        if (read != kSuccess) return read;
        return QueryBytes(bytes.data(), bytes.size(), info);
    });
}

int QueryMemoryInfo(const void* buffer, FileInfo* info, uint32_t bufferSize, uint32_t flags,
                    const void* options) {
    return detail::Guarded([&] {
        if (buffer == nullptr || info == nullptr || flags != 0 || options != nullptr)
            return kErrorInvalidParameter;
        return QueryBytes(static_cast<const uint8_t*>(buffer), bufferSize, info);
    });
}

int SaveBitmapMemory(HGLOBAL* memory, const BitmapDescriptor* bitmap, int32_t format, int32_t bitsPerPixel,
                     int32_t /*quality: BMP has none*/, uint32_t* size, const void* options) {
    return detail::Guarded([&] {
        if (memory == nullptr || size == nullptr) return kErrorInvalidParameter;
        *memory = nullptr;
        *size = 0;
        if (options != nullptr) return kErrorInvalidParameter;
        if (format != kFormatBmp || bitsPerPixel != 24) return kErrorUnsupported;
        const int check = kernel::CheckBitmap(bitmap);
        if (check != kSuccess) return check;
        const uint64_t total = kernel::Bmp24FileSize(*bitmap);
        if (total == 0 || total > 0xFFFFFFFFu) return kErrorTooLarge;
        framework::win32::UniqueGlobal global(::GlobalAlloc(GMEM_MOVEABLE, static_cast<SIZE_T>(total)));
        if (!global) return kErrorNoMemory;
        {
            framework::win32::GlobalLockView view(global.Get());
            if (!view) return kErrorPlatform;
            const int encoded = kernel::EncodeBmp24(*bitmap, static_cast<uint8_t*>(view.Data()), view.Size());
            if (encoded != kSuccess) return encoded;
        }
        *memory = global.Release();
        *size = static_cast<uint32_t>(total);
        return kSuccess;
    });
}

}  // namespace imaging
