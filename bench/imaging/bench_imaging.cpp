// The imaging layer against plain alternatives, in the same run:
//  - loading and fitting 200 photographs (2000 x 1500 JPEGs, made here with
//    WIC) to 135 x 103, against decoding the same files with WIC alone;
//  - our resampler in megapixels per second, against a plain box filter;
// and a test pattern resampled both ways, written to a PNG beside the
// executable for a person to look at.
//
// Run from the win64 build:
//   tools/wine-run --prefix $PWD/build/win64/wineprefix build/win64/bench/imaging/bench_imaging.exe
// (Wine wants the prefix as an absolute path.) It takes about a minute, most
// of it making the photographs; it exits with 1 when a target is missed.
#include <wincodec.h>
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "framework/win32/ComPtr.h"
#include "support/BenchTimer.h"
#include "support/PictureFactory.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/Resampler.h"

namespace {

using framework::win32::ComPtr;
using picturefactory::Bytes;

constexpr uint32_t kPhotoWidth = 2000;
constexpr uint32_t kPhotoHeight = 1500;
constexpr int kPhotos = 200;
constexpr double kPi = 3.14159265358979323846;

// Sky, hills, a few soft blobs, texture and sensor noise: content with the
// frequencies of a photograph, so that JPEG works as hard as on a real one.
// Everything is separable or tabulated, so that making 200 stays cheap.
Bytes PhotoLike(uint32_t seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double horizon = 0.4 + 0.2 * unit(random);
    const double hillPhase = unit(random) * 2 * kPi;
    const double hillFrequency = 2 + 4 * unit(random);
    std::vector<int32_t> hillRow(kPhotoWidth);
    std::vector<float> sinX(kPhotoWidth), cosX(kPhotoWidth);
    for (uint32_t x = 0; x < kPhotoWidth; ++x) {
        const double u = static_cast<double>(x) / kPhotoWidth;
        hillRow[x] = static_cast<int32_t>(
            (horizon + 0.08 * std::sin(u * hillFrequency * 2 * kPi + hillPhase)) * kPhotoHeight);
        sinX[x] = static_cast<float>(std::sin(x * 0.31));
        cosX[x] = static_cast<float>(std::cos(x * 0.31));
    }
    // Gaussian blobs are separable: a column profile times a row profile.
    struct Blob {
        std::vector<float> across, down;
        float b, g, r;
    };
    std::vector<Blob> blobs(6);
    for (Blob& blob : blobs) {
        const double cx = unit(random) * kPhotoWidth, cy = unit(random) * kPhotoHeight;
        const double radius = 40 + 200 * unit(random);
        blob.b = static_cast<float>(random() & 255);
        blob.g = static_cast<float>(random() & 255);
        blob.r = static_cast<float>(random() & 255);
        blob.across.resize(kPhotoWidth);
        blob.down.resize(kPhotoHeight);
        for (uint32_t x = 0; x < kPhotoWidth; ++x)
            blob.across[x] = static_cast<float>(0.8 * std::exp(-(x - cx) * (x - cx) / (2 * radius * radius)));
        for (uint32_t y = 0; y < kPhotoHeight; ++y)
            blob.down[y] = static_cast<float>(std::exp(-(y - cy) * (y - cy) / (2 * radius * radius)));
    }
    const uint32_t stride = picturefactory::Stride(kPhotoWidth, 24);
    Bytes rows(static_cast<size_t>(stride) * kPhotoHeight);
    uint32_t noise = seed * 2654435761u + 1;
    for (uint32_t y = 0; y < kPhotoHeight; ++y) {
        uint8_t* p = rows.data() + static_cast<size_t>(y) * stride;
        const float v = static_cast<float>(y) / kPhotoHeight;
        const float phase = static_cast<float>(std::sin(y * 0.07) * 3);
        const float sinPhase = std::sin(phase), cosPhase = std::cos(phase);
        const float rowWave = 20.0f * static_cast<float>(std::cos(y * 0.23));
        for (uint32_t x = 0; x < kPhotoWidth; ++x, p += 3) {
            float b, g, r;
            if (static_cast<int32_t>(y) < hillRow[x]) {
                b = 230 - 80 * v;
                g = 170 - 60 * v;
                r = 110 - 40 * v;
            } else {
                const float texture = rowWave * (sinX[x] * cosPhase + cosX[x] * sinPhase);
                b = 40 + texture;
                g = 110 + 50 * (v - static_cast<float>(hillRow[x]) / kPhotoHeight) + texture;
                r = 60 + texture;
            }
            for (const Blob& blob : blobs) {
                const float weight = blob.across[x] * blob.down[y];
                b += (blob.b - b) * weight;
                g += (blob.g - g) * weight;
                r += (blob.r - r) * weight;
            }
            noise = noise * 1664525u + 1013904223u;
            const float grain = static_cast<float>(noise >> 28) - 7.5f;
            p[0] = static_cast<uint8_t>(std::clamp(b + grain, 0.0f, 255.0f));
            p[1] = static_cast<uint8_t>(std::clamp(g + grain, 0.0f, 255.0f));
            p[2] = static_cast<uint8_t>(std::clamp(r + grain, 0.0f, 255.0f));
        }
    }
    return picturefactory::Encode(GUID_ContainerFormatJpeg, GUID_WICPixelFormat24bppBGR, kPhotoWidth,
                                  kPhotoHeight, rows, stride, {}, 0.85f)
        .bytes;
}

// What an application does without our layer: WIC decodes into its buffer.
bool PlainWicDecode(IWICImagingFactory* factory, const Bytes& file, std::vector<uint8_t>* pixels) {
    ComPtr<IWICStream> stream;
    ComPtr<IWICBitmapDecoder> decoder;
    ComPtr<IWICBitmapFrameDecode> frame;
    ComPtr<IWICFormatConverter> converter;
    if (FAILED(factory->CreateStream(stream.Put())) ||
        FAILED(
            stream->InitializeFromMemory(const_cast<BYTE*>(file.data()), static_cast<DWORD>(file.size()))) ||
        FAILED(factory->CreateDecoderFromStream(stream.Get(), nullptr, WICDecodeMetadataCacheOnDemand,
                                                decoder.Put())) ||
        FAILED(decoder->GetFrame(0, frame.Put())) ||
        FAILED(factory->CreateFormatConverter(converter.Put())) ||
        FAILED(converter->Initialize(frame.Get(), GUID_WICPixelFormat24bppBGR, WICBitmapDitherTypeNone,
                                     nullptr, 0, WICBitmapPaletteTypeCustom)))
        return false;
    UINT width = 0, height = 0;
    if (FAILED(converter->GetSize(&width, &height))) return false;
    const UINT stride = (width * 3 + 3) & ~3u;
    pixels->resize(static_cast<size_t>(stride) * height);
    return SUCCEEDED(
        converter->CopyPixels(nullptr, stride, static_cast<UINT>(pixels->size()), pixels->data()));
}

// The plain reference: each target pixel is the mean of the source pixels
// whose index falls in its footprint, whole pixels only.
void PlainBoxFilter(const uint8_t* source, int32_t sourceWidth, int32_t sourceHeight, size_t sourceStride,
                    uint8_t* target, int32_t width, int32_t height, size_t targetStride) {
    std::vector<uint32_t> sums(static_cast<size_t>(width) * 3);
    std::vector<int32_t> columnStart(static_cast<size_t>(width) + 1);
    for (int32_t x = 0; x <= width; ++x)
        columnStart[x] = static_cast<int32_t>(int64_t{x} * sourceWidth / width);
    for (int32_t y = 0; y < height; ++y) {
        const int32_t y0 = static_cast<int32_t>(int64_t{y} * sourceHeight / height);
        const int32_t y1 = std::max(y0 + 1, static_cast<int32_t>(int64_t{y + 1} * sourceHeight / height));
        std::fill(sums.begin(), sums.end(), 0);
        for (int32_t sy = y0; sy < y1; ++sy) {
            const uint8_t* row = source + static_cast<size_t>(sy) * sourceStride;
            for (int32_t x = 0; x < width; ++x) {
                const int32_t x1 = std::max(columnStart[x] + 1, columnStart[x + 1]);
                uint32_t b = 0, g = 0, r = 0;
                for (int32_t sx = columnStart[x]; sx < x1; ++sx) {
                    b += row[3 * sx];
                    g += row[3 * sx + 1];
                    r += row[3 * sx + 2];
                }
                sums[3 * x] += b;
                sums[3 * x + 1] += g;
                sums[3 * x + 2] += r;
            }
        }
        uint8_t* out = target + static_cast<size_t>(y) * targetStride;
        for (int32_t x = 0; x < width; ++x) {
            const uint32_t count = static_cast<uint32_t>(
                (std::max(columnStart[x] + 1, columnStart[x + 1]) - columnStart[x]) * (y1 - y0));
            for (int c = 0; c < 3; ++c)
                out[3 * x + c] = static_cast<uint8_t>((sums[3 * x + c] + count / 2) / count);
        }
    }
}

std::string BesideExecutable(const char* name) {
    char path[MAX_PATH] = {};
    const DWORD length = ::GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string result(path, length);
    const size_t slash = result.find_last_of("\\/");
    return (slash == std::string::npos ? std::string() : result.substr(0, slash + 1)) + name;
}

// A zone plate (rings whose frequency grows outwards, up to the pixel pitch)
// shrunk by 4: ours on the left, point sampling on the right, which shows the
// false rings that aliasing makes.
bool WritePattern(const std::string& path) {
    const int32_t size = 1600, small = size / 4;
    std::vector<uint8_t> plate(static_cast<size_t>(size) * size * 3);
    for (int32_t y = 0; y < size; ++y)
        for (int32_t x = 0; x < size; ++x) {
            const double dx = x - size / 2.0, dy = y - size / 2.0;
            const uint8_t level =
                static_cast<uint8_t>(std::lround(127.5 + 127.0 * std::cos(kPi / size * (dx * dx + dy * dy))));
            uint8_t* p = plate.data() + (static_cast<size_t>(y) * size + x) * 3;
            p[0] = p[1] = p[2] = level;
        }
    const uint32_t stride = picturefactory::Stride(2 * small, 24);
    Bytes side(static_cast<size_t>(stride) * small, 0);
    const imaging::ConstPixelPlane in{plate.data(), size, size, static_cast<size_t>(size) * 3};
    const imaging::PixelPlane left{side.data(), small, small, stride};
    if (imaging::Resample(in, left, 3) != imaging::ResampleStatus::kOk) return false;
    for (int32_t y = 0; y < small; ++y)
        for (int32_t x = 0; x < small; ++x) {
            const uint8_t* p = plate.data() + (static_cast<size_t>(y * 4 + 2) * size + x * 4 + 2) * 3;
            uint8_t* q = side.data() + static_cast<size_t>(y) * stride + static_cast<size_t>(small + x) * 3;
            q[0] = p[0];
            q[1] = p[1];
            q[2] = p[2];
        }
    const Bytes png = picturefactory::Encode(GUID_ContainerFormatPng, GUID_WICPixelFormat24bppBGR, 2 * small,
                                             small, side, stride)
                          .bytes;
    if (png.empty()) return false;
    FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return false;
    const bool written = std::fwrite(png.data(), 1, png.size(), file) == png.size();
    return std::fclose(file) == 0 && written;
}

}  // namespace

int main() {
    framework::win32::ComInitialization com;
    if (!com.Usable()) return 2;
    ComPtr<IWICImagingFactory> factory;
    if (FAILED(::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_IWICImagingFactory, factory.PutVoid())))
        return 2;
    bool allMet = true;

    std::printf("making %d photographs of %ux%u...\n", kPhotos, kPhotoWidth, kPhotoHeight);
    const auto making = std::chrono::steady_clock::now();
    std::vector<Bytes> photos;
    for (int i = 0; i < kPhotos; ++i) {
        photos.push_back(PhotoLike(static_cast<uint32_t>(i + 1)));
        if (photos.back().empty()) return 2;
    }
    std::printf("made in %.1f s\n",
                std::chrono::duration<double>(std::chrono::steady_clock::now() - making).count());

    {
        // Photo by photo, each way in turn, best of two: the machine's other
        // work then weighs on both sides alike.
        std::vector<uint8_t> pixels;
        bool plainOk = true;
        int failures = 0;
        double plain = 0, ours = 0;
        for (const Bytes& photo : photos) {
            plain += benchsupport::BestSeconds(
                [&] { plainOk = PlainWicDecode(factory.Get(), photo, &pixels) && plainOk; }, 2);
            ours += benchsupport::BestSeconds(
                [&] {
                    imaging::BitmapDescriptor bitmap{};
                    if (imaging::LoadBitmapMemory(photo.data(), &bitmap, 24, imaging::kColorOrderBgr,
                                                  static_cast<uint32_t>(photo.size()),
                                                  nullptr) != imaging::kSuccess ||
                        imaging::SizeBitmap(&bitmap, 135, 103, imaging::kSizeResample) != imaging::kSuccess)
                        ++failures;
                    imaging::FreeBitmap(&bitmap);
                },
                2);
        }
        if (!plainOk || failures != 0) {
            std::printf("decoding failed (plain %s, ours %d failures)\n", plainOk ? "ok" : "failed",
                        failures);
            return 1;
        }
        allMet &= benchsupport::ReportRatio("200 photos: load and fit / WIC decode", ours, plain, 1.3);
    }

    {
        // Resampling alone, from decoded pixels: a photograph to thumbnail size.
        imaging::BitmapDescriptor photo{};
        if (imaging::LoadBitmapMemory(photos[0].data(), &photo, 24, imaging::kColorOrderBgr,
                                      static_cast<uint32_t>(photos[0].size()), nullptr) != imaging::kSuccess)
            return 1;
        const imaging::ConstPixelPlane in{static_cast<const uint8_t*>(photo.storage), photo.width,
                                          photo.height, static_cast<size_t>(photo.bytesPerLine)};
        const int32_t width = 135, height = 103;
        const size_t stride = static_cast<size_t>(picturefactory::Stride(width, 24));
        std::vector<uint8_t> target(stride * height);
        const imaging::PixelPlane out{target.data(), width, height, stride};
        const int rounds = 20;
        const double ours = benchsupport::BestSeconds(
            [&] {
                for (int i = 0; i < rounds; ++i) imaging::Resample(in, out, 3);
            },
            3);
        const double plain = benchsupport::BestSeconds(
            [&] {
                for (int i = 0; i < rounds; ++i)
                    PlainBoxFilter(static_cast<const uint8_t*>(photo.storage), photo.width, photo.height,
                                   static_cast<size_t>(photo.bytesPerLine), target.data(), width, height,
                                   stride);
            },
            3);
        const double megapixels = static_cast<double>(photo.width) * photo.height * rounds / 1e6;
        std::printf("resampler: ours %.0f Mpixel/s, plain box filter %.0f Mpixel/s\n", megapixels / ours,
                    megapixels / plain);
        allMet &= benchsupport::ReportRatio("resample 2000x1500 -> 135x103 / box", ours, plain, 2.0);

        // Enlarging too: the no-preview picture's 128 -> 135 step, many times.
        imaging::BitmapDescriptor small{};
        imaging::CreateBitmap(&small, imaging::kMemoryConventional, 128, 128, 24, imaging::kColorOrderBgr,
                              nullptr, 0, nullptr, 0);
        const double enlarge = benchsupport::BestSeconds(
            [&] {
                for (int i = 0; i < 200; ++i) {
                    imaging::BitmapDescriptor copy{};
                    imaging::CopyBitmap(&copy, &small);
                    imaging::SizeBitmap(&copy, 135, 103, imaging::kSizeResample);
                    imaging::FreeBitmap(&copy);
                }
            },
            3);
        std::printf("copy and fit 128x128 -> 135x103: %.1f us each\n", enlarge / 200 * 1e6);
        imaging::FreeBitmap(&small);
        imaging::FreeBitmap(&photo);
    }

    const std::string pattern = BesideExecutable("resampler-pattern.png");
    if (WritePattern(pattern)) {
        std::printf("zone plate shrunk by 4, ours (left) and point sampling (right): %s\n", pattern.c_str());
    } else {
        std::printf("could not write %s\n", pattern.c_str());
        allMet = false;
    }
    return allMet ? 0 : 1;
}
