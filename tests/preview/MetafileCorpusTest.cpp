// Metafiles as other writers make them: libuemf (as drawing programs write
// with it) and GDI's own recording, with comments, escapes, placeable and
// plain headers, header sizes larger and smaller than the data, wrong object
// counts and largest records, bytes behind the end record and no end record.
// Each previews as GDI draws the same data unfiltered where that is safe (or
// as it draws the file with only the damage undone, where it is not), and the
// files that cannot be played get the no-preview picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "PreviewTestSupport.h"
#include "browser/NoPreviewPicture.h"
#include "browser/PreviewRender.h"
#include "support/LittleEndian.h"
#include "thumbnails/BitmapHelpers.h"

namespace {

using previewtest::Bytes;
using previewtest::MakeRequest;
using previewtest::PreviewReceiver;
using testsupport::Set16;
using testsupport::Set32;

struct CorpusFile {
    const char* name;
    Bytes bytes;
};

const std::vector<CorpusFile>& UemfFiles() {
    static const std::vector<CorpusFile> files = {
#include "uemf_corpus.inc"
    };
    return files;
}

Bytes Uemf(const std::string& name) {
    for (const CorpusFile& file : UemfFiles())
        if (name == file.name) return file.bytes;
    ADD_FAILURE() << "no corpus file " << name;
    return {};
}

uint32_t Get32(const Bytes& b, size_t at) {
    return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | static_cast<uint32_t>(b[at + 3]) << 24;
}
Bytes Cut(const Bytes& b, size_t from, size_t length) {
    return Bytes(b.begin() + static_cast<std::ptrdiff_t>(from),
                 b.begin() + static_cast<std::ptrdiff_t>(from + length));
}
Bytes Joined(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

bool IsNoPreviewPicture(const imaging::BitmapDescriptor& bitmap, int32_t size) {
    imaging::BitmapDescriptor expected{};
    if (browser::MakeNoPreviewPicture(size, &expected) != imaging::kSuccess) return false;
    const bool same = bitmap.width == expected.width && bitmap.height == expected.height &&
                      bitmap.storageSize == expected.storageSize && bitmap.storage != nullptr &&
                      std::memcmp(bitmap.storage, expected.storage, expected.storageSize) == 0;
    imaging::FreeBitmap(&expected);
    return same;
}

// Pixels of red and blue, as the corpus drawings have.
bool HasRedAndBlue(const imaging::BitmapDescriptor& bitmap) {
    bool red = false, blue = false;
    for (int y = 0; y < bitmap.height; ++y) {
        for (int x = 0; x < bitmap.width; ++x) {
            const previewtest::Bgr p = previewtest::PixelAt(bitmap, x, y);
            red = red || (p.r > 150 && p.g < 60 && p.b < 60);
            blue = blue || (p.b > 150 && p.r < 60 && p.g < 60);
        }
    }
    return red && blue;
}

// What the metafile route would send for the bits (own header first) played
// by GDI as they are, with its steps taken by hand: the 128-pixel square on
// a white ground, MM_ISOTROPIC, the centring, the conversion and the resize.
imaging::BitmapDescriptor ReferenceWindowsPreview(const Bytes& bits) {
    imaging::BitmapDescriptor result{};
    framework::win32::UniqueMetaFile metafile(
        ::SetMetaFileBitsEx(static_cast<UINT>(bits.size()), bits.data()));
    if (!metafile) return result;
    const HDC screen = ::GetDC(nullptr);
    {
        framework::win32::UniqueBitmap bitmap(::CreateCompatibleBitmap(screen, 128, 128));
        framework::win32::UniqueDc dc(::CreateCompatibleDC(screen));
        const int saved = ::SaveDC(dc.Get());
        const HGDIOBJ previous = ::SelectObject(dc.Get(), bitmap.Get());
        ::SetBkColor(dc.Get(), 0xFFFFFF);
        const RECT all{0, 0, 128, 128};
        ::ExtTextOutA(dc.Get(), 0, 0, ETO_OPAQUE, &all, nullptr, 0, nullptr);
        ::SetMapMode(dc.Get(), MM_ISOTROPIC);
        ::SetViewportExtEx(dc.Get(), 128, 128, nullptr);
        ::PlayMetaFile(dc.Get(), metafile.Get());
        ::SelectObject(dc.Get(), previous);
        ::RestoreDC(dc.Get(), saved);
        thumbnails::CenterBitmapContent(bitmap.Get());
        if (imaging::ConvertFromDeviceBitmap(screen, &result, bitmap.Get(), 0) != imaging::kSuccess)
            result = {};
    }
    ::ReleaseDC(nullptr, screen);
    if (result.storage != nullptr) browser::ScaleBitmapToFit(&result, 128, 0);
    return result;
}

// The enhanced metafile played by GDI as it is, at `width` x `height` on
// white, as 24-bit top-down rows of the descriptor's layout.
Bytes ReferenceEnhancedRows(const Bytes& bits, int width, int height) {
    framework::win32::UniqueEnhMetaFile metafile(
        ::SetEnhMetaFileBits(static_cast<UINT>(bits.size()), bits.data()));
    if (!metafile) return {};
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    framework::win32::UniqueDc dc(::CreateCompatibleDC(nullptr));
    void* pixels = nullptr;
    framework::win32::UniqueBitmap section(
        ::CreateDIBSection(dc.Get(), &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
    if (!section || pixels == nullptr) return {};
    const HGDIOBJ previous = ::SelectObject(dc.Get(), section.Get());
    ::PatBlt(dc.Get(), 0, 0, width, height, WHITENESS);
    const RECT frame{0, 0, width, height};
    ::PlayEnhMetaFile(dc.Get(), metafile.Get(), &frame);
    ::GdiFlush();
    ::SelectObject(dc.Get(), previous);
    const size_t stride = (static_cast<size_t>(width) * 3 + 3) / 4 * 4;
    const auto* begin = static_cast<const uint8_t*>(pixels);
    return Bytes(begin, begin + stride * static_cast<size_t>(height));
}

bool SamePixels(const imaging::BitmapDescriptor& a, const imaging::BitmapDescriptor& b) {
    return a.width == b.width && a.height == b.height && a.bitsPerPixel == b.bitsPerPixel &&
           a.storageSize == b.storageSize && a.storage != nullptr && b.storage != nullptr &&
           std::memcmp(a.storage, b.storage, a.storageSize) == 0;
}

// One file of the corpus and what it must give: the preview GDI draws from
// `reference` unfiltered (a Windows metafile's bits behind any placeable
// header, or a whole enhanced metafile), or the no-preview picture when
// `reference` is empty.
struct Case {
    std::string name;
    Bytes file;
    Bytes reference;
};

class MetafileCorpusTest : public ::testing::Test {
protected:
    void TearDown() override {
        receiver_.FreeAll();
        EXPECT_EQ(imaging::kernel::LiveStorageCount(), live_) << "pixels were leaked";
    }

    // The preview of `file` under `name`; null when none arrived.
    const imaging::BitmapDescriptor* Preview(const std::string& name, const Bytes& file) {
        receiver_.FreeAll();
        browser::RenderPreview(MakeRequest(name, file, 128, receiver_.Handle()));
        if (receiver_.Count() != 1) return nullptr;
        return &receiver_.LastPixels();
    }

    void ExpectWindows(const Case& c) {
        SCOPED_TRACE(c.name);
        const imaging::BitmapDescriptor* preview = Preview("clip.wmf", c.file);
        ASSERT_NE(preview, nullptr);
        if (c.reference.empty()) {
            EXPECT_TRUE(IsNoPreviewPicture(*preview, 128));
            return;
        }
        EXPECT_FALSE(IsNoPreviewPicture(*preview, 128));
        EXPECT_TRUE(HasRedAndBlue(*preview) || c.name.rfind("gdi", 0) == 0);
        imaging::BitmapDescriptor reference = ReferenceWindowsPreview(c.reference);
        ASSERT_NE(reference.storage, nullptr) << "GDI takes the reference";
        EXPECT_TRUE(SamePixels(*preview, reference)) << "as GDI draws it";
        imaging::FreeBitmap(&reference);
    }

    void ExpectEnhanced(const Case& c) {
        SCOPED_TRACE(c.name);
        const imaging::BitmapDescriptor* preview = Preview("clip.emf", c.file);
        ASSERT_NE(preview, nullptr);
        if (c.reference.empty()) {
            EXPECT_TRUE(IsNoPreviewPicture(*preview, 128));
            return;
        }
        EXPECT_FALSE(IsNoPreviewPicture(*preview, 128));
        EXPECT_TRUE(HasRedAndBlue(*preview) || c.name.rfind("gdi", 0) == 0);
        ASSERT_EQ(preview->bitsPerPixel, 24);
        const Bytes rows = ReferenceEnhancedRows(c.reference, preview->width, preview->height);
        ASSERT_FALSE(rows.empty()) << "GDI takes the reference";
        ASSERT_EQ(rows.size(), preview->storageSize);
        EXPECT_EQ(std::memcmp(rows.data(), preview->storage, rows.size()), 0) << "as GDI draws it";
    }

    size_t live_ = imaging::kernel::LiveStorageCount();
    PreviewReceiver receiver_;
};

// ---- Windows metafiles --------------------------------------------------------------------

std::vector<Case> WindowsCases() {
    const Bytes placeable = Uemf("uemf-wmf");
    const Bytes bits = Cut(placeable, 22, placeable.size() - 22);
    const Bytes escaped = Uemf("uemf-wmf-escape");
    const uint32_t words = Get32(bits, 6);
    std::vector<Case> cases;
    auto add = [&cases](const std::string& name, const Bytes& file, const Bytes& reference) {
        cases.push_back({name, file, reference});
    };
    auto behindHeader = [](const Bytes& file) { return Cut(file, 22, file.size() - 22); };

    add("placeable", placeable, bits);
    add("plain", bits, bits);
    add("escape", escaped, behindHeader(escaped));
    add("escape, plain", behindHeader(escaped), behindHeader(escaped));
    Bytes wholeFileSize = placeable;
    Set32(wholeFileSize, 22 + 6,
          static_cast<uint32_t>(placeable.size() / 2));  // the placeable header counted
    add("size of the whole file", wholeFileSize, behindHeader(wholeFileSize));
    Bytes escapedWholeFile = escaped;
    Set32(escapedWholeFile, 22 + 6, static_cast<uint32_t>(escaped.size() / 2));
    add("escape and size of the whole file", escapedWholeFile, behindHeader(escapedWholeFile));
    const Bytes trailing(40, 0xEE);
    add("bytes behind the end record", Joined(placeable, trailing), Joined(bits, trailing));
    Bytes counted = Joined(bits, trailing);
    Set32(counted, 6, words + 20);
    add("bytes behind the end record, counted", counted, counted);
    Bytes noEnd = Cut(bits, 0, bits.size() - 6);
    Set32(noEnd, 6, words - 3);
    add("no end record", noEnd, noEnd);
    add("no end record, still counted", Cut(bits, 0, bits.size() - 6), Cut(bits, 0, bits.size() - 6));
    for (uint32_t objects : {0u, 1u}) {
        Bytes shortTable = bits;
        Set16(shortTable, 10, objects);
        add("object count " + std::to_string(objects), shortTable, bits);  // unsafe for GDI as it is
    }
    Bytes largeTable = bits;
    Set16(largeTable, 10, 40);
    add("object count 40", largeTable, largeTable);
    for (uint32_t largest : {3u, 0u, 0xFFFFu}) {
        Bytes wrong = bits;
        Set32(wrong, 12, largest);
        add("largest record " + std::to_string(largest), wrong, wrong);
    }
    Bytes disk = bits;
    Set16(disk, 0, 2);
    add("disk type", Joined(Cut(placeable, 0, 22), disk), bits);
    // Without a placeable header the route knows a metafile only by the first
    // word of a memory one.
    add("disk type, plain", disk, {});
    Bytes oldVersion = bits;
    Set16(oldVersion, 4, 0x100);
    add("version 1", oldVersion, bits);

    // Files the player cannot take safely.
    add("ends inside its end record", Cut(bits, 0, bits.size() - 4), {});
    Bytes shortRecord = bits;
    Set32(shortRecord, 18, 2);
    add("a record below three words", shortRecord, {});
    Bytes longRecord = bits;
    Set32(longRecord, 18, 0x10000);
    add("a record past the data", longRecord, {});
    Bytes sizeInARecord = bits;
    Set32(sizeInARecord, 6, 9 + 3);
    add("a header size that ends inside a record", sizeInARecord, {});

    // GDI's own recording, with an escape amid the drawing.
    const Bytes recorded = previewtest::RecordWindowsMetafile(100, [](HDC dc) {
        const HBRUSH red = ::CreateSolidBrush(RGB(220, 0, 0));
        const HGDIOBJ old = ::SelectObject(dc, red);
        ::Rectangle(dc, 5, 5, 60, 50);
        const char comment[] = "made by GDI";
        ::Escape(dc, MFCOMMENT, sizeof comment, comment, nullptr);
        const HBRUSH blue = ::CreateSolidBrush(RGB(0, 0, 200));
        ::SelectObject(dc, blue);
        ::Ellipse(dc, 40, 30, 95, 90);
        ::SelectObject(dc, old);
        ::DeleteObject(red);
        ::DeleteObject(blue);
    });
    add("gdi escape", recorded, recorded);
    Bytes recordedShort = recorded;
    Set16(recordedShort, 10, 0);
    add("gdi escape, object count 0", recordedShort, recorded);
    return cases;
}

TEST_F(MetafileCorpusTest, WindowsMetafilesPreviewAsGdiDrawsThem) {
    ASSERT_EQ(Get32(Uemf("uemf-wmf"), 0), 0x9AC6CDD7u) << "libuemf wrote a placeable header";
    for (const Case& c : WindowsCases()) ExpectWindows(c);
}

// An enhanced metafile played at 100 x 100 on white, as 32-bit rows.
Bytes PlayedEnhanced(HENHMETAFILE metafile) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = 100;
    info.bmiHeader.biHeight = -100;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    framework::win32::UniqueDc dc(::CreateCompatibleDC(nullptr));
    void* pixels = nullptr;
    framework::win32::UniqueBitmap section(
        ::CreateDIBSection(dc.Get(), &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
    if (!section || pixels == nullptr) return {};
    const HGDIOBJ previous = ::SelectObject(dc.Get(), section.Get());
    ::PatBlt(dc.Get(), 0, 0, 100, 100, WHITENESS);
    const RECT frame{0, 0, 100, 100};
    ::PlayEnhMetaFile(dc.Get(), metafile, &frame);
    ::GdiFlush();
    ::SelectObject(dc.Get(), previous);
    const auto* begin = static_cast<const uint8_t*>(pixels);
    return Bytes(begin, begin + 100 * 100 * 4);
}

TEST_F(MetafileCorpusTest, EveryPlayableWindowsMetafileBecomesAnEnhancedOne) {
    framework::win32::WindowDc screen(nullptr);
    for (const Case& c : WindowsCases()) {
        SCOPED_TRACE(c.name);
        const bool placeable = Get32(c.file, 0) == 0x9AC6CDD7u;
        if (!placeable && Get32(c.file, 0) != 0x00090001u) continue;  // not taken for a metafile
        const Bytes bits = placeable ? Cut(c.file, 22, c.file.size() - 22) : c.file;
        framework::win32::UniqueMetaFile metafile(
            thumbnails::CreateCheckedMetaFile(bits.data(), bits.size()));
        EXPECT_EQ(static_cast<bool>(metafile), !c.reference.empty());
        if (!metafile) continue;
        framework::win32::UniqueEnhMetaFile enhanced(
            thumbnails::MakeEnhancedMetafile(screen.Get(), metafile.Get(), 100, 100));
        ASSERT_TRUE(enhanced);
        // GDI's conversion of the reference as it is.
        framework::win32::UniqueEnhMetaFile expected(::SetWinMetaFileBits(
            static_cast<UINT>(c.reference.size()), c.reference.data(), screen.Get(), nullptr));
        ASSERT_TRUE(expected);
        const Bytes ours = PlayedEnhanced(enhanced.Get());
        ASSERT_FALSE(ours.empty());
        EXPECT_EQ(ours, PlayedEnhanced(expected.Get())) << "as GDI converts it";
        EXPECT_NE(std::count(ours.begin(), ours.end(), 0xFF), static_cast<std::ptrdiff_t>(ours.size()))
            << "something is drawn";
    }
}

// The picture the imaging layer decodes from a file, as renditions in
// containers are; empty when it does not.
imaging::BitmapDescriptor Decoded(const Bytes& file) {
    imaging::BitmapDescriptor bitmap{};
    imaging::FileInfo info{};
    if (imaging::QueryMemoryInfo(file.data(), &info, static_cast<uint32_t>(file.size()), 0, nullptr) !=
        imaging::kSuccess)
        return bitmap;
    if (imaging::LoadBitmapMemory(file.data(), &bitmap, 24, imaging::kColorOrderBgr,
                                  static_cast<uint32_t>(file.size()), nullptr) != imaging::kSuccess)
        bitmap = imaging::BitmapDescriptor{};
    return bitmap;
}

TEST_F(MetafileCorpusTest, TheImagingLayerDecodesWhatThePlayerTakes) {
    const Bytes placeable = Uemf("uemf-wmf");
    imaging::BitmapDescriptor expected = Decoded(placeable);
    ASSERT_NE(expected.storage, nullptr);
    for (const Case& c : WindowsCases()) {
        if (c.name.rfind("gdi", 0) == 0 || c.name == "disk type, plain") continue;
        SCOPED_TRACE(c.name);
        // Behind the same placeable header, so that each has the same size.
        const Bytes file = Get32(c.file, 0) == 0x9AC6CDD7u ? c.file : Joined(Cut(placeable, 0, 22), c.file);
        imaging::BitmapDescriptor decoded = Decoded(file);
        if (c.reference.empty()) {
            EXPECT_EQ(decoded.storage, nullptr);
        } else {
            EXPECT_TRUE(SamePixels(decoded, expected)) << "the drawing of the well-formed file";
        }
        if (decoded.storage != nullptr) imaging::FreeBitmap(&decoded);
    }
    imaging::FreeBitmap(&expected);
}

// ---- Enhanced metafiles --------------------------------------------------------------------

// An EMR_EXTESCAPE record, as printer drivers leave them in spooled files.
Bytes ExtEscapeRecord() {
    Bytes r(20, 0);
    Set32(r, 0, 106);
    Set32(r, 4, 20);
    Set32(r, 8, 0x1234);
    Set32(r, 12, 4);
    Set32(r, 16, 0x01020304);
    return r;
}

std::vector<Case> EnhancedCases() {
    const Bytes emf = Uemf("uemf-emf");
    const uint32_t headerSize = Get32(emf, 4);
    const uint32_t bytes = Get32(emf, 48);
    std::vector<Case> cases;
    auto add = [&cases](const std::string& name, const Bytes& file, const Bytes& reference) {
        cases.push_back({name, file, reference});
    };
    auto withBytes = [](Bytes b, uint32_t count) {
        Set32(b, 48, count);
        return b;
    };

    add("plain", emf, emf);
    add("comment", Uemf("uemf-emf-comment"), Uemf("uemf-emf-comment"));
    add("EMF+ comment of a dual-mode file", Uemf("uemf-emf-plus"), Uemf("uemf-emf-plus"));
    Bytes escaped = Joined(Joined(Cut(emf, 0, headerSize), ExtEscapeRecord()),
                           Cut(emf, headerSize, emf.size() - headerSize));
    Set32(escaped, 48, bytes + 20);
    Set32(escaped, 52, Get32(emf, 52) + 1);
    add("escape", escaped, emf);                                               // never handed to GDI
    add("byte count of more than the data", withBytes(emf, bytes + 22), emf);  // GDI refuses it as it is
    const Bytes trailing(40, 0xEE);
    add("bytes behind the end record", Joined(emf, trailing), Joined(emf, trailing));
    add("bytes behind the end record, counted", withBytes(Joined(emf, trailing), bytes + 40), emf);
    const Bytes noEnd = Cut(emf, 0, emf.size() - 20);
    add("no end record", withBytes(noEnd, bytes - 20), emf);
    add("no end record, still counted", noEnd, emf);
    Bytes records = emf;
    Set32(records, 52, 3);
    add("record count 3", records, records);
    Bytes handles = emf;
    Set16(handles, 56, 1);
    add("object count 1", handles, emf);  // unsafe for GDI as it is

    add("ends inside its end record", withBytes(Cut(emf, 0, emf.size() - 8), bytes - 8), {});
    Bytes longRecord = emf;
    Set32(longRecord, headerSize + 4, 0x10000);
    add("a record past the data", longRecord, {});
    Bytes shortRecord = emf;
    Set32(shortRecord, headerSize + 4, 4);
    add("a record below eight bytes", shortRecord, {});

    // GDI's own recording, with a comment amid the drawing.
    framework::win32::WindowDc screen(nullptr);
    const RECT frame{0, 0, 2000, 1500};
    const HDC recorder = ::CreateEnhMetaFileA(screen.Get(), nullptr, &frame, nullptr);
    const HBRUSH red = ::CreateSolidBrush(RGB(220, 0, 0));
    const HGDIOBJ old = ::SelectObject(recorder, red);
    ::Rectangle(recorder, 5, 5, 40, 30);
    const char comment[] = "made by GDI";
    ::GdiComment(recorder, sizeof comment, reinterpret_cast<const BYTE*>(comment));
    const HBRUSH blue = ::CreateSolidBrush(RGB(0, 0, 200));
    ::SelectObject(recorder, blue);
    ::Ellipse(recorder, 30, 20, 70, 55);
    ::SelectObject(recorder, old);
    ::DeleteObject(red);
    ::DeleteObject(blue);
    framework::win32::UniqueEnhMetaFile recorded(::CloseEnhMetaFile(recorder));
    Bytes gdi(::GetEnhMetaFileBits(recorded.Get(), 0, nullptr));
    ::GetEnhMetaFileBits(recorded.Get(), static_cast<UINT>(gdi.size()), gdi.data());
    add("gdi comment", gdi, gdi);
    return cases;
}

TEST_F(MetafileCorpusTest, EnhancedMetafilesPreviewAsGdiDrawsThem) {
    for (const Case& c : EnhancedCases()) ExpectEnhanced(c);
}

}  // namespace
