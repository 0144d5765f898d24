#include "tools/qlt/RenditionEncoder.h"

#include <cstdio>

#include "framework/win32/MemoryHandles.h"
#include "thumbnails/Imaging.h"

namespace qlt {

namespace {

using framework::win32::ComPtr;

std::string HresultText(const char* what, HRESULT result) {
    char text[64];
    std::snprintf(text, sizeof text, "%s failed (0x%08lX)", what, static_cast<unsigned long>(result));
    return text;
}

// Copies out the whole of a stream made on global memory.
bool ReadStream(IStream* stream, std::vector<uint8_t>& file, std::string& error) {
    HGLOBAL global = nullptr;
    STATSTG stat{};
    HRESULT result = ::GetHGlobalFromStream(stream, &global);
    if (SUCCEEDED(result)) result = stream->Stat(&stat, STATFLAG_NONAME);
    if (FAILED(result)) {
        error = HresultText("reading the encoded picture", result);
        return false;
    }
    framework::win32::GlobalLockView view(global);
    const size_t size = static_cast<size_t>(stat.cbSize.QuadPart);
    if (!view || view.Size() < size) {
        error = "the encoded picture can't be read back";
        return false;
    }
    const auto* data = static_cast<const uint8_t*>(view.Data());
    file.assign(data, data + size);
    return true;
}

}  // namespace

RenditionEncoder::RenditionEncoder() {
    // Without a factory only BMP can be written; Encode says so for the others.
    if (FAILED(::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_IWICImagingFactory, factory_.PutVoid())))
        factory_.Reset();
}

bool RenditionEncoder::Encode(const imaging::BitmapDescriptor& bitmap, RenditionFormat format,
                              std::vector<uint8_t>& file, std::string& error) {
    file.clear();
    switch (format) {
        case RenditionFormat::kBmp: return EncodeBmp(bitmap, file, error);
        case RenditionFormat::kJpeg: return EncodeWithWic(bitmap, GUID_ContainerFormatJpeg, file, error);
        case RenditionFormat::kPng: return EncodeWithWic(bitmap, GUID_ContainerFormatPng, file, error);
    }
    error = "unknown rendition format";
    return false;
}

bool RenditionEncoder::EncodeBmp(const imaging::BitmapDescriptor& bitmap, std::vector<uint8_t>& file,
                                 std::string& error) {
    HGLOBAL memory = nullptr;
    uint32_t size = 0;
    const int result =
        imaging::SaveBitmapMemory(&memory, &bitmap, imaging::kFormatBmp, 24, 0, &size, nullptr);
    const framework::win32::UniqueGlobal owned(memory);
    if (result != imaging::kSuccess || !owned) {
        error = "the imaging layer could not write a BMP file (result " + std::to_string(result) + ")";
        return false;
    }
    const framework::win32::GlobalLockView view(owned.Get());
    if (!view || view.Size() < size) {
        error = "the BMP file can't be read back";
        return false;
    }
    const auto* data = static_cast<const uint8_t*>(view.Data());
    file.assign(data, data + size);
    return true;
}

bool RenditionEncoder::EncodeWithWic(const imaging::BitmapDescriptor& bitmap, const GUID& container,
                                     std::vector<uint8_t>& file, std::string& error) {
    if (!factory_) {
        error = "the Windows Imaging Component is not available";
        return false;
    }
    if (bitmap.storage == nullptr || bitmap.bitsPerPixel != 24 ||
        bitmap.colorOrder != imaging::kColorOrderBgr || bitmap.width < 1 || bitmap.height < 1) {
        error = "the picture is not 24-bit blue-green-red";
        return false;
    }
    ComPtr<IStream> stream;
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IWICBitmapFrameEncode> frame;
    ComPtr<IPropertyBag2> properties;
    HRESULT result = ::CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    if (SUCCEEDED(result)) result = factory_->CreateEncoder(container, nullptr, encoder.Put());
    if (SUCCEEDED(result)) result = encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache);
    if (SUCCEEDED(result)) result = encoder->CreateNewFrame(frame.Put(), properties.Put());
    if (FAILED(result)) {
        error = HresultText("making the encoder", result);
        return false;
    }
    if (IsEqualGUID(container, GUID_ContainerFormatJpeg) && properties) {
        PROPBAG2 option{};
        option.pstrName = const_cast<LPOLESTR>(L"ImageQuality");
        VARIANT value;
        ::VariantInit(&value);
        value.vt = VT_R4;
        value.fltVal = kRenditionJpegQuality;
        // An encoder without the option keeps its own quality, which still makes a picture.
        properties->Write(1, &option, &value);
    }
    result = frame->Initialize(properties.Get());
    if (SUCCEEDED(result))
        result = frame->SetSize(static_cast<UINT>(bitmap.width), static_cast<UINT>(bitmap.height));
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    if (SUCCEEDED(result)) result = frame->SetPixelFormat(&format);
    if (FAILED(result)) {
        error = HresultText("setting up the frame", result);
        return false;
    }
    if (!IsEqualGUID(format, GUID_WICPixelFormat24bppBGR)) {
        error = "the encoder does not take 24-bit blue-green-red pixels";
        return false;
    }
    // The descriptor's rows are top-down and padded to 4 bytes, as WIC reads them.
    result = frame->WritePixels(static_cast<UINT>(bitmap.height), static_cast<UINT>(bitmap.bytesPerLine),
                                bitmap.storageSize, static_cast<BYTE*>(bitmap.storage));
    if (SUCCEEDED(result)) result = frame->Commit();
    if (SUCCEEDED(result)) result = encoder->Commit();
    if (FAILED(result)) {
        error = HresultText("encoding", result);
        return false;
    }
    return ReadStream(stream.Get(), file, error);
}

}  // namespace qlt
