// A bounded mutation run: damaged variants of .thm files and metafiles go to
// ReadThm, and to the metafile check (Windows metafiles to their repair) and,
// when it lets them through, to GDI (rendering, conversion, playing). Every variant must give a clean result,
// never a crash, and leave no pixels behind. Deterministic: the same
// variants every run.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "MetafileBuilder.h"
#include "TestPictures.h"
#include "support/Mutator.h"
#include "support/TempDir.h"
#include "thumbnails/BitmapHelpers.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/MetafileCheck.h"
#include "thumbnails/MetafileRepair.h"
#include "thumbnails/ThmFile.h"
#include "thumbnails/ThumbnailItem.h"

using testpictures::Bytes;
using thumbnails::MetafileCheckResult;
using thumbnails::MetafileKind;

namespace {

struct Seed {
    std::string name;
    Bytes bytes;
};

// A 24-bit section to play enhanced metafiles into.
struct Canvas {
    Canvas() : dc(::CreateCompatibleDC(nullptr)) {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        info.bmiHeader.biWidth = 64;
        info.bmiHeader.biHeight = 64;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 24;
        void* bits = nullptr;
        section.Reset(::CreateDIBSection(dc.Get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
        previous = ::SelectObject(dc.Get(), section.Get());
    }
    ~Canvas() { ::SelectObject(dc.Get(), previous); }
    framework::win32::UniqueBitmap section;
    framework::win32::UniqueDc dc;
    HGDIOBJ previous = nullptr;
};

// A player that writes past its buffers often goes unnoticed until much
// later. Some region and drawing work on the same heap after each variant
// makes such damage show here, at the variant that did it.
void ExerciseGdiHeap() {
    for (int i = 0; i < 8; ++i) {
        framework::win32::UniqueGdiObject a(::CreateRectRgn(i, i, 100 + i * 3, 90));
        framework::win32::UniqueGdiObject b(::CreateEllipticRgn(0, 0, 50 + i, 60));
        ::CombineRgn(static_cast<HRGN>(a.Get()), static_cast<HRGN>(a.Get()), static_cast<HRGN>(b.Get()),
                     RGN_XOR);
        Canvas scratch;
        ::Rectangle(scratch.dc.Get(), 0, 0, 30 + i, 20);
    }
}

struct Tally {
    int accepted = 0;
    int refused = 0;
    int played = 0;
};

// Windows metafiles are taken as their repair takes them, enhanced ones as
// the check does.
bool Accepts(const Bytes& bytes, const MetafileCheckResult& check) {
    if (check.kind == MetafileKind::kEnhanced) return check.Accepted();
    if (check.kind == MetafileKind::kUnknown) return false;
    const size_t header = check.kind == MetafileKind::kPlaceable ? thumbnails::kPlaceableHeaderBytes : 0;
    if (bytes.size() <= header) return false;
    std::vector<uint8_t> repaired;
    return thumbnails::RepairWindowsMetafile(bytes.data() + header, bytes.size() - header, &repaired)
        .Accepted();
}

// Gives an accepted metafile to GDI in every way the control does.
void Play(const Bytes& bytes, const MetafileCheckResult& check, Canvas& canvas, Tally& tally) {
    if (check.kind == MetafileKind::kEnhanced) {
        framework::win32::UniqueEnhMetaFile metafile(
            ::SetEnhMetaFileBits(static_cast<UINT>(bytes.size()), bytes.data()));
        if (!metafile) return;
        const RECT area{0, 0, 64, 64};
        ::PlayEnhMetaFile(canvas.dc.Get(), metafile.Get(), &area);
        ++tally.played;
        return;
    }
    const size_t header = check.kind == MetafileKind::kPlaceable ? thumbnails::kPlaceableHeaderBytes : 0;
    framework::win32::UniqueMetaFile metafile(
        thumbnails::CreateCheckedMetaFile(bytes.data() + header, bytes.size() - header));
    if (!metafile) return;
    framework::win32::UniqueBitmap bitmap(
        thumbnails::RenderMetafileToBitmap(metafile.Get(), canvas.dc.Get(), 48, 48, 0xFFFFFF));
    framework::win32::UniqueEnhMetaFile enhanced(
        thumbnails::MakeEnhancedMetafile(canvas.dc.Get(), metafile.Get(), 48, 48));
    ++tally.played;
}

}  // namespace

TEST(ThumbnailMutation, DamagedThmFilesAndMetafilesGiveResultsNotCrashes) {
    testsupport::TempDir dir;
    const std::string thmPath = dir.File("variant.thm");

    const Bytes bmp = testpictures::Bmp24(9, 7);
    const Bytes jpeg = testpictures::Jpeg(16, 12);
    ASSERT_FALSE(jpeg.empty());
    const std::vector<Seed> thmSeeds = {
        {"thm-bmp", thumbnails::EncodeThm("c:\\art\\boat.bmp", "", bmp.data(), bmp.size())},
        {"thm-jpeg", thumbnails::EncodeThm("", "art\\sea.jpg", jpeg.data(), jpeg.size())},
        {"thm-both", thumbnails::EncodeThm("d:\\x.bmp", "x.bmp", bmp.data(), bmp.size())},
    };
    const Bytes wmf = testpictures::SampleWindowsMetafileBits();
    const Bytes wmfWithEscape = testpictures::SampleWindowsMetafileBits([](HDC dc) {
        testpictures::DrawSample(dc);
        const char comment[] = "comment";
        ::Escape(dc, MFCOMMENT, sizeof comment, comment, nullptr);
        ::Rectangle(dc, 10, 10, 90, 60);
    });
    const std::vector<Seed> metafileSeeds = {
        {"wmf-escape", testpictures::WithPlaceableHeader(wmfWithEscape, 400, 300, 96)},
        {"emf-gdi", testpictures::SampleEnhancedMetafileBits()},
        {"wmf-gdi", wmf},
        {"wmf-placeable", testpictures::WithPlaceableHeader(wmf, 400, 300, 96)},
        {"emf-built", metafilebuilder::SampleEmf()},
        {"wmf-built", metafilebuilder::SampleWmf()},
    };

    for (const Seed& seed : metafileSeeds) {
        const MetafileCheckResult check = thumbnails::CheckMetafile(seed.bytes.data(), seed.bytes.size());
        ASSERT_TRUE(Accepts(seed.bytes, check)) << seed.name << " must pass undamaged";
        Tally ignored;
        Canvas canvas;
        Play(seed.bytes, check, canvas, ignored);
        ASSERT_EQ(ignored.played, 1) << seed.name << " must play undamaged";
    }

    const size_t live = imaging::kernel::LiveStorageCount();
    std::mt19937 random(20250214);
    const auto start = std::chrono::steady_clock::now();

    const int kThmVariants = 800;
    int loaded = 0, failed = 0;
    for (const Seed& seed : thmSeeds) {
        for (int variant = 0; variant < kThmVariants; ++variant) {
            const Bytes bytes = mutation::Mutate(seed.bytes, random, mutation::RecordProfile());
            SCOPED_TRACE(seed.name + " variant " + std::to_string(variant));
            testpictures::WriteFile(thmPath, bytes);
            const foundation::CFilePath path(thmPath);
            thumbnails::CThumbnailItem item;
            if (item.ReadThm(&path)) {
                ++loaded;
                EXPECT_EQ(imaging::kernel::CheckBitmap(&item.bitmap), imaging::kSuccess);
                EXPECT_GE(item.bitmap.width, 1);
                EXPECT_GE(item.bitmap.height, 1);
                EXPECT_EQ(item.bitmap.bitsPerPixel, 24);
            } else {
                ++failed;
                EXPECT_EQ(item.bitmap.storage, nullptr);
            }
            // An item known only by a relative name keeps its pixels on
            // purpose; here they are given back by hand.
            if (item.filePath.path.empty() && !item.relativeName.empty()) imaging::FreeBitmap(&item.bitmap);
        }
    }

    const int kMetafileVariants = 2000;
    Tally tally;
    for (const Seed& seed : metafileSeeds) {
        for (int variant = 0; variant < kMetafileVariants; ++variant) {
            const Bytes bytes = mutation::Mutate(seed.bytes, random, mutation::RecordProfile());
            SCOPED_TRACE(seed.name + " variant " + std::to_string(variant));
            const MetafileCheckResult check =
                thumbnails::CheckMetafile(bytes.empty() ? nullptr : bytes.data(), bytes.size());
            if (check.kind == MetafileKind::kWindows) {
                framework::win32::UniqueMetaFile made(
                    thumbnails::CreateCheckedMetaFile(bytes.data(), bytes.size()));
                EXPECT_EQ(static_cast<bool>(made), Accepts(bytes, check));
            }
            if (!Accepts(bytes, check)) {
                ++tally.refused;
                continue;
            }
            ++tally.accepted;
            EXPECT_NE(check.kind, MetafileKind::kUnknown);
            {
                Canvas canvas;
                Play(bytes, check, canvas, tally);
            }
            ExerciseGdiHeap();
        }
    }

    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf(
        "%d .thm variants: %d loaded, %d failed; %d metafile variants: %d accepted (%d played), %d refused; "
        "%.1f s\n",
        loaded + failed, loaded, failed, tally.accepted + tally.refused, tally.accepted, tally.played,
        tally.refused, seconds);
    EXPECT_EQ(imaging::kernel::LiveStorageCount(), live) << "no pixels left behind";
    EXPECT_GT(loaded, 0) << "some damage is harmless";
    EXPECT_GT(failed, 0);
    EXPECT_GT(tally.accepted, 0);
    EXPECT_GT(tally.refused, 0);
}
