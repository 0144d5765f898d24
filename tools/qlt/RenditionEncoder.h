// Encodes the pictures of renditions: BMP through the imaging layer's own
// writer, JPEG and PNG through WIC encoders (the imaging layer writes BMP
// only). Windows only.
#pragma once

#include <wincodec.h>
#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "framework/win32/ComPtr.h"
#include "thumbnails/BitmapDescriptor.h"
#include "tools/qlt/FolderSource.h"

namespace qlt {

// JPEG quality of renditions: small pictures show blocking early, so
// higher than the encoder's default.
constexpr float kRenditionJpegQuality = 0.9f;

class RenditionEncoder {
public:
    RenditionEncoder();
    RenditionEncoder(const RenditionEncoder&) = delete;
    RenditionEncoder& operator=(const RenditionEncoder&) = delete;

    // A whole picture file of `bitmap` (24 bits, blue-green-red, as the
    // folder's pictures are loaded) in `format`. False with the reason in
    // `error`.
    bool Encode(const imaging::BitmapDescriptor& bitmap, RenditionFormat format, std::vector<uint8_t>& file,
                std::string& error);

private:
    bool EncodeBmp(const imaging::BitmapDescriptor& bitmap, std::vector<uint8_t>& file, std::string& error);
    bool EncodeWithWic(const imaging::BitmapDescriptor& bitmap, const GUID& container,
                       std::vector<uint8_t>& file, std::string& error);

    // COM stays usable on this thread for as long as the factory lives.
    framework::win32::ComInitialization com_;
    framework::win32::ComPtr<IWICImagingFactory> factory_;
};

}  // namespace qlt
