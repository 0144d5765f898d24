#include "thumbnails/PictureProbe.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "thumbnails/BitmapDescriptor.h"

using imaging::PictureKind;
using imaging::PictureProbe;
using imaging::ProbePicture;
using imaging::ProbeStatus;

namespace {

using Bytes = std::vector<uint8_t>;

void Put16(Bytes& b, size_t at, uint32_t v, bool big = false) {
    if (b.size() < at + 2) b.resize(at + 2);
    b[at] = static_cast<uint8_t>(big ? v >> 8 : v);
    b[at + 1] = static_cast<uint8_t>(big ? v : v >> 8);
}
void Put32(Bytes& b, size_t at, uint32_t v, bool big = false) {
    if (b.size() < at + 4) b.resize(at + 4);
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<uint8_t>(v >> (big ? 24 - 8 * i : 8 * i));
}
void PutText(Bytes& b, size_t at, const char* text, size_t n) {
    if (b.size() < at + n) b.resize(at + n);
    std::memcpy(b.data() + at, text, n);
}

PictureProbe Probe(const Bytes& b) {
    return ProbePicture(b.data(), b.size());
}

Bytes Bmp(int32_t width, int32_t height, uint32_t bits) {
    Bytes b;
    PutText(b, 0, "BM", 2);
    Put32(b, 14, 40);
    Put32(b, 18, static_cast<uint32_t>(width));
    Put32(b, 22, static_cast<uint32_t>(height));
    Put16(b, 26, 1);
    Put16(b, 28, bits);
    b.resize(54);
    return b;
}

Bytes PngHeader(uint32_t width, uint32_t height) {
    Bytes b;
    PutText(b, 0, "\x89PNG\r\n\x1a\n", 8);
    Put32(b, 8, 13, true);
    PutText(b, 12, "IHDR", 4);
    Put32(b, 16, width, true);
    Put32(b, 20, height, true);
    b.resize(33);
    return b;
}

// A GIF with a global table of 2 colours and the given images; each image
// has one data sub-block.
Bytes Gif(uint32_t screenWidth, uint32_t screenHeight, std::vector<std::pair<uint32_t, uint32_t>> images) {
    Bytes b;
    PutText(b, 0, "GIF89a", 6);
    Put16(b, 6, screenWidth);
    Put16(b, 8, screenHeight);
    b.push_back(0x80);  // global table of 2 entries
    b.push_back(0);
    b.push_back(0);
    b.insert(b.end(), 6, 0);
    // A graphic control extension.
    const uint8_t extension[] = {0x21, 0xF9, 4, 0, 0, 0, 0, 0};
    b.insert(b.end(), extension, extension + sizeof extension);
    for (const auto& image : images) {
        b.push_back(0x2C);
        const size_t at = b.size();
        b.resize(at + 9);
        Put16(b, at + 4, image.first);
        Put16(b, at + 6, image.second);
        b[at + 8] = 0;
        b.push_back(2);  // code size
        const uint8_t data[] = {2, 0x4C, 0x01, 0};
        b.insert(b.end(), data, data + sizeof data);
    }
    b.push_back(0x3B);
    return b;
}

Bytes Jpeg(uint32_t width, uint32_t height) {
    Bytes b = {0xFF, 0xD8, 0xFF, 0xE0, 0, 16};
    b.insert(b.end(), 14, 0);  // APP0 body
    const uint8_t sof[] = {0xFF, 0xC0, 0, 17, 8, 0, 0, 0, 0, 3};
    b.insert(b.end(), sof, sof + sizeof sof);
    Put16(b, b.size() - 5, height, true);
    Put16(b, b.size() - 3, width, true);
    b.insert(b.end(), 9, 0);
    return b;
}

Bytes Tiff(bool bigEndian, uint32_t width, uint32_t height) {
    Bytes b;
    PutText(b, 0, bigEndian ? "MM\0*" : "II*\0", 4);
    Put32(b, 4, 8, bigEndian);
    Put16(b, 8, 2, bigEndian);
    Put16(b, 10, 256, bigEndian);  // ImageWidth, LONG
    Put16(b, 12, 4, bigEndian);
    Put32(b, 14, 1, bigEndian);
    Put32(b, 18, width, bigEndian);
    Put16(b, 22, 257, bigEndian);  // ImageLength, SHORT
    Put16(b, 24, 3, bigEndian);
    Put32(b, 26, 1, bigEndian);
    Put16(b, 30, height, bigEndian);
    Put32(b, 34, 0, bigEndian);
    return b;
}

// An icon with DIB entries of the given sizes.
Bytes Icon(std::vector<std::pair<uint32_t, uint32_t>> sizes) {
    Bytes b;
    Put16(b, 0, 0);
    Put16(b, 2, 1);
    Put16(b, 4, static_cast<uint32_t>(sizes.size()));
    size_t data = 6 + 16 * sizes.size();
    for (size_t i = 0; i < sizes.size(); ++i) {
        const size_t entry = 6 + 16 * i;
        b.resize(std::max(b.size(), entry + 16));
        b[entry] = static_cast<uint8_t>(sizes[i].first);
        b[entry + 1] = static_cast<uint8_t>(sizes[i].second);
        Put16(b, entry + 6, 32);
        Put32(b, entry + 8, 40);
        Put32(b, entry + 12, static_cast<uint32_t>(data));
        Put32(b, data, 40);
        Put32(b, data + 4, sizes[i].first == 0 ? 256 : sizes[i].first);
        Put32(b, data + 8, 2 * (sizes[i].second == 0 ? 256 : sizes[i].second));
        b.resize(data + 40);
        data += 40;
    }
    return b;
}

Bytes Emf(bool withEnd) {
    Bytes b;
    Put32(b, 0, 1);    // EMR_HEADER
    Put32(b, 4, 108);  // its size
    Put32(b, 8, 0);    // bounds 0,0 - 99,49
    Put32(b, 12, 0);
    Put32(b, 16, 99);
    Put32(b, 20, 49);
    Put32(b, 40, 0x464D4520);
    b.resize(108);
    Put32(b, 108, withEnd ? 14 : 70);  // EMR_EOF or some drawing record
    Put32(b, 112, 20);
    b.resize(128);
    Put32(b, 48, static_cast<uint32_t>(b.size()));
    return b;
}

Bytes Wmf(bool placeable) {
    Bytes b;
    size_t at = 0;
    if (placeable) {
        Put32(b, 0, 0x9AC6CDD7);
        Put16(b, 6, 0);
        Put16(b, 8, 0);
        Put16(b, 10, 1440);  // one inch wide
        Put16(b, 12, 720);
        Put16(b, 14, 1440);
        b.resize(22);
        at = 22;
    }
    Put16(b, at, 1);
    Put16(b, at + 2, 9);
    Put16(b, at + 4, 0x300);
    b.resize(at + 18);
    Put32(b, at + 18, 5);  // SetWindowExt: 5 words
    Put16(b, at + 22, 0x020C);
    b.resize(at + 28);
    Put32(b, at + 28, 3);  // end
    Put16(b, at + 32, 0);
    return b;
}

}  // namespace

TEST(PictureProbe, RecognisesEachFormatByItsContent) {
    const PictureProbe bmp = Probe(Bmp(37, -12, 24));
    EXPECT_EQ(bmp.status, ProbeStatus::kRecognised);
    EXPECT_EQ(bmp.kind, PictureKind::kBmp);
    EXPECT_EQ(bmp.width, 37);
    EXPECT_EQ(bmp.height, 12) << "top-down rows";

    const PictureProbe png = Probe(PngHeader(640, 480));
    EXPECT_EQ(png.kind, PictureKind::kPng);
    EXPECT_EQ(png.width, 640);
    EXPECT_EQ(png.height, 480);

    const PictureProbe gif = Probe(Gif(20, 10, {{20, 10}, {5, 5}}));
    EXPECT_EQ(gif.status, ProbeStatus::kRecognised);
    EXPECT_EQ(gif.kind, PictureKind::kGif);
    EXPECT_EQ(gif.width, 20);
    EXPECT_EQ(gif.frames, 2);

    const PictureProbe jpeg = Probe(Jpeg(2000, 1500));
    EXPECT_EQ(jpeg.status, ProbeStatus::kRecognised);
    EXPECT_EQ(jpeg.kind, PictureKind::kJpeg);
    EXPECT_EQ(jpeg.width, 2000);
    EXPECT_EQ(jpeg.height, 1500);

    for (bool big : {false, true}) {
        const PictureProbe tiff = Probe(Tiff(big, 70000 / 7, 33));
        EXPECT_EQ(tiff.status, ProbeStatus::kRecognised);
        EXPECT_EQ(tiff.kind, PictureKind::kTiff);
        EXPECT_EQ(tiff.width, 10000);
        EXPECT_EQ(tiff.height, 33);
    }

    const PictureProbe icon = Probe(Icon({{16, 16}, {0, 0}, {32, 32}}));
    EXPECT_EQ(icon.status, ProbeStatus::kRecognised);
    EXPECT_EQ(icon.kind, PictureKind::kIcon);
    EXPECT_EQ(icon.frames, 3);
    EXPECT_EQ(icon.bestFrame, 1) << "the 256-pixel entry is the largest";
    EXPECT_EQ(icon.width, 256);

    const PictureProbe emf = Probe(Emf(true));
    EXPECT_EQ(emf.status, ProbeStatus::kRecognised);
    EXPECT_EQ(emf.kind, PictureKind::kEmf);
    EXPECT_EQ(emf.width, 100);
    EXPECT_EQ(emf.height, 50);

    const PictureProbe placeable = Probe(Wmf(true));
    EXPECT_EQ(placeable.status, ProbeStatus::kRecognised);
    EXPECT_EQ(placeable.kind, PictureKind::kWmfPlaceable);
    EXPECT_EQ(placeable.width, 1440);
    EXPECT_EQ(placeable.unitsPerInch, 1440);
    EXPECT_EQ(placeable.headerBytes, 22);

    const PictureProbe plain = Probe(Wmf(false));
    EXPECT_EQ(plain.status, ProbeStatus::kRecognised);
    EXPECT_EQ(plain.kind, PictureKind::kWmf);
}

TEST(PictureProbe, NamesAndTextAreNoPictures) {
    const std::string text = "picture.jpg is only a name";
    EXPECT_EQ(ProbePicture(reinterpret_cast<const uint8_t*>(text.data()), text.size()).status,
              ProbeStatus::kUnknown);
    EXPECT_EQ(ProbePicture(nullptr, 10).status, ProbeStatus::kUnknown);
    const uint8_t one = 'B';
    EXPECT_EQ(ProbePicture(&one, 0).status, ProbeStatus::kUnknown);
}

TEST(PictureProbe, HeadersThatEndEarlyAreMalformed) {
    // Each sample with the length from which its headers are whole: a JPEG
    // needs only its frame header, a GIF all but its trailer, a metafile its
    // header and whole records (its end record may be missing).
    const Bytes gif = Gif(10, 10, {{10, 10}});
    const Bytes wmf = Wmf(true);
    const std::pair<Bytes, size_t> samples[] = {
        {Bmp(10, 10, 24), 54},     {PngHeader(10, 10), 33}, {gif, gif.size() - 1}, {Jpeg(10, 10), 30},
        {Tiff(false, 10, 10), 38}, {Icon({{16, 16}}), 62},  {Emf(true), 108},      {wmf, 22 + 28},
    };
    for (const auto& [whole, needed] : samples) {
        ASSERT_EQ(Probe(whole).status, ProbeStatus::kRecognised);
        ASSERT_LE(needed, whole.size());
        // Every prefix long enough to keep the signature.
        for (size_t cut = 6; cut < needed; ++cut) {
            const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
            EXPECT_NE(Probe(part).status, ProbeStatus::kRecognised)
                << "kind " << static_cast<int>(Probe(whole).kind) << " cut at " << cut;
        }
    }
}

TEST(PictureProbe, ContradictionsAreMalformed) {
    EXPECT_EQ(Probe(Bmp(0, 10, 24)).status, ProbeStatus::kMalformed);
    EXPECT_EQ(Probe(Bmp(10, 10, 7)).status, ProbeStatus::kMalformed) << "no such depth";
    EXPECT_EQ(Probe(Bmp(-5, 10, 8)).status, ProbeStatus::kMalformed);
    EXPECT_EQ(Probe(PngHeader(0, 10)).status, ProbeStatus::kMalformed);
    EXPECT_EQ(Probe(Gif(10, 10, {})).status, ProbeStatus::kMalformed) << "no image at all";
    Bytes icon = Icon({{16, 16}});
    Put32(icon, 6 + 12, 1000);  // image data beyond the end
    EXPECT_EQ(Probe(icon).status, ProbeStatus::kMalformed);
    Bytes emf = Emf(true);
    Put32(emf, 112, 6);  // a record shorter than its own header
    EXPECT_EQ(Probe(emf).status, ProbeStatus::kMalformed);
    Bytes wmf = Wmf(false);
    Put32(wmf, 18, 0x7FFFFFFF);  // a record longer than the file
    EXPECT_EQ(Probe(wmf).status, ProbeStatus::kUnknown)
        << "without its chain a plain metafile is not recognised";
}

TEST(PictureProbe, OversizeHeadersAreRefused) {
    EXPECT_EQ(Probe(Bmp(imaging::kMaxSide + 1, 1, 24)).status, ProbeStatus::kTooLarge);
    EXPECT_EQ(Probe(Bmp(10000, 10000, 1)).status, ProbeStatus::kTooLarge) << "beyond the pixel count";
    EXPECT_EQ(Probe(PngHeader(100000, 10)).status, ProbeStatus::kTooLarge);
    EXPECT_EQ(Probe(Jpeg(65535, 65535)).status, ProbeStatus::kTooLarge);
    EXPECT_EQ(Probe(Tiff(true, 1, 65535)).status, ProbeStatus::kTooLarge);
    EXPECT_EQ(Probe(Gif(65535, 65535, {{10, 10}})).status, ProbeStatus::kTooLarge) << "the logical screen";
    EXPECT_EQ(Probe(Gif(10, 10, {{10, 10}, {60000, 60000}})).status, ProbeStatus::kTooLarge)
        << "a later image";
    // An icon entry whose PNG image claims a huge size.
    Bytes icon = Icon({{16, 16}});
    const Bytes png = PngHeader(50000, 50000);
    const size_t at = icon.size();
    icon.insert(icon.end(), png.begin(), png.end());
    Put32(icon, 6 + 8, static_cast<uint32_t>(png.size()));
    Put32(icon, 6 + 12, static_cast<uint32_t>(at));
    EXPECT_EQ(Probe(icon).status, ProbeStatus::kTooLarge);
    EXPECT_EQ(Probe(Bmp(8192, 8192, 24)).status, ProbeStatus::kRecognised)
        << "64 Mpixels is the limit itself";
}

TEST(PictureProbe, SurvivesRandomBytesBehindEverySignature) {
    const char* signatures[] = {"BM",    "\xFF\xD8\xFF", "\x89PNG\r\n\x1a\n", "GIF89a", "II*",
                                "MM\0*", "\0\0\1"};
    const size_t lengths[] = {2, 3, 8, 6, 4, 4, 4};
    std::mt19937 random(99);
    for (int round = 0; round < 3000; ++round) {
        const size_t which = static_cast<size_t>(round) % 7;
        Bytes b(random() % 200);
        for (uint8_t& byte : b) byte = static_cast<uint8_t>(random());
        PutText(b, 0, signatures[which], lengths[which]);
        const PictureProbe probe = Probe(b);
        if (probe.status == ProbeStatus::kRecognised && probe.kind != PictureKind::kEmf &&
            probe.kind != PictureKind::kWmf && probe.kind != PictureKind::kWmfPlaceable) {
            EXPECT_GE(probe.width, 1);
            EXPECT_LE(probe.width, imaging::kMaxSide);
            EXPECT_GE(probe.height, 1);
            EXPECT_LE(probe.height, imaging::kMaxSide);
        }
    }
}

TEST(PictureProbe, MetafileChainsAreTakenAsThePlayerTakesThem) {
    // A byte count of more than the data, and data that ends on a record's
    // end without an end record.
    Bytes emf = Emf(true);
    Put32(emf, 48, 128 + 22);
    EXPECT_EQ(Probe(emf).status, ProbeStatus::kRecognised);
    EXPECT_EQ(Probe(Emf(false)).status, ProbeStatus::kRecognised) << "ends on a record's end";
    Bytes wmf = Wmf(false);
    wmf.resize(28);
    EXPECT_EQ(Probe(wmf).status, ProbeStatus::kRecognised) << "no end record";
    // A header size that ends inside the first record.
    wmf = Wmf(false);
    Put32(wmf, 6, 9 + 4);
    EXPECT_EQ(Probe(wmf).status, ProbeStatus::kUnknown);
    Put32(wmf, 6, 9 + 5);
    EXPECT_EQ(Probe(wmf).status, ProbeStatus::kRecognised) << "ends on the first record's end";
}
