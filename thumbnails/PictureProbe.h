// Recognises a picture by its first bytes and reads the sizes its headers
// claim, without decoding anything. Portable.
//
// Two jobs: a picture is recognised by content, never by its name; and a
// header that claims more pixels than the layer takes is refused before any
// decoder sees it, since some decoders allocate the whole picture as soon as
// they are handed the bytes. For that reason every size a file can declare is
// checked: each GIF image, each icon entry (including PNG images inside
// icons), not only the first.
//
// Metafiles are checked for a well-formed record chain (every record inside
// the data, an end record present) because the platform plays them record by
// record.
#pragma once

#include <cstddef>
#include <cstdint>

namespace imaging {

enum class PictureKind {
    kUnknown,
    kBmp,
    kJpeg,
    kPng,
    kGif,
    kTiff,
    kIcon,
    kEmf,
    kWmfPlaceable,  // a Windows metafile behind the 22-byte placeable header
    kWmf,           // a Windows metafile with no header of its own
};

enum class ProbeStatus {
    kRecognised,
    kUnknown,    // no signature the layer knows
    kMalformed,  // a known signature, but the headers contradict themselves or end early
    kTooLarge,   // a declared size beyond kMaxSide or kMaxDecodedPixels
};

// Decoders may hold a picture at 32 bits per pixel, so the pixel count is
// capped at what the storage limit holds at that depth.
constexpr uint64_t kMaxDecodedPixels = 64ull * 1024 * 1024;

struct PictureProbe {
    ProbeStatus status = ProbeStatus::kUnknown;
    PictureKind kind = PictureKind::kUnknown;
    // The size the headers give for the picture that a load decodes: the
    // largest icon entry, the first GIF image. Metafiles: the extent of
    // their bounds in their own units, which the renderer converts (for a
    // plain Windows metafile its window extent, or 0 when it sets none).
    int32_t width = 0;
    int32_t height = 0;
    int32_t frames = 0;        // GIF images, icon entries; 1 for the others
    int32_t bestFrame = 0;     // the icon entry that is largest
    int32_t headerBytes = 0;   // bytes before the metafile proper (22 for placeable metafiles)
    int32_t unitsPerInch = 0;  // placeable metafiles: their logical units per inch
};

PictureProbe ProbePicture(const uint8_t* data, size_t size);

}  // namespace imaging
