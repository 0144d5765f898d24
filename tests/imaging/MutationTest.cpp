// A bounded mutation run: damaged variants of small pictures of every format
// go to the information query and the loader, which must answer with a result
// and never crash, hang or leak. Deterministic: the same variants every run.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/Mutator.h"
#include "support/PictureFactory.h"
#include "thumbnails/Imaging.h"

using namespace imaging;
using picturefactory::Bytes;

namespace {

struct Seed {
    const char* name;
    Bytes bytes;
};

picturefactory::Bgra Pattern(int32_t x, int32_t y) {
    return picturefactory::Bgra{static_cast<uint8_t>(x * 40), static_cast<uint8_t>(y * 50),
                                static_cast<uint8_t>((x ^ y) * 30), static_cast<uint8_t>(x == 0 ? 0 : 255)};
}

std::vector<Seed> MakeSeeds() {
    using namespace picturefactory;
    const uint32_t w = 7, h = 5;
    std::vector<WICColor> palette;
    for (uint32_t i = 0; i < 16; ++i) palette.push_back(0xFF000000u | i * 0x0F0F0Fu);
    auto index = [](int32_t x, int32_t y) { return static_cast<uint32_t>(x + 2 * y); };
    auto indexed = [&](const GUID& container, uint32_t bits) {
        const WICPixelFormatGUID format = bits == 1   ? GUID_WICPixelFormat1bppIndexed
                                          : bits == 4 ? GUID_WICPixelFormat4bppIndexed
                                                      : GUID_WICPixelFormat8bppIndexed;
        const std::vector<WICColor> colours(palette.begin(), palette.begin() + (bits == 1 ? 2 : 16));
        return Encode(container, format, w, h, Indices(w, h, bits, index), Stride(w, bits), colours).bytes;
    };
    std::vector<Seed> seeds = {
        {"bmp24", EncodeBgr24(GUID_ContainerFormatBmp, w, h, Pattern)},
        {"bmp8", indexed(GUID_ContainerFormatBmp, 8)},
        {"bmp1", indexed(GUID_ContainerFormatBmp, 1)},
        {"png24", EncodeBgr24(GUID_ContainerFormatPng, w, h, Pattern)},
        {"png32",
         Encode(GUID_ContainerFormatPng, GUID_WICPixelFormat32bppBGRA, w, h, Bgra32(w, h, Pattern), w * 4)
             .bytes},
        {"png4", indexed(GUID_ContainerFormatPng, 4)},
        {"jpeg", EncodeBgr24(GUID_ContainerFormatJpeg, 16, 16, Pattern, 0.8f)},
        {"gif", indexed(GUID_ContainerFormatGif, 8)},
        {"tiff24", EncodeBgr24(GUID_ContainerFormatTiff, w, h, Pattern)},
        {"tiff8", indexed(GUID_ContainerFormatTiff, 8)},
        {"ico-dib", IconFile({DibIconImage(8, 8, Pattern), DibIconImage(4, 4, Pattern)})},
        {"ico-png", IconFile({IconImage{w, h, EncodeBgr24(GUID_ContainerFormatPng, w, h, Pattern)}})},
        {"emf", BlackLeftHalfEmf(400, 300)},
        {"wmf", BlackLeftHalfWmf(80, 40, true, 1440)},
        {"wmf-plain", BlackLeftHalfWmf(60, 30, false)},
        {"emf-sampler", SamplerEmf()},
        {"wmf-sampler", SamplerWmf()},
    };
    return seeds;
}

// A crash under Wine stops in its debugger instead of ending the process;
// with LUMBREL_MUTATION_TRACE set, each variant is named on stderr and kept
// in last-variant.bin before it is tried, so the one that crashed is at hand.
void KeepForDiagnosis(const char* seed, int variant, const Bytes& bytes) {
    std::fprintf(stderr, "%s %d\n", seed, variant);
    std::fflush(stderr);
    if (FILE* file = std::fopen("last-variant.bin", "wb")) {
        if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
}

bool ValidDepth(int32_t bits) {
    return bits == 1 || bits == 4 || bits == 8 || bits == 24 || bits == 32;
}

}  // namespace

TEST(ImagingMutation, DamagedPicturesGiveResultsNotCrashes) {
    const std::vector<Seed> seeds = MakeSeeds();
    for (const Seed& seed : seeds) {
        ASSERT_FALSE(seed.bytes.empty()) << seed.name;
        BitmapDescriptor bitmap{};
        ASSERT_EQ(LoadBitmapMemory(seed.bytes.data(), &bitmap, 0, kColorOrderBgr,
                                   static_cast<uint32_t>(seed.bytes.size()), nullptr),
                  kSuccess)
            << seed.name << " must load undamaged";
        FreeBitmap(&bitmap);
    }

    const bool trace = std::getenv("LUMBREL_MUTATION_TRACE") != nullptr;
    const size_t live = kernel::LiveStorageCount();
    const int32_t depths[] = {0, 24, 8, 32, 1, 4};
    const int kVariantsPerSeed = 600;
    // LUMBREL_MUTATION_SEED explores other variants; the test itself always
    // runs the same ones.
    const char* seedText = std::getenv("LUMBREL_MUTATION_SEED");
    std::mt19937 random(seedText != nullptr ? static_cast<uint32_t>(std::strtoul(seedText, nullptr, 10))
                                            : 20240611u);
    int loaded = 0, refused = 0;
    const auto start = std::chrono::steady_clock::now();
    for (const Seed& seed : seeds) {
        for (int variant = 0; variant < kVariantsPerSeed; ++variant) {
            const Bytes bytes = mutation::Mutate(seed.bytes, random, mutation::PictureProfile());
            const uint8_t none = 0;
            const uint8_t* data = bytes.empty() ? &none : bytes.data();
            const uint32_t size = static_cast<uint32_t>(bytes.size());
            SCOPED_TRACE(std::string(seed.name) + " variant " + std::to_string(variant));
            if (trace) KeepForDiagnosis(seed.name, variant, bytes);

            FileInfo info;
            std::memset(&info, 0xCC, sizeof info);
            if (QueryMemoryInfo(data, &info, size, 0, nullptr) == kSuccess) {
                EXPECT_EQ(info.structSize, sizeof(FileInfo));
                EXPECT_GE(info.width, 1);
                EXPECT_LE(info.width, kMaxSide);
                EXPECT_GE(info.height, 1);
                EXPECT_LE(info.height, kMaxSide);
                EXPECT_TRUE(ValidDepth(info.fileBitsPerPixel)) << info.fileBitsPerPixel;
            }

            const int32_t depth = depths[variant % 6];
            BitmapDescriptor bitmap{};
            const int result = LoadBitmapMemory(data, &bitmap, depth, kColorOrderBgr, size, nullptr);
            if (result == kSuccess) {
                ++loaded;
                EXPECT_EQ(kernel::CheckBitmap(&bitmap), kSuccess);
                if (depth != 0) {
                    EXPECT_EQ(bitmap.bitsPerPixel, depth);
                }
                EXPECT_EQ(SizeBitmap(&bitmap, 5, 3,
                                     bitmap.bitsPerPixel == 1 ? kSizeResampleFavourBlack : kSizeResample),
                          kSuccess);
                EXPECT_EQ(FreeBitmap(&bitmap), kSuccess);
            } else {
                ++refused;
                EXPECT_LT(result, 0);
                EXPECT_EQ(bitmap.storage, nullptr) << "a failed load leaves the descriptor empty";
            }
        }
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_EQ(kernel::LiveStorageCount(), live);
    std::printf("%zu variants: %d loaded, %d refused, %.1f s\n", seeds.size() * kVariantsPerSeed, loaded,
                refused, seconds);
    EXPECT_GT(loaded, 0) << "some damage is harmless";
    EXPECT_GT(refused, 0);
}
