// Writes what the preview renderer sends, as PNG files a person can look at:
//   no_preview_64.png   the no-preview picture of a small thumbnail
//   no_preview_128.png  the no-preview picture of a large thumbnail
//   wmf_preview.png     a Windows metafile drawn by this program, as rendered
//
//   preview_snapshot [output folder]     (default: the current folder)
//
// Also prints the face each no-preview picture was drawn in.
#include <wincodec.h>
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "PreviewTestSupport.h"
#include "browser/NoPreviewPicture.h"
#include "browser/PreviewRender.h"

namespace {

using framework::win32::ComPtr;

bool WritePng(const imaging::BitmapDescriptor& bitmap, const std::string& path) {
    if (bitmap.storage == nullptr || bitmap.bitsPerPixel != 24 ||
        bitmap.colorOrder != imaging::kColorOrderBgr)
        return false;
    framework::win32::ComInitialization com;
    ComPtr<IWICImagingFactory> factory;
    if (FAILED(::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_IWICImagingFactory, factory.PutVoid())))
        return false;
    ComPtr<IWICStream> stream;
    const std::wstring widePath(path.begin(), path.end());
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IWICBitmapFrameEncode> frame;
    ComPtr<IPropertyBag2> properties;
    if (FAILED(factory->CreateStream(stream.Put())) ||
        FAILED(stream->InitializeFromFilename(widePath.c_str(), GENERIC_WRITE)) ||
        FAILED(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.Put())) ||
        FAILED(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache)) ||
        FAILED(encoder->CreateNewFrame(frame.Put(), properties.Put())) ||
        FAILED(frame->Initialize(properties.Get())) ||
        FAILED(frame->SetSize(static_cast<UINT>(bitmap.width), static_cast<UINT>(bitmap.height))))
        return false;
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    if (FAILED(frame->SetPixelFormat(&format)) || !IsEqualGUID(format, GUID_WICPixelFormat24bppBGR))
        return false;
    return SUCCEEDED(frame->WritePixels(static_cast<UINT>(bitmap.height),
                                        static_cast<UINT>(bitmap.bytesPerLine), bitmap.storageSize,
                                        static_cast<BYTE*>(bitmap.storage))) &&
           SUCCEEDED(frame->Commit()) && SUCCEEDED(encoder->Commit());
}

// Renders one file and writes what arrives; false when nothing usable did.
bool Snapshot(const std::string& name, const previewtest::Bytes& data, int32_t size,
              const std::string& path) {
    previewtest::PreviewReceiver receiver;
    browser::RenderPreview(previewtest::MakeRequest(name, data, size, receiver.Handle()));
    if (receiver.Count() != 1) {
        std::fprintf(stderr, "%s: no picture arrived\n", name.c_str());
        return false;
    }
    const imaging::BitmapDescriptor& bitmap = receiver.LastPixels();
    if (!WritePng(bitmap, path)) {
        std::fprintf(stderr, "%s: cannot write %s\n", name.c_str(), path.c_str());
        return false;
    }
    std::printf("%s: %dx%d\n", path.c_str(), bitmap.width, bitmap.height);
    return true;
}

std::string FaceOf(int32_t size) {
    imaging::BitmapDescriptor shape{};
    shape.width = size;
    shape.height = size;
    framework::win32::UniqueDc dc(::CreateCompatibleDC(nullptr));
    return browser::NoPreviewFont(dc.Get(), browser::LayoutNoPreviewPicture(shape)).lfFaceName;
}

// A picture of a few shapes, so that the metafile's playing can be judged.
previewtest::Bytes SampleMetafile() {
    return previewtest::RecordWindowsMetafile(200, [](HDC dc) {
        framework::win32::UniqueBrush red(::CreateSolidBrush(RGB(200, 30, 30)));
        framework::win32::UniqueBrush blue(::CreateSolidBrush(RGB(30, 60, 200)));
        ::SelectObject(dc, ::GetStockObject(BLACK_PEN));
        ::SelectObject(dc, red.Get());
        ::Ellipse(dc, 20, 20, 120, 120);
        ::SelectObject(dc, blue.Get());
        ::Rectangle(dc, 80, 80, 180, 180);
        ::MoveToEx(dc, 0, 199, nullptr);
        ::LineTo(dc, 199, 0);
        ::SelectObject(dc, ::GetStockObject(WHITE_BRUSH));
    });
}

}  // namespace

int main(int argc, char** argv) {
    std::string folder = argc > 1 ? argv[1] : ".";
    if (!folder.empty() && folder.back() != '\\' && folder.back() != '/') folder += '\\';
    bool ok = true;
    ok &= Snapshot("art.png", {}, 64, folder + "no_preview_64.png");
    ok &= Snapshot("art.png", {}, 128, folder + "no_preview_128.png");
    ok &= Snapshot("clip.wmf", previewtest::Placeable(SampleMetafile()), 128, folder + "wmf_preview.png");
    std::printf("face at 64: %s\nface at 128: %s\n", FaceOf(64).c_str(), FaceOf(128).c_str());
    return ok ? 0 : 1;
}
