// What the preview tests share: a plain window that records the preview
// messages it receives, the error log captured line by line, pictures made
// with WIC and GDI, and reading pixels of a bitmap descriptor. Windows only.
#pragma once

#include <wincodec.h>
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "browser/PreviewRender.h"
#include "foundation/ReportError.h"
#include "framework/win32/ComPtr.h"
#include "framework/win32/GdiHandles.h"
#include "framework/win32/MemoryHandles.h"
#include "support/PictureFactory.h"
#include "thumbnails/BitmapKernel.h"
#include "thumbnails/Imaging.h"

namespace previewtest {

using Bytes = std::vector<uint8_t>;
using framework::win32::ComPtr;

// ---- The receiving window --------------------------------------------------------

// A top-level window that is never shown. For each message it keeps a copy of
// the record as it arrived and answers as told.
class PreviewReceiver {
public:
    enum class Answer {
        kTake,            // keeps the pixels (freed by this object) and answers kPreviewTaken
        kTakeAnswering7,  // keeps the pixels and answers another non-zero value
        kDecline,         // answers 0, leaving the pixels to the renderer
        kCopyAndDecline,  // keeps a copy of the pixels of its own, answers 0
    };

    struct Received {
        WPARAM wParam = 0;
        bool hadRecord = false;
        browser::PreviewBitmapRecord record{};  // as it arrived
        imaging::BitmapDescriptor pixels{};     // owned here: taken or copied, else empty
    };

    explicit PreviewReceiver(Answer answer = Answer::kTake) : answer_(answer) {
        static const ATOM windowClass = RegisterClass();
        window_ = ::CreateWindowExA(0, reinterpret_cast<LPCSTR>(static_cast<ULONG_PTR>(windowClass)),
                                    "preview", WS_OVERLAPPEDWINDOW, 0, 0, 100, 100, nullptr, nullptr,
                                    ::GetModuleHandleA(nullptr), this);
    }
    ~PreviewReceiver() {
        FreeAll();
        if (window_ != nullptr) ::DestroyWindow(window_);
    }
    PreviewReceiver(const PreviewReceiver&) = delete;
    PreviewReceiver& operator=(const PreviewReceiver&) = delete;

    HWND Handle() const { return window_; }
    void SetAnswer(Answer answer) { answer_ = answer; }
    const std::vector<Received>& Messages() const { return received_; }
    size_t Count() const { return received_.size(); }
    const Received& Last() const { return received_.back(); }
    const imaging::BitmapDescriptor& LastPixels() const { return received_.back().pixels; }

    void FreeAll() {
        for (Received& message : received_) imaging::FreeBitmap(&message.pixels);
        received_.clear();
    }

private:
    static ATOM RegisterClass() {
        WNDCLASSA windowClass{};
        windowClass.lpfnWndProc = &Procedure;
        windowClass.hInstance = ::GetModuleHandleA(nullptr);
        windowClass.lpszClassName = "LumbrelPreviewReceiver";
        return ::RegisterClassA(&windowClass);
    }

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_NCCREATE) {
            const auto* create = reinterpret_cast<const CREATESTRUCTA*>(lParam);
            ::SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
        }
        auto* self = reinterpret_cast<PreviewReceiver*>(::GetWindowLongPtrA(window, GWLP_USERDATA));
        if (self != nullptr && message == browser::kPreviewReadyMessage)
            return self->OnPreview(wParam, lParam);
        return ::DefWindowProcA(window, message, wParam, lParam);
    }

    LRESULT OnPreview(WPARAM wParam, LPARAM lParam) {
        Received message;
        message.wParam = wParam;
        const auto* record = reinterpret_cast<const browser::PreviewBitmapRecord*>(lParam);
        message.hadRecord = record != nullptr;
        if (record != nullptr) std::memcpy(&message.record, record, sizeof *record);
        LRESULT answer = 0;
        if (record != nullptr) {
            switch (answer_) {
                case Answer::kTake:
                    message.pixels = record->bitmap;
                    answer = browser::kPreviewTaken;
                    break;
                case Answer::kTakeAnswering7:
                    message.pixels = record->bitmap;
                    answer = 7;
                    break;
                case Answer::kCopyAndDecline: imaging::CopyBitmap(&message.pixels, &record->bitmap); break;
                case Answer::kDecline: break;
            }
        }
        received_.push_back(message);
        return answer;
    }

    Answer answer_;
    HWND window_ = nullptr;
    std::vector<Received> received_;
};

// ---- The error log ---------------------------------------------------------------

// Every line composed while the object lives.
class LogCapture {
public:
    LogCapture() : scope_([this](const std::string& line) { lines_.push_back(line); }) {}
    const std::vector<std::string>& Lines() const { return lines_; }
    void Clear() { lines_.clear(); }

private:
    std::vector<std::string> lines_;
    foundation::ScopedErrorLineHandler scope_;
};

// ---- Requests ----------------------------------------------------------------------

// No file data at all.
inline const Bytes kNoData;

// The request points into `data`, which must outlive it.
inline browser::PreviewRequest MakeRequest(const std::string& fileName, const Bytes& data, int32_t size,
                                           HWND target) {
    browser::PreviewRequest request;
    std::memset(&request, 0, sizeof request);
    request.dataLength = static_cast<uint32_t>(data.size());
    request.thumbnailSize = size;
    // A name of 512 characters or more fills the field without a terminator.
    std::memcpy(request.fileName, fileName.data(), std::min(fileName.size(), sizeof request.fileName));
    request.fileData = data.empty() ? nullptr : data.data();
    request.targetWindow = target;
    return request;
}
browser::PreviewRequest MakeRequest(const std::string& fileName, Bytes&& data, int32_t size,
                                    HWND target) = delete;

// ---- Pixels -------------------------------------------------------------------------

struct Bgr {
    uint8_t b, g, r;
};

// A pixel of a 24-bit blue-green-red descriptor (rows top-down).
inline Bgr PixelAt(const imaging::BitmapDescriptor& bitmap, int x, int y) {
    const auto* row =
        static_cast<const uint8_t*>(bitmap.storage) + static_cast<size_t>(y) * bitmap.bytesPerLine;
    const uint8_t* p = row + static_cast<size_t>(x) * 3;
    return Bgr{p[0], p[1], p[2]};
}

inline bool IsWhite(Bgr pixel) {
    return pixel.b == 255 && pixel.g == 255 && pixel.r == 255;
}
// Ink: darker than the middle of the grey scale in every channel, so that the
// faint edge of a smoothed glyph does not count.
inline bool IsDark(Bgr pixel) {
    return pixel.b < 128 && pixel.g < 128 && pixel.r < 128;
}

struct InkBox {
    bool any = false;
    int left = 0, top = 0, right = 0, bottom = 0;  // inclusive
};

// The box around the dark pixels inside [x0, x1) x [y0, y1).
inline InkBox FindInk(const imaging::BitmapDescriptor& bitmap, int x0, int y0, int x1, int y1) {
    InkBox box;
    for (int y = y0; y < y1 && y < bitmap.height; ++y)
        for (int x = x0; x < x1 && x < bitmap.width; ++x) {
            if (!IsDark(PixelAt(bitmap, x, y))) continue;
            if (!box.any) {
                box = InkBox{true, x, y, x, y};
            } else {
                if (x < box.left) box.left = x;
                if (x > box.right) box.right = x;
                if (y < box.top) box.top = y;
                if (y > box.bottom) box.bottom = y;
            }
        }
    return box;
}

inline size_t CountDark(const imaging::BitmapDescriptor& bitmap) {
    size_t count = 0;
    for (int y = 0; y < bitmap.height; ++y)
        for (int x = 0; x < bitmap.width; ++x) count += IsDark(PixelAt(bitmap, x, y)) ? 1 : 0;
    return count;
}

// ---- Pictures by WIC ------------------------------------------------------------------

// A picture of width x height in the container format, from 24-bit rows
// (blue, green, red; top-down; `stride` bytes apart). Empty on failure.
inline Bytes EncodeBgr24(const GUID& container, uint32_t width, uint32_t height, const Bytes& rows,
                         uint32_t stride) {
    return picturefactory::Encode(container, GUID_WICPixelFormat24bppBGR, width, height, rows, stride).bytes;
}

inline uint32_t Stride24(uint32_t width) {
    return (width * 24 + 31) / 32 * 4;
}

// A picture with a black left half and a white right half: easy to recognise
// after a decode, also a lossy one.
inline Bytes HalfBlackRows(uint32_t width, uint32_t height) {
    const uint32_t stride = Stride24(width);
    Bytes rows(static_cast<size_t>(stride) * height, 0);
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const uint8_t value = x < width / 2 ? 0 : 255;
            uint8_t* p = rows.data() + static_cast<size_t>(y) * stride + 3 * x;
            p[0] = p[1] = p[2] = value;
        }
    return rows;
}

inline Bytes HalfBlackPicture(const GUID& container, uint32_t width, uint32_t height) {
    return EncodeBgr24(container, width, height, HalfBlackRows(width, height), Stride24(width));
}

inline void Put16(Bytes& out, uint32_t value) {
    out.push_back(static_cast<uint8_t>(value));
    out.push_back(static_cast<uint8_t>(value >> 8));
}
inline void Put32(Bytes& out, uint32_t value) {
    Put16(out, value & 0xFFFF);
    Put16(out, value >> 16);
}

// A 1-bit BMP file with the two palette colours given (0x00RRGGBB), its left
// half of colour 0 and its right half of colour 1.
inline Bytes OneBitBmp(int32_t width, int32_t height, uint32_t color0, uint32_t color1) {
    const uint32_t stride = (static_cast<uint32_t>(width) + 31) / 32 * 4;
    const uint32_t bitsSize = stride * static_cast<uint32_t>(height);
    const uint32_t offset = 14 + 40 + 8;
    Bytes out;
    out.push_back('B');
    out.push_back('M');
    Put32(out, offset + bitsSize);
    Put32(out, 0);
    Put32(out, offset);
    Put32(out, 40);
    Put32(out, static_cast<uint32_t>(width));
    Put32(out, static_cast<uint32_t>(height));
    Put16(out, 1);
    Put16(out, 1);
    Put32(out, 0);
    Put32(out, bitsSize);
    Put32(out, 2835);
    Put32(out, 2835);
    Put32(out, 2);
    Put32(out, 2);
    Put32(out, color0);
    Put32(out, color1);
    for (int32_t y = 0; y < height; ++y) {
        Bytes row(stride, 0);
        for (int32_t x = width / 2; x < width; ++x) row[static_cast<size_t>(x / 8)] |= 0x80 >> (x % 8);
        out.insert(out.end(), row.begin(), row.end());
    }
    return out;
}

// ---- Metafiles by GDI -------------------------------------------------------------------

// The bits of a Windows metafile (its own header first) recorded with
// CreateMetaFileA: a window of `extent` x `extent` units and what `draw` puts
// into it.
inline Bytes RecordWindowsMetafile(int extent, const std::function<void(HDC)>& draw) {
    const HDC recorder = ::CreateMetaFileA(nullptr);
    if (recorder == nullptr) return {};
    ::SetMapMode(recorder, MM_ANISOTROPIC);
    ::SetWindowOrgEx(recorder, 0, 0, nullptr);
    ::SetWindowExtEx(recorder, extent, extent, nullptr);
    draw(recorder);
    framework::win32::UniqueMetaFile metafile(::CloseMetaFile(recorder));
    if (!metafile) return {};
    const UINT size = ::GetMetaFileBitsEx(metafile.Get(), 0, nullptr);
    Bytes bits(size);
    if (size == 0 || ::GetMetaFileBitsEx(metafile.Get(), size, bits.data()) != size) return {};
    return bits;
}

// A black square in the middle of a window of 100 units.
inline Bytes BlackSquareMetafile() {
    return RecordWindowsMetafile(100, [](HDC dc) {
        ::SelectObject(dc, ::GetStockObject(BLACK_BRUSH));
        ::SelectObject(dc, ::GetStockObject(BLACK_PEN));
        ::Rectangle(dc, 30, 30, 70, 70);
    });
}

// The 22-byte placeable header: key, handle 0, bounds, units per inch,
// reserved 0, and the XOR of the ten words before the checksum.
inline Bytes PlaceableHeader(int16_t left, int16_t top, int16_t right, int16_t bottom, uint16_t inch) {
    Bytes header;
    Put32(header, 0x9AC6CDD7u);
    Put16(header, 0);
    Put16(header, static_cast<uint16_t>(left));
    Put16(header, static_cast<uint16_t>(top));
    Put16(header, static_cast<uint16_t>(right));
    Put16(header, static_cast<uint16_t>(bottom));
    Put16(header, inch);
    Put32(header, 0);
    uint16_t checksum = 0;
    for (size_t i = 0; i < 20; i += 2) checksum ^= static_cast<uint16_t>(header[i] | header[i + 1] << 8);
    Put16(header, checksum);
    return header;
}

inline Bytes Placeable(const Bytes& bits) {
    Bytes out = PlaceableHeader(0, 0, 100, 100, 1440);
    out.insert(out.end(), bits.begin(), bits.end());
    return out;
}

// An enhanced metafile of width x height pixels (at the screen's resolution)
// with its left half black.
inline Bytes BlackLeftHalfEmf(int width, int height) {
    framework::win32::WindowDc screen(nullptr);
    const int mmX = ::GetDeviceCaps(screen.Get(), HORZSIZE) * 100;
    const int mmY = ::GetDeviceCaps(screen.Get(), VERTSIZE) * 100;
    const int pxX = ::GetDeviceCaps(screen.Get(), HORZRES);
    const int pxY = ::GetDeviceCaps(screen.Get(), VERTRES);
    const RECT frame{0, 0, ::MulDiv(width, mmX, pxX), ::MulDiv(height, mmY, pxY)};
    const HDC recorder = ::CreateEnhMetaFileA(screen.Get(), nullptr, &frame, nullptr);
    if (recorder == nullptr) return {};
    const RECT half{0, 0, width / 2, height};
    ::FillRect(recorder, &half, static_cast<HBRUSH>(::GetStockObject(BLACK_BRUSH)));
    framework::win32::UniqueEnhMetaFile metafile(::CloseEnhMetaFile(recorder));
    if (!metafile) return {};
    const UINT size = ::GetEnhMetaFileBits(metafile.Get(), 0, nullptr);
    Bytes bits(size);
    if (size == 0 || ::GetEnhMetaFileBits(metafile.Get(), size, bits.data()) != size) return {};
    return bits;
}

}  // namespace previewtest
